# shellcheck shell=bash
# Builds through the presets of CMakePresets.json. Needs messages.sh; the working directory is the project's top.

# A compiler cache is used where there is one, unless the caller has chosen a launcher.
if [[ -z ${CMAKE_CXX_COMPILER_LAUNCHER-} ]] && command -v ccache > /dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

# build_preset <preset> [<target>...]: configures and builds, everything unless targets are named.
build_preset() {
  local preset=$1
  shift
  local targets=()
  (($# == 0)) || targets=(--target "$@")
  cmake --preset "$preset" > /dev/null ||
    fail "configuring the preset $preset failed" "read CMake's message above; a fresh start is: rm -rf build/$preset"
  cmake --build --preset "$preset" "${targets[@]}" ||
    fail "building the preset $preset failed" "read the compiler's message above; g++ 12 or newer is needed"
}
