#include "fuzz/KeptInputs.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>

#include "fuzz/SplitMix.h"

namespace fuzz {

namespace {

std::vector<std::uint8_t> bytesOf(const std::filesystem::path& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

std::vector<std::filesystem::path> FuzzChecks::corpus() {
  std::vector<std::filesystem::path> files;
  for (const auto& file : std::filesystem::directory_iterator(std::string(QUORVA_CORPUS "/") + GetParam().corpus)) {
    files.push_back(file.path());
  }
  std::ranges::sort(files);
  return files;
}

std::string testNameOf(const testing::TestParamInfo<Checked>& info) {
  std::string name = info.param.corpus;
  std::ranges::replace(name, '-', '_');
  return name;
}

TEST_P(FuzzChecks, findNothingInTheKeptInputs) {
  const auto files = corpus();
  EXPECT_GE(files.size(), 3U);
  for (const auto& file : files) {
    EXPECT_EQ(GetParam().check(bytesOf(file)), "") << file.filename();
  }
}

TEST_P(FuzzChecks, findNothingInKeptInputsWithBytesChanged) {
  const auto files = corpus();
  for (std::uint64_t seed = 0; seed < 150; ++seed) {
    std::vector<std::uint8_t> input = bytesOf(files[seed % files.size()]);
    SplitMix random(seed);
    for (int change = 0; change < 3 && !input.empty(); ++change) {
      input[random.next() % input.size()] = static_cast<std::uint8_t>(random.next());
    }
    EXPECT_EQ(GetParam().check(input), "") << "seed " << seed;
  }
}

}  // namespace fuzz
