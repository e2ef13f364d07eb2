// How often does an interval of the controller's statistics hold the known value?
//
// usage: bench_coverage KNOWN STUDIES SEQUENTIAL PRECISION LEAST UNIT SIZE...  < observations
//
// Reads observations as doubles in the machine's own order and cuts them into studies, one behind the other:
//   - STUDIES studies of each SIZE: the share whose interval holds KNOWN, at confidences of 90, 95 and 99 %. The studies of
//     all sizes are cut from the same observations. For 0/1 observations the exact share too, summed over all outcomes;
//   - SEQUENTIAL studies that StoppingRule ends, at a relative PRECISION, 95 % confidence, at least LEAST observations and a
//     checkpoint each UNIT.
// Prints a line for each size, and one for the sequential studies, and ends as soon as it has them.
#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "Statistics/Intervals.h"
#include "Statistics/ObservationSummary.h"
#include "Statistics/StoppingRule.h"

namespace {

constexpr double kConfidences[] = {0.90, 0.95, 0.99};

/// The stream of observations on standard input, from which a part can be read again from the start.
class Observations {
 public:
  /// `count` observations from `from` on; ends the program if there are not so many.
  std::span<const double> at(std::size_t from, std::size_t count) {
    constexpr std::size_t kAtOnce = 65'536;
    while (values_.size() < from + count) {
      const std::size_t had = values_.size();
      values_.resize(had + kAtOnce);
      const std::size_t got = std::fread(values_.data() + had, sizeof(double), kAtOnce, stdin);
      values_.resize(had + got);
      if (got == 0) {
        std::fprintf(stderr, "bench_coverage: observations ended after %zu\n", values_.size());
        std::exit(1);
      }
    }
    return std::span(values_).subspan(from, count);
  }

 private:
  std::vector<double> values_;
};

bool holds(const controller::Estimate& estimate, double known) {
  return estimate.lower <= known && known <= estimate.upper;
}

/// Chance that the interval for a probability holds it.
double exactCoverage(std::int64_t count, double probability, double confidence) {
  double coverage = 0.0;
  const auto n = static_cast<double>(count);
  for (std::int64_t hits = 0; hits <= count; ++hits) {
    const controller::Interval interval = controller::clopperPearsonInterval(hits, count, confidence);
    if (interval.lower <= probability && probability <= interval.upper) {
      const auto k = static_cast<double>(hits);
      coverage += std::exp(std::lgamma(n + 1.0) - std::lgamma(k + 1.0) - std::lgamma(n - k + 1.0) +
                           k * std::log(probability) + (n - k) * std::log1p(-probability));
    }
  }
  return coverage;
}

void fixedSize(Observations& observations, double known, std::size_t studies, std::size_t size) {
  std::vector<std::size_t> hits(std::size(kConfidences), 0);
  std::size_t corrected = 0;
  bool isBinary = true;
  for (std::size_t study = 0; study < studies; ++study) {
    controller::ObservationSummary summary;
    summary.add(observations.at(study * size, size));
    isBinary = isBinary && summary.isBinary();
    for (std::size_t at = 0; at < hits.size(); ++at) {
      const controller::Estimate estimate = summary.estimate(kConfidences[at]);
      hits[at] += holds(estimate, known) ? 1 : 0;
      corrected += estimate.method == controller::EstimateMethod::SkewnessCorrected ? 1 : 0;
    }
  }
  const auto percentOf = [studies](std::size_t number) {
    return 100.0 * static_cast<double>(number) / static_cast<double>(studies);
  };
  std::string line = fmt::format("{}", size);
  for (std::size_t at = 0; at < hits.size(); ++at) {
    line += fmt::format(" | {:.2f}", percentOf(hits[at]));
    if (isBinary) {
      const double exact = exactCoverage(static_cast<std::int64_t>(size), known, kConfidences[at]);
      line += fmt::format(" ({:.2f})", 100.0 * exact);
    }
  }
  fmt::print("{} | {:.0f} %\n", line, percentOf(corrected) / static_cast<double>(hits.size()));
}

void sequential(Observations& observations, double known, std::size_t studies, const controller::Goal& goal,
                std::size_t unit) {
  std::size_t hits = 0;
  std::size_t precise = 0;
  std::size_t from = 0;
  for (std::size_t study = 0; study < studies; ++study) {
    controller::StoppingRule rule(goal, {"variable"});
    do {
      const std::span<const double> next = observations.at(from, unit);
      rule.addUnit(std::span(&next, 1));
      from += unit;
    } while (rule.checkpoint() == controller::Verdict::GoOn);
    const controller::Estimate estimate = rule.estimate(0);
    hits += holds(estimate, known) ? 1 : 0;
    precise += std::fabs(estimate.mean - known) <= goal.precision * std::fabs(known) ? 1 : 0;
  }
  const auto percentOf = [studies](std::size_t number) {
    return 100.0 * static_cast<double>(number) / static_cast<double>(studies);
  };
  fmt::print("sequential | {:.2f} | {:.2f} | {:.0f}\n", percentOf(hits), percentOf(precise),
             static_cast<double>(from) / static_cast<double>(studies));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 8) {
    std::fputs("usage: bench_coverage KNOWN STUDIES SEQUENTIAL PRECISION LEAST UNIT SIZE...  < observations\n", stderr);
    return 2;
  }
  const double known = std::strtod(argv[1], nullptr);
  const auto number = [argv](int at) { return static_cast<std::size_t>(std::strtoull(argv[at], nullptr, 10)); };
  controller::Goal goal;
  goal.precision = std::strtod(argv[4], nullptr);
  goal.leastBatches = static_cast<std::int64_t>(number(5));
  const std::size_t studies = number(2);
  Observations observations;
  for (int at = 7; at < argc; ++at) {
    fixedSize(observations, known, studies, number(at));
  }
  sequential(observations, known, number(3), goal, number(6));
  return 0;
}
