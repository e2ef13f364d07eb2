#include "support/MarkovChain.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace support {

MarkovChain::MarkovChain(const Marking& initial, const std::function<Moves(const Marking&)>& moves) {
  indexOf(initial);
  for (std::size_t from = 0; from < markings_.size(); ++from) {
    const Marking marking = markings_[from];  // a copy: indexOf grows the vector
    for (const auto& [reached, rate] : moves(marking)) {
      const std::size_t to = indexOf(reached);
      arcs_.push_back({from, to, rate});
      exitRates_[from] += rate;
    }
  }
  uniformRate_ = *std::max_element(exitRates_.begin(), exitRates_.end());
}

std::size_t MarkovChain::indexOf(const Marking& marking) {
  const auto [place, isNew] = index_.try_emplace(marking, markings_.size());
  if (isNew) {
    markings_.push_back(marking);
    exitRates_.push_back(0.0);
  }
  return place->second;
}

std::vector<double> MarkovChain::step(const std::vector<double>& probabilities) const {
  std::vector<double> next(probabilities.size());
  for (std::size_t i = 0; i < next.size(); ++i) {
    next[i] = probabilities[i] * (1.0 - exitRates_[i] / uniformRate_);
  }
  for (const Arc& arc : arcs_) {
    next[arc.to] += probabilities[arc.from] * arc.rate / uniformRate_;
  }
  return next;
}

double MarkovChain::weighted(double time, const std::function<double(const Marking&)>& reward, bool integral) const {
  std::vector<double> rewards(markings_.size());
  std::transform(markings_.begin(), markings_.end(), rewards.begin(), reward);
  std::vector<double> probabilities(markings_.size(), 0.0);
  probabilities[0] = 1.0;

  const double mean = uniformRate_ * time;
  const auto lastStep = static_cast<int>(mean + 12.0 * std::sqrt(mean) + 60.0);
  double sum = 0.0;
  double poissonTail = 1.0;  // probability of more than k steps
  for (int k = 0; k <= lastStep; ++k) {
    const double poisson =
        mean > 0.0 ? std::exp(k * std::log(mean) - mean - std::lgamma(k + 1.0)) : (k == 0 ? 1.0 : 0.0);
    poissonTail = std::max(0.0, poissonTail - poisson);
    const double weight = integral ? poissonTail / uniformRate_ : poisson;
    double expected = 0.0;
    for (std::size_t i = 0; i < rewards.size(); ++i) {
      expected += probabilities[i] * rewards[i];
    }
    sum += weight * expected;
    probabilities = step(probabilities);
  }
  return sum;
}

double MarkovChain::at(double time, const std::function<double(const Marking&)>& reward) const {
  return weighted(time, reward, false);
}

double MarkovChain::over(double time, const std::function<double(const Marking&)>& reward) const {
  return weighted(time, reward, true);
}

double MarkovChain::longRun(const std::function<double(const Marking&)>& reward) const {
  const std::size_t n = markings_.size();
  std::vector<std::vector<double>> rates(n, std::vector<double>(n, 0.0));
  for (const Arc& arc : arcs_) {
    rates[arc.from][arc.to] += arc.rate;
  }
  // Takes out the last marking, then the one before it and so on: the rates among the others become those of the chain
  // watched in the others alone.
  for (std::size_t last = n - 1; last > 0; --last) {
    const double out =
        std::accumulate(rates[last].begin(), rates[last].begin() + static_cast<std::ptrdiff_t>(last), 0.0);
    for (std::size_t i = 0; i < last; ++i) {
      rates[i][last] /= out;
      for (std::size_t j = 0; j < last; ++j) {
        rates[i][j] += rates[i][last] * rates[last][j];
      }
    }
  }
  std::vector<double> weights(n, 0.0);
  weights[0] = 1.0;
  double sum = 1.0;
  double rewarded = reward(markings_[0]);
  for (std::size_t state = 1; state < n; ++state) {
    for (std::size_t i = 0; i < state; ++i) {
      weights[state] += weights[i] * rates[i][state];
    }
    sum += weights[state];
    rewarded += weights[state] * reward(markings_[state]);
  }
  return rewarded / sum;
}

}  // namespace support
