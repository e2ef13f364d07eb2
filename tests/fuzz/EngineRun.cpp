#include "fuzz/EngineRun.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BaseClasses/PostselectGroup.h"
#include "BaseClasses/PreselectGroup.h"
#include "BaseClasses/SAN/Activity.h"
#include "Modelling/Modelling.h"
#include "Simulator/UserDistributions.h"
#include "support/SimulatorProbe.h"
#include "support/TemporaryFile.h"
#include "support/TestStudy.h"

namespace fuzz {

namespace {

/// Looks over the shoulder of a running model.
class Recorder {
 public:
  explicit Recorder(Trajectory& trajectory) : trajectory_(trajectory) {}

  /// The number of the next activity that is built.
  int nextActivity() { return activities_++; }
  /// Watches a further cell.
  void addCell(std::function<int()> mark) { cells_.push_back(std::move(mark)); }

  void note(int activity) {
    std::vector<int> marks;
    marks.reserve(cells_.size());
    for (const auto& mark : cells_) {
      marks.push_back(mark());
    }
    trajectory_.firings.push_back({activity, BaseModelClass::LastActionTime, std::move(marks)});
  }

 private:
  Trajectory& trajectory_;  // borrowed
  int activities_ = 0;
  std::vector<std::function<int()>> cells_;
};

/// A cell of an atomic model as an activity reaches it: a pointer that follows sharing.
struct Cell {
  BaseStateVariableClass* variable = nullptr;  // a leaf; borrowed from the model
  bool isWide = false;                         // an int, not a short

  void link(short*& pointer) const { dynamic_cast<SharableSV<short>&>(*variable).Register(&pointer); }
  void link(int*& pointer) const { dynamic_cast<SharableSV<int>&>(*variable).Register(&pointer); }
  /// The mark as the variable itself tells it.
  [[nodiscard]] int mark() const {
    return isWide ? dynamic_cast<SharableSV<int>&>(*variable).getState()
                  : dynamic_cast<SharableSV<short>&>(*variable).getState();
  }
};

/// An activity as a generated model has them: its marks are pointers of its own.
class RecipeActivity : public Activity {
 public:
  RecipeActivity(const ActivityRecipe& recipe, std::vector<Cell> cells, Recorder& recorder)
      : recipe_(recipe),
        cells_(std::move(cells)),
        marks_{std::vector<short*>(cells_.size()), std::vector<int*>(cells_.size())},
        recorder_(recorder),
        number_(recorder.nextActivity()) {
    ActivityInitialize(recipe.name.c_str(), 0, static_cast<Distribution>(recipe.delay.distribution), RaceEnabled, 0, 0,
                       false);
  }

  void LinkVariables() override {
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      if (cells_[i].isWide) {
        cells_[i].link(marks_.wide[i]);
      } else {
        cells_[i].link(marks_.narrow[i]);
      }
    }
  }

  bool Enabled() override {
    OldEnabled = NewEnabled;
    NewEnabled = recipe_.enabled(marks_);
    return NewEnabled;
  }
  double Weight() override { return recipe_.weight.value(marks_); }
  double Rate() override { return 0.0; }
  int Rank() override { return static_cast<int>(recipe_.rank.value(marks_)); }
  bool ReactivationPredicate() override { return recipe_.watch.holds(marks_); }
  bool ReactivationFunction() override { return recipe_.resample.holds(marks_); }
  double* ReturnDistributionParameters() override { return nullptr; }
  double SampleDistribution() override {
    for (std::size_t i = 0; i < recipe_.delay.parameters.size(); ++i) {
      parameters_[i] = recipe_.delay.parameters[i].value(marks_);
    }
    return sample();
  }
  BaseActionClass* Fire() override {
    for (const Effect& effect : recipe_.effects) {
      effect.apply(marks_);
    }
    recorder_.note(number_);
    return this;
  }

 private:
  struct Marks {
    std::vector<short*> narrow;  // by cell, where the cell is a short
    std::vector<int*> wide;      // by cell, where it is an int

    [[nodiscard]] int get(int cell) const {
      const auto i = static_cast<std::size_t>(cell);
      return wide[i] != nullptr ? *wide[i] : *narrow[i];
    }
    void set(int cell, int value) const {
      const auto i = static_cast<std::size_t>(cell);
      if (wide[i] != nullptr) {
        *wide[i] = value;
      } else {
        *narrow[i] = static_cast<short>(value);
      }
    }
  };

