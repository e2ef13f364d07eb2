#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace controller {

/// Watches whether the batches of one variable of a steady-state study may count as independent observations of the long
/// run: whether they are long enough, and begin late enough.
///
/// A unit is one simulator process with a fresh start: batches of different units are independent, those that follow each
/// other in one unit may not be, and the first ones may still bear the marks of the start.
///
/// Length   the lag-1 correlation of successive batches within units, about the mean of all. They are too short if it is
///          above kCorrelationAllowed and more than chance would bring (one side, 1 %). The same for batches put together
///          by twos, fours and so on tells from which length on they are not. G. S. Fishman, Grouping observations in
///          digital simulation, Management Science 24(5), 1978.
/// Warm-up  MSER-5 on the series of batch means, averaged over the units at each place: the cut that makes the squared
///          error of the rest's mean least. K. P. White, M. J. Cobb and S. C. Spratt, A comparison of five steady-state
///          truncation heuristics for simulation, 2000; over the average of replications: K. Hoad, S. Robinson and
///          R. Davies, Automating warm-up length estimation, 2010. A cut is told of only if the part before it differs
///          from the rest by more than chance would bring (3 standard errors), as MSER always finds some cut.
/// Memory   constant: the series of a unit is kept in at most 4096 groups, of five batches or, in long units, of more.
class SteadyStateDiagnosis {
 public:
  static constexpr double kCorrelationAllowed = 0.05;

  /// batchLength: what one observation stands for, in the unit that the words shall use (such as simulator batches).
  explicit SteadyStateDiagnosis(std::int64_t batchLength = 1);

  /// Adds the observations of the next unit in their order. Observations that are NaN or infinite make all answers NaN or
  /// "unknown".
  void addUnit(std::span<const double> observations);

  /// Lag-1 correlation within units; NaN with fewer than 10 pairs, or without variance.
  [[nodiscard]] double lag1Correlation() const;

  /// The batches are too short by the rule above.
  [[nodiscard]] bool isTooShort() const;

  /// Shortest batch length, batchLength times a power of 2, whose batches need not count as correlated; batchLength itself
  /// if that is long enough. Where the units are too short to tell, it is reckoned from the longest length that they do
  /// tell of, as the correlation of long batches falls in inverse proportion to their length.
  [[nodiscard]] std::int64_t recommendedBatchLength() const;

  /// Batches at the beginning of each unit that MSER-5 takes for warm-up; 0 if none, -1 if the units have fewer than 50
  /// batches or the cut lies in the second half, so that they are too short to tell.
  [[nodiscard]] std::int64_t warmUpBatches() const;

  /// What the user should know, a sentence each; empty if all is well or too little is known. Such as "batches of 50 are
  /// too short: lag-1 correlation 0.31; use 400".
  [[nodiscard]] std::vector<std::string> words() const;

 private:
  static constexpr int kLevels = 24;
  static constexpr std::size_t kMostGroups = 4096;

  /// Sums of the batches of one length, 2^level observations each, over all units.
  struct Level {
    std::int64_t count = 0;  // batches
    std::int64_t pairs = 0;  // neighbours within a unit
    double sum = 0.0;        // of batches, less the shift
    double squares = 0.0;
    double products = 0.0;    // of neighbours
    double neighbours = 0.0;  // sum over pairs of both
  };
  /// Sums of one place in the series of a unit, over all units.
  struct Place {
    std::int64_t count = 0;
    double sum = 0.0;
  };

  void addToLevels(std::span<const double> observations);
  void addToPlaces(std::span<const double> observations);
  void halvePlaces();
  [[nodiscard]] static double correlation(const Level& level);
  [[nodiscard]] static bool isCorrelated(const Level& level);

  std::int64_t batchLength_;
  std::int64_t units_ = 0;
  bool isFinite_ = true;
  double shift_ = 0.0;  // the first observation, taken off all
  std::array<Level, kLevels> levels_{};
  std::int64_t groupLength_ = 5;
  std::vector<Place> places_;
};

}  // namespace controller
