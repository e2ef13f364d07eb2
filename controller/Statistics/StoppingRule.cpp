#include "Statistics/StoppingRule.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace controller {

namespace {

/// The precision that the half-width is held to, as a share of the estimated mean or in its unit.
double innerPrecision(const Goal& goal) noexcept {
  return goal.isRelative ? goal.precision / (1.0 + goal.precision) : goal.precision;
}

Goal checked(Goal goal) {
  requireSound(goal);
  goal.leastBatches = std::max<std::int64_t>(goal.leastBatches, 2);
  return goal;
}

/// "3 variables", "1 variable"
std::string countOf(std::size_t number, const char* thing) {
  return fmt::format("{} {}{}", number, thing, number == 1 ? "" : "s");
}

/// "1 % of the mean", "0.5"
std::string precisionInWords(const Goal& goal) {
  return goal.isRelative ? fmt::format("{:.6g} % of the mean", goal.precision * 100.0)
                         : fmt::format("{:.6g}", goal.precision);
}

}  // namespace

double shareOfConfidence(double confidence, std::size_t variables) noexcept {
  return 1.0 - (1.0 - confidence) / static_cast<double>(std::max<std::size_t>(variables, 1));
}

StoppingRule::StoppingRule(Goal goal, std::vector<std::string> variableNames)
    : goal_(checked(goal)), names_(std::move(variableNames)), summaries_(names_.size()), standings_(names_.size()) {
  if (names_.empty()) {
    throw std::invalid_argument("no variables to estimate");
  }
}

void StoppingRule::addUnit(std::span<const std::span<const double>> observationsOfVariables) {
  assert(observationsOfVariables.size() == summaries_.size());
  for (std::size_t variable = 0; variable < summaries_.size(); ++variable) {
    summaries_[variable].add(observationsOfVariables[variable]);
  }
}

std::int64_t StoppingRule::batches() const noexcept {
  std::int64_t least = 0;
  for (const ObservationSummary& summary : summaries_) {
    if (summary.count() > 0 && (least == 0 || summary.count() < least)) {
      least = summary.count();
    }
  }
  return least;
}

double StoppingRule::variableConfidence() const noexcept {
  const auto present = std::count_if(summaries_.begin(), summaries_.end(),
                                     [](const ObservationSummary& summary) { return summary.count() > 0; });
  return shareOfConfidence(goal_.confidence, static_cast<std::size_t>(present));
}

Estimate StoppingRule::estimate(std::size_t variable) const {
  return summaries_.at(variable).estimate(variableConfidence());
}

double StoppingRule::wantedHalfWidth(const Estimate& estimate) const noexcept {
  const double precision = innerPrecision(goal_);
  return goal_.isRelative ? precision * std::fabs(estimate.mean) : precision;
}

double StoppingRule::wantedHalfWidth(std::size_t variable) const {
  return wantedHalfWidth(estimate(variable));
}

bool StoppingRule::isConstantEnough(const Estimate& estimate) const {
  // A value that has a chance of p goes unseen in n observations with probability (1 - p)^n, which is half of what the
  // confidence leaves, as for one side of an interval, at about this p.
  const double rarest = -std::log((1.0 - variableConfidence()) / 2.0) / static_cast<double>(estimate.count);
  return rarest * std::fabs(estimate.mean) <= wantedHalfWidth(estimate);
}

