"""What the tests share."""
import gc
import unittest

import mirolta
from mirolta._library import runtime


def module_has_objects():
    """Whether the module counts an object that is alive."""
    return runtime().module.can_unload_now() != 0


class ObjectTest(unittest.TestCase):
    """A test that leaves no object alive."""

    def setUp(self):
        self.addCleanup(self.expect_no_objects)

    def expect_no_objects(self):
        gc.collect()
        self.assertFalse(module_has_objects(), "objects are left")


class AutomationTest(ObjectTest):
    def expect_failure(self, status, function, *arguments, **named):
        with self.assertRaises(mirolta.AutomationError) as caught:
            function(*arguments, **named)
        self.assertEqual(f"{caught.exception.status:08X}", f"{status:08X}")
        return caught.exception
