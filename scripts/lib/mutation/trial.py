"""Builds the tree with all mutants, and runs the tests that reach a mutant with that mutant on."""

import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import tempfile
import threading
import time

from mutation import cpp, operators, schemata

SOURCE_SUFFIXES = (".cpp", ".h")
NEEDED_FOR_BUILD = ("CMakeLists.txt", "CMakePresets.json", "README.md", "CHANGELOG.md", "cmake", "src", "models", "tests", "docs",
                    "scripts", "benchmarks", ".clang-format")
ERROR = re.compile(r"^(?P<file>[^\s:]+):(?P<line>\d+):(?:\d+:)? (?P<kind>fatal error|error|note): (?P<text>.*)$", re.MULTILINE)


class Failure(Exception):
    """What the user is told before the program ends with status 2."""


class Paths:
    def __init__(self, top, work):
        self.top, self.work = top, work
        self.tree, self.build = work / "tree", work / "build"
        self.rejected, self.results, self.reached = (work / f"{name}.json" for name in ("rejected", "results", "reached"))
        self.numbers = work / "numbers.json"


def read_json(file, otherwise):
    return json.loads(file.read_text()) if file.exists() else otherwise


def write_json(file, value):
    partial = file.with_suffix(".new")
    partial.write_text(json.dumps(value, indent=1, sort_keys=True))
    partial.replace(file)


def write_if_changed(file, content):
    """Leaves a file alone that has the content already, so that what depends on it need not be built anew. Gives whether it
    was written."""
    if file.exists() and file.read_bytes() == content:
        return False
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_bytes(content)
    return True


