#!/usr/bin/env python3
"""Tables of what the engine costs, by size.

  groups    a firing by the number of groups in the event list, each of which is touched by its own firing alone; and
            the memory of a group with its activity and place, and of a place
  replicas  building a model of many replicas, phase by phase, and writing and reading its state image
  railway   firings of the railway by the number of trains, half of the messages being lost
  batches   batches of 10 firings, in which the start and the end of a batch outweigh them
  reports   the same with a report of each batch (-n 1), into no file, the ASCII file and the binary file

Times are of the processor. Build first: cmake --preset release && cmake --build --preset release --target workloads
"""

import argparse
import pathlib
import shutil
import statistics
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import measuring  # noqa: E402

GROUPS = (10, 100, 1000, 10000, 100000, 1000000)
REPLICAS = (10, 100, 1000, 10000, 100000)
TRAINS = (1, 5, 20, 100)
GROUPS_COUNTED = 10000  # beyond it callgrind takes long to get through the construction
STOP_TIME = ("d", "stopTime")
CLOCKS = ("i", "clocks")
TOO_LONG = "too long"


def median_of(passes, measure):
    """The median of that many measures, or None when one took too long."""
    values = []
    for _ in range(passes):
        value = measure()
        if value is None:
            return None
        values.append(value)
    return statistics.median(values)


def counted_each(shorter, longer, extra):
    """The column of instructions: empty where there is no callgrind to count them."""
    if shutil.which("valgrind") is None:
        return ""
    return f"{measuring.instructions_each(shorter, longer, extra):.1f}"


def clocks(size, stop_time, spare_places=0, options=()):
    return measuring.model("bench_clocks", 1, [(CLOCKS, size), (("i", "sparePlaces"), spare_places),
                                               (STOP_TIME, stop_time)], options)


def clocks_peak_bytes(size, spare_places, limit):
    finished = measuring.run(clocks(size, 1.0, spare_places), limit)
    return None if finished is None else finished.peak_megabytes * 2**20


