#include "BaseClasses/MemoryLimit.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <optional>

#include "BaseClasses/Sanitizers.h"

#ifdef __linux__
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace {

using support::parseMemoryLimit;

TEST(MemoryLimitTest, ReadsTheBytesOfAControlGroupsLimit) {
  EXPECT_EQ(parseMemoryLimit("1073741824"), std::uint64_t{1073741824});
  EXPECT_EQ(parseMemoryLimit("0\n"), std::uint64_t{0});
  EXPECT_EQ(parseMemoryLimit("9223372036854771712"), std::uint64_t{9223372036854771712U});
}

TEST(MemoryLimitTest, TakesMaxAndAnythingElseForNoLimit) {
  for (const char* const text : {"max", "max\n", "", "12 MiB", "-1", "99999999999999999999999"}) {
    EXPECT_EQ(parseMemoryLimit(text), std::nullopt) << text;
  }
}

#ifdef __linux__

TEST(MemoryLimitTest, TheMachinesMemoryIsSomeOfItsPhysicalMemory) {
  const auto physical =
      static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  const std::optional<std::uint64_t> bytes = support::machineMemoryBytes();
  ASSERT_TRUE(bytes.has_value());
  EXPECT_GT(*bytes, 0U);
  EXPECT_LE(*bytes, physical - physical / 16);
}

/// Runs in a process of its own, as the limit stays: status 0 when the limit after the call is `expected`.
[[noreturn]] void exitWithLimitAsExpected(std::uint64_t expected) {
  support::limitMemoryToMachine();
  rlimit limit{};
  const int status = getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur == expected ? 0 : 1;
  if constexpr (support::kUnderAddressSanitizer) {
    _exit(status);  // what AddressSanitizer does at an exit takes more memory than is left
  }
  std::exit(status);  // with the counters of a build that counts lines
}

TEST(MemoryLimitTest, LimitsTheAddressSpaceToTheMachinesMemory) {
  if (support::kHasShadowMemory) {
    GTEST_SKIP() << "a process under this sanitizer has no such limit";
  }
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
  if (limit.rlim_cur < *support::machineMemoryBytes()) {
    GTEST_SKIP() << "the test itself runs under a lower limit";
  }
  EXPECT_EXIT(exitWithLimitAsExpected(*support::machineMemoryBytes()), testing::ExitedWithCode(0), "");
}

TEST(MemoryLimitTest, LeavesALowerLimitAsItIs) {
  const std::uint64_t low = *support::machineMemoryBytes() / 2;
  const auto lowered = [low] {
    const rlimit limit{low, RLIM_INFINITY};
    static_cast<void>(setrlimit(RLIMIT_AS, &limit));
    exitWithLimitAsExpected(low);
  };
  EXPECT_EXIT(lowered(), testing::ExitedWithCode(0), "");
}

#endif

}  // namespace
