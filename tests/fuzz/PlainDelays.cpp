#include "fuzz/PlainDelays.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

namespace {

using Uniform = std::function<double()>;

void refuse(bool isRefused, std::string words) {
  if (isRefused) {
    throw words.insert(0, 1, ' ');
  }
}

void refusePhase(bool isRefused, std::string letters, std::size_t phase) {
  refuse(isRefused, letters.append(std::to_string(phase)).append(" is non-positive"));
}

bool isWhole(double number) {
  return std::floor(number) == number && std::abs(number) < 0x1p31;
}

double exponential(double rate, const Uniform& uniform) {
  refuse(rate <= 0, "rate is non-positive");
  return -std::log(uniform()) / rate;
}

/// A standard normal number as the first of a polar pair, in two factors.
/// Source  polar method; G. Marsaglia, T. A. Bray, A convenient method for generating normal variables, 1964
struct PolarPoint {
  double across;
  double scale;
};
PolarPoint polarPoint(const Uniform& uniform) {
  while (true) {
    const double across = 2 * uniform() - 1;
    const double along = 2 * uniform() - 1;
    const double square = across * across + along * along;
    if (!(square > 1)) {
      return {across, std::sqrt(-2 * std::log(square) / square)};
    }
  }
}

double normal(double mean, double variance, const Uniform& uniform) {
  refuse(variance < 0, "variance is negative");
  while (true) {
    const PolarPoint point = polarPoint(uniform);
    const double value = std::sqrt(variance) * point.across * point.scale + mean;
    if (!(value < 0)) {
      return value;
    }
  }
}

double lognormal(double mean, double variance, const Uniform& uniform) {
  refuse(variance < 0, "Alpha_Squared is negative");
  const PolarPoint point = polarPoint(uniform);
  return std::exp(std::sqrt(variance) * point.across * point.scale + mean);
}

double erlang(double stages, double mean, const Uniform& uniform) {
  refuse(stages <= 0, "m is non-positive");
  refuse(!isWhole(stages), "m is non-integer");
  refuse(mean <= 0, "Beta is non-positive");
  double product = 1;
  for (int i = 1; i <= stages; ++i) {
    product *= uniform();
  }
  return -mean / stages * std::log(product);
}

double triangular(double least, double most, double mode, const Uniform& uniform) {
  refuse(least > most, "A is larger than B");
  refuse(mode < least || mode > most, "C is not in the range [A,B]");
  if (least == most) {
    return least;
  }
  const double turn = (mode - least) / (most - least);
  const double u = uniform();
  const double part = turn >= u ? std::sqrt(u * turn) : 1 - std::sqrt((1 - u) * (1 - turn));
  return least + (most - least) * part;
}

/// Source  rejection; R. C. H. Cheng, The generation of gamma variables with non-integral shape parameter, 1977
double gammaAboveOne(double shape, const Uniform& uniform) {
  const double a = std::pow(2 * shape - 1, -0.5);
  const double b = shape - 1.3862943611198906;  // log(4)
  const double q = shape + 1 / a;
  const double d = 1 + 1.5040773967762742;  // log(4.5)
  while (true) {
    const double u1 = uniform();
    const double u2 = uniform();
    const double v = a * std::log(u1 / (1 - u1));
    const double y = shape * std::exp(v);
    const double z = u1 * u1 * u2;
    const double w = b + q * v - y;
    if (d + w - 4.5 * z >= 0 || w >= std::log(z)) {
      return y;
    }
  }
}

/// Both pieces are accepted by the power test.
double gammaBelowOne(double shape, const Uniform& uniform) {
  const double b = (2.718281828459045 + shape) / 2.718281828459045;
  while (true) {
    const double p = b * uniform();
    const double y = p > 1 ? -std::log((b - p) / shape) : std::pow(p, 1 / shape);
    if (std::pow(y, shape - 1) >= uniform()) {
      return y;
    }
  }
}

double gamma(double shape, double scale, const Uniform& uniform) {
  refuse(scale <= 0, "Beta is non-positive");
  refuse(shape <= 0, "Alpha is non-positive");
  if (shape == 1) {
    return -std::log(uniform()) * scale;
  }
  return (shape > 1 ? gammaAboveOne(shape, uniform) : gammaBelowOne(shape, uniform)) * scale;
}

double beta(double first, double second, const Uniform& uniform) {
  const double v1 = gamma(first, 1, uniform);
  const double v2 = gamma(second, 1, uniform);
  return v1 / (v2 + v1);
}

double uniformBetween(double least, double most, const Uniform& uniform) {
  refuse(least < 0, "LowerBound is negative");
  refuse(least > most, "LowerBound is larger than UpperBound");
  return uniform() * (most - least) + least;
}

double failures(double chance, const Uniform& uniform) {
  return std::floor(std::log(uniform()) / std::log(1 - chance));
}

double geometric(double chance, const Uniform& uniform) {
  refuse(chance <= 0 || chance >= 1, "p is not in the range (0,1)");
  return failures(chance, uniform);
}

double binomial(double trials, double chance, const Uniform& uniform) {
  refuse(chance < 0 || chance > 1, "p is not in the range [0,l]");
  refuse(!isWhole(trials), "p is non-integer");
  int count = 0;
  for (int i = 0; i < trials; ++i) {
    count += chance >= uniform() ? 1 : 0;
  }
  return count;
}

double negativeBinomial(double successes, double chance, const Uniform& uniform) {
  refuse(chance < 0 || chance >= 1, "p is not in the range [0,l)");
  refuse(!isWhole(successes), "s is non-integer");
  double sum = 0;
  for (int i = 0; i < successes; ++i) {
    sum += failures(chance, uniform);
  }
  return sum;
}

void refuseWeibull(double shape, double scale) {
  refuse(scale <= 0, "Beta is non-positive");
  refuse(shape == 0, "Alpha is zero");
}

double weibull(double shape, double scale, const Uniform& uniform) {
  refuseWeibull(shape, scale);
  return scale * std::pow(-std::log(uniform()), 1 / shape);
}

double conditionalWeibull(double shape, double scale, double age, const Uniform& uniform) {
  refuseWeibull(shape, scale);
  const double survival = std::exp(-std::pow(age / scale, shape));
  return scale * std::pow(-std::log(uniform() * survival), 1 / shape) - age;
}

double hyperExponential(const std::vector<double>& ratesAndWeights, const Uniform& uniform) {
  const std::size_t phases = ratesAndWeights.size() / 2;
  const auto rate = [&](std::size_t phase) { return ratesAndWeights[2 * phase]; };
  const auto weight = [&](std::size_t phase) { return ratesAndWeights[2 * phase + 1]; };
  const double chance = uniform();
  double total = 0;
  for (std::size_t phase = 0; phase < phases; ++phase) {
    refusePhase(weight(phase) <= 0, "p", phase);
    total += weight(phase);
  }
  std::size_t phase = 0;
  double running = weight(0);
  while (chance >= running / total && phase + 1 < phases) {
    ++phase;
    running += weight(phase);
  }
  refusePhase(rate(phase) <= 0, "Rate", phase);
  return -std::log(uniform()) / rate(phase);
}

double hypoExponential(const std::vector<double>& rates, const Uniform& uniform) {
  double sum = 0;
  for (const double rate : rates) {
    sum += exponential(rate, uniform);
  }
  return sum;
}

double pareto(double least, double shape, const Uniform& uniform) {
  refuse(least <= 0, "LowerBound is non-positive");
  refuse(shape <= 0, "Shape is non-positive");
  return std::exp(std::log(least) - std::log(uniform()) / shape);
}

}  // namespace

