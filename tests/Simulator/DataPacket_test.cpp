#include "Simulator/DataPacket.h"

#include <gtest/gtest.h>

namespace {

TEST(DataPacketTest, KeepsWhoItIsFrom) {
  DataPacket packet(7, 3, 1, 1);
  EXPECT_EQ(packet.GetClientId(), 7);
  EXPECT_EQ(packet.GetExperimentNum(), 3);
  packet.SetClientId(-1);
  packet.SetExperimentNum(70000);
  EXPECT_EQ(packet.GetClientId(), -1);
  EXPECT_EQ(packet.GetExperimentNum(), 70000);
}

TEST(DataPacketTest, StartsWithZeroCountsAndZeroObservations) {
  DataPacket packet(0, 0, 3, 4);
  for (int pv = 0; pv < 3; ++pv) {
    EXPECT_EQ(packet.GetNumObs(pv), 0);
    for (int n = 0; n < 4; ++n) {
      EXPECT_EQ(packet.GetObsArray(pv)[n], 0.0);
    }
  }
}

TEST(DataPacketTest, RowsStandOneBehindTheOtherAtTheirCapacity) {
  DataPacket packet(0, 0, 3, 4);
  EXPECT_EQ(packet.GetObsArray(1), packet.GetObsArray(0) + 4);
  EXPECT_EQ(packet.GetObsArray(2), packet.GetObsArray(0) + 8);
  packet.SetObs(1, 3, 2.5);
  EXPECT_EQ(packet.GetObsArray(1)[3], 2.5);
  EXPECT_EQ(packet.GetObsArray(0)[7], 2.5);
  EXPECT_EQ(packet.GetObsArray(2)[0], 0.0);
}

TEST(DataPacketTest, ANewCountLeavesTheObservationsOfBefore) {
  DataPacket packet(0, 0, 1, 2);
  packet.SetObs(0, 0, 1.0);
  packet.SetObs(0, 1, 2.0);
  packet.SetNumObs(0, 2);
  packet.SetObs(0, 0, 3.0);
  packet.SetNumObs(0, 1);
  EXPECT_EQ(packet.GetNumObs(0), 1);
  EXPECT_EQ(packet.GetObsArray(0)[0], 3.0);
  EXPECT_EQ(packet.GetObsArray(0)[1], 2.0);
}

TEST(DataPacketTest, MayHaveNoRowsOrNoPlaces) {
  const DataPacket withoutRows(0, 0, 0, 1000);
  DataPacket withoutPlaces(0, 0, 2, 0);
  EXPECT_EQ(withoutPlaces.GetNumObs(1), 0);
  const DataPacket negative(0, 0, -1, -1);
  EXPECT_EQ(withoutRows.GetClientId(), negative.GetClientId());
}

}  // namespace
