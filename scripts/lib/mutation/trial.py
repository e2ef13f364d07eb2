"""Builds the tree with all mutants, and runs the tests that reach a mutant with that mutant on."""

import collections
import concurrent.futures
import dataclasses
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

from mutation import cpp, operators, records, schemata

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
        self.names = {}  # of each file, those of all mutants that there could be
        for name in project_files(paths.top):
            if not name.endswith(SOURCE_SUFFIXES) or not name.startswith(folders) or name.startswith(left_out):
                continue
            source = cpp.Source((paths.top / name).read_text())
            found = operators.Finder(name, source).mutants()
            self.sites += len(found)
            self.names[name] = {records.name_of(mutant) for mutant in found}
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
               "-DQUORVA_BUILD_BENCHMARKS=OFF", "-DQUORVA_BUILD_CONTROLLER=OFF", "-DQUORVA_QUICK_TESTS=ON",
               "--no-warn-unused-cli"]
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
    """One test as CTest knows it, which is run in a process of its own."""

    def __init__(self, told):
        properties = {entry["name"]: entry["value"] for entry in told.get("properties", [])}
        self.name, self.command = told["name"], told.get("command", [])
        self.folder = properties.get("WORKING_DIRECTORY", ".")
        self.environment = dict(entry.split("=", 1) for entry in properties.get("ENVIRONMENT", []))
        self.is_slow = "slow" in properties.get("LABELS", [])
        filters = [word for word in self.command if word.startswith("--gtest_filter=")]
        self.gtest_name = filters[0].partition("=")[2] if filters else None


class Program:
    """The tests of one program of GoogleTest, which run in one process, or one test of another kind."""

    def __init__(self, name, tests):
        self.name, self.tests = name, {test.gtest_name: test for test in tests}
        self.command, self.folder, self.environment = tests[0].command, tests[0].folder, tests[0].environment
        self.is_gtest = tests[0].gtest_name is not None
        self.is_slow = not self.is_gtest and tests[0].is_slow
        self.left_out = []  # names of slow tests, and of those that fail without any mutant
        self.long = []      # names of tests that take their time, to be run when the others have passed
        self.cpu = self.wall = 0.0

    def stamp(self):
        """Tells one build of the program, and of the files in its environment, from another."""
        files = [word for word in [*self.command, *self.environment.values()] if os.path.isfile(word)]
        return hashlib.sha256("".join(f"{file} {os.stat(file).st_mtime_ns}\n" for file in files).encode()).hexdigest()

    def command_without(self, names, *options, only=()):
        """Runs the tests, or `only` some of them, but for those of the `names`."""
        if not self.is_gtest:
            return self.command
        return [self.command[0], *options, "--gtest_filter=" + ":".join(only) + "-" + ":".join(names)]

    def parts(self):
        """The program's tests in two parts, the short ones first: for each its names, or none for all, and what is left out."""
        if not self.long:
            return [((), self.left_out)]
        return [((), [*self.left_out, *self.long]), (self.long, self.left_out)]

    def limits(self):
        """Seconds of the processor and of the wall after which a run with a mutant counts as endless."""
        return int(3 + 5 * self.cpu), 15 + 2 * self.wall


def programs_of(paths):
    told = subprocess.run(["ctest", "--show-only=json-v1"], cwd=paths.build, capture_output=True, text=True, check=True).stdout
    groups = collections.defaultdict(list)
    for test in map(Test, json.loads(told)["tests"]):
        if test.command and os.path.exists(test.command[0]):
            groups[os.path.basename(test.command[0]) if test.gtest_name else test.name].append(test)
    return [Program(name, tests) for name, tests in groups.items()]


def limited(cpu_seconds):
    """Keeps a mutant from taking the machine along: it gets this much processor time, 4 GiB of addresses, 256 MiB a file."""
    def limit():
        resource.setrlimit(resource.RLIMIT_CPU, (cpu_seconds, cpu_seconds + 2))
        resource.setrlimit(resource.RLIMIT_AS, (4 << 30, 4 << 30))
        resource.setrlimit(resource.RLIMIT_FSIZE, (256 << 20, 256 << 20))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    return limit


