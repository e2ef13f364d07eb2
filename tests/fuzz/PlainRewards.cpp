#include "fuzz/PlainRewards.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace fuzz {

namespace {

/// The marks of the whole model as one atomic model sees them.
struct View {
  const std::vector<int>& marks;
  int firstCell;
  [[nodiscard]] int get(int cell) const { return marks[at(firstCell + cell)]; }
};

using Firings = std::span<const Firing>;

double rateOf(const RewardRecipe& reward, const PlainRun& run, const std::vector<int>& marks) {
  double sum = 0.0;
  for (const Instance& instance : run.instances) {
    if (instance.leaf->name == reward.rateModel) {
      sum += reward.rate.value(View{marks, instance.firstCell});
    }
  }
  return sum;
}

/// The rate at `time`, behind all firings of that time.
double rateAt(const RewardRecipe& reward, const PlainRun& run, Firings firings, double time) {
  const std::vector<int>* marks = &run.initialMarks;
  for (const Firing& firing : firings) {
    if (firing.time <= time) {
      marks = &firing.marks;
    }
  }
  return rateOf(reward, run, *marks);
}

double integralOf(const RewardRecipe& reward, const PlainRun& run, Firings firings) {
  double integral = 0.0;
  double since = 0.0;
  const std::vector<int>* marks = &run.initialMarks;
  const auto addUpTo = [&](double time) {
    const double length = std::min(time, reward.stop) - std::max(since, reward.start);
    if (length > 0.0) {
      integral += length * rateOf(reward, run, *marks);
    }
  };
  for (const Firing& firing : firings) {
    addUpTo(firing.time);
    since = firing.time;
    marks = &firing.marks;
  }
  addUpTo(reward.stop);
  return integral;
}

double impulsesOf(const RewardRecipe& reward, const PlainRun& run, Firings firings) {
  double sum = 0.0;
  for (const Firing& firing : firings) {
    // The end of a batch in a long run is the start of the next one, to which it belongs.
    if (firing.time < reward.start || firing.time > reward.stop ||
        (reward.isSteadyState() && firing.time == reward.stop)) {
      continue;
    }
    for (const Instance& instance : run.instances) {
      const auto local = static_cast<std::size_t>(firing.activity - instance.firstActivity);
      if (firing.activity >= instance.firstActivity && local < instance.leaf->activities.size() &&
          instance.leaf->name == reward.impulseModel && instance.leaf->activities[local].name == reward.impulseAction) {
        sum += reward.impulse.value(View{firing.marks, instance.firstCell});
      }
    }
  }
  return sum;
}

double valueOf(const RewardRecipe& reward, const PlainRun& run, Firings firings) {
  const bool isAverage = reward.kind == RewardRecipe::Kind::kTimeAveraged || reward.isSteadyState();
  double value = 0.0;
  if (reward.hasRate) {
    value = reward.kind == RewardRecipe::Kind::kInstant ? rateAt(reward, run, firings, reward.stop)
                                                        : integralOf(reward, run, firings);
    value /= isAverage ? reward.stop - reward.start : 1.0;
  }
  if (reward.hasImpulse) {
    value += impulsesOf(reward, run, firings) / (isAverage && !reward.impulseIsSum ? reward.stop - reward.start : 1.0);
  }
  return value;
}

Firings batchOf(const PlainRun& run, std::size_t batch) {
  const std::size_t begin = batch == 0 ? 0 : run.batchEnds[batch - 1];
  return Firings(run.trajectory.firings).subspan(begin, run.batchEnds[batch] - begin);
}

/// A variable of the other kind is not looked at, and is 0 in each terminating batch.
std::vector<double> terminatingValues(const RewardRecipe& reward, const PlainRun& run) {
  std::vector<double> values;
  for (std::size_t batch = 0; batch < run.batchEnds.size(); ++batch) {
    values.push_back(reward.isSteadyState() ? 0.0 : valueOf(reward, run, batchOf(run, batch)));
  }
  return values;
}

std::vector<double> steadyStateValues(const RewardRecipe& reward, const PlainRun& run, std::size_t batches) {
  const double length = reward.stop - reward.start;
  std::vector<double> values;
  for (std::size_t batch = 0; batch < batches; ++batch) {
    RewardRecipe window = reward;
    window.start = reward.start + static_cast<double>(batch) * length;
    window.stop = window.start + length;
    values.push_back(valueOf(window, run, batchOf(run, 0)));
  }
  return values;
}

}  // namespace

std::vector<std::vector<double>> rewardsOf(const ModelRecipe& model, const PlainRun& run) {
  std::vector<std::vector<double>> values;
  for (std::size_t i = 0; i < model.rewards.size(); ++i) {
    values.push_back(model.isSteadyState ? steadyStateValues(model.rewards[i], run, run.finished[i])
                                         : terminatingValues(model.rewards[i], run));
  }
  return values;
}

bool timeRunsForward(const PlainRun& run) {
  for (std::size_t batch = 0; batch < run.batchEnds.size(); ++batch) {
    double before = 0.0;
    for (const Firing& firing : batchOf(run, batch)) {
      if (!(firing.time >= before)) {
        return false;
      }
      before = firing.time;
    }
  }
  return true;
}

}  // namespace fuzz
