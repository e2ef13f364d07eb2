#pragma once

#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "BaseClasses/state/ExtendedPlace.h"
#include "Study/PrimitiveType.h"

extern Double failureRate;
extern Double repairRate;

/// A machine that fails and is repaired, and counts itself in and out of the machines that are down.
class MachineSAN : public SANModel {
 public:
  class MachineActivity : public Activity {
   public:
    MachineActivity(const char* name, int groupId) {
      ActivityInitialize(name, groupId, Exponential, RaceEnabled, 2, 1, false);
    }
    double Weight() override { return 1.0; }
    int Rank() override { return 1; }
    bool ReactivationPredicate() override { return false; }
    bool ReactivationFunction() override { return false; }
    double* ReturnDistributionParameters() override { return nullptr; }
    void LinkVariables() override;

    Place* up = nullptr;                 // borrowed from the model
    ExtendedPlace<int>* down = nullptr;  // likewise
    short* up_Quorva_Mark = nullptr;     // borrowed: the marks of the two
    int* down_Quorva_Mark = nullptr;
  };

  class FailActivity : public MachineActivity {
   public:
    FailActivity() : MachineActivity("fail", 0) {}
    bool Enabled() override;
    double Rate() override { return failureRate; }
    double SampleDistribution() override;
    BaseActionClass* Fire() override;
  };

  class RepairActivity : public MachineActivity {
   public:
    RepairActivity() : MachineActivity("repair", 1) {}
    bool Enabled() override;
    double Rate() override { return repairRate; }
    double SampleDistribution() override;
    BaseActionClass* Fire() override;
  };

  MachineSAN();

  Place up{"up", 1};
  ExtendedPlace<int> down{"down"};  // of all machines that share it
  FailActivity fail;
  RepairActivity repair;
};
