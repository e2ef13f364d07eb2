"""Runs the railway with every combination of the trace options and compares what it writes, byte for byte, with what
reference_traces.py works out for the same settings.

Usage: compare_traces.py RAILWAY --family FAMILY [--batches N] [--seed S] [--generator G] [--simtest K]
                         [--must-fire ACTIVITY]... [name=value ...]

The families:
  files            -m and -x, each there or not, with -f, with every level from 0 to 4 and with none given
  standard-output  the same without -f, where the traces stand among the progress lines
  both-sinks       -m, -x and -f, with every level
  absent-folder    the same, with files that cannot be created: the run goes on without them
  full-disk        the same, with files that can be opened and not written: likewise
Each run must leave the files that it has to leave and no other, with their bytes, and the standard output, of which two
times are masked. Each XML document is read with an XML parser too: it must be well formed, one, valid by docs/trace.dtd,
and declare all that it refers to. --must-fire tells activities that the first batch has to fire, so that the agreement
tells something.
Exit status 0 when all agrees, 1 with each combination that differs on standard error when not.
"""

import argparse
import collections
import itertools
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import reference_railway
import reference_traces
from compare_with_reference import TYPE_LETTERS

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "support"))
import xml_trace  # noqa: E402

GENERATOR_NAMES = ("Lagged Fibonacci", "Tausworthe", "Mersenne Twister")
TIMES = re.compile(rb"^(GenerateConnectivityList\(\) Time=|CPU time \(s\): )[0-9.e+-]+$", re.MULTILINE)
LEVELS = (None, 0, 1, 2, 3, 4)
FILE_NAME = "trace"
GOOD_EXIT = "SIMULATOR::MAIN()-GOOD EXIT"


class Combination(collections.namedtuple("Combination", "text xml level name")):
    """The trace options of a command line: -m, -x, -l and -f, these two None when they are not there."""

    def options(self):
        """The options, with what each prints when it is read."""
        result = [(["-m"], None)] if self.text else []
        if self.xml:
            result.append((["-x"], None))
        if self.level is not None:
            result.append((["-l", str(self.level)], f"TraceLevel: {self.level}"))
        if self.name is not None:
            result.append((["-f", self.name], f"TraceFile: {self.name}"))
        return result

    def writes_text(self):
        """-f and -l alone switch the text on, beside -x they do not."""
        return self.text or (not self.xml and (self.name is not None or self.level is not None))

    def real_level(self):
        return 1 if self.level is None else self.level

    def __str__(self):
        return " ".join(word for words, _ in self.options() for word in words) or "(no trace option)"


def every_combination(name):
    return [Combination(*flags, level, name) for flags in itertools.product((0, 1), (0, 1)) for level in LEVELS]


def every_level(name):
    return [Combination(1, 1, level, name) for level in range(5)]


FAMILIES = {
    "files": every_combination(FILE_NAME),
    "standard-output": every_combination(None),
    "both-sinks": every_level(FILE_NAME),
    "absent-folder": every_level(f"absent/{FILE_NAME}"),
    "full-disk": every_level(FILE_NAME),
}


class Expected:
    """What a combination has to write. Its traces are filled while the reference runs."""

    def __init__(self, combination, structure, option_lines):
        self.output = list(option_lines)
        self.files = {}
        sinks = []
        if combination.writes_text():
            if combination.name is None:
                self.output.append("Adding cout: ")
            write = self.lines("txt", combination).append
            sinks.append(reference_traces.TextTrace(write, combination.real_level(), structure))
        if combination.xml:
            sinks.append(reference_traces.XmlTrace(self.lines("xml", combination).append, structure))
        self.traces = reference_traces.Traces(structure, combination.real_level(), sinks)

    def lines(self, suffix, combination):
        """The lines that a sink adds to: those of a file of its own, or those of standard output."""
        if combination.name is None:
            return self.output
        return self.files.setdefault(f"{combination.name}.{suffix}", [])

    def begin(self, overridden, simtest):
        if overridden:
            self.output.append("Overriding global variables in simulator")
        self.traces.header()
        if simtest in (0, 1):
            self.output.append("GenerateConnectivityListOld()")
        elif simtest == 2:
            self.output.append("GenerateConnectivityList()")
        self.output += ["GenerateConnectivityList() Time=<seconds>", "SIMULATOR::Preparing to run()"]
        self.traces.new_batch()

    def end(self, fired):
        self.output += [f"Actions fired: {fired}", "CPU time (s): <seconds>", GOOD_EXIT]


def as_bytes(lines):
    return "".join(line + "\n" for line in lines).encode("ascii")


def difference(expected, found):
    """Words for the first line that differs, None if none does."""
    if expected == found:
        return None
    pairs = itertools.zip_longest(expected.split(b"\n"), found.split(b"\n"))
    number, (ours, theirs) = next((i, pair) for i, pair in enumerate(pairs, start=1) if pair[0] != pair[1])
    return f"line {number}: expected {ours!r}, found {theirs!r}"


def document_faults(document, level):
    """What is wrong with an XML document, judged by itself."""
    try:
        xml_trace.validate(document)
        undeclared = xml_trace.check_references(document)
    except xml_trace.InvalidTrace as fault:
        yield str(fault)
        return
    if undeclared:
        yield f"no process declares {sorted(undeclared)}, and the railway has no such shared variable"
    if document.count(b"<S>") != (1 if level > 0 else 0) or b"<A " not in document:
        yield "not one initial state, or no firing"


