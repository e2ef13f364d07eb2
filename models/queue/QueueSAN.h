#pragma once

#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"

/// An M/M/1/K queue: one place that counts the customers, one activity that adds and one that takes a customer.
class QueueSAN : public SANModel {
 public:
  /// What the two activities have alike: an exponential delay of rate Rate(), and the place. The activity reads and
  /// writes the mark through a cached pointer, which LinkVariables registers so that it follows sharing.
  class QueueActivity : public Activity {
   public:
    QueueActivity(const char* name, int groupId);
    double Weight() override { return 1.0; }
    int Rank() override { return 1; }
    bool ReactivationPredicate() override { return false; }
    bool ReactivationFunction() override { return false; }
    double SampleDistribution() override;
    double* ReturnDistributionParameters() override;
    void LinkVariables() override { q->Register(&q_Quorva_Mark); }

    Place* q = nullptr;              // borrowed from the model
    short* q_Quorva_Mark = nullptr;  // borrowed: the mark of q

   protected:
    /// What Enabled must do with its predicate.
    bool shiftEnabled(bool holds);

   private:
    double rateParameter_ = 0.0;
  };

  class ArriveActivity : public QueueActivity {
   public:
    ArriveActivity() : QueueActivity("arrive", 0) {}
    bool Enabled() override;
    double Rate() override;
    BaseActionClass* Fire() override;
  };

  class ServeActivity : public QueueActivity {
   public:
    ServeActivity() : QueueActivity("serve", 1) {}
    bool Enabled() override;
    double Rate() override;
    BaseActionClass* Fire() override;
  };

  QueueSAN();

  Place q{"q"};  // customers in the queue, from none
  ArriveActivity arrive;
  ServeActivity serve;
};
