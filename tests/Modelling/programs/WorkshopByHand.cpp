#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "BaseClasses/PostselectGroup.h"
#include "BaseClasses/PreselectGroup.h"
#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "BaseClasses/state/ArrayStateVariable.h"
#include "BaseClasses/state/ExtendedPlace.h"
#include "BaseClasses/state/StructStateVariable.h"
#include "Composer/Join.h"
#include "Composer/Rep.h"
#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeImpulse.h"
#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "Performance_Variables/SteadyStateImpulse.h"
#include "Performance_Variables/SteadyStateWorker.h"
#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"
#include "Simulator/UserDistributions.h"
#include "Study/BaseStudyClass.h"

// The model of WorkshopByKit.cpp, written on the engine's classes alone.

namespace {

Short machines;
Double failureRate;

class Order : public StructStateVariable<int> {
 public:
  explicit Order(const char* name) : StructStateVariable<int>(name, "") {
    kind = new ExtendedPlace<short>("kind", name, 0);
    size = new ExtendedPlace<double>("size", name, 1.5);
    fields.push_back(field(ArrayType_SHORT, kind));
    fields.push_back(field(ArrayType_DOUBLE, size));
  }
  ~Order() override {
    delete kind;
    delete size;
  }
  ExtendedPlace<short>* kind;
  ExtendedPlace<double>* size;
};

class Stock : public ArrayStateVariable<ExtendedPlace<short>> {
 public:
  explicit Stock(const char* name) : ArrayStateVariable<ExtendedPlace<short>>(name, "", ArrayType_SHORT, 2) {
    for (int i = 0; i < 2; ++i) {
      fields.push_back(new ExtendedPlace<short>(std::to_string(i).c_str(), name, 3));
    }
  }
  ~Stock() override {
    for (BaseStateVariableClass* const element : fields) {
      delete element;
    }
  }
};

/// What the activities have alike.
class PlainActivity : public Activity {
 public:
  PlainActivity(const char* name, Distribution distribution) {
    ActivityInitialize(name, 0, distribution, RaceEnabled, 0, 0, false);
  }
  double Weight() override { return 1.0; }
  double Rate() override { return 0.0; }
  int Rank() override { return 1; }
  bool ReactivationPredicate() override { return false; }
  bool ReactivationFunction() override { return false; }
  double* ReturnDistributionParameters() override { return nullptr; }

 protected:
  bool shiftEnabled(bool holds) {
    OldEnabled = NewEnabled;
    NewEnabled = holds;
    return NewEnabled;
  }
};

class Machine : public SANModel {
 public:
  class MachineActivity : public PlainActivity {
   public:
    using PlainActivity::PlainActivity;
    void LinkVariables() override {
      machine->up.Register(&up_Quorva_Mark);
      machine->broken.Register(&broken_Quorva_Mark);
      machine->work.Register(&work_Quorva_Mark);
    }
    Machine* machine = nullptr;
    short* up_Quorva_Mark = nullptr;
    short* broken_Quorva_Mark = nullptr;
    double* work_Quorva_Mark = nullptr;
  };

