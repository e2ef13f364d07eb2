#pragma once

#include <string>

namespace CLI {
class App;
}

namespace controller {

/// A completion for bash: the commands, the options of each, and files.
[[nodiscard]] std::string bashCompletion(const CLI::App& app);

}  // namespace controller
