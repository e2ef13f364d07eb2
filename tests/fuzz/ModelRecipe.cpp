#include "fuzz/ModelRecipe.h"

#include <set>
#include <span>
#include <sstream>
#include <tuple>
#include <utility>

namespace fuzz {

std::vector<int> Condition::cellsRead() const {
  switch (kind) {
    case Kind::kAlways:
    case Kind::kNever:
      return {};
    case Kind::kBelowOther:
      return {cell, other};
    default:
      return {cell};
  }
}

std::vector<int> Effect::cellsChanged() const {
  return kind == Kind::kMove ? std::vector<int>{cell, other} : std::vector<int>{cell};
}

bool VariableRecipe::isLike(const VariableRecipe& other) const {
  const auto shapeOf = [](const VariableRecipe& variable) {
    const bool isWide = variable.kind == Kind::kInt || variable.kind == Kind::kIntArray;
    return std::tuple(isWide, variable.isArray(), variable.size);
  };
  return shapeOf(*this) == shapeOf(other);
}

int LeafRecipe::cellOf(int variable) const {
  int cell = 0;
  for (int i = 0; i < variable; ++i) {
    cell += variables[static_cast<std::size_t>(i)].size;
  }
  return cell;
}

std::vector<VariableRecipe> NodeRecipe::offered() const {
  if (kind == Kind::kLeaf) {
    return leaf.variables;
  }
  std::vector<VariableRecipe> variables;
  if (kind == Kind::kReplication && copies == 0) {
    return variables;
  }
  for (const SharedRecipe& one : shared) {
    variables.push_back(one.variable);
  }
  return variables;
}

namespace {

constexpr int kMostActivitiesOfLeaf = 7;
constexpr int kMostActivities = 40;

/// Parameters that a distribution takes, and values for each that it accepts. Many are coarse, so that sums meet.
constexpr double kRates[] = {1.0, 0.5, 2.0, 0.25, 4.0, 0.1};
constexpr double kLengths[] = {1.0, 0.5, 2.0, 0.25, 1.5, 0.1};
constexpr double kShapes[] = {1.0, 2.0, 0.5, 3.0, 1.25};
constexpr double kChances[] = {0.5, 0.25, 0.75, 0.125, 0.9};
constexpr double kCounts[] = {1.0, 2.0, 3.0};
constexpr double kSpreads[] = {0.25, 1.0, 0.0};
constexpr double kWeights[] = {1.0, 2.0, 0.5, 3.0, 0.0};
constexpr double kTimes[] = {0.0, 1.0, 2.0, 5.0, 0.75, 12.0};
constexpr double kWindows[] = {4.0, 10.0, 1.0, 0.5, 25.0};
/// Out of range for one distribution or another.
constexpr double kFaults[] = {-1.0, 0.0, 1.5, 2.5};

std::string numbered(std::string kind, std::size_t number) {
  kind += std::to_string(number);
  return kind;
}

/// Makes one model. Every choice is read from the bytes in the order of the calls.
class ModelMaker {
 public:
  explicit ModelMaker(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  ModelRecipe make() {
    ModelRecipe model;
    model.batches = 1 + bytes_.choose(3);
    model.simTest = bytes_.among({2, 2, 0, 1});
    const auto grain = static_cast<Uniforms::Grain>(bytes_.choose(4));
    model.uniforms = Uniforms(grain, static_cast<std::uint64_t>(bytes_.choose(256)));
    model.top = node(2, 1);
    const int rewards = 1 + bytes_.choose(3);
    for (int i = 0; i < rewards; ++i) {
      model.rewards.push_back(reward());
    }
    chooseKindOfRun(model);
    return model;
  }

 private:
  /// Decided last, so that a model is the same in either kind of run.
  void chooseKindOfRun(ModelRecipe& model) {
    model.isSteadyState = bytes_.oneIn(2);
    for (RewardRecipe& reward : model.rewards) {
      const bool isOfOtherKind = &reward != &model.rewards.front() && bytes_.oneIn(5);
      if (model.isSteadyState != isOfOtherKind) {
        reward.kind = RewardRecipe::Kind::kSteadyState;
        reward.stop = reward.start + bytes_.among(kWindows);
      }
    }
    if (model.isSteadyState) {
      model.batches = bytes_.among({3, 1, 2, 10});
    }
    model.reportSize = bytes_.among({1000, 1, 2});
  }

  // ---- Composition ----

  /// A model of up to `depth` levels of composition, which itself stands in `instances` copies.
  NodeRecipe node(int depth, int instances) {
    NodeRecipe made;
    made.kind = depth == 0 ? NodeRecipe::Kind::kLeaf : static_cast<NodeRecipe::Kind>(bytes_.choose(3));
    switch (made.kind) {
      case NodeRecipe::Kind::kJoin:
        made.name = nextName("join");
        for (int i = 2 + bytes_.choose(2); i > 0; --i) {
          made.children.push_back(node(depth - 1, instances));
        }
        shareAmongChildren(made);
        break;
      case NodeRecipe::Kind::kReplication:
        made.name = nextName("rep");
        made.copies = copies(instances);
        made.children.push_back(node(depth - 1, instances * made.copies));
        shareAmongCopies(made);
        break;
      default:
        made.leaf = leaf(instances);
        made.name = made.leaf.name;
    }
    return made;
  }

  int copies(int instances) {
    // One atomic model at least must be there for the rewards, and the first one made is never in a replication of none.
    if (!leaves_.empty() && bytes_.oneIn(12)) {
      return 0;
    }
    return instances > 3 ? 1 : 1 + bytes_.choose(3);
  }

  void shareAmongChildren(NodeRecipe& join) {
    std::vector<std::vector<VariableRecipe>> free;
    for (const NodeRecipe& child : join.children) {
      free.push_back(child.offered());
    }
    for (int wanted = bytes_.choose(4); wanted > 0; --wanted) {
      const auto first = static_cast<std::size_t>(bytes_.choose(static_cast<int>(free.size())));
      if (free[first].empty()) {
        continue;
      }
      const VariableRecipe like = free[first][chooseIndex(free[first])];
      SharedRecipe shared{like, {}};
      for (std::size_t child = 0; child < free.size(); ++child) {
        const auto found =
            std::ranges::find_if(free[child], [&](const VariableRecipe& one) { return one.isLike(like); });
        if (found != free[child].end() && (child == first || !bytes_.oneIn(4))) {
          shared.parts.push_back({static_cast<int>(child), found->name});
          free[child].erase(found);
        }
      }
      if (shared.parts.size() > 1) {
        shared.variable.name = nextName("shared");
        shared.variable.readOnly = false;
        join.shared.push_back(std::move(shared));
      }
    }
  }

  void shareAmongCopies(NodeRecipe& replication) {
    for (const VariableRecipe& variable : replication.children.front().offered()) {
      if (bytes_.oneIn(2)) {
        SharedRecipe shared{variable, {{0, variable.name}}};
        shared.variable.name = nextName("common");
        shared.variable.readOnly = false;
        replication.shared.push_back(std::move(shared));
      }
    }
  }

  // ---- Atomic models ----

  LeafRecipe leaf(int instances) {
    LeafRecipe made;
    made.name = nextName("leaf");
    for (int i = 1 + bytes_.choose(3); i > 0; --i) {
      VariableRecipe variable;
      variable.kind = static_cast<VariableRecipe::Kind>(bytes_.choose(5));
      variable.name = numbered("v", made.variables.size());
      variable.size = variable.isArray() ? 1 + bytes_.choose(3) : 1;
      variable.initial = bytes_.choose(4);
      made.variables.push_back(variable);
    }
    const int budget =
        std::min(kMostActivitiesOfLeaf, std::max(1, (kMostActivities - activities_) / std::max(instances, 1)));
    for (int i = 2 + bytes_.choose(4); i > 0 && static_cast<int>(made.activities.size()) < budget; --i) {
      made.entries.push_back(entry(made, 2, budget));
    }
    markReadOnly(made);
    activities_ += static_cast<int>(made.activities.size()) * instances;
    if (instances > 0) {
      leaves_.push_back(made);
    }
    return made;
  }

  /// An activity, or a group with groups in it down to `depth` levels.
  EntryRecipe entry(LeafRecipe& model, int depth, int budget) {
    EntryRecipe made;
    const int kind = depth > 0 ? bytes_.choose(6) : 0;
    if (kind < 4 || static_cast<int>(model.activities.size()) + 1 >= budget) {
      made.activity = static_cast<int>(model.activities.size());
      model.activities.push_back(activity(model));
      return made;
    }
    made.kind = kind == 4 ? EntryRecipe::Kind::kPreselect : EntryRecipe::Kind::kPostselect;
    made.name = nextName("group");
    for (int i = 1 + bytes_.choose(3); i > 0 && static_cast<int>(model.activities.size()) < budget; --i) {
      made.members.push_back(entry(model, depth - 1, budget));
    }
    return made;
  }

  ActivityRecipe activity(const LeafRecipe& model) {
    ActivityRecipe made;
    made.name = numbered("a", model.activities.size());
    made.delay = delay(model);
    made.first = condition(model);
    made.second = bytes_.oneIn(3) ? condition(model) : Condition{};
    for (int i = bytes_.choose(3); i >= 0; --i) {
      made.effects.push_back(effect(model));
    }
    made.weight = amount(model, kWeights);
    made.rank = Amount{static_cast<double>(bytes_.choose(3)), bytes_.oneIn(8) ? 1.0 : 0.0, cell(model)};
    if (bytes_.oneIn(3)) {
      made.watch = bytes_.oneIn(2) ? condition(model) : Condition{};
      made.resample = bytes_.oneIn(2) ? condition(model) : Condition{};
    }
    std::set<int> read;
    for (const Condition& one : {made.first, made.second}) {
      for (const int readCell : one.cellsRead()) {
        read.insert(readCell);
      }
    }
    if (bytes_.oneIn(4)) {
      read.insert(cell(model));
    }
    std::set<int> changed;
    for (const Effect& one : made.effects) {
      for (const int changedCell : one.cellsChanged()) {
        changed.insert(changedCell);
      }
    }
    made.enabling = arcsTo(read, model);
    made.affected = arcsTo(changed, model);
    return made;
  }

  DelayRecipe delay(const LeafRecipe& model) {
    DelayRecipe made;
    // Two of the first choices are those by which most events tie.
    made.distribution = bytes_.among({2, kInstantaneous, 1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 2, 1});
    const auto add = [&](const auto& values) { made.parameters.push_back(Amount{bytes_.among(values)}); };
    switch (made.distribution) {
      case 1:  // Exponential
        made.parameters.push_back(amount(model, kRates));
        break;
      case 2:  // Deterministic
        made.parameters.push_back(amount(model, kLengths));
        break;
      case 3:  // Geometric
        add(kChances);
        break;
      case 4:  // Weibull: shape, scale
        add(kShapes);
        add(kLengths);
        break;
      case 5:  // Normal: mean, variance
      case 6:  // Lognormal
        add(kLengths);
        add(kSpreads);
        break;
      case 7:  // Erlang: stages, mean
        add(kCounts);
        add(kLengths);
        break;
      case 8: {  // Triangular: least, most, mode
        const double least = bytes_.among(kLengths);
        const double width = bytes_.among({1.0, 0.0, 2.0});
        made.parameters = {Amount{least}, Amount{least + width}, Amount{least + width * bytes_.among({0.5, 0.0, 1.0})}};
        break;
      }
      case 9:   // Gamma: shape, scale
      case 10:  // Beta
        add(kShapes);
        add(kShapes);
        break;
      case 11: {  // Uniform
        const double least = bytes_.among({0.0, 1.0, 0.5});
        made.parameters = {Amount{least}, Amount{least + bytes_.among({1.0, 0.0, 2.0})}};
        break;
      }
      case 12:  // Binomial: trials, chance
      case 13:  // NegativeBinomial: successes, chance
        add(kCounts);
        add(kChances);
        break;
      case 14:  // HyperExponential: rate and weight of each phase
        for (int phase = bytes_.choose(3); phase >= 0; --phase) {
          add(kRates);
          add(kLengths);
        }
        break;
      case 15:  // ConditionalWeibull: shape, scale, age
        add(kShapes);
        add(kLengths);
        add(kLengths);
        break;
      case 16:  // HypoExponential
        for (int phase = bytes_.choose(4); phase > 0; --phase) {
          add(kRates);
        }
        break;
      case 17:  // Pareto: least, shape
        add(kLengths);
        add(kShapes);
        break;
      default:
        break;
    }
    if (!made.parameters.empty() && bytes_.oneIn(100)) {
      made.parameters[chooseIndex(made.parameters)] = Amount{bytes_.among(kFaults)};
    }
    avoidEndlessSampling(made);
    return made;
  }

  /// A normal delay is drawn until it is not negative: one that cannot be anything else would never be.
  static void avoidEndlessSampling(DelayRecipe& delay) {
    constexpr int kNormal = 5;
    if (delay.distribution == kNormal) {
      delay.parameters[0].base = std::max(delay.parameters[0].base, 0.0);
    }
  }

  Condition condition(const LeafRecipe& model) {
    Condition made;
    made.kind = bytes_.among({Condition::Kind::kAtLeast, Condition::Kind::kBelow, Condition::Kind::kAlways,
                              Condition::Kind::kEqual, Condition::Kind::kBelowOther, Condition::Kind::kAtLeast,
                              Condition::Kind::kBelow, Condition::Kind::kNever});
    made.cell = cell(model);
    made.other = cell(model);
    made.value = made.kind == Condition::Kind::kBelow ? 2 + bytes_.choose(4) : bytes_.among({1, 1, 2, 3});
    return made;
  }

  Effect effect(const LeafRecipe& model) {
    Effect made;
    made.kind = static_cast<Effect::Kind>(bytes_.choose(4));
    made.cell = cell(model);
    made.other = cell(model);
    made.value = made.kind == Effect::Kind::kSet ? bytes_.choose(4) : bytes_.among({-1, 1, 1, -1, 2});
    return made;
  }

  /// A number of `values`, which one in six is a sum with a mark.
  template <std::size_t kCount>
  Amount amount(const LeafRecipe& model, const double (&values)[kCount]) {
    Amount made{bytes_.among(values)};
    if (bytes_.oneIn(6)) {
      made.perMark = bytes_.among({1.0, 0.5});
      made.cell = cell(model);
    }
    return made;
  }

  int cell(const LeafRecipe& model) { return bytes_.choose(model.cells()); }

  /// Arcs that lead to all these cells, to single elements or to whole arrays.
  std::vector<ArcEnd> arcsTo(const std::set<int>& cells, const LeafRecipe& model) {
    std::vector<ArcEnd> arcs;
    for (int variable = 0; variable < static_cast<int>(model.variables.size()); ++variable) {
      const int first = model.cellOf(variable);
      const int behind = model.cellOf(variable + 1);
      if (model.variables[static_cast<std::size_t>(variable)].isArray()) {
        for (int one = first; one < behind; ++one) {
          if (cells.contains(one)) {
            const bool whole = bytes_.oneIn(3);
            arcs.push_back({variable, whole ? -1 : one - first});
          }
        }
      } else if (cells.contains(first)) {
        arcs.push_back({variable, -1});
      }
    }
    if (arcs.size() > 1 && bytes_.oneIn(2)) {
      std::ranges::reverse(arcs);
    }
    return arcs;
  }

  /// Some of the variables that no activity changes become read-only.
  void markReadOnly(LeafRecipe& model) {
    for (int variable = 0; variable < static_cast<int>(model.variables.size()); ++variable) {
      const bool isChanged = std::ranges::any_of(model.activities, [&](const ActivityRecipe& activity) {
        return std::ranges::any_of(activity.affected, [&](const ArcEnd& arc) { return arc.variable == variable; });
      });
      model.variables[static_cast<std::size_t>(variable)].readOnly = !isChanged && bytes_.oneIn(2);
    }
  }

  // ---- Rewards ----

  RewardRecipe reward() {
    RewardRecipe made;
    made.kind = static_cast<RewardRecipe::Kind>(bytes_.choose(3));
    made.start = bytes_.among(kTimes);
    made.stop = made.kind == RewardRecipe::Kind::kInstant ? made.start : made.start + bytes_.among(kWindows);
    const int parts = bytes_.choose(4);
    made.hasRate = parts != 2;
    made.hasImpulse = parts >= 2;
    const LeafRecipe& rated = leaves_[chooseIndex(leaves_)];
    made.rateModel = rated.name;
    made.rate = Amount{bytes_.among({0.0, 1.0, 0.25}), bytes_.among({1.0, 0.5, 3.0}), cell(rated)};
    const LeafRecipe& fired = leaves_[chooseIndex(leaves_)];
    made.impulseModel = fired.name;
    made.impulseAction = fired.activities[chooseIndex(fired.activities)].name;
    made.impulse = Amount{1.0, bytes_.oneIn(2) ? 0.5 : 0.0, cell(fired)};
    made.impulseIsSum = bytes_.oneIn(3);
    return made;
  }

  template <typename Values>
  std::size_t chooseIndex(const Values& values) {
    return static_cast<std::size_t>(bytes_.choose(static_cast<int>(values.size())));
  }

  std::string nextName(const char* kind) { return numbered(kind, names_++); }

  Bytes bytes_;
  std::vector<LeafRecipe> leaves_;  // of which there is a copy at least
  int activities_ = 0;              // in all copies
  std::size_t names_ = 0;
};

// ---- Words ----

const char* nameOf(Condition::Kind kind) {
  constexpr const char* kNames[] = {"always", "never", ">=", "<", "==", "< cell"};
  return kNames[static_cast<std::size_t>(kind)];
}

void tell(std::ostream& out, const char* label, const Condition& condition) {
  out << "; " << label << " cell " << condition.cell << ' ' << nameOf(condition.kind) << ' '
      << (condition.kind == Condition::Kind::kBelowOther ? condition.other : condition.value);
}

void tell(std::ostream& out, const char* label, const Amount& amount) {
  out << "; " << label << ' ' << amount.base;
  if (amount.perMark != 0.0) {
    out << " + " << amount.perMark << " * cell " << amount.cell;
  }
}

void tell(std::ostream& out, const char* label, const std::vector<ArcEnd>& arcs) {
  out << "; " << label;
  for (const ArcEnd& arc : arcs) {
    out << " v" << arc.variable;
    if (arc.element >= 0) {
      out << '[' << arc.element << ']';
    }
  }
}

void tell(std::ostream& out, const EntryRecipe& entry) {
  if (entry.kind == EntryRecipe::Kind::kActivity) {
    out << " a" << entry.activity;
    return;
  }
  out << (entry.kind == EntryRecipe::Kind::kPreselect ? " preselect " : " postselect ") << entry.name << " (";
  for (const EntryRecipe& member : entry.members) {
    tell(out, member);
  }
  out << " )";
}

void tell(std::ostream& out, const LeafRecipe& leaf, const std::string& indent) {
  for (const VariableRecipe& variable : leaf.variables) {
    out << indent << variable.name << ": kind " << static_cast<int>(variable.kind) << ", size " << variable.size
        << ", initially " << variable.initial << (variable.readOnly ? ", read-only" : "") << '\n';
  }
  for (const ActivityRecipe& activity : leaf.activities) {
    out << indent << activity.name << ": distribution " << activity.delay.distribution;
    for (const Amount& parameter : activity.delay.parameters) {
      tell(out, "parameter", parameter);
    }
    tell(out, "enabled", activity.first);
    tell(out, "and", activity.second);
    for (const Effect& effect : activity.effects) {
      out << "; effect " << static_cast<int>(effect.kind) << " of cell " << effect.cell << ", cell " << effect.other
          << ", value " << effect.value;
    }
    tell(out, "weight", activity.weight);
    tell(out, "rank", activity.rank);
    tell(out, "watched", activity.watch);
    tell(out, "sampled anew", activity.resample);
    tell(out, "enabling", activity.enabling);
    tell(out, "affected", activity.affected);
    out << '\n';
  }
  out << indent << "entries:";
  for (const EntryRecipe& entry : leaf.entries) {
    tell(out, entry);
  }
  out << '\n';
}

void tell(std::ostream& out, const NodeRecipe& node, const std::string& indent) {
  constexpr const char* kKinds[] = {"atomic", "join", "replication"};
  out << indent << node.name << ": " << kKinds[static_cast<std::size_t>(node.kind)];
  if (node.kind == NodeRecipe::Kind::kReplication) {
    out << " of " << node.copies;
  }
  out << '\n';
  for (const SharedRecipe& shared : node.shared) {
    out << indent << "  shared " << shared.variable.name << " =";
    for (const SharedRecipe::Part& part : shared.parts) {
      out << ' ' << part.child << '.' << part.variable;
    }
    out << '\n';
  }
  if (node.kind == NodeRecipe::Kind::kLeaf) {
    tell(out, node.leaf, indent + "  ");
  }
  for (const NodeRecipe& child : node.children) {
    tell(out, child, indent + "  ");
  }
}

}  // namespace

std::string describe(const ModelRecipe& model) {
  std::ostringstream out;
  out << (model.isSteadyState ? "steady state, " : "terminating, ") << model.batches << " batches, reports of "
      << model.reportSize << ", SIMTEST " << model.simTest << '\n';
  tell(out, model.top, "");
  for (const RewardRecipe& reward : model.rewards) {
    out << "reward of kind " << static_cast<int>(reward.kind) << " over [" << reward.start << ", " << reward.stop
        << ']';
    if (reward.hasRate) {
      tell(out, ("rate of " + reward.rateModel).c_str(), reward.rate);
    }
    if (reward.hasImpulse) {
      tell(out, ("impulse of " + reward.impulseModel + '.' + reward.impulseAction).c_str(), reward.impulse);
      out << (reward.impulseIsSum ? ", a sum" : "");
    }
    out << '\n';
  }
  return out.str();
}

ModelRecipe modelOf(std::span<const std::uint8_t> bytes) {
  return ModelMaker(bytes).make();
}

}  // namespace fuzz
