"""What the tests of the program share: a scratch folder, calls of the program, and stand-ins for simulators."""

import csv
import io
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
QUORVA = os.environ["QUORVA"]
RAILWAY = os.environ["QUORVA_RAILWAY"]
MM1K = os.environ["QUORVA_MM1K"]


class QuorvaCase(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="quorva-test-")
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def call(self, *words, status=0, **options):
        """Calls the program, which must end with the status; gives its outputs."""
        done = subprocess.run([QUORVA, *map(str, words)], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              cwd=self.folder, check=False, timeout=300, **options)
        self.assertEqual(done.returncode, status, f"{words}\n{done.stdout}\n{done.stderr}")
        return done

    def fake(self, mode=None, name="fake"):
        """A stand-in for a simulator, in a folder of its own."""
        folder = self.folder / name
        folder.mkdir(exist_ok=True)
        program = folder / "simulator"
        lines = (HERE / "fake_simulator.py").read_text().split("\n")
        lines[0] = f"#!{sys.executable} -IS"  # the interpreter itself, and without what it would load beside itself
        program.write_text("\n".join(lines))
        program.chmod(0o755)
        if mode:
            (folder / "mode").write_text(mode)
        return program

    def calls(self, program):
        """The seeds of the units that a stand-in was started for, in their order."""
        file = program.parent / "calls"
        return [int(line) for line in file.read_text().split()] if file.exists() else []

    def export(self, study, *words):
        return self.call("export", study, *words).stdout

    def both_exports(self, study):
        """Everything that a study says, as one text."""
        return self.export(study, "--format", "json") + self.export(study, "--observations")

    def rows(self, study):
        return list(csv.DictReader(io.StringIO(self.export(study))))
