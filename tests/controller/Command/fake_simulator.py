#!/usr/bin/env python3
"""A stand-in for a simulator: it answers as one does on its command line, and writes result files of the same form.

Its observations are a function of the seed and the batch. Files beside the script say how it misbehaves, one word in each:

  mode    what goes wrong; absent for nothing:
            refuses      ends with status 1 and words
            rubbish      prints a megabyte of random bytes, leaves a file of them, ends with status 0
            silent       ends with status 0 and no file
            torn         leaves the first half of the file
            oversized    leaves a message that announces two gigabytes
            hangs        never ends
            stops        stops itself (SIGSTOP) once, and goes on when it is let
            dies-once    is killed at its first attempt at each seed
            noisy        prints without end until its file is there, some megabytes
            late         takes the longer the larger its reward is
            unwell       leaves a sound file and ends with status 3, even when it is only asked what it has to offer
  calls   a line is added for every run but the probes: the seed
"""

import os
import pathlib
import random
import signal
import struct
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
GENERATORS = ["Lagged Fibonacci", "Tausworthe", "Mersenne Twister"]
EXPERIMENTS = 2
PROBE_SEED = 20261


def reward(seed, batch):
    """What is observed; half of the units have rewards about 1, and half about 3."""
    return random.Random(f"{seed} {batch}").random() + (0.5 if seed % 2 else 2.5)


def result_file(options, values):
    batches, experiment = len(values[0]), int(options.get("e", "0"))
    head = (f"QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS={experiment},SEED={options['s']},"
            f"RANDOMGEN={GENERATORS[int(options.get('r', '0'))]},BATCHES={batches},,")
    records = b"".join(struct.pack(">hBi", variable, 1, batches) + struct.pack(f">{batches}d", *row)
                       for variable, row in enumerate(values))
    return head.encode().ljust(256, b"\0") + struct.pack(">iBhh", 9 + len(records), 0, experiment, len(values)) + records


def misbehave(mode, options, data, seed):
    """Gives the bytes to leave, or does not come back."""
    if mode == "refuses":
        sys.exit("ERROR: the bridge is up")
    if mode == "rubbish":
        sys.stdout.buffer.write(random.Random(1).randbytes(1 << 20))
        return random.Random(2).randbytes(5000)
    if mode == "silent":
        sys.exit(0)
    if mode == "torn":
        return data[:len(data) // 2]
    if mode == "oversized":
        return data[:256] + struct.pack(">i", 0x7FFFFFFF) + data[260:]
    if mode == "hangs":
        time.sleep(3600)
    if mode == "stops":
        os.kill(os.getpid(), signal.SIGSTOP)
    if mode == "dies-once":
        mark = HERE / f"died-{seed}"
        if not mark.exists():
            mark.touch()
            os.kill(os.getpid(), signal.SIGKILL)
    if mode == "noisy":
        for _ in range(64):
            sys.stdout.write("x" * 65536)
    return data


def main():
    words = sys.argv[1:]
    options = {word[1]: words[i + 1] if i + 1 < len(words) else "" for i, word in enumerate(words) if word[0] == "-"}
    if int(options.get("e", "0")) >= EXPERIMENTS:
        print(f"ERROR: Experiment {options['e']} does not exist, the study's experiments are 0 to {EXPERIMENTS - 1}",
              file=sys.stderr)
        sys.exit(1)
    if options.get("t") == "0" or "s" not in options:
        sys.exit(1)
    seed, batches = int(options["s"]), int(options["N"])
    values = [[reward(seed, batch) for batch in range(batches)]]
    data = result_file(options, values)
    mode = (HERE / "mode").read_text().strip() if (HERE / "mode").exists() else ""
    if seed != PROBE_SEED:
        with open(HERE / "calls", "a", encoding="utf-8") as calls:
            calls.write(f"{seed}\n")
        if mode == "late":
            time.sleep(0.25 if values[0][0] > 2 else 0.01)
        data = misbehave(mode, options, data, seed)
    with open(options["b"], "wb") as file:
        file.write(data)
    if mode == "unwell":
        sys.exit(3)
    print("SIMULATOR::MAIN()-GOOD EXIT")


if __name__ == "__main__":
    main()
