"""The example of docs/traces.md against the traces of the command that it names."""

import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest

DOCUMENT = pathlib.Path(__file__).resolve().parents[2] / "docs" / "traces.md"


def blocks(language):
    """The blocks of the document that are marked as being in the language, in order."""
    return re.findall(rf"^```{language}\n(.*?)^```$", DOCUMENT.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL)


class Example(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        command = shlex.split(blocks("sh")[0])
        assert command[0] == "railway", command
        environment = {name: value for name, value in os.environ.items() if name != "SIMTEST"}
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([os.environ["QUORVA_RAILWAY"], *command[1:]], cwd=folder, env=environment, check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            cls.traces = {suffix: (pathlib.Path(folder) / f"lost.{suffix}").read_text(encoding="utf-8")
                          for suffix in ("txt", "xml")}

    def expect_in_order(self, trace, parts):
        """Checks that the parts stand in the trace as whole lines, one behind the other."""
        at = 0
        for part in parts:
            found = ("\n" + trace).find("\n" + part, at)
            self.assertGreaterEqual(found, at, f"not in the trace, or not in this order:\n{part}")
            at = found + len(part)

    def test_its_text_is_that_of_the_run(self):
        self.assertGreaterEqual(len(blocks("text")), 7)
        self.expect_in_order(self.traces["txt"], blocks("text"))

    def test_its_xml_is_that_of_the_run(self):
        self.assertGreaterEqual(len(blocks("xml")), 4)
        self.expect_in_order(self.traces["xml"], blocks("xml"))

    def test_the_first_block_is_the_start_of_the_trace(self):
        self.assertTrue(self.traces["txt"].startswith(blocks("text")[0]))

    def test_the_authority_of_the_example_is_the_first_one_and_is_lost(self):
        # What the text tells: nothing reaches the train before time 8, and its authority is the line until then.
        before = self.traces["txt"][:self.traces["txt"].index("#### Firing: 8 ")]
        self.assertEqual(before.count("MANetworkDelay_case2\n"), 1)
        self.assertNotIn("MANetworkDelay_case1", before)
        self.assertNotIn("trainMAs.0 = 320", before)


if __name__ == "__main__":
    unittest.main()
