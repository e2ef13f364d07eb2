#include "models/ModelKit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <fstream>
#include <numeric>
#include <utility>

#include "Performance_Variables/InstantOfTimeWorker.h"
#include "Performance_Variables/IntervalOfTimeImpulse.h"
#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/SteadyStateImpulse.h"
#include "Performance_Variables/SteadyStateWorker.h"
#include "Performance_Variables/TimeAveragedIntervalOfTimeWorker.h"
#include "Simulator/SimulatorClass.h"
#include "Simulator/UserDistributions.h"
#include "support/TemporaryFile.h"
#include "support/TestStudy.h"

namespace kit {

FunctionActivity::FunctionActivity(const char* name, Behaviour behaviour) : behaviour_(std::move(behaviour)) {
  ActivityInitialize(name, 0, behaviour_.distribution, RaceEnabled, 0, 0, false);
}

bool FunctionActivity::Enabled() {
  OldEnabled = NewEnabled;
  NewEnabled = behaviour_.enabled();
  return NewEnabled;
}

BaseActionClass* FunctionActivity::Fire() {
  behaviour_.fire();
  return this;
}

AtomicModel::~AtomicModel() = default;

Place& AtomicModel::place(const char* name, short mark) {
  return variable(std::make_unique<Place>(name, mark));
}

FunctionActivity& AtomicModel::activity(const char* name, std::vector<BaseStateVariableClass*> enabling,
                                        std::vector<BaseStateVariableClass*> affected,
                                        FunctionActivity::Behaviour behaviour) {
  FunctionActivity& made = member(name, std::move(enabling), std::move(affected), std::move(behaviour));
  scheduled_.push_back(&made);
  return made;
}

FunctionActivity& AtomicModel::member(const char* name, std::vector<BaseStateVariableClass*> enabling,
                                      std::vector<BaseStateVariableClass*> affected,
                                      FunctionActivity::Behaviour behaviour) {
  activities_.push_back(
      {std::make_unique<FunctionActivity>(name, std::move(behaviour)), std::move(enabling), std::move(affected)});
  return *activities_.back().activity;
}

void AtomicModel::finish(const char* name) {
  std::vector<BaseStateVariableClass*> variables;
  for (const auto& one : variables_) {
    variables.push_back(one.get());
  }
  std::vector<Activity*> activities;
  for (const Declared& declared : activities_) {
    activities.push_back(declared.activity.get());
  }
  initializeSANModelNow(name, static_cast<int>(variables.size()), variables.data(), 0, nullptr,
                        static_cast<int>(activities.size()), activities.data(), static_cast<int>(scheduled_.size()),
                        scheduled_.data());
  for (std::size_t i = 0; i < scheduled_.size(); ++i) {
    scheduled_[i]->setGroupId(static_cast<int>(i));
  }
  for (const Declared& declared : activities_) {
    for (BaseStateVariableClass* one : declared.affected) {
      AddAffectArc(one, declared.activity.get());
    }
  }
  for (const Declared& declared : activities_) {
    for (BaseStateVariableClass* one : declared.enabling) {
      AddEnableArc(one, declared.activity.get());
    }
  }
  for (const Declared& declared : activities_) {
    declared.activity->LinkVariables();
  }
}

namespace {

/// Slots for model instances, as workers and impulses offer them to the reward model.
class ModelSlots {
 public:
  explicit ModelSlots(std::size_t number) : instances_(number), pointers_(number) {
    for (std::size_t i = 0; i < number; ++i) {
      pointers_[i] = &instances_[i];
    }
  }

  [[nodiscard]] BaseModelClass*** pointers() { return pointers_.data(); }
  [[nodiscard]] ModelInstances instances() const { return instances_; }

 private:
  std::vector<BaseModelClass*> instances_;
  std::vector<BaseModelClass**> pointers_;
};

/// A rate worker of one kind whose reward is given by a function.
template <typename Kind>
class FunctionWorker : public Kind {
 public:
  explicit FunctionWorker(const RateReward& reward)
      : Kind(static_cast<int>(reward.models.size())), instances_(reward.models.size()), function_(reward.function) {
    for (std::size_t i = 0; i < instances_.size(); ++i) {
      this->TheModelPtr[i] = &instances_[i];
    }
  }

  double Reward_Function() override { return function_(instances_); }

 private:
  std::vector<BaseModelClass*> instances_;
  std::function<double(ModelInstances)> function_;
};

PerformanceVariableWorker* makeWorker(RewardType type, const RateReward& reward) {
  switch (type) {
    case INSTANT_OF_TIME:
      return new FunctionWorker<InstantOfTimeWorker>(reward);
    case TIMEAVE_INTERVAL_OF_TIME:
      return new FunctionWorker<TimeAveragedIntervalOfTimeWorker>(reward);
    case STEADY_STATE:
      return new FunctionWorker<SteadyStateWorker>(reward);
    default:
      return new FunctionWorker<IntervalOfTimeWorker>(reward);
  }
}

/// An impulse of one kind whose reward is given by a function.
template <typename Kind>
class FunctionImpulse : public Kind {
 public:
  explicit FunctionImpulse(const ImpulseReward& reward) : Kind(reward.timeAveraged), reward_(reward), slots_(1) {
    this->NumberOfModelDependencies = 1;
    this->TheModelPtr = slots_.pointers();
  }

