#include "BaseClasses/ActionAffectsElement.h"

#include "gtest/gtest.h"

namespace {

TEST(ActionAffectsElementTest, ANewLinkNamesNoGroupAndEndsItsChain) {
  const ActionAffectsElement link;
  EXPECT_EQ(link.Action, nullptr);
  EXPECT_EQ(link.next, nullptr);
}

}  // namespace
