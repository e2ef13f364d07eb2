"""Runs programs and takes their measure: processor time, peak memory, instructions. What benchmarks/compare.py,
benchmarks/tables.py and scripts/check-instructions have in common."""

import dataclasses
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

TOP = pathlib.Path(__file__).resolve().parent.parent
BIN = TOP / "build" / "release" / "bin"  # a program's option --binaries puts another folder in its place

# The C library chooses among variants of a function by the processor. Without its extensions it takes the same one
# everywhere, so that the instructions of a run are the same on every machine.
PLAIN_PROCESSOR = "glibc.cpu.hwcaps=" + ",".join("-" + name for name in (
    "AVX", "AVX2", "AVX512F", "AVX512VL", "AVX512BW", "BMI1", "BMI2", "ERMS", "FMA", "FMA4", "FSRM", "LZCNT", "MOVBE",
    "POPCNT", "RTM", "SSE4_1", "SSE4_2", "SSSE3", "XSAVE", "XSAVEC"))

POLL_SECONDS = 0.004


def fail(what, remedy):
    """Tells what went wrong and what to do about it, and ends the process with status 1."""
    name = pathlib.Path(sys.argv[0]).name
    sys.exit(f"{name}: {what}\n{name}: to mend it: {remedy}")


@dataclasses.dataclass(frozen=True)
class Run:
    """A finished run: what it printed, its processor time, and its peak memory as last seen."""

    output: str
    seconds: float
    peak_megabytes: float

    def value(self, pattern):
        """The number behind `pattern` in the output."""
        found = re.search(pattern + r"([-+.\deE]+)", self.output)
        if found is None:
            fail(f"no '{pattern}' in the output of a program:\n{self.output}", "run the program by hand")
        return float(found[1])


def peak_of(process, before):
    """The kernel's own high-water mark of a process that runs, or `before` when it has gone."""
    try:
        status = pathlib.Path(f"/proc/{process}/status").read_text(encoding="ascii")
        return max(before, int(re.search(r"VmHWM:\s*(\d+)", status)[1]) / 1024)
    except (OSError, TypeError):
        return before


def run(command, limit_seconds=None, environment=None):
    """Runs `command` to its end, or gives None when it has taken more than `limit_seconds` of time."""
    command = [str(word) for word in command]
    with tempfile.TemporaryFile("w+") as output, tempfile.TemporaryFile("w+") as errors:
        started = time.monotonic()
        try:
            child = subprocess.Popen(command, stdout=output, stderr=errors, env=environment)
        except OSError as reason:
            fail(f"{command[0]}: {reason.strerror}", "cmake --preset release && "
                 "cmake --build --preset release --target workloads")
        peak = 0.0
        while True:
            peak = peak_of(child.pid, peak)
            done, status, usage = os.wait4(child.pid, os.WNOHANG)
            if done:
                break
            if limit_seconds is not None and time.monotonic() - started > limit_seconds:
                child.kill()
                os.wait4(child.pid, 0)
                child.returncode = -9
                return None
            time.sleep(POLL_SECONDS)
        child.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        errors.seek(0)
        if child.returncode != 0:
            fail(f"{' '.join(command)}: status {child.returncode}\n{errors.read()}", "run the command by hand")
        return Run(output.read() + errors.read(), usage.ru_utime + usage.ru_stime, peak)


def model(name, batches, overrides=(), options=()):
    """The command line of the model `name` (an executable of BIN) for that many batches; `overrides` are pairs of type
    letter and name with a value, as (("d", "stopTime"), 100.0)."""
    words = [BIN / name, "-N", batches, *options]
    texts = [f"{letter}:{variable}:{value:.17g}" for (letter, variable), value in overrides]
    return words + (["-O", ":".join(texts)] if texts else [])


def firings_of(finished):
    """How many activities a model's run fired."""
    return finished.value("Actions fired: ")


def loop_seconds_of(finished):
    """The processor time of a model's run behind its construction."""
    return finished.value(r"CPU time \(s\): ")


def answers_in(file):
    """The observations of variable 0 in an ASCII result file."""
    with open(file, encoding="ascii") as lines:
        return [float(line.split(",")[1]) for line in lines if line.startswith("0,")]


def instructions(command):
    """Instructions of a run under callgrind, from start to end, and the run."""
    if shutil.which("valgrind") is None:
        fail("there is no valgrind", "apt-get install valgrind")
    environment = {**os.environ, "GLIBC_TUNABLES": PLAIN_PROCESSOR}
    environment.pop("SIMTEST", None)
    finished = run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *command],
                   environment=environment)
    return int(finished.value(r"Collected : ")), finished


def instructions_each(shorter, longer, extra):
    """Instructions of one more firing, or of one more of whatever `longer` has more of than `shorter`: `extra` of them,
    or as many as it finds in the one run beyond the other. The start and the end of the process fall out."""
    (first, one), (second, other) = instructions(shorter), instructions(longer)
    return (second - first) / (extra(other) - extra(one) if callable(extra) else extra)


def table(rows):
    """Prints rows of texts in columns, the first to the left and the others to the right."""
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    for row in rows:
        cells = [cell.ljust(width) if i == 0 else cell.rjust(width) for i, (cell, width) in enumerate(zip(row, widths))]
        print("  ".join(cells).rstrip())
    sys.stdout.flush()
