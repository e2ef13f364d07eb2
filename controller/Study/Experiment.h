#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace controller {

/// One experiment of a study: an experiment of the simulator with values of its global variables laid over it.
struct Experiment {
  std::string name;                     ///< unique in the study, such as "0 nTrains=3"; seeds depend on it
  std::int32_t number = 0;              ///< option -e
  std::string overrides;                ///< option -O, empty for none
  std::vector<std::int32_t> variables;  ///< the performance variables of this kind of run, ascending

  [[nodiscard]] bool has(std::int32_t variable) const;
};

/// What a study's observations depend on: two studies that are equal here have the same units, bit for bit.
struct StudyIdentity {
  std::string simulator;         ///< the executable's name, without its folder
  std::string simulatorDigest;   ///< SHA-256 of the executable
  std::string simulatorVersion;  ///< as its result files say
  bool isTerminating = true;
  std::int32_t generator = 2;
  std::uint64_t seed = 0;
  std::int64_t batchesPerUnit = 0;
  std::vector<Experiment> experiments;
};

/// The kind of the study's runs: as option --mode has it, "terminating" or "steady", and in words for people.
[[nodiscard]] const char* modeOf(const StudyIdentity& study);
[[nodiscard]] const char* kindOf(const StudyIdentity& study);

/// Why the units of one study cannot go on in the other, or nothing where they can.
[[nodiscard]] std::string differenceOf(const StudyIdentity& stored, const StudyIdentity& wanted);

}  // namespace controller
