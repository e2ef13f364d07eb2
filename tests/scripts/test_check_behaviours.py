"""scripts/check-behaviours on small tables, each with one fault, and on one without any."""

import contextlib
import importlib.machinery
import importlib.util
import io
import pathlib
import subprocess
import sys
import tempfile
import types
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent.parent.parent / "scripts" / "check-behaviours"


def loaded(script):
    loader = importlib.machinery.SourceFileLoader("check_behaviours", str(script))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


sys.dont_write_bytecode = True  # nothing is left beside the script
CHECK = loaded(SCRIPT)

HEAD = "# Behaviours\n\nWhat is told, and by which test it is guarded.\n\n## src/Lamp\n\n| Behaviour | Guarded by |\n|---|---|\n"
GOOD_ROWS = ("| It lights | `Lamp.Lights` |\n"
             "| It goes out | `Lamp.GoesOut`, `Lamp.Lights` |\n"
             "| Each colour has its number | `Colours/Lamp.Number/*` |\n")
ELSEWHERE = "\n## Tests that other builds run\n\n| Test | Why not here |\n|---|---|\n"

RESULTS = """<?xml version="1.0" encoding="UTF-8"?>
<testsuite name="Linux" tests="6" failures="1" disabled="1" skipped="1">
  <testcase name="Lamp.Lights" classname="Lamp.Lights" time="0.1" status="run"><system-out></system-out></testcase>
  <testcase name="Lamp.GoesOut" classname="Lamp.GoesOut" time="0.1" status="fail"><failure message=""/></testcase>
  <testcase name="Colours/Lamp.Number/0" classname="Lamp" time="0.1" status="run"/>
  <testcase name="Colours/Lamp.Number/1" classname="Lamp" time="0.1" status="run"/>
  <testcase name="Lamp.Burns" classname="Lamp.Burns" time="0" status="notrun">
    <skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/></testcase>
  <testcase name="Lamp.Breaks" classname="Lamp.Breaks" time="0" status="disabled"/>
</testsuite>
"""


