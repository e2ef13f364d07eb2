"""The survivors that docs/mutation.md explains, and the figures of a run."""

import collections
import pathlib
import re

HEADING = re.compile(r"#+ `(src/[^`]+)`$")


def explanations(page):
    """The explained survivors: for each file its bullets, each as one line.

    A bullet under the heading of a file begins with the change and the line it stands in, as the report prints them:
    "- <change> in `<line>`: <reason>".
    """
    found, file, bullet = collections.defaultdict(list), None, None
    for line in page.splitlines():
        heading = HEADING.match(line)
        if heading or line.startswith("#"):
            file, bullet = heading and heading[1], None
        elif file and line.startswith("- "):
            bullet = line[2:]
            found[file].append(bullet)
        elif file and bullet is not None and line.strip():
            found[file][-1] = bullet = f"{bullet} {line.strip()}"
    return found


def name_of(mutant):
    """What a bullet for the mutant begins with."""
    return f"{mutant.change} in `{mutant.line_text}`"


def is_explained(mutant, explained):
    begin = name_of(mutant) + ": "
    return any(bullet.startswith(begin) and len(bullet) > len(begin) for bullet in explained[mutant.file])


def outdated(explained, names):
    """The explanations, as (file, bullet), of faults that cannot be made any more. `names` are those of all that can be, of
    each file."""
    return [(file, bullet) for file, bullets in sorted(explained.items()) for bullet in bullets
            if not any(bullet.startswith(name + ": ") for name in names.get(file, ()))]


def table(mutants, results):
    """A row for each folder, and one for all: mutants, caught, survived."""
    rows = collections.defaultdict(collections.Counter)
    for mutant in mutants:
        result = results.get(mutant.key, {"result": "not run"})["result"]
        for folder in (str(pathlib.PurePath(mutant.file).parent), "all"):
            rows[folder]["mutants"] += 1
            rows[folder][result] += 1
    lines = ["| Folder | Mutants | Caught | Survived | Reached by no test | Not run | Caught |", "|---|---|---|---|---|---|---|"]
    for folder in sorted(rows, key=lambda folder: (folder == "all", folder)):
        row = rows[folder]
        lines.append(f"| {folder} | {row['mutants']} | {row['caught']} | {row['survived']} | {row['unreached']} | "
                     f"{row['not run']} | {100 * row['caught'] / row['mutants']:.1f} % |")
    return "\n".join(lines)


def survivors(mutants, results):
    return [mutant for mutant in mutants if results.get(mutant.key, {}).get("result") in ("survived", "unreached")]