  class Fail : public MachineActivity {
   public:
    explicit Fail(const char* name) : MachineActivity(name, Exponential) {}
    bool Enabled() override { return shiftEnabled(*up_Quorva_Mark == 1); }
    double SampleDistribution() override { return TheDistribution->Exponential(failureRate); }
  };
  class Fail_case1 : public Fail {
   public:
    Fail_case1() : Fail("fail_case1") {}
    double Weight() override { return 0.9; }
    BaseActionClass* Fire() override {
      *up_Quorva_Mark = 0;
      ++*broken_Quorva_Mark;
      return this;
    }
  };
  class Fail_case2 : public Fail {
   public:
    Fail_case2() : Fail("fail_case2") {}
    double Weight() override { return 0.1 * machine->stock[1]->Mark(); }
    BaseActionClass* Fire() override {
      --machine->stock[1]->Mark();
      machine->order.size->Mark() += 0.25;
      return this;
    }
  };
  class Mend : public MachineActivity {
   public:
    using MachineActivity::MachineActivity;
    bool Enabled() override { return shiftEnabled(*up_Quorva_Mark == 0 && machine->stock[0]->Mark() > 0); }
  };
  class Patch : public Mend {
   public:
    Patch() : Mend("patch", Uniform) {}
    double Weight() override { return 2.0; }
    double SampleDistribution() override { return TheDistribution->Uniform(0.5, 2.0); }
    BaseActionClass* Fire() override {
      *up_Quorva_Mark = 1;
      --machine->stock[0]->Mark();
      *work_Quorva_Mark += 0.5;
      return this;
    }
  };
  class Overhaul : public Mend {
   public:
    Overhaul() : Mend("overhaul", Erlang) {}
    double SampleDistribution() override { return TheDistribution->Erlang(3, 2.0); }
    BaseActionClass* Fire() override {
      *up_Quorva_Mark = 1;
      *work_Quorva_Mark = 0.0;
      return this;
    }
  };
  class Refill : public MachineActivity {
   public:
    Refill() : MachineActivity("refill", Instantaneous) {}
    bool Enabled() override { return shiftEnabled(machine->stock[0]->Mark() == 0 || machine->stock[1]->Mark() == 0); }
    int Rank() override { return 5; }
    double Weight() override { return 0.5; }
    double SampleDistribution() override { return 0.0; }
    BaseActionClass* Fire() override {
      machine->stock[0]->Mark() = 2;
      machine->stock[1]->Mark() = 2;
      ++machine->order.kind->Mark();
      return this;
    }
  };
  class Wear : public MachineActivity {
   public:
    Wear() : MachineActivity("wear", Exponential) {}
    bool Enabled() override { return shiftEnabled(*up_Quorva_Mark == 1); }
    bool ReactivationPredicate() override { return true; }
    bool ReactivationFunction() override { return true; }
    double SampleDistribution() override { return TheDistribution->Exponential(0.25 + *work_Quorva_Mark); }
    BaseActionClass* Fire() override {
      *work_Quorva_Mark = 0.5 * *work_Quorva_Mark + 0.125;
      return this;
    }
  };

  Machine() {
    std::array<BaseStateVariableClass*, 5> variables{&up, &broken, &stock, &order, &work};
    std::array<MachineActivity*, 6> all{&fail_case1, &fail_case2, &patch, &overhaul, &refill, &wear};
    std::array<Activity*, 6> activities{};
    std::copy(all.begin(), all.end(), activities.begin());
    fail.initialize(2, "fail");
    fail.appendGroup(&fail_case1);
    fail.appendGroup(&fail_case2);
    mend.initialize(2, "mend");
    mend.appendGroup(&patch);
    mend.appendGroup(&overhaul);
    std::array<BaseGroupClass*, 4> groups{&fail, &mend, &refill, &wear};
    initializeSANModelNow("machine", 5, variables.data(), 0, nullptr, 6, activities.data(), 4, groups.data());
    for (std::size_t i = 0; i < groups.size(); ++i) {
      groups[i]->setGroupId(static_cast<int>(i));
    }
    const auto affect = [this](BaseActionClass& action, std::initializer_list<BaseStateVariableClass*> changed) {
      for (BaseStateVariableClass* const variable : changed) {
        AddAffectArc(variable, &action);
      }
    };
    affect(fail_case1, {&up, &broken});
    affect(fail_case2, {&stock, &order});
    affect(patch, {&up, &stock, &work});
    affect(overhaul, {&up, &work});
    affect(refill, {&stock, &order});
    affect(wear, {&work});
    const auto enable = [this](BaseActionClass& action, std::initializer_list<BaseStateVariableClass*> read) {
      for (BaseStateVariableClass* const variable : read) {
        AddEnableArc(variable, &action);
      }
    };
    enable(fail_case1, {&up});
    enable(fail_case2, {&up});
    enable(patch, {&up, &stock});
    enable(overhaul, {&up, &stock});
    enable(refill, {&stock});
    enable(wear, {&up});
    for (MachineActivity* const activity : all) {
      activity->machine = this;
      activity->LinkVariables();
    }
  }

