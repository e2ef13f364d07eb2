#include "fuzz/Comparison.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <sstream>
#include <vector>

#include "fuzz/EngineRun.h"
#include "fuzz/PlainRewards.h"
#include "support/QuietOutput.h"
#include "support/TemporaryFile.h"

namespace fuzz {

namespace {

/// Sums are made in different orders.
constexpr double kTolerance = 1e-9;

bool isSameTime(double first, double second) {
  return std::bit_cast<std::uint64_t>(first) == std::bit_cast<std::uint64_t>(second) ||
         (std::isnan(first) && std::isnan(second));
}

bool isClose(double first, double second) {
  return first == second || (std::isnan(first) && std::isnan(second)) ||
         std::abs(first - second) <= kTolerance * (1.0 + std::abs(first));
}

void tell(std::ostream& out, const Firing& firing) {
  out << "activity " << firing.activity << " at " << firing.time << " with marks";
  for (const int mark : firing.marks) {
    out << ' ' << mark;
  }
}

std::string differenceOfFirings(const Trajectory& plain, const Trajectory& engine) {
  const std::size_t common = std::min(plain.firings.size(), engine.firings.size());
  std::ostringstream out;
  out << std::setprecision(17);
  for (std::size_t i = 0; i < common; ++i) {
    const Firing& expected = plain.firings[i];
    const Firing& found = engine.firings[i];
    if (expected.activity != found.activity || !isSameTime(expected.time, found.time) ||
        expected.marks != found.marks) {
      out << "firing " << i << ": expected ";
      tell(out, expected);
      out << ", the engine fired ";
      tell(out, found);
      return out.str();
    }
  }
  if (plain.firings.size() != engine.firings.size()) {
    out << "expected " << plain.firings.size() << " firings, the engine had " << engine.firings.size();
  } else if (plain.drawn != engine.drawn) {
    out << "expected " << plain.drawn << " numbers drawn, the engine drew " << engine.drawn;
  }
  return out.str();
}

std::string differenceOfObservations(const std::vector<std::vector<double>>& expected,
                                     const std::vector<std::vector<double>>& found) {
  std::ostringstream out;
  out << std::setprecision(17);
  if (expected.size() != found.size()) {
    out << "expected " << expected.size() << " variables, the engine wrote " << found.size();
    return out.str();
  }
  for (std::size_t variable = 0; variable < expected.size(); ++variable) {
    if (expected[variable].size() != found[variable].size()) {
      out << "variable " << variable << ": expected " << expected[variable].size() << " batches, the engine wrote "
          << found[variable].size();
      return out.str();
    }
    for (std::size_t batch = 0; batch < expected[variable].size(); ++batch) {
      if (!isClose(expected[variable][batch], found[variable][batch])) {
        out << "variable " << variable << ", batch " << batch << ": expected " << expected[variable][batch]
            << ", the engine wrote " << found[variable][batch];
        return out.str();
      }
    }
  }
  return "";
}

}  // namespace

std::string differenceOnEngine(const ModelRecipe& model, const PlainRun& plain) {
  Trajectory engine;
  {
    const support::QuietOutput quiet;
    const support::TemporaryFile results("random_model");
    engine = runOnEngine(model, results.name());
  }
  std::string difference = differenceOfFirings(plain.trajectory, engine);
  if (difference.empty() && timeRunsForward(plain)) {
    difference = differenceOfObservations(rewardsOf(model, plain), engine.observations);
  }
  return difference;
}

}  // namespace fuzz
