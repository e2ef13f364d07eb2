// Whether long streams of samples follow their laws: mean, variance and a goodness-of-fit statistic of 100,000 draws,
// for every sampler with every generator. Seeds are fixed; each comparison allows 4.5 standard deviations or the like,
// a risk of about 1 in 150,000 for a right sampler and a fresh seed.

#include <algorithm>
#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/exponential.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/geometric.hpp>
#include <boost/math/distributions/hyperexponential.hpp>
#include <boost/math/distributions/lognormal.hpp>
#include <boost/math/distributions/negative_binomial.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/pareto.hpp>
#include <boost/math/distributions/triangular.hpp>
#include <boost/math/distributions/uniform.hpp>
#include <boost/math/distributions/weibull.hpp>
#include <boost/math/quadrature/gauss_kronrod.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Simulator/Distributions.h"
#include "Simulator/LaggedFibonacci.h"
#include "Simulator/MersenneTwister.h"
#include "Simulator/Tausworthe.h"
#include "gtest/gtest.h"

namespace {

constexpr std::size_t kDraws = 100000;
constexpr double kSigmas = 4.5;
constexpr double kRisk = 1.0 / 150000;
constexpr std::uint32_t kSeed = 20240611;

using Cdf = std::function<double(double)>;
using Sample = std::function<double(Distributions&)>;

/// What a sampler must follow.
struct Law {
  std::string name;
  Sample sample;
  Cdf cdf;
  double mean;
  double variance;
  bool discrete = false;  // on the whole numbers from 0
};

void PrintTo(const Law& law, std::ostream* out) {
  *out << law.name;
}

/// A law whose facts the library knows.
template <typename Known>
Law lawOf(const char* name, Sample sample, const Known& known, bool discrete = false) {
  return {name,
          std::move(sample),
          [known](double x) {
            const auto [least, greatest] = boost::math::support(known);
            return x < least ? 0.0 : x > greatest ? 1.0 : cdf(known, x);
          },
          mean(known),
          variance(known),
          discrete};
}

/// Density proportional to y^(alpha-1) up to 1 and to y^(alpha-1) e^-y above, stretched by beta: what the sampler's one
/// acceptance test makes of a shape below 1.
class LowShapeGamma {
 public:
  explicit LowShapeGamma(double alpha) : alpha_(alpha), total_(partialMoment(0)) {}

  [[nodiscard]] double cdf(double y) const {
    if (y <= 0) {
      return 0;
    }
    if (y <= 1) {
      return std::pow(y, alpha_) / alpha_ / total_;
    }
    return 1 - boost::math::tgamma(alpha_, y) / total_;
  }
  [[nodiscard]] double mean() const { return partialMoment(1) / total_; }
  [[nodiscard]] double variance() const { return partialMoment(2) / total_ - mean() * mean(); }

  /// E[e^(-s Y)].
  [[nodiscard]] double laplaceTransform(double s) const {
    return (std::pow(s, -alpha_) * boost::math::tgamma_lower(alpha_, s) +
            std::pow(1 + s, -alpha_) * boost::math::tgamma(alpha_, 1 + s)) /
           total_;
  }

 private:
  /// Integral of y^n times the density before it is normalised.
  [[nodiscard]] double partialMoment(int n) const { return 1 / (alpha_ + n) + boost::math::tgamma(alpha_ + n, 1.0); }

