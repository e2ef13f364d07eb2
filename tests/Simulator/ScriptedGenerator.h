#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "Simulator/RandomNumberGenerator.h"
#include "gtest/gtest.h"

/// A generator that hands out variates from a list, and fails the test when it is asked for more.
class ScriptedGenerator : public RandomNumberGenerator {
 public:
  explicit ScriptedGenerator(std::vector<double> variates) : variates_(std::move(variates)) {}

  double rnd() override {
    if (draws_ == variates_.size()) {
      ADD_FAILURE() << "a draw beyond the " << draws_ << " variates of the script";
      return 0.5;
    }
    return variates_[draws_++];
  }
  void srnd(std::uint32_t seed) override { lastSeed_ = seed; }

  [[nodiscard]] std::size_t draws() const { return draws_; }
  [[nodiscard]] std::uint32_t lastSeed() const { return lastSeed_; }

 private:
  std::vector<double> variates_;
  std::size_t draws_ = 0;
  std::uint32_t lastSeed_ = 0;
};
