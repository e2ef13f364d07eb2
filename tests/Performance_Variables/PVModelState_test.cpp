#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <memory>
#include <vector>

#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/RewardKit.h"

// The expected bytes are those of a little-endian processor.
static_assert(std::endian::native == std::endian::little);

namespace {

using support::firingsVariable;
using support::markVariable;
using support::replicated;
using support::TestModel;
using support::TestNode;
using support::TestRewardModel;
using testing::Each;
using testing::ElementsAre;

using Image = std::vector<unsigned char>;

/// A model with one variable and that many actions, "serve" the first of them.
std::unique_ptr<TestModel> withActions(int count) {
  auto top = replicated("queue", 1, "serve");
  for (int i = 1; i < count; ++i) {
    top->children[0]->addAction("other");
  }
  return top;
}

Image imageOf(TestRewardModel& model) {
  Image image(static_cast<std::size_t>(model.StateSize()), 0xAA);
  model.CurrentState(image.data());
  return image;
}

/// The bytes behind the wrapped model's image.
Image indexBytes(TestRewardModel& model) {
  const Image image = imageOf(model);
  return {image.begin() + model.ModelStateSize, image.end()};
}

BaseActionClass* actionAt(TestRewardModel& model, int position) {
  return model.ListOfActions()[position];
}

TEST(BytesForTest, ItCountsFromTheFirstByteInMemoryThatIsNotZero) {
  EXPECT_EQ(PVModel::BytesFor(0), 0);
  EXPECT_EQ(PVModel::BytesFor(1), 4);
  EXPECT_EQ(PVModel::BytesFor(255), 4);
  EXPECT_EQ(PVModel::BytesFor(256), 3);
  EXPECT_EQ(PVModel::BytesFor(300), 4);
  EXPECT_EQ(PVModel::BytesFor(512), 3);
  EXPECT_EQ(PVModel::BytesFor(65536), 2);
  EXPECT_EQ(PVModel::BytesFor(65536 + 256), 3);
  EXPECT_EQ(PVModel::BytesFor(1 << 24), 1);
  EXPECT_EQ(PVModel::BytesFor(-1), 4);
}

TEST(PVModelStateTest, InModeZeroTheImageIsTheModelsAlone) {
  TestRewardModel model(withActions(300), {}, 0);
  EXPECT_EQ(model.ModelStateSize, 4);
  EXPECT_EQ(model.AdditionalStateSize, 0);
  EXPECT_EQ(model.PVStateIndex, nullptr);
  EXPECT_EQ(model.StateSize(), 4);
  model.child(0).mark().value = 7;
  EXPECT_THAT(imageOf(model), ElementsAre(7, 0, 0, 0));
}

TEST(PVModelStateTest, OtherModesAddNothing) {
  TestRewardModel model(withActions(3), {}, 2);
  EXPECT_EQ(model.AdditionalStateSize, 0);
  EXPECT_EQ(model.StateSize(), 4);
  Image image = imageOf(model);
  model.PutPVState(image.data() + 4);
  EXPECT_TRUE(model.CompareState(image.data(), image.data()));
}

TEST(PVModelStateTest, InModeOneTheIndexTakesTheBytesForTheNumberOfActions) {
  for (const auto& [actions, bytes] : {std::pair{1, 4}, {255, 4}, {256, 3}, {300, 4}}) {
    const TestRewardModel model(withActions(actions), {});
    EXPECT_EQ(model.PVStateIndexLength, actions);
    EXPECT_EQ(model.PVStateIndex, model.ListOfActions());
    EXPECT_EQ(model.AdditionalStateSize, bytes) << actions << " actions";
    EXPECT_EQ(model.PVModelStateSize, 4 + bytes) << actions << " actions";
  }
}

TEST(PVModelStateTest, TheIndexOfTheLastActionIsItsPositionAndOneAsAWholeInt) {
  TestRewardModel model(withActions(300), {});
  EXPECT_THAT(indexBytes(model), ElementsAre(0, 0, 0, 0));
  model.LastAction = actionAt(model, 0);
  EXPECT_THAT(indexBytes(model), ElementsAre(1, 0, 0, 0));
  model.LastAction = actionAt(model, 299);
  EXPECT_THAT(indexBytes(model), ElementsAre(300 - 256, 1, 0, 0));
}

TEST(PVModelStateTest, AnIndexOfThreeBytesLosesItsLowestByte) {
  TestRewardModel model(withActions(256), {});
  model.LastAction = actionAt(model, 4);
  EXPECT_THAT(indexBytes(model), ElementsAre(0, 0, 0));
  model.LastAction = actionAt(model, 255);
  EXPECT_THAT(indexBytes(model), ElementsAre(1, 0, 0));
  const Image index = indexBytes(model);
  EXPECT_EQ(model.StateIndexLookup(index.data()), 256);
}

TEST(PVModelStateTest, LookingUpAnIndexIsTheInverseOfWritingIt) {
  TestRewardModel model(withActions(300), {});
  for (int position = 0; position < 300; ++position) {
    model.LastAction = actionAt(model, position);
    const Image index = indexBytes(model);
    ASSERT_EQ(model.StateIndexLookup(index.data()), position + 1);
  }
}

TEST(PVModelStateTest, AnActionOutsideTheListHasIndexZero) {
  TestRewardModel model(withActions(3), {});
  BaseActionClass stranger;
  model.LastAction = &stranger;
  EXPECT_THAT(indexBytes(model), Each(0));
}

TEST(PVModelStateTest, AfterAResetTheImageHasIndexZero) {
  TestRewardModel model(withActions(3), {});
  model.FireAction(actionAt(model, 1), 2.0);
  EXPECT_THAT(indexBytes(model), ElementsAre(2, 0, 0, 0));
  model.PVReset();
  EXPECT_THAT(indexBytes(model), ElementsAre(0, 0, 0, 0));
}

TEST(PVModelStateTest, SetStateRestoresTheMarkingAndNotTheLastAction) {
  TestRewardModel model(withActions(3), {});
  Image start = imageOf(model);
  model.step(model.actionOf(0), 2.0);
  ASSERT_EQ(model.child(0).mark().value, 1);
  model.SetState(start.data());
  EXPECT_EQ(model.child(0).mark().value, 0);
  EXPECT_EQ(model.LastAction, &model.actionOf(0));
  EXPECT_EQ(BaseModelClass::LastActionTime, 2.0);
}

TEST(PVModelStateTest, ImagesThatDifferInTheIndexAloneAreEqualInModeZeroOnly) {
  for (const int mode : {0, 1}) {
    TestRewardModel model(withActions(3), {}, 1);
    Image none = imageOf(model);
    model.LastAction = actionAt(model, 1);
    Image second = imageOf(model);
    model.StateMode = mode;
    EXPECT_EQ(model.CompareState(none.data(), second.data()), mode == 0);
    EXPECT_TRUE(model.CompareState(second.data(), second.data()));
  }
}

TEST(PVModelStateTest, ImagesThatDifferInTheMarkingAreDifferentInEveryMode) {
  for (const int mode : {0, 1, 2}) {
    TestRewardModel model(withActions(3), {}, mode);
    Image before = imageOf(model);
    model.child(0).mark().value = 1;
    Image after = imageOf(model);
    EXPECT_FALSE(model.CompareState(before.data(), after.data())) << "mode " << mode;
  }
}

class PutPVStateTest : public testing::Test {
 protected:
  static TestRewardModel* build(int mode) {
    auto* const model =
        new TestRewardModel(withActions(3),
                            {firingsVariable("firings", {{0.0, 10.0}}, "serve", "queue"),
                             markVariable<IntervalOfTimeWorker>("marks", INTERVAL_OF_TIME, {0.0, 8.0}, "queue")},
                            mode);
    model->ConsiderOnly(nullptr, 0);
    model->child(0).mark().value = 6;
    return model;
  }
};

TEST_F(PutPVStateTest, InModeOneTheLastActionComesFromTheBlock) {
  const std::unique_ptr<TestRewardModel> model(build(1));
  const unsigned char serve[] = {1, 0, 0, 0};
  model->PutPVState(serve);
  EXPECT_EQ(model->LastAction, &model->actionOf(0));
  EXPECT_EQ(model->node(0).TotalImpulse, 1.0);
  EXPECT_EQ(model->node(1).TotalReward, 6.0);
  const unsigned char none[] = {0, 0, 0, 0};
  model->PutPVState(none);
  EXPECT_EQ(model->LastAction, &model->ZeroImpulseAction);
  EXPECT_EQ(model->node(0).TotalImpulse, 0.0);
}

TEST_F(PutPVStateTest, InModeZeroTheRewardsAreThoseWithoutAnAction) {
  const std::unique_ptr<TestRewardModel> model(build(0));
  model->LastAction = &model->actionOf(0);
  model->node(0).TotalImpulse = 5.0;
  const unsigned char unread[] = {1, 0, 0, 0};
  model->PutPVState(unread);
  EXPECT_EQ(model->LastAction, &model->actionOf(0));
  EXPECT_EQ(model->node(0).TotalImpulse, 0.0);
  EXPECT_EQ(model->node(1).TotalReward, 6.0);
}

/// A model without any action list.
class ActionlessModel : public BaseModelClass {
 public:
  void listModels(const char*, List<BaseModelClass>*) override {}
  void CurrentState(void*) override {}
  void listActions(List<BaseActionClass>*) override {}
  void listGroups(List<BaseGroupClass>*) override {}
  void SetState(void*) override {}
  int StateSize() override { return 0; }
  bool CompareState(void*, void*) override { return true; }
  void listActions(const char*, List<BaseActionClass>*) override {}
  void listSVs(const char*, const char*, List<BaseStateVariableClass>*, List<BaseModelClass>*) override {}
};

class ActionlessRewardModel : public PVModel {
 public:
  explicit ActionlessRewardModel(int mode) {
    TheModel = new ActionlessModel;
    StateMode = mode;
    CreatePVList(0, true);
    Initialize();
  }
  PerformanceVariableNode* createPVNode(int, int) override { return nullptr; }
};

TEST(PVModelStateDeathTest, ModeOneNeedsAListOfActions) {
  EXPECT_DEATH(ActionlessRewardModel(1), "!! Assertion failed in file PVModel\\.cpp, line 709");
}

TEST(PVModelStateTest, ModeZeroNeedsNoListOfActions) {
  ActionlessRewardModel model(0);
  EXPECT_EQ(model.StateSize(), 0);
}

}  // namespace
