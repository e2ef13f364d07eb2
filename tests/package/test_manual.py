"""The railway's man page against what it describes. QUORVA_RAILWAY names the executable, QUORVA_MANUAL the page."""

import os
import pathlib
import re
import shutil
import subprocess
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
PAGE = pathlib.Path(os.environ["QUORVA_MANUAL"]).read_text(encoding="ascii").replace(r"\-", "-")
README = (TOP / "README.md").read_text(encoding="utf-8")


def section(title):
    return re.search(rf'^\.SH "?{title}"?\n(.*?)(?=^\.SH |\Z)', PAGE, re.MULTILINE | re.DOTALL).group(1)


class Manual(unittest.TestCase):
    def test_has_every_option_of_the_usage_text(self):
        usage = subprocess.run([os.environ["QUORVA_RAILWAY"]], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               text=True, check=False).stderr
        letters = re.findall(r"^-(\w)", usage, re.MULTILINE)
        self.assertIn("N", letters)
        told = re.findall(r"^\.TP\n\.BI? -(\w)", section("OPTIONS"), re.MULTILINE)
        # The usage text leaves out -O.
        self.assertEqual(sorted(told), sorted(letters + ["O"]))

    def test_tells_which_options_take_a_value(self):
        table = dict(re.findall(r"^\| `-(\w)( <\w+>)?` \|", README, re.MULTILINE))
        page = dict(re.findall(r'^\.TP\n\.BI? -(\w)( ")?', section("OPTIONS"), re.MULTILINE))
        self.assertEqual({letter: bool(value) for letter, value in page.items()},
                         {letter: bool(value) for letter, value in table.items()})

    def test_has_the_global_variables_with_the_types_and_values_of_the_readme(self):
        table = re.findall(r"^\| `(\w+)` \| `(\w)` \| ([\d.]+) \|", README, re.MULTILINE)
        page = re.findall(r'^\.BR (\w+) " \((\w), ([\d.]+)\)"', section("GLOBAL VARIABLES"), re.MULTILINE)
        self.assertEqual(page, table)
        declared = (TOP / "models/railway/Study/study/GlobalVariables.h").read_text(encoding="utf-8")
        self.assertEqual({(name, kind) for name, kind, _ in page},
                         {(name, kind[0].lower()) for kind, name in re.findall(r"^extern (\w+) (\w+);", declared, re.M)})

    def test_its_example_runs(self):
        example = re.search(r"^(railway -N 1000 -O .*)$", section("GLOBAL VARIABLES"), re.MULTILINE).group(1)
        done = subprocess.run([os.environ["QUORVA_RAILWAY"], *example.split()[1:]], capture_output=True, text=True,
                              check=False)
        self.assertEqual((done.returncode, done.stderr), (0, "SIMULATOR::MAIN()-GOOD EXIT\n"))

    def test_names_the_version_of_the_project(self):
        version = re.search(r"project\(quorva VERSION ([0-9.]+)", (TOP / "CMakeLists.txt").read_text()).group(1)
        self.assertIn(f'"Quorva {version}"', PAGE.splitlines()[0])

    @unittest.skipUnless(shutil.which("groff"), "there is no groff")
    def test_has_no_mistake_that_groff_knows(self):
        def complaints(page):
            return subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-z", "-rCHECKSTYLE=3"], input=page, text=True,
                                  capture_output=True, check=False).stderr
        self.assertEqual(complaints(pathlib.Path(os.environ["QUORVA_MANUAL"]).read_text(encoding="ascii")), "")
        self.assertNotEqual(complaints(".TH A 1\n.SH NAME\n\\*[undefined]\n"), "")


if __name__ == "__main__":
    unittest.main()
