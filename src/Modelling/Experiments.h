#pragma once

#include "Modelling/ExperimentTable.h"
#include "Modelling/Parameter.h"

namespace modelling {

/// The experiments of a study as a table with a column for each global variable and a row for each experiment:
///
///   Experiments(arrivalRate, serviceRate, capacity).row(0.8, 1.0, 10).row(0.9, 1.0, 20)
template <typename... Wrappers>
class Experiments : public ExperimentTable {
 public:
  explicit Experiments(Parameter<Wrappers>&... variables) : ExperimentTable({&variables...}) {}

  /// The next experiment, the first of which is number 0.
  Experiments& row(typename Parameter<Wrappers>::Value... values) {
    addRow({Cell(values)...});
    return *this;
  }
};

}  // namespace modelling
