#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <vector>

#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "BaseClasses/StandardErrors.h"
#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeImpulse.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "Simulator/UserDistributions.h"
#include "Study/BaseStudyClass.h"

// The queue of models/queue, written on the engine's classes alone. The documents show parts of it.

namespace {

/// The queue's parameters. They hold zero until the study writes them, before any model object is built.
Double arrivalRate;  // customers per time unit
Double serviceRate;  // customers per time unit, while there is one to serve
Short capacity;      // customers that there is room for, the one in service included

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

// The last three arguments: each activity changes one variable and reads one, and is not to be sampled anew while it
// stays enabled.
QueueSAN::QueueActivity::QueueActivity(const char* name, int groupId) {
  ActivityInitialize(name, groupId, Exponential, RaceEnabled, 1, 1, false);
}

double QueueSAN::QueueActivity::SampleDistribution() {
  return TheDistribution->Exponential(Rate());
}

double* QueueSAN::QueueActivity::ReturnDistributionParameters() {
  rateParameter_ = Rate();
  return &rateParameter_;
}

bool QueueSAN::QueueActivity::shiftEnabled(bool holds) {
  OldEnabled = NewEnabled;
  NewEnabled = holds;
  return NewEnabled;
}

bool QueueSAN::ArriveActivity::Enabled() {
  return shiftEnabled(*q_Quorva_Mark < capacity);
}

double QueueSAN::ArriveActivity::Rate() {
  return arrivalRate;
}

BaseActionClass* QueueSAN::ArriveActivity::Fire() {
  ++*q_Quorva_Mark;
  return this;
}

bool QueueSAN::ServeActivity::Enabled() {
  return shiftEnabled(*q_Quorva_Mark > 0);
}

double QueueSAN::ServeActivity::Rate() {
  return serviceRate;
}

BaseActionClass* QueueSAN::ServeActivity::Fire() {
  --*q_Quorva_Mark;
  return this;
}

QueueSAN::QueueSAN() {
  // 1. Name the model and hand over its variables, activities and groups. Each activity is a group of itself, and its
  //    group number is its position in the list of groups.
  std::array<BaseStateVariableClass*, 1> variables{&q};
  std::array<Activity*, 2> activities{&arrive, &serve};
  std::array<BaseGroupClass*, 2> groups{&arrive, &serve};
  initializeSANModelNow("queue", 1, variables.data(), 0, nullptr, 2, activities.data(), 2, groups.data());

  // 2. Draw the arcs: what a firing changes, then what enabling depends on. A firing that an arc does not tell is not
  //    noticed by the activities that it should wake.
  AddAffectArc(&q, &arrive);
  AddAffectArc(&q, &serve);
  AddEnableArc(&q, &arrive);
  AddEnableArc(&q, &serve);

  // 3. Give the activities their places and link the cached pointers.
  for (QueueActivity* activity : {static_cast<QueueActivity*>(&arrive), static_cast<QueueActivity*>(&serve)}) {
    activity->q = &q;
    activity->LinkVariables();
  }
}

/// Rate reward of numberInQueue: its value in the present state. Slot 0 is the model that the node named first.
class NumberInQueueWorker : public InstantOfTimeWorker {
 public:
  NumberInQueueWorker() : InstantOfTimeWorker(1) {}
  double Reward_Function() override { return modelAt<QueueSAN>(0)->q.Mark(); }
};

/// A variable with a rate reward, taken at three instants. It depends on the model "queue", on whose variable "q" the
/// reward is read.
class NumberInQueue : public PerformanceVariableNode {
 public:
  explicit NumberInQueue(int timeIndex) {
    constexpr std::array<double, 3> kTimes{1.0, 5.0, 10.0};
    Initialize("numberInQueue", INSTANT_OF_TIME, kTimes.size(), kTimes.data(), kTimes.data(), timeIndex, 0, 1, 1);
    AddModelDependency("queue");
    AddVariableDependency("q", "queue");
  }
  void CreateWorkerList() override { fillWorkerList<NumberInQueueWorker>(); }
};

/// Impulse of numberServed: each firing counts 1. The object in the node makes the workers, one for each instance of
/// the model, and keeps them.
class ServedImpulse : public IntervalOfTimeImpulse {
 public:
  double Impulse_Function(double /*time*/) override { return 1.0; }
  ImpulseNodeClass** CreateImpulseWorkerList(int count) override {
    for (int worker = 0; worker < count; ++worker) {
      workers_.push_back(std::make_unique<ServedImpulse>());
      workerList_.push_back(workers_.back().get());
    }
    return workerList_.data();
  }

