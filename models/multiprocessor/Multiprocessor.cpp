#include <string>
#include <vector>

#include "Modelling/Modelling.h"

// Computers with several processors and memories each, on common buses. Parts fail; a failure that is covered costs the
// part, one that is not takes its whole computer down. Times in hours.
namespace {

using namespace modelling;

Parameter<Short> computers{"computers"};
Parameter<Short> neededComputers{"neededComputers"};  // for the site to be of use
Parameter<Short> processors{"processors"};            // of a computer, of which it needs one
Parameter<Short> memories{"memories"};                // of a computer
Parameter<Short> neededMemories{"neededMemories"};    // of a computer
Parameter<Short> buses{"buses"};                      // of the site, which needs one
Parameter<Double> processorFailureRate{"processorFailureRate"};
Parameter<Double> memoryFailureRate{"memoryFailureRate"};  // 0: never
Parameter<Double> busFailureRate{"busFailureRate"};        // 0: never
Parameter<Double> coverage{"coverage"};                    // probability that a failure is covered
Parameter<Double> repairRate{"repairRate"};                // of a part of a computer that is up; 0: never
Parameter<Double> mission{"mission"};
Parameter<Double> horizon{"horizon"};  // at least the mission

constexpr double kSpeed = 1.5;  // computing power of a processor

/// What a computer has left.
class Computer : public StructVariable<> {
 public:
  using StructVariable::StructVariable;
  Field<short> processors{*this, "processors", static_cast<short>(::processors)};
  Field<short> memories{*this, "memories", static_cast<short>(::memories)};
  Field<short> isDown{*this, "isDown"};

  [[nodiscard]] double power() { return isDown.Mark() > 0 ? 0.0 : kSpeed * processors.Mark(); }
};

/// A processor or a memory. Parts of one computer have `computer` in common, all have the rest.
class Part : public AtomicModel {
 public:
  Variable<Place> isUp{*this, "isUp", short{1}};
  Variable<Computer> computer{*this, "computer"};
  Variable<Place> computersUp{*this, "computersUp", static_cast<short>(computers)};
  Variable<ExtendedPlace<double>> power{*this, "power", kSpeed* computers* processors};  // of the site

  using Stock = Field<short> Computer::*;

  /// `stock`        the number of such parts in a computer
  /// `needed`       parts below which it is of no use
  Part(Stock stock, short needed, double failureRate) : AtomicModel("part"), stock_(stock) {
    activity("fail")
        .enabledBy({isUp, computer},
                   [this, failureRate] { return isUp.Mark() > 0 && isComputerUp() && failureRate > 0.0; })
        .exponential(failureRate)
        .withCase(coverage, changed(),
                  [this, needed] {
                    lose();
                    if ((computer.*stock_).Mark() < needed) {
                      shutDown();
                    }
                  })
        .withCase(1.0 - coverage, changed(), [this] {
          lose();
          shutDown();
        });
    activity("repair")
        .enabledBy({isUp, computer}, [this] { return isUp.Mark() == 0 && isComputerUp() && repairRate > 0.0; })
        .exponential(repairRate)
        .fires(changed(), [this] { restore(); });
  }

 private:
  bool isComputerUp() { return computer.isDown.Mark() == 0; }
  Arcs changed() { return {isUp, computer, computersUp, power}; }

  void lose() {
    power.Mark() -= computer.power();
    --isUp.Mark();
    --(computer.*stock_).Mark();
    power.Mark() += computer.power();
  }

  void restore() {
    power.Mark() -= computer.power();
    ++isUp.Mark();
    ++(computer.*stock_).Mark();
    power.Mark() += computer.power();
  }

  void shutDown() {
    power.Mark() -= computer.power();
    computer.isDown.Mark() = 1;
    --computersUp.Mark();
  }

  Stock stock_;
};

class Bus : public AtomicModel {
 public:
  Variable<Place> isUp{*this, "isUp", short{1}};
  Variable<Place> busesUp{*this, "busesUp", static_cast<short>(buses)};

