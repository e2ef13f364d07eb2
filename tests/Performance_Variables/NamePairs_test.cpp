#include <gtest/gtest.h>

#include <string>

#include "Performance_Variables/ActionModelPairClass.h"
#include "Performance_Variables/VarModelPairClass.h"
#include "support/AllocationCounter.h"

TEST(VarModelPairTest, ANewPairHoldsNoTexts) {
  const VarModelPairClass pair;
  EXPECT_EQ(pair.VarName, nullptr);
  EXPECT_EQ(pair.ModelName, nullptr);
}

TEST(VarModelPairTest, TheVariableComesFirstAndBothTextsAreCopies) {
  std::string variable = "mark";
  std::string model = "queue";
  VarModelPairClass pair;
  pair.SetPair(variable.c_str(), model.c_str());
  variable = "xxxx";
  model = "yyyyy";
  EXPECT_STREQ(pair.VarName, "mark");
  EXPECT_STREQ(pair.ModelName, "queue");
}

TEST(VarModelPairTest, ALaterPairReplacesTheEarlierOne) {
  VarModelPairClass pair;
  pair.SetPair("mark", "queue");
  pair.SetPair("position", "train");
  EXPECT_STREQ(pair.VarName, "position");
  EXPECT_STREQ(pair.ModelName, "train");
}

TEST(ActionModelPairTest, ANewPairHoldsNoTexts) {
  const ActionModelPairClass pair;
  EXPECT_EQ(pair.ActionName, nullptr);
  EXPECT_EQ(pair.ModelName, nullptr);
}

TEST(ActionModelPairTest, TheActionComesFirstAndALaterPairReplacesTheEarlierOne) {
  std::string action = "serve";
  ActionModelPairClass pair;
  pair.SetPair(action.c_str(), "queue");
  action = "xxxxx";
  EXPECT_STREQ(pair.ActionName, "serve");
  EXPECT_STREQ(pair.ModelName, "queue");
  pair.SetPair("trainExits", "train");
  EXPECT_STREQ(pair.ActionName, "trainExits");
  EXPECT_STREQ(pair.ModelName, "train");
}

TEST(ActionModelPairTest, APairCanBeSetFromItsOwnTexts) {
  ActionModelPairClass pair;
  pair.SetPair("serve", "queue");
  pair.SetPair(pair.ActionName, pair.ModelName);
  EXPECT_STREQ(pair.ActionName, "serve");
  EXPECT_STREQ(pair.ModelName, "queue");
}

TEST(NamePairsTest, TheirTextsAreGivenBack) {
  const auto makeAndSet = [] {
    VarModelPairClass variable;
    ActionModelPairClass action;
    for (const char* const name : {"queue", "train"}) {
      variable.SetPair("mark", name);
      action.SetPair("serve", name);
    }
  };
  EXPECT_EQ(support::leftBehindBy(makeAndSet), 0U);
}
