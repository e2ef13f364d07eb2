#include "fuzz/Checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "fuzz/Bytes.h"
#include "support/TemporaryFile.h"

namespace {

using Check = std::string (*)(fuzz::Input);

struct Checked {
  const char* corpus;
  Check check;
};

std::vector<std::uint8_t> bytesOfText(const std::string& text) {
  return {text.begin(), text.end()};
}

class FuzzChecks : public testing::TestWithParam<Checked> {
 protected:
  /// The kept inputs, by name.
  static std::vector<std::filesystem::path> corpus() {
    std::vector<std::filesystem::path> files;
    for (const auto& file : std::filesystem::directory_iterator(std::string(QUORVA_CORPUS "/") + GetParam().corpus)) {
      files.push_back(file.path());
    }
    std::ranges::sort(files);
    return files;
  }
};

TEST_P(FuzzChecks, findNothingInTheKeptInputs) {
  const auto files = corpus();
  EXPECT_GE(files.size(), 3U);
  for (const auto& file : files) {
    EXPECT_EQ(GetParam().check(bytesOfText(support::bytesOf(file.string()))), "") << file.filename();
  }
}

TEST_P(FuzzChecks, findNothingInKeptInputsWithBytesChanged) {
  const auto files = corpus();
  for (std::uint64_t seed = 0; seed < 150; ++seed) {
    std::vector<std::uint8_t> input = bytesOfText(support::bytesOf(files[seed % files.size()].string()));
    fuzz::SplitMix random(seed);
    for (int change = 0; change < 3 && !input.empty(); ++change) {
      input[random.next() % input.size()] = static_cast<std::uint8_t>(random.next());
    }
    EXPECT_EQ(GetParam().check(input), "") << "seed " << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(Inputs, FuzzChecks,
                         testing::Values(Checked{"command-line", fuzz::checkCommandLine},
                                         Checked{"overrides", fuzz::checkOverrides},
                                         Checked{"signals", fuzz::checkSignals},
                                         Checked{"random-models", fuzz::checkRandomModel}),
                         [](const auto& info) {
                           std::string name = info.param.corpus;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

}  // namespace
