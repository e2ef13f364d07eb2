#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Modelling/Modelling.h"

/// What the test models are written with: the modelling kit in a form whose parts are values, and runs that give their
/// observations.
namespace kit {

/// What an activity does.
struct Behaviour {
  std::function<bool()> enabled;
  std::function<double()> delay;
  std::function<void()> fire;
  std::function<double()> weight = [] { return 1.0; };
  int rank = 1;
  bool reactivates = false;  // sampled anew after every firing that leaves it enabled
};

/// An atomic model under construction: declare variables and activities in the constructor of a derived class, then
/// call finish. Owns what it declares.
class AtomicModel : public modelling::AtomicModel {
  auto begun(const char* name, const std::vector<BaseStateVariableClass*>& enabling, const Behaviour& behaviour) {
    const auto reactivates = [does = behaviour.reactivates] { return does; };
    return modelling::AtomicModel::activity(name)
        .enabledBy(enabling, behaviour.enabled)
        .delayedBy(behaviour.delay)
        .weight(behaviour.weight)
        .rank(behaviour.rank)
        .reactivating(reactivates, reactivates);
  }

 public:
  AtomicModel() : modelling::AtomicModel("") {}

 protected:
  Place& place(const char* name, short mark) { return make<Place>(name, mark); }

  /// Takes over a variable made by the caller, such as an array or a struct.
  template <typename Variable>
  Variable& variable(std::unique_ptr<Variable> made) {
    Variable& reference = *made;
    addVariable(reference);
    variables_.push_back(std::move(made));
    return reference;
  }

  /// An activity that is a group of its own. `enabling` are read by its predicate, `affected` written by its firing.
  Activity& activity(const char* name, const std::vector<BaseStateVariableClass*>& enabling,
                     const std::vector<BaseStateVariableClass*>& affected, const Behaviour& behaviour) {
    return begun(name, enabling, behaviour).fires(affected, behaviour.fire);
  }

  /// An activity that is scheduled as a member of a group only.
  Activity& member(const char* name, const std::vector<BaseStateVariableClass*>& enabling,
                   const std::vector<BaseStateVariableClass*>& affected, const Behaviour& behaviour) {
    return begun(name, enabling, behaviour).firesInGroup(affected, behaviour.fire);
  }

  /// Names the model.
  void finish(const char* name) { DefineName(name); }

 private:
  std::vector<std::unique_ptr<BaseStateVariableClass>> variables_;
};

/// The delay of an exponential activity.
std::function<double()> exponential(double rate);

using ModelInstances = std::span<BaseModelClass* const>;

/// One rate reward or impulse of a variable; see Variable.
struct RateReward {
  std::string model;
  std::function<double(ModelInstances)> function;  // of one instance
};

struct ImpulseReward {
  std::string action;
  std::string model;
  std::function<double()> function = [] { return 1.0; };
  bool timeAveraged = false;
};

/// One performance variable: at each of `stops` one number a batch, over the window from the matching entry of
/// `starts`. One of type STEADY_STATE belongs to steady-state runs: its window is the first batch, behind the transient.
struct Variable {
  std::string name;
  RewardType type = INTERVAL_OF_TIME;
  std::vector<double> starts;
  std::vector<double> stops;
  std::vector<RateReward> rates;  // none or one
  std::vector<ImpulseReward> impulses;
};

/// Variable taken at `time`.
Variable instant(std::string name, double time, RateReward rate);
/// Variable accumulated over [0, time], or averaged over it.
Variable interval(std::string name, double time, RateReward rate);
Variable timeAveraged(std::string name, double time, RateReward rate);
/// Number of firings of `action` in [0, time].
Variable firings(std::string name, double time, std::string action, std::string model);

/// How a steady-state run is cut for a variable: simulated time thrown away at first, then the length of each batch.
struct Cut {
  double transient;
  double length;
};

/// Variable averaged over each batch of a steady-state run.
Variable longRunAverage(std::string name, Cut cut, RateReward rate);
/// Firings of `action` for a unit of time, or in each batch, of a steady-state run.
Variable throughput(std::string name, Cut cut, std::string action, std::string model);
Variable firingsInBatch(std::string name, Cut cut, std::string action, std::string model);

/// What a run needs: the top model's maker and the variables.
struct Experiment {
  std::function<BaseModelClass*()> makeModel;
  std::vector<Variable> variables;
};

/// Observations of one run, by variable (in order of declaration, one entry for each time point), then by batch.
using Observations = std::vector<std::vector<double>>;

struct RunSettings {
  int batches = 20000;
  unsigned seed = 31415;
  int generator = 0;  // as option -r
};

/// Runs `experiment` under the terminating loop, through the command line and the ASCII result file.
Observations run(const Experiment& experiment, const RunSettings& settings);

/// The same under the steady-state loop, until the slowest variable has its batches; the others have more.
Observations runSteadyState(const Experiment& experiment, const RunSettings& settings);

// In a build that checks arcs runs are short and must be without faults; the three below then tell nothing.

/// Passes when the mean of `observations` lies within 4 standard errors of `exact` and the test has power: a 95 %
/// half-width of at most 1 % of the value (5 % for probabilities below 1e-3).
void expectMean(const std::vector<double>& observations, double exact, const std::string& what);

/// As expectMean, for batches of one trajectory, which are correlated. The standard error is that of 32 larger batches,
/// into which at least 1,000 are put together: each of those is long against the correlation time of the test models, so
/// that their means are as good as independent. With 31 degrees of freedom a correct model exceeds 4 standard errors in
/// 4 of 10,000 seeds, and the 95 % half-width is 2.04 of them.
/// Source  batch means; R. W. Conway, Some tactical problems in digital simulation, Management Science 10(1), 1963
void expectSteadyMean(const std::vector<double>& observations, double exact, const std::string& what);

/// Passes when the sample variance lies within 4 of its standard errors of `exact`; the standard error is estimated
/// from the fourth central moment.
void expectVariance(const std::vector<double>& observations, double exact, const std::string& what);

}  // namespace kit
