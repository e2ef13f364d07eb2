#pragma once

#include <concepts>
#include <type_traits>
#include <utility>

namespace modelling {

/// A function without parameters that always gives the same value.
template <typename T>
struct Constant {
  T value;
  T operator()() const { return value; }
};

/// What a number, a global variable or a function without parameters is in a model: a function, called whenever the
/// value is wanted. A number or a global variable is read here, once: global variables have their final values before
/// a model is built.
template <typename T, typename Value>
[[nodiscard]] auto asFunction(Value&& value) {
  if constexpr (std::invocable<std::remove_cvref_t<Value>&>) {
    return std::remove_cvref_t<Value>(std::forward<Value>(value));
  } else {
    return Constant<T>{static_cast<T>(value)};
  }
}

}  // namespace modelling
