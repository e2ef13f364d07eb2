#pragma once

#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "Study/PrimitiveType.h"

extern Double arrivalRate;
extern Double serviceRate;
extern Int capacity;

/// An M/M/1/K queue from empty: one place that counts the customers, one activity that adds and one that takes one.
class QueueSAN : public SANModel {
 public:
  class QueueActivity : public Activity {
   public:
    QueueActivity(const char* name, int groupId) {
      ActivityInitialize(name, groupId, Exponential, RaceEnabled, 1, 1, false);
    }
    double Weight() override { return 1.0; }
    int Rank() override { return 1; }
    bool ReactivationPredicate() override { return false; }
    bool ReactivationFunction() override { return false; }
    double* ReturnDistributionParameters() override { return nullptr; }
    void LinkVariables() override { q->Register(&q_Quorva_Mark); }

    Place* q = nullptr;              // borrowed from the model
    short* q_Quorva_Mark = nullptr;  // borrowed: the mark of q
  };

  class ArriveActivity : public QueueActivity {
   public:
    ArriveActivity() : QueueActivity("arrive", 0) {}
    bool Enabled() override;
    double Rate() override { return arrivalRate; }
    double SampleDistribution() override;
    BaseActionClass* Fire() override;
  };

  class ServeActivity : public QueueActivity {
   public:
    ServeActivity() : QueueActivity("serve", 1) {}
    bool Enabled() override;
    double Rate() override { return serviceRate; }
    double SampleDistribution() override;
    BaseActionClass* Fire() override;
  };

  QueueSAN();

  Place q{"q"};
  ArriveActivity arrive;
  ServeActivity serve;
};
