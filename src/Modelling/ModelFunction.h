#pragma once

#include <tuple>
#include <type_traits>

namespace modelling {

/// The models that a function takes: for `[](Machine& machine, Crew& crew) { ... }` the types Machine and Crew, and the
/// same for a plain function of these parameters.
template <typename Function>
struct ModelFunction : ModelFunction<decltype(&Function::operator())> {};

template <typename Class, typename Result, typename... Models>
struct ModelFunction<Result (Class::*)(Models...) const> {
  using Types = std::tuple<std::remove_cvref_t<Models>...>;
};

template <typename Class, typename Result, typename... Models>
struct ModelFunction<Result (Class::*)(Models...)> {
  using Types = std::tuple<std::remove_cvref_t<Models>...>;
};

template <typename Result, typename... Models>
struct ModelFunction<Result (*)(Models...)> {
  using Types = std::tuple<std::remove_cvref_t<Models>...>;
};

}  // namespace modelling
