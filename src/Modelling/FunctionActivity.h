#pragma once

#include <utility>

#include "BaseClasses/SAN/Activity.h"

namespace modelling {

/// An activity that is made of functions. Their types are part of its own, so that what the engine asks through one
/// virtual call comes to the same instructions as an activity written out by hand.
///
/// Marks    the functions reach marks through the state variables themselves, whose pointers follow sharing; there is
///          nothing to link.
template <typename Behaviour, typename Effect>
class FunctionActivity final : public Activity {
 public:
  FunctionActivity(const char* name, Behaviour behaviour, Effect effect)
      : behaviour_(std::move(behaviour)), effect_(std::move(effect)) {
    ActivityInitialize(name, 0, decltype(behaviour_.delay)::kDistribution, RaceEnabled, 0, 0, false);
  }

  bool Enabled() override {
    OldEnabled = NewEnabled;
    NewEnabled = behaviour_.enabling();
    return NewEnabled;
  }
  bool EnablingChange() override { return Enabled() != OldEnabled; }
  double Weight() override { return behaviour_.weight(); }
  double Rate() override { return behaviour_.delay.rate(); }
  bool ReactivationPredicate() override { return behaviour_.watch(); }
  bool ReactivationFunction() override { return behaviour_.resample(); }
  double SampleDistribution() override { return behaviour_.delay.sample(); }
  double* ReturnDistributionParameters() override { return behaviour_.delay.parameters(); }
  int Rank() override { return behaviour_.rank(); }
  BaseActionClass* Fire() override {
    effect_();
    return this;
  }
  void LinkVariables() override {}

 private:
  Behaviour behaviour_;
  Effect effect_;
};

}  // namespace modelling
