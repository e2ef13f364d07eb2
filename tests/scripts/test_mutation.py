"""scripts/mutation: which mutants it finds, how it writes them, and that a gap in tests is told."""

import os
import pathlib
import subprocess
import sys
import tempfile
import textwrap
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(TOP / "scripts" / "lib"))

from mutation import cpp, operators, records, schemata, trial  # noqa: E402  the path is set above


def in_function(body):
    return "void f() {\n" + textwrap.indent(textwrap.dedent(body).strip("\n"), "  ") + "\n}\n"


def mutants_of(text, name="src/x.cpp"):
    return operators.Finder(name, cpp.Source(text)).mutants()


def changes(text, kind):
    return [(mutant.before, mutant.after) for mutant in mutants_of(text) if mutant.kind == kind]


class Finding(unittest.TestCase):
    def test_a_comparison_has_its_boundary_moved_and_is_turned_round(self):
        self.assertEqual([("n < m", "n <= m"), ("n < m", "n >= m")], changes(in_function("while (n < m) {\n}"), "comparison"))

    def test_a_comparison_alone_is_not_negated_besides(self):
        self.assertEqual([], changes(in_function("if (n < m) {\n}"), "negation"))
        self.assertEqual([("n", "!(n)")], changes(in_function("if (n) {\n}"), "negation"))

    def test_operands_end_where_looser_operators_begin(self):
        self.assertEqual([("i + 1 < n", "i + 1 <= n"), ("i + 1 < n", "i + 1 >= n")],
                         changes(in_function("const bool b = x && i + 1 < n || y;"), "comparison"))
        self.assertEqual([("a - b", "a + b"), ("a - b + c(d, e)", "a - b - c(d, e)")],
                         changes(in_function("return a - b + c(d, e);"), "operator"))

    def test_brackets_of_templates_stars_of_pointers_and_references_are_no_operators(self):
        text = in_function("const std::vector<int>& v = f<std::pair<int, long>>(*p, &q);\nEvent** const slots = A;")
        self.assertEqual([], mutants_of(text))

    def test_numbers_go_one_up_and_one_down(self):
        self.assertEqual([("128", "129"), ("128", "127")], changes("constexpr int kMost = 128;\n", "constant"))
        self.assertEqual([("0", "1")], changes(in_function("n = 0;"), "constant"))
        self.assertEqual([("1.5", "2.5")], changes(in_function("x = 1.5;"), "constant"))
        self.assertEqual([("0x10u", "17u"), ("0x10u", "15u")], changes(in_function("x = 0x10u;"), "constant"))

    def test_a_changed_text_is_as_long_as_before(self):
        self.assertEqual([('"ab\\n"', '"ab~"'), ('"c"', '"~"')], changes(in_function('f("ab\\n", g("c"), "");'), "text"))

    def test_statements_are_left_out_and_declarations_are_not(self):
        text = in_function("""
            int a = 1;
            const Point here(a, 2);
            std::vector<char> state(n);
            Event* record = next();
            auto* const last = next();
            a = f();
            out.flush();
            delete record;
            if (a) {
              break;
            }
            return a;
        """)
        self.assertEqual([("a = f();", ""), ("out.flush();", ""), ("delete record;", ""), ("break;", "")],
                         [change for change in changes(text, "drop")])

    def test_what_looks_ahead_in_memory_is_left_alone(self):
        text = in_function("__builtin_prefetch(&nodes[ahead + 4], 1);\nfetchAheadOf(next);\nv.reserve(n + 1);")
        self.assertEqual([("n + 1", "n - 1")], changes(text, "operator"))
        self.assertEqual([], changes(text, "drop"))
        self.assertEqual([], changes(in_function("go();\nlookAhead();\n__builtin_prefetch(a);"), "order"))

    def test_neighbours_change_places_unless_that_can_change_nothing(self):
        self.assertEqual([("open(); read();", "read(); open();")], changes(in_function("open();\nread();"), "order"))
        self.assertEqual([], changes(in_function("a = 1;\nb = 2;"), "order"))
        self.assertEqual([("a = 1; b = a;", "b = a; a = 1;")], changes(in_function("a = 1;\nb = a;"), "order"))
        self.assertEqual([], changes(in_function("a = 1;\nab = 2;"), "order"))
        self.assertEqual([], changes(in_function("delete a;\ndelete[] b;"), "order"))
        self.assertEqual([], changes(in_function("go();\nint n = 0;\ngo();"), "order"))

    def test_a_choice_within_a_statement_does_not_end_it(self):
        self.assertEqual([("a = b ? c : d;", ""), ("go();", "")], changes(in_function("a = b ? c : d;\ngo();"), "drop"))

    def test_a_flush_is_taken_away(self):
        self.assertEqual([("std::endl", "'\\n'")], changes(in_function("out << n << std::endl;"), "flush"))

    def test_a_flush_of_standard_error_changes_nothing(self):
        self.assertEqual([], changes(in_function("std::cerr << n\n    << std::endl;"), "flush"))
        text = in_function("std::cerr << n;\nstd::cout << n << std::endl;")
        self.assertEqual([("std::endl", "'\\n'")], changes(text, "flush"))

    def test_what_must_be_constant_or_is_not_built_is_left_alone(self):
        for text in ("static_assert(1 < 2);\n", "enum Kind { kOne = 1 };\n", "template <int n = 3>\nvoid f();\n",
                     in_function("switch (n) {\n  case 4:\n    return;\n}").replace("switch (n) {", "{"),
                     "#ifdef _WIN32\nint n = 3;\n#endif\n", "#ifndef _WIN32\n#else\nint n = 3;\n#endif\n",
                     "struct S {\n  virtual int f() = 0;\n};\n", "// n = 3;\n/* m = 4; */\n"):
            with self.subTest(text):
                self.assertEqual([], mutants_of(text))
        self.assertEqual([], mutants_of(in_function("#ifdef _WIN32\nopen();\nread();\n#endif").replace("  #", "#")))
        self.assertEqual(2, len(mutants_of("#ifdef _WIN32\n#else\nint n = 3;\n#endif\n")))

    def test_an_identity_outlives_lines_that_come_and_go(self):
        body = "if (n < m) {\n  go();\n}"
        moved = "// A comment.\nint other;\n" + in_function(body)
        self.assertEqual([mutant.key for mutant in mutants_of(in_function(body))], [mutant.key for mutant in mutants_of(moved)])

    def test_twins_differ_in_their_identity(self):
        keys = [mutant.key for mutant in mutants_of(in_function("go();\nn();\ngo();\nn();\ngo();"))]
        self.assertEqual(len(keys), len(set(keys)))

    def test_the_choice_is_the_same_each_time_and_has_some_of_each_kind(self):
        mutants = mutants_of(in_function("\n".join(f"n = f({i} + m);" for i in range(40))))
        chosen = operators.select(mutants, 0.1)
        self.assertEqual([mutant.key for mutant in chosen], [mutant.key for mutant in operators.select(mutants[::-1], 0.1)])
        self.assertEqual({mutant.kind for mutant in mutants}, {mutant.kind for mutant in chosen})
        self.assertLess(len(chosen), len(mutants) / 5)


