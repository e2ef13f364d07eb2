// What libFuzzer calls: the reader of result files with any bytes whatever. It must refuse or read them, and never ask for
// more memory than a small multiple of what it was given. Built with -DQUORVA_FUZZ=ON and clang++; run for a minute:
//
//   fuzz_result_file -max_total_time=60 <folder of inputs>

#include <sanitizer/allocator_interface.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

#include "Process/ResultFile.h"

namespace {

// A row of one observation takes a node of a map, its vector and a copy, for the 15 bytes that it has in the file; a text of a
// refusal takes some hundred bytes.
constexpr std::size_t kFactor = 16;
constexpr std::size_t kForTexts = 16384;

std::size_t allocated = 0;

void countAllocation(const volatile void* /*memory*/, std::size_t size) {
  allocated += size;
}

void ignoreRelease(const volatile void* /*memory*/) {}

const int isCounting = __sanitizer_install_malloc_and_free_hooks(countAllocation, ignoreRelease);

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::byte> bytes = std::as_bytes(std::span(data, size));
  if (isCounting == 0) {
    std::abort();  // nothing would be checked
  }
  for (const bool isTerminating : {true, false}) {
    allocated = 0;
    try {
      static_cast<void>(controller::readResultFile(bytes, {99, 2, 1, isTerminating, isTerminating ? 3 : 1}));
    } catch (const controller::ResultFileError&) {
    }
    if (allocated > kFactor * size + kForTexts) {
      std::fprintf(stderr, "%zu bytes were asked for to read %zu\n", allocated, size);
      std::abort();
    }
  }
  return 0;
}
