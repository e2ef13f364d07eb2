#include "Study/PrimitiveType.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

#include "Study/StudyWithVariables.h"

namespace {

using support::StudyWithVariables;

template <typename Wrapper>
concept CallersMaySet = requires(Wrapper& variable) {
  variable.Set({});
};

template <typename Wrapper, typename Value>
constexpr bool kReadableOnly =
    std::is_convertible_v<const Wrapper&, Value>&& std::is_base_of_v<PrimitiveType<Value>, Wrapper> &&
    !std::is_copy_constructible_v<Wrapper> && !std::is_copy_assignable_v<Wrapper> && !CallersMaySet<Wrapper>;

TEST(PrimitiveTypeTest, HoldsZeroUntilAStudyWritesIt) {
  EXPECT_EQ(std::int16_t{Short{}}, 0);
  EXPECT_EQ(std::int32_t{Int{}}, 0);
  EXPECT_EQ(std::int32_t{Long{}}, 0);
  EXPECT_EQ(float{Float{}}, 0.0F);
  EXPECT_EQ(double{Double{}}, 0.0);
  EXPECT_EQ(bool{Bool{}}, false);
  EXPECT_EQ(char{Char{}}, '\0');
}

TEST(PrimitiveTypeTest, IsReadByAnyoneAndNeitherCopiedNorWrittenByOthersThanAStudy) {
  EXPECT_TRUE((kReadableOnly<Short, std::int16_t>));
  EXPECT_TRUE((kReadableOnly<Int, std::int32_t>));
  EXPECT_TRUE((kReadableOnly<Long, std::int32_t>));
  EXPECT_TRUE((kReadableOnly<Float, float>));
  EXPECT_TRUE((kReadableOnly<Double, double>));
  EXPECT_TRUE((kReadableOnly<Bool, bool>));
  EXPECT_TRUE((kReadableOnly<Char, char>));
}

TEST(PrimitiveTypeTest, AddsNothingToTheValueItHolds) {
  EXPECT_EQ(sizeof(Short), 2U);
  EXPECT_EQ(sizeof(Int), 4U);
  EXPECT_EQ(sizeof(Long), 4U);
  EXPECT_EQ(sizeof(Float), 4U);
  EXPECT_EQ(sizeof(Double), 8U);
  EXPECT_EQ(sizeof(Bool), sizeof(bool));
  EXPECT_EQ(sizeof(Char), 1U);
}

TEST(PrimitiveTypeTest, AStudyWritesEachTypeThroughItsOverload) {
  StudyWithVariables study;
  study.SetGvValue(study.shortVariable, std::int16_t{-32768});
  study.SetGvValue(study.intVariable, 2147483647);
  study.SetGvValue(study.longVariable, -2147483647);
  study.SetGvValue(study.floatVariable, 0.1F);
  study.SetGvValue(study.doubleVariable, 0.1);
  study.SetGvValue(study.boolVariable, true);
  study.SetGvValue(study.charVariable, 'q');
  EXPECT_EQ(study.shortVariable, -32768);
  EXPECT_EQ(study.intVariable, 2147483647);
  EXPECT_EQ(study.longVariable, -2147483647);
  EXPECT_EQ(study.floatVariable, 0.1F);
  EXPECT_EQ(study.doubleVariable, 0.1);
  EXPECT_TRUE(study.boolVariable);
  EXPECT_EQ(study.charVariable, 'q');
}

TEST(PrimitiveTypeTest, TakesPartInArithmeticAsItsValue) {
  StudyWithVariables study;
  study.SetGvValue(study.doubleVariable, 0.25);
  study.SetGvValue(study.shortVariable, std::int16_t{3});
  EXPECT_EQ(1 - study.doubleVariable, 0.75);
  EXPECT_EQ(study.shortVariable - 1, 2);
  EXPECT_TRUE(study.shortVariable < 4);
}

}  // namespace