  double alpha_;
  double total_;
};

Law lowShapeGamma(const char* name, double alpha, double beta) {
  const LowShapeGamma law(alpha);
  return {name, [=](auto& d) { return d.Gamma(alpha, beta); }, [=](double x) { return law.cdf(x / beta); },
          beta * law.mean(), beta * beta * law.variance()};
}

/// X / (X + Y) with X of the law above and Y exponential: P(X <= r Y) = E[e^(-X/r)] with r = x / (1 - x).
Law lowShapeBeta(const char* name, double alpha) {
  const LowShapeGamma law(alpha);
  const Cdf cdf = [=](double x) { return x <= 0 ? 0.0 : x >= 1 ? 1.0 : law.laplaceTransform((1 - x) / x); };
  using Quadrature = boost::math::quadrature::gauss_kronrod<double, 61>;
  const double mean = Quadrature::integrate([&](double x) { return 1 - cdf(x); }, 0.0, 1.0, 15, 1e-10);
  const double square = Quadrature::integrate([&](double x) { return 2 * x * (1 - cdf(x)); }, 0.0, 1.0, 15, 1e-10);
  return {name, [=](auto& d) { return d.Beta(alpha, 1); }, cdf, mean, square - mean * mean};
}

/// A normal law cut off at 0.
Law truncatedNormal(const char* name, double location, double spread) {
  const boost::math::normal whole(location, spread);
  const double kept = cdf(complement(whole, 0.0));
  const double cut = -location / spread;
  const double hazard = spread * pdf(whole, 0.0) / kept;
  return {name, [=](auto& d) { return d.Normal(location, spread * spread); },
          [=](double x) { return x <= 0 ? 0.0 : (cdf(whole, x) - (1 - kept)) / kept; }, location + spread * hazard,
          spread * spread * (1 + cut * hazard - hazard * hazard)};
}

/// What is left of a Weibull life after t.
Law residualWeibull(const char* name, double shape, double scale, double t) {
  const double spent = std::pow(t / scale, shape);
  const auto moment = [=](int n) {  // of the whole life, given that it exceeds t
    return std::pow(scale, n) * std::exp(spent) * boost::math::tgamma(1 + n / shape, spent);
  };
  return {name, [=](auto& d) { return d.ConditionalWeibull(shape, scale, t); },
          [=](double x) { return x <= 0 ? 0.0 : -std::expm1(spent - std::pow((t + x) / scale, shape)); }, moment(1) - t,
          moment(2) - moment(1) * moment(1)};
}

std::vector<Law> allLaws() {
  namespace bm = boost::math;
  static double hyper[] = {0.5, 1, 2, 3};  // rates 1/2 and 2 with weights 1 and 3
  static double equalRates[] = {2, 2};
  static double unequalRates[] = {1, 3};
  const double weights[] = {0.25, 0.75};
  const double rates[] = {0.5, 2};
  return {
      lawOf(
          "UniformOfTheGenerator", [](auto& d) { return d.RNG->rnd(); }, bm::uniform(0, 1)),
      lawOf(
          "Uniform", [](auto& d) { return d.Uniform(1, 4); }, bm::uniform(1, 4)),
      lawOf(
          "Exponential", [](auto& d) { return d.Exponential(2); }, bm::exponential(2)),
      lawOf(
          "Geometric", [](auto& d) { return d.Geometric(0.3); }, bm::geometric(0.3), true),
      lawOf(
          "GeometricOfRareSuccess", [](auto& d) { return d.Geometric(0.05); }, bm::geometric(0.05), true),
      lawOf(
          "Weibull", [](auto& d) { return d.Weibull(2.3, 1.4); }, bm::weibull(2.3, 1.4)),
      lawOf(
          "WeibullOfFallingHazard", [](auto& d) { return d.Weibull(0.8, 3); }, bm::weibull(0.8, 3)),
      residualWeibull("ConditionalWeibull", 2, 3, 2.5),
      residualWeibull("ConditionalWeibullOfFallingHazard", 0.8, 1, 0.7),
      truncatedNormal("NormalCutAtItsMean", 0, 2),
      truncatedNormal("NormalCutOneDeviationBelow", 1.5, 1.5),
      lawOf(
          "NormalFarFromZero", [](auto& d) { return d.Normal(50, 4); }, bm::normal(50, 2)),
      lawOf(
          "Lognormal", [](auto& d) { return d.Lognormal(0.5, 0.09); }, bm::lognormal(0.5, 0.3)),
      lawOf(
          "Erlang", [](auto& d) { return d.Erlang(4, 2); }, bm::gamma_distribution<>(4, 0.5)),
      lawOf(
          "Triangular", [](auto& d) { return d.Triangular(1, 5, 2); }, bm::triangular(1, 2, 5)),
      lowShapeGamma("GammaOfOneQuarter", 0.25, 2),
      lowShapeGamma("GammaOfOneHalf", 0.5, 1),
      lowShapeGamma("GammaOfThreeQuarters", 0.75, 0.5),
      lawOf(
          "GammaOfOne", [](auto& d) { return d.Gamma(1, 1.5); }, bm::gamma_distribution<>(1, 1.5)),
      lawOf(
          "GammaBarelyAboveOne", [](auto& d) { return d.Gamma(1.01, 1.5); }, bm::gamma_distribution<>(1.01, 1.5)),
      lawOf(
          "Gamma", [](auto& d) { return d.Gamma(2.5, 1.5); }, bm::gamma_distribution<>(2.5, 1.5)),
      lawOf(
          "GammaOfALargeShape", [](auto& d) { return d.Gamma(80, 0.1); }, bm::gamma_distribution<>(80, 0.1)),
      lawOf(
          "Beta", [](auto& d) { return d.Beta(2.5, 1.5); }, bm::beta_distribution<>(2.5, 1.5)),
      lawOf(
          "BetaOfOnes", [](auto& d) { return d.Beta(1, 1); }, bm::beta_distribution<>(1, 1)),
      lowShapeBeta("BetaOfAShapeBelowOne", 0.5),
      lawOf(
          "Binomial", [](auto& d) { return d.Binomial(12, 0.3); }, bm::binomial(12, 0.3), true),
      lawOf(
          "NegativeBinomial", [](auto& d) { return d.NegativeBinomial(3, 0.4); }, bm::negative_binomial(3, 0.4), true),
      lawOf(
          "HyperExponential", [](auto& d) { return d.HyperExponential(2, hyper); },
          bm::hyperexponential(weights, rates)),
      lawOf(
          "HypoExponentialOfEqualRates", [](auto& d) { return d.HypoExponential(2, equalRates); },
          bm::gamma_distribution<>(2, 0.5)),
      {"HypoExponential", [](auto& d) { return d.HypoExponential(2, unequalRates); },
       [](double x) { return 1 - (3 * std::exp(-x) - std::exp(-3 * x)) / 2; }, 1 + 1.0 / 3, 1 + 1.0 / 9},
      lawOf(
          "Pareto", [](auto& d) { return d.Pareto(2, 12); }, bm::pareto(2, 12)),
  };
}

struct GeneratorKind {
  const char* name;
  RandomNumberGenerator* (*make)();
};

void PrintTo(const GeneratorKind& kind, std::ostream* out) {
  *out << kind.name;
}

constexpr GeneratorKind kGenerators[] = {
    {"LaggedFibonacci", [] { return static_cast<RandomNumberGenerator*>(new LaggedFibonacci); }},
    {"Tausworthe", [] { return static_cast<RandomNumberGenerator*>(new Tausworthe); }},
    {"MersenneTwister", [] { return static_cast<RandomNumberGenerator*>(new MersenneTwister); }},
};

std::vector<double> samplesOf(const Sample& sample, const GeneratorKind& kind) {
  Distributions sampler;
  delete sampler.RNG;
  sampler.RNG = kind.make();
  sampler.RNG->srnd(kSeed);
  std::vector<double> samples(kDraws);
  for (double& value : samples) {
    value = sample(sampler);
  }
  return samples;
}

struct Moments {
  double mean;
  double variance;
  double fourth;  // about the mean
};

Moments momentsOf(const std::vector<double>& samples) {
  const auto n = static_cast<double>(samples.size());
  double mean = 0;
  for (const double x : samples) {
    mean += x / n;
  }
  double second = 0;
  double fourth = 0;
  for (const double x : samples) {
    const double square = (x - mean) * (x - mean);
    second += square / n;
    fourth += square * square / n;
  }
  return {mean, second * n / (n - 1), fourth};
}

/// Kolmogorov's sqrt(n) * D.
double kolmogorovStatistic(std::vector<double> samples, const Cdf& cdf) {
  std::sort(samples.begin(), samples.end());
  const auto n = static_cast<double>(samples.size());
  double distance = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double p = cdf(samples[i]);
    const auto below = static_cast<double>(i);
    distance = std::max({distance, p - below / n, (below + 1) / n - p});
  }
  return distance * std::sqrt(n);
}