  Place up{"up", 1};
  Place broken{"broken"};
  Stock stock{"stock"};
  Order order{"order"};
  ExtendedPlace<double> work{"work", 0.5};
  Fail_case1 fail_case1;
  Fail_case2 fail_case2;
  Patch patch;
  Overhaul overhaul;
  Refill refill;
  Wear wear;
  PostselectGroup fail;
  PreselectGroup mend;
};

class Crew : public SANModel {
 public:
  class Repair : public PlainActivity {
   public:
    Repair() : PlainActivity("repair", Exponential) {}
    bool Enabled() override { return shiftEnabled(*queue_Quorva_Mark > 0); }
    bool ReactivationPredicate() override { return true; }
    bool ReactivationFunction() override { return true; }
    double SampleDistribution() override { return TheDistribution->Exponential(0.5 * *queue_Quorva_Mark); }
    BaseActionClass* Fire() override {
      --*queue_Quorva_Mark;
      crew->order.kind->Mark() = 0;
      return this;
    }
    void LinkVariables() override { crew->queue.Register(&queue_Quorva_Mark); }
    Crew* crew = nullptr;
    short* queue_Quorva_Mark = nullptr;
  };

  Crew() {
    std::array<BaseStateVariableClass*, 2> variables{&queue, &order};
    std::array<Activity*, 1> activities{&repair};
    std::array<BaseGroupClass*, 1> groups{&repair};
    initializeSANModelNow("crew", 2, variables.data(), 0, nullptr, 1, activities.data(), 1, groups.data());
    AddAffectArc(&queue, &repair);
    AddAffectArc(&order, &repair);
    AddEnableArc(&queue, &repair);
    repair.crew = this;
    repair.LinkVariables();
  }

  Place queue{"queue"};
  Order order{"order"};
  Repair repair;
};

constexpr std::array<const char*, 3> kFleetNames{"broken", "stock", "order"};

class Fleet : public Rep {
 public:
  Fleet() : Rep("fleet", machines, kFleetNames.size(), kFleetNames.data()) {
    for (int i = 0; i < NumModels; ++i) {
      copies.push_back(std::make_unique<Machine>());
      ModelArray[i] = copies.back().get();
    }
    SetupActions();
    Machine& first = *copies.front();
    addSharedPtr(&broken, "broken");
    broken.ShareWith(&first.broken);
    addSharedPtr(&stock, "stock");
    stock.ShareWith(&first.stock);
    addSharedPtr(&order, "order");
    order.ShareWith(&first.order);
    for (const auto& copy : copies) {
      addSharingInfo(&copy->broken, &broken, nullptr);
    }
    for (const auto& copy : copies) {
      addSharingInfo(&copy->stock, &stock, nullptr);
    }
    for (const auto& copy : copies) {
      addSharingInfo(&copy->order, &order, nullptr);
    }
    for (std::size_t i = 1; i < copies.size(); ++i) {
      first.broken.ShareWith(&copies[i]->broken);
      first.stock.ShareWith(&copies[i]->stock);
      first.order.ShareWith(&copies[i]->order);
    }
    Setup("machine");
  }

  std::vector<std::unique_ptr<Machine>> copies;
  Place broken{"broken"};
  Stock stock{"stock"};
  Order order{"order"};
};

constexpr std::array<const char*, 2> kWorkshopNames{"broken", "order"};

class Workshop : public Join {
 public:
  Workshop() : Join("workshop", 2, kWorkshopNames.size(), kWorkshopNames.data()) {
    fleet = std::make_unique<Fleet>();
    ModelArray[0] = fleet.get();
    crew = std::make_unique<Crew>();
    ModelArray[1] = crew.get();
    SetupActions();
    addSharedPtr(&broken, "broken");
    broken.ShareWith(&fleet->broken);
    addSharingInfo(&fleet->broken, &broken, fleet.get());
    broken.ShareWith(&crew->queue);
    addSharingInfo(&crew->queue, &broken, crew.get());
    addSharedPtr(&order, "order");
    order.ShareWith(&fleet->order);
    addSharingInfo(&fleet->order, &order, fleet.get());
    order.ShareWith(&crew->order);
    addSharingInfo(&crew->order, &order, crew.get());
    Setup();
  }