  double Impulse_Function(double /*time*/) override { return reward_.function(); }

  ImpulseNodeClass** CreateImpulseWorkerList(int number) override {
    for (int i = 0; i < number; ++i) {
      workers_.push_back(std::make_unique<FunctionImpulse>(reward_));
      list_.push_back(workers_.back().get());
    }
    return list_.data();
  }

 private:
  ImpulseReward reward_;
  ModelSlots slots_;
  std::vector<std::unique_ptr<FunctionImpulse>> workers_;
  std::vector<ImpulseNodeClass*> list_;
};

std::unique_ptr<ImpulseNodeClass> makeImpulse(RewardType type, const ImpulseReward& reward) {
  if (type == STEADY_STATE) {
    return std::make_unique<FunctionImpulse<SteadyStateImpulse>>(reward);
  }
  return std::make_unique<FunctionImpulse<IntervalOfTimeImpulse>>(reward);
}

class VariableNode : public PerformanceVariableNode {
 public:
  VariableNode(const Variable& variable, int timeIndex) : variable_(variable) {
    TheModelPtr = &topModel_;
    Type = variable_.type == STEADY_STATE ? steady_state : terminating;
    std::vector<double> starts = variable_.starts;
    std::vector<double> stops = variable_.stops;
    int models = 0;
    for (const RateReward& rate : variable_.rates) {
      models += static_cast<int>(rate.models.size());
    }
    Initialize(variable_.name.c_str(), variable_.type, static_cast<int>(stops.size()), starts.data(), stops.data(),
               timeIndex, static_cast<int>(variable_.impulses.size()), models, 0);
    for (const RateReward& rate : variable_.rates) {
      for (const std::string& model : rate.models) {
        AddModelDependency(model.c_str());
      }
    }
    for (const ImpulseReward& impulse : variable_.impulses) {
      impulses_.push_back(makeImpulse(variable_.type, impulse));
      AddImpulse(impulse.action.c_str(), impulse.model.c_str(), impulses_.back().get());
    }
  }

  void CreateWorkerList() override {
    for (int i = 0; i < NumberOfWorkers; ++i) {
      WorkerList[i] = makeWorker(variable_.type, variable_.rates[0]);
    }
  }

 private:
  Variable variable_;
  BaseModelClass* topModel_ = nullptr;
  std::vector<std::unique_ptr<ImpulseNodeClass>> impulses_;
};

class RewardModel : public PVModel {
 public:
  RewardModel(const Experiment& experiment, bool expandTimeArrays) : variables_(experiment.variables) {
    TheModel = experiment.makeModel();
    DefineName("kitPVModel");
    StateMode = 1;
    CreatePVList(static_cast<int>(variables_.size()), expandTimeArrays);
    Initialize();
  }

 protected:
  PerformanceVariableNode* createPVNode(int pvIndex, int timeIndex) override {
    return new VariableNode(variables_[static_cast<std::size_t>(pvIndex)], timeIndex);
  }

 private:
  std::vector<Variable> variables_;
};

Variable rateVariable(std::string name, RewardType type, double start, double stop, RateReward rate) {
  return {std::move(name), type, {start}, {stop}, {std::move(rate)}, {}};
}

Observations readObservations(const char* file) {
  std::ifstream stream(file);
  Observations observations;
  std::string line;
  while (std::getline(stream, line)) {
    if (line.empty() || line.front() == '#') {
      continue;
    }
    const auto comma = line.find(',');
    const auto variable = static_cast<std::size_t>(std::stoul(line.substr(0, comma)));
    if (observations.size() <= variable) {
      observations.resize(variable + 1);
    }
    observations[variable].push_back(std::stod(line.substr(comma + 1)));
  }
  return observations;
}

/// Mean and central moments of a sample.
struct Moments {
  double n;
  double mean;
  double variance;  // unbiased
  double fourth;