def groups(options):
    """Cost of a firing by groups. The events lie at random in the heap only after each clock has ticked, so that the
    times taken are those of a run less those of one of half its length."""
    rows = [["groups", "ns/firing", "instructions"]]
    for size in options.sizes or GROUPS:
        firings = max(2e6, 4.0 * size)
        half, whole = clocks(size, 0.5 * firings / size), clocks(size, firings / size)

        def cost():
            runs = [measuring.run(words, options.limit) for words in (half, whole)]
            if None in runs:
                return None
            seconds = measuring.loop_seconds_of(runs[1]) - measuring.loop_seconds_of(runs[0])
            return seconds / (measuring.firings_of(runs[1]) - measuring.firings_of(runs[0]))

        median = median_of(options.passes, cost)
        counted = ""
        if size <= GROUPS_COUNTED:
            shorter, longer = (clocks(size, (1.0 + extra) * 20000.0 / size) for extra in (0, 1))
            counted = counted_each(shorter, longer, measuring.firings_of)
        rows.append([str(size), TOO_LONG if median is None else f"{median * 1e9:.1f}", counted])
    measuring.table(rows)
    few, many = 1000, 50000
    peaks = [clocks_peak_bytes(*point, options.limit) for point in ((few, 0), (many, 0), (few, 0), (few, many // few))]
    if None not in peaks:
        print(f"bytes of a group with its activity and place: {(peaks[1] - peaks[0]) / (many - few):.0f}; "
              f"of a place: {(peaks[3] - peaks[2]) / many:.0f}")


def replicas(options):
    """Construction by replicas."""
    rows = [["replicas", "tree s", "rewards s", "lists s", "connectivity s", "in all s", "peak MB", "image bytes",
             "write ms", "read ms"]]
    for size in options.sizes or REPLICAS:
        phases = [measuring.run([measuring.BIN / "bench_construction", phase, "--size", size], options.limit)
                  for phase in ("tree", "rewards", "engine")]
        if None in phases:
            rows.append([str(size), *[TOO_LONG] * (len(rows[0]) - 1)])
            continue
        tree, with_rewards, in_all = (phase.value(r"\bseconds=") for phase in phases)
        connectivity = phases[2].value("connectivitySeconds=")
        rows.append([str(size), f"{tree:.4f}", f"{max(0.0, with_rewards - tree):.4f}",
                     f"{max(0.0, in_all - with_rewards - connectivity):.4f}", f"{connectivity:.4f}", f"{in_all:.4f}",
                     f"{phases[2].value('megabytes='):.1f}", f"{phases[1].value('imageBytes='):.0f}",
                     f"{phases[1].value('imageWriteSeconds=') * 1e3:.3f}",
                     f"{phases[1].value('imageReadSeconds=') * 1e3:.3f}"])
    measuring.table(rows)


def railway(options):
    """Firings of the railway by trains."""
    rows = [["trains", "firings/batch", "M firings/s", "instructions/firing", "build s", "peak MB"]]
    for trains in options.sizes or TRAINS:
        overrides = [(("s", "nTrains"), trains), (("d", "netNotDeliveryProb"), 0.5)]
        batches = max(200, 40000 // trains)
        runs = [measuring.run(measuring.model("railway", batches, overrides), options.limit)
                for _ in range(options.passes)]
        if None in runs:
            rows.append([str(trains), *[TOO_LONG] * (len(rows[0]) - 1)])
            continue
        firings = measuring.firings_of(runs[0])
        seconds = statistics.median(measuring.loop_seconds_of(run) for run in runs)
        shorter, longer = (measuring.model("railway", count, overrides) for count in (20, 40))
        counted = counted_each(shorter, longer, measuring.firings_of)
        building = statistics.median(run.seconds - measuring.loop_seconds_of(run) for run in runs)
        rows.append([str(trains), f"{firings / batches:.1f}", f"{firings / seconds * 1e-6:.2f}", counted,
                     f"{building:.2f}", f"{max(run.peak_megabytes for run in runs):.1f}"])
    measuring.table(rows)


def short_batches(count, options=()):
    """Batches of 10 clocks for 1 unit of time: 10 firings on average, and 10 events to schedule."""
    return measuring.model("bench_clocks", count, [(CLOCKS, 10), (STOP_TIME, 1.0)], options)


def batch_row(name, passes, count, words):
    """Batches a second, as the difference of two runs, and their instructions. Of the whole process, as the results are
    written outside the loop's own time too."""
    def cost():
        seconds = [measuring.run(short_batches(length, words)).seconds for length in (count, 2 * count)]
        return (seconds[1] - seconds[0]) / count

    counted = counted_each(short_batches(1000, words), short_batches(2000, words), 1000)
    return [name, f"{1e-3 / median_of(passes, cost):.1f}", counted]


def batches(options):
    """Batches of 10 firings."""
    measuring.table([["", "1000 batches/s", "instructions"],
                     batch_row("batches of 10 firings", options.passes, 200000, [])])


def reports(options):
    """Reports of one batch of 10 firings."""
    with tempfile.TemporaryDirectory() as folder:
        ascii_file, binary_file = ["-a", f"{folder}/values.csv"], ["-b", f"{folder}/values.bin"]
        rows = [["one report a batch, into", "1000 reports/s", "instructions"]]
        for name, words in (("no file", []), ("the ASCII file", ascii_file), ("the binary file", binary_file),
                            ("both", ascii_file + binary_file)):
            rows.append(batch_row(name, options.passes, 50000, ["-n", 1, *words]))
    measuring.table(rows)


TABLES = {"groups": groups, "replicas": replicas, "railway": railway, "batches": batches, "reports": reports}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tables", nargs="*", metavar="table", help="those of the list above; all without any")
    parser.add_argument("--passes", type=int, default=5, help="runs that a median is taken of (5)")
    parser.add_argument("--sizes", type=int, nargs="+", help="other sizes than the usual ones")
    parser.add_argument("--limit", type=float, default=120.0, help="seconds that a run may take (120)")
    parser.add_argument("--binaries", type=pathlib.Path, default=measuring.BIN, metavar="FOLDER",
                        help="where the executables are (build/release/bin)")
    options = parser.parse_args()
    measuring.BIN = options.binaries
    for name in options.tables:
        if name not in TABLES:
            parser.error(f"no such table: {name}; there are {', '.join(TABLES)}")
    if options.passes < 1 or min(options.sizes or [1]) < 1:
        parser.error("passes and sizes are 1 or more")
    for name in options.tables or TABLES:
        print(f"\n{name}")
        TABLES[name](options)
    return 0


if __name__ == "__main__":
    sys.exit(main())