  std::unique_ptr<Fleet> fleet;
  std::unique_ptr<Crew> crew;
  Place broken{"broken"};
  Order order{"order"};
};

class UpWorker : public InstantOfTimeWorker {
 public:
  UpWorker() : InstantOfTimeWorker(1) {}
  double Reward_Function() override { return modelAt<Machine>(0)->up.Mark(); }
};

/// All machines at once: the first worker tells, the others give nothing.
class AllUpWorker : public TimeAveragedIntervalOfTimeWorker {
 public:
  explicit AllUpWorker(Workshop* workshop) : TimeAveragedIntervalOfTimeWorker(1), workshop_(workshop) {}
  double Reward_Function() override {
    if (Number != 0) {
      return 0.0;
    }
    double up = 1.0;
    for (const auto& machine : workshop_->fleet->copies) {
      up *= machine->up.Mark();
    }
    return up;
  }

 private:
  Workshop* workshop_;
};

class WaitingWorker : public IntervalOfTimeWorker {
 public:
  WaitingWorker() : IntervalOfTimeWorker(2) {}
  double Reward_Function() override { return modelAt<Machine>(0)->work.Mark() * modelAt<Crew>(1)->queue.Mark(); }
};

class QueueWorker : public SteadyStateWorker {
 public:
  QueueWorker() : SteadyStateWorker(1) {}
  double Reward_Function() override { return modelAt<Crew>(0)->queue.Mark(); }
};

/// An impulse whose workers are made alike.
template <typename Kind, typename Derived, bool kAveraged>
class PlainImpulse : public Kind {
 public:
  PlainImpulse() : Kind(kAveraged) {}
  ImpulseNodeClass** CreateImpulseWorkerList(int count) override {
    for (int i = 0; i < count; ++i) {
      workers_.push_back(std::make_unique<Derived>());
      list_.push_back(workers_.back().get());
    }
    return list_.data();
  }

 private:
  std::vector<std::unique_ptr<Derived>> workers_;
  std::vector<ImpulseNodeClass*> list_;
};

class RefillImpulse : public PlainImpulse<IntervalOfTimeImpulse, RefillImpulse, true> {
 public:
  double Impulse_Function(double /*time*/) override { return 1.0; }
};

class RepairImpulse : public PlainImpulse<IntervalOfTimeImpulse, RepairImpulse, false> {
 public:
  double Impulse_Function(double /*time*/) override { return static_cast<Crew*>(ContainingModel)->queue.Mark(); }
};

class SizeImpulse : public PlainImpulse<IntervalOfTimeImpulse, SizeImpulse, false> {
 public:
  double Impulse_Function(double /*time*/) override {
    return static_cast<Machine*>(ContainingModel)->order.size->Mark();
  }
};

class SteadyRepairImpulse : public PlainImpulse<SteadyStateImpulse, SteadyRepairImpulse, true> {
 public:
  double Impulse_Function(double /*time*/) override { return 2.0; }
};

class RepairsImpulse : public PlainImpulse<SteadyStateImpulse, RepairsImpulse, false> {
 public:
  double Impulse_Function(double /*time*/) override { return 1.0; }
};

class Up : public PerformanceVariableNode {
 public:
  explicit Up(int timeIndex) {
    constexpr std::array<double, 2> kTimes{1.0, 20.0};
    Initialize("up", INSTANT_OF_TIME, 2, kTimes.data(), kTimes.data(), timeIndex, 0, 1, 0);
    AddModelDependency("machine");
  }
  void CreateWorkerList() override { fillWorkerList<UpWorker>(); }
};

/// A variable with one window.
class Windowed : public PerformanceVariableNode {
 public:
  Windowed(const char* name, RewardType type, double start, double stop) {
    Initialize(name, type, 1, &start, &stop, 0, 2, 2, 0);
    Type = type == STEADY_STATE ? steady_state : terminating;
  }
};

class AllUp : public Windowed {
 public:
  AllUp() : Windowed("allUp", TIMEAVE_INTERVAL_OF_TIME, 2.0, 60.0) {
    TheModelPtr = &workshop_;
    AddModelDependency("machine");
    AddImpulse("refill", "machine", &refill_);
  }
  void CreateWorkerList() override { fillWorkerList<AllUpWorker>(static_cast<Workshop*>(workshop_)); }

