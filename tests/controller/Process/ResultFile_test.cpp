#include "Process/ResultFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "controller/Process/ResultFileBuilder.h"

namespace controller {
namespace {

using support::ResultFileBuilder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::ThrowsMessage;

constexpr const char* kHead =
    "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=1,SEED=99,RANDOMGEN=Mersenne "
    "Twister,BATCHES=3,,";

/// Two variables with three observations each, in two messages: 2 batches, then 1.
ResultFileBuilder wholeFile() {
  ResultFileBuilder file(kHead);
  file.messageHead(9 + 2 * 7 + 4 * 8, 2);
  file.recordHead(0, 2).value(1.5).value(-0.0);
  file.recordHead(4, 2).value(2.0).value(3.0);
  file.messageHead(9 + 2 * 7 + 2 * 8, 2);
  file.recordHead(0, 1).value(std::numeric_limits<double>::quiet_NaN());
  file.recordHead(4, 1).value(4.0);
  return file;
}

ExpectedFile threeBatches() {
  return {99, 2, 1, true, 3};
}

UnitObservations read(const std::string& bytes, const ExpectedFile& expected = threeBatches()) {
  return readResultFile(std::as_bytes(std::span(bytes)), expected);
}

void expectRefusal(const std::string& bytes, const std::string& words, const ExpectedFile& expected = threeBatches()) {
  EXPECT_THAT([&] { static_cast<void>(read(bytes, expected)); }, ThrowsMessage<ResultFileError>(HasSubstr(words)));
}

TEST(ResultFileTest, ObservationsComeByVariableInTheOrderOfTheirBatches) {
  const UnitObservations unit = read(wholeFile().bytes());
  EXPECT_EQ(unit.simulatorVersion, "Version 2.5");
  ASSERT_EQ(unit.variables.size(), 2U);
  EXPECT_EQ(unit.variables[0].variable, 0);
  ASSERT_EQ(unit.variables[0].values.size(), 3U);
  EXPECT_EQ(unit.variables[0].values[0], 1.5);
  EXPECT_TRUE(std::signbit(unit.variables[0].values[1]));
  EXPECT_TRUE(std::isnan(unit.variables[0].values[2]));
  EXPECT_EQ(unit.variables[1].variable, 4);
  EXPECT_THAT(unit.variables[1].values, ElementsAre(2.0, 3.0, 4.0));
}

TEST(ResultFileTest, AFileThatIsCutAnywhereIsRefused) {
  const std::string whole = wholeFile().bytes();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_THROW(static_cast<void>(read(whole.substr(0, length))), ResultFileError) << length;
  }
}

TEST(ResultFileTest, AFileWithMoreBehindItIsRefused) {
  expectRefusal(wholeFile().bytes() + '\0', "cut off in the head of the message at byte 350");  // 256 + 55 + 39
}

TEST(ResultFileTest, TheHeadMustBeThatOfTheRun) {
  const std::string whole = wholeFile().bytes();
  expectRefusal(whole, "SEED=98", {98, 2, 1, true, 3});
  expectRefusal(whole, "Tausworthe", {99, 1, 1, true, 3});
  expectRefusal(whole, "EXPERIMENTS=0", {99, 2, 0, true, 3});
  expectRefusal(whole, "BATCHES=4", {99, 2, 1, true, 4});
  expectRefusal("rubbish" + whole.substr(7), "does not begin with the head");
  std::string dirty = whole;
  dirty[255] = 'x';
  expectRefusal(dirty, "does not begin with the head");
}

TEST(ResultFileTest, AMessageThatAnnouncesMoreThanThereIsIsRefusedWithoutRoomForIt) {
  ResultFileBuilder file(kHead);
  file.messageHead(0x7fffffff, 1).recordHead(0, 0x7fffffff).value(1.0);
  expectRefusal(file.bytes(), "announces 2147483647 bytes, and 24 are left");
  ResultFileBuilder record(kHead);
  record.messageHead(9 + 7 + 8, 1).recordHead(0, 0xffffffff).value(1.0);
  expectRefusal(record.bytes(), "announces 4294967295 observations, and its message has room for 1");
}

TEST(ResultFileTest, AMessageMustEndWhereItsRecordsDo) {
  ResultFileBuilder file(kHead);
  file.messageHead(9 + 7 + 16, 1).recordHead(0, 1).value(1.0).value(2.0);
  expectRefusal(file.bytes(), "ends at byte 288, and its records at byte 280");
  ResultFileBuilder shortOne(kHead);
  shortOne.messageHead(8, 0);
  expectRefusal(shortOne.bytes(), "announces 8 bytes");
}

TEST(ResultFileTest, AnotherKindOfRecordIsRefused) {
  ResultFileBuilder file(kHead);
  file.messageHead(9 + 7 + 8, 1).number(0, 2).number(2, 1).number(1, 4).value(1.0);
  expectRefusal(file.bytes(), "of variable 0, kind 2, with 1 observations");
}

TEST(ResultFileTest, AMessageOfAnotherRunIsRefused) {
  ResultFileBuilder file(kHead);
  file.number(9, 4).number(3, 1).number(1, 2).number(0, 2);
  expectRefusal(file.bytes(), "of client 3 and experiment 1");
}

TEST(ResultFileTest, ATerminatingRunHasAsManyObservationsAsBatches) {
  ResultFileBuilder file(kHead);
  file.messageHead(9 + 7 + 8, 1).recordHead(0, 1).value(1.0);
  expectRefusal(file.bytes(), "1 observations of variable 0, and 3 batches were asked for");
  expectRefusal(ResultFileBuilder(kHead).bytes(), "holds no observation");
}

TEST(ResultFileTest, ASteadyStateRunMayHaveMoreAndDoesNotCountInItsHead) {
  ResultFileBuilder file(
      "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=1,SEED=99,RANDOMGEN=Mersenne "
      "Twister,BATCHES=0,,");
  file.messageHead(9 + 2 * 7 + 3 * 8, 2).recordHead(2, 1).value(1.0).recordHead(3, 2).value(2.0).value(3.0);
  const UnitObservations unit = read(file.bytes(), {99, 2, 1, false, 1});
  EXPECT_THAT(unit.variables[1].values, ElementsAre(2.0, 3.0));
  expectRefusal(file.bytes(), "1 observations of variable 2, and 2 batches", {99, 2, 1, false, 2});
}

}  // namespace
}  // namespace controller
