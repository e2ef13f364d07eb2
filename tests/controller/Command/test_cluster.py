"""Several processes under MPI, and the job script for Slurm."""

import os
import shutil
import subprocess
import unittest

from quorva import QUORVA, RAILWAY, QuorvaCase

WORDS = ["run", RAILWAY, "--set", "netNotDeliveryProb=0.8", "--unit-batches", "200", "--variables", "2-10", "-p", "5%", "-q"]
# Open MPI keeps what it allocates to the end of the process.
ENVIRONMENT = {**os.environ, "ASAN_OPTIONS": "detect_leaks=0", "OMPI_MCA_btl_vader_single_copy_mechanism": "none"}


class Mpi(QuorvaCase):
    def setUp(self):
        super().setUp()
        if "MPI: yes" not in self.call("--version").stdout or not shutil.which("mpirun"):
            self.skipTest("built without MPI, or there is no mpirun")

    def mpirun(self, *words, status=0):
        done = subprocess.run(["mpirun", "--oversubscribe", "--allow-run-as-root", "-n", "3", QUORVA, *map(str, words)],
                              cwd=self.folder, env=ENVIRONMENT, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              timeout=300, check=False)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done

    def test_three_processes_give_the_bytes_of_one(self):
        self.mpirun(*WORDS, "-j", 2, "-o", "three")
        self.call(*WORDS, "-j", 1, "-o", "one")
        self.assertEqual(self.both_exports("three"), self.both_exports("one"))

    def test_simulators_that_die_on_other_nodes_are_run_again(self):
        words = ["-e", 0, "--unit-batches", 20, "--least", 60, "-p", "10%", "-q"]
        done = self.mpirun("run", self.fake("dies-once"), *words, "-o", "three")
        self.assertIn("the simulator was ended by signal 9 (Killed)", done.stderr)
        self.call("run", self.fake(name="sound"), *words, "-o", "one")
        self.assertEqual(self.both_exports("three"), self.both_exports("one"))

    def test_statuses_are_those_of_the_program(self):
        self.mpirun("run", self.fake(), "-e", 0, "--least", 1000, "--greatest", 1000, "-p", "0.1%", "-q", "-o", "short", status=3)
        self.assertIn("there is no study in nowhere", self.mpirun("status", "nowhere", status=1).stderr)
        self.mpirun("walk", status=2)


class Slurm(QuorvaCase):
    def test_the_job_script_does_the_same(self):
        words = [word for word in WORDS if word != "-q"]
        script = self.call(*words, "--launcher", "slurm", "-o", "it's here").stdout
        self.assertFalse((self.folder / "it's here").exists())
        self.assertNotIn("--launcher", script)
        (self.folder / "job").write_text(script)
        # In the place of Slurm: what is behind srun's own options is run as it stands.
        srun = self.folder / "bin/srun"
        srun.parent.mkdir()
        srun.write_text('#!/bin/sh\nwhile [ "${1#--}" != "$1" ]; do shift; done\nexec "$@"\n')
        srun.chmod(0o755)
        subprocess.run(["bash", "job"], cwd=self.folder, check=True, stdout=subprocess.DEVNULL,
                       env={**os.environ, "PATH": f"{srun.parent}:{os.environ['PATH']}"}, timeout=300)
        self.call(*WORDS, "-o", "local")
        self.assertEqual(self.both_exports("it's here"), self.both_exports("local"))


if __name__ == "__main__":
    unittest.main()
