#include "railway/Study/study/studyRangeStudy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "Performance_Variables/PVModel.h"
#include "railway/RailwayTest.h"
#include "railway/Study/study/GlobalVariables.h"
#include "support/CapturedOutput.h"

namespace {

using support::standardErrorOf;
using support::standardOutputOf;
using ::testing::ElementsAre;

struct Entry {
  std::string name;
  std::string type;
  std::string value;  // as it is printed
  void* address;
};

const std::vector<Entry>& table() {
  static const std::vector<Entry> entries{
      {"MAnetDelay", "double", "0.5", &MAnetDelay},
      {"RBCprocessingTime", "double", "1", &RBCprocessingTime},
      {"TPRUpdatePeriod", "double", "5", &TPRUpdatePeriod},
      {"TPRnetDelay", "double", "0.5", &TPRnetDelay},
      {"integrityNotConfirmedProb", "double", "0", &integrityNotConfirmedProb},
      {"lineLength", "int", "8000", &lineLength},
      {"maxTrainSpeed", "short", "80", &maxTrainSpeed},
      {"nTrains", "short", "1", &nTrains},
      {"netNotDeliveryProb", "double", "0", &netNotDeliveryProb},
      {"positionUpdatePeriod", "double", "1", &positionUpdatePeriod},
      {"safetyMargin", "int", "0", &safetyMargin},
      {"trainLength", "int", "300", &trainLength},
  };
  return entries;
}

/// All twelve variables as numbers, in the table's order.
std::vector<double> values() {
  return {MAnetDelay,
          RBCprocessingTime,
          TPRUpdatePeriod,
          TPRnetDelay,
          integrityNotConfirmedProb,
          static_cast<double>(lineLength),
          static_cast<double>(maxTrainSpeed),
          static_cast<double>(nTrains),
          netNotDeliveryProb,
          positionUpdatePeriod,
          static_cast<double>(safetyMargin),
          static_cast<double>(trainLength)};
}

const std::vector<double> kExperiment1{0.5, 1.0, 5.0, 0.5, 0.0, 8000, 80, 1, 0.0, 1.0, 0, 300};

std::string printedExperiment1() {
  std::string text = "The Global Variable values for experiment Experiment 1 are:\n";
  for (const Entry& entry : table()) {
    text += entry.name + "\t" + entry.type + "\t" + entry.value + "\n";
  }
  return text;
}

class StudyRangeStudyTest : public ::testing::Test {
 protected:
  studyRangeStudy study_;
};

TEST_F(StudyRangeStudyTest, HasTwelveVariablesAndOneExperiment) {
  EXPECT_EQ(study_.GetNumGVs(), 12U);
  EXPECT_EQ(study_.GetNumExps(), 1U);
}

TEST_F(StudyRangeStudyTest, ListsNamesAndTypesInOrder) {
  ASSERT_EQ(table().size(), study_.GetNumGVs());
  for (std::size_t i = 0; i < table().size(); ++i) {
    EXPECT_EQ(study_.GetGVName(static_cast<int>(i)), table()[i].name);
    EXPECT_EQ(study_.GetGVType(static_cast<int>(i)), table()[i].type);
  }
}

TEST_F(StudyRangeStudyTest, LeavesTheVariablesAloneUntilAskedToSetThem) {
  study_.SetGVs(0);
  study_.overrideGVs("s:nTrains:3:d:MAnetDelay:9:i:lineLength:1");
  const std::vector<double> before = values();
  const studyRangeStudy another;
  EXPECT_EQ(values(), before);
}

TEST_F(StudyRangeStudyTest, SetsTheValuesOfTheExperiment) {
  EXPECT_EQ(standardErrorOf([&] { study_.SetGVs(0); }), "");
  EXPECT_EQ(values(), kExperiment1);
}

TEST_F(StudyRangeStudyTest, ReportsAnExperimentItDoesNotHaveAndTakesTheLastOne) {
  EXPECT_EQ(
      standardErrorOf([&] { study_.SetGVs(1); }),
      "!! studyRangeStudy::SetGVs: experiment number 1 does not exist, the last of the 1 is number 0 and stands in "
      "for it.\n");
  EXPECT_EQ(values(), kExperiment1);
  EXPECT_NE(standardErrorOf([&] { study_.SetGVs(-1); }), "");
}

TEST_F(StudyRangeStudyTest, GivesTheAddressOfEachVariable) {
  EXPECT_EQ(standardErrorOf([&] {
              for (const Entry& entry : table()) {
                EXPECT_EQ(study_.GetGVValue(entry.name.c_str()), entry.address) << entry.name;
              }
            }),
            "");
}

TEST_F(StudyRangeStudyTest, ReportsALookUpOfAnUnknownNameAndGivesNull) {
  void* address = this;
  EXPECT_EQ(standardErrorOf([&] { address = study_.GetGVValue("ntrains"); }),
            "!! studyRangeStudy::GetGVValue: Global Variable ntrains does not exist.\n");
  EXPECT_EQ(address, nullptr);
}

TEST_F(StudyRangeStudyTest, OverridesEachVariableAtItsOwnType) {
  study_.SetGVs(0);
  double real = 0.125;
  std::int32_t integer = -70000;
  std::int16_t narrow = -7;
  for (const Entry& entry : table()) {
    study_.OverrideGVValue(entry.name.c_str(), entry.type == "double" ? static_cast<void*>(&real)
                                               : entry.type == "int"  ? static_cast<void*>(&integer)
                                                                      : static_cast<void*>(&narrow));
  }
  EXPECT_THAT(values(), ElementsAre(0.125, 0.125, 0.125, 0.125, 0.125, -70000, -7, -7, 0.125, 0.125, -70000, -70000));
}

TEST_F(StudyRangeStudyTest, ReportsAnOverrideOfAnUnknownNameAndChangesNothing) {
  study_.SetGVs(0);
  double value = 3.0;
  EXPECT_EQ(standardErrorOf([&] { study_.OverrideGVValue("MAnetdelay", &value); }),
            "!! studyRangeStudy::OverrideGVValue: Global Variable MAnetdelay does not exist.\n");
  EXPECT_EQ(values(), kExperiment1);
}

TEST_F(StudyRangeStudyTest, TakesAnOverrideString) {
  study_.SetGVs(0);
  study_.overrideGVs("d:TPRnetDelay:0.25:s:nTrains:3");
  EXPECT_EQ(TPRnetDelay, 0.25);
  EXPECT_EQ(nTrains, 3);
}

TEST_F(StudyRangeStudyTest, ReadsAnOverrideAtTheVariablesWidthWhateverItsLetter) {
  study_.SetGVs(0);
  study_.overrideGVs("i:nTrains:65539:s:lineLength:900:i:MAnetDelay:0");
  EXPECT_EQ(nTrains, 3);  // the low 16 bits
  EXPECT_EQ(lineLength, 900);
  EXPECT_EQ(MAnetDelay, 0.0);
}

TEST_F(StudyRangeStudyTest, PrintsTheExperimentsValues) {
  EXPECT_EQ(standardOutputOf([&] { study_.PrintGlobalValues(0); }), printedExperiment1());
}

TEST_F(StudyRangeStudyTest, PrintingAfterAnOverrideRestoresTheExperimentsValues) {
  study_.SetGVs(0);
  study_.overrideGVs("s:nTrains:3:d:MAnetDelay:9");
  EXPECT_EQ(standardOutputOf([&] { study_.PrintGlobalValues(0); }), printedExperiment1());
  EXPECT_EQ(values(), kExperiment1);
}

TEST_F(StudyRangeStudyTest, ANumberOfTrainsPrintsAsANumber) {
  // 65 is the character A; a short must not print as one.
  class WithSixtyFiveTrains : public studyRangeStudy {
   public:
    void SetGVs(int experiment) override {
      studyRangeStudy::SetGVs(experiment);
      SetGvValue(nTrains, 65);
    }
  };
  WithSixtyFiveTrains study;
  EXPECT_THAT(standardOutputOf([&] { study.PrintGlobalValues(0); }), ::testing::HasSubstr("\nnTrains\tshort\t65\n"));
}

TEST_F(StudyRangeStudyTest, SaysSoWhenThereAreNoVariables) {
  class WithoutVariables : public studyRangeStudy {
   public:
    void forgetVariables() { std::swap(NumGVs, kept_); }

   private:
    std::uint32_t kept_ = 0;
  };
  WithoutVariables study;
  study.forgetVariables();
  study.overrideGVs("s:nTrains:65");
  EXPECT_EQ(standardOutputOf([&] { study.PrintGlobalValues(0); }), "There are no global variables.\n");
  EXPECT_EQ(nTrains, 65);   // nothing was set either
  study.forgetVariables();  // the destructor counts on them
}

// ---- The one study of the process -------------------------------------------------------------------

TEST(GenerateStudyTest, GivesOneStudyUntilItIsDestructed) {
  ASSERT_EQ(GlobalStudyPtr, nullptr);
  BaseStudyClass* const study = GenerateStudy();
  EXPECT_NE(dynamic_cast<studyRangeStudy*>(study), nullptr);
  EXPECT_EQ(GenerateStudy(), study);
  EXPECT_EQ(GlobalStudyPtr, study);
  DestructStudy();
  EXPECT_EQ(GlobalStudyPtr, nullptr);
}

TEST(GenerateStudyTest, DestructingNoStudyDoesNothingAndALaterStudyIsBuilt) {
  DestructStudy();
  EXPECT_EQ(GlobalStudyPtr, nullptr);
  EXPECT_NE(GenerateStudy(), nullptr);
  DestructStudy();
}

using GetPVModelTest = support::RailwayTest;

TEST_F(GetPVModelTest, EachCallBuildsANewModelInPlaceOfTheOneBefore) {
  PVModel* const first = GenerateStudy()->GetPVModel(true);
  const int firstId = first->getId();
  EXPECT_EQ(first->Number_Of_Performance_Variables, 11);
  PVModel* const second = GenerateStudy()->GetPVModel(true);
  EXPECT_GT(second->getId(), firstId);
  EXPECT_EQ(second->Number_Of_Performance_Variables, 11);
}

TEST_F(GetPVModelTest, TheModelHasTheNumberOfTrainsOfThatMoment) {
  EXPECT_EQ(GenerateStudy()->GetPVModel(true)->getNumActions(), 10 + 2);
  setTrains(3);
  EXPECT_EQ(GenerateStudy()->GetPVModel(true)->getNumActions(), 3 * 10 + 2);
}

TEST_F(GetPVModelTest, TheArgumentDecidesHowManyTimePointsGetANode) {
  EXPECT_EQ(GenerateStudy()->GetPVModel(false)->Number_Of_Performance_Variables, 1);
  EXPECT_EQ(GenerateStudy()->GetPVModel(true)->Number_Of_Performance_Variables, 11);
}

}  // namespace
