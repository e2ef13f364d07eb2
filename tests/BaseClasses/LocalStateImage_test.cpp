#include "BaseClasses/LocalStateImage.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <type_traits>
#include <vector>

#include "support/CapturedOutput.h"
#include "support/FlushWatch.h"

namespace {

static_assert(std::is_abstract_v<State>);
static_assert(!std::is_copy_constructible_v<LocalStateImage>);

/// Bytes of the test's own, without a model.
class TestImage : public LocalStateImage {
 public:
  explicit TestImage(const std::vector<unsigned char>& bytes)
      : LocalStateImage(static_cast<std::int32_t>(bytes.size())) {
    if (!bytes.empty()) {
      std::memcpy(GetStatePtr(), bytes.data(), bytes.size());
    }
  }

  [[nodiscard]] std::vector<unsigned char> bytes(std::size_t count) {
    const auto* const first = static_cast<const unsigned char*>(GetStatePtr());
    return {first, first + count};
  }

 protected:
  void SetState(const BaseModelClass* /*model*/) override {}
  void GetState(const BaseModelClass* /*model*/) override {}
};

/// The prime at position `index`, by trial division.
std::int64_t primeAt(int index) {
  std::int64_t candidate = 1;
  for (int found = -1; found < index;) {
    ++candidate;
    bool isPrime = true;
    for (std::int64_t divisor = 2; divisor * divisor <= candidate; ++divisor) {
      isPrime = isPrime && candidate % divisor != 0;
    }
    found += isPrime ? 1 : 0;
  }
  return candidate;
}

TEST(LocalStateImageTest, TheHashTakesBytesAsSignedNumbers) {
  EXPECT_EQ(TestImage({1, 255}).hash(), 2 - 3);
  EXPECT_EQ(TestImage({128}).hash(), -256);
  EXPECT_EQ(TestImage({0, 0, 2}).hash(), 10);
}

TEST(LocalStateImageTest, TheHashOfNoBytesIsZero) {
  EXPECT_EQ(TestImage({}).hash(), 0);
}

TEST(LocalStateImageTest, ThePrimesOfTheHashStartAnewAfter256Bytes) {
  std::vector<unsigned char> bytes(258, 0);
  bytes[255] = 1;
  EXPECT_EQ(TestImage(bytes).hash(), 1619);
  bytes[255] = 0;
  bytes[256] = 1;
  EXPECT_EQ(TestImage(bytes).hash(), 2);
  bytes[257] = 1;
  EXPECT_EQ(TestImage(bytes).hash(), 5);
}

TEST(LocalStateImageTest, TheHashWrapsAroundIn32Bits) {
  std::int64_t sumOfPrimes = 0;
  for (int i = 0; i < 256; ++i) {
    sumOfPrimes += primeAt(i);
  }
  constexpr int kRounds = 200;
  const std::int64_t sum = -128 * sumOfPrimes * kRounds;  // far below the smallest 32-bit number
  ASSERT_LT(sum, std::int64_t{INT32_MIN} * 2);
  const auto wrapped = static_cast<std::int32_t>(static_cast<std::uint32_t>(sum & 0xffffffff));
  EXPECT_EQ(TestImage(std::vector<unsigned char>(std::size_t{256} * kRounds, 128)).hash(), wrapped);
}

TEST(LocalStateImageTest, ComparingIsOverTheBytesOfTheFirst) {
  TestImage image({1, 2, 3});
  EXPECT_EQ(image.compare(image), 0);
  EXPECT_EQ(image.compare(TestImage({1, 2, 3})), 0);
  EXPECT_LT(image.compare(TestImage({1, 2, 4})), 0);
  EXPECT_GT(image.compare(TestImage({1, 1, 9})), 0);
  EXPECT_LT(image.compare(TestImage({1, 200, 3})), 0) << "bytes are compared without a sign";
  EXPECT_EQ(image.compare(TestImage({1, 2, 3, 4})), 0) << "the other's size is not looked at";
}

TEST(LocalStateImageTest, PrintShowsSignedNumbersFivePlacesWide) {
  TestImage image({0, 7, 255, 128, 127});
  EXPECT_EQ(support::standardOutputOf([&] { image.print(); }), "    0    7   -1 -128  127\n");
  TestImage empty({});
  EXPECT_EQ(support::standardOutputOf([&] { empty.print(); }), "\n");
  EXPECT_TRUE(support::isFlushedAtTheEnd(std::cout, [&] { image.print(); }));
}

TEST(LocalStateImageTest, AssignmentCopiesTheBytes) {
  TestImage image({1, 2});
  TestImage other({3, 4});
  State& target = image;
  const State& result = (target = static_cast<const State&>(other));
  EXPECT_EQ(&result, &image);
  EXPECT_EQ(image.bytes(2), (std::vector<unsigned char>{3, 4}));
  EXPECT_NE(image.GetStatePtr(), other.GetStatePtr());
}

TEST(LocalStateImageTest, AssignmentBetweenTwoImagesCopiesTheBytesToo) {
  TestImage image({1, 2});
  TestImage other({3, 4});
  image = other;
  EXPECT_EQ(image.bytes(2), (std::vector<unsigned char>{3, 4}));
  EXPECT_NE(image.GetStatePtr(), other.GetStatePtr());
}

TEST(LocalStateImageTest, AssignmentToItselfKeepsTheBytes) {
  TestImage image({1, 2});
  State& same = image;
  same = static_cast<const State&>(image);
  EXPECT_EQ(image.bytes(2), (std::vector<unsigned char>{1, 2}));
}

TEST(LocalStateImageTest, AssignmentOfAnotherSizeFailsAnAssertion) {
  TestImage image({1, 2});
  State& target = image;
  const TestImage other({1, 2, 3});
  EXPECT_EXIT(target = static_cast<const State&>(other), testing::KilledBySignal(SIGABRT),
              "Assertion failed: size == _localS->size, file LocalStateImage.cpp, line [0-9]+");
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File temporaryFile() {
  File file(std::tmpfile());
  EXPECT_NE(file, nullptr);
  return file;
}

TEST(LocalStateImageTest, TheFileHoldsTheSizeInFourBytesAndThenTheBytes) {
  TestImage image({9, 8, 7});
  const File file = temporaryFile();
  EXPECT_EQ(image.fwriteState(file.get()), 0);
  std::rewind(file.get());
  std::array<unsigned char, 16> written{};
  ASSERT_EQ(std::fread(written.data(), 1, written.size(), file.get()), 7U);
  std::int32_t size = 0;
  std::memcpy(&size, written.data(), sizeof size);
  EXPECT_EQ(size, 3);
  EXPECT_EQ(written[4], 9);
  EXPECT_EQ(written[5], 8);
  EXPECT_EQ(written[6], 7);
}

TEST(LocalStateImageTest, AFileIsReadIntoTheSameBuffer) {
  TestImage image({9, 8, 7});
  const File file = temporaryFile();
  ASSERT_EQ(image.fwriteState(file.get()), 0);
  std::rewind(file.get());
  TestImage other({0, 0, 0});
  const void* const buffer = other.GetStatePtr();
  EXPECT_EQ(other.freadState(file.get()), 0);
  EXPECT_EQ(other.GetStatePtr(), buffer);
  EXPECT_EQ(other.bytes(3), (std::vector<unsigned char>{9, 8, 7}));
}

TEST(LocalStateImageTest, NoBytesAreWrittenAndReadWithoutAFailure) {
  TestImage empty({});
  const File file = temporaryFile();
  EXPECT_EQ(empty.fwriteState(file.get()), 0);
  std::rewind(file.get());
  EXPECT_EQ(empty.freadState(file.get()), 0);
}

TEST(LocalStateImageTest, AFileThatEndsEarlyIsAFailure) {
  const File file = temporaryFile();
  const std::int32_t size = 3;
  ASSERT_EQ(std::fwrite(&size, sizeof size, 1, file.get()), 1U);
  ASSERT_EQ(std::fwrite("ab", 1, 2, file.get()), 2U);
  std::rewind(file.get());
  TestImage image({0, 0, 0});
  EXPECT_NE(image.freadState(file.get()), 0);
  const File nothing = temporaryFile();
  EXPECT_NE(image.freadState(nothing.get()), 0);
}

TEST(LocalStateImageTest, AFileOfAnotherSizeIsAFailureAndLeavesTheBytes) {
  for (const std::vector<unsigned char>& stored :
       {std::vector<unsigned char>(2, 9), std::vector<unsigned char>(400, 9)}) {
    TestImage source(stored);
    const File file = temporaryFile();
    ASSERT_EQ(source.fwriteState(file.get()), 0);
    std::rewind(file.get());
    TestImage image({1, 2, 3});
    EXPECT_NE(image.freadState(file.get()), 0);
    EXPECT_EQ(image.bytes(3), (std::vector<unsigned char>{1, 2, 3}));
    EXPECT_EQ(image.compare(TestImage({1, 2, 3})), 0);
  }
}

TEST(LocalStateImageTest, AFileThatTakesNothingIsAFailure) {
  TestImage image({1, 2, 3});
  const File readOnly(std::fopen("/dev/null", "rb"));
  ASSERT_NE(readOnly, nullptr);
  EXPECT_NE(image.fwriteState(readOnly.get()), 0);
}

}  // namespace
