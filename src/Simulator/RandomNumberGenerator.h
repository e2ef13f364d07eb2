#pragma once

#include <cstdint>

/// Source of uniform variates. The generators differ in the interval that they return and in what they make of a bad
/// seed. None of them is fit for two threads.
class RandomNumberGenerator {
 public:
  RandomNumberGenerator() = default;
  RandomNumberGenerator(const RandomNumberGenerator&) = delete;
  RandomNumberGenerator& operator=(const RandomNumberGenerator&) = delete;
  virtual ~RandomNumberGenerator() = default;

  /// The next uniform variate; here 0.0.
  virtual double rnd();

  /// Sets the stream from `seed`; here nothing.
  virtual void srnd(std::uint32_t seed);
};
