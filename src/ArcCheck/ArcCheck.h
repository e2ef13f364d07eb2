#pragma once

#include <cstddef>
#include <iosfwd>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "ArcCheck/AccessLog.h"
#include "ArcCheck/MarkTable.h"

class Activity;
class BaseActionClass;
class BaseModelClass;
class BaseStateVariableClass;

namespace support {

/// Compares what the activities of a model do with the arcs that it draws, and tells each arc that is missing, at its
/// first find, by model, activity and variable. The engine asks an activity again only when a variable was changed that
/// an arc says it reads, so that a missing arc makes no error but wrong results.
///
/// Watches  Enabled: every mark that it reads needs an enabling arc, and it may change none. Fire: every mark that it
///          changes needs an affecting arc; what it reads needs none. Weights, ranks, delays and the functions of
///          reactivation need no arcs: the engine asks for them where it needs them.
///          Once, before the run: arcs to what is no variable of the model tree, and shared variables of a Join without a
///          partner.
/// When     in every marking of the run all activities are asked, not only those that the engine asks: its choice rests
///          on the arcs. That leaves the run as it is: an activity keeps its last two answers.
/// Needs    model and engine compiled with QUORVA_CHECK_ARCS; a run in which no access was seen is itself a fault.
class ArcCheck {
 public:
  /// What a program of such a build ends with after faults.
  static constexpr int kFaultStatus = 3;

  /// Both are borrowed. All sharing of the model is done; its marking is the initial one.
  ArcCheck(BaseModelClass& top, std::ostream& out);

  /// Calls `fire`, watches what it changes, and asks all activities in the marking that is then. `fire` gives the
  /// activity that really fired, or null; so does this.
  template <typename Function>
  BaseActionClass* watchFiring(Function fire) {
    log_.start();
    BaseActionClass* const fired = fire();
    judgeFiring(fired, log_.stop());
    return fired;
  }

  /// Tells how much was watched, in one line, and what was wrong with the watching itself.
  void conclude();

  [[nodiscard]] int faults() const { return faults_; }

 private:
  using Marks = std::vector<std::size_t>;  // ascending

  struct Watched {
    Activity* activity;      // borrowed from the model
    Marks enabling;          // to which an arc leads, or a fault was told of
    Marks affected;          // the same
    Marks changedInEnabled;  // of which a fault was told
  };

  /// The words of a fault: what was done with a variable, what is wrong with that, and what mends it.
  struct Fault {
    const char* deed;
    const char* reproach;
  };

  void watch(Activity& activity);
  void addArc(const Activity& activity, BaseStateVariableClass& leaf, Marks& marks);
  void requirePartners(BaseModelClass& model);
  void askAll();
  void judgeFiring(const BaseActionClass* fired, std::span<const AccessLog::Access> accesses);
  void judgeQuestion(Watched& one, std::span<const AccessLog::Access> accesses);
  void judge(const Watched& one, Marks& known, std::size_t mark, const Fault& fault);
  [[nodiscard]] std::string placeOf(const Activity& activity) const;
  void tell(const std::string& fault);

  MarkTable marks_;
  AccessLog log_;
  std::ostream* out_;
  std::vector<Watched> watched_;
  std::map<const BaseActionClass*, std::size_t> indexOf_;  // into watched_
  std::set<std::string> told_;                             // copies of one model have each fault in common
  std::map<std::string, int> elementsTold_;                // by fault, with the variable in place of its elements
  long firings_ = 0;
  int faults_ = 0;
};

}  // namespace support
