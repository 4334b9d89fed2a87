"""Late-bound objects: creation, members by name, errors, help, lifetime, threads."""
import copy
import ctypes
import inspect
import io
import pickle
import pydoc
import threading
import time
import unittest
import weakref

import mirolta
from fake_dispatch import FakeDispatch, FakeErrorInfo, Failure
from mirolta import _classes, _interfaces
from mirolta._invocation import put
from mirolta._library import runtime
from mirolta._typeinfo import Member
from support import AutomationTest, module_has_objects

HASH = "Vardeko.crypt.HashObject"
NUMBER = "Vardeko.crypt.Number"
ABC = "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"
NOT_INITIALIZED = 0x80042778


class Creation(AutomationTest):
    def test_every_class_is_created_by_its_names(self):
        for name in _classes.CLASSES:
            for prog_id in (name, name + ".1", name.upper()):
                with self.subTest(prog_id):
                    self.assertTrue(repr(mirolta.create(prog_id)).startswith("<I"))

    def test_an_unknown_class_fails_with_its_name(self):
        failure = self.expect_failure(0x800401F3, mirolta.create, "Vardeko.crypt.None")
        self.assertEqual(failure.source, "Vardeko.crypt.None")
        self.assertEqual(failure.name, "CO_E_CLASSSTRING")

    def test_object_takes_a_prog_id(self):
        self.assertEqual(mirolta.Object(HASH).codePage, 0)

    def test_the_type_is_that_of_the_interface(self):
        self.assertEqual(type(mirolta.create(HASH)).__name__, "IHashObject")
        self.assertIs(type(mirolta.create(HASH)), type(mirolta.create(HASH + ".free")))
        self.assertIsInstance(mirolta.create(NUMBER), mirolta.Object)


class Members(AutomationTest):
    def setUp(self):
        super().setUp()
        self.hash = mirolta.create(HASH)
        self.hash.InitHash("SHA256")
        self.number = mirolta.create(NUMBER)

    def tearDown(self):
        del self.hash, self.number

    def test_methods_and_properties(self):
        self.hash.HashData("abc")
        self.assertEqual(self.hash.Value, ABC)
        self.assertEqual(self.hash.BinaryValue, bytes.fromhex(ABC))
        self.assertEqual((self.hash.HashSize, self.hash.BlockSize), (32, 64))
        self.hash.codePage = 65001
        self.assertEqual(self.hash.codePage, 65001)

    def test_letter_case_does_not_count(self):
        self.hash.hashdata("abc")
        self.assertEqual(self.hash.VALUE, ABC)
        self.hash.codepage = 1252
        self.assertEqual(self.hash.codePage, 1252)

    def test_arguments_by_name_and_optional_ones(self):
        self.hash.HashData(lCP=-1, vData="abc")
        self.assertEqual(self.hash.Value, ABC)
        random = mirolta.create(NUMBER)
        random.Random(4, bOdd=True)  # bEnsureSize is left out between the two
        self.assertEqual(random.Binary[-1] & 1, 1)
        self.number.Value = 5
        self.number.Inc()
        self.assertEqual(self.number.Value, "6")
        self.number.Inc(mirolta.MISSING)
        self.assertEqual(self.number.Value, "7")

    def test_wrong_arguments_are_type_errors(self):
        for arguments, named in [((), {}), (("a", 1, 2), {}), (("a",), {"other": 1}),
                                 (("a",), {"vData": "b"})]:
            with self.subTest(arguments=arguments, named=named), self.assertRaises(TypeError):
                self.hash.HashData(*arguments, **named)

    def test_a_property_with_arguments_is_indexed(self):
        self.number.Text[65001] = "äb"
        self.assertEqual(self.number.Hex, "c3a462")
        self.assertEqual(self.number.Text[65001], "äb")
        self.assertEqual(self.number.Text(lCP=65001), "äb")
        self.number.Text = "abc"
        self.assertEqual(self.number.Text(), "abc")
        self.assertIn("Text", repr(self.number.Text))

    def test_the_object_called_is_its_default_member(self):
        self.number.Value = 12
        self.assertEqual(self.number(), "12")

    def test_a_property_is_put_by_reference(self):
        digest = mirolta.create("Vardeko.crypt.ToviStreamDigest")
        inner = mirolta.create("Vardeko.crypt.ToviStreamDigest")
        digest.Stream = inner
        self.assertEqual(digest.Stream, inner)

    def test_names_that_are_missing_are_attribute_errors(self):
        self.assertFalse(hasattr(self.hash, "HashDat"))
        with self.assertRaisesRegex(AttributeError, "IHashObject.*HashDat"):
            self.hash.HashDat = 1
        with self.assertRaises(AttributeError):
            self.hash.Value = "a read-only property"
        with self.assertRaises(AttributeError):
            self.hash.value = "in other letter case"
        with self.assertRaises(AttributeError):
            self.hash.Reset = "a method"

    def test_results_that_are_objects(self):
        self.number.Value = 6
        product = self.number.Mul(7)
        self.assertEqual(product.Value, "42")
        self.assertIs(type(product), type(self.number))

    def test_objects_are_arguments(self):
        self.number.Value = 6
        self.assertEqual(self.number.Add(self.number).Value, "12")

    def test_objects_cannot_be_copied_or_pickled(self):
        for function in (copy.copy, copy.deepcopy, pickle.dumps):
            with self.subTest(function), self.assertRaises(TypeError):
                function(self.number)

    def test_equality_is_identity_of_the_object(self):
        same = mirolta.Object(mirolta.address_of(self.number))
        self.assertEqual(same, self.number)
        self.assertEqual(hash(same), hash(self.number))
        self.assertNotEqual(self.number, mirolta.create(NUMBER))
        self.assertNotEqual(self.number, 1)


