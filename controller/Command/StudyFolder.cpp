#include "Command/StudyFolder.h"

#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>

namespace controller {

std::string storePath(const std::string& folder) {
  return folder + "/study.sqlite";
}

std::string lockPath(const std::string& folder) {
  return folder + "/study.lock";
}

std::string reportPath(const std::string& folder) {
  return folder + "/report.html";
}

std::string scratchPath(const std::string& folder) {
  return folder + "/scratch";
}

std::unique_ptr<StudyStore> openStudy(const std::string& folder) {
  const std::string path = storePath(folder);
  if (!std::filesystem::exists(path)) {
    throw StoreError(fmt::format("there is no study in {}: {} does not exist", folder, path));
  }
  // A reader too may have to undo what a process that was killed had begun.
  const bool mayWrite = ::access(path.c_str(), W_OK) == 0 && ::access(folder.c_str(), W_OK) == 0;
  return std::make_unique<StudyStore>(path, mayWrite ? Database::Access::Write : Database::Access::Read);
}

StudyGoal storedGoal(StudyStore& store) {
  const auto text = store.text("goal");
  if (!text) {
    throw StoreError("the study was never run: its store has no goal");
  }
  try {
    return goalFromJson(*text);
  } catch (const std::exception& error) {
    throw StoreError(fmt::format("the goal of the study cannot be read: {}", error.what()));
  }
}

ExperimentStanding standingOf(StudyStore& store, std::size_t experiment, const StudyGoal& goal) {
  return standingOf(store, experiment, goal, [](const ExperimentStanding&, const UnitObservations&) {});
}

const char* nameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::Reached:
      return "reached";
    case Verdict::CannotReach:
      return "cannot be reached";
    default:
      return "stopped short";
  }
}

}  // namespace controller
