# shellcheck shell=bash
# Installs through apt-get what a script needs and the machine lacks; a machine that has it all is left alone.
# Needs messages.sh.

missing_packages=()

# need_command <command> <package>: the package is wanted unless the command is there already, from wherever.
need_command() {
  command -v "$1" > /dev/null || missing_packages+=("$2")
}

# need_header <header> <package>: likewise for a library, known by one of its headers.
need_header() {
  [[ -e /usr/include/$1 || -e /usr/local/include/$1 ]] || missing_packages+=("$2")
}

# need_to_build: the compiler and the build tools.
need_to_build() {
  need_command g++ g++
  need_command cmake cmake
  need_command ninja ninja-build
}

# need_to_build_controller: what the controlling program quorva takes on top of that. MPI is left out where it is missing.
need_to_build_controller() {
  need_to_build
  need_header CLI/CLI.hpp libcli11-dev
  need_header fmt/core.h libfmt-dev
  need_header nlohmann/json.hpp nlohmann-json3-dev
  need_header sqlite3.h libsqlite3-dev
  need_header boost/version.hpp libboost-dev
}

# need_to_test: what building and running the tests takes on top of that.
need_to_test() {
  need_to_build_controller
  need_command mpicxx libopenmpi-dev
  need_command mpirun openmpi-bin
  need_command python3 python3
  need_command xmllint libxml2-utils
  need_command groff groff-base
  need_header gtest/gtest.h libgtest-dev
  need_header gmock/gmock.h libgmock-dev
  need_header benchmark/benchmark.h libbenchmark-dev
}

# need_to_package: what making and checking the Debian package takes on top of building.
need_to_package() {
  need_to_build_controller
  need_command python3 python3
  need_command dpkg-shlibdeps dpkg-dev
  need_command file file
  need_command make make
}

# need_to_count_instructions: what running the workloads under callgrind takes on top of building and testing.
need_to_count_instructions() {
  need_to_test
  need_command valgrind valgrind
}

# need_to_count_coverage: what reading the counters of a build that counts takes on top of building and testing.
need_to_count_coverage() {
  need_to_test
  need_command gcovr gcovr
}

# need_to_fuzz: clang++ with libFuzzer on top of what testing takes. A clang++ without its runtime has the command alone.
need_to_fuzz() {
  need_to_test
  need_command clang++ clang
  compgen -G '/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-*.a' > /dev/null ||
    missing_packages+=(libclang-rt-dev)
}

# Wine without its wrappers, which would want the 32-bit one too.
wine=/usr/lib/wine/wine64
wine_server=/usr/lib/wine/wineserver64

# need_windows: what building for Windows and running the result takes on top of building.
need_windows() {
  need_command x86_64-w64-mingw32-g++-posix g++-mingw-w64-x86-64-posix
  [[ -x $wine ]] || missing_packages+=(wine64)
  [[ -d /usr/src/googletest/googletest ]] || missing_packages+=(googletest)
  need_command python3 python3
}

# install_missing: installs what the calls above found missing. Needs root, or sudo.
install_missing() {
  ((${#missing_packages[@]} > 0)) || return 0
  local install="apt-get install ${missing_packages[*]}"
  command -v apt-get > /dev/null ||
    fail "these are missing and there is no apt-get: ${missing_packages[*]}" "install them with your own package manager"
  local as_root=()
  if ((EUID != 0)); then
    command -v sudo > /dev/null || fail "installing packages needs root, and there is no sudo" "run as root: $install"
    as_root=(sudo)
  fi
  heading "Installing ${missing_packages[*]}"
  "${as_root[@]}" apt-get update -qq ||
    fail "apt-get update failed" "check the network and /etc/apt/sources.list, or run as root: $install"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -qq -y --no-install-recommends "${missing_packages[@]}" > /dev/null ||
    fail "apt-get could not install: ${missing_packages[*]}" "read its message above, or run as root: $install"
  missing_packages=()
}
