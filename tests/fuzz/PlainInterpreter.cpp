#include "fuzz/PlainInterpreter.h"

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>
#include <utility>

#include "fuzz/PlainDelays.h"

namespace fuzz {

namespace {

constexpr std::size_t kMostFirings = 1500;
constexpr long kMostDraws = 200000;
constexpr int kNone = -1;

struct Fatal {
  std::string words;
};
struct Assertion {};
struct Endless {};

template <typename Item>
void addOnce(std::vector<Item>& items, const Item& item) {
  if (std::ranges::find(items, item) == items.end()) {
    items.push_back(item);
  }
}

/// An index for a vector.
std::size_t at(int index) {
  return static_cast<std::size_t>(index);
}

// ---- The tree, laid flat ----

/// A mark, which one cell holds, or several that are shared.
struct Mark {
  int value = 0;
  std::vector<int> affecting;  // activities with an affecting arc, in the order in which the engine's list has them
  std::vector<int> enabled;    // activities with an enabling arc, likewise
};

/// An activity or a group.
struct Node {
  EntryRecipe::Kind kind = EntryRecipe::Kind::kActivity;
  std::string name;
  std::vector<int> members;  // nodes

  // An activity.
  const ActivityRecipe* recipe = nullptr;
  int firstCell = 0;
  int activity = kNone;
  int entry = kNone;  // of the group list
  bool answer = false;
  bool answerBefore = false;

  // A group.
  bool choiceIsDue = true;
  int chosen = kNone;  // an activity's node
};

struct Flat {
  std::vector<Instance> instances;
  std::vector<Mark> marks;
  std::vector<int> markOf;  // by cell
  std::vector<Node> nodes;
  std::vector<int> entries;                 // nodes that are scheduled
  std::vector<int> nodeOf;                  // by activity
  std::vector<std::vector<int>> affecting;  // by activity: cells with an affecting arc, in the order of the arcs
  std::vector<std::vector<int>> enabling;   // by activity, likewise
};

/// What a level offers the one above: for each variable its cells, one of those that are the same.
using Offer = std::map<std::string, std::vector<int>>;

class Flattening {
 public:
  static Flat of(const NodeRecipe& top) {
    Flattening flattening;
    flattening.add(top);
    return std::move(flattening.flat_);
  }

 private:
  Offer add(const NodeRecipe& node) {
    switch (node.kind) {
      case NodeRecipe::Kind::kJoin:
        return addJoin(node);
      case NodeRecipe::Kind::kReplication:
        return addReplication(node);
      default:
        return addLeaf(node.leaf);
    }
  }

  Offer addJoin(const NodeRecipe& node) {
    std::vector<Offer> offers;
    for (const NodeRecipe& child : node.children) {
      offers.push_back(add(child));
    }
    Offer offered;
    for (const SharedRecipe& shared : node.shared) {
      std::vector<std::vector<int>> parts;
      for (const SharedRecipe::Part& part : shared.parts) {
        parts.push_back(offers[at(part.child)].at(part.variable));
      }
      // The value of the last child holds.
      offered[shared.variable.name] = unite(parts, parts.size() - 1);
    }
    return offered;
  }

  Offer addReplication(const NodeRecipe& node) {
    std::vector<Offer> offers;
    for (int copy = 0; copy < node.copies; ++copy) {
      offers.push_back(add(node.children.front()));
    }
    Offer offered;
    for (const SharedRecipe& shared : node.shared) {
      std::vector<std::vector<int>> parts;
      for (const Offer& offer : offers) {
        parts.push_back(offer.at(shared.parts.front().variable));
      }
      if (!parts.empty()) {
        // The value of the first copy holds.
        offered[shared.variable.name] = unite(parts, 0);
      }
    }
    return offered;
  }

  /// Makes the marks of these variables one, element by element. The lists of activities follow each other.
  std::vector<int> unite(const std::vector<std::vector<int>>& parts, std::size_t valueOf) {
    for (std::size_t element = 0; element < parts.front().size(); ++element) {
      Mark united;
      united.value = flat_.marks[at(flat_.markOf[at(parts[valueOf][element])])].value;
      std::vector<int> old;
      for (const std::vector<int>& part : parts) {
        const int mark = flat_.markOf[at(part[element])];
        for (const int activity : flat_.marks[at(mark)].affecting) {
          addOnce(united.affecting, activity);
        }
        for (const int activity : flat_.marks[at(mark)].enabled) {
          addOnce(united.enabled, activity);
        }
        old.push_back(mark);
      }
      const int number = static_cast<int>(flat_.marks.size());
      flat_.marks.push_back(united);
      for (int& mark : flat_.markOf) {
        if (std::ranges::find(old, mark) != old.end()) {
          mark = number;
        }
      }
    }
    return parts.front();
  }

