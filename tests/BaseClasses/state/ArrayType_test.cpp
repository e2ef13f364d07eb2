#include "BaseClasses/state/ArrayType.h"

#include <gtest/gtest.h>

namespace {

TEST(ArrayTypeTest, TheKindsHaveTheNumbersThatModelsAreGeneratedWith) {
  EXPECT_EQ(static_cast<int>(ArrayType_SHORT), 0);
  EXPECT_EQ(static_cast<int>(ArrayType_INT), 1);
  EXPECT_EQ(static_cast<int>(ArrayType_CHAR), 2);
  EXPECT_EQ(static_cast<int>(ArrayType_DOUBLE), 3);
  EXPECT_EQ(static_cast<int>(ArrayType_FLOAT), 4);
  EXPECT_EQ(static_cast<int>(ArrayType_ARRAY), 5);
  EXPECT_EQ(static_cast<int>(ArrayType_STRUCT), 6);
  EXPECT_EQ(static_cast<int>(ArrayType_UNORDERED), 7);
  EXPECT_EQ(static_cast<int>(ArrayType_EMPTY), 8);
}

TEST(ArrayTypeTest, AScalarKindFixesItsBytesAndTheOthersLeaveThemToTheElement) {
  EXPECT_EQ(support::scalarImageSize(ArrayType_SHORT), 2);
  EXPECT_EQ(support::scalarImageSize(ArrayType_INT), 4);
  EXPECT_EQ(support::scalarImageSize(ArrayType_CHAR), 1);
  EXPECT_EQ(support::scalarImageSize(ArrayType_DOUBLE), 8);
  EXPECT_EQ(support::scalarImageSize(ArrayType_FLOAT), 4);
  for (const ArrayType type : {ArrayType_ARRAY, ArrayType_STRUCT, ArrayType_UNORDERED, ArrayType_EMPTY}) {
    EXPECT_EQ(support::scalarImageSize(type), 0) << type;
  }
}

}  // namespace
