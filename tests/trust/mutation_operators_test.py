#!/usr/bin/env python3
"""mutation_operators_test.py ROOT: what make mutate changes, and what it leaves alone."""

import os
import sys
import unittest

ROOT = os.path.abspath(sys.argv.pop())
sys.path.insert(0, os.path.join(ROOT, "scripts"))
sys.dont_write_bytecode = True

from mutation import answers, graph, lexer, operators, report, sample, shadow, tree, trial  # noqa: E402


def changed(text):
    """changed returns every mutant of a text as (operator, whole text after it)."""
    tokens = lexer.tokenize(text)
    names = operators.Names()
    names.collect("a.cpp", tokens)
    return {(operator, text[:start] + new + text[end:])
            for operator, start, end, new in operators.changes("a.cpp", text, tokens, names)}


def body(statement):
    return "void F() { " + statement + " }\n"


class Operators(unittest.TestCase):
    def expect(self, statement, *pairs):
        self.assertEqual(changed(body(statement)), {(o, body(after)) for o, after in pairs})

    def test_comparisons_move_and_turn(self):
        self.expect("return a < b;", ("compare", "return a <= b;"), ("compare", "return a >= b;"))
        self.expect("return a == b;", ("compare", "return a != b;"))

    def test_numbers_are_off_by_one_and_keep_their_form(self):
        self.expect("return 0x0Fu;", ("number", "return 0x10u;"), ("number", "return 0x0Eu;"))
        self.expect("return 0;", ("number", "return 1;"))

    def test_indexes_are_off_by_one(self):
        self.expect("return a[i];", ("bound", "return a[i + 1];"), ("bound", "return a[i - 1];"))
        self.expect("return a[i ? b : c];", ("bound", "return a[(i ? b : c) + 1];"),
                    ("bound", "return a[(i ? b : c) - 1];"))

    def test_arrays_only_shrink(self):
        self.expect("T a[8];", ("number", "T a[7];"))
        self.expect("T a[b + c];", ("bound", "T a[(b + c) - 1];"), ("arithmetic", "T a[b - c];"))

    def test_statements_are_dropped(self):
        self.expect("a.b->c(x);", ("drop", ";"))
        self.expect("*a = b;", ("drop", ";"))
        self.expect("++a;", ("drop", ";"))
        self.expect("if (a) return b;", ("drop", ";"), ("negate", "if (!(a)) return b;"))

    def test_declarations_stay(self):
        for statement in ("T a = b;", "T* a = b;", "T& a = b;", "T a(b);", "const auto a = b;",
                          "using A = B;", "static_assert(1 < 2);", "alignas(16) T a;", "T<a> b;"):
            self.expect(statement)

    def test_operators_are_exchanged(self):
        self.expect("return a && b;", ("logic", "return a || b;"))
        self.expect("return a + b;", ("arithmetic", "return a - b;"))
        self.expect("return a << b;", ("shift", "return a >> b;"))
        self.expect("return a & b;", ("bits", "return a | b;"))

    def test_constants_are_exchanged_for_their_family(self):
        self.expect("G(E_FAIL); H(S_OK);", ("drop", "; H(S_OK);"), ("drop", "G(E_FAIL); ;"),
                    ("constant", "G(S_OK); H(S_OK);"), ("constant", "G(E_FAIL); H(E_FAIL);"))
        self.expect("return A::kB + A::kC;", ("constant", "return A::kC + A::kC;"),
                    ("constant", "return A::kB + A::kB;"), ("arithmetic", "return A::kB - A::kC;"))
        self.expect("return true;", ("constant", "return false;"))

    def test_text_that_is_no_code_stays(self):
        for text in ("// a < 1\n", "/* a < 1 */", "#define A 1\\\n  2\n", 'const char* a = "b < 1";\n',
                     "#if 1 < 2\n#endif\n", "virtual void F() = 0;\n", "auto a = R\"(b < 1)\";\n",
                     "class A { A(int b); void C(); };\n", "template <class A, int = a>\nstruct B;\n"):
            self.assertEqual(changed(text), set(), text)


