#include "Simulator/Distributions.h"

#include <cmath>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Simulator/ScriptedGenerator.h"
#include "gtest/gtest.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

using Sample = std::function<double(Distributions&)>;

/// A sampler whose variates are told.
class ScriptedSampler : public Distributions {
 public:
  explicit ScriptedSampler(std::vector<double> variates) : script_(new ScriptedGenerator(std::move(variates))) {
    delete RNG;
    RNG = script_;
  }
  [[nodiscard]] std::size_t draws() const { return script_->draws(); }

 private:
  ScriptedGenerator* script_;  // borrowed from RNG
};

// ---- What comes out of given variates, and how many are drawn. ----

/// Values within a few units in the last place: an argument such as e^-4 is rounded before its logarithm is taken.
struct ExactCase {
  const char* name;
  Sample sample;
  std::vector<double> variates;  // all of them are drawn
  double expected;
};

void PrintTo(const ExactCase& tested, std::ostream* out) {
  *out << tested.name;
}

class ExactSampleTest : public testing::TestWithParam<ExactCase> {};

TEST_P(ExactSampleTest, GivesTheValueAndDrawsAllVariatesAndNoMore) {
  ScriptedSampler sampler(GetParam().variates);
  const double value = GetParam().sample(sampler);
  if (std::isnan(GetParam().expected)) {
    EXPECT_TRUE(std::isnan(value)) << value;
  } else {
    EXPECT_DOUBLE_EQ(value, GetParam().expected);
  }
  EXPECT_EQ(sampler.draws(), GetParam().variates.size());
}

double kHyper[] = {0.5, 1, 2, 3};           // rate 0.5 with weight 1, rate 2 with weight 3
double kHyperBadUnchosen[] = {0, 1, 2, 3};  // the first rate is bad
double kHyperNanWeight[] = {0.5, kNan, 2, 3};
double kTwoRates[] = {2, 4};

const double kLn2 = 0.69314718055994530942;
const double kEMinus1 = 0.36787944117144232160;
const double kEMinus3 = 0.04978706836786394298;
const double kEMinus4 = 0.01831563888873418029;