class Errors(AutomationTest):
    def test_an_error_has_number_source_and_description(self):
        failure = self.expect_failure(NOT_INITIALIZED, mirolta.create(HASH).HashData, "abc")
        self.assertEqual(failure.number, NOT_INITIALIZED - (1 << 32))
        self.assertEqual(failure.description, "Not initialized.")
        self.assertIn(failure.source, ("Vardeko HashObject Class", HASH))
        self.assertEqual(failure.name, "")
        self.assertEqual(failure.args, (failure.number, failure.description, failure.source))
        self.assertTrue(str(failure).endswith("Not initialized. (0x80042778)"), str(failure))

    def test_a_status_without_a_text_has_the_platforms(self):
        failure = self.expect_failure(0x80020012, mirolta.create(NUMBER).Div, 0)
        self.assertEqual((failure.name, failure.description),
                         ("DISP_E_DIVBYZERO", "Division by zero."))

    def test_errors_can_be_pickled(self):
        failure = mirolta.AutomationError(NOT_INITIALIZED, "text", "source")
        self.assertEqual(pickle.loads(pickle.dumps(failure)).args, failure.args)

    def test_a_failure_of_a_property(self):
        crypt = mirolta.create("Vardeko.crypt.Symmetric")
        self.expect_failure(NOT_INITIALIZED, getattr, crypt, "BlockSize")
        self.expect_failure(NOT_INITIALIZED, setattr, crypt, "Key", b"1" * 16)

    def test_an_unconvertible_argument(self):
        self.expect_failure(0x80020005, mirolta.create(HASH).InitHash, [1, 2])

    def test_source_and_description_of_the_call(self):
        def fail(_flags):
            raise Failure(0x80041234, "a source", "a description")

        fake = FakeDispatch({"Fail": fail})
        failure = self.expect_failure(0x80041234, lambda: mirolta.Object(fake.address).Fail)
        self.assertEqual((failure.source, failure.description), ("a source", "a description"))

    def test_the_threads_error_object_describes_a_status(self):
        def fail(_flags):
            raise Failure(0x80041234)

        for publishes, expected in [(True, ("a source", "a description")), (False, ("", ""))]:
            with self.subTest(publishes=publishes):
                information = FakeErrorInfo("a source", "a description")
                set_error_info = ctypes.CDLL(runtime().module.file).SetErrorInfo
                set_error_info.argtypes = [ctypes.c_uint32, ctypes.c_void_p]
                set_error_info(0, information.address)
                fake = FakeDispatch({"Fail": fail}, publishes)
                failure = self.expect_failure(0x80041234, lambda: mirolta.Object(fake.address).Fail)
                self.assertEqual((failure.source, failure.description), expected)
                set_error_info(0, None)
                self.assertEqual(information.references, 1)


