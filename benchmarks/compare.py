#!/usr/bin/env python3
"""Compares the engine with the same workloads written bare, without an engine.

The programs take turns, pass by pass, so that what else the machine does falls on all of them alike. Each gives its
time for a firing, the speed as a share of the base's (medians over the passes; processor time of the runs themselves,
not of building the model), its peak memory, and its answer: the mean, and by how many standard errors it misses the
known one. Above 4 the status is 1.

  queue         M/M/1/100, arrivals 0.9, service 1, from empty: average number in system
  cycle         closed cycle of 50 stations, 200 customers: throughput of a station
  machines      1,000 independent machines, failure 0.1, repair 1: average number down
  machines-10k  10,000 of them
  hold-<n>      n pending events, the earliest put off by an exponential delay: the engine's event list alone, beside a
                binary heap

Build first: cmake --preset release && cmake --build --preset release --target workloads
"""

import argparse
import dataclasses
import math
import pathlib
import shlex
import statistics
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import known_answers  # noqa: E402
import measuring  # noqa: E402

ALLOWED_ERRORS = 4.0
FIRST_SEED = 31415


@dataclasses.dataclass(frozen=True)
class Workload:
    """One workload, and how long it runs in a pass."""

    model: str  # bench_<model>, and its name in bench_bare
    stop_time: float
    replications: int
    known: object  # of the stop time: expectation and deviation of one replication
    size: int = 0  # 0 where it is fixed
    short: float = 1000.0  # stop time of the shorter run for instructions; the longer takes twice as long


def hold(size, operations):
    return Workload("hold", operations, 1, known_answers.hold, size, 20000.0)


def machines(size, stop_time):
    return Workload("machines", stop_time, 2, lambda time: known_answers.machines(time, size), size, 20000.0 / size)


WORKLOADS = {
    "queue": Workload("queue", 1e6, 3, known_answers.queue, short=10000.0),
    "cycle": Workload("cycle", 5e4, 3, known_answers.cycle, short=500.0),
    "machines": machines(1000, 11000.0),
    "machines-10k": machines(10000, 1100.0),
    "hold-10": hold(10, 4e6),
    "hold-1k": hold(1000, 4e6),
    "hold-100k": hold(100000, 2e6),
    "hold-1m": hold(1000000, 2e6),
}


class Program:
    """One of the programs that run a workload: gives the command, and reads what came of it."""

    def __init__(self, label, make_command, reads_answers):
        self.label, self.make_command, self.reads_answers = label, make_command, reads_answers
        self.costs, self.answers, self.peak_megabytes = [], [], 0.0

    def take_turn(self, seed):
        with tempfile.NamedTemporaryFile(suffix=".csv") as results:
            finished = measuring.run(self.make_command(seed, results.name))
            if "Actions fired: " in finished.output:
                cost = measuring.loop_seconds_of(finished) / measuring.firings_of(finished)
                self.answers += measuring.answers_in(results.name)
            else:
                seconds = finished.value(r"\bseconds=") if " seconds=" in finished.output else finished.seconds
                cost = seconds / finished.value(r"\bevents=")
                if self.reads_answers:
                    self.answers += [float(line[7:]) for line in finished.output.split() if line.startswith("answer=")]
        self.costs.append(cost)
        self.peak_megabytes = max(self.peak_megabytes, finished.peak_megabytes)


def plain_command(program, workload, stop_time, replications, seed):
    """Of bench_bare and bench_hold."""
    words = [measuring.BIN / program] + ([workload.model] if program == "bench_bare" else [])
    words += ["--stop-time", f"{stop_time:.17g}", "--replications", replications, "--seed", seed]
    return words + (["--size", workload.size] if workload.size else [])


def engine_command(workload, stop_time, replications, seed, results):
    if workload.model == "hold":
        return plain_command("bench_hold", workload, stop_time, replications, seed)
    overrides = [(("d", "stopTime"), stop_time)]
    if workload.size:
        overrides.append((("i", "machines"), workload.size))
    options = ["-s", seed] + (["-a", results] if results else [])
    return measuring.model(f"bench_{workload.model}", replications, overrides, options)


def programs_of(name, workload, options):
    def engine(seed, results):
        return engine_command(workload, workload.stop_time * options.length, workload.replications, seed, results)

    def bare(seed, _results):
        return plain_command("bench_bare", workload, workload.stop_time * options.length, workload.replications, seed)

    others = [Program(label, lambda _seed, _results, words=shlex.split(command): words, False)
              for label, wanted, command in options.also if wanted == name]
    return [Program("engine", engine, True), Program("bare", bare, True), *others]