  explicit Moments(const std::vector<double>& values) : n(static_cast<double>(values.size())) {
    double sum = 0.0;
    for (const double value : values) {
      sum += value;
    }
    mean = sum / n;
    double squares = 0.0;
    double fourths = 0.0;
    for (const double value : values) {
      const double square = (value - mean) * (value - mean);
      squares += square;
      fourths += square * square;
    }
    variance = squares / (n - 1.0);
    fourth = fourths / n;
  }
};

}  // namespace

std::function<double()> exponential(double rate) {
  return [rate] { return TheDistribution->Exponential(rate); };
}

Variable instant(std::string name, double time, RateReward rate) {
  return rateVariable(std::move(name), INSTANT_OF_TIME, time, time, std::move(rate));
}

Variable interval(std::string name, double time, RateReward rate) {
  return rateVariable(std::move(name), INTERVAL_OF_TIME, 0.0, time, std::move(rate));
}

Variable timeAveraged(std::string name, double time, RateReward rate) {
  return rateVariable(std::move(name), TIMEAVE_INTERVAL_OF_TIME, 0.0, time, std::move(rate));
}

Variable firings(std::string name, double time, std::string action, std::string model) {
  return {std::move(name), INTERVAL_OF_TIME, {0.0}, {time}, {}, {{std::move(action), std::move(model)}}};
}

Variable longRunAverage(std::string name, Cut cut, RateReward rate) {
  return rateVariable(std::move(name), STEADY_STATE, cut.transient, cut.transient + cut.length, std::move(rate));
}

Variable throughput(std::string name, Cut cut, std::string action, std::string model) {
  Variable variable = firingsInBatch(std::move(name), cut, std::move(action), std::move(model));
  variable.impulses[0].timeAveraged = true;
  return variable;
}

Variable firingsInBatch(std::string name, Cut cut, std::string action, std::string model) {
  return {std::move(name),
          STEADY_STATE,
          {cut.transient},
          {cut.transient + cut.length},
          {},
          {{std::move(action), std::move(model)}}};
}

namespace {

/// Runs `experiment` with that option of the kind of run and `settings`; gives what the ASCII result file holds.
Observations runWith(const std::string& kindOption, const Experiment& experiment, const RunSettings& settings) {
  support::setModelFactory([experiment](bool expandTimeArrays) -> std::unique_ptr<PVModel> {
    return std::make_unique<RewardModel>(experiment, expandTimeArrays);
  });
  const support::TemporaryFile file("models_test");
  std::vector<std::string> words{"test",
                                 kindOption,
                                 "-N" + std::to_string(settings.batches),
                                 "-s" + std::to_string(settings.seed),
                                 "-r" + std::to_string(settings.generator),
                                 "-a",
                                 file.name()};
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  testing::internal::CaptureStdout();
  {
    SimulatorClass simulator(static_cast<int>(arguments.size()), arguments.data());
    simulator.Run();
  }
  testing::internal::GetCapturedStdout();
  return readObservations(file.name());
}

void expectWithin(double mean, double standardError, double exact, const std::string& what) {
  EXPECT_LE(std::abs(mean - exact), 4.0 * standardError)
      << what << ": mean " << mean << ", exact " << exact << ", standard error " << standardError;
}

/// Half of the width of an interval of 95 % that a test needs in order to tell anything about `exact`.
double allowedHalfWidth(double exact) {
  return (std::abs(exact) < 1e-3 ? 0.05 : 0.01) * std::abs(exact);
}

}  // namespace

Observations run(const Experiment& experiment, const RunSettings& settings) {
  const Observations observations = runWith("-t1", experiment, settings);
  for (const auto& one : observations) {
    EXPECT_EQ(one.size(), static_cast<std::size_t>(settings.batches));
  }
  return observations;
}

Observations runSteadyState(const Experiment& experiment, const RunSettings& settings) {
  const Observations observations = runWith("-t0", experiment, settings);
  EXPECT_EQ(observations.size(), experiment.variables.size());
  for (const auto& one : observations) {
    EXPECT_GE(one.size(), static_cast<std::size_t>(settings.batches));
  }
  return observations;
}

void expectMean(const std::vector<double>& observations, double exact, const std::string& what) {
  const Moments moments(observations);
  const double standardError = std::sqrt(moments.variance / moments.n);
  expectWithin(moments.mean, standardError, exact, what);
  EXPECT_LE(1.96 * standardError, allowedHalfWidth(exact))
      << what << ": too few batches to tell anything about " << exact;
}

void expectSteadyMean(const std::vector<double>& observations, double exact, const std::string& what) {
  constexpr std::size_t kGroups = 32;
  constexpr double kStudent = 2.04;  // 0.975 quantile of Student's distribution with 31 degrees of freedom
  ASSERT_GE(observations.size(), 1000U) << what;
  const std::size_t size = observations.size() / kGroups;
  std::vector<double> means;
  for (std::size_t group = 0; group < kGroups; ++group) {
    const double* const begin = observations.data() + group * size;
    means.push_back(std::accumulate(begin, begin + size, 0.0) / static_cast<double>(size));
  }
  const Moments moments(means);
  const double standardError = std::sqrt(moments.variance / moments.n);
  expectWithin(moments.mean, standardError, exact, what);
  EXPECT_LE(kStudent * standardError, allowedHalfWidth(exact))
      << what << ": too short a run to tell anything about " << exact;
}

void expectVariance(const std::vector<double>& observations, double exact, const std::string& what) {
  const Moments moments(observations);
  const double standardError = std::sqrt((moments.fourth - moments.variance * moments.variance) / moments.n);
  EXPECT_LE(std::abs(moments.variance - exact), 4.0 * standardError)
      << what << ": variance " << moments.variance << ", exact " << exact << ", standard error " << standardError;
}

}  // namespace kit
