#include "Modelling/AtomicModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Modelling/Modelling.h"
#include "Simulator/Tausworthe.h"

namespace {

using namespace modelling;
using ::testing::DoubleEq;
using ::testing::ElementsAre;

template <typename Action>
std::vector<std::string> namesOf(Action** actions, int count) {
  std::vector<std::string> names(static_cast<std::size_t>(count));
  std::transform(actions, actions + count, names.begin(), [](Action* action) { return action->ActionName; });
  return names;
}

/// A model under test: all that a derived class may do is open.
class OpenModel : public AtomicModel {
 public:
  OpenModel() : AtomicModel("open") {}
  using AtomicModel::activity;
  using AtomicModel::add;
  using AtomicModel::group;
  using AtomicModel::innerGroup;
  using AtomicModel::make;
  using AtomicModel::makeReadOnly;

  [[nodiscard]] std::vector<std::string> actionNames() const { return namesOf(ActionList, NumActions); }
  [[nodiscard]] std::vector<std::string> groupNames() const { return namesOf(GroupList, NumGroups); }

  Variable<Place> a{*this, "a", 2};
  Variable<Place> b{*this, "b"};
};

class AtomicModelTest : public ::testing::Test {
 protected:
  OpenModel model_;
};

TEST_F(AtomicModelTest, AVariableThatIsAMemberIsAStateVariableOfTheModel) {
  EXPECT_EQ(model_.NumStateVariables, 2);
  EXPECT_EQ(model_.StateSize(), 4);
  List<BaseStateVariableClass> variables;
  List<BaseModelClass> models;
  model_.listSVs("open", "b", &variables, &models);
  ASSERT_EQ(variables.getNumItems(), 1);
  EXPECT_EQ(variables.getItem(0), &model_.b);
  EXPECT_EQ(model_.a.Mark(), 2);
}

TEST_F(AtomicModelTest, ReadOnlyVariablesStandBehindTheOthersAndOutsideTheImage) {
  Place& limit = model_.makeReadOnly<Place>("limit", 7);
  Place& late = model_.make<Place>("late", 1);
  EXPECT_EQ(model_.NumStateVariables, 4);
  EXPECT_EQ(model_.getNumReadOnlyPlaces(), 1);
  EXPECT_EQ(model_.StateSize(), 6);
  BaseStateVariableClass** const variables = model_.GetLocalStateVariables(nullptr);
  EXPECT_EQ(variables[2], &late);
  EXPECT_EQ(variables[3], &limit);
}

TEST_F(AtomicModelTest, AnActivityAsksItsFunctionsAndKnowsItsArcs) {
  Activity& move = model_.activity("move")
                       .enabledBy({model_.a}, [this] { return model_.a.Mark() > 0; })
                       .deterministic([this] { return 0.5 * model_.a.Mark(); })
                       .rank(3)
                       .weight([this] { return 10.0 + model_.b.Mark(); })
                       .fires({model_.a, model_.b}, [this] {
                         --model_.a.Mark();
                         ++model_.b.Mark();
                       });
  EXPECT_TRUE(move.Enabled());
  EXPECT_EQ(move.SampleDistribution(), 1.0);
  EXPECT_EQ(move.Fire(), &move);
  EXPECT_EQ(model_.a.Mark(), 1);
  EXPECT_EQ(model_.b.Mark(), 1);
  EXPECT_EQ(move.SampleDistribution(), 0.5);
  EXPECT_EQ(move.Rank(), 3);
  EXPECT_EQ(move.Weight(), 11.0);
  EXPECT_FALSE(move.ReactivationPredicate());
  EXPECT_FALSE(move.ReactivationFunction());
  EXPECT_EQ(move.DistributionType, Deterministic);
  EXPECT_EQ(move.TheModel, static_cast<BaseModelClass*>(&model_));
  ASSERT_EQ(move.getNumEnablingSVs(), 1);
  EXPECT_EQ(move.getEnablingSV(0), &model_.a);
  ASSERT_EQ(move.getNumAffectedSVs(), 2);
  EXPECT_EQ(move.getAffectedSV(0), &model_.a);
  EXPECT_EQ(move.getAffectedSV(1), &model_.b);
  EXPECT_EQ(model_.b.getAffectingAction(0), &move);
  EXPECT_EQ(model_.a.getEnabledAction(0), &move);
}

TEST_F(AtomicModelTest, AnActivityTellsWhetherItsEnablingChangedSinceItWasAsked) {
  Activity& take = model_.activity("take")
                       .enabledBy({model_.a}, [this] { return model_.a.Mark() > 0; })
                       .deterministic(1)
                       .fires({model_.a}, [this] { --model_.a.Mark(); });
  EXPECT_TRUE(take.Enabled());
  EXPECT_FALSE(take.EnablingChange());
  model_.a.Mark() = 0;
  EXPECT_TRUE(take.EnablingChange());
  EXPECT_FALSE(take.EnablingChange());
}

TEST_F(AtomicModelTest, WithoutAWordAnActivityIsAlwaysEnabledOfRankAndWeightOne) {
  Activity& tick = model_.activity("tick").instantaneous().fires({}, [] {});
  EXPECT_TRUE(tick.Enabled());
  EXPECT_EQ(tick.Rank(), 1);
  EXPECT_EQ(tick.Weight(), 1.0);
  EXPECT_EQ(tick.SampleDistribution(), 0.0);
  EXPECT_EQ(tick.ReturnDistributionParameters(), nullptr);
  EXPECT_EQ(tick.DistributionType, Instantaneous);
}

TEST_F(AtomicModelTest, ReactivationIsAWordOrTwoFunctions) {
  Activity& always = model_.activity("always").exponential(1).reactivating().fires({}, [] {});
  EXPECT_TRUE(always.ReactivationPredicate());
  EXPECT_TRUE(always.ReactivationFunction());
  Activity& sometimes =
      model_.activity("sometimes")
          .exponential(1)
          .reactivating([this] { return model_.a.Mark() == 2; }, [this] { return model_.b.Mark() == 1; })
          .fires({}, [] {});
  EXPECT_TRUE(sometimes.ReactivationPredicate());
  EXPECT_FALSE(sometimes.ReactivationFunction());
  model_.b.Mark() = 1;
  EXPECT_TRUE(sometimes.ReactivationFunction());
}

TEST_F(AtomicModelTest, TheCasesOfAnActivityAreMembersOfAPostselectGroupOfItsName) {
  model_.activity("toss")
      .enabledBy({model_.a}, [this] { return model_.a.Mark() > 0; })
      .deterministic(2.0)
      .withCase(0.25, {model_.a}, [this] { --model_.a.Mark(); })
      .withCase([this] { return 0.5 * model_.a.Mark(); }, {model_.b}, [this] { ++model_.b.Mark(); });
  model_.activity("other").deterministic(1).fires({}, [] {});
  EXPECT_THAT(model_.actionNames(), ElementsAre("toss_case1", "toss_case2", "other"));
  EXPECT_THAT(model_.groupNames(), ElementsAre("toss", "other"));
  auto* const toss = dynamic_cast<PostselectGroup*>(model_.GroupList[0]);
  ASSERT_NE(toss, nullptr);
  EXPECT_EQ(toss->TheModel, static_cast<BaseModelClass*>(&model_));
  EXPECT_EQ(toss->getNumMembers(), 2);
  EXPECT_EQ(toss->getMember(0)->GroupID, 0);
  EXPECT_EQ(toss->getMember(1)->GroupID, 0);
  EXPECT_EQ(model_.GroupList[1]->GroupID, 1);
  EXPECT_TRUE(toss->Enabled());
  EXPECT_EQ(toss->SampleDistribution(), 2.0);
  EXPECT_EQ(toss->getMember(0)->Weight(), 0.25);
  EXPECT_EQ(toss->getMember(1)->Weight(), 1.0);
  EXPECT_DOUBLE_EQ(toss->Probability(toss->getMember(1)), 0.8);
}

TEST_F(AtomicModelTest, GroupsNestAndAreScheduledInTheirPlace) {
  Activity& first = model_.activity("first").deterministic(1).firesInGroup({}, [] {});
  Activity& second = model_.activity("second").deterministic(1).firesInGroup({}, [] {});
  Activity& third = model_.activity("third").deterministic(1).firesInGroup({}, [] {});
  model_.activity("alone").deterministic(1).fires({}, [] {});
  auto& inner = model_.innerGroup<PostselectGroup>("inner", {&first, &second});
  model_.group<PreselectGroup>("outer", {&inner, &third});
  EXPECT_THAT(model_.actionNames(), ElementsAre("first", "second", "third", "alone"));
  EXPECT_THAT(model_.groupNames(), ElementsAre("alone", "outer"));
  EXPECT_EQ(first.GroupID, 1);
  EXPECT_EQ(second.GroupID, 1);
  EXPECT_EQ(third.GroupID, 1);
}

/// A hand-written activity with a cached mark pointer.
class HandWritten : public Activity {
 public:
  explicit HandWritten(Place& place) : place_(&place) {
    ActivityInitialize("hand", 0, Deterministic, RaceEnabled, 1, 1, false);
  }
  BaseActionClass* Fire() override {
    ++*mark_;
    return this;
  }
  void LinkVariables() override { place_->Register(&mark_); }