std::string StoppingRule::reasonToGiveUp(const ObservationSummary& summary, const Estimate& estimate) const {
  if (!summary.isFinite()) {
    return fmt::format("its observation {} is no finite number", summary.firstNotFinite() + 1);
  }
  if (estimate.count < goal_.leastBatches) {
    return "";
  }
  if (!summary.isConstant() && !(estimate.variance > 0.0 && std::isfinite(estimate.variance))) {
    return "its variance is beyond the range of numbers";
  }
  if (!goal_.isRelative || estimate.lower > 0.0 || estimate.upper < 0.0) {
    return "";
  }
  const bool isZero = summary.isConstant();
  if (isZero && estimate.method == EstimateMethod::Constant) {
    return "";
  }
  const double farthest = std::max(-estimate.lower, estimate.upper);
  const double quotient = estimate.halfWidth / (innerPrecision(goal_) * farthest);
  const double batchesThen = static_cast<double>(estimate.count) * quotient * quotient;
  if (batchesThen <= kBatchesOutOfReach && estimate.count < kBatchesToLeaveZero) {
    return "";
  }
  return isZero ? fmt::format(
                      "all {} observations are 0, and nothing is precise relative to a mean of 0; an absolute "
                      "precision has a meaning",
                      estimate.count)
                : fmt::format(
                      "after {} observations its mean may still be 0 ({:.3g} to {:.3g}), and nothing is precise "
                      "relative to that; an absolute precision has a meaning",
                      estimate.count, estimate.lower, estimate.upper);
}

StoppingRule::Standing StoppingRule::judgeVariable(std::size_t variable) const {
  const ObservationSummary& summary = summaries_[variable];
  Standing standing;
  standing.estimate = summary.estimate(variableConfidence());
  if (summary.count() == 0) {
    standing.state = batches() >= goal_.leastBatches ? State::Absent : State::TooFew;
    return standing;
  }
  standing.reason = reasonToGiveUp(summary, standing.estimate);
  if (!standing.reason.empty()) {
    standing.state = State::GivenUp;
  } else if (summary.count() < goal_.leastBatches) {
    standing.state = State::TooFew;
  } else {
    const bool isConstant = standing.estimate.method == EstimateMethod::Constant;
    const bool isNarrow = standing.estimate.halfWidth <= wantedHalfWidth(standing.estimate);
    standing.state = isNarrow && (!isConstant || isConstantEnough(standing.estimate)) ? State::Precise : State::Open;
  }
  return standing;
}

Verdict StoppingRule::checkpoint() {
  std::int64_t observations = 0;
  for (const ObservationSummary& summary : summaries_) {
    observations += summary.count();
  }
  if (observations == observationsJudged_) {
    return verdict_;
  }
  observationsJudged_ = observations;
  for (std::size_t variable = 0; variable < summaries_.size(); ++variable) {
    standings_[variable] = judgeVariable(variable);
  }
  verdict_ = judge();
  return verdict_;
}

std::size_t StoppingRule::countOfState(State state) const noexcept {
  return static_cast<std::size_t>(std::count_if(standings_.begin(), standings_.end(),
                                                [state](const Standing& standing) { return standing.state == state; }));
}

Verdict StoppingRule::judge() {
  const std::size_t settled = countOfState(State::Precise) + countOfState(State::Absent);
  const std::size_t givenUp = countOfState(State::GivenUp);
  const bool wasPrecise = std::exchange(isPrecise_, settled == standings_.size());
  const bool isLast = goal_.greatestBatches > 0 && batches() >= goal_.greatestBatches;
  if (isPrecise_ && (wasPrecise || isLast)) {
    return Verdict::Reached;
  }
  if (givenUp > 0 && settled + givenUp == standings_.size()) {
    return Verdict::CannotReach;
  }
  return isLast ? Verdict::BatchesExhausted : Verdict::GoOn;
}

std::size_t StoppingRule::worstVariable() const {
  std::size_t worst = 0;
  double greatest = -1.0;
  for (std::size_t variable = 0; variable < standings_.size(); ++variable) {
    const Standing& standing = standings_[variable];
    if (standing.estimate.count == 0 || standing.state == State::GivenUp) {
      continue;
    }
    const double wanted = wantedHalfWidth(standing.estimate);
    const double halfWidth = standing.estimate.halfWidth;
    const double quotient = wanted > 0.0    ? halfWidth / wanted
                            : halfWidth > 0 ? std::numeric_limits<double>::infinity()
                                            : 0.0;
    if (quotient > greatest) {
      worst = variable;
      greatest = quotient;
    }
  }
  return worst;
}

