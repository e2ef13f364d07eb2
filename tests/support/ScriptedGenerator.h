#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <utility>
#include <vector>

#include "Simulator/UserDistributions.h"
#include "support/CallLog.h"

namespace support {

/// Replays given numbers in place of the process's generator as long as it lives. A draw too many fails the test.
class ScriptedGenerator : public RandomNumberGenerator {
 public:
  explicit ScriptedGenerator(std::vector<double> numbers, CallLog* log = nullptr)
      : numbers_(std::move(numbers)), log_(log), replaced_(std::exchange(TheDistribution->RNG, this)) {}

  ~ScriptedGenerator() override { TheDistribution->RNG = replaced_; }

  double rnd() override {
    note(log_, "draw");
    if (drawn_ == numbers_.size()) {
      ADD_FAILURE() << "more than the " << drawn_ << " scripted numbers are drawn";
      return 0.5;
    }
    return numbers_[drawn_++];
  }

  /// Numbers drawn so far.
  [[nodiscard]] std::size_t drawn() const { return drawn_; }

 private:
  std::vector<double> numbers_;
  std::size_t drawn_ = 0;
  CallLog* log_;                     // borrowed from the test, or null
  RandomNumberGenerator* replaced_;  // borrowed from the sampler, which gets it back
};

}  // namespace support
