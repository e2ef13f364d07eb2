#include "Statistics/StoppingRule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "Noise.h"

namespace controller {
namespace {

using Unit = std::vector<std::vector<double>>;  // of each variable, its observations

constexpr Goal kOnePercent{
    .precision = 0.01, .isRelative = true, .confidence = 0.95, .leastBatches = 100, .greatestBatches = 0};

void add(StoppingRule& rule, const Unit& unit) {
  const std::vector<std::span<const double>> spans(unit.begin(), unit.end());
  rule.addUnit(spans);
}

/// Adds the same observations of one variable as a unit, over and over; returns the verdict of each checkpoint until it is
/// not to go on.
std::vector<Verdict> verdictsOf(StoppingRule& rule, const std::vector<double>& unit, std::size_t mostUnits) {
  std::vector<Verdict> verdicts;
  do {
    add(rule, {unit});
    verdicts.push_back(rule.checkpoint());
  } while (verdicts.back() == Verdict::GoOn && verdicts.size() < mostUnits);
  return verdicts;
}

std::vector<double> byTurns(double a, double b, std::size_t count) {
  std::vector<double> values(count, a);
  for (std::size_t at = 1; at < count; at += 2) {
    values[at] = b;
  }
  return values;
}

TEST(StoppingRuleTest, StopsAtTheSecondCheckpointInARowThatIsPrecise) {
  // 9 and 11 by turns: mean 10, standard error 1 / sqrt(n - 1). Wanted: 10 * 0.01 / 1.01 = 0.0990. At 300 the half-width
  // is 1.968 / sqrt(299) = 0.114, at 400 it is 1.966 / sqrt(399) = 0.0984.
  StoppingRule rule(kOnePercent, {"x"});
  const std::vector<Verdict> verdicts = verdictsOf(rule, byTurns(9, 11, 100), 10);
  EXPECT_EQ(verdicts, (std::vector{Verdict::GoOn, Verdict::GoOn, Verdict::GoOn, Verdict::GoOn, Verdict::Reached}));
  EXPECT_EQ(rule.word(), "1 variable known to 1 % of the mean at 95 % confidence after 500 batches");
  EXPECT_EQ(rule.batchesLeft(), 0);
}

TEST(StoppingRuleTest, SaysWhatItWaitsFor) {
  StoppingRule rule(
      {.precision = 0.01, .isRelative = true, .confidence = 0.95, .leastBatches = 200, .greatestBatches = 0}, {"x"});
  const std::vector<double> unit = byTurns(9, 11, 100);
  EXPECT_EQ(rule.word(), "waits: \"x\" has 0 of at least 200 observations");
  EXPECT_EQ(rule.batchesLeft(), -1);
  verdictsOf(rule, unit, 1);
  EXPECT_EQ(rule.word(), "waits: \"x\" has 100 of at least 200 observations");
  verdictsOf(rule, unit, 2);
  EXPECT_EQ(rule.word(), "waits: \"x\" has mean 10 and half-width 0.114, wanted 0.099");
  // 300 ((1.9679 / sqrt(299) / 0.0990099)^2 - 1) = 96.4
  EXPECT_EQ(rule.batchesLeft(), 97);
  verdictsOf(rule, unit, 1);
  EXPECT_EQ(rule.word(), "precise at one checkpoint, waits for a second one");
}

TEST(StoppingRuleTest, DoesNotStopBeforeTheLeastNumberOfBatches) {
  Goal goal = kOnePercent;
  goal.leastBatches = 1000;
  StoppingRule rule(goal, {"x"});
  // Precise from 400 on, but it counts from 1000 on, and twice.
  EXPECT_EQ(verdictsOf(rule, byTurns(9, 11, 100), 100).size(), 11U);
}

TEST(StoppingRuleTest, AnImpreciseCheckpointBetweenTwoPreciseOnesStartsAfresh) {
  Goal goal = kOnePercent;
  goal.isRelative = false;
  goal.precision = 0.5;
  goal.leastBatches = 10;
  StoppingRule rule(goal, {"x"});
  add(rule, {byTurns(9.9, 10.1, 20)});
  EXPECT_EQ(rule.checkpoint(), Verdict::GoOn);
  add(rule, {byTurns(0, 20, 20)});  // a standard deviation of some 7 in 40: far from precise
  EXPECT_EQ(rule.checkpoint(), Verdict::GoOn);
  add(rule, {byTurns(9.9, 10.1, 4000)});  // 0.7 in 4040: precise
  EXPECT_EQ(rule.checkpoint(), Verdict::GoOn);
  add(rule, {byTurns(9.9, 10.1, 10)});
  EXPECT_EQ(rule.checkpoint(), Verdict::Reached);
  EXPECT_EQ(rule.word(), "1 variable known to 0.5 at 95 % confidence after 4050 batches");
}

TEST(StoppingRuleTest, ACheckpointWithoutNewObservationsIsNoSecondOne) {
  StoppingRule rule(kOnePercent, {"x"});
  add(rule, {byTurns(9, 11, 1000)});
  EXPECT_EQ(rule.checkpoint(), Verdict::GoOn);
  EXPECT_EQ(rule.checkpoint(), Verdict::GoOn);
  add(rule, {byTurns(9, 11, 2)});
  EXPECT_EQ(rule.checkpoint(), Verdict::Reached);
}

TEST(StoppingRuleTest, StopsAtTheGreatestNumberOfBatches) {
  Goal goal = kOnePercent;
  goal.greatestBatches = 300;
  StoppingRule rule(goal, {"x"});
  const std::vector<Verdict> verdicts = verdictsOf(rule, byTurns(9, 11, 100), 10);
  EXPECT_EQ(verdicts, (std::vector{Verdict::GoOn, Verdict::GoOn, Verdict::BatchesExhausted}));
  EXPECT_EQ(rule.word(),
            "stopped at 300 batches, the greatest number: \"x\" has mean 10 and half-width 0.114, wanted 0.099");
}

TEST(StoppingRuleTest, AtTheGreatestNumberBeingPreciseOnceIsEnough) {
  Goal goal = kOnePercent;
  goal.greatestBatches = 400;
  StoppingRule rule(goal, {"x"});
  EXPECT_EQ(verdictsOf(rule, byTurns(9, 11, 100), 10).back(), Verdict::Reached);
}

TEST(StoppingRuleTest, BonferroniSharesTheConfidenceAmongTheVariables) {
  StoppingRule rule(kOnePercent, {"x", "y"});
  EXPECT_DOUBLE_EQ(shareOfConfidence(0.95, 1), 0.95);
  EXPECT_DOUBLE_EQ(shareOfConfidence(0.90, 5), 0.98);
  const std::vector<double> x{2, 4, 4, 4, 5, 5, 7, 9};
  add(rule, {x, x});
  EXPECT_DOUBLE_EQ(rule.variableConfidence(), 0.975);
  // t of 7 degrees of freedom with 0.0125 above it: 2.84124.
  EXPECT_NEAR(rule.estimate(1).halfWidth, 2.84124 * std::sqrt(32.0 / 7.0 / 8.0), 1e-5);
}

TEST(StoppingRuleTest, WaitsForTheWorstVariable) {
  StoppingRule rule(kOnePercent, {"x", "y", "z"});
  std::size_t units = 0;
  do {
    add(rule, {byTurns(9, 11, 100), byTurns(8, 12, 100), byTurns(9.5, 10.5, 100)});
    ++units;
    const Verdict verdict = rule.checkpoint();
    EXPECT_EQ(rule.worstVariable(), 1U);
    if (verdict != Verdict::GoOn) {
      break;
    }
  } while (units < 100);
  EXPECT_EQ(rule.verdict(), Verdict::Reached);
  // y: 2 * 2.394 / sqrt(n) <= 0.0990, of the normal quantile of 1 - 0.05 / 6, is at 2339: 2400 and one more.
  EXPECT_EQ(units, 25U);
  EXPECT_EQ(rule.word(), "3 variables known to 1 % of the mean at 95 % confidence after 2500 batches");
  EXPECT_NEAR(rule.wantedHalfWidth(1), 0.0990099, 1e-7);
}

TEST(StoppingRuleTest, RelativePrecisionHoldsForTheTrueMeanAtEitherEndOfTheInterval) {
  StoppingRule rule(
      {.precision = 0.25, .isRelative = true, .confidence = 0.95, .leastBatches = 2, .greatestBatches = 0}, {"x"});
  add(rule, {{-9, -11}});
  const double wanted = rule.wantedHalfWidth(0);
  EXPECT_DOUBLE_EQ(wanted, 2.0);            // 10 * 0.25 / 1.25
  EXPECT_LE(wanted, 0.25 * (10 - wanted));  // even if the true mean is the end nearer to 0
}

TEST(StoppingRuleTest, ZerosAloneEndWithAPlainWord) {
  // Interval [0, p] with p about 3.69 / n: 1 / 0.0099^2 = 10 201 times as many batches would be needed if the mean were
  // p; that is 1e9 from n = 98 030 on.
  StoppingRule rule(kOnePercent, {"x"});
  const std::vector<Verdict> verdicts = verdictsOf(rule, std::vector<double>(1000, 0.0), 1000);
  EXPECT_EQ(verdicts.size(), 99U);
  EXPECT_EQ(verdicts.back(), Verdict::CannotReach);
  EXPECT_EQ(
      rule.word(),
      "\"x\" can't become precise: all 99000 observations are 0, and nothing is precise relative to a mean of 0; an "
      "absolute precision has a meaning");
}

TEST(StoppingRuleTest, ZerosAloneHaveAnAbsolutePrecision) {
  // 1 - 0.025^(1/n) <= 0.01 from n = 368 on.
  StoppingRule rule(
      {.precision = 0.01, .isRelative = false, .confidence = 0.95, .leastBatches = 2, .greatestBatches = 0}, {"x"});
  const std::vector<Verdict> verdicts = verdictsOf(rule, std::vector<double>(100, 0.0), 10);
  EXPECT_EQ(verdicts.size(), 5U);
  EXPECT_EQ(verdicts.back(), Verdict::Reached);
}

TEST(StoppingRuleTest, AMeanOfZeroEndsWithAPlainWord) {
  StoppingRule rule(kOnePercent, {"x"});
  const std::vector<Verdict> verdicts = verdictsOf(rule, byTurns(-1, 1, 10'000), 1000);
  EXPECT_EQ(verdicts.size(), 10U);  // 100 000 * 10 201 batches are more than 1e9, 90 000 * 10 201 are not
  EXPECT_EQ(verdicts.back(), Verdict::CannotReach);
  EXPECT_EQ(
      rule.word(),
      "\"x\" can't become precise: after 100000 observations its mean may still be 0 (-0.0062 to 0.0062), and nothing "
      "is precise relative to that; an absolute precision has a meaning");
}

TEST(StoppingRuleTest, ASmallMeanThatIsNotZeroIsNotGivenUp) {
  StoppingRule rule({.precision = 0.1, .isRelative = true, .confidence = 0.95, .leastBatches = 2, .greatestBatches = 0},
                    {"x"});
  // Mean 0.1, deviation 1: (1.96 / 0.1 / 0.0909)^2 = 46 500.
  const std::vector<Verdict> verdicts = verdictsOf(rule, byTurns(-0.9, 1.1, 1000), 1000);
  EXPECT_EQ(verdicts.back(), Verdict::Reached);
  EXPECT_EQ(verdicts.size(), 48U);
}

TEST(StoppingRuleTest, EqualObservationsEndOnceAnotherValueWouldBeRare) {
  // -ln(0.025) / n <= 0.0099 from n = 373 on.
  StoppingRule rule(kOnePercent, {"x"});
  const std::vector<Verdict> verdicts = verdictsOf(rule, std::vector<double>(100, 3.5), 100);
  EXPECT_EQ(verdicts.size(), 5U);
  EXPECT_EQ(verdicts.back(), Verdict::Reached);
  EXPECT_EQ(rule.word(),
            "1 variable known to 1 % of the mean at 95 % confidence after 500 batches; \"x\" is 3.5 in all of them");
}

TEST(StoppingRuleTest, AnObservationThatIsNoNumberEndsAtOnce) {
  for (const double rubbish : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    StoppingRule rule(kOnePercent, {"x"});
    add(rule, {{1.0, 2.0, rubbish}});
    EXPECT_EQ(rule.checkpoint(), Verdict::CannotReach);
    EXPECT_EQ(rule.word(), "\"x\" can't become precise: its observation 3 is no finite number");
  }
}

TEST(StoppingRuleTest, AVarianceBeyondTheRangeOfNumbersEnds) {
  StoppingRule rule(kOnePercent, {"x"});
  EXPECT_EQ(verdictsOf(rule, byTurns(1e200, 2e200, 100), 10).back(), Verdict::CannotReach);
  EXPECT_EQ(rule.word(), "\"x\" can't become precise: its variance is beyond the range of numbers");
}

TEST(StoppingRuleTest, AVariableThatIsGivenUpWaitsForTheOthers) {
  StoppingRule rule(kOnePercent, {"bad", "good", "worse"});
  const double rubbish = std::numeric_limits<double>::quiet_NaN();
  std::size_t units = 0;
  Verdict verdict = Verdict::GoOn;
  while (verdict == Verdict::GoOn && units < 100) {
    add(rule, {std::vector<double>(100, rubbish), byTurns(9, 11, 100), std::vector<double>(100, rubbish)});
    verdict = rule.checkpoint();
    ++units;
    EXPECT_EQ(rule.worstVariable(), 1U);
  }
  EXPECT_EQ(verdict, Verdict::CannotReach);
  EXPECT_EQ(units, 6U);  // (2.394 / 0.0990)^2 = 585
  EXPECT_EQ(rule.word(),
            "\"bad\" can't become precise: its observation 1 is no finite number; so it is with 1 variable more");
}

TEST(StoppingRuleTest, AVariableWithoutObservationsIsLeftOut) {
  StoppingRule rule(kOnePercent, {"absent", "x"});
  std::vector<Verdict> verdicts;
  for (int unit = 0; unit < 5; ++unit) {
    add(rule, {{}, byTurns(9, 11, 100)});
    verdicts.push_back(rule.checkpoint());
  }
  EXPECT_EQ(verdicts.back(), Verdict::Reached);
  EXPECT_EQ(verdicts[3], Verdict::GoOn);
  EXPECT_EQ(rule.worstVariable(), 1U);
  EXPECT_DOUBLE_EQ(rule.variableConfidence(), 0.95);
  EXPECT_EQ(rule.wordOf(0), "has no observations");
  EXPECT_EQ(rule.word(), "1 variable known to 1 % of the mean at 95 % confidence after 500 batches");
}

TEST(StoppingRuleTest, TheSlowestVariableCountsTheBatches) {
  StoppingRule rule(kOnePercent, {"fast", "slow"});
  EXPECT_EQ(rule.batches(), 0);
  add(rule, {byTurns(9, 11, 1000), byTurns(9, 11, 90)});
  EXPECT_EQ(rule.batches(), 90);
  rule.checkpoint();
  EXPECT_EQ(rule.wordOf(1), "has 90 of at least 100 observations");
}

TEST(StoppingRuleTest, TheSameUnitsInAnyPiecesGiveTheSameVerdictsAndBits) {
  // Three variables, units of 50, cut into pieces at places that differ from variable to variable and from run to run.
  const Goal goal{.precision = 0.05, .isRelative = true, .confidence = 0.95, .leastBatches = 200, .greatestBatches = 0};
  constexpr std::size_t kUnits = 60;
  constexpr std::size_t kLength = 50;
  support::Noise noise(11);
  std::vector<Unit> units(kUnits, Unit(3));
  for (Unit& unit : units) {
    for (std::size_t at = 0; at < kLength; ++at) {
      unit[0].push_back(-std::log(1.0 - noise.uniform()));
      unit[1].push_back(noise.uniform() < 0.7 ? 1.0 : 0.0);
      unit[2].push_back(5.0 + noise.normal());
    }
  }
  const auto run = [&](const Goal& wanted, std::size_t pieces) {
    StoppingRule rule(wanted, {"exponential", "binary", "normal"});
    std::vector<Verdict> verdicts;
    std::vector<std::uint64_t> bits;
    support::Noise cuts(pieces);
    for (const Unit& unit : units) {
      std::vector<std::size_t> from(3, 0);
      for (std::size_t piece = 1; piece <= pieces; ++piece) {
        std::vector<std::span<const double>> spans;
        for (std::size_t variable = 0; variable < 3; ++variable) {
          const auto further = static_cast<std::size_t>(cuts.uniform() * 20.0);
          const std::size_t to = piece == pieces ? kLength : std::min(kLength, from[variable] + further);
          spans.push_back(std::span(unit[variable]).subspan(from[variable], to - from[variable]));
          from[variable] = to;
        }
        rule.addUnit(spans);
      }
      verdicts.push_back(rule.checkpoint());
      for (std::size_t variable = 0; variable < 3; ++variable) {
        bits.push_back(std::bit_cast<std::uint64_t>(rule.estimate(variable).halfWidth));
      }
    }
    return std::pair(verdicts, bits);
  };
  const auto whole = run(goal, 1);
  EXPECT_EQ(std::count(whole.first.begin(), whole.first.end(), Verdict::GoOn) > 3, true);
  EXPECT_EQ(whole.first.back(), Verdict::Reached);
  for (const std::size_t pieces : {2U, 3U, 7U, 40U}) {
    EXPECT_EQ(run(goal, pieces), whole) << pieces;
  }
}

TEST(StoppingRuleTest, RefusesGoalsThatHaveNoMeaning) {
  const auto refusal = [](Goal goal, std::vector<std::string> names = {"x"}) -> std::string {
    try {
      const StoppingRule rule(goal, std::move(names));
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(refusal({.precision = 0.0}), "precision 0: it has to be above 0");
  EXPECT_EQ(refusal({.precision = std::nan("")}), "precision nan: it has to be above 0");
  EXPECT_EQ(refusal({.precision = 1.0}), "relative precision 1: it has to be below 1");
  EXPECT_EQ(refusal({.precision = 1.0, .isRelative = false}), "");
  EXPECT_EQ(refusal({.confidence = 1.0}), "confidence 1: it has to be above 0 and below 1");
  EXPECT_EQ(refusal({.confidence = -0.5}), "confidence -0.5: it has to be above 0 and below 1");
  EXPECT_EQ(refusal({.greatestBatches = -1}), "greatest number of batches -1: it has to be 0 or more");
  EXPECT_EQ(refusal({}, {}), "no variables to estimate");
  EXPECT_EQ(refusal({}), "");
}

}  // namespace
}  // namespace controller
