#include <algorithm>
#include <span>

#include "Modelling/Modelling.h"

// Machines that fail and a crew that repairs them. Who is repaired is all the same to the crew: it takes a machine out of
// the broken ones, and one of the machines that stand still starts again.

namespace {

using namespace modelling;

Parameter<Short> machines{"machines"};
Parameter<Short> repairers{"repairers"};       // each works on one machine
Parameter<Double> failureRate{"failureRate"};  // failures per time unit of a machine that runs
Parameter<Double> repairRate{"repairRate"};    // repairs per time unit of a repairer who works
Parameter<Double> idleCost{"idleCost"};        // of a machine that stands still, per time unit
Parameter<Double> repairCost{"repairCost"};    // of one repair

class Machine : public AtomicModel {
 public:
  Variable<Place> up{*this, "up", 1};           // 1 while it runs
  Variable<Place> broken{*this, "broken"};      // machines for the crew; one for all machines
  Variable<Place> repaired{*this, "repaired"};  // machines that may start again; one for all

  Machine() : AtomicModel("machine") {
    activity("fail")
        .enabledBy({up}, [this] { return up.Mark() == 1; })
        .exponential(failureRate)
        .fires({up, broken}, [this] {
          up.Mark() = 0;
          ++broken.Mark();
        });
    // Of the machines that stand still each has the same chance; the rank puts a start ahead of all else at that time.
    activity("start")
        .enabledBy({up, repaired}, [this] { return up.Mark() == 0 && repaired.Mark() > 0; })
        .instantaneous()
        .rank(2)
        .weight(1.0)
        .fires({up, repaired}, [this] {
          up.Mark() = 1;
          --repaired.Mark();
        });
  }
};

class Crew : public AtomicModel {
 public:
  Variable<Place> broken{*this, "broken"};
  Variable<Place> repaired{*this, "repaired"};
  Variable<ExtendedPlace<double>> inspected{*this, "inspected"};  // time of the last inspection

  Crew() : AtomicModel("crew") {
    activity("repair")
        .enabledBy({broken}, [this] { return broken.Mark() > 0; })
        .exponential([this] { return repairRate * busy(); })
        .reactivating()
        .fires({broken, repaired}, [this] {
          --broken.Mark();
          ++repaired.Mark();
        });
    activity("inspect").deterministic(1.0).fires({inspected}, [this] { inspected.Mark() += 1.0; });
  }

  /// Repairers at work.
  [[nodiscard]] short busy() { return std::min<short>(broken.Mark(), repairers); }
};

/// In the results: 0 to 6 belong to terminating runs, 7 to 11 to steady-state runs.
void measure(RewardModel& rewards) {
  rewards.model(join(
      "plant", {replicate("fleet", machines, child<Machine>("machine"), {"broken", "repaired"}), child<Crew>("crew")},
      {"broken", "repaired"}));

  const auto running = [](Machine& machine) { return machine.up.Mark(); };
  const auto allRun = [](std::span<Machine* const> all) {
    return std::ranges::all_of(all, [](Machine* machine) { return machine->up.Mark() == 1; });
  };
  const auto found = [](Crew& crew) { return crew.broken.Mark(); };

  rewards.instantOfTime("running", {1.0, 5.0}).rate("machine", running);
  rewards.instantOfTime("foundBroken", 5.0).impulse("inspect", "crew", found);
  rewards.timeAveraged("allRun", 0.0, 10.0).rateOfAll<Machine>("machine", allRun);
  rewards.timeAveraged("foundBroken", 0.0, 10.0).impulse("inspect", "crew", found);
  rewards.intervalOfTime("repairs", 0.0, 10.0).impulse("repair", "crew");
  rewards.intervalOfTime("cost", 0.0, 10.0)
      .rate("machine", [](Machine& machine) { return idleCost * (1 - machine.up.Mark()); })
      .impulse("repair", "crew", repairCost);

  constexpr double kTransient = 50.0;
  constexpr double kBatchLength = 100.0;
  rewards.steadyState("running", kTransient, kBatchLength).rate("machine", running);
  rewards.steadyState("allRun", kTransient, kBatchLength).rateOfAll<Machine>("machine", allRun);
  rewards.steadyState("repairs", kTransient, kBatchLength).impulse("repair", "crew");
  rewards.steadyState("repairsInBatch", kTransient, kBatchLength).impulseSum("repair", "crew", 1.0);
  rewards.steadyState("foundBroken", kTransient, kBatchLength).impulse("inspect", "crew", found);
}

const StudyEntry study{"machine-repair",
                       Experiments(machines, repairers, failureRate, repairRate, idleCost, repairCost)
                           .row(4, 4, 0.2, 1.0, 10.0, 5.0)
                           .row(10, 2, 0.1, 1.0, 10.0, 5.0)
                           .row(5, 1, 0.1, 0.5, 10.0, 5.0),
                       measure};

}  // namespace
