#include "BaseClasses/SAN/SANModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/state/ExtendedPlace.h"
#include "support/CapturedOutput.h"
#include "support/FlushWatch.h"
#include "support/ScriptedActivity.h"
#include "support/TestVariable.h"

namespace {

using support::assertionIn;
using support::ScriptedActivity;
using support::standardOutputOf;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

/// The station: three places, one read-only place, two activities and a group of the first of them.
class StationSAN : public SANModel {
 public:
  explicit StationSAN(const char* name = "station") {
    cases.initialize(1, "cases");
    cases.appendGroup(&arrive);
    BaseStateVariableClass* places[] = {&queue, &server, &done};
    BaseStateVariableClass* readOnly[] = {&limit};
    Activity* activities[] = {&arrive, &serve};
    BaseGroupClass* groups[] = {&cases, &serve};
    initializeSANModelNow(name, 3, places, 1, readOnly, 2, activities, 2, groups);
    AddAffectArc(&queue, &arrive);
    AddAffectArc(&queue, &serve);
    AddAffectArc(&done, &serve);
    AddEnableArc(&limit, &arrive);
    AddEnableArc(&server, &serve);
  }

  using SANModel::LocalStateVariables;
  using SANModel::ReadOnlyPlaces;
  using SANModel::SetActions;
  using SANModel::SetGroups;
  using SANModel::SetPlaces;
  using SANModel::SetReadOnlyPlaces;

