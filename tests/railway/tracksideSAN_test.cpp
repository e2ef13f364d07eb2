#include "railway/Atomic/trackside/tracksideSAN.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "railway/RailwayTest.h"

namespace {

using support::affectedLeaves;
using support::ArcRow;
using support::enablingLeaves;
using support::firingOf;
using support::leafNames;
using support::Marking;
using support::markingOf;
using support::RailwayTest;
using support::variablesOf;
using ::testing::ElementsAre;

class TracksideTest : public RailwayTest {
 protected:
  tracksideSAN& makeTrackside(int trains = 1) {
    setTrains(trains);
    trackside_ = std::make_unique<tracksideSAN>();
    return *trackside_;
  }

  /// A trackside that processes a report, with the timestamps of the stored reports, one for each train. The reports
  /// tell positions 100, 200 and so on.
  tracksideSAN& makeProcessing(const std::vector<int>& timestamps) {
    tracksideSAN& trackside = makeTrackside(static_cast<int>(timestamps.size()));
    trackside.idle->Mark() = 0;
    trackside.msgIn->Mark() = 1;
    for (std::size_t i = 0; i < timestamps.size(); ++i) {
      tprMsg& report = *trackside.TPRmessages->Index(static_cast<int>(i));
      report.timestamp->Mark() = timestamps[i];
      report.position->Mark() = 100 * (static_cast<int>(i) + 1);
    }
    BaseModelClass::LastActionTime = 30.0;
    return trackside;
  }

  /// The train whose report is processed: the one that gets an authority.
  static int trainAnswered(tracksideSAN& trackside) {
    trackside.RBCprocessing.Fire();
    for (int train = 0; train < trackside.MAmessages->getSize(); ++train) {
      if (trackside.MAmessages->Index(train)->timestamp->Mark() != 0) {
        return train;
      }
    }
    return -1;
  }

