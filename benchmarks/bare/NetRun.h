#pragma once

#include <cstddef>
#include <cstdint>

#include "bare/Net.h"
#include "bare/SlotHeap.h"
#include "bare/UniformStream.h"

namespace bare {

/// A run of a net from time 0 on, with its reward taken up to each firing.
/// Borrows  the net, whose marks it moves, and the stream. The tables are read through pointers of its own, which the
///          compiler keeps in registers: the vectors themselves it would look up again after each store.
class NetRun {
 public:
  NetRun(Net& net, UniformStream& stream)
      : pending_(net.transitionCount()),
        stream_(stream),
        marks_(net.marks.data()),
        weights_(net.weights.data()),
        transitions_(net.transitions.data()),
        arcs_(net.arcs.data()),
        conditions_(net.conditions.data()),
        affected_(net.affected.data()) {
    for (std::size_t place = 0; place < net.marks.size(); ++place) {
      reward_ += net.marks[place] * net.weights[place];
    }
    for (std::uint32_t t = 0; t < net.transitionCount(); ++t) {
      if (isEnabled(t)) {
        pending_.insert(t, timeOf(transitions_[t]));
      }
    }
  }

  void fireUpTo(double stopTime) {
    while (!pending_.isEmpty() && pending_.earliestTime() <= stopTime) {
      fireEarliest();
    }
  }

  [[nodiscard]] std::uint64_t firings() const { return firings_; }
  /// Integral of the reward from 0 to `time`, which no firing so far lies behind.
  [[nodiscard]] double rewardUpTo(double time) const { return area_ + reward_ * (time - now_); }

 private:
  void fireEarliest() {
    const double time = pending_.earliestTime();
    area_ += reward_ * (time - now_);
    now_ = time;
    ++firings_;
    const std::uint32_t fired = pending_.earliest();
    const Net::Transition& transition = transitions_[fired];
    const Net::Transition& behind = transitions_[fired + 1];
    for (std::uint32_t i = transition.firstArc; i < behind.firstArc; ++i) {
      const Net::Arc arc = arcs_[i];
      marks_[arc.place] += arc.change;
      reward_ += arc.change * weights_[arc.place];
    }
    // What fired stays at the top of the heap until a transition, the same or the first to be enabled, takes its place.
    bool isOver = !isEnabled(fired);
    if (!isOver) {
      pending_.replaceEarliest(fired, timeOf(transition));
    }
    for (std::uint32_t i = transition.firstAffected + 1; i < behind.firstAffected; ++i) {
      const std::uint32_t other = affected_[i];
      const bool enabled = isEnabled(other);
      if (enabled == pending_.holds(other)) {
        continue;
      }
      if (!enabled) {
        pending_.remove(other);
      } else if (isOver) {
        pending_.replaceEarliest(other, timeOf(transitions_[other]));
        isOver = false;
      } else {
        pending_.insert(other, timeOf(transitions_[other]));
      }
    }
    if (isOver) {
      pending_.remove(fired);
    }
  }

  [[nodiscard]] bool isEnabled(std::uint32_t t) const {
    for (std::uint32_t i = transitions_[t].firstCondition; i < transitions_[t + 1].firstCondition; ++i) {
      const Net::Condition& condition = conditions_[i];
      const std::int32_t mark = marks_[condition.place];
      if (mark < condition.least || mark > condition.most) {
        return false;
      }
    }
    return true;
  }

  double timeOf(const Net::Transition& transition) { return now_ + transition.mean * stream_.exponential(); }

  SlotHeap<4> pending_;
  UniformStream& stream_;
  std::int32_t* marks_;
  const double* weights_;
  const Net::Transition* transitions_;
  const Net::Arc* arcs_;
  const Net::Condition* conditions_;
  const std::uint32_t* affected_;
  double now_ = 0.0;
  double reward_ = 0.0;  // of the present marking, a time unit
  double area_ = 0.0;    // its integral up to now_
  std::uint64_t firings_ = 0;
};

}  // namespace bare
