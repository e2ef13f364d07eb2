#pragma once

#include "BaseClasses/SAN/Activity.h"

namespace support {

/// What all activities of the railway have alike: weight 1, rank 1, rate 0, no reactivation. As it stands it is an
/// instantaneous activity; a timed one derives from DeterministicActivity.
class RailwayActivity : public Activity {
 public:
  double Weight() override { return 1.0; }
  double Rate() override { return 0.0; }
  bool ReactivationPredicate() override { return false; }
  bool ReactivationFunction() override { return false; }
  /// 0: the activity completes at once.
  double SampleDistribution() override { return 0.0; }
  /// Null: there is no parameter.
  double* ReturnDistributionParameters() override { return TheDistributionParameters; }
  int Rank() override { return 1; }

 protected:
  RailwayActivity() = default;

  /// The common part of Enabled: `holds` is the predicate on the present marking.
  bool shiftEnabled(bool holds) {
    OldEnabled = NewEnabled;
    NewEnabled = holds;
    return NewEnabled;
  }
};

/// An activity whose delay is its parameter, evaluated anew at each sampling, so that it sees the marking of that
/// moment. The delay is taken as it is: 0 is legal, and nothing is drawn.
class DeterministicActivity : public RailwayActivity {
 public:
  ~DeterministicActivity() override { delete[] TheDistributionParameters; }

  /// The delay, in simulated time.
  virtual double DeterministicParamValue() = 0;

  double SampleDistribution() override { return DeterministicParamValue(); }

  double* ReturnDistributionParameters() override {
    TheDistributionParameters[0] = DeterministicParamValue();
    return TheDistributionParameters;
  }

 protected:
  DeterministicActivity() { TheDistributionParameters = new double[1]{}; }
};

}  // namespace support
