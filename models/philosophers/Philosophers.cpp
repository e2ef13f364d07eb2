#include <algorithm>
#include <span>

#include "Modelling/Modelling.h"

// Philosophers at a round table with a fork between any two of them, who take two forks one by one to eat and so come to
// a deadlock; E. W. Dijkstra, Hierarchical ordering of sequential processes, 1971.
namespace {

using namespace modelling;

Parameter<Short> philosophers{"philosophers"};  // at least 2
Parameter<Double> takeRate{"takeRate"};         // of taking a fork that lies there
Parameter<Double> eatRate{"eatRate"};           // of ending a meal
Parameter<Double> leftWeight{"leftWeight"};     // chance of taking the left fork first, in proportion to
Parameter<Double> rightWeight{"rightWeight"};   // that of taking the right one
Parameter<Double> horizon{"horizon"};           // a time by which all is over

class Philosopher : public AtomicModel {
 public:
  enum State : short { kStanding, kUndecided, kThinking, kWaiting, kEating };

  Variable<ArrayVariable<short>> forks{*this, "forks", philosophers, short{1}};  // 1 while it lies on the table
  Variable<Place> seated{*this, "seated"};                                       // philosophers that have found a seat
  Variable<Place> state{*this, "state", short{kStanding}};
  Variable<Place> seat{*this, "seat"};    // from 0; the fork of that number is on the left
  Variable<Place> first{*this, "first"};  // number of the fork to be taken first

 private:
  auto isIn(State wanted) {
    return [this, wanted] { return state.Mark() == wanted; };
  }

 public:
  Philosopher() : AtomicModel("philosopher") {
    // All take their seats before anyone thinks of a fork.
    activity("sit").enabledBy({state}, isIn(kStanding)).instantaneous().rank(2).fires({state, seat, seated}, [this] {
      seat.Mark() = seated.Mark()++;
      state.Mark() = kUndecided;
    });
    decide("preferLeft", leftWeight, [this] { return leftFork(); });
    decide("preferRight", rightWeight, [this] { return rightFork(); });
    take("takeFirst", kThinking, kWaiting, [this] { return first.Mark(); });
    take("takeSecond", kWaiting, kEating, [this] { return leftFork() + rightFork() - first.Mark(); });
    activity("put").enabledBy({state}, isIn(kEating)).exponential(eatRate).fires({state, forks}, [this] {
      forks[leftFork()]->Mark() = 1;
      forks[rightFork()]->Mark() = 1;
      state.Mark() = kUndecided;
    });
  }

 private:
  int leftFork() { return seat.Mark(); }
  int rightFork() { return (seat.Mark() + 1) % philosophers; }

  /// Which fork is to be the first of the next meal: `fork`, with a chance in proportion to `weight`.
  template <typename Fork>
  void decide(const char* name, double weight, Fork fork) {
    activity(name)
        .enabledBy({state}, [this, weight] { return state.Mark() == kUndecided && weight > 0.0; })
        .instantaneous()
        .rank(1)
        .weight(weight)
        .fires({state, first}, [this, fork] {
          first.Mark() = static_cast<short>(fork());
          state.Mark() = kThinking;
        });
  }

  /// Which fork it is depends on the marking, so that the arcs lead to all of them.
  template <typename Fork>
  void take(const char* name, State from, State to, Fork fork) {
    activity(name)
        .enabledBy({state, seat, first, forks},
                   [this, from, fork] { return state.Mark() == from && forks[fork()]->Mark() > 0; })
        .exponential(takeRate)
        .fires({state, forks}, [this, to, fork] {
          forks[fork()]->Mark() = 0;
          state.Mark() = to;
        });
  }
};

/// Each holds a fork and waits for the other one.
bool isDeadlock(std::span<Philosopher* const> all) {
  return std::ranges::all_of(all, [](Philosopher* one) { return one->state.Mark() == Philosopher::kWaiting; });
}

void measure(RewardModel& rewards) {
  rewards.model(replicate("table", philosophers, child<Philosopher>("philosopher"), {"forks", "seated"}));

  rewards.instantOfTime("deadlock", {5.0, 10.0}).rateOfAll<Philosopher>("philosopher", isDeadlock);
  rewards.intervalOfTime("time to deadlock", 0.0, horizon)
      .rateOfAll<Philosopher>("philosopher", [](std::span<Philosopher* const> all) { return !isDeadlock(all); });
  rewards.intervalOfTime("meals", 0.0, horizon).impulse("put", "philosopher");
  rewards.timeAveraged("meals per time unit", 0.0, 5.0).impulse("put", "philosopher");
  // The choices made at time 0.
  rewards.instantOfTime("left at first", 0.0).impulse("preferLeft", "philosopher");
}

const StudyEntry study{"philosophers",
                       Experiments(philosophers, takeRate, eatRate, leftWeight, rightWeight, horizon)
                           .row(4, 1.0, 1.0, 1.0, 0.0, 200.0)   // all take the left fork first
                           .row(3, 1.0, 1.0, 3.0, 1.0, 200.0)   // three times of four the left one
                           .row(5, 1.0, 2.0, 1.0, 0.0, 200.0),  // five quick eaters
                       measure};

}  // namespace
