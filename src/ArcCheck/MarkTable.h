#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ArcCheck/AccessLog.h"

class BaseModelClass;
class BaseStateVariableClass;

namespace support {

/// Where the marks of a model tree lie in memory, and what they are called. A mark is a location: variables that are one
/// through sharing have one mark, and a name for it in each of their models.
/// Built    when all sharing is done, after which no mark moves. The model is borrowed.
/// Limits   the marks of variables that are no SharableSV of the engine's value types cannot be found.
class MarkTable {
 public:
  /// A mark as one atomic or composed model knows it.
  struct Name {
    BaseModelClass* model;
    std::string variable;  ///< fully qualified, such as "trains.2.speed"
    std::string holder;    ///< of the model's variable that it belongs to, such as "trains"
  };

  explicit MarkTable(BaseModelClass& top);

  /// Where the marks are: the mark of each number.
  [[nodiscard]] std::vector<AccessLog::Range> ranges() const;

  /// The number of the mark of a leaf variable; none if it is no variable of the model tree, or is of another kind.
  [[nodiscard]] std::optional<std::size_t> markOf(BaseStateVariableClass& leaf) const;

  /// Whether a variable is of a kind whose mark can be found.
  [[nodiscard]] static bool hasMark(BaseStateVariableClass& leaf);

  /// All names of a mark, from the leaves of the model tree up.
  [[nodiscard]] const std::vector<Name>& namesOf(std::size_t mark) const { return marks_[mark].names; }

  /// The names of the models from the top down to this one, such as "join/fleet/train".
  [[nodiscard]] const std::string& pathOf(const BaseModelClass* model) const { return paths_.at(model); }

  /// In how many atomic models a variable's marks have names: 1 for a variable that is shared with nobody.
  [[nodiscard]] std::size_t countAtomicModels(BaseStateVariableClass& variable) const;

  /// Every variable whose mark could not be found, with its model.
  [[nodiscard]] const std::vector<Name>& hidden() const { return hidden_; }

 private:
  struct Mark {
    AccessLog::Range range;
    std::vector<Name> names;
  };

  void addModel(BaseModelClass& model, const std::string& above);
  void addVariable(BaseModelClass& model, BaseStateVariableClass& variable);

  std::vector<Mark> marks_;               // ascending by address
  std::map<std::uintptr_t, Mark> found_;  // the same while they are collected
  std::map<const BaseModelClass*, std::string> paths_;
  std::vector<Name> hidden_;
};

}  // namespace support
