#!/usr/bin/env python3
"""Runs a simulator's experiments and compares what it observes with a table of known values.

Usage: known_values.py [--short] [--page PAGE] PROGRAM TABLE

TABLE is a Python file that defines RUNS, a list of Run. A run passes when it ends with status 0 and each variable of the
table agrees with its known value:

- The estimate is the mean of n observations, s their standard deviation. |estimate - value| <= 4 s / sqrt(n): a right
  simulator fails this for one seed in 15,000, and seeds are fixed.
- The 95 % half-width is at most 1 % of the value, 5 % for a value below 0.001, so that a run too short to tell anything
  does not pass.
- A variance, where one is known, lies within 4 of its standard errors, which come from the fourth central moment.

The batches of a steady-state run follow each other on one trajectory, and are correlated: they are put together into 32
larger ones, whose means are as good as independent (R. W. Conway, Some tactical problems in digital simulation,
Management Science 10(1), 1963). The standard error is that of these 32, and the half-width takes Student's quantile.

Every variable that the program observes must stand in the table, and no other, but for the variables of a steady-state
run, which are zero throughout in a terminating one. The runs of a table together must use every experiment of the
program's study and all three generators.

--short leaves out the runs that are marked as long, and takes a fifth of the batches of the others, at least 1,000. The
half-width may then be what it is.
--page checks that the model's page states every value of the table, with six digits.

Exit status 0 when all agrees, 1 when something does not.
"""

import argparse
import math
import os
import re
import runpy
import subprocess
import sys
import tempfile
from dataclasses import dataclass, field, replace

GENERATORS = {0, 1, 2}  # as option -r
LARGER_BATCHES = 32
STUDENT = 2.04  # 0.975 quantile of Student's distribution with 31 degrees of freedom
ERRORS = 4.0
ROUNDING = 1e-9  # of values that are the same in each batch: the file keeps ten decimals


@dataclass(frozen=True)
class Value:
    """What is known of one variable.

    name      for the messages
    mean      the exact expectation
    variance  in a terminating run that of an observation, in a steady-state run the asymptotic one of the time average,
              the limit of a batch's length times the variance of its mean; None if it is not to be compared
    """

    name: str
    mean: float
    variance: float | None = None


