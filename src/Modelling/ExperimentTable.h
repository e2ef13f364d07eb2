#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

#include "Modelling/GlobalVariable.h"

namespace modelling {

/// The global variables of a study and their value in each experiment, without their types; Experiments fills it.
class ExperimentTable {
 public:
  /// Room for a value of any global variable.
  class Cell {
   public:
    template <typename T>
    explicit Cell(T value) {
      static_assert(sizeof value <= sizeof(double));
      std::memcpy(bytes_.data(), &value, sizeof value);
    }
    [[nodiscard]] const void* value() const { return bytes_.data(); }

   private:
    alignas(double) std::array<std::byte, sizeof(double)> bytes_{};
  };

  [[nodiscard]] const std::vector<GlobalVariable*>& variables() const { return variables_; }
  /// By experiment, then by variable.
  [[nodiscard]] const std::vector<std::vector<Cell>>& rows() const { return rows_; }

 protected:
  explicit ExperimentTable(std::vector<GlobalVariable*> variables) : variables_(std::move(variables)) {}
  void addRow(std::vector<Cell> row) { rows_.push_back(std::move(row)); }

 private:
  std::vector<GlobalVariable*> variables_;  // borrowed: they stand at file scope
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace modelling
