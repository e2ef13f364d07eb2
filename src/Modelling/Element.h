#pragma once

#include <concepts>
#include <type_traits>

#include "BaseClasses/state/ArrayType.h"
#include "BaseClasses/state/BaseArrayStateVariable.h"
#include "BaseClasses/state/BaseStructStateVariable.h"
#include "BaseClasses/state/ExtendedPlace.h"

namespace modelling {

/// The state variable that stands for a value of type T inside an array or a struct: an extended place for a number,
/// the class itself for a struct or an array.
template <typename T>
struct Element {
  using Kind = T;
  static constexpr ArrayType kType = std::derived_from<T, BaseStructStateVariable> ? ArrayType_STRUCT : ArrayType_ARRAY;
};

template <typename T>
requires std::is_arithmetic_v<T>
struct Element<T> {
  using Kind = ExtendedPlace<T>;
  static constexpr ArrayType kType = std::is_same_v<T, short>    ? ArrayType_SHORT
                                     : std::is_same_v<T, int>    ? ArrayType_INT
                                     : std::is_same_v<T, double> ? ArrayType_DOUBLE
                                     : std::is_same_v<T, float>  ? ArrayType_FLOAT
                                                                 : ArrayType_CHAR;
};

}  // namespace modelling
