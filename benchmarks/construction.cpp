// What does it take to build a model of many replicas, phase by phase? One phase a process, as each starts afresh.

#include <array>
#include <cstddef>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Performance_Variables/PVModel.h"
#include "Simulator/SimulatorClass.h"
#include "Study/BaseStudyClass.h"
#include "bare/CommandLine.h"
#include "workloads/machines/ShopModel.h"

namespace {

constexpr const char* kHelp =
    "usage: bench_construction tree|rewards|engine [--size <machines>]\n"
    "\n"
    "Builds the shop of <machines> machines (1000) up to a phase and tells what that took, from the start:\n"
    "\n"
    "  tree     the model tree: actions, places, sharing\n"
    "  rewards  the reward model too; then the state image is written once and read back once\n"
    "  engine   all that comes before the first batch: the engine's lists and its connectivity too\n";

/// The largest share of memory that the process has had, in megabytes.
double peakMegabytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") {
      double kilobytes = 0.0;
      status >> kilobytes;
      return kilobytes / 1024.0;
    }
  }
  return 0.0;
}

/// Processor time of `work`.
template <typename Work>
double secondsOf(Work work) {
  const double start = bare::processorSeconds();
  work();
  return bare::processorSeconds() - start;
}

void tell(const char* what, double value) {
  std::cout << what << '=' << value << '\n';
}

void buildTree() {
  std::unique_ptr<ShopModel> shop;
  tell("seconds", secondsOf([&] { shop = std::make_unique<ShopModel>(); }));
  tell("megabytes", peakMegabytes());
}

void buildRewards(BaseStudyClass& study) {
  PVModel* rewards = nullptr;
  tell("seconds", secondsOf([&] { rewards = study.GetPVModel(true); }));
  tell("megabytes", peakMegabytes());
  std::vector<char> image(static_cast<std::size_t>(rewards->StateSize()));
  tell("imageBytes", static_cast<double>(image.size()));
  tell("imageWriteSeconds", secondsOf([&] { rewards->CurrentState(image.data()); }));
  tell("imageReadSeconds", secondsOf([&] { rewards->SetState(image.data()); }));
}

void buildEngine(const std::string& overrides) {
  std::string program = "bench_construction";
  std::string words = "-O" + overrides;
  std::array<char*, 2> arguments{program.data(), words.data()};
  const std::ostringstream progress;
  std::streambuf* const standardOutput = std::cout.rdbuf(progress.rdbuf());
  std::unique_ptr<SimulatorClass> simulator;
  const double seconds = secondsOf(
      [&] { simulator = std::make_unique<SimulatorClass>(static_cast<int>(arguments.size()), arguments.data()); });
  std::cout.rdbuf(standardOutput);
  tell("seconds", seconds);
  tell("megabytes", peakMegabytes());
  constexpr std::string_view kConnectivity = "GenerateConnectivityList() Time=";
  const std::string text = progress.str();
  tell("connectivitySeconds", std::stod(text.substr(text.find(kConnectivity) + kConnectivity.size())));
}

}  // namespace

int main(int argc, char** argv) {
  const bare::CommandLine order(argc, argv, kHelp);
  const std::string overrides = "i:machines:" + std::to_string(static_cast<int>(order.size.value_or(1000.0)));
  BaseStudyClass& study = *GenerateStudy();
  study.SetGVs(0);
  study.overrideGVs(overrides.c_str());
  if (order.workload == "tree") {
    buildTree();
  } else if (order.workload == "rewards") {
    buildRewards(study);
  } else if (order.workload == "engine") {
    buildEngine(overrides);
  } else {
    bare::failOn("no such phase", order.workload.empty() ? "(none given)" : order.workload);
  }
  return 0;
}
