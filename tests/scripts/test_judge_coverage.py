"""What scripts/lib/judge-coverage makes of reports and lists that fit together, and of those that do not."""

import json
import pathlib
import subprocess
import tempfile
import unittest

JUDGE = pathlib.Path(__file__).resolve().parents[2] / "scripts" / "lib" / "judge-coverage"
SOURCE = ["void f() {", "  reached();", "  give(up | in);", "  give(up | in);", "}"]
HEAD = "| File | Line | Why no test reaches it |\n|---|---|---|\n"


class CoverageList(unittest.TestCase):
    def judge(self, missed, rows, reached=1000, branches=(100, 100)):
        """The status and the words on a report in which those lines of SOURCE are not reached, beside `reached` others."""
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            source = folder / "f.cpp"
            source.write_text("\n".join(SOURCE))
            lines = [{"line_number": 1, "count": 1, "branches": []} for _ in range(reached)]
            taken, all_branches = branches
            lines[0]["branches"] = [{"count": int(i < taken)} for i in range(all_branches)]
            lines += [{"line_number": number, "count": 0, "branches": []} for number in missed]
            lines.append({"line_number": 5, "count": 0, "branches": [], "gcovr/noncode": True})
            (folder / "report.json").write_text(json.dumps({"files": [{"file": str(source), "lines": lines}]}))
            (folder / "list.md").write_text(HEAD + "".join(row.replace("FILE", str(source)) + "\n" for row in rows))
            run = subprocess.run([JUDGE, folder / "report.json", folder / "list.md"], capture_output=True, text=True)
            return run.returncode, run.stdout.replace(str(source), "FILE")

    def test_lines_that_are_listed_pass(self):
        row = r"| `FILE` | `give(up \| in);` | never asked |"
        status, words = self.judge([3, 4], [row, row])
        self.assertEqual(status, 0, words)
        self.assertIn("Lines: 1000 of 1002, 99.80 %, of which 98 % are asked\n", words)
        self.assertTrue(words.endswith("Coverage: 2 lines not reached, 0 faults.\n"), words)

    def test_a_line_that_is_not_listed_is_a_fault(self):
        status, words = self.judge([2], [])
        self.assertEqual(status, 1)
        self.assertIn("FILE:2: no test reaches this line, and the list does not tell why: reached();\n", words)

    def test_of_two_equal_lines_one_row_is_too_few(self):
        status, words = self.judge([3, 4], [r"| `FILE` | `give(up \| in);` | never asked |"])
        self.assertEqual(status, 1)
        self.assertIn("FILE:3, 4: no test reaches this line", words)

    def test_a_row_whose_line_is_reached_or_gone_is_a_fault(self):
        for text in ["reached();", "gone();"]:
            status, words = self.judge([], [f"| `FILE` | `{text}` | never asked |"])
            self.assertEqual(status, 1)
            self.assertIn(f"line 3 of the list: FILE has no such line that is not reached: {text}\n", words)

    def test_a_row_in_another_form_is_a_fault(self):
        status, words = self.judge([2], ["| `FILE` | reached(); | never asked |"])
        self.assertEqual(status, 1)
        self.assertIn("line 3 of the list is no row of a file, a line and a reason\n", words)

    def test_figures_below_their_bounds_are_faults(self):
        row = "| `FILE` | `reached();` | never asked |"
        status, words = self.judge([2], [row], reached=48)
        self.assertEqual(status, 1)
        self.assertIn("too few: Lines: 48 of 49, 97.96 %", words)
        status, words = self.judge([], [], branches=(89, 100))
        self.assertEqual(status, 1)
        self.assertIn("too few: Branches: 89 of 100, 89.00 %", words)
        self.assertEqual(self.judge([], [], branches=(90, 100))[0], 0)


if __name__ == "__main__":
    unittest.main()