def project_files(top):
    """The files of the project by their paths from its top: those that git knows of, or all where there is no git."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=top,
                            capture_output=True, text=True)
    own = subprocess.run(["git", "rev-parse", "--show-toplevel"], cwd=top, capture_output=True, text=True)
    if own.returncode == 0 and pathlib.Path(own.stdout.strip()) == top:
        names = set(filter(None, listed.stdout.split("\0")))
    else:
        names = {str(file.relative_to(top)) for file in top.rglob("*") if file.is_file()}
    return sorted(name for name in names if (top / name).is_file() and name.startswith(NEEDED_FOR_BUILD))


class Collection:
    """The mutants of a project: of each file a share, with numbers from 1 on, without those that do not compile."""

    def __init__(self, paths, folders, left_out, share, most_per_file):
        self.paths = paths
        rejected = set(read_json(paths.rejected, []))
        self.sources, self.mutants, self.sites = {}, [], 0
        for name in project_files(paths.top):
            if not name.endswith(SOURCE_SUFFIXES) or not name.startswith(folders) or name.startswith(left_out):
                continue
            source = cpp.Source((paths.top / name).read_text())
            found = operators.Finder(name, source).mutants()
            self.sites += len(found)
            chosen = operators.select(found, share)
            if len(chosen) > most_per_file:
                chosen = sorted(sorted(chosen, key=lambda mutant: mutant.rank)[:most_per_file],
                                key=lambda mutant: (mutant.start, mutant.end, mutant.key))
            self.sources[name] = source
            self.mutants += schemata.without_crossings(chosen)
        self.mutants = [mutant for mutant in self.mutants if mutant.key not in rejected]
        self._number()

    def _number(self):
        """Gives the mutants their numbers, which they keep from run to run, so that files need not be built anew."""
        numbers = read_json(self.paths.numbers, {})
        for mutant in self.mutants:
            mutant.number = numbers.setdefault(mutant.key, max(numbers.values(), default=0) + 1)
        write_json(self.paths.numbers, numbers)

    def of_file(self, name):
        return [mutant for mutant in self.mutants if mutant.file == name]

    def reject(self, mutants):
        """Leaves the mutants out from now on."""
        keys = {mutant.key for mutant in mutants}
        write_json(self.paths.rejected, sorted(set(read_json(self.paths.rejected, [])) | keys))
        self.mutants = [mutant for mutant in self.mutants if mutant.key not in keys]


def write_tree(paths, collection):
    """The project's copy, with the mutated sources in the place of its own. Gives the mutated headers that have changed."""
    headers = []
    names = project_files(paths.top)
    if paths.tree.exists():
        known = set(names)
        for file in list(paths.tree.rglob("*")):
            if file.is_file() and str(file.relative_to(paths.tree)) not in known and file.name != "mutant.h":
                file.unlink()
    for name in names:
        mutants = collection.of_file(name) if name in collection.sources else []
        if mutants:
            content = schemata.mutated_source(collection.sources[name], mutants).encode()
        else:
            content = (paths.top / name).read_bytes()
        target = paths.tree / name
        if write_if_changed(target, content) and mutants and name.endswith(".h"):
            headers.append(name)
        shutil.copymode(paths.top / name, target)
    # Room for numbers to come, so that a few more mutants do not have everything built anew.
    last = max((mutant.number for mutant in collection.mutants), default=0)
    write_if_changed(paths.tree / "mutant.h", schemata.HEADER.format(end=(last // 1000 + 1) * 1000).encode())
    return headers


def build(paths, collection, targets, tell):
    """Builds the tree, or just the targets named, leaving out mutants that do not compile until the rest does."""
    tell(f"building with {len(collection.mutants)} mutants")
    headers = write_tree(paths, collection)
    while headers:  # first by themselves, as nearly everything is built anew for a header
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            log = "".join(pool.map(lambda name: errors_of_header(paths, name), headers))
        faulty = mutants_in_errors(paths, collection, log)
        if not faulty:
            break
        tell(f"{len(faulty)} in headers do not compile and are left out")
        collection.reject(faulty)
        headers = write_tree(paths, collection)
    if not (paths.build / "build.ninja").exists():
        configure(paths)
    while True:
        wanted = ["--target", *targets] if targets else []
        done = subprocess.run(["cmake", "--build", str(paths.build), "-j", str(os.cpu_count()), *wanted, "--", "-k", "0"],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, env={**os.environ, "LC_ALL": "C"})
        (paths.work / "build.log").write_text(done.stdout)
        if done.returncode == 0:
            return
        faulty = mutants_in_errors(paths, collection, done.stdout)
        if not faulty:
            raise Failure(f"the tree of the mutants does not build; see {paths.work / 'build.log'}")
        tell(f"{len(faulty)} do not compile and are left out")
        collection.reject(faulty)
        write_tree(paths, collection)


def errors_of_header(paths, name):
    command = ["g++", "-std=c++20", "-fsyntax-only", "-w", "-include", str(paths.tree / "mutant.h"),
               "-I", str(paths.tree / "src"), "-x", "c++", str(paths.tree / name)]
    return subprocess.run(command, capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"}).stderr


def configure(paths):
    command = ["cmake", "-S", str(paths.tree), "-B", str(paths.build), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
               "-DCMAKE_CXX_FLAGS_RELEASE=-O1", f"-DCMAKE_CXX_FLAGS=-w -include {paths.tree}/mutant.h",
               "-DQUORVA_BUILD_BENCHMARKS=OFF", "-DQUORVA_QUICK_TESTS=ON", "--no-warn-unused-cli"]
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        raise Failure(f"CMake could not configure the tree of the mutants:\n{done.stdout}")


def mutants_in_errors(paths, collection, log):
    """The mutants in the lines that the compiler complains of; or, where there is none, in those its notes point at, and in
    the definitions of constants that the line names, as a length of an array."""
    by_line = collections.defaultdict(list)
    for mutant in collection.mutants:
        source = collection.sources[mutant.file]
        for line in range(source.line_of(mutant.start), source.line_of(mutant.end) + 1):
            by_line[mutant.file, line].append(mutant)

    def at(found):
        file = pathlib.Path(found["file"])
        name = str(file.relative_to(paths.tree)) if file.is_relative_to(paths.tree) else found["file"]
        return by_line.get((name, int(found["line"])), [])

    faulty, unexplained = {}, False
    for found in ERROR.finditer(log):
        if found["kind"] != "note":
            unexplained = not at(found)
        if found["kind"] != "note" or unexplained:
            faulty.update((mutant.key, mutant) for mutant in at(found))
        if found["kind"] != "note" and unexplained and os.path.isfile(found["file"]):
            line = pathlib.Path(found["file"]).read_text().splitlines()[int(found["line"]) - 1]
            for word in set(re.findall(r"\w+", line)):
                defines = re.compile(rf"\bconstexpr\b.*\b{word} = ")
                faulty.update((mutant.key, mutant) for mutant in collection.mutants if defines.search(mutant.line_text))
    return list(faulty.values())


class Test:
    """One test as CTest knows it."""

    def __init__(self, told):
        properties = {entry["name"]: entry["value"] for entry in told.get("properties", [])}
        self.name, self.command = told["name"], told.get("command", [])
        self.folder = properties.get("WORKING_DIRECTORY", ".")
        self.environment = dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", []))
        self.is_slow = "slow" in properties.get("LABELS", [])
        self.cpu = self.wall = 0.0

    def stamp(self):
        """Tells one build of the test's program, and of the files in its environment, from another."""
        files = [word for word in [*self.command, *self.environment.values()] if os.path.isfile(word)]
        return hashlib.sha256("".join(f"{file} {os.stat(file).st_mtime_ns}\n" for file in files).encode()).hexdigest()


def tests_of(paths):
    told = subprocess.run(["ctest", "--show-only=json-v1"], cwd=paths.build, capture_output=True, text=True, check=True).stdout
    return [test for test in map(Test, json.loads(told)["tests"]) if test.command]


def limited(cpu_seconds):
    """Keeps a mutant from taking the machine along: it gets this much processor time, 4 GiB of addresses, 256 MiB a file."""
    def limit():
        resource.setrlimit(resource.RLIMIT_CPU, (cpu_seconds, cpu_seconds + 2))
        resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
        resource.setrlimit(resource.RLIMIT_FSIZE, (256 << 20, 256 << 20))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    return limit


def run_test(test, mutant_number, cpu_seconds, wall_seconds, reached_file=None):
    """Runs one test in a folder of temporary files of its own. Gives how it ended: "passed", "failed", "signal <n>" or
    "endless"; and the processor and wall seconds."""
    with tempfile.TemporaryDirectory() as folder:
        environment = {**os.environ, **test.environment, "QUORVA_MUTANT": str(mutant_number), "TMPDIR": folder}
        if reached_file:
            environment["QUORVA_MUTANTS_REACHED"] = str(reached_file)
        started = time.monotonic()
        process = subprocess.Popen(test.command, cwd=test.folder, env=environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True,
                                   preexec_fn=limited(cpu_seconds))
        ended = threading.Timer(wall_seconds, kill_session, [process.pid])
        ended.start()
        _, status, usage = os.wait4(process.pid, 0)
        ended.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
        kill_session(process.pid)  # what the test has left behind
        wall = time.monotonic() - started
    code = process.returncode
    if wall >= wall_seconds or code in (-signal.SIGXCPU,):
        verdict = "endless"
    else:
        verdict = "passed" if code == 0 else f"signal {-code}" if code < 0 else "failed"
    return verdict, usage.ru_utime + usage.ru_stime, wall


def kill_session(session):
    try:
        os.killpg(session, signal.SIGKILL)
    except ProcessLookupError:
        pass


class Baseline:
    """Which mutants each test reaches, learnt from a run of it with no mutant on."""

    SECONDS = 20  # a test that takes longer is not fast, whatever the machine

    def __init__(self, paths, collection, fast_seconds, jobs, tell):
        self.tests, self.reaching = [], collections.defaultdict(list)
        self.failing, self.slow = [], []
        known = read_json(paths.reached, {})
        told = {}
        listing = hashlib.sha256("".join(f"{mutant.number} {mutant.key}\n" for mutant in collection.mutants).encode()).hexdigest()
        tests = tests_of(paths)
        tell(f"learning what each of {len(tests)} tests reaches")
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            for test, entry in zip(tests, pool.map(lambda test: self._entry(paths, test, known, listing), tests)):
                told[test.name] = entry
                test.cpu, test.wall = entry["cpu"], entry["wall"]
                if entry["verdict"] == "failed" or entry["verdict"].startswith("signal"):
                    self.failing.append(test)
                elif entry["verdict"] == "endless" or test.cpu > fast_seconds or test.wall > 3 * fast_seconds:
                    self.slow.append(test)
                else:
                    self.tests.append(test)
                    for number in entry["reached"]:
                        self.reaching[number].append(test)
        write_json(paths.reached, told)

    def _entry(self, paths, test, known, listing):
        stamp = listing + test.stamp()
        entry = known.get(test.name)
        if entry and entry["stamp"] == stamp:
            return entry
        if test.is_slow:
            return {"stamp": stamp, "verdict": "endless", "cpu": 0.0, "wall": 0.0, "reached": []}
        with tempfile.NamedTemporaryFile(dir=paths.work) as reached:
            reached.truncate(1 << 20)
            verdict, cpu, wall = run_test(test, 0, self.SECONDS, 3 * self.SECONDS, reached.name)
            places = pathlib.Path(reached.name).read_bytes()
        numbers = [number for number in range(1, len(places)) if places[number]]
        return {"stamp": stamp, "verdict": verdict, "cpu": cpu, "wall": wall, "reached": numbers}


def mirrored(test, mutant):
    """Whether the test's program lies in the folder of tests that mirrors the mutant's."""
    folder = pathlib.PurePath(mutant.file).parent.relative_to("src").as_posix() if mutant.file.startswith("src/") else ""
    return f"/tests/{folder}/" in test.command[0]


class Trial:
    """Runs mutants, each against the tests that reach it, until the first that does not pass."""

    def __init__(self, baseline):
        self.baseline = baseline
        self.catches = collections.Counter()  # by file and test: what caught one mutant of a file catches the next

    def order(self, mutant):
        return sorted(self.baseline.reaching[mutant.number], key=lambda test: (
            -self.catches[mutant.file, test.name], not mirrored(test, mutant), test.cpu + test.wall, test.name))

    def run(self, mutant, only=None):
        """Gives the mutant's result: "caught" with the test and how it ended, "survived", or "unreached"."""
        tests = [test for test in self.order(mutant) if only is None or only.search(test.name)]
        for test in tests:
            limits = int(3 + 5 * test.cpu), 15 + 8 * test.wall
            verdict, _, _ = run_test(test, mutant.number, *limits)
            if verdict in ("passed", "endless"):
                again = verdict
            else:
                again, _, _ = run_test(test, mutant.number, *limits)  # a test that fails now and then catches nothing
            if again != "passed":
                self.catches[mutant.file, test.name] += 1
                return {"result": "caught", "test": test.name, "how": again}
        return {"result": "survived" if tests else "unreached", "tests": len(tests)}
