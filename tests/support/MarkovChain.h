#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace support {

/// A small continuous-time Markov chain, solved numerically: what the simulated test models are compared with. It knows
/// nothing of the engine.
/// Source  uniformisation; A. Jensen, Markoff chains as an aid in the study of Markoff processes, 1953
///         elimination without subtractions; W. K. Grassmann, M. I. Taksar, D. P. Heyman, Regenerative analysis and
///         steady state distributions for Markov chains, Operations Research 33(5), 1985
class MarkovChain {
 public:
  using Marking = std::vector<int>;

  /// Moves out of a marking: the marking reached and the rate, per time unit.
  using Moves = std::vector<std::pair<Marking, double>>;

  /// The chain of all markings that `moves` reaches from `initial`.
  MarkovChain(const Marking& initial, const std::function<Moves(const Marking&)>& moves);

  [[nodiscard]] std::size_t size() const { return markings_.size(); }

  /// Expectation of `reward` at `time`, from the initial marking.
  [[nodiscard]] double at(double time, const std::function<double(const Marking&)>& reward) const;

  /// Expectation of the integral of `reward` over [0, time].
  [[nodiscard]] double over(double time, const std::function<double(const Marking&)>& reward) const;

  /// Expectation of `reward` in the long run. O(n^3) time, O(n^2) space.
  /// Requires: every marking can be reached from every other.
  [[nodiscard]] double longRun(const std::function<double(const Marking&)>& reward) const;

 private:
  struct Arc {
    std::size_t from;
    std::size_t to;
    double rate;
  };

  std::size_t indexOf(const Marking& marking);
  [[nodiscard]] std::vector<double> step(const std::vector<double>& probabilities) const;

  /// Sums, over the steps k of the uniformised chain, weight(k) times the reward expected after k steps.
  [[nodiscard]] double weighted(double time, const std::function<double(const Marking&)>& reward, bool integral) const;

  std::vector<Marking> markings_;
  std::map<Marking, std::size_t> index_;
  std::vector<Arc> arcs_;
  std::vector<double> exitRates_;
  double uniformRate_ = 0.0;
};

}  // namespace support
