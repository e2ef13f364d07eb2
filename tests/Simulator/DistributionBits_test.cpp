// The operations of each sampler, in the order in which they round: a run of one version is compared bit for bit with one of
// another. Here each formula stands once more, over the same variates, and the samples must be equal to the last bit.

#include <cmath>
#include <cstddef>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Simulator/Distributions.h"
#include "Simulator/ScriptedGenerator.h"
#include "gtest/gtest.h"

namespace {

/// Hands out the variates of a list.
using Draw = std::function<double()>;

struct Formula {
  const char* name;
  std::function<double(Distributions&)> sample;
  std::function<double(const Draw&)> expected;
};

void PrintTo(const Formula& tested, std::ostream* out) {
  *out << tested.name;
}

/// `value`, hidden from a compiler that would work out a logarithm or a power of it by itself, to another last bit than the
/// library's function returns.
double opaque(double value) {
  volatile double held = value;
  return held;
}

/// Variates of (0,1), which no formula meets at an end.
std::vector<double> variatesFrom(unsigned seed, std::size_t count) {
  std::mt19937_64 random(seed);
  std::vector<double> variates(count);
  for (double& variate : variates) {
    variate = (static_cast<double>(random() >> 12) + 0.5) * std::ldexp(1.0, -52);
  }
  return variates;
}

/// A point in the unit circle: its first coordinate times the factor that makes that a standard normal variate, the
/// spread coming in first.
double polar(const Draw& draw, double spread) {
  while (true) {
    const double v1 = 2 * draw() - 1;
    const double v2 = 2 * draw() - 1;
    const double w = v1 * v1 + v2 * v2;
    if (w <= 1) {
      return spread * v1 * std::sqrt(-2 * std::log(w) / w);
    }
  }
}

double normal(const Draw& draw, double mean, double variance) {
  while (true) {
    const double value = polar(draw, std::sqrt(variance)) + mean;
    if (value >= 0) {
      return value;
    }
  }
}

/// Cheng's method; the constants are log 4 and log 4.5 as the nearest doubles.
double gammaAboveOne(const Draw& draw, double alpha) {
  const double a = std::pow(2 * alpha - 1, -0.5);
  const double b = alpha - 1.3862943611198906;
  const double q = alpha + 1 / a;
  const double d = 1 + 1.5040773967762742;
  while (true) {
    const double u1 = draw();
    const double u2 = draw();
    const double v = a * std::log(u1 / (1 - u1));
    const double y = alpha * std::exp(v);
    const double z = u1 * u1 * u2;
    const double w = b + q * v - y;
    if (d + w - 4.5 * z >= 0 || w >= std::log(z)) {
      return y;
    }
  }
}

double gammaBelowOne(const Draw& draw, double alpha) {
  const double b = (2.718281828459045 + alpha) / 2.718281828459045;
  while (true) {
    const double p = b * draw();
    const double y = p <= 1 ? std::pow(p, 1 / alpha) : -std::log((b - p) / alpha);
    if (std::pow(y, alpha - 1) >= draw()) {
      return y;
    }
  }
}

double triangular(const Draw& draw, double a, double b, double c) {
  const double mode = (c - a) / (b - a);
  const double u = draw();
  const double x = u <= mode ? std::sqrt(u * mode) : 1 - std::sqrt((1 - u) * (1 - mode));
  return a + (b - a) * x;
}

double erlang(const Draw& draw, int m, double beta) {
  double product = draw();
  for (int stage = 1; stage < m; ++stage) {
    product *= draw();
  }
  return (-beta / m) * std::log(product);
}

double kRates[] = {0.3, 0.7, 1.9};
double kPhases[] = {0.3, 0.2, 0.7, 0.5, 1.9, 0.4};  // rate and weight of three phases

double hyperExponential(const Draw& draw) {
  const double chosen = draw();
  const double total = 0.2 + 0.5 + 0.4;
  const double rate = chosen < 0.2 / total ? 0.3 : chosen < (0.2 + 0.5) / total ? 0.7 : 1.9;
  return -std::log(draw()) / rate;
}

const std::vector<Formula> kFormulas = {
    {"Exponential", [](auto& d) { return d.Exponential(0.7); }, [](auto& draw) { return -std::log(draw()) / 0.7; }},
    {"Geometric", [](auto& d) { return d.Geometric(0.03); },
     [](auto& draw) { return std::floor(std::log(draw()) / std::log(1 - opaque(0.03))); }},
    {"Weibull", [](auto& d) { return d.Weibull(1.7, 3.1); },
     [](auto& draw) { return 3.1 * std::pow(-std::log(draw()), 1 / 1.7); }},
    {"ConditionalWeibull", [](auto& d) { return d.ConditionalWeibull(1.7, 3.1, 0.9); },
     [](auto& draw) {
       const double survival = std::exp(-std::pow(opaque(0.9) / 3.1, 1.7));
       return 3.1 * std::pow(-std::log(draw() * survival), 1 / 1.7) - 0.9;
     }},
    {"Normal", [](auto& d) { return d.Normal(1.3, 2.9); }, [](auto& draw) { return normal(draw, 1.3, 2.9); }},
    {"Lognormal", [](auto& d) { return d.Lognormal(0.3, 0.7); },
     [](auto& draw) { return std::exp(polar(draw, std::sqrt(0.7)) + 0.3); }},
    {"Erlang", [](auto& d) { return d.Erlang(3, 0.7); }, [](auto& draw) { return erlang(draw, 3, 0.7); }},
    {"Triangular", [](auto& d) { return d.Triangular(0.3, 2.9, 1.1); },
     [](auto& draw) { return triangular(draw, 0.3, 2.9, 1.1); }},
    {"GammaAboveOne", [](auto& d) { return d.Gamma(2.3, 0.7); },
     [](auto& draw) { return gammaAboveOne(draw, opaque(2.3)) * 0.7; }},
    {"GammaOfOne", [](auto& d) { return d.Gamma(1, 0.7); }, [](auto& draw) { return -std::log(draw()) * 0.7; }},
    {"GammaBelowOne", [](auto& d) { return d.Gamma(0.4, 0.7); },
     [](auto& draw) { return gammaBelowOne(draw, 0.4) * 0.7; }},
    {"Beta", [](auto& d) { return d.Beta(2.3, 0.4); },
     [](auto& draw) {
       const double first = gammaAboveOne(draw, opaque(2.3));
       const double second = gammaBelowOne(draw, 0.4);
       return first / (second + first);
     }},
    {"Uniform", [](auto& d) { return d.Uniform(0.3, 2.9); }, [](auto& draw) { return draw() * (2.9 - 0.3) + 0.3; }},
    {"Binomial", [](auto& d) { return d.Binomial(7, 0.3); },
     [](auto& draw) {
       double count = 0;
       for (int trial = 0; trial < 7; ++trial) {
         count += draw() <= 0.3 ? 1 : 0;
       }
       return count;
     }},
    {"NegativeBinomial", [](auto& d) { return d.NegativeBinomial(3, 0.03); },
     [](auto& draw) {
       double sum = 0;
       for (int term = 0; term < 3; ++term) {
         sum += std::floor(std::log(draw()) / std::log(1 - opaque(0.03)));
       }
       return sum;
     }},
    {"HyperExponential", [](auto& d) { return d.HyperExponential(3, kPhases); }, hyperExponential},
    {"HypoExponential", [](auto& d) { return d.HypoExponential(3, kRates); },
     [](auto& draw) {
       const double first = -std::log(draw()) / 0.3;
       const double second = -std::log(draw()) / 0.7;
       return first + second + -std::log(draw()) / 1.9;
     }},
    {"Pareto", [](auto& d) { return d.Pareto(0.7, 2.3); },
     [](auto& draw) { return std::exp(std::log(opaque(0.7)) - std::log(draw()) / 2.3); }},
};

class DistributionBitsTest : public testing::TestWithParam<Formula> {};

TEST_P(DistributionBitsTest, EverySampleIsTheFormulaToTheLastBit) {
  constexpr std::size_t kSamples = 1000;
  const std::vector<double> variates = variatesFrom(4711, 100 * kSamples);
  Distributions sampler;
  delete sampler.RNG;
  auto* const script = new ScriptedGenerator(variates);
  sampler.RNG = script;
  std::size_t drawn = 0;
  const Draw draw = [&] { return variates.at(drawn++); };
  for (std::size_t i = 0; i < kSamples; ++i) {
    ASSERT_EQ(GetParam().sample(sampler), GetParam().expected(draw)) << "sample " << i;
    ASSERT_EQ(script->draws(), drawn) << "sample " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(, DistributionBitsTest, testing::ValuesIn(kFormulas),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
