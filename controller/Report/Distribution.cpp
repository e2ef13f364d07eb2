#include "Report/Distribution.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Report/RoundNumbers.h"

namespace controller {

void Distribution::add(std::span<const double> observations) {
  for (const double observation : observations) {
    if (std::isfinite(observation)) {
      addOne(observation);
    }
  }
}

void Distribution::addOne(double observation) {
  ++count_;
  if (sketch_) {
    sketch_->add(observation);
    return;
  }
  const auto place = std::lower_bound(values_.begin(), values_.end(), observation,
                                      [](const auto& entry, double value) { return entry.first < value; });
  if (place != values_.end() && place->first == observation) {
    ++place->second;
    return;
  }
  if (values_.size() < kMostValues) {
    values_.insert(place, {observation, 1});
    return;
  }
  sketch_.emplace();
  for (const auto& [value, times] : values_) {
    sketch_->add(value, times);
  }
  sketch_->add(observation);
  values_.clear();
  values_.shrink_to_fit();
}

double Distribution::quantile(double probability) {
  if (count_ == 0) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (sketch_) {
    return sketch_->quantile(probability);
  }
  const double wanted = probability * static_cast<double>(count_);
  std::int64_t upTo = 0;
  for (const auto& [value, times] : values_) {
    upTo += times;
    if (static_cast<double>(upTo) >= wanted) {
      return value;
    }
  }
  return values_.back().first;
}

std::int64_t Distribution::countBelow(double value) {
  if (sketch_) {
    return sketch_->countBelow(value);
  }
  std::int64_t below = 0;
  for (const auto& [other, times] : values_) {
    below += other < value ? times : 0;
  }
  return below;
}

std::vector<HistogramBin> Distribution::histogram() {
  std::vector<HistogramBin> bins;
  if (count_ == 0) {
    return bins;
  }
  if (!sketch_ && values_.size() <= kMostBars) {
    for (const auto& [value, times] : values_) {
      bins.push_back({value, value, times});
    }
    return bins;
  }
  double from = quantile(0.0);
  double to = quantile(1.0);
  const double middleFrom = quantile(0.001);
  const double middleTo = quantile(0.999);
  if (to / 2.0 - from / 2.0 > 1.5 * (middleTo / 2.0 - middleFrom / 2.0)) {  // halves, as the difference may overflow
    from = middleFrom;
    to = middleTo;
  }
  const double width = roundStep(from, to, kBins);
  const double first = std::floor(from / width);
  const auto number = static_cast<int>(std::floor(to / width) - first) + 1;
  std::int64_t below = countBelow(first * width);
  for (int bin = 0; bin < number; ++bin) {
    const double start = (first + bin) * width;
    const double end = (first + bin + 1) * width;
    const std::int64_t upTo = countBelow(end);
    bins.push_back({start, end, upTo - below});
    below = upTo;
  }
  return bins;
}

}  // namespace controller
