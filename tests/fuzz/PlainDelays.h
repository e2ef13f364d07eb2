#pragma once

#include <functional>
#include <vector>

namespace fuzz {

/// A delay of distribution `number`, drawn by the textbook or the system's own recipe, one uniform number at a time.
/// Failure  parameters that are refused throw a std::string, the words behind "INVALID_DIST_PARAMS:".
double plainDelay(int number, const std::vector<double>& parameters, const std::function<double()>& uniform);

}  // namespace fuzz