  double sample() {
    UserDistributions& from = *TheDistribution;
    double* const p = parameters_.data();
    const int count = static_cast<int>(recipe_.delay.parameters.size());
    switch (recipe_.delay.distribution) {
      case Exponential:
        return from.Exponential(p[0]);
      case Deterministic:
        return from.Deterministic(p[0]);
      case Geometric:
        return from.Geometric(p[0]);
      case Weibull:
        return from.Weibull(p[0], p[1]);
      case Normal:
        return from.Normal(p[0], p[1]);
      case Lognormal:
        return from.Lognormal(p[0], p[1]);
      case Erlang:
        return from.Erlang(p[0], p[1]);
      case Triangular:
        return from.Triangular(p[0], p[1], p[2]);
      case Gamma:
        return from.Gamma(p[0], p[1]);
      case Beta:
        return from.Beta(p[0], p[1]);
      case Uniform:
        return from.Uniform(p[0], p[1]);
      case Binomial:
        return from.Binomial(p[0], p[1]);
      case NegativeBinomial:
        return from.NegativeBinomial(p[0], p[1]);
      case HyperExponential:
        return from.HyperExponential(count / 2, p);
      case ConditionalWeibull:
        return from.ConditionalWeibull(p[0], p[1], p[2]);
      case HypoExponential:
        return from.HypoExponential(count, p);
      case Pareto:
        return from.Pareto(p[0], p[1]);
      default:
        return 0.0;
    }
  }

  const ActivityRecipe& recipe_;  // borrowed
  std::vector<Cell> cells_;
  Marks marks_;
  Recorder& recorder_;  // borrowed
  int number_;
  std::array<double, 8> parameters_{};
};

class RecipeModel : public modelling::AtomicModel {
 public:
  RecipeModel(const LeafRecipe* recipe, Recorder* recorder) : AtomicModel(recipe->name.c_str()), recorder_(recorder) {
    for (const VariableRecipe& variable : recipe->variables) {
      makeVariable(variable);
    }
    for (const Cell& cell : cells_) {
      recorder->addCell([cell] { return cell.mark(); });
    }
    for (const EntryRecipe& entry : recipe->entries) {
      makeEntry(*recipe, entry);
    }
  }

  [[nodiscard]] int get(int cell) const { return cells_[static_cast<std::size_t>(cell)].mark(); }

 private:
  void makeVariable(const VariableRecipe& variable) {
    using modelling::ArrayVariable;
    const int initial = variable.initial;
    switch (variable.kind) {
      case VariableRecipe::Kind::kPlace:
        addCell(made<Place>(variable, static_cast<short>(initial)), false);
        break;
      case VariableRecipe::Kind::kShort:
        addCell(made<ExtendedPlace<short>>(variable, static_cast<short>(initial)), false);
        break;
      case VariableRecipe::Kind::kInt:
        addCell(made<ExtendedPlace<int>>(variable, initial), true);
        break;
      case VariableRecipe::Kind::kShortArray:
        addElements(made<ArrayVariable<short>>(variable, variable.size, static_cast<short>(initial)), false);
        break;
      case VariableRecipe::Kind::kIntArray:
        addElements(made<ArrayVariable<int>>(variable, variable.size, initial), true);
        break;
    }
  }

  template <typename Kind, typename... Arguments>
  Kind& made(const VariableRecipe& variable, Arguments... arguments) {
    return variable.readOnly ? makeReadOnly<Kind>(variable.name, arguments...)
                             : make<Kind>(variable.name, arguments...);
  }

  void addCell(BaseStateVariableClass& variable, bool isWide) {
    variables_.push_back(&variable);
    firstCells_.push_back(cells_.size());
    cells_.push_back({&variable, isWide});
  }
  template <typename Array>
  void addElements(Array& array, bool isWide) {
    variables_.push_back(&array);
    firstCells_.push_back(cells_.size());
    for (int i = 0; i < array.getSize(); ++i) {
      cells_.push_back({array.Index(i), isWide});
    }
  }

