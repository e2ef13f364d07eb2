#pragma once

#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "BaseClasses/BaseModelClass.h"

namespace modelling {

/// A child of a composed model before it is built: its name in the composition, and how it is made.
struct ChildModel {
  std::string name;
  std::function<std::unique_ptr<BaseModelClass>()> make;
};

/// A child of class `Model`, made from these arguments, of which copies are kept: `child<Machine>("machine")`.
template <typename Model, typename... Arguments>
[[nodiscard]] ChildModel child(std::string name, Arguments... arguments) {
  return {std::move(name), [arguments = std::make_tuple(std::move(arguments)...)]() -> std::unique_ptr<BaseModelClass> {
            return std::apply([](const auto&... each) { return std::make_unique<Model>(each...); }, arguments);
          }};
}

}  // namespace modelling
