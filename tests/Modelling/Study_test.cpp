#include "Modelling/Study.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "Modelling/Modelling.h"
#include "support/CapturedOutput.h"

namespace {

using namespace modelling;
using support::standardErrorOf;
using support::standardOutputOf;
using ::testing::ExitedWithCode;

Parameter<Short> shortOne{"shortOne"};
Parameter<Int> intOne{"intOne"};
Parameter<Long> longOne{"longOne"};
Parameter<Float> floatOne{"floatOne"};
Parameter<Double> doubleOne{"doubleOne"};
Parameter<Bool> boolOne{"boolOne"};
Parameter<Char> charOne{"charOne"};

class Counter : public AtomicModel {
 public:
  Counter() : AtomicModel("counter"), count(*this, "count", shortOne) {
    activity("tick").deterministic(doubleOne).fires({count}, [this] { ++count.Mark(); });
  }
  Variable<Place> count;
};

void measure(RewardModel& rewards) {
  rewards.model<Counter>();
  rewards.instantOfTime("count", doubleOne).rate("counter", [](Counter& counter) { return counter.count.Mark(); });
}

Study makeStudy() {
  return Study("counters",
               Experiments(shortOne, intOne, longOne, floatOne, doubleOne, boolOne, charOne)
                   .row(1, 2, 3, 0.5F, 0.25, true, 'a')
                   .row(-7, 80000, -3, 1.5F, 1e300, false, 'z'),
               measure);
}

TEST(KitStudyTest, TheTableGivesNamesTypesAndExperiments) {
  Study study = makeStudy();
  ASSERT_EQ(study.GetNumGVs(), 7U);
  EXPECT_EQ(study.GetNumExps(), 2U);
  const char* const types[] = {"short", "int", "long", "float", "double", "bool", "char"};
  for (int i = 0; i < 7; ++i) {
    EXPECT_STREQ(study.GetGVType(i), types[i]);
  }
  EXPECT_STREQ(study.GetGVName(1), "intOne");
}

TEST(KitStudyTest, AnExperimentWritesItsRow) {
  Study study = makeStudy();
  study.SetGVs(1);
  EXPECT_EQ(shortOne, -7);
  EXPECT_EQ(intOne, 80000);
  EXPECT_EQ(longOne, -3);
  EXPECT_EQ(floatOne, 1.5F);
  EXPECT_EQ(doubleOne, 1e300);
  EXPECT_FALSE(boolOne);
  EXPECT_EQ(charOne, 'z');
  study.SetGVs(0);
  EXPECT_EQ(shortOne, 1);
  EXPECT_TRUE(boolOne);
}

TEST(KitStudyTest, OverridesReachEveryType) {
  Study study = makeStudy();
  study.SetGVs(0);
  EXPECT_EQ(
      standardOutputOf([&] {
        study.overrideGVs("s:shortOne:5:i:intOne:-6:l:longOne:7:f:floatOne:2.5:d:doubleOne:4:b:boolOne:0:c:charOne:q");
      }),
      "");
  EXPECT_EQ(shortOne, 5);
  EXPECT_EQ(intOne, -6);
  EXPECT_EQ(longOne, 7);
  EXPECT_EQ(floatOne, 2.5F);
  EXPECT_EQ(doubleOne, 4.0);
  EXPECT_FALSE(boolOne);
  EXPECT_EQ(charOne, 'q');
}

TEST(KitStudyTest, AnUnknownNameIsReportedAndChangesNothing) {
  Study study = makeStudy();
  study.SetGVs(0);
  EXPECT_EQ(standardErrorOf([&] { study.overrideGVs("d:speed:1"); }), "counters: there is no global variable speed\n");
  EXPECT_EQ(standardErrorOf([&] { EXPECT_EQ(study.GetGVValue("speed"), nullptr); }),
            "counters: there is no global variable speed\n");
  EXPECT_EQ(study.GetGVValue("doubleOne"), static_cast<Double*>(&doubleOne));
  EXPECT_EQ(doubleOne, 0.25);
}

TEST(KitStudyTest, TheValuesOfAnExperimentArePrinted) {
  Study study = makeStudy();
  EXPECT_EQ(standardOutputOf([&] { study.PrintGlobalValues(0); }),
            "The Global Variable values for experiment Experiment 1 are:\n"
            "shortOne\tshort\t1\nintOne\tint\t2\nlongOne\tlong\t3\nfloatOne\tfloat\t0.5\ndoubleOne\tdouble\t0.25\n"
            "boolOne\tbool\t1\ncharOne\tchar\ta\n");
}

TEST(KitStudyTest, TheModelIsBuiltFromTheValuesOfTheMoment) {
  Study study = makeStudy();
  study.SetGVs(0);
  study.overrideGVs("s:shortOne:40:d:doubleOne:8");
  PVModel* const rewards = study.GetPVModel(true);
  EXPECT_STREQ(rewards->getName(), "counters");
  EXPECT_EQ(rewards->PerformanceVariableList[0]->GetStopTime(0), 8.0);
  EXPECT_EQ(static_cast<Counter*>(rewards->TheModel)->count.Mark(), 40);
  study.SetGVs(0);
  EXPECT_EQ(study.GetPVModel(true)->PerformanceVariableList[0]->GetStopTime(0), 0.25);
}

TEST(KitStudyTest, AStudyWithoutVariablesIsOneExperiment) {
  Study study("plain", Experiments(), measure);
  EXPECT_EQ(study.GetNumGVs(), 0U);
  EXPECT_EQ(study.GetNumExps(), 1U);
  study.SetGVs(0);
  EXPECT_EQ(standardOutputOf([&] { study.PrintGlobalValues(0); }), "There are no global variables.\n");
}

TEST(KitStudyDeathTest, VariablesWithoutAnExperimentAreReported) {
  EXPECT_EXIT(Study("empty", Experiments(intOne), measure), ExitedWithCode(1),
              "^ERROR: empty: the study has no experiment\n$");
}

// The entry of a program: the first that is made gives its study to the engine.

TEST(StudyEntryTest, TheEngineGetsTheStudyOfTheProgram) {
  const StudyEntry entry("counters", Experiments(doubleOne).row(2.0).row(3.0), measure);
  BaseStudyClass* const study = GenerateStudy();
  EXPECT_EQ(study->GetNumExps(), 2U);
  EXPECT_EQ(GenerateStudy(), study);
  DestructStudy();
  DestructStudy();
  EXPECT_EQ(GenerateStudy()->GetNumExps(), 2U);
  DestructStudy();
}

TEST(StudyEntryDeathTest, ASecondStudyIsReported) {
  EXPECT_EXIT(
      {
        const StudyEntry first("first", Experiments(), measure);
        const StudyEntry second("second", Experiments(), measure);
      },
      ExitedWithCode(1), "^ERROR: the program has two studies; the second is second\n$");
}

}  // namespace
