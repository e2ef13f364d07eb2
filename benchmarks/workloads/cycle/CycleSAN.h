#pragma once

#include <memory>
#include <vector>

#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "Study/PrimitiveType.h"

extern Int stations;
extern Int customersEach;  // at every station at the start
extern Double serviceRate;

/// A closed cycle of single exponential servers: whom a station has served goes on to the next.
class CycleSAN : public SANModel {
 public:
  class ServeActivity : public Activity {
   public:
    ServeActivity(const char* name, int groupId, Place& from, Place& to);
    bool Enabled() override;
    double Weight() override { return 1.0; }
    double Rate() override { return serviceRate; }
    int Rank() override { return 1; }
    bool ReactivationPredicate() override { return false; }
    bool ReactivationFunction() override { return false; }
    double SampleDistribution() override;
    double* ReturnDistributionParameters() override { return nullptr; }
    BaseActionClass* Fire() override;
    void LinkVariables() override;

   private:
    Place& from_;  // borrowed from the model
    Place& to_;
    short* from_Quorva_Mark = nullptr;  // borrowed: the marks of the two
    short* to_Quorva_Mark = nullptr;
  };

  CycleSAN();

  /// Customers at the first station.
  [[nodiscard]] short atFirst() { return customers_.front()->Mark(); }

 private:
  std::vector<std::unique_ptr<Place>> customers_;  // at each station
  std::vector<std::unique_ptr<ServeActivity>> serve_;
};