class Untyped(AutomationTest):
    """An object that has no type information."""

    def test_members_are_found_by_what_they_do(self):
        store = {}

        def item(flags, *arguments):
            if flags & 12:
                store[arguments[:-1]] = (arguments[-1], flags)
                return None
            if not arguments:
                raise Failure(0x8002000E)
            return store[arguments][0]

        fake = FakeDispatch({"Item": item, "Size": lambda flags: 7})
        obj = mirolta.Object(fake.address)
        self.assertEqual(obj.Size, 7)
        obj.Item["a", 1] = "x"
        self.assertEqual(obj.Item("a", 1), "x")
        self.assertEqual(obj.Item["a", 1], "x")
        self.assertEqual(store["a", 1][1], 4)
        obj.Item = mirolta.create(NUMBER)
        self.assertEqual(store[()][1], 12)  # an object: by reference
        store.clear()
        with self.assertRaises(AttributeError):
            obj.Missing
        del obj
        self.assertEqual(fake.references, 1)


    def test_a_property_with_both_forms_takes_objects_by_reference(self):
        stored = []
        fake = FakeDispatch({"Item": lambda flags, value: stored.append((flags, value))})
        obj = mirolta.Object(fake.address)
        both = Member("Item", fake.names.index("Item"), 4 | 8, [], "Any", "")
        put(obj._target(), both, [], 5)
        put(obj._target(), both, [], obj)
        self.assertEqual(stored, [(4, 5), (8, obj)])
        stored.clear()
        del obj
        self.assertEqual(fake.references, 1)

    def test_type_information_without_an_identifier_is_not_used(self):
        fake = FakeDispatch({"Size": lambda flags: 7}, describes=True)
        obj = mirolta.Object(fake.address)
        self.assertIs(type(obj), mirolta.Object)
        self.assertEqual(obj.Size, 7)
        del obj
        self.assertEqual(fake.references, 1)
        self.assertEqual((fake.given, fake.released), (1, 1))


class Help(AutomationTest):
    def test_help_shows_the_type_library(self):
        text = pydoc.plain(pydoc.render_doc(mirolta.create(HASH)))
        for line in ["Message digests and HMAC",
                     "HashData(self, /, vData: 'Any', lCP: 'int' = -1) -> 'None'",
                     "Adds a piece of data; -1 uses the codePage property for text",
                     "str (read-only). The digest as uppercase hexadecimal text",
                     "The HMAC key as a byte array"]:
            self.assertIn(line, text)

    def test_dir_has_every_member_of_every_class(self):
        for name in _classes.CLASSES:
            obj = mirolta.create(name)
            described = list(mirolta.members(obj))
            self.assertGreater(len(described), 8, name)
            self.assertLessEqual({member.name for member in described}, set(dir(obj)))
            for member in described:
                self.assertTrue(member.help, f"{name}.{member.name}")
                self.assertIn(member.help, getattr(type(obj), member.name).__doc__)

    def test_signatures(self):
        number = type(mirolta.create(NUMBER))
        self.assertEqual(list(inspect.signature(number.Random).parameters),
                         ["self", "lSize", "bEnsureSize", "bOdd"])
        self.assertIs(inspect.signature(number.Random).parameters["bOdd"].default, False)
        self.assertIn("Text[lCP]: str.", number.Text.__doc__)