@dataclass(frozen=True)
class Run:
    """One run of the simulator.

    values    by the variable's number in the results
    batches   at least 1,000 in a steady-state run
    steady    the batch length of a steady-state run; None for a terminating run
    overrides as option -O
    long      takes too long where the program is slow, as under a sanitizer
    short     has fewer batches than the table says
    """

    experiment: int
    generator: int
    seed: int
    batches: int
    values: dict[int, Value] = field(repr=False)
    steady: float | None = None
    overrides: str = ""
    long: bool = False
    short: bool = False

    def shortened(self):
        """The same with a fifth of the batches, and never fewer than 1,000 for that."""
        return replace(self, batches=min(self.batches, max(1000, self.batches // 5)), short=True)

    def options(self):
        options = [f"-e{self.experiment}", f"-r{self.generator}", f"-s{self.seed}", f"-N{self.batches}"]
        options += ["-t0"] if self.steady else []
        return options + ([f"-O{self.overrides}"] if self.overrides else [])


class Moments:
    """Mean, sample variance and fourth central moment."""

    def __init__(self, values):
        self.count = len(values)
        self.mean = math.fsum(values) / self.count
        squares = [(value - self.mean) ** 2 for value in values]
        self.variance = math.fsum(squares) / (self.count - 1)
        self.fourth = math.fsum(square * square for square in squares) / self.count

    def error(self):
        """Standard error of the mean."""
        return math.sqrt(self.variance / self.count)

    def variance_error(self):
        """Standard error of the sample variance."""
        return math.sqrt(max(self.fourth - self.variance**2, 0.0) / self.count)


def larger_batches(observations):
    """The means of LARGER_BATCHES batches of equal size; a remainder at the end is left out."""
    size = len(observations) // LARGER_BATCHES
    return [math.fsum(observations[n * size : (n + 1) * size]) / size for n in range(LARGER_BATCHES)]


def compare_mean(run, known, moments):
    """The complaints about a mean."""
    complaints = []
    quantile = STUDENT if run.steady else 1.96
    error = moments.error()
    if abs(moments.mean - known.mean) > max(ERRORS * error, ROUNDING):
        complaints.append(f"the mean is off by {(moments.mean - known.mean) / error if error else math.inf:+.2f} errors")
    allowed = (0.05 if abs(known.mean) < 1e-3 else 0.01) * abs(known.mean)
    if quantile * error > allowed and not run.short:
        complaints.append(f"too few batches: the half-width {quantile * error:.4g} is above {allowed:.4g}")
    return complaints


def compare_variance(variance, error, known):
    """The complaints about a variance."""
    if abs(variance - known) <= ERRORS * error:
        return []
    return [f"the variance {variance:.8g} is not {known:.8g}, its standard error is {error:.2g}"]


def compare(run, known, observations):
    """A line that shows the two, and the complaints about one variable's observations."""
    needed = 1000 if run.steady else 2
    if len(observations) < needed:
        return f"{known.name}: {len(observations)} observations", [f"{needed} observations are needed"]
    single = Moments(observations)
    moments = Moments(larger_batches(observations)) if run.steady else single
    complaints = compare_mean(run, known, moments)
    line = f"{known.name}: {moments.mean:.8g} +- {moments.error():.2g}, known {known.mean:.12g}"
    if known.variance is not None:
        length = run.steady or 1.0
        variance, error = single.variance * length, single.variance_error() * length
        complaints += compare_variance(variance, error, known.variance)
        line += f"; variance {variance:.6g} +- {error:.2g}, known {known.variance:.10g}"
    return line, complaints


def check_observations(run, observations):
    """Prints a line for each variable and returns the complaints. `observations` by the variable's number."""
    complaints = []
    for number in sorted(run.values.keys() | observations.keys()):
        if number not in run.values:
            if run.steady or any(observations[number]):
                complaints.append(f"variable {number} is observed, and not in the table")
        elif number not in observations:
            complaints.append(f"variable {number}, {run.values[number].name}, is not observed")
        else:
            line, found = compare(run, run.values[number], observations[number])
            print(f"  {number:2} {line}", *(f"     <- {one}" for one in found), sep="\n")
            complaints += [f"variable {number}, {run.values[number].name}: {one}" for one in found]
    return complaints


def read_observations(name):
    """The observations of an ASCII result file, by the variable's number."""
    observations = {}
    with open(name, encoding="ascii") as file:
        for line in file:
            if not line.startswith("#"):
                number, _, value = line.partition(",")
                observations.setdefault(int(number), []).append(float(value))
    return observations


def check_run(program, run):
    """Runs the program and returns the complaints."""
    print(f"{os.path.basename(program)} {' '.join(run.options())}", flush=True)
    with tempfile.TemporaryDirectory() as folder:
        command = [program, *run.options(), "-avalues.csv"]
        done = subprocess.run(command, cwd=folder, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            return [f"exit status {done.returncode}\n{done.stdout}{done.stderr}"]
        observations = read_observations(os.path.join(folder, "values.csv"))
    complaints = check_observations(run, observations)
    if not run.steady:
        complaints += [
            f"variable {number} has {len(values)} observations in {run.batches} batches"
            for number, values in observations.items()
            if len(values) != run.batches
        ]
    return complaints


def check_table(program, runs):
    """The complaints about what the runs leave out."""
    experiments = {run.experiment for run in runs}
    complaints = [f"no run of experiment {n}" for n in range(max(experiments)) if n not in experiments]
    behind = max(experiments) + 1
    done = subprocess.run([program, "-N1", f"-e{behind}"], capture_output=True, text=True, check=False)
    if done.returncode != 1 or f"Experiment {behind} does not exist" not in done.stderr:
        complaints.append(f"the study has an experiment {behind}, of which there is no run")
    unused = GENERATORS - {run.generator for run in runs}
    return complaints + [f"no run uses generator {generator}" for generator in sorted(unused)]


def check_page(page, runs):
    """The complaints about a page that does not state a value of the table."""
    with open(page, encoding="utf-8") as file:
        stated = set(re.findall(r"-?\d+(?:\.\d+)?(?:e-?\d+)?", file.read()))
    values = [value for run in runs for value in run.values.values()]
    numbers = {f"{number:.6g}" for value in values for number in (value.mean, value.variance) if number is not None}
    return [f"{page} does not state the value {number}" for number in sorted(numbers - stated)]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--short", action="store_true")
    parser.add_argument("--page")
    parser.add_argument("program")
    parser.add_argument("table")
    options = parser.parse_args()

    program = os.path.abspath(options.program)
    runs = runpy.run_path(options.table)["RUNS"]
    complaints = check_table(program, runs)
    if options.page:
        complaints += check_page(options.page, runs)
    for run in runs:
        if options.short:
            if run.long:
                continue
            run = run.shortened()
        complaints += [f"{' '.join(run.options())}: {one}" for one in check_run(program, run)]
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    sys.exit(1 if complaints else 0)


if __name__ == "__main__":
    main()