  Offer addLeaf(const LeafRecipe& leaf) {
    const Instance instance{&leaf, static_cast<int>(flat_.markOf.size()), static_cast<int>(flat_.nodeOf.size())};
    flat_.instances.push_back(instance);
    Offer offered;
    for (const VariableRecipe& variable : leaf.variables) {
      for (int element = 0; element < variable.size; ++element) {
        offered[variable.name].push_back(static_cast<int>(flat_.markOf.size()));
        flat_.markOf.push_back(static_cast<int>(flat_.marks.size()));
        flat_.marks.push_back(Mark{variable.initial, {}, {}});
      }
    }
    for (const EntryRecipe& entry : leaf.entries) {
      const int number = static_cast<int>(flat_.entries.size());
      flat_.entries.push_back(addNode(entry, instance, number));
    }
    return offered;
  }

  int addNode(const EntryRecipe& entry, const Instance& instance, int number) {
    Node node;
    node.kind = entry.kind;
    node.name = entry.name;
    node.entry = number;
    if (entry.kind == EntryRecipe::Kind::kActivity) {
      node.recipe = &instance.leaf->activities[at(entry.activity)];
      node.name = node.recipe->name;
      node.firstCell = instance.firstCell;
      node.activity = static_cast<int>(flat_.nodeOf.size());
      flat_.affecting.push_back(drawArcs(node.recipe->affected, instance, &Mark::affecting, node.activity));
      flat_.enabling.push_back(drawArcs(node.recipe->enabling, instance, &Mark::enabled, node.activity));
      flat_.nodeOf.push_back(static_cast<int>(flat_.nodes.size()));
    }
    for (const EntryRecipe& member : entry.members) {
      node.members.push_back(addNode(member, instance, number));
    }
    flat_.nodes.push_back(node);
    return static_cast<int>(flat_.nodes.size()) - 1;
  }

  std::vector<int> drawArcs(const std::vector<ArcEnd>& arcs, const Instance& instance, std::vector<int> Mark::*list,
                            int activity) {
    std::vector<int> cells;
    for (const ArcEnd& arc : arcs) {
      const int first = instance.firstCell + instance.leaf->cellOf(arc.variable);
      const int size = instance.leaf->variables[at(arc.variable)].size;
      for (int element = 0; element < size; ++element) {
        if (arc.element == kNone || arc.element == element) {
          addOnce(cells, first + element);
          addOnce(flat_.marks[at(flat_.markOf[at(first + element)])].*list, activity);
        }
      }
    }
    return cells;
  }

  Flat flat_;
};

// ---- Which entries a firing can touch ----

/// For each activity the entries to look at after its firing, in the order in which they are looked at.
std::vector<std::vector<int>> chainsOf(const Flat& flat, int simTest) {
  const auto entryOf = [&](int activity) { return flat.nodes[at(flat.nodeOf[at(activity)])].entry; };
  const auto markOf = [&](int cell) -> const Mark& { return flat.marks[at(flat.markOf[at(cell)])]; };
  const int activities = static_cast<int>(flat.nodeOf.size());
  std::vector<std::vector<int>> chains(at(activities));
  for (int activity = 0; activity < activities; ++activity) {
    if (simTest == 2) {
      // Forward: its own entry, then those that the changed marks enable.
      addOnce(chains[at(activity)], entryOf(activity));
      for (const int cell : flat.affecting[at(activity)]) {
        for (const int other : markOf(cell).enabled) {
          addOnce(chains[at(activity)], entryOf(other));
        }
      }
    } else {
      // Backward: whoever changes what this one reads.
      addOnce(chains[at(activity)], entryOf(activity));
      for (const int cell : flat.enabling[at(activity)]) {
        for (const int other : markOf(cell).affecting) {
          addOnce(chains[at(other)], entryOf(activity));
        }
      }
    }
  }
  if (simTest != 0) {
    for (std::vector<int>& chain : chains) {
      std::ranges::reverse(chain);  // the latest found stands first
    }
  }
  return chains;
}

// ---- The run ----

class Interpreter {
 public:
  explicit Interpreter(const ModelRecipe& model)
      : flat_(Flattening::of(model.top)), chains_(chainsOf(flat_, model.simTest)), uniforms_(model.uniforms) {
    batches_ = model.batches;
    for (const RewardRecipe& reward : model.rewards) {
      run_.stopTime = std::max(run_.stopTime, reward.stop);
    }
    ties_.assign(flat_.entries.size() + 1, 0);
  }

