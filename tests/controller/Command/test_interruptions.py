"""Simulators that are killed, and the program itself: killed, interrupted, and called again."""

import os
import pathlib
import random
import signal
import subprocess
import time
import unittest

from quorva import QUORVA, RAILWAY, QuorvaCase


def children_of(process):
    """The running children of a process."""
    try:
        text = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text()
    except OSError:
        return []
    return [int(word) for word in text.split()]


def is_alive(process):
    try:
        return pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0] != "Z"
    except OSError:
        return False


class Kills(QuorvaCase):
    WORDS = ["run", RAILWAY, "--set", "netNotDeliveryProb=0.8", "--unit-batches", "500", "--variables", "2-10", "-q",
             "--attempts", "1000"]

    def start(self, name):
        # Far more precise than it gets to be, so that the study goes on for as long as it is let.
        process = subprocess.Popen([QUORVA, *self.WORDS, "-p", "0.01%", "-j", "3", "-o", name], cwd=self.folder,
                                   stderr=subprocess.DEVNULL)
        self.addCleanup(process.kill)
        return process

    def kill_simulators(self, quorva, count, dice):
        """Kills simulators at random until there were so many; False if the program ended before."""
        killed = set()
        while len(killed) < count and quorva.poll() is None:
            for child in children_of(quorva.pid):
                if child not in killed and len(killed) < count and dice.random() < 0.5:
                    try:
                        os.kill(child, signal.SIGKILL)
                        killed.add(child)
                    except ProcessLookupError:
                        pass
            time.sleep(dice.uniform(0.0, 0.02))
        return len(killed) == count

    def test_thirty_simulators_and_five_times_the_program_change_nothing(self):
        dice = random.Random(5)
        for _ in range(5):
            quorva = self.start("killed")
            self.assertTrue(self.kill_simulators(quorva, 6, dice), "the program ended before all kills")
            left = children_of(quorva.pid)
            quorva.kill()
            quorva.wait()
            # They die with it, which would else go on beside its successor.
            deadline = time.monotonic() + 60
            while any(is_alive(child) for child in left) and time.monotonic() < deadline:
                time.sleep(0.01)
            self.assertFalse([child for child in left if is_alive(child)])
        self.call(*self.WORDS, "-p", "2%", "-j", 2, "-o", "killed")
        self.call(*self.WORDS, "-p", "2%", "-j", 2, "-o", "whole")
        self.assertEqual(self.both_exports("killed"), self.both_exports("whole"))


class Signals(QuorvaCase):
    WORDS = ["-e", 0, "--unit-batches", 20, "--least", 400, "-p", "5%", "-j", 2]

    def stopped_by(self, number):
        simulator = self.fake("late")
        words = [QUORVA, "run", simulator, *self.WORDS, "-o", "s"]
        process = subprocess.Popen([str(word) for word in words], cwd=self.folder, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.kill)
        deadline = time.monotonic() + 120
        while len(self.calls(simulator)) < 4 and time.monotonic() < deadline:
            time.sleep(0.01)
        process.send_signal(number)
        words = process.communicate(timeout=120)[1]
        self.assertEqual(process.returncode, 128 + number)
        self.assertIn(f"stopped by signal {number}; the same command goes on with the study in s", words)
        self.call("run", simulator, *self.WORDS, "-o", "s", "-q")
        (simulator.parent / "mode").unlink()
        self.call("run", simulator, *self.WORDS, "-o", "t", "-q")
        self.assertEqual(self.both_exports("s"), self.both_exports("t"))

    def test_an_interrupt_ends_with_130_and_the_same_command_goes_on(self):
        self.stopped_by(signal.SIGINT)

    def test_a_termination_ends_with_143_and_the_same_command_goes_on(self):
        self.stopped_by(signal.SIGTERM)

    def test_the_time_limit_stops_short_and_the_same_command_goes_on(self):
        simulator = self.fake("hangs")
        done = self.call("run", simulator, *self.WORDS, "--time-limit", "1s", "-o", "s", status=3)
        self.assertIn("Stopped: the time is up, and the precision is not reached.", done.stdout)
        (simulator.parent / "mode").unlink()
        self.call("run", simulator, *self.WORDS, "-o", "s", "-q")


if __name__ == "__main__":
    unittest.main()
