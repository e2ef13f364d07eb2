#include "BaseClasses/BaseModelClass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <type_traits>

#include "BaseClasses/BaseActionClass.h"
#include "support/CapturedOutput.h"
#include "support/TestComposite.h"
#include "support/TestVariable.h"

namespace {

using support::TestComposite;
using support::TestVariable;
using testing::ElementsAre;

static_assert(std::is_abstract_v<BaseModelClass>);
static_assert(!std::is_copy_constructible_v<BaseModelClass>);

/// Offers nothing beyond what a model must.
class BareModel : public BaseModelClass {
 public:
  void listModels(const char* /*name*/, List<BaseModelClass>* /*models*/) override {}
  void CurrentState(void* /*image*/) override {}
  void listActions(List<BaseActionClass>* /*actions*/) override {}
  void listGroups(List<BaseGroupClass>* /*groups*/) override {}
  void SetState(void* /*image*/) override {}
  int StateSize() override { return 0; }
  bool CompareState(void* /*image1*/, void* /*image2*/) override { return true; }
  void listActions(const char* /*name*/, List<BaseActionClass>* /*actions*/) override {}
  void listSVs(const char* /*model*/, const char* /*name*/, List<BaseStateVariableClass>* /*variables*/,
               List<BaseModelClass>* /*models*/) override {}
};

TEST(BaseModelClassTest, ModelsAreNumberedInOrderAndAreTheirOwnParents) {
  BareModel first;
  BareModel second;
  EXPECT_GE(first.getId(), 1);
  EXPECT_EQ(second.getId(), first.getId() + 1);
  EXPECT_EQ(first.getParentId(), first.getId());
  EXPECT_EQ(second.getParentId(), second.getId());
  second.SetParentId(first.getId());
  EXPECT_EQ(second.getParentId(), first.getId());
  EXPECT_EQ(second.getId(), first.getId() + 1);
}

TEST(BaseModelClassTest, TheFirstModelOfAProcessHasTheNumberOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a fresh process
  EXPECT_EXIT(
      {
        BareModel model;
        std::exit(40 + model.getId());
      },
      testing::ExitedWithCode(41), "");
}

TEST(BaseModelClassTest, ANewModelIsEmptyAndNameless) {
  BareModel model;
  EXPECT_EQ(model.getName(), nullptr);
  EXPECT_EQ(model.getNumStateVariables(), 0);
  EXPECT_EQ(model.getNumSharedStateVariables(), 0);
  EXPECT_EQ(model.getNumActions(), 0);
  EXPECT_EQ(model.getNumGroups(), 0);
  EXPECT_EQ(model.getActionList(), nullptr);
  EXPECT_EQ(model.getGroupList(), nullptr);
  EXPECT_EQ(model.NumPVs, 0);
  EXPECT_EQ(BaseModelClass::LastActionTime, 0.0);
}

TEST(BaseModelClassTest, TheNameIsACopyAndCanBeReplaced) {
  char name[] = "station";
  BareModel model;
  model.DefineName(name);
  name[0] = 'x';
  EXPECT_STREQ(model.getName(), "station");
  model.DefineName("depot");
  EXPECT_STREQ(model.getName(), "depot");
  EXPECT_STREQ(model.Name, "depot");
}

TEST(BaseModelClassTest, TheCountsAreThoseOfTheFields) {
  BareModel model;
  model.NumStateVariables = 5;
  model.NumSharedStateVariables = 4;
  model.NumActions = 3;
  model.NumGroups = 2;
  EXPECT_EQ(model.getNumStateVariables(), 5);
  EXPECT_EQ(model.getNumSharedStateVariables(), 4);
  EXPECT_EQ(model.getNumActions(), 3);
  EXPECT_EQ(model.getNumGroups(), 2);
}

TEST(BaseModelClassTest, ABareModelHasNoVariablesToShowAndNoShares) {
  BareModel model;
  TestVariable variable("queue");
  std::ostringstream text;
  EXPECT_EQ(model.GetLocalStateVariables(&text), nullptr);
  EXPECT_EQ(model.GetLocalStateVariables(nullptr), nullptr);
  EXPECT_EQ(model.GetSharedStateVariables(), nullptr);
  EXPECT_EQ(model.getMainSharedVariable(&variable), nullptr);
  EXPECT_EQ(model.getListOfSharedVariables(&variable), nullptr);
  model.printState(&text);
  EXPECT_EQ(text.str(), "");
}

TEST(BaseModelClassTest, PrintStateWithoutAStreamWritesToStandardOutput) {
  class SpeakingModel : public BareModel {
   public:
    using BaseModelClass::printState;
    void printState(std::ostream* strm) override { *strm << "state\n"; }
  };
  SpeakingModel model;
  EXPECT_EQ(support::standardOutputOf([&] { model.printState(); }), "state\n");
}

TEST(BaseModelClassTest, AnAffectArcIsKnownAtBothEnds) {
  BareModel model;
  TestVariable variable("queue");
  BaseActionClass action;
  model.AddAffectArc(&variable, &action);
  ASSERT_EQ(variable.getNumAffectingActions(), 1);
  EXPECT_EQ(variable.getAffectingAction(0), &action);
  EXPECT_EQ(variable.getNumEnabledActions(), 0);
  ASSERT_EQ(action.getNumAffectedSVs(), 1);
  EXPECT_EQ(action.getAffectedSV(0), &variable);
  EXPECT_EQ(action.getNumEnablingSVs(), 0);
}

TEST(BaseModelClassTest, AnEnableArcIsKnownAtBothEnds) {
  BareModel model;
  TestVariable variable("queue");
  BaseActionClass action;
  model.AddEnableArc(&variable, &action);
  ASSERT_EQ(variable.getNumEnabledActions(), 1);
  EXPECT_EQ(variable.getEnabledAction(0), &action);
  EXPECT_EQ(variable.getNumAffectingActions(), 0);
  ASSERT_EQ(action.getNumEnablingSVs(), 1);
  EXPECT_EQ(action.getEnablingSV(0), &variable);
  EXPECT_EQ(action.getNumAffectedSVs(), 0);
}

TEST(BaseModelClassTest, AnArcToACompositeVariableEndsAtTheLeavesOfTheAction) {
  BareModel model;
  TestVariable first("first");
  TestVariable second("second");
  TestComposite both("both", {&first, &second});
  BaseActionClass action;
  model.AddAffectArc(&both, &action);
  EXPECT_EQ(both.getNumAffectingActions(), 1);
  ASSERT_EQ(action.getNumAffectedSVs(), 2);
  EXPECT_EQ(action.getAffectedSV(1), &second);
}

TEST(BaseModelClassDeathTest, AnArcWithANullEndIsReported) {
  BareModel model;
  model.DefineName("bare");
  TestVariable variable("level", 0, "tank");
  BaseActionClass action;
  action.defineName("flow");
  const auto failed = testing::ExitedWithCode(1);
  EXPECT_EXIT(
      model.AddAffectArc(nullptr, &action), failed,
      "^ERROR: model \"bare\": the first affecting arc of activity \"flow\" leads to no variable: its pointer is "
      "null\n$");
  EXPECT_EXIT(
      model.AddEnableArc(nullptr, &action), failed,
      "^ERROR: model \"bare\": the first enabling arc of activity \"flow\" leads to no variable: its pointer is "
      "null\n$");
  EXPECT_EXIT(model.AddEnableArc(&variable, nullptr), failed,
              "^ERROR: model \"bare\": an enabling arc to \"tank\\.level\" has no activity: its pointer is null\n$");
  EXPECT_EXIT(model.AddAffectArc(nullptr, nullptr), failed,
              "^ERROR: model \"bare\": an affecting arc has no activity: its pointer is null\n$");
  model.AddEnableArc(&variable, &action);
  EXPECT_EXIT(
      model.AddEnableArc(nullptr, &action), failed,
      "^ERROR: model \"bare\": the enabling arc of activity \"flow\" behind that to \"tank\\.level\" leads to no "
      "variable: its pointer is null\n$");
}

TEST(BaseModelClassDeathTest, AModelWithoutANameReportsToo) {
  BareModel model;
  BaseActionClass action;
  EXPECT_EXIT(model.AddAffectArc(nullptr, &action), testing::ExitedWithCode(1),
              "^ERROR: model \"\": the first affecting arc of activity \"default\" leads to no variable");
}

TEST(BaseModelClassTest, WhatAModelDoesNotOfferFailsAnAssertion) {
  BareModel model;
  base_action_list_t actions;
  State* state = nullptr;
  const std::function<void()> questions[] = {
      [&] { model.GetModelType(); },
      [&] { model.GetNumberOfChildren(); },
      [&] { model.GetChild(0); },
      [&] { model.GetLocalActions(actions); },
      [&] { model.GetGlobalActions(actions); },
      [&] { model.HasLocalState(); },
      [&] { model.GetLocalState(state); },
      [&] { model.SetLocalState(state); },
      [&] { model.ConstructLocalState(state); },
      [&] { model.DestructLocalState(state); },
  };
  for (const auto& question : questions) {
    EXPECT_EXIT(question(), testing::KilledBySignal(SIGABRT),
                "^Assertion failed: false, file BaseModelClass.cpp, line [0-9]+\n");
  }
}

TEST(BaseModelClassTest, TheModelTypesHaveTheirNumbers) {
  EXPECT_EQ(BaseModelClass::InvalidModel, 0);
  EXPECT_EQ(BaseModelClass::AtomicModel, 1);
  EXPECT_EQ(BaseModelClass::JoinModel, 2);
  EXPECT_EQ(BaseModelClass::RepModel, 3);
  EXPECT_EQ(BaseModelClass::GraphJoinModel, 4);
  EXPECT_EQ(BaseModelClass::GraphWrapperModel, 5);
}

TEST(BaseModelClassTest, AnActionListHasTheLatestPushInFront) {
  BaseActionClass first;
  BaseActionClass second;
  base_action_list_t actions;
  actions.push_front(&first);
  actions.push_front(&second);
  EXPECT_THAT(actions, ElementsAre(&second, &first));
}

}  // namespace
