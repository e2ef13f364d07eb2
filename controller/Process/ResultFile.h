#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace controller {

/// The observations of one performance variable in one unit, in the order of their batches.
struct VariableObservations {
  std::int32_t variable = 0;  ///< its number in the simulator's results
  std::vector<double> values;
};

/// What one simulator has measured: its variables by ascending number, none of them without an observation.
struct UnitObservations {
  std::string simulatorVersion;  ///< as in the file's head, such as "Version 2.5"
  std::vector<VariableObservations> variables;
};

/// What a binary result file must say of itself to be taken for that of the run that was asked for.
struct ExpectedFile {
  std::uint32_t seed = 0;
  std::int32_t generator = 0;  ///< as option -r has it
  std::int32_t experiment = 0;
  bool isTerminating = true;
  std::int64_t batches = 0;  ///< 1 or more
};

/// A result file that is not what it should be. The text says what and at which byte.
class ResultFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The name of a generator in a result file, by its number on the command line: 0, 1 or 2.
[[nodiscard]] const char* generatorName(std::int32_t generator);

/// Reads a binary result file that came from outside and may hold anything.
/// Checks   the head, every length and count, and that each variable has the batches that were asked for: exactly as many in
///          a terminating run, no fewer in a steady-state run, whose other variables may be ahead of the slowest one.
/// Memory   a small multiple of the file's size, whatever the file says of itself
/// Throws   ResultFileError
[[nodiscard]] UnitObservations readResultFile(std::span<const std::byte> file, const ExpectedFile& expected);

}  // namespace controller