std::int64_t StoppingRule::batchesLeft() const {
  const std::int64_t now = batches();
  if (isPrecise_ || now == 0) {
    return isPrecise_ ? 0 : -1;
  }
  const Estimate& worst = standings_[worstVariable()].estimate;
  const double quotient = worst.halfWidth / wantedHalfWidth(worst);
  const double further = static_cast<double>(worst.count) * (quotient * quotient - 1.0);
  std::int64_t left = std::max<std::int64_t>(goal_.leastBatches - now, 0);
  if (std::isfinite(further) && further < 9e18) {
    left = std::max(left, static_cast<std::int64_t>(std::ceil(std::max(further, 0.0))));
  } else if (goal_.greatestBatches == 0) {
    return -1;
  } else {
    left = std::numeric_limits<std::int64_t>::max();
  }
  return goal_.greatestBatches > 0 ? std::clamp<std::int64_t>(goal_.greatestBatches - now, 0, left) : left;
}

std::string StoppingRule::wordOf(std::size_t variable) const {
  const Standing& standing = standings_.at(variable);
  switch (standing.state) {
    case State::Absent:
      return "has no observations";
    case State::TooFew:
      return fmt::format("has {} of at least {} observations", standing.estimate.count, goal_.leastBatches);
    case State::GivenUp:
      return "can't become precise: " + standing.reason;
    case State::Precise:
      return standing.estimate.method == EstimateMethod::Constant
                 ? fmt::format("is {:.6g} in all {} observations", standing.estimate.mean, standing.estimate.count)
                 : "is precise";
    case State::Open:
      break;
  }
  if (standing.estimate.minimum == standing.estimate.maximum) {
    return fmt::format("is {:.6g} in all {} observations, too few to take it for constant", standing.estimate.mean,
                       standing.estimate.count);
  }
  return fmt::format("has mean {:.6g} and half-width {:.3g}, wanted {:.3g}", standing.estimate.mean,
                     standing.estimate.halfWidth, wantedHalfWidth(standing.estimate));
}

const char* StoppingRule::standingOfVariable(std::size_t variable) const {
  switch (standings_.at(variable).state) {
    case State::Absent:
      return "no observations";
    case State::TooFew:
      return "too few batches";
    case State::GivenUp:
      return "can't be reached";
    case State::Precise:
      return "reached";
    case State::Open:
      break;
  }
  return "open";
}

std::string StoppingRule::constantsInWords() const {
  std::string words;
  for (std::size_t variable = 0; variable < names_.size(); ++variable) {
    const Standing& standing = standings_[variable];
    if (standing.state == State::Precise && standing.estimate.minimum == standing.estimate.maximum) {
      words += fmt::format("; \"{}\" is {:.6g} in all of them", names_[variable], standing.estimate.mean);
    }
  }
  return words;
}

std::string StoppingRule::givenUpInWords() const {
  const std::size_t givenUp = countOfState(State::GivenUp);
  std::size_t first = 0;
  while (first + 1 < names_.size() && standings_[first].state != State::GivenUp) {
    ++first;
  }
  const std::string others =
      givenUp > 1 ? fmt::format("; so it is with {} more", countOf(givenUp - 1, "variable")) : "";
  return fmt::format("\"{}\" {}{}", names_[first], wordOf(first), others);
}

std::string StoppingRule::word() const {
  const std::size_t worst = worstVariable();
  const std::string ofWorst = fmt::format("\"{}\" {}", names_[worst], wordOf(worst));
  switch (verdict_) {
    case Verdict::Reached:
      return fmt::format("{} known to {} at {:.6g} % confidence after {} batches{}",
                         countOf(names_.size() - countOfState(State::Absent), "variable"), precisionInWords(goal_),
                         goal_.confidence * 100.0, batches(), constantsInWords());
    case Verdict::BatchesExhausted:
      return fmt::format("stopped at {} batches, the greatest number: {}", batches(), ofWorst);
    case Verdict::CannotReach:
      return givenUpInWords();
    case Verdict::GoOn:
      break;
  }
  if (isPrecise_) {
    return "precise at one checkpoint, waits for a second one";
  }
  return "waits: " + ofWorst;
}

}  // namespace controller
