#include "Modelling/Modelling.h"

// A workshop with one mistake at a time, chosen by the global variable `mistake`; 0 stands for none. Machines fail and
// queue for a crew that works in shifts, keeps a log and counts what it mends by the shift.

namespace {

using namespace modelling;

Parameter<Short> mistake{"mistake"};
Parameter<Short> machines{"machines"};

/// The arcs, unless leaving them out is the mistake.
Arcs unless(short number, const Arcs& arcs) {
  return mistake == number ? Arcs{} : arcs;
}

/// The variable, unless its being null is the mistake.
BaseStateVariableClass* present(short number, BaseStateVariableClass& variable) {
  return mistake == number ? nullptr : &variable;
}

class Log : public StructVariable<> {
 public:
  using StructVariable::StructVariable;
  Field<short> entries{*this, "entries"};
  Field<double> last{*this, "last"};
};

class Machine : public AtomicModel {
 public:
  Variable<Place> up{*this, "up", 1};
  Variable<Place> broken{*this, "broken"};

  Machine() : AtomicModel("machine") {
    activity("fail")
        .enabledBy(unless(1, {present(21, up)}), [this] { return up.Mark() == 1; })
        .exponential(1.0)
        .fires(unless(2, {broken}) + Arcs{present(22, up)}, [this] {
          up.Mark() = 0;
          ++broken.Mark();
        });
  }
};

/// An activity as one writes it out on the engine's classes, with a cached pointer to a mark.
class Wear : public Activity {
 public:
  Wear(Place& tools, Place& stock) : tools_(tools), stock_(stock) {
    ActivityInitialize("wear", 0, Deterministic, RaceEnabled, 1, 2, false);
  }
  bool Enabled() override {
    OldEnabled = NewEnabled;
    NewEnabled = *tools_Quorva_Mark > 0 && *stock_Quorva_Mark >= 0;
    return NewEnabled;
  }
  double Weight() override { return 1.0; }
  double Rate() override { return 0.0; }
  bool ReactivationPredicate() override { return false; }
  bool ReactivationFunction() override { return false; }
  double SampleDistribution() override { return 3.0; }
  double* ReturnDistributionParameters() override { return nullptr; }
  int Rank() override { return 1; }
  BaseActionClass* Fire() override {
    --*tools_Quorva_Mark;
    return this;
  }
  void LinkVariables() override {
    tools_.Register(&tools_Quorva_Mark);
    stock_.Register(&stock_Quorva_Mark);
  }

 private:
  Place& tools_;
  Place& stock_;
  short* tools_Quorva_Mark = nullptr;
  short* stock_Quorva_Mark = nullptr;
};

class Crew : public AtomicModel {
 public:
  Variable<Place> queue{*this, "queue"};
  Variable<Place> tools{*this, "tools", 9};
  Variable<ArrayVariable<short>> open{*this, "open", 5, 1};  // by shift
  Variable<ArrayVariable<Log>> logs{*this, "logs", 2};
  Variable<ExtendedPlace<int>> asked{*this, "asked"};
  Place stray{"stray", 1};  // entered in no model

  Crew() : AtomicModel("crew") {
    const Arcs shifts = mistake == 3 ? Arcs{open[0], open[1], open[3], open[4]} : unless(4, {open});
    const Arcs entries = mistake == 5 ? Arcs{logs[0], logs[1]->last} : Arcs{logs};
    activity("mend")
        .enabledBy(Arcs{queue} + shifts, [this] { return queue.Mark() > 0 && isAnyOpen() && look(); })
        .exponential(2.0)
        .fires(Arcs{queue} + entries, [this] {
          --queue.Mark();
          ++logs[1]->entries.Mark();
          logs[1]->last.Mark() = BaseModelClass::LastActionTime;
        });
    activity("turn")
        .deterministic(1.0)
        .withCase(0.5, {open}, [this] { open[2]->Mark() = 1; })
        .withCase(0.5, unless(7, {open}), [this] { open[2]->Mark() = 0; });
    add(std::make_unique<Wear>(tools, queue), mistake == 8 ? Arcs{tools} : Arcs{tools, queue}, {tools});
    if (mistake == 9) {
      activity("stand").enabledBy({stray}, [] { return false; }).exponential(1.0).fires({}, [] {});
    }
    if (mistake == 23) {
      AddAffectArc(nullptr, &activity("lean").exponential(1.0).fires({queue}, [] {}));
    }
  }

 private:
  bool isAnyOpen() {
    short sum = 0;
    for (int i = 0; i < open.getSize(); ++i) {
      sum = static_cast<short>(sum + open[i]->Mark());
    }
    return sum > 0;
  }
  bool look() {
    if (mistake == 6) {
      ++asked.Mark();
    }
    return true;
  }
};

std::vector<Shared> sharedByAll() {
  switch (mistake) {
    case 24:
      return {{"broken", {{"fleet", "broken"}, {"crew", "queue"}}}, "tools"};
    case 25:
      return {{"broken", {{"fleet", "broken"}, {"crew", "quue"}}}};
    default:
      return {{"broken", {{"fleet", "broken"}, {"crew", "queue"}}}};
  }
}

void measure(RewardModel& rewards) {
  const std::vector<Shared> inFleet{mistake == 26 ? "brokn" : "broken"};
  rewards.model(join("plant", {replicate("fleet", machines, child<Machine>("machine"), inFleet), child<Crew>("crew")},
                     sharedByAll()));
  rewards.intervalOfTime("mended", 0.0, 10.0).impulse("mend", "crew");
}

const StudyEntry study{"workshop", Experiments(mistake, machines).row(0, 3), measure};

}  // namespace