class Sample(unittest.TestCase):
    def test_it_is_the_same_again_and_in_every_folder(self):
        texts = sample.sources(ROOT, [os.path.relpath(os.path.join(folder, name), ROOT)
                                      for top in sample.FOLDERS
                                      for folder, _, names in os.walk(os.path.join(ROOT, top))
                                      for name in names])
        quotas = sample.quotas(texts, 300)
        self.assertEqual(set(quotas), set(sample.FOLDERS))
        self.assertGreaterEqual(sum(quotas.values()), 300)
        one = sample.drawn(sample.mutants_of("hash/a.cpp", body("return a < b + 1;"),
                                             lexer.tokenize(body("return a < b + 1;")),
                                             operators.Names()), 1)
        two = sample.drawn(sample.mutants_of("hash/a.cpp", body("return a < b + 1;"),
                                             lexer.tokenize(body("return a < b + 1;")),
                                             operators.Names()), 1)
        self.assertEqual([m.key for m in one["hash"]], [m.key for m in two["hash"]])
        self.assertEqual(len(one["hash"]), 5)

    def test_all_code_but_tests_and_tools_is_in_it(self):
        self.assertLessEqual({"host", "platform/windows", "platform/runtime"}, set(sample.FOLDERS))
        self.assertEqual(set(trial.ABOVE), set(sample.FOLDERS))
        self.assertLessEqual(sample.WINDOWS, set(sample.FOLDERS))

    def test_every_answer_can_be_read(self):
        for path, old, new, _, reason in answers.read(
                os.path.join(ROOT, "tests", "trust", "mutation_survivors.txt")):
            self.assertTrue(os.path.exists(os.path.join(ROOT, path)), path)
            self.assertNotEqual(old, new)
            self.assertTrue(reason)


class Build(unittest.TestCase):
    def test_a_compiler_writes_the_same_object_elsewhere(self):
        command = "/usr/bin/ccache c++ -Da -I/tree/hash -O3 -Wall -Werror -MD -MT a.o -MF a.o.d -o a.o -c /tree/a.cpp"
        self.assertEqual(shadow.compiler_words(command, "/tree", "/tree/build/native"),
                         "c++ -Da -I../../hash -O3 -c ../../a.cpp -w".split())

    def test_a_test_has_the_libraries_that_its_program_needs(self):
        known = graph.Graph.__new__(graph.Graph)
        known.inputs, known.linked, known.known_binaries = {}, set(), {}
        known.add_edge(["lib/a.so.1"], "CXX_SHARED_LIBRARY_LINKER__a_Release", ["a.cpp.o", "|", "c.a"])
        known.add_edge(["lib/a.so"], "CMAKE_SYMLINK_LIBRARY", ["lib/a.so.1"])
        known.add_edge(["tests/b"], "CXX_EXECUTABLE_LINKER__b_Release", ["b.cpp.o", "||", "lib/a.so"])
        self.assertEqual(known.binaries("tests/b"), {"tests/b", "lib/a.so.1"})
        self.assertEqual(known.binaries("lib/a.so"), {"lib/a.so.1"})

    def test_a_test_needs_what_command_environment_and_requirements_name(self):
        properties = {"ENVIRONMENT": ["A=/b/1"], "REQUIRED_FILES": ["/b/2"], "TIMEOUT": 60}
        self.assertEqual(tree.words_of(["python3", "/b/tests"], properties), ["python3", "/b/tests", "A=/b/1", "/b/2"])
        self.assertEqual(tree.words_of(["a_test"], {}), ["a_test"])

    def test_a_test_has_what_its_environment_names(self):
        outputs = {"bin/mirolta-host", "tests/a_test", "tests/b_test"}
        self.assertEqual(tree.named_targets(["/b/tests/a_test", "/b/tests/none"], "/b", outputs), {"tests/a_test"})
        self.assertEqual(tree.named_targets(["python3", "/s/test.py", "HOST=/b/bin/mirolta-host"], "/b", outputs),
                         {"bin/mirolta-host", "lib/libMirolta.so"})

    def test_a_link_keeps_what_the_shell_would_give(self):
        known = graph.Graph.__new__(graph.Graph)
        known.commands = {"lib/a.so": r': && c++ -Wl,-rpath,"\$ORIGIN" -o lib/a.so a.cpp.o && :'}
        self.assertEqual(known.link_command("lib/a.so"),
                         ["c++", "-Wl,-rpath,$ORIGIN", "-o", "lib/a.so", "a.cpp.o", "-fuse-ld=lld"])


class Report(unittest.TestCase):
    def test_a_survivor_with_a_reason_is_a_survivor(self):
        mutants = sample.mutants_of("hash/a.cpp", body("return a < b;"),
                                    lexer.tokenize(body("return a < b;")), operators.Names())
        rows = {mutant.key: {"status": "survived", "cpu": 1} for mutant in mutants}
        rows[mutants[0].key]["status"] = "found"
        reasons = [(m.path, m.old_lines, m.new_lines, None, "Costs time only.") for m in mutants[1:]]
        self.assertEqual(len(reasons), 1)
        by_key = {mutant.key: mutant for mutant in mutants}
        for given in ([], reasons):
            counts, survivors, _ = report.classify(rows, by_key, given)
            self.assertEqual(len(survivors), 1 - len(given))
            self.assertEqual(report.score(counts["hash"]), 50.0)
            self.assertEqual(report.text(counts, survivors, rows)[1], 50.0)


if __name__ == "__main__":
    unittest.main()
