#pragma once

#include <utility>

#include "Modelling/AtomicModel.h"
#include "Modelling/Twinned.h"

namespace modelling {

/// A state variable as a member of an atomic model: `Variable<Place> q{*this, "q", 3};`. Behind the model and the name
/// stand the further arguments of `Kind`, such as the initial mark.
/// Kind  Place, ExtendedPlace<T>, ArrayVariable<Element>, or a class derived from StructVariable
template <typename Kind>
class Variable : public Twinned<Kind> {
 public:
  template <typename... Arguments>
  Variable(AtomicModel& model, const char* name, Arguments&&... arguments)
      : Twinned<Kind>(name, std::forward<Arguments>(arguments)...) {
    model.addVariable(*this);
  }
};

}  // namespace modelling
