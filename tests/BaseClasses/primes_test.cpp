#include "BaseClasses/primes.h"

#include <iterator>
#include <vector>

#include "gmock/gmock.h"
#include "gtest/gtest.h"

namespace {

/// All primes up to `limit`, by the sieve of Eratosthenes.
std::vector<int> primesUpTo(int limit) {
  std::vector<bool> composite(static_cast<std::size_t>(limit) + 1);
  std::vector<int> found;
  for (int n = 2; n <= limit; ++n) {
    if (composite[static_cast<std::size_t>(n)]) {
      continue;
    }
    found.push_back(n);
    for (int multiple = n * n; multiple <= limit; multiple += n) {
      composite[static_cast<std::size_t>(multiple)] = true;
    }
  }
  return found;
}

TEST(PrimesTest, TheTableHoldsTheFirst256PrimesInOrder) {
  EXPECT_EQ(std::size(primes), 256u);
  EXPECT_EQ(primes[255], 1619);
  EXPECT_THAT(primes, testing::ElementsAreArray(primesUpTo(1619)));
}

}  // namespace