  PlainRun run() {
    run_.instances = flat_.instances;
    run_.initialMarks = marks();
    try {
      runBatches();
    } catch (const Fatal& fatal) {
      run_.end = PlainRun::End::kFatal;
      run_.words = fatal.words;
    } catch (const Assertion&) {
      run_.end = PlainRun::End::kAssertion;
      run_.words = "!! Assertion failed in file PreselectGroup, line ";
    } catch (const Endless&) {
      run_.end = PlainRun::End::kEndless;
    }
    run_.trajectory.drawn = uniforms_.drawn();
    return std::move(run_);
  }

 private:
  struct Event {
    double time;
    int entry;
  };

  /// The marks as an activity sees them.
  class View {
   public:
    View(Flat& flat, const Node& node) : flat_(flat), node_(node) {}
    [[nodiscard]] int get(int cell) const { return mark(cell).value; }
    void set(int cell, int value) { mark(cell).value = value; }

   private:
    [[nodiscard]] Mark& mark(int cell) const { return flat_.marks[at(flat_.markOf[at(node_.firstCell + cell)])]; }
    Flat& flat_;
    const Node& node_;
  };

  Node& node(int number) { return flat_.nodes[at(number)]; }
  Node& nodeOfEntry(int entry) { return node(flat_.entries[at(entry)]); }
  View view(const Node& node) { return {flat_, node}; }

  [[nodiscard]] std::vector<int> marks() const {
    std::vector<int> marks;
    for (const int mark : flat_.markOf) {
      marks.push_back(flat_.marks[at(mark)].value);
    }
    return marks;
  }

  double uniform() {
    if (uniforms_.drawn() > kMostDraws) {
      throw Endless();
    }
    return uniforms_.next();
  }

  // ---- What a node answers ----

  bool enabled(Node& asked) {
    if (asked.recipe != nullptr) {
      asked.answerBefore = asked.answer;
      asked.answer = asked.recipe->enabled(view(asked));
      return asked.answer;
    }
    if (isPreselect(asked) && asked.choiceIsDue) {
      select(asked);
    }
    bool any = false;
    for (const int member : asked.members) {
      any = enabled(node(member)) || any;
    }
    return any;
  }

  bool enablingHasChanged(Node& asked) {
    if (asked.recipe != nullptr) {
      enabled(asked);
      return asked.answer != asked.answerBefore;
    }
    bool any = false;
    for (const int member : asked.members) {
      any = enablingHasChanged(node(member)) || any;
    }
    return any;
  }

  /// Makes a group choose an activity. False if none is enabled.
  bool select(Node& group) {
    if (group.recipe != nullptr) {
      return enabled(group);
    }
    const double u = uniform();
    std::vector<std::pair<double, int>> rows;  // sums of the weights, and members
    int highest = 0;
    for (const int member : group.members) {
      Node& asked = node(member);
      if (!enabled(asked)) {
        continue;
      }
      const int theRank = rank(asked);
      if (rows.empty() || theRank > highest) {
        highest = theRank;
        rows = {{weight(asked), member}};
      } else if (theRank == highest) {
        rows.emplace_back(rows.back().first + weight(asked), member);
      }
    }
    const bool found = !rows.empty();
    if (found) {
      const double aim = u * rows.back().first;
      std::size_t row = 0;
      while (row + 1 < rows.size() && !(rows[row].first > aim)) {
        ++row;
      }
      Node& chosen = node(rows[row].second);
      select(chosen);
      group.chosen = chosen.recipe != nullptr ? rows[row].second : chosen.chosen;
    }
    if (isPreselect(group)) {
      group.choiceIsDue = !found;
    }
    return found;
  }

  static bool isPreselect(const Node& asked) { return asked.kind == EntryRecipe::Kind::kPreselect; }

  /// Whom a question about the timing goes to: the activity itself, the one that was chosen, or the first member's answer.
  Node& spokesman(Node& asked) {
    if (asked.recipe != nullptr) {
      return asked;
    }
    if (isPreselect(asked)) {
      if (asked.choiceIsDue) {
        select(asked);
      }
      if (asked.chosen == kNone) {
        throw Assertion();
      }
      return node(asked.chosen);
    }
    return spokesman(node(asked.members.front()));
  }

