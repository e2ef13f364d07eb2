"""What goes wrong: each fault has a clear message, the right status, and loses nothing that was stored."""

import fcntl
import os
import sqlite3
import subprocess
import unittest

from quorva import QUORVA, RAILWAY, QuorvaCase

LOOSE = ["-e", 0, "--unit-batches", 20, "--least", 60, "-q", "-p", "30%"]
GOAL = [*LOOSE[:-1], "5%"]


class Simulators(QuorvaCase):
    def setUp(self):
        super().setUp()
        self.call("run", self.fake(name="sound"), *GOAL, "-o", "sound")
        self.expected = self.both_exports("sound")

    def fails(self, mode, *words):
        """A study of a stand-in that misbehaves at each unit; gives the words on standard error."""
        simulator = self.fake(mode)
        done = self.call("run", simulator, *GOAL, "-j", 1, "--attempts", 2, "-o", "s", *words, status=1)
        self.assertIn("The unit is given up. Its command: ", done.stderr)
        self.assertEqual(len(self.calls(simulator)), 2)
        self.goes_on(simulator)
        return done.stderr

    def goes_on(self, simulator):
        """Mended, the study goes on where it stopped, to the same end."""
        (simulator.parent / "mode").unlink()
        self.call("run", simulator, *GOAL, "-o", "s")
        self.assertEqual(self.both_exports("s"), self.expected)

    def test_that_cannot_be_started(self):
        for make, words in ((lambda file: None, "does not exist"),
                            (lambda file: file.mkdir(), "is no program that may be executed"),
                            (lambda file: file.write_text("text"), "is no program that may be executed")):
            file = self.folder / "none"
            make(file)
            done = self.call("run", "./none", "-o", "s", status=1)
            self.assertIn(f"the simulator ./none {words}", done.stderr)
            if file.is_dir():
                file.rmdir()
        broken = self.folder / "broken"
        broken.write_text("#!/no/such/interpreter\n")
        broken.chmod(0o755)
        self.assertIn("cannot be started: No such file or directory", self.call("run", broken, "-o", "s", status=1).stderr)

    def test_that_is_none(self):
        done = self.call("run", "true", "-o", "s", status=1)
        self.assertIn("does not answer as a simulator does when asked for its experiments: it ended with status 0", done.stderr)

    def test_that_ends_badly_when_it_is_asked_what_it_has_to_offer(self):
        done = self.call("run", self.fake("unwell"), *GOAL, "-o", "s", status=1)
        self.assertEqual(done.stderr, 'quorva: the simulator cannot run experiment "0": it ended with status 3\n')

    def test_that_refuses(self):
        words = self.fails("refuses")
        self.assertIn('unit 0 of experiment "0", attempt 2: the simulator ended with status 1; its last words:\n'
                      'ERROR: the bridge is up', words)

    def test_that_prints_and_leaves_rubbish(self):
        self.assertIn("does not begin with the head of a binary result file", self.fails("rubbish"))

    def test_that_leaves_no_file(self):
        self.assertIn("the result file has 0 bytes, and its head alone has 256", self.fails("silent"))

    def test_that_leaves_a_torn_file(self):
        self.assertIn("the result file has 216 bytes, and its head alone has 256", self.fails("torn"))

    def test_that_leaves_an_oversized_message(self):
        self.assertIn("the message at byte 256 announces 2147483647 bytes, and 176 are left", self.fails("oversized"))

    def test_that_hangs(self):
        self.assertIn("did not end within 2 seconds and was ended", self.fails("hangs", "--unit-time-limit", 2))

    def test_that_is_stopped_goes_on(self):
        self.call("run", self.fake("stops"), *GOAL, "-o", "s")
        self.assertEqual(self.both_exports("s"), self.expected)

    def test_that_dies_is_run_again(self):
        simulator = self.fake("dies-once")
        done = self.call("run", simulator, *GOAL, "-j", 3, "-o", "s")
        self.assertIn("the simulator was ended by signal 9 (Killed)", done.stderr)
        self.assertIn("it is run again", done.stderr)
        self.assertEqual(self.both_exports("s"), self.expected)

    def test_that_prints_megabytes_is_read(self):
        self.call("run", self.fake("noisy"), *GOAL, "-o", "s")
        self.assertEqual(self.both_exports("s"), self.expected)

    def test_units_that_came_before_a_fault_are_kept(self):
        simulator = self.fake()
        self.call("run", simulator, *LOOSE, "-j", 1, "-o", "s")
        early = self.calls(simulator)
        (simulator.parent / "mode").write_text("torn")
        self.call("run", simulator, *GOAL, "-j", 1, "--attempts", 1, "-o", "s", status=1)
        self.goes_on(simulator)
        self.assertEqual([self.calls(simulator).count(seed) for seed in early], [1] * len(early))

    def test_that_is_replaced_while_the_study_runs(self):
        simulator = self.fake()
        text = simulator.read_text()
        simulator.write_text(text.replace("    print(\"SIMULATOR", "    open(__file__, 'a').write('#')\n    print(\"SIMULATOR"))
        done = self.call("run", simulator, *GOAL, "-j", 1, "-o", "s", status=1)
        self.assertIn("is another executable than the study began with", done.stderr)


