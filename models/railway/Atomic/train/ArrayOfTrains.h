#pragma once

#include <string>

#include "BaseClasses/state/ArrayStateVariable.h"
#include "BaseClasses/state/ArrayType.h"
#include "railway/Atomic/train/MessageStruct.h"
#include "railway/Study/study/GlobalVariables.h"

namespace support {

/// An array state variable with one element for each train, indexed by train identity. Element i is named by the
/// decimal text of i below the array's name. The number of trains is read at construction.
/// Element      state variable of one train: an extended place or a struct
/// Initial      what an element takes its initial value from: a number or the struct's record
/// elementType  kind of the element in the state image
/// Owns         its elements.
template <typename Element, typename Initial, ArrayType elementType>
class ArrayOfTrains : public ArrayStateVariable<Element> {
 public:
  /// All elements zero.
  explicit ArrayOfTrains(const char* name) : ArrayOfTrains(name, "") {}
  ArrayOfTrains(const char* name, const char* parent) : ArrayOfTrains(name, parent, Initial{}) {}

  /// All elements start from `init`.
  ArrayOfTrains(const char* name, const Initial& init) : ArrayOfTrains(name, "", init) {}
  ArrayOfTrains(const char* name, const char* parent, const Initial& init)
      : ArrayOfTrains(
            name, parent, [&init](int) -> const Initial& { return init; }, Build{}) {}

  /// Element i starts from `inits[i]`. Requires: one entry for each train.
  ArrayOfTrains(const char* name, const Initial* inits) : ArrayOfTrains(name, "", inits) {}
  ArrayOfTrains(const char* name, const char* parent, const Initial* inits)
      : ArrayOfTrains(
            name, parent, [inits](int train) -> const Initial& { return inits[train]; }, Build{}) {}

  ArrayOfTrains(const ArrayOfTrains&) = delete;
  ArrayOfTrains& operator=(const ArrayOfTrains&) = delete;

  ~ArrayOfTrains() override {
    for (BaseStateVariableClass* element : this->fields) {
      delete element;
    }
  }

 private:
  struct Build {};

  template <typename InitialOf>
  ArrayOfTrains(const char* name, const char* parent, InitialOf initialOf, Build /*tag*/)
      : ArrayStateVariable<Element>(name, parent, elementType, nTrains) {
    const std::string holder = qualifiedName(parent, name);
    for (int train = 0; train < nTrains; ++train) {
      this->fields.push_back(new Element(std::to_string(train).c_str(), holder.c_str(), initialOf(train)));
    }
  }
};

}  // namespace support