  int rank(Node& asked) {
    if (asked.kind == EntryRecipe::Kind::kPostselect) {
      return 1;
    }
    Node& speaker = spokesman(asked);
    return static_cast<int>(speaker.recipe->rank.value(view(speaker)));
  }

  double weight(Node& asked) {
    if (asked.kind == EntryRecipe::Kind::kPostselect) {
      return 1.0;
    }
    Node& speaker = isPreselect(asked) ? node(asked.chosen) : asked;
    return speaker.recipe->weight.value(view(speaker));
  }

  bool wantsWatch(Node& asked) {
    Node& speaker = spokesman(asked);
    return speaker.recipe->watch.holds(view(speaker));
  }

  bool wantsNewSample(Node& asked) {
    Node& speaker = spokesman(asked);
    return speaker.recipe->resample.holds(view(speaker));
  }

  double sample(Node& asked) {
    Node& speaker = spokesman(asked);
    requireChoice(asked);
    std::vector<double> parameters;
    for (const Amount& parameter : speaker.recipe->delay.parameters) {
      parameters.push_back(parameter.value(view(speaker)));
    }
    try {
      return plainDelay(speaker.recipe->delay.distribution, parameters, [this] { return uniform(); });
    } catch (const std::string& words) {
      throw Fatal{"FATAL ERROR: In action " + asked.name + "," + words + "\n"};
    }
  }

  /// A preselect group that is asked for a delay, itself or as a first member, must have somebody to ask.
  void requireChoice(Node& asked) {
    if (isPreselect(asked) && asked.choiceIsDue) {
      throw Assertion();
    }
    if (asked.kind == EntryRecipe::Kind::kPostselect) {
      requireChoice(node(asked.members.front()));
    }
  }

  /// The activity that fires.
  Node& fire(Node& asked) {
    Node* fired = &asked;
    if (isPreselect(asked)) {
      asked.choiceIsDue = true;
      fired = &node(asked.chosen);
    } else if (asked.recipe == nullptr) {
      select(asked);
      fired = &node(asked.chosen);
      asked.chosen = kNone;
    }
    View seen = view(*fired);
    for (const Effect& effect : fired->recipe->effects) {
      effect.apply(seen);
    }
    return *fired;
  }

  // ---- The pending events: a heap of which any two neighbours are compared afresh ----

  bool isEarlier(const Event& first, const Event& second) {
    return first.time < second.time ||
           (first.time == second.time && rank(nodeOfEntry(first.entry)) > rank(nodeOfEntry(second.entry)));
  }
  bool areEqual(const Event& first, const Event& second) {
    return first.time == second.time && rank(nodeOfEntry(first.entry)) == rank(nodeOfEntry(second.entry));
  }

  /// Position of an entry's event, or kNone.
  int positionOf(int entry) {
    const auto found = std::ranges::find(events_, entry, &Event::entry);
    return found == events_.end() ? kNone : static_cast<int>(found - events_.begin());
  }
  bool isScheduled(int entry) { return positionOf(entry) != kNone; }

  bool rise(std::size_t i) {
    bool moved = false;
    while (i > 0 && isEarlier(events_[i], events_[(i - 1) / 2])) {
      std::swap(events_[i], events_[(i - 1) / 2]);
      i = (i - 1) / 2;
      moved = true;
    }
    return moved;
  }
  void sink(std::size_t i) {
    while (2 * i + 1 < events_.size()) {
      std::size_t child = 2 * i + 1;
      if (child + 1 < events_.size() && isEarlier(events_[child + 1], events_[child])) {
        ++child;
      }
      if (!isEarlier(events_[child], events_[i])) {
        return;
      }
      std::swap(events_[i], events_[child]);
      i = child;
    }
  }
  void settle(std::size_t i) {
    if (!rise(i)) {
      sink(i);
    }
  }

  void insert(const Event& event) {
    events_.push_back(event);
    rise(events_.size() - 1);
  }
  void remove(int entry) {
    const std::size_t i = at(positionOf(entry));
    events_[i] = events_.back();
    events_.pop_back();
    if (i < events_.size()) {
      settle(i);
    }
  }

  void collectTies(std::size_t i, std::vector<int>& ties) {
    ties.push_back(static_cast<int>(i));
    for (const std::size_t child : {2 * i + 1, 2 * i + 2}) {
      if (child < events_.size() && areEqual(events_[i], events_[child])) {
        collectTies(child, ties);
      }
    }
  }

