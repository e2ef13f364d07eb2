#include "BaseClasses/OwnedText.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(OwnedTextTest, ACopyHasAnAddressOfItsOwnAndNullHasNone) {
  const char text[] = "name";
  char* const copy = support::copyOfText(text);
  EXPECT_NE(copy, text);
  EXPECT_STREQ(copy, "name");
  delete[] copy;
  EXPECT_EQ(support::copyOfText(nullptr), nullptr);
}

TEST(OwnedTextTest, ACopyForAStudysListsIsReleasedByFree) {
  char* const copy = support::mallocCopyOfText("name");
  EXPECT_STREQ(copy, "name");
  std::free(copy);
}

TEST(OwnedTextTest, AReplacementMayBeAPartOfTheOldTextOrNone) {
  char* owned = support::copyOfText("train.position");
  support::replaceText(owned, owned + 6);
  EXPECT_STREQ(owned, "position");
  support::replaceText(owned, nullptr);
  EXPECT_EQ(owned, nullptr);
}

}  // namespace