double plainDelay(int number, const std::vector<double>& p, const std::function<double()>& uniform) {
  switch (number) {
    case 1:
      return exponential(p[0], uniform);
    case 2:
      refuse(p[0] <= 0, "value is non-positive");
      return p[0];
    case 3:
      return geometric(p[0], uniform);
    case 4:
      return weibull(p[0], p[1], uniform);
    case 5:
      return normal(p[0], p[1], uniform);
    case 6:
      return lognormal(p[0], p[1], uniform);
    case 7:
      return erlang(p[0], p[1], uniform);
    case 8:
      return triangular(p[0], p[1], p[2], uniform);
    case 9:
      return gamma(p[0], p[1], uniform);
    case 10:
      return beta(p[0], p[1], uniform);
    case 11:
      return uniformBetween(p[0], p[1], uniform);
    case 12:
      return binomial(p[0], p[1], uniform);
    case 13:
      return negativeBinomial(p[0], p[1], uniform);
    case 14:
      return hyperExponential(p, uniform);
    case 15:
      return conditionalWeibull(p[0], p[1], p[2], uniform);
    case 16:
      return hypoExponential(p, uniform);
    case 17:
      return pareto(p[0], p[1], uniform);
    default:
      return 0.0;
  }
}

}  // namespace fuzz