 private:
  BaseModelClass* workshop_ = nullptr;
  RefillImpulse refill_;
};

class Waiting : public Windowed {
 public:
  Waiting() : Windowed("waiting", INTERVAL_OF_TIME, 0.0, 10.0) {
    AddModelDependency("machine");
    AddModelDependency("crew");
    AddImpulse("repair", "crew", &repair_);
    AddImpulse("fail_case2", "machine", &size_);
  }
  void CreateWorkerList() override { fillWorkerList<WaitingWorker>(); }

 private:
  RepairImpulse repair_;
  SizeImpulse size_;
};

class QueueLength : public Windowed {
 public:
  QueueLength() : Windowed("queueLength", STEADY_STATE, 10.0, 60.0) {
    AddModelDependency("crew");
    AddImpulse("repair", "crew", &repair_);
  }
  void CreateWorkerList() override { fillWorkerList<QueueWorker>(); }

 private:
  SteadyRepairImpulse repair_;
};

class Repairs : public Windowed {
 public:
  Repairs() : Windowed("repairs", STEADY_STATE, 20.0, 60.0) { AddImpulse("repair", "crew", &repair_); }
  void CreateWorkerList() override {}

 private:
  RepairsImpulse repair_;
};

class Rewards : public PVModel {
 public:
  explicit Rewards(bool expandTimeArrays) {
    TheModel = new Workshop;
    DefineName("workshop");
    StateMode = 1;
    CreatePVList(5, expandTimeArrays);
    Initialize();
  }
  PerformanceVariableNode* createPVNode(int pvIndex, int timeIndex) override {
    switch (pvIndex) {
      case 0:
        return new Up(timeIndex);
      case 1:
        return new AllUp;
      case 2:
        return new Waiting;
      case 3:
        return new QueueLength;
      default:
        return new Repairs;
    }
  }
};

class WorkshopStudy : public BaseStudyClass {
 public:
  WorkshopStudy() { NumExps = 3; }
  ~WorkshopStudy() override { delete ThePVModel; }
  PVModel* GetPVModel(bool expandTimeArrays) override { return ThePVModel = new Rewards(expandTimeArrays); }
  void SetGVs(int experiment) override {
    constexpr std::array<std::int16_t, 3> kMachines{3, 1, 5};
    constexpr std::array<double, 3> kFailureRates{0.5, 2.0, 0.125};
    SetGvValue(machines, kMachines.at(static_cast<std::size_t>(experiment)));
    SetGvValue(failureRate, kFailureRates.at(static_cast<std::size_t>(experiment)));
  }
  void OverrideGVValue(const char* name, void* value) override {
    if (std::strcmp(name, "machines") == 0) {
      SetGvValue(machines, *static_cast<std::int16_t*>(value));
    } else {
      SetGvValue(failureRate, *static_cast<double*>(value));
    }
  }
};

std::unique_ptr<BaseStudyClass> theStudy;

}  // namespace

BaseStudyClass* GenerateStudy() {
  if (theStudy == nullptr) {
    theStudy = std::make_unique<WorkshopStudy>();
  }
  return theStudy.get();
}

void DestructStudy() {
  theStudy.reset();
}
