#!/usr/bin/env python3
"""Counts the instructions of a firing under callgrind and compares them with those of benchmarks/instructions.txt.

Each count is that of a run less that of a shorter one, so that the start and the end of the process fall out. Counts
are exact: they depend on the sources and the compiler, not on the machine or on what else it does. One that is more
than 3 % off the stored figure, either way, makes the status 1.
"""

import argparse
import concurrent.futures
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import measuring  # noqa: E402

STORED = pathlib.Path(__file__).resolve().parent / "instructions.txt"
ALLOWED = 0.03
RENEW = "scripts/check-instructions --renew"


def model(name, overrides):
    """A model's one batch up to a stop time."""
    def command(stop_time):
        return measuring.model(name, 1, [*overrides, (("d", "stopTime"), stop_time)])
    return command


def railway(trains):
    def command(batches):
        return measuring.model("railway", batches, [(("s", "nTrains"), trains), (("d", "netNotDeliveryProb"), 0.5)])
    return command


def short_batches(options=()):
    def command(batches):
        return measuring.model("bench_clocks", batches, [(("i", "clocks"), 10), (("d", "stopTime"), 1.0)], options)
    return command


def hold(operations):
    return [measuring.BIN / "bench_hold", "--size", 1000, "--stop-time", operations]


def workloads(folder):
    """Of each its name, the unit that is counted, the command by length, the shorter length (the longer is twice that),
    and how many units a run has; None where that is the length."""
    firings = measuring.firings_of
    report_options = ["-n", 1, "-a", f"{folder}/values.csv", "-b", f"{folder}/values.bin"]
    return [
        ("queue", "a firing", model("bench_queue", []), 10000, firings),
        ("cycle", "a firing", model("bench_cycle", []), 500, firings),
        ("machines-100", "a firing", model("bench_machines", [(("i", "machines"), 100)]), 1000, firings),
        ("clocks-1000", "a firing", model("bench_clocks", [(("i", "clocks"), 1000)]), 20, firings),
        ("railway-1", "a firing", railway(1), 100, firings),
        ("railway-20", "a firing", railway(20), 40, firings),
        ("hold-1000", "an operation", hold, 20000, None),
        ("batch-of-10-firings", "a batch", short_batches(), 1000, None),
        ("report-to-both-files", "a report", short_batches(report_options), 1000, None),
    ]


def count(workload):
    _, _, command, length, units_in = workload
    return measuring.instructions_each(command(length), command(2 * length), units_in or length)


def compiler():
    return subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True).stdout.splitlines()[0]


def renew(counts, units):
    lines = ["# Instructions under callgrind, by which scripts/check-instructions judges. Written by",
             f"# {RENEW}, with {compiler()}"]
    width = max(map(len, counts))
    lines += [f"{name:{width}}  {number:10.1f}  {units[name]}" for name, number in counts.items()]
    STORED.write_text("\n".join(lines) + "\n", encoding="utf-8")
    print(f"Instructions: {len(counts)} figures written to {STORED.relative_to(measuring.TOP)}.")


def stored_figures():
    try:
        lines = STORED.read_text(encoding="utf-8").splitlines()
    except OSError as reason:
        measuring.fail(f"{STORED}: {reason.strerror}", RENEW)
    return {line.split()[0]: float(line.split()[1]) for line in lines if line and not line.startswith("#")}


def check(counts, units):
    """Prints each count beside its figure; gives how many are off."""
    stored = stored_figures()
    rows, off = [["", "stored", "now", "change", ""]], 0
    for name, number in counts.items():
        if name not in stored:
            rows.append([name, "none", f"{number:.1f}", "", "NEW"])
            off += 1
            continue
        change = number / stored[name] - 1.0
        verdict = "MORE" if change > ALLOWED else "LESS" if change < -ALLOWED else ""
        off += verdict != ""
        rows.append([name, f"{stored[name]:.1f}", f"{number:.1f}", f"{change:+.1%}", verdict or units[name]])
    for name in stored.keys() - counts.keys():
        rows.append([name, f"{stored[name]:.1f}", "none", "", "GONE"])
        off += 1
    measuring.table(rows)
    return off


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--renew", action="store_true", help="store the present counts as the figures")
    options = parser.parse_args()
    # Every workload writes files of its own, as two run at a time.
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(2) as pool:
        chosen = workloads(folder)
        counts = dict(zip([name for name, *_ in chosen], pool.map(count, chosen)))
    units = {name: unit for name, unit, *_ in chosen}
    if options.renew:
        renew(counts, units)
        return 0
    off = check(counts, units)
    if off:
        measuring.fail(
            f"{off} of {len(counts)} counts are more than {ALLOWED:.0%} off the figures in "
            f"{STORED.relative_to(measuring.TOP)} (compiler here: {compiler()})",
            "find what made a firing dearer (valgrind --tool=callgrind shows it); if it is worth that, or the count is "
            f"less, run {RENEW} and commit the file")
    print(f"Instructions: {len(counts)} counts within {ALLOWED:.0%} of the stored figures.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
