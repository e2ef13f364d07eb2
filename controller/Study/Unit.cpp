#include "Study/Unit.h"

#include "Study/UnitSeed.h"

namespace controller {

RunRequest unitRequest(const StudyIdentity& study, const Experiment& experiment, std::int64_t unit,
                       const std::string& simulator) {
  RunRequest request;
  request.program = simulator;
  request.digest = study.simulatorDigest;
  request.arguments = {
      "-t", study.isTerminating ? "1" : "0",     "-e", std::to_string(experiment.number),
      "-r", std::to_string(study.generator),     "-s", std::to_string(unitSeed(study.seed, experiment.name, unit)),
      "-N", std::to_string(study.batchesPerUnit)};
  if (!experiment.overrides.empty()) {
    request.arguments.insert(request.arguments.end(), {"-O", experiment.overrides});
  }
  return request;
}

UnitObservations unitObservations(const StudyIdentity& study, const Experiment& experiment, std::int64_t unit,
                                  std::span<const std::byte> resultFile) {
  UnitObservations observations =
      readResultFile(resultFile, {unitSeed(study.seed, experiment.name, unit), study.generator, experiment.number,
                                  study.isTerminating, study.batchesPerUnit});
  std::erase_if(observations.variables, [&](const VariableObservations& row) { return !experiment.has(row.variable); });
  return observations;
}

}  // namespace controller
