#include "Performance_Variables/ModelGroupClass.h"

#include <gtest/gtest.h>

#include "Performance_Variables/RewardKit.h"

namespace {

using support::TestModel;

TEST(ModelGroupTest, ANewGroupDependsOnNoModel) {
  TestModel model("queue");
  const ModelGroupClass group;
  EXPECT_EQ(group.NumModels, 0);
  EXPECT_FALSE(group.IsDependentOnModel(&model));
}

TEST(ModelGroupTest, TheListHasTheGivenLengthAndStartsNull) {
  ModelGroupClass group;
  group.CreateModelList(2);
  EXPECT_EQ(group.NumModels, 2);
  EXPECT_EQ(group.ModelList[0], nullptr);
  EXPECT_EQ(group.ModelList[1], nullptr);
}

TEST(ModelGroupTest, DependenceIsASearchForThePointerAndNotForTheName) {
  TestModel first("queue");
  TestModel second("queue");
  TestModel third("queue");
  ModelGroupClass group;
  group.CreateModelList(2);
  group.SetModel(0, &first);
  group.SetModel(1, &third);
  EXPECT_TRUE(group.IsDependentOnModel(&first));
  EXPECT_FALSE(group.IsDependentOnModel(&second));
  EXPECT_TRUE(group.IsDependentOnModel(&third));
}

TEST(ModelGroupTest, ASecondListReplacesTheFirst) {
  TestModel model("queue");
  ModelGroupClass group;
  group.CreateModelList(1);
  group.SetModel(0, &model);
  group.CreateModelList(3);
  EXPECT_EQ(group.NumModels, 3);
  EXPECT_FALSE(group.IsDependentOnModel(&model));
}

}  // namespace
