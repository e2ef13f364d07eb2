#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "railway/Atomic/train/intArrayOfTrains.h"
#include "railway/Atomic/train/maMsg.h"
#include "railway/Atomic/train/maMsgOfTrains.h"
#include "railway/Atomic/train/shortArrayOfTrains.h"
#include "railway/Atomic/train/tprMsg.h"
#include "railway/Atomic/train/tprMsgArrayOfTrains.h"
#include "railway/RailwayTest.h"

namespace {

using support::leavesOf;
using support::RailwayTest;
using support::valueOf;
using ::testing::ElementsAre;

std::vector<std::string> qualifiedNames(BaseStateVariableClass& variable) {
  std::vector<std::string> names;
  for (BaseStateVariableClass* leaf : leavesOf(&variable)) {
    names.emplace_back(leaf->getFullyQualifiedName());
  }
  return names;
}

std::vector<int> valuesOf(BaseStateVariableClass& variable) {
  std::vector<int> values;
  for (BaseStateVariableClass* leaf : leavesOf(&variable)) {
    values.push_back(valueOf(leaf));
  }
  return values;
}

// ---- Messages ---------------------------------------------------------------------------------------

TEST(RailwayMessageTest, RecordsHaveTheWidthsOfTheirFields) {
  EXPECT_EQ(sizeof(tprMsg_state), 12U);
  EXPECT_EQ(offsetof(tprMsg_state, position), 4U);
  EXPECT_EQ(offsetof(tprMsg_state, speed), 8U);
  EXPECT_EQ(offsetof(tprMsg_state, integrityConfirmed), 10U);
  EXPECT_EQ(sizeof(maMsg_state), 8U);
  EXPECT_EQ(offsetof(maMsg_state, EoA), 4U);
}

TEST(RailwayMessageTest, AReportHasFourFieldsUnderItsName) {
  tprMsg message("TPRmsg");
  EXPECT_THAT(qualifiedNames(message),
              ElementsAre("TPRmsg.timestamp", "TPRmsg.position", "TPRmsg.speed", "TPRmsg.integrityConfirmed"));
  EXPECT_THAT(valuesOf(message), ElementsAre(0, 0, 0, 0));
  EXPECT_EQ(message.getSize(), 4);
  EXPECT_EQ(message.getType(0), ArrayType_INT);
  EXPECT_EQ(message.getType(1), ArrayType_INT);
  EXPECT_EQ(message.getType(2), ArrayType_SHORT);
  EXPECT_EQ(message.getType(3), ArrayType_SHORT);
}

TEST(RailwayMessageTest, AnAuthorityHasTwoFieldsUnderItsName) {
  maMsg message("MA");
  EXPECT_THAT(qualifiedNames(message), ElementsAre("MA.timestamp", "MA.EoA"));
  EXPECT_THAT(valuesOf(message), ElementsAre(0, 0));
  EXPECT_EQ(message.getType(0), ArrayType_INT);
  EXPECT_EQ(message.getType(1), ArrayType_INT);
}

TEST(RailwayMessageTest, AParentQualifiesTheFields) {
  tprMsg report("2", "TPRmessages");
  EXPECT_STREQ(report.getFullyQualifiedName(), "TPRmessages.2");
  EXPECT_EQ(qualifiedNames(report).front(), "TPRmessages.2.timestamp");
  maMsg authority("0", "MAmessages");
  EXPECT_EQ(qualifiedNames(authority).back(), "MAmessages.0.EoA");
}

TEST(RailwayMessageTest, ARecordGivesTheInitialValues) {
  tprMsg report("r", tprMsg_state{.timestamp = 70000, .position = -5, .speed = 80, .integrityConfirmed = 1});
  EXPECT_THAT(valuesOf(report), ElementsAre(70000, -5, 80, 1));
  tprMsg nested("r", "p", tprMsg_state{.timestamp = 1, .position = 2, .speed = 3, .integrityConfirmed = 4});
  EXPECT_THAT(valuesOf(nested), ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(qualifiedNames(nested).front(), "p.r.timestamp");
  maMsg authority("a", maMsg_state{.timestamp = 9, .EoA = 8000});
  EXPECT_THAT(valuesOf(authority), ElementsAre(9, 8000));
  maMsg nestedAuthority("a", "p", maMsg_state{.timestamp = 10, .EoA = 11});
  EXPECT_THAT(valuesOf(nestedAuthority), ElementsAre(10, 11));
}

TEST(RailwayMessageTest, ThePublicPointersAreTheFields) {
  tprMsg report("r");
  report.timestamp->Mark() = 1;
  report.position->Mark() = 2;
  report.speed->Mark() = 3;
  report.integrityConfirmed->Mark() = 4;
  EXPECT_THAT(valuesOf(report), ElementsAre(1, 2, 3, 4));
  maMsg authority("a");
  authority.timestamp->Mark() = 5;
  authority.EoA->Mark() = 6;
  EXPECT_THAT(valuesOf(authority), ElementsAre(5, 6));
}

TEST(RailwayMessageTest, TheImageIsTheFieldsInOrder) {
  tprMsg report("r", tprMsg_state{.timestamp = 7, .position = -1, .speed = 80, .integrityConfirmed = 1});
  std::array<std::byte, sizeof(tprMsg_state)> image{};
  ASSERT_EQ(report.StateSize(), static_cast<int>(image.size()));
  report.CurrentState(image.data());
  tprMsg_state record;
  std::memcpy(&record, image.data(), image.size());
  EXPECT_EQ(record.timestamp, 7);
  EXPECT_EQ(record.position, -1);
  EXPECT_EQ(record.speed, 80);
  EXPECT_EQ(record.integrityConfirmed, 1);
}

// ---- Arrays -----------------------------------------------------------------------------------------

using ArrayOfTrainsTest = RailwayTest;

TEST_F(ArrayOfTrainsTest, HasAnElementForEachTrainOfThatMoment) {
  setTrains(3);
  shortArrayOfTrains three("arrivalTime");
  setTrains(5);
  intArrayOfTrains five("trainMAs");
  EXPECT_EQ(three.getSize(), 3);
  EXPECT_EQ(five.getSize(), 5);
}

TEST_F(ArrayOfTrainsTest, ElementsAreNamedByTheirIndex) {
  setTrains(3);
  intArrayOfTrains positions("trainMAs");
  EXPECT_THAT(qualifiedNames(positions), ElementsAre("trainMAs.0", "trainMAs.1", "trainMAs.2"));
  EXPECT_STREQ(positions.Index(2)->getName(), "2");
  maMsgOfTrains authorities("MAmessages");
  EXPECT_THAT(qualifiedNames(authorities),
              ElementsAre("MAmessages.0.timestamp", "MAmessages.0.EoA", "MAmessages.1.timestamp", "MAmessages.1.EoA",
                          "MAmessages.2.timestamp", "MAmessages.2.EoA"));
  tprMsgArrayOfTrains reports("TPRmessages");
  EXPECT_STREQ(reports.Index(2)->timestamp->getFullyQualifiedName(), "TPRmessages.2.timestamp");
}

TEST_F(ArrayOfTrainsTest, AParentQualifiesTheElements) {
  shortArrayOfTrains speeds("speeds", "fleet");
  EXPECT_STREQ(speeds.getFullyQualifiedName(), "fleet.speeds");
  EXPECT_THAT(qualifiedNames(speeds), ElementsAre("fleet.speeds.0"));
}

TEST_F(ArrayOfTrainsTest, EachKindKnowsItsElements) {
  setTrains(3);
  shortArrayOfTrains shorts("s");
  intArrayOfTrains ints("i");
  tprMsgArrayOfTrains reports("r");
  maMsgOfTrains authorities("a");
  EXPECT_EQ(shorts.getType(), ArrayType_SHORT);
  EXPECT_EQ(ints.getType(), ArrayType_INT);
  EXPECT_EQ(reports.getType(), ArrayType_STRUCT);
  EXPECT_EQ(authorities.getType(), ArrayType_STRUCT);
  EXPECT_EQ(shorts.StateSize(), 3 * 2);
  EXPECT_EQ(ints.StateSize(), 3 * 4);
  EXPECT_EQ(reports.StateSize(), 3 * 12);
  EXPECT_EQ(authorities.StateSize(), 3 * 8);
}

TEST_F(ArrayOfTrainsTest, ElementsStartFromZeroFromOneValueOrFromOneEach) {
  setTrains(3);
  const short one = 7;
  const std::array<int, 3> each{10, -20, 30};
  const maMsg_state record{.timestamp = 1, .EoA = 2};
  const std::array<tprMsg_state, 3> records{tprMsg_state{.timestamp = 1}, tprMsg_state{.position = 2},
                                            tprMsg_state{.integrityConfirmed = 3}};
  shortArrayOfTrains zeros("z");
  shortArrayOfTrains sevens("s", one);
  shortArrayOfTrains nestedSevens("s", "p", one);
  intArrayOfTrains different("d", each.data());
  intArrayOfTrains nestedDifferent("d", "p", each.data());
  maMsgOfTrains authorities("a", record);
  tprMsgArrayOfTrains reports("r", records.data());
  EXPECT_THAT(valuesOf(zeros), ElementsAre(0, 0, 0));
  EXPECT_THAT(valuesOf(sevens), ElementsAre(7, 7, 7));
  EXPECT_THAT(valuesOf(nestedSevens), ElementsAre(7, 7, 7));
  EXPECT_THAT(valuesOf(different), ElementsAre(10, -20, 30));
  EXPECT_THAT(valuesOf(nestedDifferent), ElementsAre(10, -20, 30));
  EXPECT_THAT(valuesOf(authorities), ElementsAre(1, 2, 1, 2, 1, 2));
  EXPECT_THAT(valuesOf(reports), ElementsAre(1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 3));
  EXPECT_EQ(qualifiedNames(nestedDifferent).back(), "p.d.2");
}

using ArrayOfTrainsDeathTest = RailwayTest;

TEST_F(ArrayOfTrainsDeathTest, AnIdentityOutsideTheArrayEndsTheRun) {
  setTrains(2);
  intArrayOfTrains positions("trainHeadPositions");
  EXPECT_DEATH(static_cast<void>(positions.Index(2)),
               "Runtime error: index out of bounds. trainHeadPositions\\[0..1\\] indexed with 2\n");
  EXPECT_DEATH(static_cast<void>(positions.Index(-1)),
               "Runtime error: index out of bounds. trainHeadPositions\\[0..1\\] indexed with -1\n");
}

}  // namespace
