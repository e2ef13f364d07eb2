"""Whole studies: the same answer for any number of workers, extension, values, steady state, outputs."""

import json
import math
import os
import pathlib
import subprocess
import unittest

from fake_simulator import reward
from quorva import MM1K, QUORVA, RAILWAY, QuorvaCase
from seeds import unit_seed

# One message in five is lost on each of the two ways; the train leaves if none of 19 reports is answered.
LEAVES = (1 - 0.2 * 0.2) ** 19


class SameAnswer(QuorvaCase):
    def study(self, jobs, *words):
        name = f"jobs-{jobs}"
        self.call("run", RAILWAY, "--set", "netNotDeliveryProb=0.8", "--unit-batches", 200, "--variables", "2-10", "-p", "5%",
                  "-j", jobs, "-o", name, "-q", *words)
        return name

    def test_one_two_and_eight_workers_give_the_same_bytes(self):
        one = self.both_exports(self.study(1))
        self.assertEqual(self.both_exports(self.study(2)), one)
        self.assertEqual(self.both_exports(self.study(8)), one)

    def test_the_railway_has_its_known_value(self):
        for row in self.rows(self.study(2)):
            self.assertEqual(row["verdict"], "reached")
            self.assertLess(float(row["lower"]), LEAVES)
            self.assertGreater(float(row["upper"]), LEAVES)
            self.assertLess(float(row["half_width"]), 0.05 * LEAVES)

    def test_rewards_that_take_longer_the_larger_they_are_bring_no_bias(self):
        # Units with large rewards take 25 times as long. If observations counted as they arrive, the first sixteen units to
        # arrive would be small ones nearly all; as they count in their order, it is the first sixteen that count.
        simulator = self.fake("late")
        self.call("run", simulator, "-e", 0, "--unit-batches", 5, "--least", 80, "--greatest", 80, "-j", 8, "-o", "late", "-q",
                  status=3)
        (row,) = self.rows("late")
        seeds = [unit_seed(1, "0", unit) for unit in range(16)]
        values = [reward(seed, batch) for seed in seeds for batch in range(5)]
        self.assertEqual(int(row["batches"]), 80)
        self.assertAlmostEqual(float(row["mean"]), math.fsum(values) / 80, places=12)
        # Both kinds are among them, or else the order could not show.
        self.assertTrue(4 <= sum(seed % 2 for seed in seeds) <= 12)

    def test_units_have_the_seeds_of_the_published_hash(self):
        simulator = self.fake()
        self.call("run", simulator, "-e", 1, "--seed", 5, "--unit-batches", 10, "--least", 40, "--greatest", 40, "-j", 1, "-o",
                  "s", "-q", status=3)
        self.assertEqual(self.calls(simulator), [unit_seed(5, "1", unit) for unit in range(4)])

    def test_an_experiment_comes_out_the_same_beside_others(self):
        words = ["--unit-batches", 200, "--variables", "2-10", "-p", "10%", "-q"]
        self.call("run", RAILWAY, "--set", "netNotDeliveryProb=0.8", "-o", "alone", *words)
        self.call("run", RAILWAY, "--set", "netNotDeliveryProb=0.7,0.8", "-o", "both", *words)
        alone = json.loads(self.export("alone", "--format", "json"))["experiments"]
        both = json.loads(self.export("both", "--format", "json"))["experiments"]
        self.assertEqual([one["name"] for one in both], ["0 netNotDeliveryProb=0.7", "0 netNotDeliveryProb=0.8"])
        self.assertEqual(both[1], alone[0])