class Settings:
    """A run's settings: as a command line, and as the reference takes them."""

    def __init__(self, options):
        self.options = options
        triples = [value.partition("=") for value in options.overrides]
        self.parameters = dict(reference_railway.PARAMETERS)
        for name, _, value in triples:
            self.parameters[name] = type(self.parameters[name])(value)
        overrides = ":".join(f"{TYPE_LETTERS.get(name, 'd')}:{name}:{value}" for name, _, value in triples)
        generator = options.generator
        self.groups = [
            (["-N", str(options.batches)], f"Max Number of Batches: {options.batches}"),
            ([f"-s{options.seed}"], f"Random Number Seed: {options.seed}"),
            (["-r", str(generator)], f"Random Number Generator: {GENERATOR_NAMES[generator]}"),
        ]
        if overrides:
            self.groups.append((["-O", overrides], f"OverrideString is {overrides}"))

    def command(self, combination, turn):
        """The words of a command line and the lines it prints when read. `turn` decides where it begins, so that the
        trace options stand in front, behind and in between."""
        groups = combination.options() + self.groups
        turn %= len(groups)
        groups = groups[turn:] + groups[:turn]
        return [word for words, _ in groups for word in words], [line for _, line in groups if line is not None]


def expect_all(settings, combinations):
    """What each combination has to write, from one run of the reference, and how often activities fire in it."""
    options = settings.options
    watchers = reference_traces.Watchers()
    reference = reference_railway.Simulation(
        settings.parameters, options.generator, options.seed, options.simtest, watchers
    )
    structure = reference_traces.Structure(reference.railway)
    counts = reference_traces.FiringCount()
    expectations = [
        Expected(combination, structure, settings.command(combination, turn)[1])
        for turn, combination in enumerate(combinations)
    ]
    watchers.watchers = [counts] + [expected.traces for expected in expectations]
    for expected in expectations:
        expected.begin(bool(options.overrides), options.simtest)
    for _ in range(options.batches):
        reference.batch()
    for expected in expectations:
        expected.end(reference.fired)
    return expectations, counts.fired


def faults_of_run(program, words, expected, simtest, folder):
    """Runs the railway in the folder and gives words for all that is not as expected but for the files."""
    environment = dict(os.environ, SIMTEST=str(simtest))
    run = subprocess.run([program] + words, cwd=folder, env=environment, capture_output=True, check=False)
    if run.returncode != 0 or run.stderr != as_bytes([GOOD_EXIT]):
        yield f"exit status {run.returncode}, standard error {run.stderr!r}"
    fault = difference(as_bytes(expected.output), TIMES.sub(rb"\1<seconds>", run.stdout))
    if fault:
        yield f"standard output: {fault}"


def faults_of_files(files, level, folder):
    """Words for what is not as expected in the folder, with `files` the lines of each file by name."""
    if sorted(os.listdir(folder)) != sorted(files):
        yield f"files: expected {sorted(files)}, found {sorted(os.listdir(folder))}"
    for name in set(files).intersection(os.listdir(folder)):
        with open(os.path.join(folder, name), "rb") as file:
            content = file.read()
        fault = difference(as_bytes(files[name]), content)
        if fault:
            yield f"{name}: {fault}"
        if name.endswith(".xml"):
            for fault in document_faults(content, level):
                yield f"{name}: {fault}"


def faults_of(program, family, words, combination, expected, simtest, folder):
    """Words for all that is not as expected in a run in an empty folder."""
    full_disk = list(expected.files) if family == "full-disk" else []
    for name in full_disk:
        os.symlink("/dev/full", os.path.join(folder, name))
    yield from faults_of_run(program, words, expected, simtest, folder)
    for name in full_disk:
        os.unlink(os.path.join(folder, name))  # so that the folder is empty again
    files = expected.files if family not in ("absent-folder", "full-disk") else {}
    yield from faults_of_files(files, combination.real_level(), folder)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("railway")
    parser.add_argument("--family", choices=FAMILIES, required=True)
    parser.add_argument("--batches", type=int, default=1)
    parser.add_argument("--seed", type=int, default=31415)
    parser.add_argument("--generator", type=int, default=0)
    parser.add_argument("--simtest", type=int, default=2)
    parser.add_argument("--must-fire", action="append", default=[])
    parser.add_argument("overrides", nargs="*", help="name=value")
    options = parser.parse_intermixed_args()

    combinations = FAMILIES[options.family]
    settings = Settings(options)
    expectations, fired = expect_all(settings, combinations)
    missing = [name for name in options.must_fire if not fired[name]]
    if missing:
        sys.exit(f"the settings tell nothing of {', '.join(missing)}: no such firing in the first batch")

    failed = 0
    with tempfile.TemporaryDirectory() as work:
        for turn, (combination, expected) in enumerate(zip(combinations, expectations)):
            folder = os.path.join(work, str(turn))
            os.mkdir(folder)
            words, _ = settings.command(combination, turn)
            faults = list(
                faults_of(options.railway, options.family, words, combination, expected, options.simtest, folder)
            )
            for fault in faults:
                print(f"railway {' '.join(words)}\n  trace options {combination}: {fault}", file=sys.stderr)
            failed += bool(faults)
    if failed:
        sys.exit(f"{failed} of {len(combinations)} combinations differ")
    size = sum(len(as_bytes(lines)) for e in expectations for lines in [e.output, *e.files.values()])
    print(f"{len(combinations)} combinations agree, {size} bytes, {sum(fired.values())} firings in the first batch")


if __name__ == "__main__":
    main()
