#include "BaseClasses/Assertions.h"

#include <csignal>
#include <iostream>

#include "gmock/gmock.h"
#include "gtest/gtest.h"

namespace {

using testing::Eq;
using testing::KilledBySignal;

TEST(AssertionsTest, RequireNamesFileAndLineAndAborts) {
  EXPECT_EXIT(support::require(false, "BaseGroupClass", 12), KilledBySignal(SIGABRT),
              Eq("!! Assertion failed in file BaseGroupClass, line 12\n"));
}

TEST(AssertionsTest, RequireRuntimeNamesExpressionFileWithoutFoldersAndLineAndAborts) {
  EXPECT_EXIT(support::requireRuntime(false, "VarIndex != -1", "a/b\\Here.cpp", 7), KilledBySignal(SIGABRT),
              Eq("Assertion failed: VarIndex != -1, file Here.cpp, line 7\n"));
}

TEST(AssertionsTest, TheCallersPlaceIsTheDefault) {
  EXPECT_EXIT(support::requireRuntime(false, "x"), KilledBySignal(SIGABRT),
              testing::MatchesRegex("Assertion failed: x, file Assertions_test\\.cpp, line [0-9]+\n"));
}

TEST(AssertionsTest, ATrueConditionGoesOnSilently) {
  testing::internal::CaptureStderr();
  support::require(true, "BaseGroupClass");
  support::requireRuntime(true, "VarIndex != -1");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