class Extension(QuorvaCase):
    def study(self, simulator, precision, *words, out="s"):
        self.call("run", simulator, "-e", 0, "--unit-batches", 20, "--least", 60, "-q", "-p", precision, "-o", out, *words)

    def test_a_tighter_precision_runs_no_unit_twice_and_comes_out_as_if_asked_for_at_once(self):
        simulator = self.fake()
        self.study(simulator, "30%", "-j", 2)
        loose = self.export("s")
        self.study(simulator, "5%", "-j", 2)
        tight = self.both_exports("s")
        self.assertNotEqual(self.export("s"), loose)
        at_once = self.fake(name="at-once")
        self.study(at_once, "5%", "-j", 1, out="t")
        self.assertEqual(self.both_exports("t"), tight)
        # A unit that was under way when the first call ended is run again; one that was stored is not.
        stored = {}
        for seed in self.calls(simulator):
            stored[seed] = stored.get(seed, 0) + 1
        self.assertLessEqual(sum(count - 1 for count in stored.values()), 2)

    def test_the_same_command_again_runs_nothing(self):
        simulator = self.fake()
        self.study(simulator, "30%", "-j", 1)
        before, text = self.calls(simulator), self.both_exports("s")
        self.study(simulator, "30%", "-j", 1)
        self.assertEqual(self.calls(simulator), before)
        self.assertEqual(self.both_exports("s"), text)

    def test_a_looser_precision_counts_fewer_units(self):
        simulator = self.fake()
        self.study(simulator, "5%")
        self.study(simulator, "30%")
        self.study(simulator, "30%", out="t")
        self.assertEqual(self.both_exports("s"), self.both_exports("t"))

    def test_rerun_repeats_units_bit_for_bit_and_tells_where_they_differ(self):
        simulator = self.fake()
        self.study(simulator, "30%")
        self.assertEqual(self.call("rerun", "s", "--units", "0,2").stdout,
                         'Unit 0 of "0": the same, bit for bit\nUnit 2 of "0": the same, bit for bit\n')
        text = simulator.read_text()
        simulator.write_text(text.replace("0.5 if seed", "0.6 if seed"))
        done = self.call("rerun", "s", status=1)
        self.assertIn("is another executable than that of the study", done.stderr)


