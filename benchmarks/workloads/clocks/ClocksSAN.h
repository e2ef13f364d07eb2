#pragma once

#include <memory>
#include <vector>

#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "Study/PrimitiveType.h"

extern Int clocks;
extern Int sparePlaces;  // for each clock

/// Clocks that have nothing to do with each other: each ticks at rate 1 for ever, and writes a place of its own. Spare
/// places that nothing reads or writes may stand beside them, to see what a place takes.
class ClocksSAN : public SANModel {
 public:
  class TickActivity : public Activity {
   public:
    TickActivity(int groupId, Place& ticked) : ticked_(ticked) {
      ActivityInitialize("tick", groupId, Exponential, RaceEnabled, 1, 1, false);
    }
    bool Enabled() override;
    double Weight() override { return 1.0; }
    double Rate() override { return 1.0; }
    int Rank() override { return 1; }
    bool ReactivationPredicate() override { return false; }
    bool ReactivationFunction() override { return false; }
    double SampleDistribution() override;
    double* ReturnDistributionParameters() override { return nullptr; }
    BaseActionClass* Fire() override;
    void LinkVariables() override { ticked_.Register(&ticked_Quorva_Mark); }

   private:
    Place& ticked_;                       // borrowed from the model
    short* ticked_Quorva_Mark = nullptr;  // borrowed: its mark
  };

  ClocksSAN();

  /// Whether the first clock has ticked an odd number of times.
  [[nodiscard]] short firstIsOdd() { return ticked_.front()->Mark(); }

 private:
  std::vector<std::unique_ptr<Place>> ticked_;  // of each clock, and then the spare ones
  std::vector<std::unique_ptr<TickActivity>> tick_;
};
