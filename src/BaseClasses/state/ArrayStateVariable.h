#pragma once

#include <cstddef>
#include <vector>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/state/BaseArrayStateVariable.h"

/// An array whose elements are all of the class T: an ExtendedPlace, a struct or an array class. It adds the typed
/// access that models use, and no state.
///
/// A concrete class hands the name, an empty prefix, the type and the count to this one, pushes that many new T onto
/// `fields`, named by their index in decimal with the array's name as prefix, and deletes them in its destructor.
template <typename T>
class ArrayStateVariable : public BaseArrayStateVariable {
 public:
  ArrayStateVariable() = default;
  ArrayStateVariable(const char* name, const char* prefix) : BaseArrayStateVariable(name, prefix) {}
  ArrayStateVariable(const char* name, const char* prefix, ArrayType elementType, int size)
      : BaseArrayStateVariable(name, prefix, elementType, size) {}

  /// The element at i. An index outside the array is a bug of the model: it is reported and ends the process.
  /// One comparison covers both ends, as a negative index converts to a number above any size.
  [[nodiscard]] T* Index(int i) {
    if (static_cast<std::size_t>(i) >= fields.size()) [[unlikely]] {
      failIndex(i);
    }
    return static_cast<T*>(fields[static_cast<std::size_t>(i)]);
  }

  /// The same access under its other names.
  [[nodiscard]] T* operator[](int i) { return Index(i); }
  [[nodiscard]] T* index(int i) { return Index(i); }

  /// The first element, or null in an array that has none.
  [[nodiscard]] T* getMark() { return fields.empty() ? nullptr : Index(0); }

  /// Gives every element the value of `source`, a variable of the elements' kind; it may be one of them.
  void setMark(T* source) {
    support::requireRuntime(source != nullptr, "source");
    if (fields.empty()) {
      return;
    }
    support::requireRuntime(source->StateSize() == fields.front()->StateSize(),
                            "source->StateSize() == fields.front()->StateSize()");
    std::vector<std::byte> image(static_cast<std::size_t>(source->StateSize()));
    source->CurrentState(image.data());
    for (BaseStateVariableClass* const element : fields) {
      element->SetState(image.data());
    }
  }
};