 private:
  Place* place_;
  short* mark_ = nullptr;
};

TEST_F(AtomicModelTest, AHandWrittenActivityHasItsArcsDrawnAndItsPointersLinked) {
  Activity& hand = model_.add(std::make_unique<HandWritten>(model_.b), {model_.a}, {model_.b});
  hand.Fire();
  EXPECT_EQ(model_.b.Mark(), 1);
  EXPECT_EQ(model_.b.getAffectingAction(0), &hand);
  EXPECT_EQ(model_.a.getEnabledAction(0), &hand);
}

TEST_F(AtomicModelTest, ArcsAreNamesPointersRangesAndSums) {
  const std::vector<Place*> places{&model_.a, &model_.b};
  Activity& all = model_.activity("all").deterministic(1).fires(Arcs(places) + Arcs{&model_.a}, [] {});
  EXPECT_EQ(all.getNumAffectedSVs(), 2);  // the third is there already
}

// Each word for a distribution draws what the sampler's operation of that name draws.

class DelayTest : public AtomicModelTest {
 protected:
  template <typename Builder, typename Draw>
  void expectSameDraws(const Builder& builder, Distribution type, Draw draw) {
    Activity& activity = builder.fires({}, [] {});
    EXPECT_EQ(activity.DistributionType, type);
    TheGenerator.RNG->srnd(4711);
    std::array<double, 5> drawn{};
    std::ranges::generate(drawn, [&activity] { return activity.SampleDistribution(); });
    TheGenerator.RNG->srnd(4711);
    for (const double one : drawn) {
      EXPECT_THAT(draw(*TheDistribution), DoubleEq(one)) << activity.ActionName;
    }
  }

