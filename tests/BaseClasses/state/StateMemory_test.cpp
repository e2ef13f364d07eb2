#include "BaseClasses/state/StateMemory.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <limits>

namespace {

template <typename T>
class StateMemoryTest : public testing::Test {};

using ImageTypes = testing::Types<bool, char, double, float, int, short>;
TYPED_TEST_SUITE(StateMemoryTest, ImageTypes);

TYPED_TEST(StateMemoryTest, AValueComesBackFromAnUnalignedPlaceAndItsNeighboursStay) {
  using T = TypeParam;
  std::array<unsigned char, 2 + sizeof(T)> image{};
  image.fill(0xA5);
  writeMemory<T>(std::numeric_limits<T>::max(), &image[1]);
  EXPECT_EQ(image.front(), 0xA5);
  EXPECT_EQ(image.back(), 0xA5);
  T value{};
  readMemory2<T>(&image[1], &value);
  EXPECT_EQ(value, std::numeric_limits<T>::max());
}

TEST(StateMemoryOrderTest, BytesStandInTheMachinesOwnOrder) {
  std::array<unsigned char, 4> image{};
  writeMemory<int>(0x01020304, image.data());
  EXPECT_EQ(std::bit_cast<std::uint32_t>(image), 0x01020304U);
}

TEST(StateMemoryBoolTest, AnyNonZeroByteReadsAsTrue) {
  const unsigned char byte = 0xFF;
  bool value = false;
  readMemory2<bool>(&byte, &value);
  EXPECT_TRUE(value);
}

}  // namespace
