#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bare {

/// A place-transition net in flat tables: exponential delays, arcs that add to marks, conditions that bound them, and
/// a reward that is a weighted sum of marks.
struct Net {
  struct Arc {
    std::uint32_t place;
    std::int32_t change;
  };
  /// least <= mark <= most
  struct Condition {
    std::uint32_t place;
    std::int32_t least;
    std::int32_t most;
  };
  /// The ranges end where those of the next transition begin; the last transition is a mark behind the others.
  struct Transition {
    double mean = 0.0;  // of the delay
    std::uint32_t firstArc = 0;
    std::uint32_t firstCondition = 0;
    std::uint32_t firstAffected = 0;
  };

  std::uint32_t addPlace(std::int32_t mark, double rewardWeight);
  void addTransition(double rate, const std::vector<Arc>& its, const std::vector<Condition>& when);
  /// Fills `affected`, for each transition with itself and then those whose conditions look at a place that it changes.
  /// To be called once, behind all the above.
  void connect();

  [[nodiscard]] std::uint32_t transitionCount() const { return static_cast<std::uint32_t>(transitions.size() - 1); }

  std::vector<std::int32_t> marks;
  std::vector<double> weights;  // of each place's mark in the reward
  std::vector<Transition> transitions{Transition{}};
  std::vector<Arc> arcs;
  std::vector<Condition> conditions;
  std::vector<std::uint32_t> affected;
};

/// M/M/1/K from empty; the reward is the number in system.
Net queue(double arrivalRate, double serviceRate, std::int32_t capacity);
/// Closed cycle of single exponential servers of rate 1 with `customersEach` at each; the reward is the number at the
/// first.
Net cycle(std::uint32_t stations, std::int32_t customersEach);
/// Independent machines, all up; the reward is the number down.
Net machines(std::uint32_t count, double failureRate, double repairRate);
/// Independent clocks of rate 1; the reward is that of no place.
Net clocks(std::uint32_t count);

}  // namespace bare
