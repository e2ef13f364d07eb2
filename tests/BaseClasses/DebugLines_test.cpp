#include "BaseClasses/DebugLines.h"

#include <iostream>
#include <string>

#include "gtest/gtest.h"
#include "support/FlushWatch.h"

namespace {

std::string debugLineAt(int globalLevel) {
  GlobalDebugLevel = globalLevel;
  testing::internal::CaptureStdout();
  support::debugLine(3, "Value is ", 42);
  std::string text = testing::internal::GetCapturedStdout();
  GlobalDebugLevel = 0;
  return text;
}

TEST(DebugLinesTest, LinesAreDormantByDefault) {
  EXPECT_EQ(GlobalDebugLevel, 0);
}

TEST(DebugLinesTest, ALineIsWrittenAboveItsLevelOnly) {
  EXPECT_EQ(debugLineAt(4), "** Value is 42\n");
  EXPECT_EQ(debugLineAt(3), "");
  EXPECT_EQ(debugLineAt(0), "");
}

TEST(DebugLinesTest, ALineIsShownAtOnceAsTheNextStepMayBeTheOneThatCrashes) {
  GlobalDebugLevel = 4;
  EXPECT_TRUE(support::isFlushedAtTheEnd(std::cout, [] { support::debugLine(3, "Value is ", 42); }));
  GlobalDebugLevel = 0;
}

}  // namespace