 private:
  std::vector<std::unique_ptr<ServedImpulse>> workers_;
  std::vector<ImpulseNodeClass*> workerList_;  // borrowed from workers_
};

/// A variable with an impulse reward over the interval from 0 to 10, earned when "serve" of the model "queue" fires.
class NumberServed : public PerformanceVariableNode {
 public:
  explicit NumberServed(int timeIndex) {
    constexpr std::array<double, 1> kStart{0.0};
    constexpr std::array<double, 1> kStop{10.0};
    Initialize("numberServed", INTERVAL_OF_TIME, kStop.size(), kStart.data(), kStop.data(), timeIndex, 1, 0, 0);
    AddImpulse("serve", "queue", &impulse_);
  }
  void CreateWorkerList() override {}

 private:
  ServedImpulse impulse_;
};

/// What is measured of the queue: "numberInQueue", the customers at times 1, 5 and 10, and "numberServed", those served
/// by time 10. The results number them 0, 1, 2 and 3.
class QueuePVModel : public PVModel {
 public:
  explicit QueuePVModel(bool expandTimeArrays);

  PerformanceVariableNode* createPVNode(int pvIndex, int timeIndex) override;
};

QueuePVModel::QueuePVModel(bool expandTimeArrays) {
  TheModel = new QueueSAN;
  DefineName("QueuePVModel");
  StateMode = 1;
  CreatePVList(2, expandTimeArrays);
  Initialize();
}

PerformanceVariableNode* QueuePVModel::createPVNode(int pvIndex, int timeIndex) {
  if (pvIndex == 0) {
    return new NumberInQueue(timeIndex);
  }
  return new NumberServed(timeIndex);
}

/// The parameters' values, experiment by experiment; option -e chooses one.
struct Experiment {
  double arrivalRate;
  double serviceRate;
  std::int16_t capacity;
};

constexpr std::array<Experiment, 3> kExperiments{{{0.8, 1.0, 10}, {0.9, 1.0, 20}, {1.0, 1.0, 5}}};

/// One parameter: its name and type as option -O and the listings use them.
struct Parameter {
  const char* name;
  const char* type;
};

constexpr std::array<Parameter, 3> kParameters{
    {{"arrivalRate", "double"}, {"serviceRate", "double"}, {"capacity", "short"}}};

/// A copy that the base class will release with free.
char* mallocCopy(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  auto* copy = static_cast<char*>(std::malloc(size));
  if (copy == nullptr) {
    MemoryAllocationError();
  }
  return static_cast<char*>(std::memcpy(copy, text, size));
}

class QueueStudy : public BaseStudyClass {
 public:
  QueueStudy() {
    NumGVs = kParameters.size();
    NumExps = kExperiments.size();
    GVNames = new char*[NumGVs];
    GVTypes = new char*[NumGVs];
    for (std::size_t i = 0; i < kParameters.size(); ++i) {
      GVNames[i] = mallocCopy(kParameters[i].name);
      GVTypes[i] = mallocCopy(kParameters[i].type);
    }
  }
  ~QueueStudy() override { delete ThePVModel; }

  QueueStudy(const QueueStudy&) = delete;
  QueueStudy& operator=(const QueueStudy&) = delete;

  /// Builds the reward model, and with it the queue. The parameters have their final values by then.
  PVModel* GetPVModel(bool expandTimeArrays) override {
    delete ThePVModel;
    ThePVModel = nullptr;
    ThePVModel = new QueuePVModel(expandTimeArrays);
    return ThePVModel;
  }

  /// The run driver asks for none but the NumExps experiments.
  void SetGVs(int experiment) override {
    const Experiment& values = kExperiments.at(static_cast<std::size_t>(experiment));
    SetGvValue(arrivalRate, values.arrivalRate);
    SetGvValue(serviceRate, values.serviceRate);
    SetGvValue(capacity, values.capacity);
  }

  void* GetGVValue(const char* name) override {
    const std::array<void*, 3> variables{&arrivalRate, &serviceRate, &capacity};
    for (std::size_t i = 0; i < kParameters.size(); ++i) {
      if (std::strcmp(kParameters[i].name, name) == 0) {
        return variables[i];
      }
    }
    std::cerr << "queue: there is no global variable " << name << '\n';
    return nullptr;
  }

  /// Option -O ends here: `value` points at a value of the parameter's own type.
  void OverrideGVValue(const char* name, void* value) override {
    void* const variable = GetGVValue(name);
    if (variable == &capacity) {
      SetGvValue(capacity, *static_cast<std::int16_t*>(value));
    } else if (variable != nullptr) {
      SetGvValue(variable == &arrivalRate ? arrivalRate : serviceRate, *static_cast<double*>(value));
    }
  }
};

BaseStudyClass* theStudy = nullptr;  // owned

}  // namespace

BaseStudyClass* GenerateStudy() {
  if (theStudy == nullptr) {
    theStudy = new QueueStudy;
  }
  return theStudy;
}

void DestructStudy() {
  delete theStudy;
  theStudy = nullptr;
}
