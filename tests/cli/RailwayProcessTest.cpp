#include "cli/RailwayProcessTest.h"

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace support {

const std::string kUsageAndParseError =
    "Valid Options\n"
    "-a <name>: write ASCII output to file <name>\n"
    "-b <name>: write binary output to file <name>\n"
    "-c <num>: Client identification number (default=0)\n"
    "-e <num>: Experiment to run, 'Experiment 1' is num=0 (default = 0)\n"
    "-f <name>: Trace file name (default=<stdout>)\n"
    "-m: Enable Quorva trace \n"
    "-l <num>: Trace Level (1, 2,3,4 [default=1])\n"
    "-x: Enable XML trace \n"
    "-n <num>: Num observations sent in 1 update to SimMgr. (default=1000)\n"
    "-N <num>: Maximum number of batches to run (default=infinite)\n"
    "-p <num>: Communication port of network server (default=10000)\n"
    "-r <num>: Random Number Generator (0 = Lagged Fibonacci[default], 1 = Tausworthe, 2 = Mersenne Twister\n"
    "-s <num>: Random Number Seed (31415[default])\n"
    "-t <num>: Simulation Type (1 = Terminating[default] 0 = Steady State)\n"
    "-w: Simulator will wait to send output until socket connection is established.\n"
    "\n"
    "ERROR: Parsing command line options\n";

const std::string kGoodError = "SIMULATOR::MAIN()-GOOD EXIT\n";

std::string goodOutput(const std::string& options, int actions, const std::string& setUp,
                       const std::string& connectivity) {
  return options + setUp + connectivity + "GenerateConnectivityList() Time=<time>\n" +
         "SIMULATOR::Preparing to run()\n" + "Actions fired: " + std::to_string(actions) + "\n" +
         "CPU time (s): <time>\n" + "SIMULATOR::MAIN()-GOOD EXIT\n";
}

namespace {

/// Replaces the number behind `label` in each line that has nothing else behind it.
std::string withoutNumber(std::string out, const std::string& label) {
  for (std::size_t found = out.find(label); found != std::string::npos; found = out.find(label, found)) {
    found += label.size();
    char* end = nullptr;
    std::strtod(out.c_str() + found, &end);
    const auto length = static_cast<std::size_t>(end - (out.c_str() + found));
    if (length > 0 && *end == '\n') {
      out.replace(found, length, "<time>");
    }
  }
  return out;
}

/// Replaces what only a clock decides, provided that it is a number.
std::string withoutTimes(const std::string& out) {
  return withoutNumber(withoutNumber(out, "GenerateConnectivityList() Time="), "CPU time (s): ");
}

std::filesystem::path makeFolder() {
  std::string folder = (std::filesystem::temp_directory_path() / "railway-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) {
    throw std::runtime_error("mkdtemp could not make " + folder);
  }
  return folder;
}

}  // namespace

RailwayProcessTest::RailwayProcessTest() : folder_(makeFolder()) {}

RailwayProcessTest::~RailwayProcessTest() {
  std::error_code ignored;  // a folder left behind is no reason to fail
  std::filesystem::remove_all(folder_, ignored);
}

ProcessResult RailwayProcessTest::railway(const std::vector<std::string>& arguments, Environment environment) const {
  environment.try_emplace("SIMTEST", std::nullopt);
  ProcessRequest request;
  request.program = QUORVA_RAILWAY;
  request.arguments = arguments;
  request.environment = std::move(environment);
  request.workingDirectory = folder_.string();
  ProcessResult run = runProcess(request);
  EXPECT_FALSE(run.timedOut) << run.out << run.err;
  run.out = withoutTimes(run.out);
  return run;
}

void RailwayProcessTest::expectRefusal(const std::vector<std::string>& arguments, const std::string& out,
                                       const std::string& message) const {
  const ProcessResult run = railway(arguments);
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.out, out);
  EXPECT_EQ(run.err, message + kUsageAndParseError);
}

void RailwayProcessTest::expectGoodRun(const ProcessResult& run, const std::string& out, const std::string& err) {
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.out, out);
  EXPECT_EQ(run.err, err);
}

std::string RailwayProcessTest::contents(const std::string& file) const {
  std::ifstream stream(folder_ / file, std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << "the run wrote no file " << file;
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace support
