#!/usr/bin/env python3
"""Measures how often the intervals of the controlling program's statistics hold the known value.

usage: benchmarks/coverage.py [--studies N] [--precision P] [--least N] [--unit N] [--binaries FOLDER] [CASE...]

Each case is a variable of one of the models here whose expectation is known. A stream of its observations comes from the
model's simulator, in runs of 500,000 batches with the Mersenne Twister and seeds that count up from the case's own, and is
cut into studies by bench_coverage, with the classes that `quorva` itself uses. Prints two tables in Markdown: the
coverage of studies of a fixed size, and of studies that the stopping rule ends. Without CASE all of them.

Intervals for a probability hold it with at least their confidence, and with not much more where studies are large: ten times
as many studies tell the two apart. In brackets stands their exact coverage, the sum over all outcomes.
"""

import argparse
import array
import os
import pathlib
import runpy
import struct
import subprocess
import sys
import tempfile
from dataclasses import dataclass

TOP = pathlib.Path(__file__).resolve().parent.parent
VALUES = TOP / "tests" / "models" / "values"
BATCHES_OF_A_RUN = 500_000


@dataclass(frozen=True)
class Case:
    """One variable of one experiment of a model; its known value stands in the model's table under tests/models/values."""

    model: str
    experiment: int
    variable: int
    sizes: tuple
    seed: int
    what: str
    steady: bool = False
    times: int = 1  # as many studies of a fixed size as --studies asks for

    @property
    def name(self):
        return f"{self.model}-{self.variable}"


CASES = [
    Case("queue", 0, 2, (50, 200, 1000), 101, "customers at time 10"),
    Case("mm1k", 0, 2, (50, 200, 1000), 201, "customers, average over [0, 10]"),
    Case("machine-repair", 1, 6, (50, 200, 1000), 301, "cost of [0, 10]"),
    Case("multiprocessor", 0, 1, (50, 200, 1000), 401, "hours until the site fails"),
    Case("philosophers", 0, 2, (50, 200, 1000), 501, "time to deadlock"),
    Case("tandem", 3, 3, (50, 200), 801, "steady state: customers, batch means", steady=True),
    Case("tandem", 1, 1, (400, 500), 601, "0/1: has stopped", times=10),
    Case("multiprocessor", 2, 0, (400, 500), 701, "0/1: the site has failed", times=10),
]


def known_value(case):
    """The exact expectation, from the model's table."""
    sys.path.insert(0, str(VALUES))
    runs = runpy.run_path(str(VALUES / f"{case.model}.py"))["RUNS"]
    for run in runs:
        if run.experiment == case.experiment and bool(run.steady) == case.steady and not run.overrides:
            return run.values[case.variable].mean
    raise SystemExit(f"no known value of {case.name}")


def observations(path, variable):
    """The observations of one variable in a binary result file, as an array of doubles."""
    with open(path, "rb") as file:
        data = file.read()
    values, at = array.array("d"), 256
    while at < len(data):
        length, _, _, records = struct.unpack_from(">iBhh", data, at)
        place = at + 9
        for _ in range(records):
            number, _, count = struct.unpack_from(">hBi", data, place)
            if number == variable:
                values.frombytes(data[place + 7 : place + 7 + 8 * count])
            place += 7 + 8 * count
        at += length
    if sys.byteorder == "little":
        values.byteswap()
    return values


def stream(case, binaries, out):
    """Writes observations to `out` until nobody reads them any more."""
    seed = case.seed
    with tempfile.TemporaryDirectory() as folder:
        results = os.path.join(folder, "results")
        try:
            while True:
                command = [binaries / case.model, f"-e{case.experiment}", f"-N{BATCHES_OF_A_RUN}", "-r2", f"-s{seed}"]
                command += ["-t0"] if case.steady else []
                subprocess.run(command + ["-b", results], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                out.write(observations(results, case.variable).tobytes())
                out.flush()
                seed += 1
        except BrokenPipeError:
            pass


def measure(case, options):
    """The rows of the case, of studies of a fixed size and of sequential ones."""
    command = [options.binaries / "bench_coverage", repr(known_value(case)), options.studies * case.times]
    command += [options.studies, options.precision, options.least, options.unit, *case.sizes]
    with subprocess.Popen(list(map(str, command)), stdin=subprocess.PIPE, stdout=subprocess.PIPE) as cutter:
        stream(case, options.binaries, cutter.stdin)
        rows = cutter.stdout.read().decode().splitlines()
        try:
            cutter.stdin.close()
        except BrokenPipeError:
            pass
    if cutter.returncode != 0 or len(rows) != len(case.sizes) + 1:
        raise SystemExit(f"{case.name}: bench_coverage ended with status {cutter.returncode}")
    label = f"| {case.model}, experiment {case.experiment}: {case.what} |"
    return [f"{label} {row} |" for row in rows[:-1]], f"{label} {rows[-1].removeprefix('sequential | ')} |"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--studies", type=int, default=2000)
    parser.add_argument("--precision", type=float, default=0.05, help="relative precision of the sequential studies")
    parser.add_argument("--least", type=int, default=200, help="least observations of a sequential study")
    parser.add_argument("--unit", type=int, default=100, help="observations between two of its checkpoints")
    parser.add_argument("--binaries", type=pathlib.Path, default=TOP / "build" / "release" / "bin")
    parser.add_argument("case", nargs="*", help=", ".join(case.name for case in CASES))
    options = parser.parse_args()
    cases = [case for case in CASES if not options.case or case.name in options.case]
    measured = [measure(case, options) for case in cases]
    print("| Variable | Size | 90 % | 95 % | 99 % | Corrected |\n|---|---|---|---|---|---|")
    print(*(row for rows, _ in measured for row in rows), sep="\n")
    print("\n| Variable | Interval holds the value | Mean within the precision | Batches, mean |\n|---|---|---|---|")
    print(*(row for _, row in measured), sep="\n")


if __name__ == "__main__":
    main()