@dataclasses.dataclass
class Ending:
    """How a process ended: "passed", "failed", "signal <n>" or "endless"; and its processor and wall seconds and its output."""
    verdict: str
    cpu: float
    wall: float
    output: str

    def failed_tests(self):
        """Of a program of GoogleTest the tests that failed, or the one that was on when the process ended."""
        failed = re.findall(r"^\[  FAILED  \] ([^\s,.]+\.[^\s,]+)", self.output, re.MULTILINE)
        begun = re.findall(r"^\[ RUN      \] (\S+)", self.output, re.MULTILINE)
        ended = re.findall(r"^\[(?:       OK|  FAILED |  SKIPPED) \] ([^\s,]+)", self.output, re.MULTILINE)
        return list(dict.fromkeys(failed or [name for name in begun[-1:] if name not in ended]))


def run_process(command, folder, environment, mutant_number, cpu_seconds, wall_seconds, reached_file=None):
    """Runs a test with a mutant on, with a folder of its own for temporary files."""
    with tempfile.TemporaryDirectory() as temporary, tempfile.TemporaryFile() as output:
        environment = {**os.environ, **environment, "QUORVA_MUTANT": str(mutant_number), "TMPDIR": temporary}
        if reached_file:
            environment["QUORVA_MUTANTS_REACHED"] = str(reached_file)
        started = time.monotonic()
        process = subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=limited(cpu_seconds))
        ended = threading.Timer(wall_seconds, kill_session, [process.pid])
        ended.start()
        _, status, usage = os.wait4(process.pid, 0)
        ended.cancel()
        process.returncode = code = os.waitstatus_to_exitcode(status)
        kill_session(process.pid)  # what the test has left behind
        wall = time.monotonic() - started
        output.seek(0)
        text = output.read(16 << 20).decode(errors="replace")
    if wall >= wall_seconds or code == -signal.SIGXCPU:
        verdict = "endless"
    else:
        verdict = "passed" if code == 0 else f"signal {-code}" if code < 0 else "failed"
    return Ending(verdict, usage.ru_utime + usage.ru_stime, wall, text)


def kill_session(session):
    try:
        os.killpg(session, signal.SIGKILL)
    except ProcessLookupError:
        pass