class Writing(unittest.TestCase):
    def written(self, text, *kinds):
        source = cpp.Source(text)
        mutants = [mutant for mutant in operators.Finder("src/x.cpp", source).mutants() if mutant.kind in kinds]
        for number, mutant in enumerate(mutants, start=1):
            mutant.number = number
        return schemata.mutated_source(source, mutants)

    def test_a_value_is_chosen_in_its_place(self):
        self.assertEqual("int n = (mutantIsOn(1) ? (a - b) : (a + b));\n", self.written("int n = a + b;\n", "operator"))

    def test_changes_of_one_place_stand_inside_each_other(self):
        self.assertEqual("int n = (mutantIsOn(1) ? (4) : ((mutantIsOn(2) ? (2) : (3))));\n",
                         self.written("int n = 3;\n", "constant"))

    def test_statements_are_guarded_and_keep_their_lines(self):
        text = self.written(in_function("go();\nhalt();"), "drop", "order")
        self.assertEqual("void f() {\n  if (mutantIsOn(3)) { halt(); go(); } else { if (!mutantIsOn(1)) { go(); }\n"
                         "  if (!mutantIsOn(2)) { halt(); } }\n}\n", text)

    def test_a_constant_with_mutants_is_made_a_variable(self):
        self.assertTrue(self.written("constexpr int k = 3;\n", "constant").startswith("const int k = (mutantIsOn(1)"))
        self.assertTrue(self.written('constexpr const char* k = "a";\n', "text").startswith(' const char* k = (mutantIsOn(1)'))

    def test_a_function_of_the_compiler_asks_in_a_run_alone(self):
        text = self.written("constexpr int f(int i) {\n  return 2 * i;\n}\n", "operator")
        self.assertIn("(mutantIsOnInRun(1) ? (2 / i) : (2 * i))", text)


class Explaining(unittest.TestCase):
    PAGE = ("## Survivors\n\n### `src/x.cpp`\n\n"
            "- `n < m` -> `n <= m` in `if (n < m) {`: at equality\n  both do nothing\n\n## Other\n")

    def test_a_survivor_is_known_by_its_file_its_line_and_its_change(self):
        explained = records.explanations(self.PAGE)
        mutants = mutants_of(in_function("if (n < m) {\n}"))
        self.assertEqual([True, False], [records.is_explained(mutant, explained) for mutant in mutants])
        elsewhere = mutants_of(in_function("if (n < m) {\n}"), "src/y.cpp")
        self.assertFalse(records.is_explained(elsewhere[0], explained))

    def test_without_a_reason_it_is_not_explained(self):
        page = "### `src/x.cpp`\n- `n < m` -> `n <= m` in `if (n < m) {`: \n"
        self.assertFalse(records.is_explained(mutants_of(in_function("if (n < m) {\n}"))[0], records.explanations(page)))

    def test_an_explanation_of_what_is_not_in_the_source_any_more_is_told(self):
        names = {"src/x.cpp": {records.name_of(mutant) for mutant in mutants_of(in_function("if (n < m) {\n}"))}}
        self.assertEqual([], records.outdated(records.explanations(self.PAGE), names))
        changed = {"src/x.cpp": {records.name_of(mutant) for mutant in mutants_of(in_function("if (n < k) {\n}"))}}
        told = records.outdated(records.explanations(self.PAGE), changed)
        self.assertEqual(["src/x.cpp"], [file for file, _ in told])


