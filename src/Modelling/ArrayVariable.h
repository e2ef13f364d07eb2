#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "BaseClasses/state/ArrayStateVariable.h"
#include "Modelling/Element.h"
#include "Modelling/Twinned.h"

namespace modelling {

/// An array of numbers, structs or arrays as a state variable: `Variable<ArrayVariable<short>> level{*this, "level", 5};`
/// and then `level[i]->Mark()`. What stands behind the size is handed to every element: for numbers their initial value.
/// T     a number type, or a class derived from StructVariable or from ArrayVariable
/// Owns  its elements, which are named by their index below the array's name.
template <typename T>
class ArrayVariable : public ArrayStateVariable<typename Element<T>::Kind> {
 public:
  using ElementKind = typename Element<T>::Kind;

  template <typename... Initial>
  ArrayVariable(const char* name, int size, Initial... initial) : ArrayVariable(name, "", size, initial...) {}

  /// Inside another holder, whose qualified name is `prefix`.
  template <typename... Initial>
  ArrayVariable(const char* name, const char* prefix, int size, Initial... initial)
      : ArrayVariable(
            [initial...](const char* element, const char* holder) {
              return std::make_unique<ElementKind>(element, holder, initial...);
            },
            name, prefix, size) {}

  using MakeElement = std::function<std::unique_ptr<ElementKind>(const char* name, const char* holder)>;

  /// With elements of any making.
  ArrayVariable(MakeElement makeElement, const char* name, const char* prefix, int size)
      : ArrayStateVariable<ElementKind>(name, prefix, Element<T>::kType, size), makeElement_(std::move(makeElement)) {
    const std::string holder = this->getFullyQualifiedName();
    for (int i = 0; i < size; ++i) {
      this->fields.push_back(makeElement_(std::to_string(i).c_str(), holder.c_str()).release());
    }
  }

  ~ArrayVariable() override {
    for (BaseStateVariableClass* const element : this->fields) {
      delete element;
    }
  }

  ArrayVariable(const ArrayVariable&) = delete;
  ArrayVariable& operator=(const ArrayVariable&) = delete;

  /// An array of the same size and initial values.
  [[nodiscard]] static std::unique_ptr<Twinned<ArrayVariable>> likeness(const ArrayVariable& array,
                                                                        const std::string& name) {
    return std::make_unique<Twinned<ArrayVariable>>(array.makeElement_, name.c_str(), "", array.getSize());
  }

 private:
  MakeElement makeElement_;
};

}  // namespace modelling
