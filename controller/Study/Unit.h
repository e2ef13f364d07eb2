#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "Process/ResultFile.h"
#include "Process/Run.h"
#include "Study/Experiment.h"

namespace controller {

/// The run that makes a unit's observations. `simulator` is the absolute path of the study's executable, wherever that is
/// now; another one is not started.
[[nodiscard]] RunRequest unitRequest(const StudyIdentity& study, const Experiment& experiment, std::int64_t unit,
                                     const std::string& simulator);

/// The unit's observations of the experiment's variables, as far as its run's result file has them.
/// Throws ResultFileError for anything but the result file of this unit.
[[nodiscard]] UnitObservations unitObservations(const StudyIdentity& study, const Experiment& experiment,
                                                std::int64_t unit, std::span<const std::byte> resultFile);

}  // namespace controller
