#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <memory>
#include <string_view>

#include "BaseClasses/OwnedText.h"
#include "Simulator/ParseInt32.h"
#include "Simulator/SimulatorClass.h"

namespace {

constexpr const char* kUsage =
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
    "-w: Simulator will wait to send output until socket connection is established.\n";

constexpr std::string_view kOptionsWithValue = "NOabceflnprst";
constexpr std::string_view kOptionsWithoutValue = "mwx";

/// One word that begins with "-", and its value.
struct Option {
  char letter = '\0';           // '\0' for "-" alone
  const char* param = nullptr;  // null for none
  bool usesNextWord = false;
};

/// The value is the rest of the word or, behind an option of two characters, the next word unless that begins with "-".
Option readOption(const char* word, const char* nextWord) {
  Option option;
  option.letter = word[1];
  if (std::strlen(word) != 2) {
    option.param = option.letter == '\0' ? nullptr : word + 2;
  } else if (nextWord != nullptr && nextWord[0] != '-') {
    option.param = nextWord;
    option.usesNextWord = true;
  }
  return option;
}

/// Whether `letter` is one of `letters`. No letter, as of "-" alone, is none of them.
bool isOneOf(std::string_view letters, char letter) {
  return letters.find(letter) != std::string_view::npos;
}

template <typename Value>
void tell(const char* what, const Value& value) {
  std::cout << what << value << std::endl;
}

/// False, with the fault told on standard error, for a word that is too long.
bool hasFittingLength(const char* word) {
  if (std::strlen(word) <= static_cast<std::size_t>(SimulatorClass::MAXARGLENGTH)) {
    return true;
  }
  std::cerr << "ERROR: Command Line Argument Too Long, Limited to " << SimulatorClass::MAXARGLENGTH << " Characters\n";
  return false;
}

/// Puts a copy of `text` in the place of the latest override string. It lives to the process's end.
char* keepOverrides(const char* text) {
  static std::unique_ptr<char[]> kept;
  kept.reset(support::copyOfText(text));
  return kept.get();
}

}  // namespace

short SimulatorClass::ParseCommandLineOptions(int argc, char** argv) {
  ReportSize = DEFAULT_REPORT_SIZE;
  MaxNumOfBatches = 0;
  bool TraceFileSet = false;
  if (argc <= 1) {
    std::cerr << "ERROR: No command line options specified" << std::endl;
    return 1;
  }
  for (int i = 1; i < argc; ++i) {
    const char* const word = argv[i];
    if (!hasFittingLength(word)) {
      return 1;
    }
    if (word[0] != '-') {
      continue;
    }
    const Option option = readOption(word, i + 1 < argc ? argv[i + 1] : nullptr);
    if (option.usesNextWord) {
      if (!hasFittingLength(option.param)) {
        return 1;
      }
      ++i;
    }
    if (isOneOf(kOptionsWithValue, option.letter)) {
      if (option.param == nullptr) {
        std::cerr << "Expect a parameter after '-" << option.letter << "'\n";
        return 1;
      }
      if (!applyValue(option.letter, option.param)) {
        return 1;
      }
    } else if (isOneOf(kOptionsWithoutValue, option.letter)) {
      if (option.param != nullptr) {
        std::cerr << "Did not expect a parameter after '-" << option.letter << "'\n";
        return 1;
      }
      applyFlag(option.letter);
    } else {
      std::cerr << "ERROR: Unrecognized Command Line option: " << word << "\n";
      return 1;
    }
    TraceFileSet = TraceFileSet || option.letter == 'f' || option.letter == 'l';
  }
  if (TraceFileSet && !EnableQuorvaTrace && !EnableXMLTrace) {
    EnableQuorvaTrace = true;
  }
  return 0;
}

void SimulatorClass::applyFlag(char letter) {
  if (letter == 'm') {
    EnableQuorvaTrace = true;
  } else if (letter == 'w') {
    WaitForSocket = true;
    std::cout << "Wait For Socket Enabled" << std::endl;
  } else {
    EnableXMLTrace = true;
  }
}

bool SimulatorClass::applyValue(char letter, const char* param) {
  switch (letter) {
    case 'N':
      MaxNumOfBatches = support::parseInt32(param);
      tell("Max Number of Batches: ", MaxNumOfBatches);
      return true;
    case 'O':
      OverrideString = keepOverrides(param);
      tell("OverrideString is ", OverrideString);
      return true;
    case 'a':
      support::replaceText(ASCIIFilename, param);
      tell("ASCIIFilename: ", ASCIIFilename);
      return true;
    case 'b':
      support::replaceText(BinFilename, param);
      tell("BinFilename: ", BinFilename);
      return true;
    case 'c':
      MyClientID = support::parseInt32(param);
      tell("ClientID: ", MyClientID);
      return true;
    case 'e':
      TheExperimentNumber = static_cast<std::uint32_t>(support::parseInt32(param));
      tell("Experiment: ", TheExperimentNumber);
      return true;
    case 'f':
      support::replaceText(TraceFilename, param);
      tell("TraceFile: ", TraceFilename);
      return true;
    case 'l':
      TraceLevel = support::parseInt32(param);
      tell("TraceLevel: ", TraceLevel);
      return true;
    case 'n':
      return setReportSize(support::parseInt32(param));
    case 'p':
      SocketPort = static_cast<std::int16_t>(support::parseInt32(param));
      tell("Port: ", SocketPort);
      return true;
    case 'r':
      return setGenerator(support::parseInt32(param));
    case 's':
      RandomNumberSeed = static_cast<std::uint32_t>(support::parseInt32(param));
      tell("Random Number Seed: ", RandomNumberSeed);
      return true;
    case 't':
      isTerminatingSimulation = support::parseInt32(param);
      tell("Is Terminating Simulation: ", isTerminatingSimulation);
      return true;
    default:
      return false;
  }
}

bool SimulatorClass::setReportSize(std::int32_t size) {
  if (size < 1) {
    std::cerr << "ERROR: Report size " << size << " given with '-n' is too small, must be at least 1\n";
    return false;
  }
  ReportSize = size;
  tell("ReportSize: ", ReportSize);
  return true;
}

bool SimulatorClass::setGenerator(std::int32_t ranNumGen) {
  if (ranNumGen < LAGGED_FIBONACCI || ranNumGen >= MAX_NUM_GENERATORS) {
    return false;
  }
  RandomNumberGenerator = static_cast<RandomNumberGeneratorType>(ranNumGen);
  tell("Random Number Generator: ", to_string(RandomNumberGenerator));
  return true;
}

void SimulatorClass::PrintUsage() {
  std::cerr << kUsage << std::endl;
}
