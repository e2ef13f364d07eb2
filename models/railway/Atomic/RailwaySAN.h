#pragma once

#include <initializer_list>
#include <span>

#include "BaseClasses/SAN/SANModel.h"

namespace support {

/// What the two atomic models of the railway have alike: how they take over what they declared, add their arcs and
/// release their variables.
/// Owns     the state variables in the model's list.
class RailwaySAN : public SANModel {
 public:
  RailwaySAN(const RailwaySAN&) = delete;
  RailwaySAN& operator=(const RailwaySAN&) = delete;
  ~RailwaySAN() override;

 protected:
  RailwaySAN() = default;

  /// Hands the declared variables, activities and groups to the model, in the order given. No variable is read-only.
  void takeOver(const char* name, std::span<BaseStateVariableClass*> variables, std::span<Activity*> activities,
                std::span<BaseGroupClass*> groups);

  /// One row of an arc table: the variables in the order given.
  void addAffectArcs(Activity& activity, std::initializer_list<BaseStateVariableClass*> variables);
  void addEnableArcs(Activity& activity, std::initializer_list<BaseStateVariableClass*> variables);
};

}  // namespace support
