"""Follows docs/modelling.md as its reader does, in an empty folder, against an installation of this build.

A block whose language has a file name behind it is written to that file; a block of sh is run; a block of text is the
standard output of the block of sh before it, byte for byte, but for what CMake and the simulators say: only the lines that
begin with a number and a colon, or with "exact: ", are looked at. A block of cpp without a name is a part of a program that
the tests build. So that the numbers shown are known to be right, each mean is held to the exact value that stands in the
same output, or to that of the queue's Markov chain.

The environment names QUORVA_BUILD, the build folder, and QUORVA_TOP, the source folder. With an argument --print the
outputs are printed and not compared.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

TOP = pathlib.Path(os.environ["QUORVA_TOP"])
BUILD = pathlib.Path(os.environ["QUORVA_BUILD"])
PAGE = TOP / "docs" / "modelling.md"
PARTS = TOP / "tests" / "Modelling" / "programs" / "WorkshopByKit.cpp"
BLOCK = re.compile(r"^```(\w+)(?: (\S+))?\n(.*?)^```$", re.MULTILINE | re.DOTALL)
OTHER_WORDS = re.compile(r"^(?!\d+: |exact: ).*\n", re.MULTILINE)


def fail(text):
    sys.exit(f"{PAGE.name}: {text}")


def run(commands, folder, environment):
    """Standard output of the commands, each of which must end with status 0."""
    done = subprocess.run(["bash", "-e", "-u", "-o", "pipefail", "-c", commands], cwd=folder, env=environment,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    if done.returncode != 0:
        fail(f"status {done.returncode} of\n{commands}\n{done.stdout}\n{done.stderr}")
    return done.stdout


def follow(blocks, folder, environment, compares):
    """Does what the blocks say. Returns how many of each kind there were."""
    counts = {"file": 0, "sh": 0, "text": 0, "part": 0}
    output = ""
    for language, name, body in blocks:
        if name:
            (folder / name).write_text(body)
            kind = "file"
        elif language == "sh":
            output = OTHER_WORDS.sub("", run(body, folder, environment))
            kind = "sh"
            if not compares:
                print(output)
        elif language == "text":
            if compares and output != body:
                fail(f"the page shows\n{body}and the commands give\n{output}")
            kind = "text"
        elif language == "cpp":
            if body not in PARTS.read_text():
                fail(f"not in {PARTS.name}:\n{body}")
            kind = "part"
        else:
            fail(f"what is a block of {language}?")
        counts[kind] += 1
    return counts


# The queue of experiment 0 at times 1, 5 and 10 and those served by 10: its Markov chain, solved by uniformisation.
QUEUE_VALUES = (0.55155, 1.46922, 2.02212, 5.96972)


def check_values(blocks):
    """Holds every mean that the page shows to its exact value."""
    shown = [body for language, _, body in blocks if language == "text"]
    for body, known in zip(shown, (QUEUE_VALUES, None, None)):
        means = [(float(mean), float(error)) for mean, error in re.findall(r"^\d+: (\S+) \+- (\S+)$", body, re.MULTILINE)]
        exact = known or [float(value) for line in re.findall(r"^exact: (.*)$", body, re.MULTILINE)
                          for value in line.split()]
        if len(means) != len(exact):
            fail(f"{len(means)} means and {len(exact)} exact values:\n{body}")
        for (mean, error), value in zip(means, exact):
            if abs(mean - value) > 4 * error or 4 * error > 0.04 * value:
                fail(f"{mean} +- {error} does not tell {value}")


def main():
    blocks = BLOCK.findall(PAGE.read_text())
    listing = next(body for _, name, body in blocks if name == "Queue.cpp")
    if listing != (TOP / "models" / "queue" / "Queue.cpp").read_text():
        fail("Queue.cpp is not that of models/queue")
    check_values(blocks)
    with tempfile.TemporaryDirectory(prefix="quorva-page-") as scratch:
        prefix = pathlib.Path(scratch) / "quorva"
        folder = pathlib.Path(scratch) / "first"
        folder.mkdir()
        environment = dict(os.environ, CMAKE_PREFIX_PATH=str(prefix), CMAKE_FIND_USE_PACKAGE_REGISTRY="OFF", LC_ALL="C")
        run(f"cmake --install '{BUILD}' --prefix '{prefix}' > /dev/null", folder, environment)
        counts = follow(blocks, folder, environment, "--print" not in sys.argv)
        cache = (folder / "build" / "CMakeCache.txt").read_text()
        if f"Quorva_DIR:PATH={prefix}/" not in cache:
            fail("another Quorva was found")
    if counts != {"file": 4, "sh": 4, "text": 3, "part": 3}:
        fail(f"the page has other blocks than it had: {counts}")


main()
