#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Composer/Join.h"
#include "Modelling/ChildModel.h"
#include "Modelling/Shared.h"

namespace modelling {

/// Different models as one, some of whose variables are one:
///
///   join("plant", {child<Machines>("machines"), child<Crew>("crew")}, {"broken", "idle"})
///
/// Marks   of the children's initial values that of the last child with a part in the variable holds.
/// Faults  a shared name that fewer than two children have is reported, and ends the process with status 1, unless a
///         child is empty, such as a replication of none; so is a part that names no child or no variable of it.
/// Order   the children are built behind this object and before the shared variables, all in the order given.
/// Owns    the children and the shared variables.
class JoinModel : public Join {
 public:
  JoinModel(const std::string& name, const std::vector<ChildModel>& children, const std::vector<Shared>& shared = {});
  ~JoinModel() override;

  JoinModel(const JoinModel&) = delete;
  JoinModel& operator=(const JoinModel&) = delete;

 private:
  void share(const Shared& shared, const std::vector<ChildModel>& children);

  std::vector<std::unique_ptr<BaseModelClass>> children_;
  std::vector<std::unique_ptr<BaseStateVariableClass>> variables_;  // destroyed before the children
};

/// A join as a child of another model, or as the top model.
[[nodiscard]] ChildModel join(const std::string& name, const std::vector<ChildModel>& children,
                              const std::vector<Shared>& shared = {});

}  // namespace modelling