  void SetUp() override {
    // The cursor of the default generator outlives a seed; the Tausworthe has none.
    delete TheDistribution->RNG;
    TheDistribution->RNG = new Tausworthe;
  }
};

TEST_F(DelayTest, EveryDistributionIsAWord) {
  using D = Distributions;
  const auto start = [this] { return model_.activity("x"); };
  expectSameDraws(start().exponential(2), Exponential, [](D& d) { return d.Exponential(2); });
  expectSameDraws(start().deterministic(2), Deterministic, [](D& d) { return d.Deterministic(2); });
  expectSameDraws(start().uniform(1, 3), Uniform, [](D& d) { return d.Uniform(1, 3); });
  expectSameDraws(start().triangular(1, 4, 2), Triangular, [](D& d) { return d.Triangular(1, 4, 2); });
  expectSameDraws(start().erlang(3, 2), Erlang, [](D& d) { return d.Erlang(3, 2); });
  expectSameDraws(start().weibull(1.5, 3), Weibull, [](D& d) { return d.Weibull(1.5, 3); });
  expectSameDraws(start().conditionalWeibull(1.5, 3, 0.5), ConditionalWeibull,
                  [](D& d) { return d.ConditionalWeibull(1.5, 3, 0.5); });
  expectSameDraws(start().normal(5, 2), Normal, [](D& d) { return d.Normal(5, 2); });
  expectSameDraws(start().lognormal(0.5, 0.25), Lognormal, [](D& d) { return d.Lognormal(0.5, 0.25); });
  expectSameDraws(start().gamma(2, 3), Gamma, [](D& d) { return d.Gamma(2, 3); });
  expectSameDraws(start().beta(2, 3), Beta, [](D& d) { return d.Beta(2, 3); });
  expectSameDraws(start().pareto(1, 3), Pareto, [](D& d) { return d.Pareto(1, 3); });
  expectSameDraws(start().geometric(0.25), Geometric, [](D& d) { return d.Geometric(0.25); });
  expectSameDraws(start().binomial(5, 0.25), Binomial, [](D& d) { return d.Binomial(5, 0.25); });
  expectSameDraws(start().negativeBinomial(2, 0.25), NegativeBinomial,
                  [](D& d) { return d.NegativeBinomial(2, 0.25); });
  expectSameDraws(start().hyperExponential({1, 0.25, 3, 0.75}), HyperExponential, [](D& d) {
    std::vector<double> numbers{1, 0.25, 3, 0.75};
    return d.HyperExponential(2, numbers.data());
  });
  expectSameDraws(start().hypoExponential({1, 3}), HypoExponential, [](D& d) {
    std::vector<double> numbers{1, 3};
    return d.HypoExponential(2, numbers.data());
  });
  expectSameDraws(start().delayedBy([] { return 1.0 + TheDistribution->Exponential(2); }), Proprietary,
                  [](D& d) { return 1.0 + d.Exponential(2); });
}

TEST_F(DelayTest, ParametersAreComputedForEachDrawAndToldOnDemand) {
  Activity& activity = model_.activity("x")
                           .uniform([this] { return model_.a.Mark(); }, [this] { return model_.a.Mark() + 1; })
                           .fires({}, [] {});
  EXPECT_EQ(activity.ReturnDistributionParameters()[0], 2.0);
  EXPECT_EQ(activity.ReturnDistributionParameters()[1], 3.0);
  model_.a.Mark() = 10;
  const double delay = activity.SampleDistribution();
  EXPECT_GE(delay, 10.0);
  EXPECT_LE(delay, 11.0);
  EXPECT_EQ(activity.Rate(), 0.0);
  EXPECT_EQ(model_.activity("y").exponential([this] { return model_.a.Mark(); }).fires({}, [] {}).Rate(), 10.0);
}

TEST_F(DelayTest, DelaysWithoutParametersOfTheirOwnTellNoneAndNoRate) {
  Activity& byFunction = model_.activity("x").delayedBy([] { return 1.0; }).fires({}, [] {});
  EXPECT_EQ(byFunction.ReturnDistributionParameters(), nullptr);
  EXPECT_EQ(byFunction.Rate(), 0.0);
  Activity& byPhases = model_.activity("y").hypoExponential({1, 3}).fires({}, [] {});
  EXPECT_EQ(byPhases.ReturnDistributionParameters()[1], 3.0);
  EXPECT_EQ(byPhases.Rate(), 0.0);
}

TEST_F(AtomicModelTest, AnArcToNoVariableEndsTheProcessAndIsNamed) {
  Place* nowhere = nullptr;
  EXPECT_EXIT(
      model_.activity("tick")
          .enabledBy({model_.a, nowhere}, [] { return true; })
          .exponential(1.0)
          .fires({model_.a}, [] {}),
      testing::ExitedWithCode(1),
      "^ERROR: model \"open\": enabling arc 2 of activity \"tick\" leads to no variable: its pointer is null\n$");
  EXPECT_EXIT(
      model_.activity("tick").enabledBy({model_.a}, [] { return true; }).exponential(1.0).fires({nowhere}, [] {}),
      testing::ExitedWithCode(1),
      "^ERROR: model \"open\": affecting arc 1 of activity \"tick\" leads to no variable: its pointer is null\n$");
}

}  // namespace