def errors_off(answers, expectation, deviation):
    """By how many standard errors the mean of the answers misses the expectation."""
    if deviation is None:
        deviation = statistics.stdev(answers)
    return (statistics.fmean(answers) - expectation) / (deviation / math.sqrt(len(answers)))


def report(workload, programs, options):
    """The table's rows of a workload, and whether an answer is off."""
    base = next((program for program in programs if program.label == options.base), programs[1])
    expectation, deviation = workload.known(workload.stop_time * options.length)
    rows, is_off = [], False
    for program in programs:
        speed = statistics.median(ours / theirs for ours, theirs in zip(base.costs, program.costs))
        cells = [program.label, f"{statistics.median(program.costs) * 1e9:.1f}",
                 f"{1e-6 / statistics.median(program.costs):.2f}", f"{speed:.2f}", f"{program.peak_megabytes:.1f}"]
        if program.answers:
            off = errors_off(program.answers, expectation, deviation)
            is_off |= not abs(off) <= ALLOWED_ERRORS
            cells += [f"{statistics.fmean(program.answers):.6g}", f"{expectation:.6g}", f"{off:+.1f}"]
        else:
            cells += ["", "", ""]
        rows.append(cells)
    return rows, is_off


def compare(options):
    any_off = False
    for name in options.workloads:
        workload = WORKLOADS[name]
        programs = programs_of(name, workload, options)
        for turn in range(options.passes):
            for program in programs:
                program.take_turn(FIRST_SEED + turn)
        rows, is_off = report(workload, programs, options)
        any_off |= is_off
        measuring.table([[name, "ns/firing", "M firings/s", "speed", "peak MB", "answer", "known", "errors off"], *rows])
        print()
    if any_off:
        print(f"An answer is more than {ALLOWED_ERRORS:g} standard errors off.")
    return 1 if any_off else 0


def instructions_of(name, options):
    """Instructions of a firing in the engine and bare: those of a run twice as long less those of a run."""
    workload = WORKLOADS[name]

    def each(command_of, count_of):
        return measuring.instructions_each(command_of(workload.short), command_of(2 * workload.short), count_of)

    def engine(stop_time):
        return engine_command(workload, stop_time, 1, FIRST_SEED, None)

    def bare(stop_time):
        return plain_command("bench_bare", workload, stop_time, 1, FIRST_SEED)

    def plain_count(finished):
        return finished.value(r"\bevents=")

    of_engine = each(engine, plain_count if workload.model == "hold" else measuring.firings_of)
    return of_engine, each(bare, plain_count)


def count_instructions(options):
    rows = [["workload", "engine", "bare", "ratio"]]
    for name in options.workloads:
        of_engine, of_bare = instructions_of(name, options)
        rows.append([name, f"{of_engine:.1f}", f"{of_bare:.1f}", f"{of_engine / of_bare:.2f}"])
    print("Instructions of a firing, under callgrind, without the processor's extensions in the C library")
    measuring.table(rows)
    return 0


def positive(text):
    number = int(text)
    if number < 1:
        raise argparse.ArgumentTypeError(f"{text} is not 1 or more")
    return number


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("workloads", nargs="*", metavar="workload", help="those of the list above; all without any")
    parser.add_argument("--passes", type=positive, default=5, help="turns of each program (5)")
    parser.add_argument("--length", type=float, default=1.0, help="of the runs, as a share of the usual one (1)")
    parser.add_argument("--instructions", action="store_true", help="count instructions instead")
    parser.add_argument("--also", nargs=3, action="append", default=[], metavar=("LABEL", "WORKLOAD", "COMMAND"),
                        help="another program of that workload, to take turns too; must print events=<firings>, and "
                        "seconds=<time> or else counts with its whole processor time; a model needs neither")
    parser.add_argument("--base", default="bare", metavar="LABEL", help="the program that speeds are shares of (bare)")
    parser.add_argument("--binaries", type=pathlib.Path, default=measuring.BIN, metavar="FOLDER",
                        help="where the executables are (build/release/bin)")
    options = parser.parse_args()
    measuring.BIN = options.binaries
    for name in [*options.workloads, *(wanted for _, wanted, _ in options.also)]:
        if name not in WORKLOADS:
            parser.error(f"no such workload: {name}; there are {', '.join(WORKLOADS)}")
    options.workloads = options.workloads or list(WORKLOADS)
    return count_instructions(options) if options.instructions else compare(options)


if __name__ == "__main__":
    sys.exit(main())
