#pragma once

#include <string>

namespace modelling {

/// Ends the process with status 1 and "ERROR: " and the text on standard error: the model contradicts itself, and was
/// caught while it was built.
[[noreturn]] void failModel(const std::string& text);

}  // namespace modelling
