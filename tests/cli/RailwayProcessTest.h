#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/ProcessRunner.h"

namespace support {

/// What the railway prints on standard error for a command line that it does not accept, behind a message that tells
/// the fault, if the fault has one.
extern const std::string kUsageAndParseError;

/// Standard output of a run that ends well.
/// options        the lines that reading the command line printed
/// actions        actions fired over the whole run
/// setUp          lines printed between reading the command line and building the connectivity list
/// connectivity   the line that names the builder of the connectivity list
std::string goodOutput(const std::string& options, int actions, const std::string& setUp = "",
                       const std::string& connectivity = "GenerateConnectivityList()\n");

/// Standard error of a run that ends well and had nothing to report.
extern const std::string kGoodError;

/// Tests that run the railway as a process, in an empty folder of their own.
class RailwayProcessTest : public ::testing::Test {
 protected:
  using Environment = std::map<std::string, std::optional<std::string>>;

  RailwayProcessTest();
  ~RailwayProcessTest() override;

  RailwayProcessTest(const RailwayProcessTest&) = delete;
  RailwayProcessTest& operator=(const RailwayProcessTest&) = delete;

  /// Runs the railway. SIMTEST is unset unless the environment sets it. The two lines on standard output that tell
  /// processor time are checked to hold a number, which is then replaced by "<time>".
  [[nodiscard]] ProcessResult railway(const std::vector<std::string>& arguments, Environment environment = {}) const;

  /// Checks that the railway refuses the arguments with exactly that standard output and message, usage and status 1.
  void expectRefusal(const std::vector<std::string>& arguments, const std::string& out,
                     const std::string& message) const;

  /// Checks that the run ended by itself with status 0, and its output.
  static void expectGoodRun(const ProcessResult& run, const std::string& out, const std::string& err = kGoodError);

  /// The path of a file in the test's folder.
  [[nodiscard]] std::filesystem::path path(const std::string& file) const { return folder_ / file; }

  /// The bytes of a file in the test's folder; a failure of the test if there is none.
  [[nodiscard]] std::string contents(const std::string& file) const;

 private:
  std::filesystem::path folder_;
};

}  // namespace support