class Stores(QuorvaCase):
    def setUp(self):
        super().setUp()
        self.simulator = self.fake()
        self.words = ["run", self.simulator, *LOOSE, "-o", "s"]
        self.call(*self.words)
        self.store = self.folder / "s/study.sqlite"

    def refused(self, words, *command):
        before = self.store.read_bytes()
        self.assertIn(words, self.call(*(command or self.words), status=1).stderr)
        self.assertEqual(self.store.read_bytes(), before)

    def test_locked_by_another_program(self):
        other = sqlite3.connect(self.store, isolation_level=None)
        self.addCleanup(other.close)
        other.execute("BEGIN EXCLUSIVE")
        # Not by refused: a process that closes a file it reads loses its locks on it.
        self.assertIn("is locked by another program; wait for it to end, or end it", self.call(*self.words, status=1).stderr)

    def test_another_quorva_at_work(self):
        with open(self.folder / "s/study.lock", "rb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.refused("the study is locked: another quorva works on it")

    def test_of_a_newer_version(self):
        with sqlite3.connect(self.store) as other:
            other.execute("PRAGMA user_version=7")
        other.close()
        for command in ("run", "status", "export", "report", "rerun"):
            self.refused("has format 7, and this program knows formats up to 1",
                         *(self.words if command == "run" else (command, "s")))

    def test_cut_off(self):
        os.truncate(self.store, self.store.stat().st_size // 2)
        self.refused("damaged or cut off")

    def test_of_no_bytes(self):
        os.truncate(self.store, 0)
        self.refused("is not a store of studies")

    def test_of_another_executable(self):
        self.simulator.write_text(self.simulator.read_text() + "\n")
        self.refused("the study in ")
        self.refused("its executable's SHA-256 is ")

    def test_of_other_values(self):
        for words, difference in ((["--seed", 2], "its seed is 1, and 2 is asked for"),
                                  (["--generator", "tausworthe"], "its generator is 2, and 1 is asked for"),
                                  (["--unit-batches", 30], "its number of batches in a unit is 20, and 30 is asked for"),
                                  (["-e", "0,1"], 'its list of experiments is "0", and "0", "1" is asked for')):
            given = [str(word) for word in self.words]
            for at in range(0, len(words), 2):
                if words[at] in given:
                    place = given.index(words[at])
                    given[place:place + 2] = []
            self.refused(difference, *given, *words)

    def test_that_is_not_there(self):
        for command in ("status", "export", "report", "rerun"):
            self.assertIn("there is no study in nowhere", self.call(command, "nowhere", status=1).stderr)


class Usage(QuorvaCase):
    def wrong(self, words, *command):
        self.assertIn(words, self.call(*command, status=2).stderr)

    def test_an_unknown_experiment(self):
        self.wrong("there is no experiment 1: the simulator's experiments are 0 to 0", "run", RAILWAY, "-e", 1, "-o", "s")

    def test_an_unknown_global_variable_in_the_simulators_words(self):
        self.wrong("the simulator knows no global variable nTrain; its words: !! studyRangeStudy::OverrideGVValue: "
                   "Global Variable nTrain does not exist.", "run", RAILWAY, "--set", "nTrain=3", "-o", "s")
        self.wrong("the simulator knows no global variable nTrain", "run", RAILWAY, "--set", "short:nTrain=3", "-o", "s")
        self.wrong("the simulator knows no global variable loss", "run", RAILWAY, "--set", "loss=0.5", "-o", "s")
        self.wrong("the simulator knows no global variable loss", "run", RAILWAY, "--set", "loss=0", "-o", "s")

    def test_a_value_that_the_simulator_refuses_in_its_words(self):
        done = self.call("run", RAILWAY, "--set", "short:nTrains=-1", "-o", "s", status=1)
        self.assertIn('the simulator cannot run experiment "0 nTrains=-1": it ended with status 1; its last words:', done.stderr)

    def test_an_unknown_variable(self):
        self.wrong('--variables: experiment "0" has no variable 11; it has 0,1,2,3,4,5,6,7,8,9,10', "run", RAILWAY, "--variables",
                   11, "-o", "s")

    def test_values_that_are_too_long_for_a_simulator(self):
        self.wrong("a simulator takes 128 characters", "run", RAILWAY, "-o", "s",
                   *(word for name in ("MAnetDelay", "RBCprocessingTime", "TPRUpdatePeriod", "TPRnetDelay", "netNotDeliveryProb",
                                       "positionUpdatePeriod") for word in ("--set", f"double:{name}=0.123456789")))

    def test_faults_of_the_command_line(self):
        for words in ([], ["walk"], ["run"], ["run", RAILWAY, "--jobs", "0"], ["run", RAILWAY, "--precision", "much"],
                      ["run", RAILWAY, "--confidence", "1"], ["run", RAILWAY, "--mode", "fast"], ["run", RAILWAY, "--set", "x"],
                      ["run", RAILWAY, "--generator", "dice"], ["run", RAILWAY, "--time-limit", "-1"],
                      ["run", RAILWAY, "--variables", "a"], ["run", RAILWAY, "-e", "2-1"], ["export", "s", "--format", "xml"]):
            self.assertNotEqual(self.call(*words, status=2).stderr, "", words)


class Disk(QuorvaCase):
    def test_an_export_to_a_full_device_fails(self):
        self.call("run", self.fake(), *LOOSE, "-o", "s")
        with open("/dev/full", "w", encoding="utf-8") as full:
            done = subprocess.run([QUORVA, "export", "s", "--observations"], cwd=self.folder, stdout=full, stderr=subprocess.PIPE, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (1, "quorva: standard output cannot be written to\n"))

    def test_a_full_disk_loses_nothing_and_the_same_command_goes_on(self):
        small = self.folder / "small"
        small.mkdir()
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=160k", "tmpfs", small], stderr=subprocess.DEVNULL, check=False).returncode:
            self.skipTest("mounting a small file system needs root")
        self.addCleanup(subprocess.run, ["umount", "-l", small], check=True)
        simulator = self.fake()
        words = ["run", simulator, "-e", 0, "--unit-batches", 500, "--least", 40000, "-p", "5%", "-q", "-j", 2]
        done = self.call(*words, "-o", small / "s", status=1)
        self.assertRegex(done.stderr, "disk is full|result file (is cut off|has [0-9]+ bytes)|No space left on device")
        subprocess.run(["mount", "-o", "remount,size=64m", small], check=True)
        self.call(*words, "-o", small / "s")
        self.call(*words, "-o", "large")
        self.assertEqual(self.both_exports(small / "s"), self.both_exports("large"))


if __name__ == "__main__":
    unittest.main()
