#include "models/ModelKit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <numeric>
#include <utility>

#include "ArcCheck/ArcsAreChecked.h"
#include "BaseClasses/Sanitizers.h"
#include "Simulator/SimulatorClass.h"
#include "support/TemporaryFile.h"
#include "support/TestStudy.h"

namespace kit {

namespace {

/// Starts a performance variable of the type of `variable`.
modelling::PerformanceVariable& begin(modelling::RewardModel& rewards, const Variable& variable) {
  switch (variable.type) {
    case INSTANT_OF_TIME:
      return rewards.instantOfTime(variable.name, variable.stops);
    case TIMEAVE_INTERVAL_OF_TIME:
      return rewards.timeAveraged(variable.name, variable.starts, variable.stops);
    case STEADY_STATE:
      return rewards.steadyState(variable.name, variable.starts[0], variable.stops[0] - variable.starts[0]);
    default:
      return rewards.intervalOfTime(variable.name, variable.starts, variable.stops);
  }
}

void describe(modelling::RewardModel& rewards, const Experiment& experiment) {
  rewards.model(std::unique_ptr<BaseModelClass>(experiment.makeModel()));
  for (const Variable& variable : experiment.variables) {
    modelling::PerformanceVariable& described = begin(rewards, variable);
    for (const RateReward& rate : variable.rates) {
      described.rate(rate.model, [function = rate.function](BaseModelClass& model) {
        BaseModelClass* const instance = &model;
        return function({&instance, 1});
      });
    }
    for (const ImpulseReward& impulse : variable.impulses) {
      if (impulse.timeAveraged) {
        described.impulse(impulse.action, impulse.model, impulse.function);
      } else {
        described.impulseSum(impulse.action, impulse.model, impulse.function);
      }
    }
  }
}

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

/// In a build that checks arcs a run is there for that check and not for its observations. AddressSanitizer sees no more
/// in a long run than in a short one.
int batchesOf(const RunSettings& settings) {
  constexpr int kBatchesForArcs = 10;
  constexpr int kBatchesUnderSanitizer = 4000;
  if (support::kArcsAreChecked) {
    return std::min(settings.batches, kBatchesForArcs);
  }
  return support::kUnderAddressSanitizer ? std::min(settings.batches, kBatchesUnderSanitizer) : settings.batches;
}

/// Runs `experiment` with that option of the kind of run and `settings`; gives what the ASCII result file holds.
Observations runWith(const std::string& kindOption, const Experiment& experiment, const RunSettings& settings) {
  support::setModelFactory([experiment](bool expandTimeArrays) -> std::unique_ptr<PVModel> {
    const auto describeThis = [&experiment](modelling::RewardModel& rewards) { describe(rewards, experiment); };
    return std::make_unique<modelling::RewardModel>("kit", describeThis, expandTimeArrays);
  });
  const support::TemporaryFile file("models_test");
  std::vector<std::string> words{"test",
                                 kindOption,
                                 "-N" + std::to_string(batchesOf(settings)),
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
    EXPECT_EQ(simulator.arcFaults(), 0);
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

/// A shortened run may have a wide interval.
void expectNarrow(double halfWidth, double exact, const std::string& what) {
  if (!support::kUnderAddressSanitizer) {
    EXPECT_LE(halfWidth, allowedHalfWidth(exact)) << what << ": too short a run to tell anything about " << exact;
  }
}

}  // namespace

Observations run(const Experiment& experiment, const RunSettings& settings) {
  const Observations observations = runWith("-t1", experiment, settings);
  for (const auto& one : observations) {
    EXPECT_EQ(one.size(), static_cast<std::size_t>(batchesOf(settings)));
  }
  return observations;
}

Observations runSteadyState(const Experiment& experiment, const RunSettings& settings) {
  const Observations observations = runWith("-t0", experiment, settings);
  EXPECT_EQ(observations.size(), experiment.variables.size());
  for (const auto& one : observations) {
    EXPECT_GE(one.size(), static_cast<std::size_t>(batchesOf(settings)));
  }
  return observations;
}

void expectMean(const std::vector<double>& observations, double exact, const std::string& what) {
  if (support::kArcsAreChecked) {
    return;
  }
  const Moments moments(observations);
  const double standardError = std::sqrt(moments.variance / moments.n);
  expectWithin(moments.mean, standardError, exact, what);
  expectNarrow(1.96 * standardError, exact, what);
}

void expectSteadyMean(const std::vector<double>& observations, double exact, const std::string& what) {
  if (support::kArcsAreChecked) {
    return;
  }
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
  expectNarrow(kStudent * standardError, exact, what);
}

void expectVariance(const std::vector<double>& observations, double exact, const std::string& what) {
  if (support::kArcsAreChecked) {
    return;
  }
  const Moments moments(observations);
  const double standardError = std::sqrt((moments.fourth - moments.variance * moments.variance) / moments.n);
  EXPECT_LE(std::abs(moments.variance - exact), 4.0 * standardError)
      << what << ": variance " << moments.variance << ", exact " << exact << ", standard error " << standardError;
}

}  // namespace kit