std::string nameOf(const testing::TestParamInfo<ExactCase>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Simple, ExactSampleTest,
    testing::Values(
        ExactCase{"Exponential", [](auto& d) { return d.Exponential(4); }, {0.5}, kLn2 / 4},
        ExactCase{"ExponentialOfOne", [](auto& d) { return d.Exponential(4); }, {1.0}, 0},
        ExactCase{"ExponentialOfZeroIsInfinite", [](auto& d) { return d.Exponential(4); }, {0.0}, kInfinity},
        ExactCase{"Deterministic", [](auto& d) { return d.Deterministic(0.1); }, {}, 0.1},
        ExactCase{"GeometricBelowTheFirstStep", [](auto& d) { return d.Geometric(0.5); }, {0.51}, 0},
        ExactCase{"GeometricOneFailure", [](auto& d) { return d.Geometric(0.5); }, {0.3}, 1},
        ExactCase{"GeometricNineFailures", [](auto& d) { return d.Geometric(0.5); }, {0.001}, 9},
        ExactCase{"Weibull", [](auto& d) { return d.Weibull(2, 3); }, {kEMinus4}, 6},
        ExactCase{"WeibullOfANegativeShape", [](auto& d) { return d.Weibull(-1, 2); }, {kEMinus4}, 0.5},
        // z = e^-1, U z = e^-4, and 3 * sqrt(4) less the life so far
        ExactCase{"ConditionalWeibull", [](auto& d) { return d.ConditionalWeibull(2, 3, 3); }, {kEMinus3}, 3},
        ExactCase{
            "ConditionalWeibullAtZeroIsAWeibull", [](auto& d) { return d.ConditionalWeibull(2, 3, 0); }, {kEMinus4}, 6},
        ExactCase{"Uniform", [](auto& d) { return d.Uniform(2, 10); }, {0.25}, 4},
        ExactCase{"UniformOfOnePointDraws", [](auto& d) { return d.Uniform(3, 3); }, {0.7}, 3},
        ExactCase{"Pareto", [](auto& d) { return d.Pareto(2, 3); }, {0.125}, 4}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(Triangular, ExactSampleTest,
                         testing::Values(
                             // mode at 1/4 of the width
                             ExactCase{"BelowTheMode", [](auto& d) { return d.Triangular(0, 4, 1); }, {0.0625}, 0.5},
                             ExactCase{"AtTheMode", [](auto& d) { return d.Triangular(0, 4, 1); }, {0.25}, 1},
                             ExactCase{"AboveTheMode", [](auto& d) { return d.Triangular(1, 5, 2); }, {0.8125}, 3.5},
                             ExactCase{"ModeAtTheUpperEnd", [](auto& d) { return d.Triangular(0, 2, 2); }, {0.25}, 1},
                             ExactCase{"ModeAtTheLowerEnd", [](auto& d) { return d.Triangular(0, 2, 0); }, {0.75}, 1},
                             ExactCase{"APointDrawsNothing", [](auto& d) { return d.Triangular(2, 2, 2); }, {}, 2}),
                         [](const auto& info) { return std::string("Triangular") + info.param.name; });

// U1 = 3/4 and U2 = 1/2 make V1 = 1/2, W = 1/4 and Y = sqrt(8 ln 4) = 4 sqrt(ln 2).
const double kPolarFactor = 4 * std::sqrt(kLn2);

INSTANTIATE_TEST_SUITE_P(
    Polar, ExactSampleTest,
    testing::Values(
        ExactCase{"Normal", [](auto& d) { return d.Normal(1, 4); }, {0.75, 0.5}, 1 + kPolarFactor},
        ExactCase{"NormalUsesTheFirstOfThePair", [](auto& d) { return d.Normal(5, 1); }, {0.5, 0.75}, 5},
        ExactCase{"NormalRedrawsOutsideTheCircle",
                  [](auto& d) { return d.Normal(1, 4); },
                  {0.99, 0.99, 0.01, 0.9, 0.75, 0.5},
                  1 + kPolarFactor},
        ExactCase{"NormalTakesAPointOnTheCircle", [](auto& d) { return d.Normal(7, 4); }, {1.0, 0.5}, 7},
        ExactCase{"NormalRedrawsANegativeValue",
                  [](auto& d) { return d.Normal(1, 4); },
                  {0.25, 0.5, 0.75, 0.5},
                  1 + kPolarFactor},
        ExactCase{"NormalTakesZero", [](auto& d) { return d.Normal(0, 0); }, {0.25, 0.5}, 0},
        ExactCase{"NormalOfTheCentreIsNoNumber", [](auto& d) { return d.Normal(1, 4); }, {0.5, 0.5}, kNan},
        ExactCase{"Lognormal", [](auto& d) { return d.Lognormal(0.5, 4); }, {0.75, 0.5}, std::exp(kPolarFactor + 0.5)},
        ExactCase{"LognormalTakesANegativeExponent",
                  [](auto& d) { return d.Lognormal(0.5, 4); },
                  {0.25, 0.5},
                  std::exp(0.5 - kPolarFactor)},
        ExactCase{"LognormalRedrawsOutsideTheCircle",
                  [](auto& d) { return d.Lognormal(0.5, 4); },
                  {0.99, 0.99, 0.75, 0.5},
                  std::exp(kPolarFactor + 0.5)},
        ExactCase{"LognormalOfTheCentreIsNoNumber", [](auto& d) { return d.Lognormal(1, 4); }, {0.5, 0.5}, kNan}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Stages, ExactSampleTest,
    testing::Values(
        // -6/3 * ln 2^-6
        ExactCase{"Erlang", [](auto& d) { return d.Erlang(3, 6); }, {0.5, 0.25, 0.125}, 12 * kLn2},
        ExactCase{"ErlangOfOneStageIsAnExponential", [](auto& d) { return d.Erlang(1, 3); }, {0.5}, 3 * kLn2},
        ExactCase{"HypoExponential", [](auto& d) { return d.HypoExponential(2, kTwoRates); }, {0.5, 0.25}, kLn2},
        ExactCase{"HypoExponentialOfNoPhases", [](auto& d) { return d.HypoExponential(0, nullptr); }, {}, 0},
        ExactCase{"HypoExponentialOfLessThanNoPhases", [](auto& d) { return d.HypoExponential(-1, nullptr); }, {}, 0},
        ExactCase{
            "HyperExponentialFirstPhase", [](auto& d) { return d.HyperExponential(2, kHyper); }, {0.24, 0.5}, 2 * kLn2},
        ExactCase{"HyperExponentialAtTheWeightsEnd",
                  [](auto& d) { return d.HyperExponential(2, kHyper); },
                  {0.25, 0.5},
                  kLn2 / 2},
        ExactCase{
            "HyperExponentialLastPhase", [](auto& d) { return d.HyperExponential(2, kHyper); }, {0.999, 0.5}, kLn2 / 2},
        ExactCase{"HyperExponentialOfAVariateOfOneStaysWithTheLastPhase",
                  [](auto& d) { return d.HyperExponential(2, kHyper); },
                  {1.0, 0.5},
                  kLn2 / 2},
        ExactCase{"HyperExponentialChecksTheChosenRateAlone",
                  [](auto& d) { return d.HyperExponential(2, kHyperBadUnchosen); },
                  {0.5, 0.5},
                  kLn2 / 2},
        ExactCase{"HyperExponentialOfOnePhase",
                  [](auto& d) { return d.HyperExponential(1, kHyper); },
                  {0.999, 0.5},
                  2 * kLn2}),
    nameOf);

// alpha = 2: a1 = 1/sqrt 3, b1 = 2 - ln 4 = 0.6137, q1 = 2 + sqrt 3 = 3.7321, d1 = 2.5041.
//   U1 = 1/2:  V1 = 0, Y = 2, W = 0.6137 - 2 = -ln 4, Z = U2 / 4. The first test is 1.1178 >= 1.125 U2.
//   U1 = 0.9:  V1 = ln 9 / sqrt 3 = 1.2686, Y = 2 * 9^(1/sqrt 3) = 7.1116, W = -1.7635, Z = 0.81 U2.
INSTANTIATE_TEST_SUITE_P(
    GammaAboveOne, ExactSampleTest,
    testing::Values(ExactCase{"FirstTest", [](auto& d) { return d.Gamma(2, 3); }, {0.5, 0.5}, 6},
                    ExactCase{"FirstTestOffTheMiddle",
                              [](auto& d) { return d.Gamma(2, 3); },
                              {0.9, 0.1},
                              6 * std::pow(9, 1 / std::sqrt(3.0))},
                    // 1.1178 < 1.1239, but -1.38629 >= ln 0.24975 = -1.38729
                    ExactCase{"SecondTest", [](auto& d) { return d.Gamma(2, 3); }, {0.5, 0.999}, 6},
                    // 0.7406 < 3.6086, and -1.7635 < ln 0.8019 = -0.2208
                    ExactCase{"Redraw", [](auto& d) { return d.Gamma(2, 3); }, {0.9, 0.99, 0.9, 0.99, 0.5, 0.5}, 6},
                    // a variate of 1 makes W no number, and both tests fail
                    ExactCase{
                        "RedrawAfterAVariateOfOne", [](auto& d) { return d.Gamma(2, 3); }, {1.0, 0.5, 0.5, 0.5}, 6},
                    ExactCase{"AVariateOfZeroGivesZero", [](auto& d) { return d.Gamma(2, 3); }, {0.0, 0.5}, 0}),
    [](const auto& info) { return std::string("GammaAboveOne") + info.param.name; });

// alpha = 1/2: b1 = 1 + 1/(2e) = 1.18394.
//   U1 = 1/2:  P = 0.59197, Y = P^2, and 1/sqrt Y >= 1 passes whatever U2.
//   U1 = 0.9:  b1 - P = 0.118394, Y = -ln 0.236788 = 1.44059, 1/sqrt Y = 0.8332.
const double kGammaB1 = 1 + 0.5 / 2.71828182845904523536;

INSTANTIATE_TEST_SUITE_P(
    GammaBelowOne, ExactSampleTest,
    testing::Values(
        ExactCase{"LowerPiece", [](auto& d) { return d.Gamma(0.5, 3); }, {0.5, 0.5}, 0.75 * kGammaB1* kGammaB1},
        // exp(-Y) = 0.70 would refuse it
        ExactCase{"LowerPiecePassesThePowerTest",
                  [](auto& d) { return d.Gamma(0.5, 3); },
                  {0.5, 1.0},
                  0.75 * kGammaB1* kGammaB1},
        ExactCase{"UpperPiece", [](auto& d) { return d.Gamma(0.5, 3); }, {0.9, 0.83}, -3 * std::log(0.2 * kGammaB1)},
        ExactCase{"UpperPieceRedraws",
                  [](auto& d) { return d.Gamma(0.5, 3); },
                  {0.9, 0.84, 0.9, 0.99, 0.5, 0.5},
                  0.75 * kGammaB1* kGammaB1}),
    [](const auto& info) { return std::string("GammaBelowOne") + info.param.name; });

INSTANTIATE_TEST_SUITE_P(
    GammaOfOneAndBeta, ExactSampleTest,
    testing::Values(
        ExactCase{"GammaOfOne", [](auto& d) { return d.Gamma(1, 3); }, {0.5}, 3 * kLn2},
        ExactCase{"BetaOfExponentials", [](auto& d) { return d.Beta(1, 1); }, {kEMinus1, kEMinus3}, 0.25},
        // 2.5 and 1.5: the first survives the second, which makes use of the same scratch
        ExactCase{"BetaOfTwoAboveOne", [](auto& d) { return d.Beta(2.5, 1.5); }, {0.5, 0.5, 0.5, 0.5}, 0.625},
        ExactCase{"BetaDrawsTheFirstParameterFirst", [](auto& d) { return d.Beta(1, 3); }, {kEMinus1, 0.5, 0.5}, 0.25}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Counts, ExactSampleTest,
    testing::Values(
        ExactCase{
            "BinomialCountsAVariateEqualToP", [](auto& d) { return d.Binomial(4, 0.5); }, {0.5, 0.6, 0.4, 0.51}, 2},
        ExactCase{"BinomialOfCertainSuccess", [](auto& d) { return d.Binomial(5, 1); }, {0.0, 0.2, 1.0, 0.9, 0.999}, 5},
        ExactCase{"BinomialOfNoSuccess", [](auto& d) { return d.Binomial(3, 0); }, {0.1, 0.0, 1.0}, 1},
        ExactCase{"BinomialOfNoTrials", [](auto& d) { return d.Binomial(0, 0.5); }, {}, 0},
        ExactCase{"BinomialOfLessThanNoTrials", [](auto& d) { return d.Binomial(-3, 0.5); }, {}, 0},
        ExactCase{"BinomialOfTheLeastInt", [](auto& d) { return d.Binomial(-2147483648.0, 0.5); }, {}, 0},
        ExactCase{"NegativeBinomial", [](auto& d) { return d.NegativeBinomial(2, 0.5); }, {0.3, 0.1}, 4},
        ExactCase{"NegativeBinomialOfNoSuccesses", [](auto& d) { return d.NegativeBinomial(0, 0.5); }, {}, 0},
        ExactCase{"NegativeBinomialOfLessThanNone", [](auto& d) { return d.NegativeBinomial(-1, 0.5); }, {}, 0},
        // ln 0.5 divided by ln 1 = 0
        ExactCase{"NegativeBinomialPassesPZero", [](auto& d) { return d.NegativeBinomial(1, 0); }, {0.5}, -kInfinity}),
    nameOf);

// A parameter that is not a number passes the ordered checks.
INSTANTIATE_TEST_SUITE_P(
    NotANumber, ExactSampleTest,
    testing::Values(
        ExactCase{"Exponential", [](auto& d) { return d.Exponential(kNan); }, {0.5}, kNan},
        ExactCase{"Deterministic", [](auto& d) { return d.Deterministic(kNan); }, {}, kNan},
        ExactCase{"Geometric", [](auto& d) { return d.Geometric(kNan); }, {0.5}, kNan},
        ExactCase{"WeibullAlpha", [](auto& d) { return d.Weibull(kNan, 1); }, {0.5}, kNan},
        ExactCase{"WeibullBeta", [](auto& d) { return d.Weibull(1, kNan); }, {0.5}, kNan},
        ExactCase{"ConditionalWeibullAlpha", [](auto& d) { return d.ConditionalWeibull(kNan, 1, 2); }, {0.5}, kNan},
        ExactCase{"ConditionalWeibullBeta", [](auto& d) { return d.ConditionalWeibull(1, kNan, 1); }, {0.5}, kNan},
        ExactCase{"ConditionalWeibullTime", [](auto& d) { return d.ConditionalWeibull(1, 1, kNan); }, {0.5}, kNan},
        ExactCase{"NormalMean", [](auto& d) { return d.Normal(kNan, 1); }, {0.25, 0.5}, kNan},
        ExactCase{"NormalVariance", [](auto& d) { return d.Normal(1, kNan); }, {0.25, 0.5}, kNan},
        ExactCase{"LognormalMu", [](auto& d) { return d.Lognormal(kNan, 1); }, {0.25, 0.5}, kNan},
        ExactCase{"LognormalAlpha", [](auto& d) { return d.Lognormal(1, kNan); }, {0.25, 0.5}, kNan},
        ExactCase{"ErlangBeta", [](auto& d) { return d.Erlang(1, kNan); }, {0.5}, kNan},
        ExactCase{"TriangularA", [](auto& d) { return d.Triangular(kNan, 2, 1); }, {0.5}, kNan},
        ExactCase{"TriangularB", [](auto& d) { return d.Triangular(0, kNan, 1); }, {0.5}, kNan},
        ExactCase{"TriangularC", [](auto& d) { return d.Triangular(0, 2, kNan); }, {0.5}, kNan},
        ExactCase{"GammaAlpha", [](auto& d) { return d.Gamma(kNan, 1); }, {}, kNan},
        ExactCase{"GammaBeta", [](auto& d) { return d.Gamma(2, kNan); }, {0.5, 0.5}, kNan},
        ExactCase{"Beta", [](auto& d) { return d.Beta(1, kNan); }, {0.5}, kNan},
        ExactCase{"UniformLower", [](auto& d) { return d.Uniform(kNan, 2); }, {0.5}, kNan},
        ExactCase{"UniformUpper", [](auto& d) { return d.Uniform(1, kNan); }, {0.5}, kNan},
        ExactCase{"BinomialP", [](auto& d) { return d.Binomial(2, kNan); }, {0.0, 1.0}, 0},
        ExactCase{"NegativeBinomialP", [](auto& d) { return d.NegativeBinomial(1, kNan); }, {0.5}, kNan},
        ExactCase{"HyperExponentialWeightKeepsTheFirstPhase",
                  [](auto& d) { return d.HyperExponential(2, kHyperNanWeight); },
                  {0.9, 0.5},
                  2 * kLn2},
        ExactCase{"ParetoLeast", [](auto& d) { return d.Pareto(kNan, 1); }, {0.5}, kNan},
        ExactCase{"ParetoShape", [](auto& d) { return d.Pareto(1, kNan); }, {0.5}, kNan}),
    [](const auto& info) { return std::string("NotANumber") + info.param.name; });

// ---- What is refused, with which text, and after how many draws. ----

struct RefusedCase {
  const char* name;
  Sample sample;
  const char* text;
  std::vector<double> variates = {};  // drawn before the refusal
};

void PrintTo(const RefusedCase& tested, std::ostream* out) {
  *out << tested.name;
}

class RefusedSampleTest : public testing::TestWithParam<RefusedCase> {};

using Scratch = std::vector<double>;

Scratch scratchOf(const Distributions& d) {
  return {d.U1, d.U2, d.V1, d.V2, d.P, d.W, d.X, d.Y, d.Z, d.a1, d.b1, d.d1, d.q1};
}

TEST_P(RefusedSampleTest, ThrowsTheTextAndLeavesTheScratchFieldsAlone) {
  ScriptedSampler sampler(GetParam().variates);
  sampler.U1 = sampler.V1 = sampler.W = sampler.Y = sampler.d1 = 17;
  const Scratch before = scratchOf(sampler);
  std::string thrown;
  try {
    (void)GetParam().sample(sampler);
  } catch (const std::string& text) {
    thrown = text;
  }
  EXPECT_EQ(thrown, GetParam().text);
  EXPECT_EQ(sampler.draws(), GetParam().variates.size());
  EXPECT_EQ(scratchOf(sampler), before);
}

double kZeroWeight[] = {1, 1, 1, 0};
double kNegativeWeights[] = {1, -1, 1, -1};
double kZeroRates[] = {0, 1, -1, 1};
double kManyPhases[40];  // filled where it is used: weight 1 but for phase 11
double kSecondRateBad[] = {1, 0};

double* manyPhases() {
  for (int phase = 0; phase < 20; ++phase) {
    kManyPhases[2 * phase] = 1;
    kManyPhases[2 * phase + 1] = phase == 11 ? 0 : 1;
  }
  return kManyPhases;
}

std::string refusedNameOf(const testing::TestParamInfo<RefusedCase>& info) {
  return info.param.name;
}

constexpr const char* kBadRate = "INVALID_DIST_PARAMS: rate is non-positive";
constexpr const char* kBadValue = "INVALID_DIST_PARAMS: value is non-positive";
constexpr const char* kBadGeometricP = "INVALID_DIST_PARAMS: p is not in the range (0,1)";
constexpr const char* kBadBeta = "INVALID_DIST_PARAMS: Beta is non-positive";
constexpr const char* kZeroAlpha = "INVALID_DIST_PARAMS: Alpha is zero";
constexpr const char* kBadVariance = "INVALID_DIST_PARAMS: variance is negative";
constexpr const char* kBadAlphaSquared = "INVALID_DIST_PARAMS: Alpha_Squared is negative";
constexpr const char* kBadM = "INVALID_DIST_PARAMS: m is non-positive";
constexpr const char* kBrokenM = "INVALID_DIST_PARAMS: m is non-integer";
constexpr const char* kBadAB = "INVALID_DIST_PARAMS: A is larger than B";
constexpr const char* kBadC = "INVALID_DIST_PARAMS: C is not in the range [A,B]";
constexpr const char* kBadAlpha = "INVALID_DIST_PARAMS: Alpha is non-positive";
constexpr const char* kBadLower = "INVALID_DIST_PARAMS: LowerBound is negative";
constexpr const char* kBadBounds = "INVALID_DIST_PARAMS: LowerBound is larger than UpperBound";
constexpr const char* kBadBinomialP = "INVALID_DIST_PARAMS: p is not in the range [0,l]";
constexpr const char* kBrokenT = "INVALID_DIST_PARAMS: p is non-integer";
constexpr const char* kBadNegativeBinomialP = "INVALID_DIST_PARAMS: p is not in the range [0,l)";
constexpr const char* kBrokenS = "INVALID_DIST_PARAMS: s is non-integer";
constexpr const char* kBadPhases = "INVALID_DIST_PARAMS: Phases is less than 1";
constexpr const char* kBadLeast = "INVALID_DIST_PARAMS: LowerBound is non-positive";
constexpr const char* kBadShape = "INVALID_DIST_PARAMS: Shape is non-positive";

INSTANTIATE_TEST_SUITE_P(
    OneParameter, RefusedSampleTest,
    testing::Values(RefusedCase{"ExponentialZero", [](auto& d) { return d.Exponential(0); }, kBadRate},
                    RefusedCase{"ExponentialNegative", [](auto& d) { return d.Exponential(-1); }, kBadRate},
                    RefusedCase{"DeterministicZero", [](auto& d) { return d.Deterministic(0.0); }, kBadValue},
                    RefusedCase{"DeterministicNegative", [](auto& d) { return d.Deterministic(-1); }, kBadValue},
                    RefusedCase{"GeometricZero", [](auto& d) { return d.Geometric(0); }, kBadGeometricP},
                    RefusedCase{"GeometricOne", [](auto& d) { return d.Geometric(1.0); }, kBadGeometricP}),
    refusedNameOf);

INSTANTIATE_TEST_SUITE_P(
    Shapes, RefusedSampleTest,
    testing::Values(
        RefusedCase{"WeibullBeta", [](auto& d) { return d.Weibull(1, 0); }, kBadBeta},
        RefusedCase{"WeibullAlpha", [](auto& d) { return d.Weibull(0, 1); }, kZeroAlpha},
        RefusedCase{"WeibullBetaFirst", [](auto& d) { return d.Weibull(0, -1); }, kBadBeta},
        RefusedCase{"ConditionalWeibullBeta", [](auto& d) { return d.ConditionalWeibull(1, 0, 1); }, kBadBeta},
        RefusedCase{"ConditionalWeibullAlpha", [](auto& d) { return d.ConditionalWeibull(0, 1, 1); }, kZeroAlpha},
        RefusedCase{"ConditionalWeibullBetaFirst", [](auto& d) { return d.ConditionalWeibull(0, -1, 1); }, kBadBeta},
        RefusedCase{"NormalVariance", [](auto& d) { return d.Normal(1, -1e-300); }, kBadVariance},
        RefusedCase{"LognormalVariance", [](auto& d) { return d.Lognormal(1, -1); }, kBadAlphaSquared},
        RefusedCase{"TriangularBounds", [](auto& d) { return d.Triangular(2, 1, 1.5); }, kBadAB},
        RefusedCase{"TriangularModeBelow", [](auto& d) { return d.Triangular(1, 2, 0.9); }, kBadC},
        RefusedCase{"TriangularModeAbove", [](auto& d) { return d.Triangular(1, 2, 2.1); }, kBadC},
        RefusedCase{"TriangularPointWithoutItsMode", [](auto& d) { return d.Triangular(2, 2, 3); }, kBadC},
        RefusedCase{"TriangularBoundsFirst", [](auto& d) { return d.Triangular(2, 1, 5); }, kBadAB},
        RefusedCase{"GammaBeta", [](auto& d) { return d.Gamma(1, 0); }, kBadBeta},
        RefusedCase{"GammaAlpha", [](auto& d) { return d.Gamma(0, 1); }, kBadAlpha},
        RefusedCase{"GammaBetaFirst", [](auto& d) { return d.Gamma(-1, -1); }, kBadBeta},
        RefusedCase{"BetaFirstParameter", [](auto& d) { return d.Beta(0, 1); }, kBadAlpha},
        RefusedCase{"BetaSecondParameter", [](auto& d) { return d.Beta(1, 0); }, kBadAlpha, {0.5}},
        RefusedCase{"UniformNegative", [](auto& d) { return d.Uniform(-1, 1); }, kBadLower},
        RefusedCase{"UniformBounds", [](auto& d) { return d.Uniform(2, 1); }, kBadBounds},
        RefusedCase{"UniformNegativeFirst", [](auto& d) { return d.Uniform(-1, -2); }, kBadLower},
        RefusedCase{"ParetoLeast", [](auto& d) { return d.Pareto(0, 1); }, kBadLeast},
        RefusedCase{"ParetoShape", [](auto& d) { return d.Pareto(1, 0); }, kBadShape},
        RefusedCase{"ParetoLeastFirst", [](auto& d) { return d.Pareto(-1, -1); }, kBadLeast}),
    refusedNameOf);

INSTANTIATE_TEST_SUITE_P(
    Counts, RefusedSampleTest,
    testing::Values(
        RefusedCase{"ErlangZero", [](auto& d) { return d.Erlang(0, 1); }, kBadM},
        RefusedCase{"ErlangNegativeFirst", [](auto& d) { return d.Erlang(-0.5, -1); }, kBadM},
        RefusedCase{"ErlangBroken", [](auto& d) { return d.Erlang(1.5, 1); }, kBrokenM},
        RefusedCase{"ErlangBrokenBeforeBeta", [](auto& d) { return d.Erlang(1.5, -1); }, kBrokenM},
        RefusedCase{"ErlangBeta", [](auto& d) { return d.Erlang(2, 0); }, kBadBeta},
        RefusedCase{"ErlangNotANumber", [](auto& d) { return d.Erlang(kNan, 1); }, kBrokenM},
        RefusedCase{"ErlangInfinite", [](auto& d) { return d.Erlang(kInfinity, 1); }, kBrokenM},
        RefusedCase{"ErlangBeyondInt", [](auto& d) { return d.Erlang(2147483648.0, 1); }, kBrokenM},
        RefusedCase{"BinomialPNegative", [](auto& d) { return d.Binomial(4, -0.1); }, kBadBinomialP},
        RefusedCase{"BinomialPAboveOne", [](auto& d) { return d.Binomial(4, 1.1); }, kBadBinomialP},
        RefusedCase{"BinomialBroken", [](auto& d) { return d.Binomial(4.5, 0.5); }, kBrokenT},
        RefusedCase{"BinomialPFirst", [](auto& d) { return d.Binomial(4.5, 2); }, kBadBinomialP},
        RefusedCase{"BinomialNotANumber", [](auto& d) { return d.Binomial(kNan, 0.5); }, kBrokenT},
        RefusedCase{"BinomialBeyondInt", [](auto& d) { return d.Binomial(1e300, 0.5); }, kBrokenT},
        RefusedCase{"BinomialBelowInt", [](auto& d) { return d.Binomial(-2147483649.0, 0.5); }, kBrokenT},
        RefusedCase{"NegativeBinomialPNegative", [](auto& d) { return d.NegativeBinomial(2, -0.1); },
                    kBadNegativeBinomialP},
        RefusedCase{"NegativeBinomialPOne", [](auto& d) { return d.NegativeBinomial(2, 1); }, kBadNegativeBinomialP},
        RefusedCase{"NegativeBinomialBroken", [](auto& d) { return d.NegativeBinomial(1.5, 0.5); }, kBrokenS},
        RefusedCase{"NegativeBinomialPFirst", [](auto& d) { return d.NegativeBinomial(1.5, 1); },
                    kBadNegativeBinomialP},
        RefusedCase{"NegativeBinomialNotANumber", [](auto& d) { return d.NegativeBinomial(kNan, 0.5); }, kBrokenS},
        RefusedCase{"NegativeBinomialBeyondInt", [](auto& d) { return d.NegativeBinomial(3e9, 0.5); }, kBrokenS}),
    refusedNameOf);

INSTANTIATE_TEST_SUITE_P(
    Phases, RefusedSampleTest,
    testing::Values(
        RefusedCase{"HyperExponentialNoPhases", [](auto& d) { return d.HyperExponential(0, nullptr); }, kBadPhases},
        RefusedCase{"HyperExponentialFewerPhases", [](auto& d) { return d.HyperExponential(-2, nullptr); }, kBadPhases},
        RefusedCase{"HyperExponentialSecondWeight",
                    [](auto& d) { return d.HyperExponential(2, kZeroWeight); },
                    "INVALID_DIST_PARAMS: p1 is non-positive",
                    {0.1}},
        RefusedCase{"HyperExponentialFirstBadWeightIsNamed",
                    [](auto& d) { return d.HyperExponential(2, kNegativeWeights); },
                    "INVALID_DIST_PARAMS: p0 is non-positive",
                    {0.1}},
        RefusedCase{"HyperExponentialTwoDigits",
                    [](auto& d) { return d.HyperExponential(20, manyPhases()); },
                    "INVALID_DIST_PARAMS: p11 is non-positive",
                    {0.1}},
        RefusedCase{"HyperExponentialRateZero",
                    [](auto& d) { return d.HyperExponential(2, kZeroRates); },
                    "INVALID_DIST_PARAMS: Rate0 is non-positive",
                    {0.1}},
        RefusedCase{"HyperExponentialRateOfTheChosenPhase",
                    [](auto& d) { return d.HyperExponential(2, kZeroRates); },
                    "INVALID_DIST_PARAMS: Rate1 is non-positive",
                    {0.6}},
        RefusedCase{"HypoExponentialSecondRate",
                    [](auto& d) { return d.HypoExponential(2, kSecondRateBad); },
                    kBadRate,
                    {0.5}}),
    refusedNameOf);

// ---- The scratch fields, where they are told. ----

TEST(DistributionsTest, NormalLeavesItsPointInTheScratchFields) {
  ScriptedSampler d({0.75, 0.5});
  (void)d.Normal(1, 4);
  EXPECT_EQ(d.U1, 0.75);
  EXPECT_EQ(d.U2, 0.5);
  EXPECT_EQ(d.V1, 0.5);
  EXPECT_EQ(d.V2, 0.0);
  EXPECT_EQ(d.W, 0.25);
  EXPECT_DOUBLE_EQ(d.Y, kPolarFactor);
}

TEST(DistributionsTest, TriangularLeavesItsPlaceInTheUnitInterval) {
  ScriptedSampler d({0.0625});
  (void)d.Triangular(0, 4, 1);
  EXPECT_EQ(d.U1, 0.0625);
  EXPECT_EQ(d.X, 0.125);
}

TEST(DistributionsTest, GammaAboveOneLeavesItsConstantsAndTests) {
  ScriptedSampler d({0.5, 0.25});
  (void)d.Gamma(2, 3);
  EXPECT_DOUBLE_EQ(d.a1, 1 / std::sqrt(3.0));
  EXPECT_DOUBLE_EQ(d.q1, 2 + std::sqrt(3.0));
  EXPECT_EQ(d.U1, 0.5);
  EXPECT_EQ(d.U2, 0.25);
  EXPECT_EQ(d.V1, 0.0);
  EXPECT_EQ(d.Y, 2.0);
  EXPECT_EQ(d.Z, 0.0625);
  EXPECT_DOUBLE_EQ(d.W, -2 * kLn2);
}

// The constants are literals, so that no two builds part over a logarithm; here they are compared with the nearest
// doubles, found in the wider type.
TEST(DistributionsTest, TheConstantsOfGammaAreTheNearestDoubles) {
  volatile long double four = 4.0L;
  volatile long double theta = 4.5L;
  ScriptedSampler d({0.5, 0.5});
  (void)d.Gamma(2, 3);
  EXPECT_EQ(d.b1, 2 - static_cast<double>(std::log(four)));
  EXPECT_EQ(d.d1, 1 + static_cast<double>(std::log(theta)));
}

TEST(DistributionsTest, GammaBelowOneLeavesItsProposal) {
  ScriptedSampler d({0.5, 0.25});
  (void)d.Gamma(0.5, 3);
  EXPECT_DOUBLE_EQ(d.b1, kGammaB1);
  EXPECT_DOUBLE_EQ(d.P, kGammaB1 / 2);
  EXPECT_DOUBLE_EQ(d.Y, kGammaB1 * kGammaB1 / 4);
  EXPECT_EQ(d.U1, 0.5);
  EXPECT_EQ(d.U2, 0.25);
}

TEST(DistributionsTest, BetaLeavesItsTwoGammaSamples) {
  ScriptedSampler d({0.5, 0.5, 0.5, 0.5});
  (void)d.Beta(2.5, 1.5);
  EXPECT_EQ(d.V1, 2.5);
  EXPECT_EQ(d.V2, 1.5);
}

TEST(DistributionsTest, GammaOfOneIsTheExponentialOfTheInverse) {
  for (const double variate : {0.01, 0.3, 0.77, 0.999}) {
    ScriptedSampler gamma({variate});
    ScriptedSampler exponential({variate});
    EXPECT_DOUBLE_EQ(gamma.Gamma(1, 0.7), exponential.Exponential(1 / 0.7));
  }
}

TEST(DistributionsTest, ASamplerIsNotCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<Distributions>);
  EXPECT_FALSE(std::is_copy_assignable_v<Distributions>);
  EXPECT_FALSE(std::is_polymorphic_v<Distributions>);
}

}  // namespace
