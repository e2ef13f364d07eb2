#pragma once

#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "Study/PrimitiveType.h"

extern Double failureRate;  // failures per time unit of a lamp that is alight

/// A lamp that is alight from the start and burns out once, after an exponential time.
class LampSAN : public SANModel {
 public:
  class BurnOutActivity : public Activity {
   public:
    BurnOutActivity() { ActivityInitialize("burnOut", 0, Exponential, RaceEnabled, 1, 1, false); }
    bool Enabled() override;
    double Weight() override { return 1.0; }
    int Rank() override { return 1; }
    bool ReactivationPredicate() override { return false; }
    bool ReactivationFunction() override { return false; }
    double Rate() override { return failureRate; }
    double SampleDistribution() override;
    double* ReturnDistributionParameters() override;
    BaseActionClass* Fire() override;
    void LinkVariables() override { alight->Register(&alight_Quorva_Mark); }

    Place* alight = nullptr;              // borrowed from the model
    short* alight_Quorva_Mark = nullptr;  // borrowed: the mark of alight

   private:
    double rateParameter_ = 0.0;
  };

  LampSAN();

  Place alight{"alight", 1};  // 1 until the lamp has burnt out
  BurnOutActivity burnOut;
};