  /// The event that fires next. Requires one.
  Event choose() {
    std::vector<int> ties;
    collectTies(0, ties);
    std::ranges::copy(ties, ties_.begin());
    std::size_t chosen = 0;
    if (ties.size() > 1) {
      double sum = 0.0;
      for (const int tie : ties) {
        sum += weight(nodeOfEntry(events_[at(tie)].entry));
      }
      const double aim = uniform() * sum;
      double running = 0.0;
      while (chosen < ties.size()) {
        running += weight(nodeOfEntry(events_[at(ties[chosen])].entry));
        if (running > aim) {
          break;
        }
        ++chosen;
      }
    }
    // Without a choice, what an earlier tie has left behind the last one of this.
    const int position = ties_[chosen];
    if (at(position) >= events_.size()) {
      std::ostringstream words;
      words << "ERROR: no event can be chosen after t=" << now_
            << ": the activities that fire next tie, and none of them has a positive weight\n";
      throw Fatal{words.str()};
    }
    return events_[at(position)];
  }

  // ---- Batches and steps ----

  void runBatches() {
    std::vector<int> initiallyEnabled;
    for (int entry = 0; entry < static_cast<int>(flat_.entries.size()); ++entry) {
      if (enabled(nodeOfEntry(entry))) {
        initiallyEnabled.push_back(entry);
      }
    }
    const std::vector<Mark> initial = flat_.marks;
    for (int batch = 0; batch < batches_; ++batch) {
      runBatch(initiallyEnabled);
      run_.batchEnds.push_back(run_.trajectory.firings.size());
      flat_.marks = initial;
    }
  }

  void runBatch(const std::vector<int>& initiallyEnabled) {
    now_ = 0.0;
    events_.clear();
    watched_.clear();
    for (const int entry : initiallyEnabled) {
      enabled(nodeOfEntry(entry));
      enabled(nodeOfEntry(entry));
      schedule(entry);
    }
    while (!events_.empty()) {
      const Event next = choose();
      now_ = next.time;
      if (run_.stopTime < now_) {
        return;
      }
      step(next.entry);
    }
  }

  void step(int entry) {
    remove(entry);
    const Node& fired = fire(nodeOfEntry(entry));
    run_.trajectory.firings.push_back({fired.activity, now_, marks()});
    if (run_.trajectory.firings.size() > kMostFirings) {
      throw Endless();
    }
    lookAtWatched();
    const std::vector<int>& chain = chains_[at(fired.activity)];
    for (const int touched : chain) {
      dropIfChanged(touched);
    }
    for (const int touched : chain) {
      if (enabled(nodeOfEntry(touched)) && !isScheduled(touched)) {
        schedule(touched);
      }
    }
  }

  void schedule(int entry) {
    const double time = now_ + sample(nodeOfEntry(entry));
    if (wantsWatch(nodeOfEntry(entry))) {
      watched_.insert(watched_.begin(), entry);
    }
    insert({time, entry});
  }

  void lookAtWatched() {
    const std::vector<int> asTheyStand = watched_;
    for (const int entry : asTheyStand) {
      if (!isScheduled(entry)) {
        std::erase(watched_, entry);
      } else if (!enabled(nodeOfEntry(entry))) {
        remove(entry);
        std::erase(watched_, entry);
      } else if (wantsNewSample(nodeOfEntry(entry))) {
        const double delay = sample(nodeOfEntry(entry));
        const std::size_t i = at(positionOf(entry));
        events_[i].time = now_ + delay;
        settle(i);
        std::erase(watched_, entry);
        if (wantsWatch(nodeOfEntry(entry))) {
          watched_.insert(watched_.begin(), entry);
        }
      }
    }
  }

  void dropIfChanged(int entry) {
    if (!isScheduled(entry)) {
      return;
    }
    const bool isWatched = std::ranges::find(watched_, entry) != watched_.end();
    if (enablingHasChanged(nodeOfEntry(entry)) || (isWatched && wantsNewSample(nodeOfEntry(entry)))) {
      remove(entry);
      std::erase(watched_, entry);
    }
  }

  Flat flat_;
  std::vector<std::vector<int>> chains_;
  Uniforms uniforms_;
  int batches_ = 0;
  PlainRun run_;

  double now_ = 0.0;
  std::vector<Event> events_;
  std::vector<int> watched_;  // entries, the latest first
  std::vector<int> ties_;     // positions of the last ties, and behind them of earlier ones
};

}  // namespace

PlainRun interpret(const ModelRecipe& model) {
  return Interpreter(model).run();
}

}  // namespace fuzz
