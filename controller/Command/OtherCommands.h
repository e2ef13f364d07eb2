#pragma once

#include "Command/Options.h"

namespace controller {

/// The commands that look at a study that is there. Each gives the exit status and throws std::exception for what fails.
[[nodiscard]] int reportStudy(const ReportOptions& options);
[[nodiscard]] int exportStudy(const ExportOptions& options);
/// Status kFailed where a unit comes out otherwise than it is stored.
[[nodiscard]] int rerunUnits(const RerunOptions& options);
[[nodiscard]] int tellStatus(const StatusOptions& options);

}  // namespace controller