class WholeRun(unittest.TestCase):
    """On a project of one function, whose tests do not look at its boundary."""

    FILES = {
        "CMakeLists.txt": """
            cmake_minimum_required(VERSION 3.25)
            project(limit LANGUAGES CXX)
            enable_testing()
            add_executable(limit_test tests/limit_test.cpp src/limit.h)
            target_include_directories(limit_test PRIVATE src)
            add_test(NAME Limit.IsTold COMMAND limit_test)
        """,
        "src/limit.h": """
            #pragma once
            inline bool isAbove(int value, int limit) {
              return value > limit;
            }
        """,
        "tests/limit_test.cpp": """
            #include "limit.h"
            int main() {
              return isAbove(3, 2) && !isAbove(1, 2) ? 0 : 1;
            }
        """,
    }
    EXPLAINED = ("### `src/limit.h`\n\n"
                 "- `value > limit` -> `value >= limit` in `return value > limit;`: nobody asks at the limit\n")

    def run_tool(self, top, *options):
        return subprocess.run([sys.executable, TOP / "scripts" / "mutation", "--top", top, "--share", "100", *options],
                              capture_output=True, text=True, env={**os.environ, "CMAKE_GENERATOR": "Ninja"})

    def test_a_gap_is_told_until_it_is_explained_or_closed(self):
        with tempfile.TemporaryDirectory() as folder:
            top = pathlib.Path(folder)
            for name, text in self.FILES.items():
                (top / name).parent.mkdir(exist_ok=True)
                (top / name).write_text(textwrap.dedent(text).lstrip("\n"))

            gap = "`value > limit` -> `value >= limit` in `return value > limit;`: SURVIVED 1 programs"
            done = self.run_tool(top)
            self.assertEqual(1, done.returncode, done.stdout + done.stderr)
            self.assertIn(f"Gaps: 1\n  2 src/limit.h:3: comparison: {gap}\n", done.stdout)
            self.assertIn("| all | 2 | 1 | 1 | 0 | 0 | 50.0 % |", done.stdout)
            self.assertIn("-> `value <= limit` in `return value > limit;`: caught by Limit.IsTold (failed)", done.stdout)

            (top / "docs").mkdir()
            (top / "docs" / "mutation.md").write_text(self.EXPLAINED)
            done = self.run_tool(top, "--report")
            self.assertEqual(0, done.returncode, done.stdout + done.stderr)
            self.assertIn("Explained: 1\n", done.stdout)

            (top / "docs" / "mutation.md").write_text(self.EXPLAINED + self.EXPLAINED.replace("value", "number"))
            done = self.run_tool(top, "--report")
            self.assertEqual(1, done.returncode, done.stdout + done.stderr)
            self.assertIn("Explained, and not in the sources any more: 1\n  src/limit.h: `number > limit` ->", done.stdout)

            (top / "docs" / "mutation.md").unlink()
            test = top / "tests" / "limit_test.cpp"
            test.write_text(test.read_text().replace("!isAbove(1, 2)", "!isAbove(1, 2) && !isAbove(2, 2)"))
            done = self.run_tool(top, "--again")
            self.assertEqual(0, done.returncode, done.stdout + done.stderr)
            self.assertIn("running 1 of 2 mutants", done.stdout)

            done = self.run_tool(top, "--one", "2")
            self.assertIn("  Limit.IsTold: failed\n", done.stdout)


class Running(unittest.TestCase):
    def ending(self, code, cpu_seconds=5):
        return trial.run_process([sys.executable, "-c", code], ".", {}, 0, cpu_seconds, 60)

    def test_a_test_that_does_not_end_is_stopped(self):
        self.assertEqual("endless", self.ending("while True: pass", 1).verdict)

    def test_a_signal_is_told_from_a_failure(self):
        self.assertEqual("signal 6", self.ending("import os; os.abort()").verdict)
        self.assertEqual("failed", self.ending("raise SystemExit(3)").verdict)
        self.assertEqual("passed", self.ending("pass").verdict)

    def test_a_program_of_tests_tells_which_failed_or_was_on_when_it_ended(self):
        def failed(output):
            return trial.Ending("failed", 0.0, 0.0, output).failed_tests()
        self.assertEqual([], failed("[ RUN      ] A.One\n[       OK ] A.One (0 ms)\n"))
        self.assertEqual(["A.Two"], failed("[ RUN      ] A.One\n[       OK ] A.One (0 ms)\n[ RUN      ] A.Two\nx\n"))
        self.assertEqual(["A.One"], failed("[ RUN      ] A.One\nx\n[  FAILED  ] A.One, where x = 1 (0 ms)\n[  FAILED  ] A.One\n"))


if __name__ == "__main__":
    unittest.main()
