#pragma once

#include <type_traits>

#include "BaseClasses/state/BaseStructStateVariable.h"

/// A struct variable tied to the plain record T. It adds the exchange of whole records, and no state.
///
/// T lists the fields' values in declaration order with the fields' own types: a short for ArrayType_SHORT, an int for
/// ArrayType_INT, a char (or bool) for ArrayType_CHAR and so on, a nested record for ArrayType_STRUCT and a C array for
/// ArrayType_ARRAY. A record whose size says otherwise ends the process at the first exchange.
///
/// A concrete class hands name and prefix to this one, makes each field with the struct's qualified name as prefix,
/// pushes field(type, variable) onto `fields`, and deletes the fields in its destructor.
template <typename T>
class StructStateVariable : public BaseStructStateVariable {
 public:
  /// The present values of the fields as a record; its padding bytes are zero.
  [[nodiscard]] T getMark() {
    static_assert(std::is_trivially_copyable_v<T>, "the record must be plain data");
    T mark{};
    readRecord(&mark, sizeof mark);
    return mark;
  }

  /// Gives every field the value of its member in `mark`.
  void setMark(const T& mark) {
    static_assert(std::is_trivially_copyable_v<T>, "the record must be plain data");
    writeRecord(&mark, sizeof mark);
  }

 protected:
  StructStateVariable() = default;
  StructStateVariable(const char* name, const char* prefix) : BaseStructStateVariable(name, prefix) {}
  StructStateVariable(const char* name, const char* prefix, const ArrayType* types, int count)
      : BaseStructStateVariable(name, prefix, types, count) {}
};