class BehaviourTable(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.table = pathlib.Path(folder.name, "table.md")
        self.results = pathlib.Path(folder.name, "results.xml")

    def check(self, table, results=RESULTS, options=()):
        self.table.write_text(table, encoding="utf-8")
        self.results.write_text(results, encoding="utf-8")
        words = ["--table", str(self.table), "--results", str(self.results), *map(str, options)]
        out, err = io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
            try:
                status = CHECK.main(words)
            except SystemExit as end:
                status = end.code
        return types.SimpleNamespace(stdout=out.getvalue(), stderr=err.getvalue(), returncode=status)

    def expect_faults(self, table, *faults):
        """`faults` are pairs of a line and its text; nothing else is told but the count."""
        done = self.check(table)
        *told, count = done.stdout.splitlines()
        self.assertEqual(told, [f"{self.table}:{line}: {text}" for line, text in faults])
        self.assertTrue(count.endswith(f" {len(faults)} faults."), count)
        self.assertEqual(done.stderr, "")
        self.assertEqual(done.returncode, 1)

    def expect_refusal(self, done, words):
        self.assertEqual(done.stdout, "")
        self.assertEqual(done.stderr, f"check-behaviours: {words}\n")
        self.assertEqual(done.returncode, 1)

    def test_a_table_whose_tests_all_ran_has_no_fault(self):
        done = self.check(HEAD + GOOD_ROWS)
        self.assertEqual(done.stdout, "Behaviours: 3 rows, 4 of 6 tests guard them, 0 faults.\n")
        self.assertEqual(done.stderr, "")
        self.assertEqual(done.returncode, 0)

    def test_a_test_that_does_not_exist_is_a_fault(self):
        self.expect_faults(HEAD + GOOD_ROWS + "| It hums | `Lamp.Hums` |\n", (12, "Lamp.Hums: no test has this name"))

    def test_the_beginning_of_a_name_is_no_name(self):
        self.expect_faults(HEAD + "| It lights | `Lamp.Light` |\n", (9, "Lamp.Light: no test has this name"))

    def test_a_family_without_a_test_is_a_fault(self):
        self.expect_faults(HEAD + "| It hums | `Tunes/Lamp.Hums/*` |\n", (9, "Tunes/Lamp.Hums/*: no test has this name"))

    def test_a_test_that_was_skipped_did_not_run(self):
        self.expect_faults(HEAD + "| It burns | `Lamp.Burns` |\n", (9, "Lamp.Burns did not run"))

    def test_a_test_that_is_disabled_did_not_run(self):
        self.expect_faults(HEAD + "| It breaks | `Lamp.Breaks` |\n", (9, "Lamp.Breaks did not run"))

    def test_every_test_of_a_family_must_have_run(self):
        self.expect_faults(HEAD + "| It does all | `Lamp.*` |\n", (9, "Lamp.Breaks did not run"),
                           (9, "Lamp.Burns did not run"))

    def test_a_row_without_a_test_is_a_fault(self):
        self.expect_faults(HEAD + "| It lights | |\n| It hums ||\n", (9, "no test guards this behaviour"),
                           (10, "no test guards this behaviour"))

    def test_a_row_without_a_behaviour_is_a_fault(self):
        self.expect_faults(HEAD + "| | `Lamp.Lights` |\n", (9, "the row tells of no behaviour"))

    def test_other_words_beside_the_names_are_a_fault(self):
        for cell in ("Lamp.Lights", "`Lamp.Lights` and `Lamp.GoesOut`", "`Lamp.Lights` `Lamp.GoesOut`", "`Lamp.Lights`,"):
            self.expect_faults(HEAD + f"| It lights | {cell} |\n",
                               (9, f"{cell}: not a list of test names in backticks with commas between them"))

    def test_a_star_within_a_name_is_a_fault(self):
        self.expect_faults(HEAD + "| It lights | `*.Lights` |\n", (9, "*.Lights: a * may stand at the end of a name alone"),
                           (9, "*.Lights: no test has this name"))

    def test_a_test_named_twice_in_a_row_is_a_fault(self):
        self.expect_faults(HEAD + "| It lights | `Lamp.Lights`, `Lamp.Lights` |\n", (9, "Lamp.Lights is named 2 times"))

    def test_a_repeated_row_is_a_fault_whatever_its_tests(self):
        self.expect_faults(HEAD + GOOD_ROWS + "| It lights | `Lamp.GoesOut` |\n",
                           (12, "the same behaviour stands in line 9 too"))

    def test_the_same_words_under_another_heading_are_another_behaviour(self):
        second = "\n## src/Torch\n\n| Behaviour | Guarded by |\n|---|---|\n| It lights | `Lamp.Lights` |\n"
        self.assertEqual(self.check(HEAD + GOOD_ROWS + second).returncode, 0)

    def test_a_repeated_heading_is_a_fault(self):
        second = "\n## src/Lamp\n\n| Behaviour | Guarded by |\n|---|---|\n| It is warm | `Lamp.Lights` |\n"
        self.expect_faults(HEAD + GOOD_ROWS + second, (13, 'the heading "src/Lamp" stands in line 5 too'))

    def test_a_row_of_another_number_of_cells_is_a_fault(self):
        self.expect_faults(HEAD + GOOD_ROWS + "| It | lights | `Lamp.Lights` |\n",
                           (12, "the row has 3 cells, not 2; a bar within a cell is written \\|"))

    def test_a_bar_may_stand_in_a_cell(self):
        self.assertEqual(self.check(HEAD + "| It writes a \\| b | `Lamp.Lights` |\n").returncode, 0)

    def test_a_table_of_another_form_is_a_fault(self):
        self.expect_faults(HEAD + GOOD_ROWS + "\n| Test | Behaviour |\n|---|---|\n| `Lamp.Lights` | It lights |\n",
                           (13, "the table's head is | Test | Behaviour |, not | Behaviour | Guarded by |"),
                           (15, "It lights: not a list of test names in backticks with commas between them"))

    def test_a_test_of_another_build_may_be_skipped_or_missing_with_a_reason(self):
        rows = "| It burns | `Lamp.Burns` |\n| It floats | `Water/Lamp.Floats/*` |\n"
        reasons = "| `Lamp.Burns` | needs fire |\n| `Water/Lamp.*` | the build for water |\n"
        self.assertEqual(self.check(HEAD + rows + ELSEWHERE + reasons).returncode, 0)

    def test_the_list_of_other_builds_needs_names_that_guard_rows_and_reasons(self):
        reasons = "| `Lamp.Breaks` | needs a hammer |\n| `Lamp.Lights` | |\n| Lamp.Lights | is no name |\n"
        self.expect_faults(HEAD + GOOD_ROWS + ELSEWHERE + reasons, (17, "Lamp.Breaks guards no row and needs no reason"),
                           (18, "no reason is given"), (19, "Lamp.Lights: not the name of one test in backticks"))

    def test_a_document_without_rows_is_refused(self):
        self.expect_refusal(self.check("# Behaviours\n"), f"{self.table} has no row to check")
        self.expect_refusal(self.check(HEAD), f"{self.table} has no row to check")

    def test_a_table_that_cannot_be_read_is_refused(self):
        missing = self.table.with_name("missing.md")
        self.expect_refusal(self.check(HEAD, options=("--table", missing)),
                            f"{missing} cannot be read: No such file or directory")

    def test_results_that_cannot_be_read_are_refused(self):
        missing = self.table.with_name("missing.xml")
        self.expect_refusal(self.check(HEAD, options=("--results", missing)),
                            f"{missing} cannot be read; scripts/test --release-only makes it")

    def test_results_of_no_test_are_refused(self):
        self.expect_refusal(self.check(HEAD + GOOD_ROWS, results="<testsuite/>"),
                            f"{self.results} tells of no test; scripts/test --release-only makes it anew")

    def test_results_that_are_no_document_are_refused(self):
        done = self.check(HEAD + GOOD_ROWS, results="")
        self.assertIn("is not what CTest writes", done.stderr)
        self.assertEqual(done.returncode, 1)

    def test_a_faulty_table_fails_the_script(self):
        self.table.write_text(HEAD + "| It hums | `Lamp.Hums` |\n", encoding="utf-8")
        self.results.write_text(RESULTS, encoding="utf-8")
        done = subprocess.run([SCRIPT, "--table", self.table, "--results", self.results], stdout=subprocess.PIPE,
                              text=True, check=False)
        self.assertIn("Lamp.Hums: no test has this name\n", done.stdout)
        self.assertEqual(done.returncode, 1)

    def test_help_tells_the_options(self):
        done = subprocess.run([SCRIPT, "--help"], stdout=subprocess.PIPE, text=True, check=False)
        self.assertTrue(done.stdout.startswith("Checks that the tests which docs/behaviours.md names"), done.stdout)
        for option in ("--table", "--results", "--help"):
            self.assertIn(f"  {option}", done.stdout)
        self.assertEqual(done.returncode, 0)

    def test_an_unknown_option_is_refused(self):
        self.assertNotEqual(self.check(HEAD + GOOD_ROWS, options=("--quick",)).returncode, 0)


if __name__ == "__main__":
    unittest.main()
