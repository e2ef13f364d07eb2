#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Modelling/Modelling.h"
#include "support/TestVariable.h"

namespace {

using namespace modelling;
using ::testing::ExitedWithCode;

/// Takes from `own` and gives to `pool`, through lambdas that were made before any sharing.
class Giver : public AtomicModel {
 public:
  explicit Giver(int start = 3) : AtomicModel("giver"), own(*this, "own", start) {
    give = &activity("give")
                .enabledBy({own}, [this] { return own.Mark() > 0; })
                .deterministic(1)
                .fires({own, pool}, [this] {
                  --own.Mark();
                  ++pool.Mark();
                  ++list[0]->Mark();
                });
  }
  Variable<Place> own;
  Variable<Place> pool{*this, "pool", 5};
  Variable<ArrayVariable<int>> list{*this, "list", 2, 10};
  Activity* give = nullptr;
};

class Taker : public AtomicModel {
 public:
  Taker() : AtomicModel("taker") {
    take = &activity("take")
                .enabledBy({stock}, [this] { return stock.Mark() > 0; })
                .deterministic(1)
                .fires({stock}, [this] { --stock.Mark(); });
  }
  Variable<Place> stock{*this, "stock", 1};
  Variable<ArrayVariable<int>> list{*this, "list", 2, 20};
  Activity* take = nullptr;
};

const std::vector<Shared> kPool{{"pool", {{"giver", "pool"}, {"taker", "stock"}}}, "list"};

TEST(JoinModelTest, AFiringInOneChildIsSeenInTheOther) {
  JoinModel joined("both", {child<Giver>("giver"), child<Taker>("taker")}, kPool);
  auto& giver = *static_cast<Giver*>(joined.GetChild(0));
  auto& taker = *static_cast<Taker*>(joined.GetChild(1));
  EXPECT_EQ(giver.pool.Mark(), 1);  // the last child's mark holds
  EXPECT_EQ(giver.list[0]->Mark(), 20);
  EXPECT_TRUE(taker.take->Enabled());
  giver.give->Fire();
  EXPECT_EQ(taker.stock.Mark(), 2);
  EXPECT_EQ(taker.list[0]->Mark(), 21);
  taker.take->Fire();
  taker.take->Fire();
  EXPECT_EQ(giver.pool.Mark(), 0);
  EXPECT_TRUE(taker.take->EnablingChange());
}

TEST(JoinModelTest, ASharedVariableStandsAtItsLevelAlone) {
  JoinModel joined("both", {child<Giver>("giver"), child<Taker>("taker")}, kPool);
  EXPECT_EQ(joined.NumSharedStateVariables, 2);
  // own; in each child its array, whose elements are shared and are in the image all the same; pool and list.
  EXPECT_EQ(joined.StateSize(), 2 + 8 + 8 + 2 + 8);
  EXPECT_STREQ(joined.GetSharedStateVariables()[0]->getName(), "pool");
  EXPECT_EQ(joined.GetSharedStateVariables()[0]->getNumAffectingActions(), 2);
}

TEST(RepModelTest, CopiesShareWhatIsNamedAndKeepTheRest) {
  RepModel fleet("fleet", 3, child<Giver>("giver", 2), {"pool", "list"});
  auto& first = *static_cast<Giver*>(fleet.GetChild(0));
  auto& last = *static_cast<Giver*>(fleet.GetChild(2));
  EXPECT_STREQ(last.getName(), "giver");
  last.give->Fire();
  EXPECT_EQ(first.pool.Mark(), 6);
  EXPECT_EQ(first.list[0]->Mark(), 11);
  EXPECT_EQ(first.own.Mark(), 2);
  EXPECT_EQ(last.own.Mark(), 1);
}

TEST(RepModelTest, AReplicationOfNoneIsEmptyAndCanBeJoined) {
  JoinModel joined("both", {replicate("givers", 0, child<Giver>("giver"), {"pool"}), child<Taker>("taker")},
                   {{"pool", {{"givers", "pool"}, {"taker", "stock"}}}});
  EXPECT_EQ(joined.NumActions, 1);
  EXPECT_EQ(static_cast<Taker*>(joined.GetChild(1))->stock.Mark(), 1);
}

TEST(CompositionTest, ModelsWhoseChildrenAreAllEmptyShareNothing) {
  const ChildModel none = replicate("givers", 0, child<Giver>("giver"), {"pool"});
  const JoinModel joined("both", {none, none}, {"pool"});
  EXPECT_EQ(joined.NumSharedStateVariables, 0);
  const RepModel copies("copies", 2, none, {"pool"});
  EXPECT_EQ(copies.NumSharedStateVariables, 0);
}

TEST(CompositionTest, JoinsAndReplicationsStandInEachOther) {
  const ChildModel pair = join("pair", {child<Giver>("giver"), child<Taker>("taker")}, kPool);
  JoinModel top("top", {replicate("pairs", 2, pair, {"pool"}), child<Taker>("taker")},
                {{"pool", {{"pairs", "pool"}, {"taker", "stock"}}}});
  List<BaseModelClass> givers;
  top.listModels("giver", &givers);
  ASSERT_EQ(givers.getNumItems(), 2);
  auto& first = *static_cast<Giver*>(givers.getItem(0));
  auto& second = *static_cast<Giver*>(givers.getItem(1));
  auto& taker = *static_cast<Taker*>(top.GetChild(1));
  first.give->Fire();
  second.give->Fire();
  EXPECT_EQ(taker.stock.Mark(), 3);
  EXPECT_EQ(first.list[0]->Mark(), 21);
  EXPECT_EQ(second.list[0]->Mark(), 21);
}

/// A value of the image, whose bytes have no alignment.
template <typename T>
T at(const std::vector<char>& image, std::size_t offset) {
  T value;
  std::memcpy(&value, image.data() + offset, sizeof value);
  return value;
}

// The example of the engine's page.
TEST(CompositionTest, TheStateImageIsThatOfTheCopiesInOrderThenTheOthersThenTheSharedOnes) {
  RewardModel rewards(
      "both",
      [](RewardModel& described) {
        described.model(join("both", {replicate("givers", 2, child<Giver>("giver"), {"pool"}), child<Taker>("taker")},
                             {{"pool", {{"givers", "pool"}, {"taker", "stock"}}}}));
        described.intervalOfTime("given", 0.0, 1.0).impulse("give", "giver");
      },
      true);
  BaseModelClass* const givers = rewards.TheModel->GetChild(0);
  auto& first = *static_cast<Giver*>(givers->GetChild(0));
  auto& second = *static_cast<Giver*>(givers->GetChild(1));
  first.own.Mark() = 9;
  second.own.Mark() = 4;
  second.list[1]->Mark() = 77;
  first.pool.Mark() = 6;
  EXPECT_EQ(givers->StateSize(), 20);
  EXPECT_EQ(rewards.TheModel->StateSize(), 30);
  ASSERT_EQ(rewards.StateSize(), 34);
  std::vector<char> image(34);
  rewards.CurrentState(image.data());
  EXPECT_EQ(at<short>(image, 0), 4);  // the second copy's image is the smaller one
  EXPECT_EQ(at<int>(image, 2), 10);
  EXPECT_EQ(at<int>(image, 6), 77);
  EXPECT_EQ(at<short>(image, 10), 9);
  EXPECT_EQ(at<int>(image, 12), 10);
  EXPECT_EQ(at<int>(image, 20), 20);
  EXPECT_EQ(at<short>(image, 28), 6);
  rewards.SetState(image.data());
  EXPECT_EQ(first.own.Mark(), 4);
  EXPECT_EQ(first.list[1]->Mark(), 77);
  EXPECT_EQ(second.own.Mark(), 9);
}

/// A model on the engine's classes alone.
class ByHand : public SANModel {
 public:
  ByHand() {
    std::vector<BaseStateVariableClass*> variables{&pool, &level};
    initializeSANModelNow("hand", 2, variables.data(), 0, nullptr, 0, nullptr, 0, nullptr);
  }
  Place pool{"pool", 8};
  ExtendedPlace<double> level{"level", 0.5};
};

TEST(CompositionTest, AHandWrittenModelSharesItsPlacesByName) {
  JoinModel joined("both", {child<ByHand>("first"), child<ByHand>("second"), child<Giver>("giver")}, {"pool", "level"});
  auto& first = *static_cast<ByHand*>(joined.GetChild(0));
  auto& giver = *static_cast<Giver*>(joined.GetChild(2));
  giver.give->Fire();
  EXPECT_EQ(first.pool.Mark(), 6);
  first.level.Mark() = 2.0;
  EXPECT_EQ(static_cast<ByHand*>(joined.GetChild(1))->level.Mark(), 2.0);
}

using CompositionDeathTest = ::testing::Test;

TEST(CompositionDeathTest, ASharedNameWithoutAPartnerIsReported) {
  EXPECT_EXIT(JoinModel("both", {child<Giver>("giver"), child<Taker>("taker")}, {"stock"}), ExitedWithCode(1),
              "^ERROR: model \"both\" shares \"stock\", which only its child \"taker\" has\n$");
  EXPECT_EXIT(JoinModel("both", {child<Giver>("giver"), child<Taker>("taker")}, {"stok"}), ExitedWithCode(1),
              "^ERROR: model \"both\" shares \"stok\", which none of its children has\n$");
  EXPECT_EXIT(RepModel("fleet", 2, child<Giver>("giver"), {"pol"}), ExitedWithCode(1),
              "^ERROR: model \"fleet\" shares \"pol\" among copies of \"giver\", which has no variable \"pol\"\n$");
}

TEST(CompositionDeathTest, APartThatDoesNotExistIsReported) {
  EXPECT_EXIT(JoinModel("both", {child<Giver>("giver"), child<Taker>("taker")},
                        {{"pool", {{"giver", "pool"}, {"takr", "stock"}}}}),
              ExitedWithCode(1),
              "^ERROR: model \"both\" shares \"pool\" with a child \"takr\", which it does not have\n$");
  EXPECT_EXIT(JoinModel("both", {child<Giver>("giver"), child<Taker>("taker")},
                        {{"pool", {{"giver", "pool"}, {"taker", "stok"}}}}),
              ExitedWithCode(1),
              "^ERROR: model \"both\" shares \"pool\" with the variable \"stok\" of its child \"taker\", which has no "
              "such variable\n$");
}

/// A model whose variable is of a class of its own.
class OwnKind : public SANModel {
 public:
  OwnKind() {
    BaseStateVariableClass* variables[] = {&level};
    initializeSANModelNow("own", 1, variables, 0, nullptr, 0, nullptr, 0, nullptr);
  }
  support::TestVariable level{"level"};
};

TEST(CompositionDeathTest, AVariableOfAKindThatCannotBeSharedByNameIsReported) {
  EXPECT_EXIT(JoinModel("both", {child<OwnKind>("first"), child<OwnKind>("second")}, {"level"}), ExitedWithCode(1),
              "^ERROR: variable \"level\" is of a kind that cannot be shared by name: make it a Variable of this kit, "
              "or share it by hand\n$");
}

TEST(CompositionDeathTest, ANegativeNumberOfCopiesIsReported) {
  EXPECT_EXIT(RepModel("fleet", -1, child<Giver>("giver"), {"pool"}), ExitedWithCode(1),
              "^Number of reps for fleet must be >= 0\\.\n$");
}

}  // namespace
