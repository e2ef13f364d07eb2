#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Statistics/Estimate.h"
#include "Statistics/Goal.h"
#include "Statistics/ObservationSummary.h"

namespace controller {

enum class Verdict {
  GoOn,
  Reached,           ///< every variable is as precise as wanted, at this checkpoint and the one before
  BatchesExhausted,  ///< the greatest number of batches is there, and the precision is not
  CannotReach,       ///< what is still missing can't be reached by more batches; word() says why
};

/// Decides when one experiment has run enough, for all its variables at once.
///
/// At each checkpoint every variable has an interval of confidence 1 - (1 - c) / k, where c is the goal's and k counts the
/// variables that have observations, so that all k intervals hold together with confidence c (Bonferroni; R. G. Miller,
/// Simultaneous Statistical Inference, 1981). A variable is precise if its half-width is at most wantedHalfWidth(). The
/// experiment is, when all variables are, with the least number of batches, at two checkpoints in a row (or at the one
/// that the greatest number of batches brings): one alone is reached too often by a variance that happens to look small
/// (Y. S. Chow and H. Robbins, On the asymptotic theory of fixed-width sequential confidence intervals for the mean, 1965,
/// for what stopping so does to the coverage; P. W. Glynn and W. Whitt, The asymptotic validity of sequential stopping
/// rules for stochastic simulations, 1992, for why there has to be a least sample).
///
/// Three kinds of variables would otherwise never end, or too soon:
///   - A mean that may be 0 has no relative precision. If its interval holds 0 and even the mean farthest from 0 in it
///     would ask for more than kBatchesOutOfReach batches, or if it still holds 0 after kBatchesToLeaveZero, the variable
///     is given up. All-zero observations are of this kind.
///   - Equal observations have no variance. They count as precise once a value that differs by as much as they are large
///     must be so rare, at the variable's confidence, that it would not move the mean by more than the wanted half-width.
///   - An observation that is NaN or infinite makes the mean so for good: the variable is given up at once.
/// The verdict is CannotReach once each variable is precise or given up, and one is given up.
///
/// A variable without any observation when the others have the least number is left out (a steady-state run gives none
/// of the variables of terminating runs).
///
/// Order: the verdicts depend on the observations, their order, and at which of them checkpoints are made, and on nothing
/// else: not on how they are cut into calls of addUnit.
class StoppingRule {
 public:
  static constexpr double kBatchesOutOfReach = 1e9;
  static constexpr std::int64_t kBatchesToLeaveZero = 10'000'000;

  /// One variable or more. Throws std::invalid_argument, with the reason, for a goal that breaks the limits of Goal, and
  /// for no variables.
  StoppingRule(Goal goal, std::vector<std::string> variableNames);

  /// Adds the observations of the next unit: a span for each variable, in the order of the names. Variables may have
  /// numbers of observations that differ. Requires: as many spans as variables.
  void addUnit(std::span<const std::span<const double>> observationsOfVariables);

  /// To be called at each unit boundary, in the order of units. Costs some microseconds for each variable. Without new
  /// observations it is the previous checkpoint still, and changes nothing.
  Verdict checkpoint();

  /// Verdict of the latest checkpoint; GoOn before the first.
  [[nodiscard]] Verdict verdict() const noexcept { return verdict_; }

  /// One sentence on the latest checkpoint: why it stopped, or what it waits for.
  [[nodiscard]] std::string word() const;

  /// One clause on a single variable at the latest checkpoint, such as "precise" or "all 1000 observations are 0, ...".
  [[nodiscard]] std::string wordOf(std::size_t variable) const;

  /// A word or two on a single variable at the latest checkpoint: "reached", "open", "too few batches", "can't be
  /// reached", "no observations".
  [[nodiscard]] const char* standingOfVariable(std::size_t variable) const;

  /// The variable that is farthest from its precision at the latest checkpoint: not given up, with the greatest quotient
  /// of half-width and wanted half-width. The first one where none has observations.
  [[nodiscard]] std::size_t worstVariable() const;

  /// Estimate of a variable from all observations so far, at the confidence of its share (variableConfidence()).
  [[nodiscard]] Estimate estimate(std::size_t variable) const;

  /// The half-width that the variable's interval may have. Absolute precision: the precision p itself. Relative: p / (1 + p)
  /// of the size of its mean as it stands, with which the error is at most p of the size of the true mean wherever in the
  /// interval that lies (A. M. Law, Simulation Modeling and Analysis, 5th edition, 2015, 9.4.1). NaN without a mean.
  [[nodiscard]] double wantedHalfWidth(std::size_t variable) const;

  /// Confidence of each single interval, by Bonferroni's share among the variables that have observations.
  [[nodiscard]] double variableConfidence() const noexcept;

  /// Rough number of further batches until the worst variable is precise, as its half-width shrinks with the root of the
  /// number of batches; at least what the least number still lacks, and at most what the greatest still allows. 0 when all
  /// are precise; -1 where nothing can be said.
  [[nodiscard]] std::int64_t batchesLeft() const;

  /// Least number of observations of any variable that has observations; 0 before the first.
  [[nodiscard]] std::int64_t batches() const noexcept;

  [[nodiscard]] const Goal& goal() const noexcept { return goal_; }
  [[nodiscard]] const std::vector<std::string>& variableNames() const noexcept { return names_; }

 private:
  enum class State { Absent, TooFew, Open, Precise, GivenUp };
  struct Standing {
    State state = State::TooFew;
    Estimate estimate;
    std::string reason;  // why it was given up
  };

  [[nodiscard]] Standing judgeVariable(std::size_t variable) const;
  [[nodiscard]] bool isConstantEnough(const Estimate& estimate) const;
  [[nodiscard]] std::string reasonToGiveUp(const ObservationSummary& summary, const Estimate& estimate) const;
  [[nodiscard]] double wantedHalfWidth(const Estimate& estimate) const noexcept;
  [[nodiscard]] Verdict judge();
  [[nodiscard]] std::size_t countOfState(State state) const noexcept;
  [[nodiscard]] std::string constantsInWords() const;
  [[nodiscard]] std::string givenUpInWords() const;

  Goal goal_;
  std::vector<std::string> names_;
  std::vector<ObservationSummary> summaries_;
  std::vector<Standing> standings_;  // of the latest checkpoint
  Verdict verdict_ = Verdict::GoOn;
  bool isPrecise_ = false;               // all were, at the latest checkpoint
  std::int64_t observationsJudged_ = 0;  // of all variables, at the latest checkpoint
};

/// Confidence that each of `variables` intervals needs for all of them to hold together with `confidence`.
[[nodiscard]] double shareOfConfidence(double confidence, std::size_t variables) noexcept;

}  // namespace controller
