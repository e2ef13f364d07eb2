#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "Modelling/Arcs.h"
#include "Modelling/Twinned.h"

namespace modelling {

template <typename Parts>
class ActivityBuilder;
template <typename E, typename D, typename W, typename R, typename P, typename F>
struct Behaviour;
template <typename T>
struct Constant;
struct NoDelay;

/// An atomic model. A model of one's own derives from it, has its variables as members and says in its constructor what
/// its activities do:
///
///   class Queue : public modelling::AtomicModel {
///    public:
///     modelling::Variable<Place> q{*this, "q"};
///
///     Queue() : AtomicModel("queue") {
///       activity("arrive")
///           .enabledBy({q}, [this] { return q.Mark() < capacity; })
///           .exponential(arrivalRate)
///           .fires({q}, [this] { ++q.Mark(); });
///     }
///   };
///
/// It is complete at any time: there is no last call to forget.
///
/// Order    variables, activities and groups are numbered in the order in which they are declared, and the arcs of an
///          activity are drawn in the order in which it names them. The order is part of the behaviour: it fixes which
///          activity draws first.
/// Owns     activities, groups and what make and makeReadOnly made. A Variable is a member of the derived class, and
///          outlives no use: it is gone before this class is destroyed, which does not look at it.
class AtomicModel : public SANModel {
 public:
  explicit AtomicModel(const char* name);
  ~AtomicModel() override;

  /// Enters a variable, which some firing may change. Called by Variable; once for each.
  void addVariable(BaseStateVariableClass& variable);

 protected:
  template <typename Parts>
  friend class ActivityBuilder;

  /// Starts an activity; see ActivityBuilder.
  ActivityBuilder<Behaviour<Constant<bool>, NoDelay, Constant<double>, Constant<int>, Constant<bool>, Constant<bool>>>
  activity(const std::string& name);

  /// Makes a variable of class `Kind` from its name and further arguments, such as `make<Place>("q1", 3)`: for variables
  /// whose number is known only when the model is built.
  template <typename Kind, typename... Arguments>
  Kind& make(const std::string& name, Arguments&&... arguments) {
    Kind& variable = keep<Kind>(name, std::forward<Arguments>(arguments)...);
    addVariable(variable);
    return variable;
  }

  /// The same for a variable that no activity of this model changes, and whose value is thus no part of the state image.
  template <typename Kind, typename... Arguments>
  Kind& makeReadOnly(const std::string& name, Arguments&&... arguments) {
    Kind& variable = keep<Kind>(name, std::forward<Arguments>(arguments)...);
    addReadOnly(variable);
    return variable;
  }

  /// Takes over an activity of whatever class, schedules it, draws its arcs and calls its LinkVariables.
  Activity& add(std::unique_ptr<Activity> activity, const Arcs& enabling, const Arcs& affected);
  /// The same for an activity that a group will schedule.
  Activity& addMember(std::unique_ptr<Activity> activity, const Arcs& enabling, const Arcs& affected);

  /// Makes a group, a PreselectGroup, a PostselectGroup or one of a class of the model's, of members that are not
  /// scheduled by themselves: activities made by firesInGroup, or groups made by innerGroup.
  template <typename Group>
  Group& group(const char* name, const std::vector<BaseGroupClass*>& members) {
    Group& made = innerGroup<Group>(name, members);
    schedule(made);
    return made;
  }
  /// A group that is a member of another one.
  template <typename Group>
  Group& innerGroup(const char* name, const std::vector<BaseGroupClass*>& members) {
    auto made = std::make_unique<Group>();
    Group& reference = *made;
    reference.initialize(static_cast<int>(members.size()), name);
    adopt(reference);
    for (BaseGroupClass* const member : members) {
      reference.appendGroup(member);
    }
    groups_.push_back(std::move(made));
    return reference;
  }
  /// Makes `member` the next member of a group of this model.
  void enter(BaseGroupClass& group, BaseGroupClass& member);

 private:
  /// Makes a variable that this model owns.
  template <typename Kind, typename... Arguments>
  Kind& keep(const std::string& name, Arguments&&... arguments) {
    auto made = std::make_unique<Twinned<Kind>>(name.c_str(), std::forward<Arguments>(arguments)...);
    Kind& variable = *made;
    variables_.push_back(std::move(made));
    return variable;
  }
  void addReadOnly(BaseStateVariableClass& variable);
  void schedule(BaseGroupClass& entry);
  void adopt(BaseActionClass& action);
  /// Ends the process with a message if one of the arcs leads to null.
  void requireVariables(const char* activity, const char* kind, const Arcs& arcs);
  void publish();

  // The arrays that the base class reads. Borrowed from the model and from the three below.
  std::vector<BaseStateVariableClass*> stateVariables_;  // the read-only ones behind the others
  std::vector<BaseActionClass*> actions_;
  std::vector<BaseGroupClass*> scheduled_;

  std::vector<std::unique_ptr<BaseStateVariableClass>> variables_;
  std::vector<std::unique_ptr<Activity>> activities_;
  std::vector<std::unique_ptr<BaseGroupClass>> groups_;
};

}  // namespace modelling
