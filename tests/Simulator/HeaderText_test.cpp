#include "Simulator/HeaderText.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

using support::headerText;

/// Everything before the first zero byte, after a check that nothing but zero bytes follows.
std::string textOf(const std::string& header) {
  const auto end = header.find('\0');
  if (end == std::string::npos) {
    return header;
  }
  EXPECT_EQ(header.find_first_not_of('\0', end), std::string::npos);
  return header.substr(0, end);
}

TEST(HeaderTextTest, AddsTheEntriesACommaAndZeroBytes) {
  const std::vector<std::string> entries = {",a=1", ",b=2,"};
  const std::string header = headerText("head", entries, 20);
  EXPECT_EQ(header.size(), 20U);
  EXPECT_EQ(textOf(header), "head,a=1,b=2,,");
}

TEST(HeaderTextTest, LeavesOutAnEntryThatDoesNotFitAndAllBehindIt) {
  const std::vector<std::string> entries = {",long=123456", ",b=2"};
  const std::string header = headerText("head", entries, 16);  // 4 + 12 is not below 16
  EXPECT_EQ(header.size(), 16U);
  EXPECT_EQ(textOf(header), "head,");
}

TEST(HeaderTextTest, AnEntryFitsWhenItEndsBeforeTheLastByte) {
  const std::vector<std::string> entries = {",long=12345"};
  EXPECT_EQ(textOf(headerText("head", entries, 16)), "head,long=12345,");  // 4 + 11 = 15, and the comma is the 16th
}

TEST(HeaderTextTest, ATextAsLongAsTheHeaderTakesNoEntryAndNoComma) {
  const std::vector<std::string> entries = {""};
  EXPECT_EQ(headerText("0123456789", entries, 10), "0123456789");
}

TEST(HeaderTextTest, ATextLongerThanTheHeaderIsCut) {
  EXPECT_EQ(headerText("0123456789abc", {}, 10), "0123456789");
}

TEST(HeaderTextTest, ATextOneShorterThanTheHeaderEndsInTheComma) {
  EXPECT_EQ(headerText("012345678", {}, 10), "012345678,");
}

TEST(HeaderTextTest, ALongExperimentNumberPushesTheLaterEntriesOut) {
  // The header of the result file with a number of 165 digits: 66 + 165 = 231 characters, and an entry of 16 for the
  // seed brings it to 247. The generator's 27 do not fit any more, so that the batches are left out with it.
  const std::string fixed =
      "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=" + std::string(161, '9');
  ASSERT_EQ(fixed.size(), 231U);
  const std::vector<std::string> entries = {",SEED=1234567890", ",RANDOMGEN=Lagged Fibonacci", ",BATCHES=5,"};
  const std::string header = headerText(fixed, entries, 256);
  EXPECT_EQ(header.size(), 256U);
  EXPECT_EQ(textOf(header), fixed + ",SEED=1234567890,");
}

}  // namespace