 private:
  std::unique_ptr<tracksideSAN> trackside_;
};

using TracksideDeathTest = TracksideTest;

// ---- What the model consists of ---------------------------------------------------------------------

TEST_F(TracksideTest, ListsItsVariablesInOrder) {
  tracksideSAN& trackside = makeTrackside();
  std::vector<std::string> names;
  for (BaseStateVariableClass* variable : variablesOf(trackside)) {
    names.emplace_back(variable->getFullyQualifiedName());
  }
  EXPECT_THAT(names, ElementsAre("TPRtoRBC", "MAtoRBC", "idle", "msgIn", "TPRmessages", "trackStatusAreasHeads",
                                 "trackStatusAreasTails", "MAmessages"));
  EXPECT_STREQ(trackside.getName(), "trackside");
  EXPECT_EQ(trackside.getNumReadOnlyPlaces(), 0);
}

TEST_F(TracksideTest, StartsFromItsInitialMarking) {
  Marking expected{{"TPRtoRBC", 0}, {"MAtoRBC", 0}, {"idle", 1}, {"msgIn", 0}};
  for (const std::string train : {"0", "1", "2"}) {
    expected["TPRmessages." + train + ".timestamp"] = 0;
    expected["TPRmessages." + train + ".position"] = 0;
    expected["TPRmessages." + train + ".speed"] = 0;
    expected["TPRmessages." + train + ".integrityConfirmed"] = 0;
    expected["trackStatusAreasHeads." + train] = train == "0" ? 8000 : 0;
    expected["trackStatusAreasTails." + train] = 0;
    expected["MAmessages." + train + ".timestamp"] = 0;
    expected["MAmessages." + train + ".EoA"] = 0;
  }
  EXPECT_EQ(markingOf(makeTrackside(3)), expected);
}

TEST_F(TracksideTest, ListsItsActivitiesAndGroupsInOrder) {
  tracksideSAN& trackside = makeTrackside();
  ASSERT_EQ(trackside.getNumActions(), 2);
  EXPECT_EQ(trackside.getActionList()[0], &trackside.evaluateOlderTPR);
  EXPECT_EQ(trackside.getActionList()[1], &trackside.RBCprocessing);
  ASSERT_EQ(trackside.getNumGroups(), 2);
  EXPECT_EQ(trackside.getGroupList()[0], &trackside.RBCprocessing);
  EXPECT_EQ(trackside.getGroupList()[1], &trackside.evaluateOlderTPR);
  EXPECT_EQ(trackside.ImmediateGroup.getNumMembers(), 0);
  EXPECT_EQ(trackside.evaluateOlderTPRGroup.getNumMembers(), 0);
}

TEST_F(TracksideTest, NumbersActivitiesFirstAndGroupsBehindThem) {
  tracksideSAN& trackside = makeTrackside();
  const int first = trackside.evaluateOlderTPR.getID();
  EXPECT_EQ(trackside.RBCprocessing.getID(), first + 1);
  EXPECT_EQ(trackside.ImmediateGroup.getID(), first + 2);
  EXPECT_EQ(trackside.evaluateOlderTPRGroup.getID(), first + 3);
}

TEST_F(TracksideTest, EachActivityHasItsSettings) {
  tracksideSAN& trackside = makeTrackside();
  const auto expectSettings = [](Activity& activity, const char* name, int groupId, Distribution distribution) {
    EXPECT_STREQ(activity.ActionName, name);
    EXPECT_EQ(activity.getGroupId(), groupId);
    EXPECT_EQ(activity.DistributionType, distribution);
    EXPECT_EQ(activity.ExecutionPolicy, RaceEnabled);
    EXPECT_FALSE(activity.Reactivation);
    EXPECT_FALSE(activity.ReactivationPredicate());
    EXPECT_FALSE(activity.ReactivationFunction());
    EXPECT_EQ(activity.Rank(), 1);
    EXPECT_EQ(activity.Rate(), 0.0);
    EXPECT_EQ(activity.Weight(), 1.0);
  };
  expectSettings(trackside.evaluateOlderTPR, "evaluateOlderTPR", 1, Instantaneous);
  expectSettings(trackside.RBCprocessing, "RBCprocessing", 0, Deterministic);
}

TEST_F(TracksideTest, ArcsAreThoseOfTheTables) {
  tracksideSAN& t = makeTrackside(3);
  const std::vector<ArcRow> affecting{
      {&t.evaluateOlderTPR, {t.TPRtoRBC, t.idle, t.msgIn}},
      {&t.RBCprocessing,
       {t.msgIn, t.MAtoRBC, t.idle, t.TPRmessages, t.trackStatusAreasHeads, t.trackStatusAreasTails, t.MAmessages}}};
  const std::vector<ArcRow> enabling{{&t.evaluateOlderTPR, {t.TPRtoRBC, t.idle}}, {&t.RBCprocessing, {t.msgIn}}};
  for (const ArcRow& row : affecting) {
    EXPECT_EQ(affectedLeaves(*row.first), leafNames(row)) << row.first->ActionName;
  }
  for (const ArcRow& row : enabling) {
    EXPECT_EQ(enablingLeaves(*row.first), leafNames(row)) << row.first->ActionName;
  }
  EXPECT_EQ(affecting[0].second.size() + affecting[1].second.size(), 10U);
  EXPECT_EQ(enabling[0].second.size() + enabling[1].second.size(), 3U);
}

// ---- Enabling and delays ----------------------------------------------------------------------------

TEST_F(TracksideTest, AReportIsTakenUpWhenTheControllerIsIdle) {
  tracksideSAN& trackside = makeTrackside();
  for (const short reports : std::initializer_list<short>{0, 1, 2}) {
    for (const short idle : std::initializer_list<short>{0, 1}) {
      trackside.TPRtoRBC->Mark() = reports;
      trackside.idle->Mark() = idle;
      EXPECT_EQ(trackside.evaluateOlderTPR.Enabled(), reports > 0 && idle == 1);
    }
  }
}

TEST_F(TracksideTest, ProcessingTakesItsTime) {
  tracksideSAN& trackside = makeTrackside();
  EXPECT_FALSE(trackside.RBCprocessing.Enabled());
  trackside.msgIn->Mark() = 1;
  EXPECT_TRUE(trackside.RBCprocessing.Enabled());
  EXPECT_EQ(trackside.RBCprocessing.SampleDistribution(), 1.0);
  setParameters("d:RBCprocessingTime:2.5");
  EXPECT_EQ(trackside.RBCprocessing.SampleDistribution(), 2.5);
  EXPECT_EQ(trackside.RBCprocessing.ReturnDistributionParameters()[0], 2.5);
  EXPECT_EQ(trackside.evaluateOlderTPR.SampleDistribution(), 0.0);
  EXPECT_EQ(trackside.evaluateOlderTPR.ReturnDistributionParameters(), nullptr);
}

// ---- Firings ----------------------------------------------------------------------------------------

TEST_F(TracksideTest, TakingUpAReportMakesTheControllerBusy) {
  tracksideSAN& trackside = makeTrackside();
  trackside.TPRtoRBC->Mark() = 2;
  EXPECT_EQ(firingOf(trackside, trackside.evaluateOlderTPR), (Marking{{"TPRtoRBC", 1}, {"idle", 0}, {"msgIn", 1}}));
  EXPECT_FALSE(trackside.evaluateOlderTPR.Enabled());
}

TEST_F(TracksideTest, AReportWithoutIntegrityIsAnsweredWithItsOwnPosition) {
  tracksideSAN& trackside = makeProcessing({0, 20, 0});
  BaseModelClass::LastActionTime = 21.9;
  EXPECT_EQ(firingOf(trackside, trackside.RBCprocessing), (Marking{{"msgIn", 0},
                                                                   {"TPRmessages.1.timestamp", 0},
                                                                   {"trackStatusAreasHeads.1", 200},
                                                                   {"MAmessages.1.timestamp", 21},
                                                                   {"MAmessages.1.EoA", 200},
                                                                   {"MAtoRBC", 1},
                                                                   {"idle", 1}}));
}

TEST_F(TracksideTest, AReportWithIntegrityAlsoSetsItsTailAndTheNextTrainsHead) {
  tracksideSAN& trackside = makeProcessing({0, 20, 0});
  setParameters("i:safetyMargin:25");
  trackside.TPRmessages->Index(1)->integrityConfirmed->Mark() = 1;
  EXPECT_EQ(firingOf(trackside, trackside.RBCprocessing), (Marking{{"msgIn", 0},
                                                                   {"TPRmessages.1.timestamp", 0},
                                                                   {"trackStatusAreasHeads.1", 200},
                                                                   {"trackStatusAreasTails.1", 500},
                                                                   {"trackStatusAreasHeads.2", 525},
                                                                   {"MAmessages.1.timestamp", 30},
                                                                   {"MAmessages.1.EoA", 200},
                                                                   {"MAtoRBC", 1},
                                                                   {"idle", 1}}));
}

TEST_F(TracksideTest, OnlyTheValueOneConfirmsIntegrity) {
  tracksideSAN& trackside = makeProcessing({20});
  trackside.TPRmessages->Index(0)->integrityConfirmed->Mark() = 2;
  trackside.RBCprocessing.Fire();
  EXPECT_EQ(trackside.trackStatusAreasTails->Index(0)->Mark(), 0);
}

TEST_F(TracksideTest, TheFirstTrainsAreaLosesTheEndOfTheLineAtItsFirstReport) {
  tracksideSAN& trackside = makeProcessing({20});
  ASSERT_EQ(trackside.trackStatusAreasHeads->Index(0)->Mark(), 8000);
  trackside.RBCprocessing.Fire();
  EXPECT_EQ(trackside.trackStatusAreasHeads->Index(0)->Mark(), 100);
  EXPECT_EQ(trackside.MAmessages->Index(0)->EoA->Mark(), 100);
}

TEST_F(TracksideTest, TheLastTrainHasNoAreaBehindIt) {
  tracksideSAN& trackside = makeProcessing({0, 0, 20});
  trackside.TPRmessages->Index(2)->integrityConfirmed->Mark() = 1;
  trackside.RBCprocessing.Fire();
  EXPECT_EQ(trackside.trackStatusAreasTails->Index(2)->Mark(), 600);
  EXPECT_EQ(trackside.trackStatusAreasHeads->Index(0)->Mark(), 8000);
  EXPECT_EQ(trackside.trackStatusAreasHeads->Index(1)->Mark(), 0);
}

TEST_F(TracksideTest, TheEndOfTheLineCapsTheNextTrainsHeadAndNoTail) {
  tracksideSAN& trackside = makeProcessing({20, 0});
  trackside.TPRmessages->Index(0)->integrityConfirmed->Mark() = 1;
  trackside.TPRmessages->Index(0)->position->Mark() = 7701;
  trackside.RBCprocessing.Fire();
  EXPECT_EQ(trackside.trackStatusAreasTails->Index(0)->Mark(), 8001);
  EXPECT_EQ(trackside.trackStatusAreasHeads->Index(1)->Mark(), 8000);
}

TEST_F(TracksideTest, TheNextTrainsHeadMayReachTheEndOfTheLine) {
  tracksideSAN& trackside = makeProcessing({20, 0});
  trackside.TPRmessages->Index(0)->integrityConfirmed->Mark() = 1;
  trackside.TPRmessages->Index(0)->position->Mark() = 7699;
  trackside.RBCprocessing.Fire();
  EXPECT_EQ(trackside.trackStatusAreasHeads->Index(1)->Mark(), 7999);
}

TEST_F(TracksideTest, TheOldestReportIsProcessed) {
  EXPECT_EQ(trainAnswered(makeProcessing({5, 3, 4})), 1);
  EXPECT_EQ(trainAnswered(makeProcessing({3, 5, 4})), 0);
  EXPECT_EQ(trainAnswered(makeProcessing({5, 4, 3})), 2);
}

TEST_F(TracksideTest, OfEquallyOldReportsTheLowerIdentityIsProcessed) {
  EXPECT_EQ(trainAnswered(makeProcessing({3, 3, 3})), 0);
  EXPECT_EQ(trainAnswered(makeProcessing({5, 3, 3})), 1);
}

TEST_F(TracksideTest, ATimestampOfZeroIsNoReport) {
  EXPECT_EQ(trainAnswered(makeProcessing({4, 0, 0})), 0);
  EXPECT_EQ(trainAnswered(makeProcessing({0, 4, 0})), 1);
  EXPECT_EQ(trainAnswered(makeProcessing({0, 0, 4})), 2);
  EXPECT_EQ(trainAnswered(makeProcessing({0, 5, 4})), 2);
}

TEST_F(TracksideTest, ATokenWithoutReportAnswersTheLastTrainFromItsStaleFields) {
  tracksideSAN& trackside = makeProcessing({0, 0, 0});
  trackside.TPRmessages->Index(2)->integrityConfirmed->Mark() = 1;
  EXPECT_EQ(firingOf(trackside, trackside.RBCprocessing), (Marking{{"msgIn", 0},
                                                                   {"trackStatusAreasHeads.2", 300},
                                                                   {"trackStatusAreasTails.2", 600},
                                                                   {"MAmessages.2.timestamp", 30},
                                                                   {"MAmessages.2.EoA", 300},
                                                                   {"MAtoRBC", 1},
                                                                   {"idle", 1}}));
}

TEST_F(TracksideTest, OneTrainIsAnsweredEvenWithoutAReport) {
  EXPECT_EQ(trainAnswered(makeProcessing({0})), 0);
}

TEST_F(TracksideTest, AnAnswerBeforeTimeOneHasTimestampZero) {
  tracksideSAN& trackside = makeProcessing({0});
  BaseModelClass::LastActionTime = 0.99;
  trackside.RBCprocessing.Fire();
  EXPECT_EQ(trackside.MAmessages->Index(0)->timestamp->Mark(), 0);
  EXPECT_EQ(trackside.MAmessages->Index(0)->EoA->Mark(), 100);
  EXPECT_EQ(trackside.MAtoRBC->Mark(), 1);
}

TEST_F(TracksideTest, SumsOfExtremeLengthsWrapAround) {
  tracksideSAN& trackside = makeProcessing({20, 0});
  setParameters("i:trainLength:0x7fffffff:i:safetyMargin:1");
  trackside.TPRmessages->Index(0)->integrityConfirmed->Mark() = 1;
  trackside.RBCprocessing.Fire();
  EXPECT_EQ(trackside.trackStatusAreasTails->Index(0)->Mark(), -2147483647 + 98);  // 100 + (2^31 - 1) - 2^32
  EXPECT_EQ(trackside.trackStatusAreasHeads->Index(1)->Mark(), -2147483647 + 99);
}

TEST_F(TracksideDeathTest, WithoutTrainsThereIsNoTrackside) {
  setTrains(0);
  EXPECT_DEATH(tracksideSAN(),
               "Runtime error: index out of bounds. "
               "trackStatusAreasHeads\\[0..18446744073709551615\\] indexed with 0\n");
}

}  // namespace
