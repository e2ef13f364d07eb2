#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Composer/Rep.h"
#include "Modelling/ChildModel.h"
#include "Modelling/Shared.h"

namespace modelling {

/// Copies of one model, of whose variables the named ones are one across all copies:
///
///   replicate("machines", numMachines, child<Machine>("machine"), {"broken"})
///
/// Marks   of a shared variable the initial value of copy 0 holds.
/// Faults  a shared name that the copies do not have is reported, and ends the process with status 1; so does a number
///         of copies below 0. With no copies the model is empty.
/// Owns    the copies and the shared variables.
class RepModel : public Rep {
 public:
  RepModel(const std::string& name, int copies, const ChildModel& child, const std::vector<Shared>& shared = {});
  ~RepModel() override;

  RepModel(const RepModel&) = delete;
  RepModel& operator=(const RepModel&) = delete;

 private:
  void shareVariables(const ChildModel& child, const std::vector<Shared>& shared);

  std::vector<std::unique_ptr<BaseModelClass>> copies_;
  std::vector<std::unique_ptr<BaseStateVariableClass>> variables_;  // destroyed before the copies
};

/// Copies of a model as a child of another model, or as the top model.
[[nodiscard]] ChildModel replicate(const std::string& name, int copies, const ChildModel& child,
                                   const std::vector<Shared>& shared = {});

}  // namespace modelling
