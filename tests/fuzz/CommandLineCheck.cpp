#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/Checks.h"
#include "fuzz/FuzzFolder.h"
#include "fuzz/QueueUnderTest.h"
#include "support/QuietOutput.h"
#include "support/SimulatorProbe.h"
#include "support/StreamCapture.h"
#include "support/TemporaryFile.h"

namespace fuzz {

namespace {

using Words = std::vector<std::string>;
using Text = std::optional<std::string>;

constexpr std::size_t kLongestWord = 128;

/// What a command line comes to.
struct Settings {
  bool isAccepted = true;
  std::int32_t batches = 0;  // N
  Text overrides;            // O
  Text ascii;                // a
  Text binary;               // b
  std::int32_t client = 0;   // c
  std::uint32_t experiment = 0;
  Text trace;                      // f
  std::int32_t traceLevel = 1;     // l
  bool textTrace = false;          // m
  std::int32_t reportSize = 1000;  // n
  std::int16_t port = 10000;       // p
  int generator = 0;               // r
  std::uint32_t seed = 31415;      // s
  std::int32_t terminating = 1;    // t
  bool waits = false;              // w
  bool xmlTrace = false;           // x
  bool operator==(const Settings&) const = default;
};

/// The settings, and what is printed on the way.
struct Outcome {
  Settings settings;
  std::string out;
  std::string err;
};

/// The number at the start of a text: blanks, a sign, digits. What no 64 bits hold is the nearest that they do; of that the
/// low 32 bits are kept.
std::int32_t numberIn(const std::string& text) {
  std::size_t i = text.find_first_not_of(" \t\n\v\f\r");
  if (i == std::string::npos) {
    return 0;
  }
  const bool isNegative = text[i] == '-';
  i += text[i] == '-' || text[i] == '+' ? 1 : 0;
  // As far below zero as the numbers go: there is one more of them there.
  constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
  std::int64_t below = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    const std::int64_t digit = text[i] - '0';
    below = below < (kLeast + digit) / 10 ? kLeast : below * 10 - digit;
  }
  if (isNegative) {
    return static_cast<std::int32_t>(below);
  }
  return static_cast<std::int32_t>(below == kLeast ? std::numeric_limits<std::int64_t>::max() : -below);
}

/// Reads a command line by the table of options.
class PlainReader {
 public:
  static Outcome read(const Words& words) {
    PlainReader reader;
    reader.readAll(words);
    return reader.outcome_;
  }

 private:
  void readAll(const Words& words) {
    if (words.empty()) {
      refuse("ERROR: No command line options specified\n");
    }
    for (std::size_t i = 0; i < words.size() && settings().isAccepted; ++i) {
      if (words[i].size() > kLongestWord) {
        return refuse(kTooLong);
      }
      if (!words[i].starts_with('-')) {
        continue;
      }
      const std::string& word = words[i];
      Text value;
      if (word.size() > 2) {
        value = word.substr(2);
      } else if (word.size() == 2 && i + 1 < words.size() && !words[i + 1].starts_with('-')) {
        ++i;
        value = words[i];
        if (value->size() > kLongestWord) {
          return refuse(kTooLong);
        }
      }
      take(word, value);
    }
    if (settings().isAccepted && asksForTrace_ && !settings().xmlTrace) {
      settings().textTrace = true;
    }
  }

  void take(const std::string& word, const Text& value) {
    const char letter = word.size() > 1 ? word[1] : '\0';
    if (letter != '\0' && std::string("NOabceflnprst").find(letter) != std::string::npos) {
      if (!value) {
        return refuse(std::string("Expect a parameter after '-") + letter + "'\n");
      }
      takeValue(letter, *value);
    } else if (letter != '\0' && std::string("mwx").find(letter) != std::string::npos) {
      if (value) {
        return refuse(std::string("Did not expect a parameter after '-") + letter + "'\n");
      }
      takeFlag(letter);
    } else {
      refuse("ERROR: Unrecognized Command Line option: " + word + "\n");
    }
  }

  void takeFlag(char letter) {
    (letter == 'm' ? settings().textTrace : letter == 'w' ? settings().waits : settings().xmlTrace) = true;
    if (letter == 'w') {
      outcome_.out += "Wait For Socket Enabled\n";
    }
  }

  void takeValue(char letter, const std::string& value) {
    const std::int32_t number = numberIn(value);
    switch (letter) {
      case 'N':
        return set(settings().batches, number, "Max Number of Batches: ");
      case 'O':
        return set(settings().overrides, value, "OverrideString is ");
      case 'a':
        return set(settings().ascii, value, "ASCIIFilename: ");
      case 'b':
        return set(settings().binary, value, "BinFilename: ");
      case 'c':
        return set(settings().client, number, "ClientID: ");
      case 'e':
        return set(settings().experiment, static_cast<std::uint32_t>(number), "Experiment: ");
      case 'f':
        asksForTrace_ = true;
        return set(settings().trace, value, "TraceFile: ");
      case 'l':
        asksForTrace_ = true;
        return set(settings().traceLevel, number, "TraceLevel: ");
      case 'n':
        if (number < 1) {
          return refuse("ERROR: Report size " + std::to_string(number) +
                        " given with '-n' is too small, must be at least 1\n");
        }
        return set(settings().reportSize, number, "ReportSize: ");
      case 'p':
        return set(settings().port, static_cast<std::int16_t>(number), "Port: ");
      case 'r':
        return takeGenerator(number);
      case 's':
        return set(settings().seed, static_cast<std::uint32_t>(number), "Random Number Seed: ");
      default:
        return set(settings().terminating, number, "Is Terminating Simulation: ");
    }
  }