  Place queue{"queue", 1};
  Place server{"server", 2};
  Place done{"done", 3};
  Place limit{"limit", 9};
  ScriptedActivity arrive{"arrive"};
  ScriptedActivity serve{"serve"};
  BaseGroupClass cases;
};

std::vector<short> marksOf(StationSAN& model) {
  return {model.queue.getMark(), model.server.getMark(), model.done.getMark(), model.limit.getMark()};
}

/// The image as the shorts that it consists of.
std::vector<short> imageOf(SANModel& model) {
  std::vector<short> image(static_cast<std::size_t>(model.StateSize()) / sizeof(short));
  model.CurrentState(image.data());
  return image;
}

TEST(SANModelTest, ANewModelIsEmpty) {
  SANModel model;
  EXPECT_EQ(model.getNumStateVariables(), 0);
  EXPECT_EQ(model.getNumReadOnlyPlaces(), 0);
  EXPECT_EQ(model.getNumActions(), 0);
  EXPECT_EQ(model.getNumGroups(), 0);
  EXPECT_EQ(model.getActionList(), nullptr);
  EXPECT_EQ(model.getGroupList(), nullptr);
  EXPECT_EQ(model.GetLocalStateVariables(nullptr), nullptr);
  EXPECT_EQ(model.StateSize(), 0);
}

TEST(SANModelTest, InitializingTakesOverNameCountsAndCopiesOfTheArrays) {
  StationSAN model;
  EXPECT_STREQ(model.getName(), "station");
  EXPECT_EQ(model.getNumStateVariables(), 4);
  EXPECT_EQ(model.getNumReadOnlyPlaces(), 1);
  EXPECT_EQ(model.getNumSharedStateVariables(), 0);
  EXPECT_EQ(model.getNumActions(), 2);
  EXPECT_EQ(model.getNumGroups(), 2);
  EXPECT_EQ(model.getActionList()[0], &model.arrive);
  EXPECT_EQ(model.getActionList()[1], &model.serve);
  EXPECT_EQ(model.getGroupList()[0], &model.cases);
  EXPECT_EQ(model.getGroupList()[1], &model.serve);
  BaseStateVariableClass** const places = model.GetLocalStateVariables(nullptr);
  EXPECT_EQ(places[0], &model.queue);
  EXPECT_EQ(places[1], &model.server);
  EXPECT_EQ(places[2], &model.done);
  EXPECT_EQ(model.ReadOnlyPlaces[0], &model.limit);
}

/// So that a trace, which walks as many entries as there are variables, shows them too.
TEST(SANModelTest, ReadOnlyPlacesStandBehindTheLocalOnes) {
  StationSAN model;
  BaseStateVariableClass** const variables = model.GetLocalStateVariables(nullptr);
  EXPECT_EQ(variables[model.getNumStateVariables() - 1], &model.limit);
}

TEST(SANModelTest, ActivitiesAndGroupsLearnTheirModel) {
  StationSAN model;
  void* const asBase = static_cast<BaseModelClass*>(&model);
  EXPECT_EQ(model.arrive.TheModel, asBase);
  EXPECT_EQ(model.serve.TheModel, asBase);
  EXPECT_EQ(model.cases.TheModel, asBase);
}

TEST(SANModelTest, TheConstructorWithArraysInitializesTheModel) {
  Place place("queue", 5);
  ScriptedActivity activity("serve");
  BaseStateVariableClass* places[] = {&place};
  Activity* activities[] = {&activity};
  BaseGroupClass* groups[] = {&activity};
  SANModel model("small", 1, places, 0, nullptr, 1, activities, 1, groups);
  EXPECT_STREQ(model.getName(), "small");
  EXPECT_EQ(model.getNumStateVariables(), 1);
  EXPECT_EQ(model.getNumReadOnlyPlaces(), 0);
  EXPECT_EQ(imageOf(model), std::vector<short>{5});
  EXPECT_EQ(activity.TheModel, static_cast<BaseModelClass*>(&model));
}

TEST(SANModelTest, NullPointersInTheArraysFailAnAssertion) {
  Place place("queue");
  ScriptedActivity activity("serve");
  BaseStateVariableClass* places[] = {&place, nullptr};
  Activity* activities[] = {&activity, nullptr};
  BaseGroupClass* groups[] = {&activity, nullptr};
  const std::string assertion = assertionIn("SANModel");
  const auto aborted = testing::KilledBySignal(SIGABRT);
  EXPECT_EXIT(SANModel("m", 2, places, 0, nullptr, 0, nullptr, 0, nullptr), aborted, assertion);
  EXPECT_EXIT(SANModel("m", 0, nullptr, 2, places, 0, nullptr, 0, nullptr), aborted, assertion);
  EXPECT_EXIT(SANModel("m", 0, nullptr, 0, nullptr, 2, activities, 0, nullptr), aborted, assertion);
  EXPECT_EXIT(SANModel("m", 0, nullptr, 0, nullptr, 0, nullptr, 2, groups), aborted, assertion);
}

TEST(SANModelTest, AMissingArrayFailsAnAssertion) {
  class UnfilledModel : public SANModel {
   public:
    using SANModel::SetActions;
    using SANModel::SetGroups;
    using SANModel::SetPlaces;
    using SANModel::SetReadOnlyPlaces;
  };
  UnfilledModel model;
  const std::string assertion = assertionIn("SANModel");
  const auto aborted = testing::KilledBySignal(SIGABRT);
  EXPECT_EXIT(model.SetPlaces(nullptr), aborted, assertion);
  EXPECT_EXIT(model.SetReadOnlyPlaces(nullptr), aborted, assertion);
  EXPECT_EXIT(model.SetActions(nullptr), aborted, assertion);
  EXPECT_EXIT(model.SetGroups(nullptr), aborted, assertion);
}

// The state image

TEST(SANModelTest, TheImageHoldsTheLocalMarksInOrder) {
  StationSAN model;
  EXPECT_EQ(model.StateSize(), 6);
  EXPECT_EQ(imageOf(model), (std::vector<short>{1, 2, 3}));
}

TEST(SANModelTest, APlaceThatWasSharedAwayIsNotInTheImage) {
  StationSAN model;
  Place leader("leader");
  leader.ShareWith(&model.server);
  EXPECT_EQ(model.StateSize(), 4);
  std::array<short, 4> image{-7, -7, -7, -7};
  model.CurrentState(image.data());
  EXPECT_THAT(image, ElementsAre(1, 3, -7, -7)) << "exactly four bytes are written";
}

TEST(SANModelTest, SettingTheCurrentStateLeavesEveryMark) {
  StationSAN model;
  std::vector<short> image = imageOf(model);
  const std::vector<short> marks = marksOf(model);
  model.SetState(image.data());
  EXPECT_EQ(marksOf(model), marks);
}

TEST(SANModelTest, ASavedStateIsRestoredButForReadOnlyPlaces) {
  StationSAN model;
  std::vector<short> image = imageOf(model);
  for (Place* const place : {&model.queue, &model.server, &model.done, &model.limit}) {
    place->setMark(77);
  }
  model.SetState(image.data());
  EXPECT_EQ(marksOf(model), (std::vector<short>{1, 2, 3, 77}));
}

TEST(SANModelTest, ASharedPlaceIsNotRestored) {
  StationSAN model;
  Place leader("leader");
  leader.ShareWith(&model.server);
  std::vector<short> image = imageOf(model);
  model.queue.setMark(50);
  leader.setMark(60);
  model.done.setMark(70);
  model.SetState(image.data());
  EXPECT_EQ(marksOf(model), (std::vector<short>{1, 60, 3, 9}));
}

TEST(SANModelTest, TheImageHasNoPaddingAndNeedsNoAlignment) {
  Place first("first", 1);
  ExtendedPlace<int> wide("wide", 0x01020304);
  Place last("last", -2);
  BaseStateVariableClass* places[] = {&first, &wide, &last};
  SANModel model("mixed", 3, places, 0, nullptr, 0, nullptr, 0, nullptr);
  ASSERT_EQ(model.StateSize(), 8);
  std::array<unsigned char, 9> bytes{};
  unsigned char* const image = bytes.data() + 1;
  model.CurrentState(image);
  const short firstMark = 1;
  const int wideMark = 0x01020304;
  const short lastMark = -2;
  EXPECT_EQ(std::memcmp(image, &firstMark, 2), 0);
  EXPECT_EQ(std::memcmp(image + 2, &wideMark, 4), 0);
  EXPECT_EQ(std::memcmp(image + 6, &lastMark, 2), 0);
  first.setMark(0);
  wide.setMark(0);
  last.setMark(0);
  model.SetState(image);
  EXPECT_EQ(first.getMark(), 1);
  EXPECT_EQ(wide.getMark(), 0x01020304);
  EXPECT_EQ(last.getMark(), -2);
}

TEST(SANModelTest, RestoringShowsEachValueAboveDebugLevelTwo) {
  StationSAN model;
  std::vector<short> image = imageOf(model);
  const auto restoreAtLevel = [&](int level) {
    const support::DebugLevelGuard guard(level);
    return standardOutputOf([&] { model.SetState(image.data()); });
  };
  EXPECT_EQ(restoreAtLevel(2), "");
  EXPECT_EQ(restoreAtLevel(3), "** TempMarking = 1\n** TempMarking = 2\n** TempMarking = 3\n");
}

/// A variable of no bytes, as an array without elements is.
class EmptyVariable : public support::TestVariable {
 public:
  using TestVariable::TestVariable;
  int StateSize() override { return 0; }
  void SetState(void* /*image*/) override {}
  void CurrentState(void* /*image*/) override {}
};

TEST(SANModelTest, AVariableWithoutBytesAtTheEndIsNotReadBeyondTheImage) {
  Place place("place", 4);
  EmptyVariable empty("empty");
  BaseStateVariableClass* places[] = {&place, &empty};
  SANModel model("model", 2, places, 0, nullptr, 0, nullptr, 0, nullptr);
  ASSERT_EQ(model.StateSize(), 2);
  const auto image = std::make_unique<short[]>(1);  // of its own, so that a sanitizer sees its end
  model.CurrentState(image.get());
  place.setMark(0);
  model.SetState(image.get());
  EXPECT_EQ(place.getMark(), 4);
}

TEST(SANModelTest, TheSizeGoesByStoredAndTheWalkByShared) {
  // On purpose: no composer makes such a variable, and the two questions stay apart.
  StationSAN model;
  model.queue.setStored(false);
  EXPECT_EQ(model.StateSize(), 4);
  std::array<short, 3> image{};
  model.CurrentState(image.data());
  EXPECT_THAT(image, ElementsAre(1, 2, 3));
  model.queue.setStored(true);
  model.queue.setShared(true);
  EXPECT_EQ(model.StateSize(), 6);
  image.fill(-7);
  model.CurrentState(image.data());
  EXPECT_THAT(image, ElementsAre(2, 3, -7));
}

TEST(SANModelTest, ImagesAreComparedByteForByte) {
  StationSAN model;
  std::array<unsigned char, 7> image{1, 2, 3, 4, 5, 6, 7};
  for (std::size_t i = 0; i < image.size(); ++i) {
    std::array<unsigned char, 7> other = image;
    EXPECT_TRUE(model.CompareState(image.data(), other.data()));
    other[i] ^= 0x80;
    EXPECT_EQ(model.CompareState(image.data(), other.data()), i == 6) << "byte " << i << "; the image has 6";
  }
}

TEST(SANModelTest, EmptyImagesAreEqual) {
  SANModel model("empty", 0, nullptr, 0, nullptr, 0, nullptr, 0, nullptr);
  char byte = 'a';
  char other = 'b';
  EXPECT_EQ(model.StateSize(), 0);
  EXPECT_TRUE(model.CompareState(&byte, &byte));
  EXPECT_TRUE(model.CompareState(&byte, &other));
}

// Lists

TEST(SANModelTest, ActionsAndGroupsAreListedInOrderAndOnce) {
  StationSAN model;
  List<BaseActionClass> actions;
  List<BaseGroupClass> groups;
  for (int i = 0; i < 2; ++i) {
    model.listActions(&actions);
    model.listGroups(&groups);
  }
  ASSERT_EQ(actions.getNumItems(), 2);
  EXPECT_EQ(actions.getItem(0), &model.arrive);
  EXPECT_EQ(actions.getItem(1), &model.serve);
  ASSERT_EQ(groups.getNumItems(), 2);
  EXPECT_EQ(groups.getItem(0), &model.cases);
  EXPECT_EQ(groups.getItem(1), &model.serve);
}

TEST(SANModelTest, ListingByNameStopsAtTheFirstMatch) {
  StationSAN model;
  model.arrive.defineName("serve");
  List<BaseActionClass> actions;
  model.listActions("serve", &actions);
  ASSERT_EQ(actions.getNumItems(), 1);
  EXPECT_EQ(actions.getItem(0), &model.arrive);
  actions.clearList();
  model.listActions("nowhere", &actions);
  EXPECT_EQ(actions.getNumItems(), 0);
}

TEST(SANModelTest, AModelIsListedUnderItsName) {
  StationSAN model;
  List<BaseModelClass> models;
  model.listModels("depot", &models);
  EXPECT_EQ(models.getNumItems(), 0);
  model.listModels("station", &models);
  ASSERT_EQ(models.getNumItems(), 1);
  EXPECT_EQ(models.getItem(0), &model);
}

TEST(SANModelTest, VariablesAreListedWithTheirModelTheLocalOnesFirst) {
  StationSAN model;
  model.limit.SetName("done");
  List<BaseStateVariableClass> variables;
  List<BaseModelClass> models;
  model.listSVs("station", "done", &variables, &models);
  ASSERT_EQ(variables.getNumItems(), 2);
  EXPECT_EQ(variables.getItem(0), &model.done);
  EXPECT_EQ(variables.getItem(1), &model.limit);
  ASSERT_EQ(models.getNumItems(), 1) << "a list drops repeats";
  EXPECT_EQ(models.getItem(0), &model);
}

TEST(SANModelTest, NoVariableIsListedForAnotherModelOrName) {
  StationSAN model;
  List<BaseStateVariableClass> variables;
  List<BaseModelClass> models;
  model.listSVs("depot", "done", &variables, &models);
  model.listSVs("station", "nothing", &variables, &models);
  EXPECT_EQ(variables.getNumItems(), 0);
  EXPECT_EQ(models.getNumItems(), 0);
}

TEST(SANModelTest, AnAtomicModelHasNoChildren) {
  StationSAN model;
  EXPECT_EQ(model.GetModelType(), BaseModelClass::AtomicModel);
  EXPECT_EQ(model.GetNumberOfChildren(), 0);
  EXPECT_EXIT(model.GetChild(0), testing::KilledBySignal(SIGABRT),
              "^Assertion failed: false, file SANModel.cpp, line [0-9]+\n");
}

// Printing

TEST(SANModelTest, PrintStateShowsLocalAndReadOnlyPlaces) {
  StationSAN model;
  const std::string text = "Model: (" + std::to_string(model.getId()) +
                           ")station\n"
                           "  queue = 1\n"
                           "  server = 2\n"
                           "  done = 3\n"
                           "  limit = 9\n";
  std::ostringstream stream;
  model.printState(&stream);
  EXPECT_EQ(stream.str(), text);
  EXPECT_EQ(standardOutputOf([&] { model.printState(); }), text);
  EXPECT_THAT(support::linesHeldBack(stream, [&] { model.printState(&stream); }),
              testing::Not(testing::Contains(testing::StartsWith("Model: "))));
}

TEST(SANModelTest, TheInfoShowsCountsActionsGroupsAndPlaces) {
  StationSAN model;
  model.serve.ActivityInitialize("serve", 1, Instantaneous, RaceAge, 0, 0, false);
  EXPECT_EQ(standardOutputOf([&] { model.PrintSANModelInfo(); }),
            "SANModelInfo\n"
            "Number of Actions = 2, Number of Groups = 2, Number of State Variables = 4\n"
            "ActionName = arrive\n"
            "Group Id = 0\n"
            "DistributionType = 1\n"
            "ExecutionPolicy = 1\n"
            "Number of affected state variables = 1\n"
            "Number of enabling state variables = 1\n"
            "ActionName = serve\n"
            "Group Id = 1\n"
            "DistributionType = 18\n"
            "ExecutionPolicy = 2\n"
            "Number of affected state variables = 2\n"
            "Number of enabling state variables = 1\n"
            "\n"
            "Group Name = cases \n"
            "Group Name = serve \n"
            "Place Name = queue\n"
            "Place Name = server\n"
            "Place Name = done\n"
            "Read Only Place Name = limit\n");
}

// Local and global actions

TEST(SANModelTest, WithoutSharingEveryActionIsLocal) {
  StationSAN model;
  base_action_list_t global;
  base_action_list_t local;
  model.GetGlobalActions(global);
  model.GetLocalActions(local);
  EXPECT_TRUE(global.empty());
  EXPECT_THAT(local, ElementsAre(&model.serve, &model.arrive)) << "each is pushed to the front";
}

TEST(SANModelTest, ActionsAtASharedPlaceAreGlobalAndThoseOfOtherModelsAreLeftOut) {
  StationSAN model;
  StationSAN other("other");
  Place leader("leader");
  leader.ShareWith(&model.server);
  leader.ShareWith(&other.server);
  ASSERT_EQ(model.server.getNumEnabledActions(), 2) << "the merged list holds the other model's action too";
  base_action_list_t global;
  base_action_list_t local;
  model.GetGlobalActions(global);
  model.GetLocalActions(local);
  EXPECT_THAT(global, ElementsAre(&model.serve));
  EXPECT_THAT(local, ElementsAre(&model.arrive));
}

TEST(SANModelTest, GlobalActionsAreInOrderOfTheirAddressesTheLastInFront) {
  StationSAN model;
  Place leader("leader");
  leader.ShareWith(&model.queue);
  ScriptedActivity earlier("earlier");
  base_action_list_t global;
  global.push_front(&earlier);
  model.GetGlobalActions(global);
  // The two are fields of one object, arrive before serve.
  ASSERT_LT(static_cast<BaseActionClass*>(&model.arrive), static_cast<BaseActionClass*>(&model.serve));
  EXPECT_THAT(global, ElementsAre(&model.serve, &model.arrive, &earlier));
}

TEST(SANModelTest, LocalActionsGoInFrontOfWhatTheListHolds) {
  StationSAN model;
  ScriptedActivity earlier("earlier");
  base_action_list_t local;
  local.push_front(&earlier);
  model.GetLocalActions(local);
  EXPECT_THAT(local, ElementsAre(&model.serve, &model.arrive, &earlier));
}

// Local states

TEST(SANModelTest, AModelWithoutBytesHasNoLocalState) {
  StationSAN model;
  EXPECT_TRUE(model.HasLocalState());
  SANModel empty("empty", 0, nullptr, 0, nullptr, 0, nullptr, 0, nullptr);
  EXPECT_FALSE(empty.HasLocalState());
}

TEST(SANModelTest, AModelWhosePlacesAreAllSharedHasNoLocalState) {
  StationSAN model;
  Place first("first");
  Place second("second");
  Place third("third");
  first.ShareWith(&model.queue);
  second.ShareWith(&model.server);
  third.ShareWith(&model.done);
  EXPECT_FALSE(model.HasLocalState());
}

TEST(SANModelTest, ALocalStateSavesAndRestoresTheMarks) {
  StationSAN model;
  State* saved = nullptr;
  model.ConstructLocalState(saved);
  ASSERT_NE(dynamic_cast<SANModel::LocalState*>(saved), nullptr);
  model.GetLocalState(saved);
  const std::vector<short> image = imageOf(model);
  EXPECT_EQ(std::memcmp(saved->GetStatePtr(), image.data(), 6), 0);
  for (Place* const place : {&model.queue, &model.server, &model.done, &model.limit}) {
    place->setMark(77);
  }
  model.SetLocalState(saved);
  EXPECT_EQ(marksOf(model), (std::vector<short>{1, 2, 3, 77}));
  model.DestructLocalState(saved);
}

TEST(SANModelTest, LocalStatesOfEqualMarkingsAreEqual) {
  StationSAN model;
  State* first = nullptr;
  State* second = nullptr;
  model.ConstructLocalState(first);
  model.ConstructLocalState(second);
  model.GetLocalState(first);
  model.GetLocalState(second);
  EXPECT_EQ(first->compare(*second), 0);
  EXPECT_EQ(first->hash(), second->hash());
  model.done.setMark(4);
  model.GetLocalState(second);
  EXPECT_NE(first->compare(*second), 0);
  *second = *first;
  EXPECT_EQ(first->compare(*second), 0);
  model.SetLocalState(second);
  EXPECT_EQ(model.done.getMark(), 3);
  model.DestructLocalState(first);
  model.DestructLocalState(second);
}

TEST(SANModelTest, DestructingALocalStateDestroysIt) {
  class MortalState : public SANModel::LocalState {
   public:
    MortalState(SANModel* model, int& deaths) : LocalState(model), deaths_(deaths) {}
    ~MortalState() override { ++deaths_; }

   private:
    int& deaths_;
  };
  StationSAN model;
  int deaths = 0;
  model.DestructLocalState(new MortalState(&model, deaths));
  EXPECT_EQ(deaths, 1);
}

TEST(SANModelTest, DestructingNoLocalStateIsAllowed) {
  StationSAN model;
  model.DestructLocalState(nullptr);
  EXPECT_TRUE(model.HasLocalState());
}

TEST(SANModelTest, ANewLocalStateIsAllZero) {
  StationSAN model;
  SANModel::LocalState state(&model);
  EXPECT_EQ(state.hash(), 0);
  EXPECT_EQ(standardOutputOf([&] { state.print(); }), "    0    0    0    0    0    0\n");
}

}  // namespace