  Bus() : AtomicModel("bus") {
    activity("fail")
        .enabledBy({isUp}, [this] { return isUp.Mark() > 0 && busFailureRate > 0.0; })
        .exponential(busFailureRate)
        .fires({isUp, busesUp}, [this] {
          isUp.Mark() = 0;
          --busesUp.Mark();
        });
  }
};

/// Notes at once that the site has failed, for good.
class Console : public AtomicModel {
 public:
  Variable<Place> computersUp{*this, "computersUp", static_cast<short>(computers)};
  Variable<ExtendedPlace<double>> power{*this, "power", kSpeed* computers* processors};
  Variable<Place> busesUp{*this, "busesUp", static_cast<short>(buses)};
  Variable<Place> siteFailed{*this, "siteFailed"};

  Console() : AtomicModel("console") {
    activity("declareFailed")
        .enabledBy(
            {computersUp, busesUp, siteFailed},
            [this] { return siteFailed.Mark() == 0 && (computersUp.Mark() < neededComputers || busesUp.Mark() == 0); })
        .instantaneous()
        .fires({siteFailed}, [this] { siteFailed.Mark() = 1; });
  }
};

ChildModel site() {
  const std::vector<Shared> ofSite{"computersUp", "power"};
  const std::vector<Shared> ofComputer{"computer", "computersUp", "power"};
  const ChildModel processor =
      child<Part>("processor", &Computer::processors, short{1}, static_cast<double>(processorFailureRate));
  const ChildModel memory = child<Part>("memory", &Computer::memories, static_cast<short>(neededMemories),
                                        static_cast<double>(memoryFailureRate));
  const ChildModel computer = join(
      "computer",
      {replicate("processors", processors, processor, ofComputer), replicate("memories", memories, memory, ofComputer)},
      ofComputer);
  return join("site",
              {replicate("computers", computers, computer, ofSite),
               replicate("buses", buses, child<Bus>("bus"), {"busesUp"}), child<Console>("console")},
              {"computersUp", "power", "busesUp"});
}

void measure(RewardModel& rewards) {
  rewards.model(site());

  rewards.instantOfTime("site failed", mission).rate("console", [](Console& console) {
    return console.siteFailed.Mark();
  });
  rewards.intervalOfTime("hours of service", 0.0, horizon).rate("console", [](Console& console) {
    return 1.0 - console.siteFailed.Mark();
  });
  rewards.timeAveraged("mean power", 0.0, mission).rate("console", [](Console& console) {
    return console.power.Mark();
  });
  rewards.intervalOfTime("processors lost", 0.0, mission).impulse("fail_case1", "processor");
  rewards.timeAveraged("crashes an hour", 0.0, mission).impulse("fail_case2", "processor");
  rewards.intervalOfTime("power left at failure", 0.0, mission)
      .impulse("declareFailed", "console", [](Console& console) { return console.power.Mark(); });
}

const StudyEntry study{
    "multiprocessor",
    Experiments(computers, neededComputers, processors, memories, neededMemories, buses, processorFailureRate,
                memoryFailureRate, busFailureRate, coverage, repairRate, mission, horizon)
        // A duplex: two processors, one of which is repaired while the other one works, and nothing else that fails.
        .row(1, 1, 2, 1, 1, 1, 0.01, 0.0, 0.0, 0.9, 1.0, 1000.0, 15000.0)
        .row(1, 1, 2, 1, 1, 1, 0.001, 0.0, 0.0, 0.95, 0.1, 8000.0, 8000.0)
        // Two of three computers with spare parts that are used up, then with slow repair.
        .row(3, 2, 3, 3, 2, 2, 0.001, 0.0005, 0.0005, 0.9, 0.0, 1000.0, 1000.0)
        .row(3, 2, 3, 3, 2, 2, 0.001, 0.0005, 0.0002, 0.9, 0.02, 1500.0, 1500.0),
    measure};

}  // namespace
