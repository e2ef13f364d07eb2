#include "Store/ObservationBlob.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace controller {
namespace {

void expectSameBits(const std::vector<double>& values, std::size_t bytes) {
  const auto packed = packObservations(values);
  EXPECT_EQ(packed.size(), bytes);
  const auto back = unpackObservations(packed, values.size());
  ASSERT_EQ(back.size(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(back[i]), std::bit_cast<std::uint64_t>(values[i])) << i;
  }
}

TEST(ObservationBlobTest, EveryBitComesBackWhateverTheForm) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  expectSameBits({}, 9);                           // nothing
  expectSameBits({0.1, 0.1, 0.1}, 9 + 8);          // all the same
  expectSameBits({kNaN, kNaN}, 9 + 8);             // NaN is itself by its bits
  expectSameBits({0.0, 1.0, 255.0, 17.0}, 9 + 4);  // small integers
  expectSameBits({0.0, -0.0}, 9 + 16);             // a zero with a sign is no small integer
  expectSameBits({0.0, 256.0}, 9 + 16);            // too large for a byte
  expectSameBits({1.5, -2.0, kInfinity, -kInfinity, kNaN, 5e-324}, 9 + 48);
}

TEST(ObservationBlobTest, DamagedBytesAreRefused) {
  auto whole = packObservations(std::vector<double>{1.5, 2.5});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_THROW(static_cast<void>(unpackObservations(std::span(whole).first(length), kGreatestCount)),
                 std::runtime_error)
        << length;
  }
  auto form = whole;
  form[0] = std::byte{3};
  EXPECT_THROW(static_cast<void>(unpackObservations(form, kGreatestCount)), std::runtime_error);
  auto count = whole;
  count[8] = std::byte{0xff};
  EXPECT_THROW(static_cast<void>(unpackObservations(count, kGreatestCount)), std::runtime_error);
}

TEST(ObservationBlobTest, MoreObservationsThanThereMayBeAreRefusedInEachForm) {
  for (const auto& values : {std::vector{0.5, 1.5, 2.5}, std::vector{2.0, 2.0, 2.0}, std::vector{1.0, 2.0, 3.0}}) {
    const auto packed = packObservations(values);
    EXPECT_EQ(unpackObservations(packed, 3), values);
    EXPECT_THROW(static_cast<void>(unpackObservations(packed, 2)), std::runtime_error);
  }
}

TEST(ObservationBlobTest, AConstantThatAnnouncesMoreThanAFileCouldHoldIsRefused) {
  auto constant = packObservations(std::vector<double>{2.0, 2.0});
  constant[5] = std::byte{1};  // 2^32 observations and two
  EXPECT_THROW(static_cast<void>(unpackObservations(constant, kGreatestCount)), std::runtime_error);
}

}  // namespace
}  // namespace controller
