#pragma once

#include <utility>

#include "Modelling/Element.h"
#include "Modelling/StructVariable.h"

namespace modelling {

/// A field of a StructVariable, declared as a member of it. Fields stand in the struct in the order of their
/// declaration; `Mark()` is the field's value.
/// T  a number type, or a class derived from StructVariable or from ArrayVariable
template <typename T>
class Field : public Element<T>::Kind {
 public:
  /// `arguments` stand behind name and prefix in a constructor of the field's class: the initial value of a number.
  template <typename Record, typename... Arguments>
  Field(StructVariable<Record>& holder, const char* name, Arguments&&... arguments)
      : Element<T>::Kind(name, holder.getFullyQualifiedName(), std::forward<Arguments>(arguments)...) {
    holder.addField(Element<T>::kType, *this);
  }
};

}  // namespace modelling
