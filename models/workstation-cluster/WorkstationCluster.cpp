#include <algorithm>
#include <string>
#include <vector>

#include "Modelling/Modelling.h"

// Two sub-clusters of workstations with a switch each, a backbone between them, and one repair unit for all; B. Haverkort,
// H. Hermanns, J.-P. Katoen, On the use of model checking techniques for dependability evaluation, 2000. Times in hours.
namespace {

using namespace modelling;

Parameter<Short> stations{"stations"};               // of each side
Parameter<Short> wanted{"wanted"};                   // stations that are to be able to talk to each other
Parameter<Double> failureFactor{"failureFactor"};    // by how much more often than usual anything fails
Parameter<Double> inspectionRate{"inspectionRate"};  // of the repair unit's finding one kind of broken component
Parameter<Double> horizon{"horizon"};                // of a terminating run

/// Components of one kind, and what the repair unit does with them.
class Components : public AtomicModel {
 public:
  Variable<Place> up;                 // components that work
  Variable<Place> job{*this, "job"};  // kind under repair, from 1, or 0: the same place in all models

  /// `kind`        number of the kind, from 1
  /// `full`        components there are
  /// `life`        mean time to failure of one
  /// `repairTime`  mean
  Components(short kind, short full, double life, double repairTime)
      : AtomicModel("components"), up(*this, "up", full) {
    // The rate depends on the marking, but for a component that there is one of.
    const auto hasRates = [full] { return full > 1; };
    activity("fail")
        .enabledBy({up}, [this] { return up.Mark() > 0; })
        .exponential([this, life] { return up.Mark() * failureFactor / life; })
        .reactivating(hasRates, hasRates)
        .fires({up}, [this] { --up.Mark(); });
    activity("inspect")
        .enabledBy({job, up}, [this, full] { return job.Mark() == 0 && up.Mark() < full; })
        .exponential(inspectionRate)
        .fires({job}, [this, kind] { job.Mark() = kind; });
    activity("repair")
        .enabledBy({job}, [this, kind] { return job.Mark() == kind; })
        .exponential(1.0 / repairTime)
        .fires({job, up}, [this] {
          job.Mark() = 0;
          ++up.Mark();
        });
  }
};

/// Reward: 1 while fewer than the stations wanted can talk to each other, those of a side through its switch, those of
/// both through both switches and the backbone.
double isBelow(Components& left, Components& right, Components& leftSwitch, Components& rightSwitch,
               Components& backbone) {
  const int onLeft = leftSwitch.up.Mark() > 0 ? left.up.Mark() : 0;
  const int onRight = rightSwitch.up.Mark() > 0 ? right.up.Mark() : 0;
  const bool areJoined = leftSwitch.up.Mark() > 0 && rightSwitch.up.Mark() > 0 && backbone.up.Mark() > 0;
  const int most = areJoined ? onLeft + onRight : std::max(onLeft, onRight);
  return most < wanted ? 1.0 : 0.0;
}

/// In the results: 0 to 2 belong to terminating runs, 3 and 4 to steady-state runs.
void measure(RewardModel& rewards) {
  rewards.model(join("cluster",
                     {child<Components>("left", short{1}, static_cast<short>(stations), 500.0, 0.5),
                      child<Components>("right", short{2}, static_cast<short>(stations), 500.0, 0.5),
                      child<Components>("left switch", short{3}, short{1}, 4000.0, 4.0),
                      child<Components>("right switch", short{4}, short{1}, 4000.0, 4.0),
                      child<Components>("backbone", short{5}, short{1}, 5000.0, 8.0)},
                     {"job"}));
  const std::vector<std::string> all{"left", "right", "left switch", "right switch", "backbone"};

  rewards.instantOfTime("percent of stations", 20.0).rate({"left", "right"}, [](Components& left, Components& right) {
    return 100.0 * (left.up.Mark() + right.up.Mark()) / (2.0 * stations);
  });
  rewards.timeAveraged("share of time below", 0.0, horizon).rate(all, isBelow);
  PerformanceVariable& repairs = rewards.intervalOfTime("repairs", 0.0, horizon);

  constexpr double kTransient = 100.0;
  constexpr double kBatchLength = 2000.0;
  rewards.steadyState("below", kTransient, kBatchLength).rate(all, isBelow);
  PerformanceVariable& repairsAnHour = rewards.steadyState("repairs an hour", kTransient, kBatchLength);

  for (const std::string& kind : all) {
    repairs.impulse("repair", kind);
    repairsAnHour.impulse("repair", kind);
  }
}

const StudyEntry study{"workstation-cluster",
                       Experiments(stations, wanted, failureFactor, inspectionRate, horizon)
                           .row(2, 2, 1.0, 10.0, 2000.0)  // premium quality: as many stations as a side has
                           .row(2, 1, 100.0, 1.0, 200.0)  // minimum quality, three quarters, where much fails
                           .row(4, 4, 40.0, 1.0, 200.0),  // a cluster of twice the size
                       measure};

}  // namespace
