#include "Process/Run.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <sstream>

namespace controller {
namespace {

constexpr std::size_t kGreatestLines = 4;
constexpr std::size_t kGreatestLineLength = 200;

/// The text's last lines, each without what a terminal must not see.
std::string lastLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.empty() || line == "SIMULATOR::MAIN()-GOOD EXIT") {
      continue;
    }
    line.resize(std::min(line.size(), kGreatestLineLength));
    for (char& character : line) {
      if (static_cast<unsigned char>(character) < ' ' || static_cast<unsigned char>(character) > '~') {
        character = '?';
      }
    }
    lines.push_back(line);
    if (lines.size() > kGreatestLines) {
      lines.erase(lines.begin());
    }
  }
  return fmt::format("{}", fmt::join(lines, "\n"));
}

}  // namespace

std::string commandOf(const RunRequest& request) {
  return fmt::format("{} {}", request.program, fmt::join(request.arguments, " "));
}

std::string describe(const RunOutcome& outcome) {
  switch (outcome.end) {
    case RunEnd::Exited:
      return fmt::format("ended with status {}", outcome.number);
    case RunEnd::Killed:
      return fmt::format("was ended by signal {} ({})", outcome.number, strsignal(outcome.number));
    case RunEnd::TimedOut:
      return fmt::format("did not end within {:.0f} seconds and was ended", outcome.wallSeconds);
    case RunEnd::NotStarted:
      return fmt::format("cannot be started: {}", std::strerror(outcome.number));
    case RunEnd::Replaced:
      return "is another executable than the study began with";
  }
  return "";
}

std::string hostName() {
  std::array<char, 256> name{};
  ::gethostname(name.data(), name.size() - 1);
  return name.data();
}

std::string lastWordsClause(const RunOutcome& outcome, const std::string& ifSilent) {
  const std::string errors = lastLines(outcome.err);
  const std::string words = errors.empty() ? lastLines(outcome.out) : errors;
  return words.empty() ? ifSilent : "; its last words:\n" + words;
}

}  // namespace controller
