#include "Statistics/SteadyStateDiagnosis.h"

#include <fmt/format.h>

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

namespace controller {

namespace {

constexpr double kNormalQuantile99 = 2.3263478740408408;
constexpr std::int64_t kLeastPairs = 10;
constexpr std::int64_t kPairsToTrust = 400;  // a correlation then has a standard error of 0.05
constexpr std::size_t kLeastGroups = 10;
constexpr double kErrorsOfACut = 3.0;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Where MSER cuts a series: groups before the cut, and the moments of those behind it.
struct Cut {
  std::size_t before = 0;
  double meanBehind = 0.0;
  double squaresBehind = 0.0;  // about their mean
};

/// The cut whose rest has the least sum of squares over its squared length; of equals the earliest.
Cut bestCut(const std::vector<double>& series) {
  Cut best;
  double leastError = std::numeric_limits<double>::infinity();
  double mean = 0.0;
  double squares = 0.0;
  for (std::size_t before = series.size(); before-- > 0;) {
    const auto length = static_cast<double>(series.size() - before);
    const double difference = series[before] - mean;
    mean += difference / length;
    squares += difference * (series[before] - mean);
    const double error = squares / (length * length);
    if (length >= 5.0 && error <= leastError) {
      leastError = error;
      best = {before, mean, squares};
    }
  }
  return best;
}

/// Whether the part before the cut differs from the rest by more than kErrorsOfACut standard errors, made longer for the
/// correlation of neighbours in the rest.
bool isBeyondChance(const std::vector<double>& series, const Cut& cut) {
  double meanBefore = 0.0;
  for (std::size_t at = 0; at < cut.before; ++at) {
    meanBefore += (series[at] - meanBefore) / static_cast<double>(at + 1);
  }
  const auto before = static_cast<double>(cut.before);
  const auto behind = static_cast<double>(series.size() - cut.before);
  double products = 0.0;
  for (std::size_t at = cut.before + 1; at < series.size(); ++at) {
    products += (series[at - 1] - cut.meanBehind) * (series[at] - cut.meanBehind);
  }
  const double correlation = cut.squaresBehind > 0.0 ? std::clamp(products / cut.squaresBehind, 0.0, 0.9) : 0.0;
  const double variance = cut.squaresBehind / (behind - 1.0) * (1.0 + correlation) / (1.0 - correlation);
  const double error = std::sqrt(variance * (1.0 / before + 1.0 / behind));
  return std::fabs(meanBefore - cut.meanBehind) > kErrorsOfACut * error;
}

}  // namespace

SteadyStateDiagnosis::SteadyStateDiagnosis(std::int64_t batchLength) : batchLength_(batchLength) {
  assert(batchLength >= 1);
}

void SteadyStateDiagnosis::addUnit(std::span<const double> observations) {
  if (observations.empty()) {
    return;
  }
  isFinite_ =
      isFinite_ && std::all_of(observations.begin(), observations.end(), [](double x) { return std::isfinite(x); });
  if (!isFinite_) {
    return;
  }
  if (units_ == 0) {
    shift_ = observations.front();
  }
  ++units_;
  addToLevels(observations);
  addToPlaces(observations);
}

void SteadyStateDiagnosis::addToLevels(std::span<const double> observations) {
  struct Progress {
    bool hasPrevious = false, hasHalf = false;
    double previous = 0.0;  // batch of this length
    double half = 0.0;      // first half of a batch of the next length
  };
  std::array<Progress, kLevels> progress{};
  for (const double observation : observations) {
    double batch = observation - shift_;
    for (int number = 0; number < kLevels; ++number) {
      Level& level = levels_[static_cast<std::size_t>(number)];
      Progress& here = progress[static_cast<std::size_t>(number)];
      ++level.count;
      level.sum += batch;
      level.squares += batch * batch;
      if (here.hasPrevious) {
        ++level.pairs;
        level.products += here.previous * batch;
        level.neighbours += here.previous + batch;
      }
      here.hasPrevious = true;
      here.previous = batch;
      here.hasHalf = !here.hasHalf;
      if (here.hasHalf) {
        here.half = batch;
        break;
      }
      batch = (here.half + batch) / 2.0;
    }
  }
}

void SteadyStateDiagnosis::addToPlaces(std::span<const double> observations) {
  while (observations.size() / static_cast<std::size_t>(groupLength_) > kMostGroups) {
    halvePlaces();
  }
  const auto length = static_cast<std::size_t>(groupLength_);
  const std::size_t groups = observations.size() / length;
  if (places_.size() < groups) {
    places_.resize(groups);
  }
  for (std::size_t group = 0; group < groups; ++group) {
    double sum = 0.0;
    for (const double observation : observations.subspan(group * length, length)) {
      sum += observation - shift_;
    }
    ++places_[group].count;
    places_[group].sum += sum / static_cast<double>(length);
  }
}

void SteadyStateDiagnosis::halvePlaces() {
  groupLength_ *= 2;
  const std::size_t pairs = places_.size() / 2;
  for (std::size_t pair = 0; pair < pairs; ++pair) {
    const Place& first = places_[2 * pair];
    const Place& second = places_[2 * pair + 1];
    const double mean =
        (first.sum / static_cast<double>(first.count) + second.sum / static_cast<double>(second.count)) / 2.0;
    places_[pair] = {second.count, mean * static_cast<double>(second.count)};
  }
  places_.resize(pairs);
}

double SteadyStateDiagnosis::correlation(const Level& level) {
  if (level.pairs < kLeastPairs) {
    return kNaN;
  }
  const double mean = level.sum / static_cast<double>(level.count);
  const double variance = level.squares / static_cast<double>(level.count) - mean * mean;
  const double covariance = (level.products - mean * level.neighbours) / static_cast<double>(level.pairs) + mean * mean;
  return variance > 0.0 ? covariance / variance : kNaN;
}

bool SteadyStateDiagnosis::isCorrelated(const Level& level) {
  const double value = correlation(level);
  return value > kCorrelationAllowed && value * std::sqrt(static_cast<double>(level.pairs)) > kNormalQuantile99;
}

double SteadyStateDiagnosis::lag1Correlation() const {
  return isFinite_ ? correlation(levels_[0]) : kNaN;
}

bool SteadyStateDiagnosis::isTooShort() const {
  return isFinite_ && isCorrelated(levels_[0]);
}

std::int64_t SteadyStateDiagnosis::recommendedBatchLength() const {
  if (!isTooShort()) {
    return batchLength_;
  }
  std::size_t level = 0;
  while (level + 1 < levels_.size() && levels_[level + 1].pairs >= kPairsToTrust && isCorrelated(levels_[level])) {
    ++level;
  }
  std::int64_t length = batchLength_ << level;
  if (isCorrelated(levels_[level])) {
    double rest = correlation(levels_[level]);
    while (rest > kCorrelationAllowed) {
      rest /= 2.0;
      length *= 2;
    }
  }
  return length;
}

std::int64_t SteadyStateDiagnosis::warmUpBatches() const {
  std::vector<double> series;
  for (const Place& place : places_) {
    if (place.count < units_) {
      break;
    }
    series.push_back(place.sum / static_cast<double>(place.count));
  }
  if (!isFinite_ || series.size() < kLeastGroups) {
    return -1;
  }
  const Cut cut = bestCut(series);
  if (cut.before == 0 || !isBeyondChance(series, cut)) {
    return 0;
  }
  return cut.before > series.size() / 2 ? -1 : static_cast<std::int64_t>(cut.before) * groupLength_;
}

std::vector<std::string> SteadyStateDiagnosis::words() const {
  std::vector<std::string> words;
  if (isTooShort()) {
    words.push_back(fmt::format("batches of {} are too short: lag-1 correlation {:.2f}; use {}", batchLength_,
                                lag1Correlation(), recommendedBatchLength()));
  }
  const std::int64_t warmUp = warmUpBatches();
  if (warmUp > 0) {
    words.push_back(
        fmt::format("the first {} of a unit are still warm-up (MSER-5): leave them out", warmUp * batchLength_));
  }
  return words;
}

}  // namespace controller