  /// Makes an entry of the list of groups with all that is in it.
  void makeEntry(const LeafRecipe& recipe, const EntryRecipe& entry) {
    switch (entry.kind) {
      case EntryRecipe::Kind::kPreselect:
        group<PreselectGroup>(entry.name.c_str(), makeMembers(recipe, entry));
        break;
      case EntryRecipe::Kind::kPostselect:
        group<PostselectGroup>(entry.name.c_str(), makeMembers(recipe, entry));
        break;
      default: {
        const ActivityRecipe& activity = activityOf(recipe, entry);
        add(makeActivity(activity), arcsTo(activity.enabling), arcsTo(activity.affected));
      }
    }
  }

  std::vector<BaseGroupClass*> makeMembers(const LeafRecipe& recipe, const EntryRecipe& entry) {
    std::vector<BaseGroupClass*> members;
    for (const EntryRecipe& member : entry.members) {
      members.push_back(&makeMember(recipe, member));
    }
    return members;
  }

  BaseGroupClass& makeMember(const LeafRecipe& recipe, const EntryRecipe& entry) {
    switch (entry.kind) {
      case EntryRecipe::Kind::kPreselect:
        return innerGroup<PreselectGroup>(entry.name.c_str(), makeMembers(recipe, entry));
      case EntryRecipe::Kind::kPostselect:
        return innerGroup<PostselectGroup>(entry.name.c_str(), makeMembers(recipe, entry));
      default: {
        const ActivityRecipe& activity = activityOf(recipe, entry);
        return addMember(makeActivity(activity), arcsTo(activity.enabling), arcsTo(activity.affected));
      }
    }
  }

  static const ActivityRecipe& activityOf(const LeafRecipe& recipe, const EntryRecipe& entry) {
    return recipe.activities[static_cast<std::size_t>(entry.activity)];
  }

  std::unique_ptr<Activity> makeActivity(const ActivityRecipe& activity) {
    return std::make_unique<RecipeActivity>(activity, cells_, *recorder_);
  }

  modelling::Arcs arcsTo(const std::vector<ArcEnd>& arcs) {
    std::vector<BaseStateVariableClass*> ends;
    for (const ArcEnd& arc : arcs) {
      const auto variable = static_cast<std::size_t>(arc.variable);
      ends.push_back(arc.element < 0 ? variables_[variable]
                                     : cells_[firstCells_[variable] + static_cast<std::size_t>(arc.element)].variable);
    }
    return ends;
  }

  Recorder* recorder_;  // borrowed
  std::vector<Cell> cells_;
  std::vector<BaseStateVariableClass*> variables_;  // borrowed from the base class
  std::vector<std::size_t> firstCells_;             // by variable
};

modelling::ChildModel childOf(const NodeRecipe& node, Recorder& recorder) {
  std::vector<modelling::ChildModel> children;
  for (const NodeRecipe& child : node.children) {
    children.push_back(childOf(child, recorder));
  }
  std::vector<modelling::Shared> shared;
  for (const SharedRecipe& one : node.shared) {
    std::vector<modelling::Shared::Part> parts;
    for (const SharedRecipe::Part& part : one.parts) {
      parts.push_back({children[static_cast<std::size_t>(part.child)].name, part.variable});
    }
    shared.emplace_back(one.variable.name, parts);
  }
  switch (node.kind) {
    case NodeRecipe::Kind::kJoin:
      return modelling::join(node.name, children, shared);
    case NodeRecipe::Kind::kReplication:
      return modelling::replicate(node.name, node.copies, children.front(), shared);
    default:
      return modelling::child<RecipeModel>(node.name, &node.leaf, &recorder);
  }
}

modelling::PerformanceVariable& addVariable(modelling::RewardModel& rewards, const RewardRecipe& reward) {
  switch (reward.kind) {
    case RewardRecipe::Kind::kInstant:
      return rewards.instantOfTime("variable", reward.stop);
    case RewardRecipe::Kind::kInterval:
      return rewards.intervalOfTime("variable", reward.start, reward.stop);
    case RewardRecipe::Kind::kTimeAveraged:
      return rewards.timeAveraged("variable", reward.start, reward.stop);
    default:
      return rewards.steadyState("variable", reward.start, reward.stop - reward.start);
  }
}

void measure(modelling::RewardModel& rewards, const ModelRecipe& model, Recorder& recorder) {
  rewards.model(childOf(model.top, recorder));
  for (const RewardRecipe& reward : model.rewards) {
    modelling::PerformanceVariable& variable = addVariable(rewards, reward);
    if (reward.hasRate) {
      variable.rate(reward.rateModel, [rate = reward.rate](RecipeModel& leaf) { return rate.value(leaf); });
    }
    if (reward.hasImpulse) {
      const auto value = [impulse = reward.impulse](RecipeModel& leaf) { return impulse.value(leaf); };
      if (reward.impulseIsSum) {
        variable.impulseSum(reward.impulseAction, reward.impulseModel, value);
      } else {
        variable.impulse(reward.impulseAction, reward.impulseModel, value);
      }
    }
  }
}

class StreamGenerator : public RandomNumberGenerator {
 public:
  explicit StreamGenerator(const Uniforms& uniforms) : uniforms_(uniforms) {}