class Lifetime(AutomationTest):
    def test_an_object_lives_as_long_as_its_last_reference(self):
        self.assertFalse(module_has_objects())
        number = mirolta.create(NUMBER)
        number.Value = 3
        product = number.Mul(number)
        del number
        self.assertTrue(module_has_objects())
        self.assertEqual(product.Value, "9")
        del product
        self.assertFalse(module_has_objects())

    def test_a_method_keeps_its_object(self):
        method = mirolta.create(NUMBER).NewNumber
        self.assertEqual(method(5).Value, "5")
        text = mirolta.create(NUMBER).NewNumber(97).Text
        self.assertEqual(text(), "a")

    def test_a_function_of_an_interface_keeps_it(self):
        function = _classes.new_object(NUMBER).AddRef
        self.assertTrue(module_has_objects())
        self.assertEqual(function(), 2)
        release = _interfaces.Unknown(function.args[0].address)
        del function, release
        self.assertFalse(module_has_objects())

    def test_an_object_that_was_never_made(self):
        with self.assertRaises(AttributeError):
            object.__new__(mirolta.Object)._dispatch

    def test_pointers_in_and_out(self):
        number = mirolta.create(NUMBER)
        number.Value = 5
        address = mirolta.address_of(number)
        other = mirolta.Object(address)
        del number
        self.assertEqual(other.Value, "5")
        unknown = _interfaces.borrow(address)
        self.assertEqual(mirolta.Object(unknown).Value, "5")
        stream = mirolta.Stream(mirolta.create("Vardeko.crypt.ToviStreamDigest"))
        self.assertEqual(mirolta.Stream(mirolta.address_of(stream)).write(b"abc"), 3)
        self.expect_failure(0x80004002, mirolta.Stream, other)

    def test_cycles_through_python_are_collected(self):
        class Holder:
            pass

        holder = Holder()
        holder.object = mirolta.create(HASH)
        holder.self = holder
        alive = weakref.ref(holder)
        del holder
        self.expect_no_objects()
        self.assertIsNone(alive())

    def test_references_of_every_way_to_pass_an_object(self):
        def take(flags, *_values):
            if not flags & 1:
                raise Failure(0x80020003)  # no property

        fake = FakeDispatch({"Take": take})
        obj = mirolta.Object(fake.address)
        obj.Take(obj)
        obj.Take([obj, [obj]])
        self.assertEqual(obj.Echo(obj), obj)
        self.assertEqual(obj.Echo([obj])[0], obj)
        with self.assertRaises(TypeError):
            obj.Take([obj, {}])
        hash(obj)
        del obj
        self.assertEqual(fake.references, 1)

    def test_an_exception_in_an_argument_leaves_nothing(self):
        fake = FakeDispatch()
        obj = mirolta.Object(fake.address)
        for value in ([io.BytesIO(), obj, object()], {}, object()):
            with self.assertRaises(TypeError):
                obj.Echo(value)
        del obj
        self.assertEqual(fake.references, 1)


class Threads(AutomationTest):
    def test_threads_use_objects_side_by_side(self):
        shared = mirolta.create(HASH)
        shared.InitHash("SHA256")
        failures = []

        def work():
            try:
                own = mirolta.create(HASH)
                own.InitHash("SHA256")
                for _ in range(200):
                    own.HashData("abc")
                    if own.Value != ABC or shared.HashSize != 32:
                        failures.append("a wrong value")
                    shared.HashData("abc")
            except BaseException as failure:
                failures.append(failure)

        threads = [threading.Thread(target=work) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(failures, [])

    def test_the_interpreter_runs_during_a_call(self):
        # This thread must not pause for as long as the search of primes in the other one takes. A busy
        # machine can pause it as well: another search follows.
        rsa = mirolta.create("Vardeko.crypt.RSA")
        taken = []

        def search():
            start = time.perf_counter()
            rsa.CreateRandKeys(256, True)
            taken.append(time.perf_counter() - start)

        pauses = []
        for _ in range(50):
            thread = threading.Thread(target=search)
            longest = 0.0
            last = time.perf_counter()
            thread.start()
            running = True
            while running:
                running = thread.is_alive()
                now = time.perf_counter()
                longest = max(longest, now - last)
                last = now
            thread.join()
            pauses.append(longest)
            if longest < taken[-1] / 4:
                return
        self.fail(f"paused for {pauses} in searches of {taken} seconds")


if __name__ == "__main__":
    unittest.main()
