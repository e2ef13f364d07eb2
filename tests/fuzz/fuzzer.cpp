#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include QUORVA_FUZZ_HEADER

/// libFuzzer's entry: the check that the build names is given each input, and a difference ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string difference = fuzz::QUORVA_FUZZ_CHECK({data, size});
  if (!difference.empty()) {
    std::fprintf(stderr, "FOUND: %s\n", difference.c_str());  // scripts/fuzz looks for it
    std::abort();
  }
  return 0;
}