  double rnd() override { return uniforms_.next(); }
  [[nodiscard]] long drawn() const { return uniforms_.drawn(); }

 private:
  Uniforms uniforms_;
};

/// Gives the process's sampler, which owns it, a generator of that stream.
const StreamGenerator& installGenerator(const Uniforms& uniforms) {
  auto* const generator = new StreamGenerator(uniforms);
  delete std::exchange(TheDistribution->RNG, generator);
  return *generator;
}

/// Numbers actions from 0 again: a process of many models would otherwise need ever larger tables for them.
struct Numbering : BaseActionClass {
  static void restart() { MaxID = 0; }
};

/// Reads numbers in network order.
class Reader {
 public:
  explicit Reader(std::string bytes) : bytes_(std::move(bytes)) {}

  [[nodiscard]] bool atEnd() const { return position_ >= bytes_.size(); }
  void skip(std::size_t count) { position_ += count; }
  std::uint64_t number(std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width && !atEnd(); ++i) {
      value = (value << 8U) | static_cast<unsigned char>(bytes_[position_++]);
    }
    return value;
  }

 private:
  std::string bytes_;
  std::size_t position_ = 0;
};

std::vector<std::vector<double>> observationsIn(const std::string& file) {
  constexpr std::size_t kHeader = 256;
  constexpr std::size_t kLengthClientAndExperiment = 4 + 1 + 2;
  std::vector<std::vector<double>> observations;
  Reader reader(file);
  reader.skip(kHeader);
  while (!reader.atEnd()) {
    reader.skip(kLengthClientAndExperiment);
    for (std::uint64_t records = reader.number(2); records > 0; --records) {
      const std::size_t variable = reader.number(2);
      reader.skip(1);
      observations.resize(std::max(observations.size(), variable + 1));
      for (std::uint64_t count = reader.number(4); count > 0; --count) {
        observations[variable].push_back(std::bit_cast<double>(reader.number(8)));
      }
    }
  }
  return observations;
}

}  // namespace

Trajectory runOnEngine(const ModelRecipe& model, const char* resultFile) {
  Trajectory trajectory;
  Recorder recorder(trajectory);
  Numbering::restart();
  setenv("SIMTEST", std::to_string(model.simTest).c_str(), 1);
  support::setModelFactory([&](bool expandTimeArrays) -> std::unique_ptr<PVModel> {
    const auto describeModel = [&](modelling::RewardModel& rewards) { measure(rewards, model, recorder); };
    return std::make_unique<modelling::RewardModel>("fuzz", describeModel, expandTimeArrays);
  });
  const StreamGenerator& generator = installGenerator(model.uniforms);
  {
    SimulatorProbe simulator({"-N" + std::to_string(model.batches), model.isSteadyState ? "-t0" : "-t1",
                              "-n" + std::to_string(model.reportSize), "-b", resultFile});
    simulator.Run();
  }
  trajectory.drawn = generator.drawn();
  support::setStudyFactory(nullptr);
  trajectory.observations = observationsIn(support::bytesOf(resultFile));
  // What was not observed at all is not in the file.
  trajectory.observations.resize(std::max(trajectory.observations.size(), model.rewards.size()));
  return trajectory;
}

}  // namespace fuzz
