#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Report/StudyReport.h"

namespace support {

/// Reports of every kind, by name: empty, a single variable, many experiments with stop times, odd distributions, and names
/// that would break a document that did not escape them.
std::vector<std::pair<std::string, controller::StudyReport>> sampleReports();

/// A name with everything that means something in HTML, and with bytes that are no UTF-8.
inline constexpr const char* kHostileName = "</title></style><script>alert('x')</script> & \"quoted\" --> ]]> \x01\xFF";

}  // namespace support
