#include "BaseClasses/Assertions.h"

#include <csignal>
#include <fstream>
#include <iostream>

#include "gmock/gmock.h"
#include "gtest/gtest.h"
#include "support/TemporaryFile.h"

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

/// Progress that nobody has flushed is in the file of standard output all the same.
TEST(AssertionsTest, WhatWasWrittenBeforeIsNotLost) {
  const support::TemporaryFile output("assertions");
  const auto writeAndFail = [&output](void (*fail)()) {
    std::ofstream file(output.name());
    std::cout.rdbuf(file.rdbuf());
    std::cout << "progress\n";
    fail();
  };
  EXPECT_EXIT(writeAndFail([] { support::require(false, "x"); }), KilledBySignal(SIGABRT), "");
  EXPECT_EQ(output.bytes(), "progress\n");
  EXPECT_EXIT(writeAndFail([] { support::requireRuntime(false, "x"); }), KilledBySignal(SIGABRT), "");
  EXPECT_EQ(output.bytes(), "progress\n");
}

TEST(AssertionsTest, ATrueConditionGoesOnSilently) {
  testing::internal::CaptureStderr();
  support::require(true, "BaseGroupClass");
  support::requireRuntime(true, "VarIndex != -1");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
