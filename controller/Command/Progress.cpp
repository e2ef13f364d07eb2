#include "Command/Progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace controller {
namespace {

constexpr std::chrono::milliseconds kOnTerminal{500};
constexpr std::chrono::milliseconds kElsewhere{10'000};

std::string timeInWords(double seconds) {
  if (seconds < 120) {
    return fmt::format("{:.0f} s", seconds);
  }
  return seconds < 7200 ? fmt::format("{:.0f} min", seconds / 60) : fmt::format("{:.1f} h", seconds / 3600);
}

}  // namespace

std::string progressLine(const StudyRun& run) {
  const auto& standings = run.standings();
  std::size_t finished = 0;
  std::size_t farthest = 0;
  std::int64_t left = 0;
  bool isLeftKnown = true;
  for (std::size_t i = 0; i < standings.size(); ++i) {
    if (standings[i].verdict() != Verdict::GoOn) {
      ++finished;
      continue;
    }
    const std::int64_t more = standings[i].rule().batchesLeft();
    const bool isFirst = standings[farthest].verdict() != Verdict::GoOn;
    if (isFirst || more > standings[farthest].rule().batchesLeft()) {
      farthest = i;
    }
    isLeftKnown = isLeftKnown && more >= 0;
    left += std::max<std::int64_t>(more, 0);
  }
  std::string line =
      fmt::format("{} of {} experiments done, {} batches run", finished, standings.size(), run.batchesArrived());
  const ExperimentStanding& standing = standings[farthest];
  if (standing.verdict() != Verdict::GoOn || standing.units() == 0) {
    return line;
  }
  const std::size_t worst = standing.rule().worstVariable();
  const Estimate estimate = standing.rule().estimate(worst);
  line += fmt::format("; \"{}\", {} batches, worst: {} {:.6g} ± {:.2g}, wanted ± {:.2g}",
                      run.identity().experiments[farthest].name, standing.rule().batches(),
                      standing.rule().variableNames()[worst], estimate.mean, estimate.halfWidth,
                      standing.rule().wantedHalfWidth(worst));
  const double rate = static_cast<double>(run.batchesArrived()) / std::max(run.secondsPassed(), 1e-3);
  if (isLeftKnown && rate > 0) {
    line += fmt::format("; about {} left", timeInWords(static_cast<double>(left) / rate));
  }
  return line;
}

Progress::Progress(bool isQuiet) : isQuiet_(isQuiet), isTerminal_(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  wipe();
}

void Progress::show(const StudyRun& run) {
  const auto now = std::chrono::steady_clock::now();
  if (isQuiet_ || now - last_ < (isTerminal_ ? kOnTerminal : kElsewhere)) {
    return;
  }
  last_ = now;
  const std::string line = progressLine(run);
  if (isTerminal_) {
    wipe();
    fmt::print(stderr, "{}", line);
    std::fflush(stderr);
    shownLength_ = line.size();
  } else {
    fmt::print(stderr, "quorva: {}\n", line);
  }
}

void Progress::tellFault(const std::string& fault) {
  wipe();
  fmt::print(stderr, "quorva: {}\nquorva: it is run again\n", fault);
}

void Progress::wipe() {
  if (shownLength_ > 0) {
    fmt::print(stderr, "\r\033[2K");
    std::fflush(stderr);
    shownLength_ = 0;
  }
}

}  // namespace controller