  void takeGenerator(std::int32_t number) {
    constexpr const char* kNames[] = {"Lagged Fibonacci", "Tausworthe", "Mersenne Twister"};
    if (number < 0 || number > 2) {
      return refuse("");
    }
    settings().generator = number;
    outcome_.out += std::string("Random Number Generator: ") + kNames[number] + "\n";
  }

  template <typename Field, typename Value>
  void set(Field& field, const Value& value, const char* told) {
    field = value;
    std::ostringstream line;
    line << told << value << '\n';
    outcome_.out += line.str();
  }

  void refuse(const std::string& words) {
    settings().isAccepted = false;
    outcome_.err += words;
  }

  Settings& settings() { return outcome_.settings; }

  static constexpr const char* kTooLong = "ERROR: Command Line Argument Too Long, Limited to 128 Characters\n";

  Outcome outcome_;
  bool asksForTrace_ = false;
};

Text textOf(const char* text) {
  return text == nullptr ? Text() : Text(text);
}

/// The simulator's own reading, in an object that has been given nothing but `-N1` before.
Outcome readBySimulator(const Words& words) {
  Outcome outcome;
  std::unique_ptr<SimulatorProbe> simulator;
  {
    const support::QuietOutput quiet;
    simulator = std::make_unique<SimulatorProbe>(Words{"-N1"});
  }
  support::CommandLine line(words);
  {
    const support::StreamCapture out(std::cout);
    const support::StreamCapture err(std::cerr);
    outcome.settings.isAccepted = simulator->ParseCommandLineOptions(line.argc(), line.argv()) == 0;
    outcome.out = out.text();
    outcome.err = err.text();
  }
  Settings& read = outcome.settings;
  read.batches = simulator->MaxNumOfBatches;
  read.overrides = textOf(simulator->OverrideString);
  read.ascii = textOf(simulator->ASCIIFilename);
  read.binary = textOf(simulator->BinFilename);
  read.client = simulator->MyClientID;
  read.experiment = simulator->TheExperimentNumber;
  read.trace = textOf(simulator->TraceFilename);
  read.traceLevel = simulator->TraceLevel;
  read.textTrace = simulator->EnableQuorvaTrace;
  read.reportSize = simulator->ReportSize;
  read.port = simulator->SocketPort;
  read.generator = simulator->RandomNumberGenerator;
  read.seed = simulator->RandomNumberSeed;
  read.terminating = simulator->isTerminatingSimulation;
  read.waits = simulator->WaitForSocket;
  read.xmlTrace = simulator->EnableXMLTrace;
  return outcome;
}

bool isHarmlessName(const Text& name) {
  return !name || (!name->empty() && name->find('/') == std::string::npos && !name->starts_with('.'));
}

/// Whether a run may have traces: their files are left open to a process's end, which has so many descriptors.
bool mayTrace() {
  constexpr int kTracedRuns = 200;
  static int traced = 0;
  return ++traced <= kTracedRuns;
}

/// Whether a run with these settings comes to an end, soon and as a return, and stays in its folder.
bool canRun(const Settings& settings) {
  constexpr std::int32_t kLargestReport = 10000;
  const bool isEndlessSeed = settings.generator == 0 && settings.seed > 0x7fffffffU;
  return settings.isAccepted && !settings.waits && settings.experiment == 0 && !isEndlessSeed &&
         settings.reportSize <= kLargestReport && isHarmlessName(settings.ascii) && isHarmlessName(settings.binary) &&
         isHarmlessName(settings.trace);
}

void runTwoBatches(Words words) {
  words.emplace_back("-N2");
  const support::QuietOutput quiet;
  SimulatorProbe simulator(words);
  simulator.Run();
}

/// Runs two batches with the words, and looks at the end of the ASCII file.
std::string differenceOfRun(const Words& words, const Settings& settings) {
  std::string difference;
  runTwoBatches(words);
  const bool hasFileOfItsOwn = settings.ascii && settings.ascii != settings.binary &&
                               settings.ascii->find('.') == std::string::npos && settings.terminating != 0;
  if (hasFileOfItsOwn && !support::bytesOf(*settings.ascii).ends_with("#META_DATA,BATCHES=2\n")) {
    difference = "the ASCII file does not tell of two batches";
  }
  for (const auto& file : std::filesystem::directory_iterator(std::filesystem::current_path())) {
    std::filesystem::remove(file.path());
  }
  return difference;
}

Words wordsOf(Input input) {
  Words words(1);
  for (const std::uint8_t byte : input) {
    if (byte == '\n') {
      words.emplace_back();
    } else if (byte != 0) {
      words.back() += static_cast<char>(byte);
    }
  }
  if (words.back().empty()) {
    words.pop_back();
  }
  return words;
}

}  // namespace

std::string checkCommandLine(Input input) {
  static const FuzzFolder folder;
  unsetenv("SIMTEST");
  useQueue();
  const Words words = wordsOf(input);
  const Outcome expected = PlainReader::read(words);
  const Outcome found = readBySimulator(words);
  if (expected.out != found.out || expected.err != found.err) {
    return "expected \"" + expected.out + "\" and \"" + expected.err + "\", the simulator printed \"" + found.out +
           "\" and \"" + found.err + "\"";
  }
  if (!(expected.settings == found.settings)) {
    return "the simulator took other settings than the words say";
  }
  const bool traces = expected.settings.textTrace || expected.settings.xmlTrace;
  return canRun(expected.settings) && (!traces || mayTrace()) ? differenceOfRun(words, expected.settings) : "";
}

}  // namespace fuzz
