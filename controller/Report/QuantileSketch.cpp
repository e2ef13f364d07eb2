#include "Report/QuantileSketch.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace controller {

std::int64_t QuantileSketch::heaviest() const noexcept {
  return std::max<std::int64_t>(1, static_cast<std::int64_t>(2.0 * kError * static_cast<double>(count_)));
}

void QuantileSketch::add(double value, std::int64_t times) {
  for (std::int64_t time = 0; time < times; ++time) {
    buffer_.push_back(value);
    if (buffer_.size() == kBufferSize) {
      mergeBuffer();
    }
  }
}

void QuantileSketch::mergeBuffer() {
  std::sort(buffer_.begin(), buffer_.end());
  std::vector<Tuple> merged;
  merged.reserve(tuples_.size() + buffer_.size());
  auto next = tuples_.begin();
  for (const double value : buffer_) {
    for (; next != tuples_.end() && next->value <= value; ++next) {
      merged.push_back(*next);
    }
    // Before the first tuple and behind the last one the rank is known; between two it is as uncertain as the next one's.
    const bool isWithin = next != tuples_.end() && next != tuples_.begin();
    merged.push_back({value, 1, isWithin ? next->weight + next->slack - 1 : 0});
  }
  merged.insert(merged.end(), next, tuples_.end());
  tuples_.swap(merged);
  count_ += static_cast<std::int64_t>(buffer_.size());
  buffer_.clear();
  compress();
}

void QuantileSketch::compress() {
  // From the greatest down, each tuple is taken into the one above it where that does not become too heavy. The least one
  // stays, so that the minimum is exact.
  const std::int64_t most = heaviest();
  std::size_t to = tuples_.size() - 1;
  for (std::size_t from = tuples_.size() - 1; from-- > 0;) {
    Tuple& above = tuples_[to];
    if (from > 0 && tuples_[from].weight + above.weight + above.slack <= most) {
      above.weight += tuples_[from].weight;
    } else {
      tuples_[--to] = tuples_[from];
    }
  }
  tuples_.erase(tuples_.begin(), tuples_.begin() + static_cast<std::ptrdiff_t>(to));
}

double QuantileSketch::quantile(double probability) {
  assert(probability >= 0.0 && probability <= 1.0 && count() > 0);
  if (!buffer_.empty()) {
    mergeBuffer();
  }
  const double exact = std::ceil(probability * static_cast<double>(count_));
  const std::int64_t rank = std::clamp<std::int64_t>(static_cast<std::int64_t>(exact), 1, count_);
  std::int64_t least = 0;  // rank that the tuple's value has at least
  std::int64_t smallestError = -1;
  double best = tuples_.front().value;
  for (const Tuple& tuple : tuples_) {
    least += tuple.weight;
    const std::int64_t error = std::max(std::abs(rank - least), std::abs(least + tuple.slack - rank));
    if (smallestError < 0 || error < smallestError) {
      smallestError = error;
      best = tuple.value;
    }
  }
  return best;
}

std::int64_t QuantileSketch::countBelow(double value) {
  if (!buffer_.empty()) {
    mergeBuffer();
  }
  // What is said of a lesser value holds at least for this one too, so that the greatest is as good an answer.
  std::int64_t below = 0;  // at least so many
  std::int64_t answer = 0;
  for (const Tuple& tuple : tuples_) {
    // Those that this tuple stands for may lie on either side of it, but for itself.
    answer = std::max(answer, below + (tuple.weight + tuple.slack - 1) / 2);
    if (tuple.value >= value) {
      return answer;
    }
    below += tuple.weight;
  }
  return count_;
}

}  // namespace controller
