"""Runs the railway and the reference program with the same settings and compares what they observe.

Usage: compare_with_reference.py RAILWAY REFERENCE [--batches N] [--seed S] [--generator G] [--simtest K]
                                 [--same-observations] [name=value ...]

Every observation and the number of actions fired must agree. Some observations must differ from zero, and some pair of
batches must differ, so that the agreement tells something; --same-observations lifts the second condition for a run that
is the same in every batch.
Exit status 0 when all agrees, 1 with the first difference on standard error when not.
"""

import argparse
import os
import subprocess
import sys
import tempfile

TYPE_LETTERS = {"lineLength": "i", "safetyMargin": "i", "trainLength": "i", "maxTrainSpeed": "s", "nTrains": "s"}
STOP_TIMES = 11


def run_railway(program, options):
    """Data lines and count of a run of the engine."""
    triples = [value.partition("=") for value in options.overrides]
    overrides = ":".join(f"{TYPE_LETTERS.get(name, 'd')}:{name}:{value}" for name, _, value in triples)
    with tempfile.TemporaryDirectory() as folder:
        command = [program, "-N", str(options.batches), "-s", str(options.seed), "-r", str(options.generator)]
        command += ["-a", "out.csv"] + (["-O", overrides] if overrides else [])
        environment = dict(os.environ, SIMTEST=str(options.simtest))
        run = subprocess.run(command, cwd=folder, env=environment, capture_output=True, text=True, check=False)
        if run.returncode != 0:
            sys.exit(f"{' '.join(command)}: exit status {run.returncode}\n{run.stdout}{run.stderr}")
        with open(os.path.join(folder, "out.csv"), encoding="ascii") as file:
            data = [line for line in file.read().splitlines() if not line.startswith("#")]
    return data + [line for line in run.stdout.splitlines() if line.startswith("Actions fired: ")]


def run_reference(program, options):
    command = [sys.executable, program, "--batches", str(options.batches), "--seed", str(options.seed)]
    command += ["--generator", str(options.generator), "--simtest", str(options.simtest)] + options.overrides
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.splitlines()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("railway")
    parser.add_argument("reference")
    parser.add_argument("--batches", type=int, default=100)
    parser.add_argument("--seed", type=int, default=31415)
    parser.add_argument("--generator", type=int, default=0)
    parser.add_argument("--simtest", type=int, default=2)
    parser.add_argument("--same-observations", action="store_true")
    parser.add_argument("overrides", nargs="*", help="name=value")
    options = parser.parse_intermixed_args()

    railway = run_railway(options.railway, options)
    reference = run_reference(options.reference, options)
    for number, (ours, theirs) in enumerate(zip(railway, reference), start=1):
        if ours != theirs:
            sys.exit(f"line {number}: the railway has {ours!r}, the reference {theirs!r}")
    if len(railway) != len(reference) or len(reference) != STOP_TIMES * options.batches + 1:
        sys.exit(f"the railway gives {len(railway)} lines, the reference {len(reference)}")
    values = [line.split(",")[1] for line in railway[:-1]]
    last_stop = values[-options.batches :]
    if set(values) == {"0.0"} or (len(set(last_stop)) == 1 and not options.same_observations):
        sys.exit("the observations agree, but they are too uniform to tell anything")
    print(f"{len(values)} observations agree, {len(values) - values.count('0.0')} of them not zero; {railway[-1]}")


if __name__ == "__main__":
    main()
