#pragma once

#include <list>

class BaseActionClass;
struct Event;

/// The engine's back pointers of one group: its slot in the event list and its place in the reactivation list. Every
/// group reaches its own through BaseActionClass::EventPointer, so that its event is found without a search.
class PAddress {
 public:
  using ReactivationPosition = std::list<BaseActionClass*>::iterator;

  PAddress() { clear(); }

  /// Neither scheduled nor watched. The position kept by setReact is left as it was and no longer means anything.
  void clear() {
    event = nullptr;
    reactIsNull = true;
  }

  /// True when the group has no place in the reactivation list.
  [[nodiscard]] bool isReactNull() const { return reactIsNull; }

  /// The group's place in the reactivation list. Meaningful only while isReactNull() is false.
  [[nodiscard]] ReactivationPosition getReact() const { return react; }

  void setReact(ReactivationPosition position) {
    react = position;
    reactIsNull = false;
  }

  void setReactNull() { reactIsNull = true; }

  Event** event = nullptr;  ///< the group's slot in the event list; null while it is not scheduled

 private:
  bool reactIsNull = true;
  ReactivationPosition react{};
};