class Values(QuorvaCase):
    def overrides(self, *settings, simulator=RAILWAY, words=()):
        self.call("run", simulator, *(word for setting in settings for word in ("--set", setting)), "--greatest", 1000, "-q",
                  "-o", "s", *words, status=3)
        return [one["overrides"] for one in json.loads(self.export("s", "--format", "json"))["experiments"]]

    def test_the_types_of_global_variables_are_found_out(self):
        # nTrains is a short, lineLength an int, and the others are doubles, though their values look like integers.
        self.assertEqual(self.overrides("nTrains=2", "lineLength=7000", "TPRUpdatePeriod=4", "RBCprocessingTime=2"),
                         ["i:nTrains:2:i:lineLength:7000:d:TPRUpdatePeriod:4:d:RBCprocessingTime:2"])

    def test_grids_have_all_points(self):
        self.assertEqual(self.overrides("nTrains=1,2", "netNotDeliveryProb=0..0.5..0.25"),
                         [f"i:nTrains:{trains}:d:netNotDeliveryProb:{loss}" for trains in (1, 2) for loss in ("0", "0.25", "0.5")])

    def test_a_value_is_taken_as_the_simulator_takes_it(self):
        # What quorva observes with a value that was found to be a double is what the simulator does with -O d:.
        self.overrides("netNotDeliveryProb=0.8", words=("--unit-batches", 100))
        seed = unit_seed(1, "0 netNotDeliveryProb=0.8", 0)
        subprocess.run([RAILWAY, "-N", "100", "-r", "2", "-s", str(seed), "-O", "d:netNotDeliveryProb:0.8", "-a", "a.csv"],
                       cwd=self.folder, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        direct = [line.split(",") for line in (self.folder / "a.csv").read_text().splitlines() if line[0] != "#"]
        stored = [line.split(",") for line in self.export("s", "--observations").splitlines()[1:]]
        first = [[row[3], float(row[4])] for row in stored if row[1] == "0"]
        self.assertEqual(first, [[row[0], float(row[1])] for row in direct])

    def test_a_value_beyond_a_short_is_told(self):
        done = self.call("run", RAILWAY, "--set", "maxTrainSpeed=65616", "-o", "s", status=2)
        self.assertIn("the simulator takes it for 80", done.stderr)

    def test_variables_of_the_other_kind_of_run_are_left_out(self):
        self.call("run", MM1K, "-e", 0, "--greatest", 1000, "-q", "-o", "s", status=3)
        self.assertEqual([row["variable"] for row in self.rows("s")], ["0", "1", "2", "3"])


class SteadyState(QuorvaCase):
    def test_the_long_run_of_a_queue_has_its_known_values(self):
        self.call("run", MM1K, "-e", 2, "--mode", "steady", "--unit-batches", 60, "--least", 600, "-p", "5%", "-j", 2, "-q", "-o", "s")
        # M/M/1/5 with equal rates: each number of customers from 0 to 5 has probability 1/6.
        known = {"4": 2.5, "5": 1 / 6, "7": 5 / 6}
        rows = {row["variable"]: row for row in self.rows("s")}
        self.assertEqual(sorted(rows), ["4", "5", "6", "7"])
        for variable, value in known.items():
            self.assertLess(float(rows[variable]["lower"]), value)
            self.assertGreater(float(rows[variable]["upper"]), value)

    def test_batches_are_put_together_and_a_warm_up_is_left_out(self):
        words = ["-e", 2, "--mode", "steady", "--unit-batches", 60, "--variables", "4", "--least", 10, "-q", "-o", "s"]
        self.call("run", MM1K, *words, "--greatest", 60, status=3)
        values = [float(line.split(",")[4]) for line in self.export("s", "--observations").splitlines()[1:]
                  if line.split(",")[1] == "0" and line.split(",")[3] == "4"]
        self.call("run", MM1K, *words, "--greatest", 10, "--warm-up", 8, "--together", 5, status=3)
        (row,) = self.rows("s")
        means = [math.fsum(values[at:at + 5]) / 5 for at in range(8, len(values) - 4, 5)]
        self.assertEqual(int(row["batches"]), len(means))
        self.assertAlmostEqual(float(row["mean"]), math.fsum(means) / len(means), places=12)


class Outputs(QuorvaCase):
    def test_progress_is_quiet_off_a_terminal_for_short_studies_and_the_table_ends_with_the_report(self):
        done = self.call("run", self.fake(), "-e", 0, "-p", "30%", "-o", "s")
        self.assertEqual(done.stderr, "")
        self.assertEqual(done.stdout.splitlines()[-1], "Report: s/report.html")
        self.assertIn("<html", (self.folder / "s/report.html").read_text().lower())

    def test_quiet_says_nothing(self):
        done = self.call("run", self.fake(), "-e", 0, "-p", "30%", "-o", "s", "-q")
        self.assertEqual(done.stdout + done.stderr, "")

    def test_the_folder_holds_the_store_the_lock_and_the_report_alone(self):
        self.call("run", self.fake(), "-e", 0, "-p", "30%", "-o", "s", "-q")
        self.assertEqual(sorted(os.listdir(self.folder / "s")), ["report.html", "study.lock", "study.sqlite"])

    def test_report_and_export_write_files_whole(self):
        self.call("run", self.fake(), "-e", 0, "-p", "30%", "-o", "s", "-q")
        self.call("export", "s", "--output", "e.csv")
        self.assertEqual((self.folder / "e.csv").read_text(), self.export("s"))
        self.call("report", "s", "--output", "r.html")
        self.assertEqual((self.folder / "r.html").read_bytes(), (self.folder / "s/report.html").read_bytes())

    def test_observations_as_json_are_those_of_the_csv(self):
        self.call("run", self.fake(), "-p", "30%", "-o", "s", "-q")
        lines = ["experiment,unit,batch,variable,value"]
        for line in self.export("s", "--observations", "--format", "json").splitlines():
            unit = json.loads(line)
            self.assertEqual(unit["seed"], unit_seed(1, unit["experiment"], unit["unit"]))
            for variable in unit["variables"]:
                lines += [f"{unit['experiment']},{unit['unit']},{batch},{variable['variable']},{value}"
                          for batch, value in enumerate(variable["observations"])]
        self.assertEqual(lines, self.export("s", "--observations").splitlines())

    def test_status_tells_where_the_study_stands(self):
        self.call("run", self.fake(), "-e", 0, "-p", "30%", "-o", "s", "-q")
        text = self.call("status", "s").stdout
        self.assertIn("Study of simulator (terminating), seed 1, 1000 batches in a unit", text)
        self.assertIn('Experiment "0": reached', text)
        self.assertIn("the precision is reached", text)

    def test_version_help_and_completion(self):
        self.assertTrue(self.call("--version").stdout.startswith(f"quorva {os.environ['QUORVA_VERSION']} (commit "))
        for words in ([], ["run"], ["report"], ["export"], ["rerun"], ["status"]):
            self.assertIn("Usage", self.call(*words, "--help").stdout)
        script = self.folder / "completion"
        script.write_text(self.call("completion", "bash").stdout)
        ask = "COMP_WORDS=(quorva {0}); COMP_CWORD={1}; source completion; _quorva; echo \"${{COMPREPLY[@]}}\""
        for words, expected in (("re", "report rerun"), ("run --conf", "--confidence"), ("run --mode st", "steady")):
            done = subprocess.run(["bash", "-c", ask.format(words, len(words.split()))], cwd=self.folder, text=True,
                                  stdout=subprocess.PIPE, check=True)
            self.assertEqual(done.stdout.strip(), expected)

    def test_every_option_is_in_the_manual_page(self):
        page = (pathlib.Path(__file__).resolve().parents[3] / "docs/quorva.1.in").read_text().replace("\\-", "-")
        for command in ("run", "report", "export", "rerun", "status"):
            for word in self.call(command, "--help").stdout.split():
                if word.startswith("--"):
                    self.assertIn(word.split(",")[0].strip(), page)


class Progress(QuorvaCase):
    # No number of batches is enough: the study goes on for its two seconds, in which a terminal is told of it.
    ENDLESS = ("--set", "netNotDeliveryProb=0.8", "--absolute", "-p", "1e-9", "--unit-batches", 500, "--variables", "4=left",
               "--time-limit", 2)

    def test_a_terminal_sees_how_far_the_study_is_and_the_line_is_wiped_at_the_end(self):
        leader, follower = os.openpty()
        self.addCleanup(os.close, leader)
        words = [QUORVA, "run", RAILWAY, *map(str, self.ENDLESS), "-o", "seen"]
        with subprocess.Popen(words, stdout=subprocess.PIPE, stderr=follower, text=True, cwd=self.folder) as process:
            os.close(follower)
            seen = b""
            while True:
                try:
                    piece = os.read(leader, 4096)
                except OSError:  # what Linux makes of the end of a terminal
                    break
                if not piece:
                    break
                seen += piece
            report = process.stdout.read()
        self.assertEqual(process.returncode, 3)
        self.assertRegex(seen.decode(), "0 of 1 experiments done, [0-9]+ batches run")
        self.assertRegex(seen.decode(), 'batches, worst: left 0[.][0-9]+ ± [0-9.e-]+, wanted ± 1e-09; about .* left')
        self.assertTrue(seen.endswith(b"\r\x1b[2K"), seen[-80:])
        self.assertNotIn("experiments done", report)

    def test_elsewhere_there_are_plain_lines_alone(self):
        done = self.call("run", RAILWAY, *self.ENDLESS, "-o", "seen", status=3)
        self.assertNotRegex(done.stderr + done.stdout, "[\r\x1b]")
        for line in done.stderr.splitlines():
            self.assertRegex(line, "^quorva: 0 of 1 experiments done, [0-9]+ batches run")

    def test_quiet_is_silent(self):
        done = self.call("run", RAILWAY, *self.ENDLESS, "-o", "seen", "-q", status=3)
        self.assertEqual(done.stderr, "")


if __name__ == "__main__":
    unittest.main()
