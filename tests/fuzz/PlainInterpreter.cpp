#include "fuzz/PlainInterpreter.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <sstream>
#include <utility>

#include "fuzz/PlainDelays.h"

namespace fuzz {

namespace {

constexpr std::size_t kMostFirings = 1500;
constexpr long kMostDraws = 200000;
constexpr std::size_t kMostBatches = 500;

struct Fatal {
  std::string words;
};
struct Assertion {};
struct Endless {};

/// Where the steady-state variables cut a trajectory.
class Cuts {
 public:
  Cuts() = default;
  explicit Cuts(const std::vector<RewardRecipe>& rewards) {
    for (const RewardRecipe& reward : rewards) {
      cuts_.push_back({reward.isSteadyState(), reward.stop, reward.stop - reward.start});
    }
  }

  /// The next firing is at that time: batches that end there or before it are over.
  void reach(double time) {
    for (Cut& cut : cuts_) {
      while (cut.isMade && time >= cut.next) {
        cut.next += cut.length;
        if (++cut.finished > kMostBatches) {
          throw Endless();
        }
      }
    }
  }

  [[nodiscard]] bool allHave(std::size_t batches) const {
    return std::ranges::all_of(cuts_, [&](const Cut& cut) { return !cut.isMade || cut.finished >= batches; });
  }

  /// Batches of each variable; none of a terminating one.
  [[nodiscard]] std::vector<std::size_t> finished() const {
    std::vector<std::size_t> finished;
    for (const Cut& cut : cuts_) {
      finished.push_back(cut.finished);
    }
    return finished;
  }

 private:
  struct Cut {
    bool isMade;
    double next;  // the end of the batch that is under way or lies ahead
    double length;
    std::size_t finished = 0;
  };
  std::vector<Cut> cuts_;  // by variable
};

class Interpreter {
 public:
  explicit Interpreter(const ModelRecipe& model)
      : flat_(flattened(model.top)), chains_(chainsOf(flat_, model.simTest)), uniforms_(model.uniforms) {
    batches_ = model.batches;
    isSteadyState_ = model.isSteadyState;
    for (const RewardRecipe& reward : model.rewards) {
      if (!reward.isSteadyState()) {
        run_.stopTime = std::max(run_.stopTime, reward.stop);
      }
    }
    if (isSteadyState_) {
      cuts_ = Cuts(model.rewards);
    }
    ties_.assign(flat_.entries.size() + 1, 0);
  }

  PlainRun run() {
    run_.instances = flat_.instances;
    run_.initialMarks = marks();
    try {
      if (isSteadyState_) {
        runOn();
      } else {
        runBatches();
      }
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
    run_.finished = cuts_.finished();
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

  /// One trajectory without a return, until the slowest variable has its batches and one firing more is done.
  void runOn() {
    for (int entry = 0; entry < static_cast<int>(flat_.entries.size()); ++entry) {
      enabled(nodeOfEntry(entry));
    }
    for (int entry = 0; entry < static_cast<int>(flat_.entries.size()); ++entry) {
      if (enabled(nodeOfEntry(entry))) {
        schedule(entry);
      }
    }
    bool isLast = false;
    while (!events_.empty()) {
      const Event next = choose();
      if (isLast || next.time == std::numeric_limits<double>::infinity()) {
        break;
      }
      now_ = next.time;
      cuts_.reach(now_);
      isLast = cuts_.allHave(static_cast<std::size_t>(batches_));
      step(next.entry);
    }
    run_.batchEnds.push_back(run_.trajectory.firings.size());
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
  bool isSteadyState_ = false;
  Cuts cuts_;
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