class Baseline:
    """Which mutants each program of tests reaches, learnt from a run of it with no mutant on."""

    LONGEST = 300  # seconds of the processor, for all tests of a program
    SHORT = 0.02   # seconds of the processor that a test may take to be run ahead of the others

    def __init__(self, paths, collection, fast_seconds, only, jobs, tell):
        self.fast_seconds = fast_seconds
        self.programs, self.reaching = [], collections.defaultdict(list)
        known = read_json(paths.reached, {})
        listing = "".join(f"{mutant.number} {mutant.key}\n" for mutant in collection.mutants)
        self._listing = hashlib.sha256(listing.encode()).hexdigest()
        programs = [program for program in programs_of(paths) if only is None or only.search(program.name)]
        tell(f"learning what each of {len(programs)} programs and scripts of tests reaches")
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            for program, entry in zip(programs, pool.map(lambda program: self._entry(paths, program, known), programs)):
                if known.get(program.name) != entry:
                    known[program.name] = entry
                    write_json(paths.reached, known)  # at once, as a run that was stopped is to go on where it was
                program.cpu, program.wall, program.left_out = entry["cpu"], entry["wall"], entry["left out"]
                program.long = entry["long"]
                if entry["verdict"] != "passed":
                    tell(f"{program.name} is left out: without a mutant it {entry['verdict']}")
                    continue
                for name in program.left_out:
                    tell(f"{name} is left out: slow, or it fails without a mutant")
                self.programs.append(program)
                for number in entry["reached"]:
                    self.reaching[number].append(program)

    def _entry(self, paths, program, known):
        stamp = self._listing + program.stamp()
        entry = known.get(program.name)
        if entry and entry["stamp"] == stamp:
            return entry
        if program.is_slow:
            return {"stamp": stamp, "verdict": "is slow", "cpu": 0.0, "wall": 0.0, "left out": [], "long": [], "reached": []}
        left_out, long, with_mutants = [], [], None
        with tempfile.NamedTemporaryFile(dir=paths.work) as reached, tempfile.NamedTemporaryFile(dir=paths.work) as times:
            for _ in range(2):  # a second time without the tests that the first one finds unfit
                reached.truncate(0)
                reached.truncate(1 << 20)
                longest = self.LONGEST if program.is_gtest else 10 * self.fast_seconds
                ending = run_process(program.command_without(left_out, f"--gtest_output=json:{times.name}"), program.folder,
                                     program.environment, 0, int(longest), 5 * longest, reached.name)
                with_mutants = pathlib.Path(reached.name).read_bytes()
                seconds = self._processor_seconds(program, ending, times.name)
                unfit = [*(ending.failed_tests() if program.is_gtest else ()),
                         *(name for name, time in seconds.items() if time > self.fast_seconds)]
                long = [name for name, time in seconds.items() if self.SHORT < time and name not in unfit]
                if not unfit:
                    break
                left_out += dict.fromkeys(unfit)
        verdict = {"passed": "passed", "failed": "fails"}.get(ending.verdict, "ends by " + ending.verdict)
        if ending.verdict == "passed" and not program.is_gtest and ending.cpu > self.fast_seconds:
            verdict = "is slow"
        numbers = [number for number in range(1, len(with_mutants)) if with_mutants[number]]
        return {"stamp": stamp, "verdict": verdict, "cpu": ending.cpu, "wall": ending.wall, "left out": left_out,
                "long": long, "reached": numbers}

    def _processor_seconds(self, program, ending, times):
        """How long each test of a program of GoogleTest took. Noted are times of the wall, of which the processor worked for
        this program during a part."""
        if not program.is_gtest:
            return {}
        try:
            suites = json.loads(pathlib.Path(times).read_text())["testsuites"]
        except (json.JSONDecodeError, KeyError):
            return {}
        share = min(1.0, ending.cpu / ending.wall)
        return {f"{suite['name']}.{test['name']}": float(test.get("time", "0s").rstrip("s")) * share
                for suite in suites for test in suite["testsuite"]}


def mirrored(program, mutant):
    """Whether the program lies in the folder of tests that mirrors the mutant's."""
    folder = pathlib.PurePath(mutant.file).parent.relative_to("src").as_posix() if mutant.file.startswith("src/") else ""
    return f"/tests/{folder}/" in program.command[0]


class Trial:
    """Runs mutants, each against the programs that reach it, until the first test that does not pass."""

    def __init__(self, baseline):
        self.baseline = baseline
        self.catches = collections.Counter()  # by file and program: what caught one mutant of a file catches the next

    def order(self, mutant):
        return sorted(self.baseline.reaching[mutant.number], key=lambda program: (
            not mirrored(program, mutant), -self.catches[mutant.file, program.name], program.cpu, program.name))

    def run(self, mutant):
        """Gives the mutant's result: "caught" with the test and how it ended, "survived", or "unreached"."""
        programs = self.order(mutant)
        for program in programs:
            for name, how in self.failures(program, mutant):
                self.catches[mutant.file, program.name] += 1
                return {"result": "caught", "test": name, "how": how}
        return {"result": "survived" if programs else "unreached", "tests": len(programs)}

    def failures(self, program, mutant):
        """The tests of the program that catch the mutant, and how. A test that fails among others must fail alone, too, as
        CTest runs it; and one that fails now and then catches nothing."""
        for only, left_out in program.parts():
            yield from self._failures_among(program, mutant, only, list(left_out))

    def _failures_among(self, program, mutant, only, left_out):
        while True:
            command = program.command_without(left_out, "--gtest_fail_fast", only=only)
            ending = run_process(command, program.folder, program.environment, mutant.number, *program.limits())
            if ending.verdict == "passed":
                return
            names = [name for name in ending.failed_tests() if name in program.tests][:1] if program.is_gtest else [None]
            if not names:
                yield program.name, ending.verdict
                return
            test = program.tests[names[0]]
            alone = run_process(test.command, test.folder, test.environment, mutant.number, *program.limits())
            if alone.verdict != "passed":
                yield test.name, alone.verdict
            if not program.is_gtest:
                return
            left_out += names
