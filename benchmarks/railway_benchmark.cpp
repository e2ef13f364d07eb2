// How many firings a second does the whole railway executable make, from start to end, and what memory does it take?

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

struct Run {
  double firings = 0.0;
  double peakMegabytes = 0.0;
};

/// Runs the railway with `arguments`; firings are 0 when it fails.
Run runRailway(std::vector<std::string> arguments) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    return {};
  }
  arguments.insert(arguments.begin(), QUORVA_RAILWAY);
  std::vector<char*> words;
  for (std::string& argument : arguments) {
    words.push_back(argument.data());
  }
  words.push_back(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    execv(words[0], words.data());
    _exit(127);
  }
  close(ends[1]);
  std::string output;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    output.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  const std::string label = "Actions fired: ";
  const auto at = output.find(label);
  if (status != 0 || at == std::string::npos) {
    return {};
  }
  return {std::stod(output.substr(at + label.size())), static_cast<double>(usage.ru_maxrss) / 1024.0};
}

void wholeRun(benchmark::State& state, const char* batches, const char* overrides) {
  double firings = 0.0;
  double peakMegabytes = 0.0;
  for (auto _ : state) {
    const Run run = runRailway({"-N", batches, "-O", overrides});
    if (run.firings == 0.0) {
      state.SkipWithError("the railway did not end well");
      break;
    }
    firings += run.firings;
    peakMegabytes = std::max(peakMegabytes, run.peakMegabytes);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(firings));
  state.counters["peakMB"] = peakMegabytes;
}
BENCHMARK_CAPTURE(wholeRun, default, "20000", "")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(wholeRun, halfLost, "20000", "d:netNotDeliveryProb:0.5")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(wholeRun, twentyTrains, "2000", "s:nTrains:20:d:netNotDeliveryProb:0.5")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