/// Bound that Kolmogorov's statistic exceeds with a chance of kRisk: 2 e^(-2 x^2), the leading term of its law.
double kolmogorovBound() {
  return std::sqrt(std::log(2 / kRisk) / 2);
}

/// Chi-square over the values 0, 1, ..., those of small expectation taken together; and the bound of the same risk.
struct ChiSquare {
  double statistic;
  double bound;
};

ChiSquare chiSquareOf(const std::vector<double>& samples, const Cdf& cdf) {
  constexpr double kLeastExpected = 20;
  std::vector<double> expected;
  std::vector<double> upperEnds;  // last value of each class
  double below = 0;
  for (double value = 0; (1 - below) * kDraws > 2 * kLeastExpected; ++value) {
    const double upTo = cdf(value);
    if ((upTo - below) * kDraws >= kLeastExpected && (1 - upTo) * kDraws >= kLeastExpected) {
      expected.push_back((upTo - below) * kDraws);
      upperEnds.push_back(value);
      below = upTo;
    } else if ((1 - upTo) * kDraws < kLeastExpected) {
      break;
    }
  }
  expected.push_back((1 - below) * kDraws);
  std::vector<double> observed(expected.size(), 0.0);
  for (const double x : samples) {
    const auto place = std::lower_bound(upperEnds.begin(), upperEnds.end(), x) - upperEnds.begin();
    ++observed[static_cast<std::size_t>(place)];
  }
  double statistic = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    statistic += (observed[i] - expected[i]) * (observed[i] - expected[i]) / expected[i];
  }
  const boost::math::chi_squared law(static_cast<double>(expected.size() - 1));
  return {statistic, quantile(complement(law, kRisk))};
}

