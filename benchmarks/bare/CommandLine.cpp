#include "bare/CommandLine.h"

#include <charconv>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <system_error>

namespace bare {

namespace {

bool readNumber(std::string_view text, double& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc{} && stop == end && number > 0.0;
}

}  // namespace

CommandLine::CommandLine(int argc, char** argv, const char* help) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (word == "--help") {
      std::cout << help;
      std::exit(0);
    }
    if (!word.starts_with("--")) {
      workload = word;
      continue;
    }
    double number = 0.0;
    if (i + 1 == argc || !readNumber(argv[i + 1], number)) {
      failOn("no number above 0 behind the option", word);
    }
    ++i;
    if (word == "--size") {
      size = number;
    } else if (word == "--stop-time") {
      stopTime = number;
    } else if (word == "--replications") {
      replications = number;
    } else if (word == "--seed") {
      seed = number;
    } else {
      failOn("unknown option", word);
    }
  }
}

void failOn(std::string_view what, std::string_view which) {
  std::cerr << what << ": " << which << "\nto mend it: read what --help tells\n";
  std::exit(1);
}

double processorSeconds() {
  return static_cast<double>(std::clock()) / static_cast<double>(CLOCKS_PER_SEC);
}

}  // namespace bare
