"""The Debian package and `cmake --install`, and projects elsewhere that are built against either.

The environment names what is tested: QUORVA_BUILD, the build folder; QUORVA_PACKAGE, the package made in it.
"""

import concurrent.futures
import gzip
import math
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parent.parent
BUILD = pathlib.Path(os.environ["QUORVA_BUILD"]).resolve()
PACKAGE = pathlib.Path(os.environ["QUORVA_PACKAGE"]).resolve()
VERSION = re.search(r"project\(quorva VERSION ([0-9.]+)", (TOP / "CMakeLists.txt").read_text()).group(1)
MAJOR, MINOR = (int(part) for part in VERSION.split(".")[:2])
INTERNAL = {pathlib.Path("BaseClasses/WindowsHandles.h")}  # for sources alone
HEADERS = sorted({file.relative_to(TOP / "src") for file in (TOP / "src").rglob("*.h")} - INTERNAL)


def run(*command, **options):
    """The standard output of a command, which must end with status 0."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"status {done.returncode} of {command}\n{done.stdout}\n{done.stderr}")
    return done.stdout


class Scratch:
    """A scratch folder with the package unpacked below `root`, and an installation that was moved, in `moved`."""

    def __init__(self):
        self.temporary = tempfile.TemporaryDirectory(prefix="quorva-package-")
        self.folder = pathlib.Path(self.temporary.name)
        self.root = self.folder / "root"
        run("dpkg-deb", "-x", PACKAGE, self.root)
        run("cmake", "--install", BUILD, "--prefix", self.folder / "installed")
        self.moved = self.folder / "moved"
        (self.folder / "installed").rename(self.moved)

    def build(self, source, name, prefix, build_type):
        """Builds the project `source`, which finds Quorva below `prefix` alone; gives the build folder."""
        folder = self.folder / name
        run("cmake", "-S", source, "-B", folder, f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_BUILD_TYPE={build_type}",
            "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", "-DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF")
        found = re.search(r"^Quorva_DIR:PATH=(.*)$", (folder / "CMakeCache.txt").read_text(), re.MULTILINE).group(1)
        if not found.startswith(f"{prefix}/"):
            raise AssertionError(f"another Quorva was found: {found}")
        run("cmake", "--build", folder)
        return folder


class PackageCase(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = Scratch()
        cls.addClassCleanup(cls.scratch.temporary.cleanup)


def observations(file):
    """The observations of an ASCII result file, by variable."""
    found = {}
    for line in file.read_text().splitlines():
        if not line.startswith("#"):
            variable, value = line.split(",")
            found.setdefault(int(variable), []).append(float(value))
    return found


class DebianPackage(PackageCase):
    def test_says_what_it_is(self):
        fields = dict(re.findall(r"^([A-Z][\w-]+): (.*)$", run("dpkg-deb", "-f", PACKAGE), re.MULTILINE))
        self.assertEqual(fields["Package"], "quorva")
        self.assertEqual(fields["Version"], VERSION)
        self.assertEqual(fields["Architecture"], run("dpkg", "--print-architecture").strip())
        self.assertEqual(fields["Section"], "science")
        self.assertEqual(fields["Maintainer"], "Quorva developers <developers@quorva.invalid>")
        self.assertEqual(fields["Description"], "Discrete-event simulator of stochastic activity networks")

    def test_depends_on_the_libraries_that_its_executable_loads(self):
        depends = run("dpkg-deb", "-f", PACKAGE, "Depends").strip()
        self.assertRegex(depends, r"\blibc6 \(>= [0-9.]+\)")
        self.assertRegex(depends, r"\blibstdc\+\+6 \(>= [0-9.]+\)")
        needed = re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-d", self.scratch.root / "usr/bin/railway"))
        self.assertLessEqual(set(needed), {"libstdc++.so.6", "libm.so.6", "libgcc_s.so.1", "libc.so.6"})

    def test_holds_what_it_should_where_it_should(self):
        usr = self.scratch.root / "usr"
        files = {str(file.relative_to(usr)) for file in usr.rglob("*") if file.is_file()}
        library = next(name for name in files if name.endswith("/libquorva.a")).rpartition("/")[0]
        self.assertEqual({name for name in files if name.startswith("include/")},
                         {f"include/quorva/{header}" for header in HEADERS})
        self.assertEqual({name for name in files if name.startswith("lib/")}, {
            f"{library}/libquorva.a", f"{library}/libquorva_main.a",
            *(f"{library}/cmake/Quorva/{name}.cmake" for name in (
                "QuorvaConfig", "QuorvaConfigVersion", "QuorvaTargets", "QuorvaTargets-release", "QuorvaAddSimulator"))})
        self.assertEqual({name for name in files if not name.startswith(("include/", "lib/", "share/doc/"))},
                         {"bin/railway", "share/man/man1/railway.1.gz", "bin/quorva", "share/man/man1/quorva.1.gz",
                          "share/bash-completion/completions/quorva"})
        self.assertLessEqual({f"share/doc/quorva/{name}" for name in ("copyright", "changelog.gz", "README.md")}, files)
        self.assertEqual([folder.name for folder in self.scratch.root.iterdir()], ["usr"])

    def test_belongs_to_root_whoever_made_it(self):
        for line in run("dpkg-deb", "-c", PACKAGE).splitlines():
            mode, owner, _, _, _, name = line.split(maxsplit=5)
            expected = "drwxr-xr-x" if name.endswith("/") else "-rwxr-xr-x" if "/bin/" in name else "-rw-r--r--"
            self.assertEqual((mode, owner), (expected, "root/root"), name)

    def test_its_changelog_is_of_its_version(self):
        with gzip.open(self.scratch.root / "usr/share/doc/quorva/changelog.gz", "rt") as changelog:
            self.assertTrue(changelog.readline().startswith(f"quorva ({VERSION}) "))

    def test_its_railway_runs_like_that_of_the_build(self):
        runs = []
        for number, executable in enumerate((self.scratch.root / "usr/bin/railway", BUILD / "bin/railway")):
            file = self.scratch.folder / f"railway{number}.csv"
            run(executable, "-N", "50", "-a", file, "-Os:nTrains:3:d:netNotDeliveryProb:0.8")
            runs.append(file.read_bytes())
        self.assertEqual(*runs)
        self.assertIn(b"#META_DATA,BATCHES=50", runs[0])


    def test_its_quorva_runs_a_study_of_its_railway(self):
        study = self.scratch.folder / "study"
        out = run(self.scratch.root / "usr/bin/quorva", "run", self.scratch.root / "usr/bin/railway", "--set",
                  "netNotDeliveryProb=0.8", "--absolute", "-p", "0.05", "-o", study)
        self.assertEqual(out.splitlines()[-1], f"Report: {study}/report.html")
        # Of 19 reports none is answered: each has a chance of 1 in 25.
        row = next(line.split(",") for line in run(self.scratch.root / "usr/bin/quorva", "export", study).splitlines()
                   if line.startswith("0 netNotDeliveryProb=0.8,10,"))
        self.assertLess(abs(float(row[5]) - 0.96 ** 19), 0.05)


class BuildMachine(PackageCase):
    def files_that_name(self, folder, path):
        """The files in `folder` that hold the path of something in `path`, those that are compressed included."""
        def contents(file):
            return gzip.decompress(file.read_bytes()) if file.suffix == ".gz" else file.read_bytes()
        return [str(file) for file in folder.rglob("*") if file.is_file() and os.fsencode(path) + b"/" in contents(file)]

    def test_no_installed_file_names_a_folder_of_it(self):
        for folder in (self.scratch.root, self.scratch.moved):
            for path in (TOP, BUILD, self.scratch.folder):
                self.assertEqual(self.files_that_name(folder, path), [], path)

    def test_the_search_finds_one(self):
        (self.scratch.folder / "planted").mkdir()
        with gzip.open(self.scratch.folder / "planted/page.gz", "wb") as page:
            page.write(b"\0made in " + os.fsencode(TOP) + b"/src\0")
        shutil.copy(BUILD / "cmake_install.cmake", self.scratch.folder / "planted")
        self.assertEqual(len(self.files_that_name(self.scratch.folder / "planted", TOP)), 2)


class OutsideProject(PackageCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.from_package = cls.scratch.build(HERE / "outside", "lamp-release", cls.scratch.root / "usr", "Release")
        cls.from_moved = cls.scratch.build(HERE / "outside", "lamp-debug", cls.scratch.moved, "Debug")

    def result(self, folder, *options):
        file = self.scratch.folder / "lamp.csv"
        run(folder / "lamp", "-a", file, *options)
        return file

    def test_its_simulator_agrees_with_the_closed_form(self):
        rate, batches = 0.7, 40000
        simulated = observations(self.result(self.from_package, "-N", batches, f"-Od:failureRate:{rate}"))
        alive = math.exp(-rate)
        # The second moment of the time alight up to T, min(X, T): the integral of 2 t exp(-rate t) over 0 to T.
        mean = (1 - math.exp(-2 * rate)) / rate
        square = 2 * (1 - math.exp(-2 * rate) * (1 + 2 * rate)) / rate ** 2
        for variable, exact, variance in ((0, alive, alive * (1 - alive)), (1, mean, square - mean ** 2)):
            self.assertEqual(len(simulated[variable]), batches)
            error = math.sqrt(variance / batches)
            self.assertLess(abs(sum(simulated[variable]) / batches - exact), 4.5 * error, f"variable {variable}")

    def test_gives_the_same_bytes_in_either_build_type_and_place(self):
        release = self.result(self.from_package, "-N", "500").read_bytes()
        self.assertEqual(self.result(self.from_moved, "-N", "500").read_bytes(), release)

    def test_its_model_links_with_another_entry(self):
        self.assertEqual(run(self.from_package / "lamp_checks"), "enabled before 1, after 0, mark 0\n")

    def test_is_what_the_readme_shows(self):
        listing = re.search(r"```cmake\n(.*?)```", (TOP / "README.md").read_text(), re.DOTALL).group(1)
        self.assertIn(listing, (HERE / "outside/CMakeLists.txt").read_text())

    def test_is_compiled_with_what_results_depend_on(self):
        commands = (self.from_package / "compile_commands.json").read_text()
        command = re.search(r'"command": "(.*LampSAN.cpp)"', commands).group(1).split()
        self.assertIn("-ffp-contract=off", command)
        self.assertTrue({"-std=c++20", "-std=c++2a"} & set(command), command)

    def test_a_model_of_this_project_gives_the_same_bytes_there(self):
        source = self.scratch.folder / "elsewhere"
        shutil.copytree(TOP / "models/queue", source / "queue")
        (source / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(elsewhere LANGUAGES CXX)\n"
                                               "find_package(Quorva REQUIRED)\nadd_subdirectory(queue)\n")
        folder = self.scratch.build(source, "queue", self.scratch.root / "usr", "Release")
        results = []
        for executable in (folder / "queue/queue", BUILD / "bin/queue"):
            run(executable, "-N", "300", "-r", "2", "-b", self.scratch.folder / "queue.bin")
            results.append((self.scratch.folder / "queue.bin").read_bytes())
        self.assertEqual(*results)

    def test_a_call_that_names_nothing_is_refused(self):
        source = self.scratch.folder / "mistaken"
        source.mkdir()
        for call, words in (("quorva_add_simulator(lamp LampSAN.cpp)", "NAME <name> and SOURCES <file>... are needed"),
                            ("quorva_add_simulator(lamp NAME lamp SOURCES a.cpp)", "what is meant by: lamp")):
            (source / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\n"
                                                   "project(mistaken LANGUAGES CXX)\nfind_package(Quorva REQUIRED)\n" + call)
            with self.assertRaises(AssertionError) as failure:
                self.scratch.build(source, "mistaken-build", self.scratch.root / "usr", "Release")
            self.assertIn(words, re.sub(r"\s+", " ", str(failure.exception)))  # CMake breaks its lines


class Versions(PackageCase):
    ACCEPTED = ["", f"{MAJOR}", f"{MAJOR}.{MINOR}", f"{MAJOR}.0", f"{VERSION};EXACT", f"{MAJOR}.0...<{MAJOR + 1}"]
    REFUSED = [f"{MAJOR}.{MINOR + 1}", f"{MAJOR + 1}", f"{MAJOR - 1}", f"{MAJOR}.{MINOR + 1};EXACT",
               f"{MAJOR + 1}...{MAJOR + 2}", f"{MAJOR};COMPONENTS;none"]

    def test_an_earlier_one_of_the_same_first_number_is_accepted_and_no_other(self):
        source = self.scratch.folder / "versions"
        source.mkdir()
        (source / "CMakeLists.txt").write_text("""cmake_minimum_required(VERSION 3.25)
            project(versions LANGUAGES CXX)
            function(ask)
              unset(Quorva_DIR CACHE)
              find_package(Quorva ${ARGN} QUIET)
              message(STATUS "<${ARGN}> ${Quorva_FOUND}")
            endfunction()
            """ + "".join(f"ask({request})\n" for request in self.ACCEPTED + self.REFUSED))
        output = run("cmake", "-S", source, "-B", source / "build", f"-DCMAKE_PREFIX_PATH={self.scratch.root}/usr",
                     "-DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF")
        answers = dict(re.findall(r"<(.*)> (\w+)", output))
        self.assertEqual({request: answers[request] in ("1", "TRUE") for request in self.ACCEPTED + self.REFUSED},
                         {**dict.fromkeys(self.ACCEPTED, True), **dict.fromkeys(self.REFUSED, False)})


class Headers(PackageCase):
    def test_each_compiles_by_itself_without_a_warning(self):
        include = self.scratch.root / "usr/include/quorva"

        def compile_alone(header):
            command = ["c++", "-std=c++20", "-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Werror", "-fsyntax-only",
                       "-I", str(include), "-x", "c++", "-"]
            return subprocess.run(command, input=f'#include "{header}"\n#include "{header}"\n', text=True, check=False,
                                  stderr=subprocess.PIPE).stderr

        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            faults = dict(zip(HEADERS, pool.map(compile_alone, HEADERS)))
        self.assertEqual({header: fault for header, fault in faults.items() if fault}, {})
        self.assertGreater(len(HEADERS), 50)


if __name__ == "__main__":
    unittest.main()