class DistributionLawTest : public testing::TestWithParam<std::tuple<Law, GeneratorKind>> {};

TEST_P(DistributionLawTest, MeanVarianceAndFitAgreeWithTheLaw) {
  const auto& [law, kind] = GetParam();
  const std::vector<double> samples = samplesOf(law.sample, kind);

  const Moments found = momentsOf(samples);
  const double meanError = std::sqrt(law.variance / kDraws);
  EXPECT_NEAR(found.mean, law.mean, kSigmas * meanError);
  const double varianceError = std::sqrt((found.fourth - found.variance * found.variance) / kDraws);
  EXPECT_NEAR(found.variance, law.variance, kSigmas * varianceError);

  if (law.discrete) {
    for (const double x : samples) {
      ASSERT_TRUE(x >= 0 && x == std::floor(x)) << x;
    }
    const ChiSquare fit = chiSquareOf(samples, law.cdf);
    EXPECT_LT(fit.statistic, fit.bound);
  } else {
    EXPECT_LT(kolmogorovStatistic(samples, law.cdf), kolmogorovBound());
  }
}

INSTANTIATE_TEST_SUITE_P(EverySampler, DistributionLawTest,
                         testing::Combine(testing::ValuesIn(allLaws()), testing::ValuesIn(kGenerators)),
                         [](const auto& info) {
                           return std::get<0>(info.param).name + "By" + std::get<1>(info.param).name;
                         });

/// Published facts of the law of a shape below 1, in units of beta.
TEST(LowShapeGammaTest, TheLawHasTheKnownMeansAndVariances) {
  struct Known {
    double alpha, mean, variance;
  };
  for (const Known known : {Known{0.25, 0.289535878, 0.233890796}, Known{0.5, 0.515159743, 0.405489430},
                            Known{0.75, 0.713260756, 0.576941387}}) {
    const LowShapeGamma law(known.alpha);
    EXPECT_NEAR(law.mean(), known.mean, 1e-9);
    EXPECT_NEAR(law.variance(), known.variance, 1e-9);
  }
}

// The tests have the power to tell the laws apart that one may take for another.
TEST(DistributionLawPowerTest, GammaBelowOneIsToldFromTheTextbooksLaw) {
  const std::vector<double> samples = samplesOf([](auto& d) { return d.Gamma(0.5, 1); }, kGenerators[2]);
  const boost::math::gamma_distribution<> textbook(0.5, 1);
  EXPECT_GT(kolmogorovStatistic(samples, [&](double x) { return cdf(textbook, x); }), 2 * kolmogorovBound());
}

TEST(DistributionLawPowerTest, NormalIsToldFromTheLawThatIsNotCut) {
  const std::vector<double> samples = samplesOf([](auto& d) { return d.Normal(1.5, 2.25); }, kGenerators[2]);
  const boost::math::normal whole(1.5, 1.5);
  EXPECT_GT(kolmogorovStatistic(samples, [&](double x) { return cdf(whole, x); }), 2 * kolmogorovBound());
}

TEST(DistributionLawPowerTest, GeometricIsToldFromTheCountOfTrials) {
  const std::vector<double> samples = samplesOf([](auto& d) { return d.Geometric(0.3); }, kGenerators[2]);
  const boost::math::geometric failures(0.3);
  const ChiSquare fit = chiSquareOf(samples, [&](double x) { return x < 1 ? 0.0 : cdf(failures, x - 1); });
  EXPECT_GT(fit.statistic, 2 * fit.bound);
}

}  // namespace
