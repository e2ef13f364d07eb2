#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BaseClasses/ProcessId.h"
#include "Simulator/DataPacket.h"
#include "fuzz/Checks.h"
#include "fuzz/FuzzFolder.h"
#include "fuzz/QueueUnderTest.h"
#include "support/Loopback.h"
#include "support/QuietOutput.h"
#include "support/SimulatorProbe.h"

namespace fuzz {

namespace {

constexpr int kReports = 12;
constexpr std::size_t kMostBytes = 2000;  // what both ends of a connection keep without being read
constexpr std::size_t kLongestDetachText = 512;
/// So slow a run holds no report back.
constexpr double kManySeconds = 1e6;

/// The simulator as a manager can change it.
struct State {
  int control = SimulatorClass::GO;
  std::int32_t batches = 77;
  std::optional<std::string> file;
  bool isConnected = true;
  std::string answers;  // what the manager gets but for the reports
  int reports = 0;      // of which each is a message of processor time and one of data
  bool operator==(const State&) const = default;
};

std::string statusMessage(int kind, int code) {
  std::string message{'\0', '\0', '\0', '\n', static_cast<char>(kind), static_cast<char>(code)};
  const auto process = static_cast<std::uint32_t>(support::processId());
  for (int shift = 24; shift >= 0; shift -= 8) {
    message += static_cast<char>(process >> static_cast<unsigned>(shift));
  }
  return message;
}

/// What the manager says, read by the rules.
class PlainListener {
 public:
  explicit PlainListener(const std::string& said) : said_(said) {}

  /// One look for a signal, and the report that follows.
  void report(State& state) {
    if (state.isConnected && position_ < said_.size()) {
      answer(static_cast<unsigned char>(said_[position_++]), state);
    }
    state.reports += state.isConnected ? 1 : 0;
  }

 private:
  void answer(unsigned signal, State& state) {
    if (signal == 1) {
      state.answers += statusMessage(255, 1);
    } else if (signal == 2) {
      state.answers += statusMessage(254, 2);
      state.control = SimulatorClass::STOPHARD;
    } else if (signal == 3) {
      detach(state);
    }
  }

  void detach(State& state) {
    std::string text;
    while (text.size() < kLongestDetachText && !text.ends_with(";;")) {
      text += said_[position_++];
    }
    text = text.c_str();  // up to the first zero byte
    std::vector<std::string> tokens(2);
    std::size_t from = text.find_first_not_of(';');
    for (std::string& token : tokens) {
      if (from == std::string::npos) {
        break;
      }
      const std::size_t to = text.find(';', from);
      token = text.substr(from, to == std::string::npos ? to : to - from);
      from = text.find_first_not_of(';', to);
    }
    state.answers += statusMessage(255, 3);
    if (!state.file) {
      state.batches = static_cast<std::int32_t>(std::strtoll(tokens[1].c_str(), nullptr, 10));
      if (!tokens[0].empty()) {
        state.file = tokens[0];
      }
    }
    state.isConnected = false;
  }

  std::string said_;
  std::size_t position_ = 0;
};

/// A simulator behind a connection, at the far end of which the test is.
class Conversation {
 public:
  explicit Conversation(bool hasFile) {
    const support::QuietOutput quiet;
    simulator_ = std::make_unique<SimulatorProbe>(hasFile ? std::vector<std::string>{"-N77", "-b", "named"}
                                                          : std::vector<std::string>{"-N77"});
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) {
      std::abort();
    }
    manager_ = ends[0];
    auto* const connection = new QuorvaSocket(false);
    support::SocketProbe::descriptorOf(*connection) = ends[1];
    simulator_->SimMgrSocket = connection;
    simulator_->CurPacket = simulator_->CreateDataPacket(simulator_->NumPVs);
    simulator_->CurSqrPacket = simulator_->CreateDataPacket(simulator_->NumPVs);
  }
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;
  ~Conversation() {
    const support::QuietOutput quiet;
    simulator_.reset();
    close(manager_);
  }

  void say(const std::string& bytes) {
    if (send(manager_, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size())) {
      std::abort();
    }
  }

  /// Has the simulator report one observation of variable 0, and takes up what comes.
  void report() {
    {
      const support::QuietOutput quiet;
      simulator_->CurPacket->SetObs(0, 0, 1.5);
      simulator_->CurPacket->SetNumObs(0, 1);
      simulator_->CheckReportSize(kManySeconds);
    }
    char buffer[4096];
    ssize_t count = 0;
    while ((count = recv(manager_, buffer, sizeof buffer, MSG_DONTWAIT)) > 0) {
      heard_.append(buffer, static_cast<std::size_t>(count));
    }
  }

  [[nodiscard]] State state() const {
    State state;
    state.control = simulator_->SimControl;
    state.batches = simulator_->MaxNumOfBatches;
    if (simulator_->BinFilename != nullptr) {
      state.file = simulator_->BinFilename;
    }
    state.isConnected = simulator_->SimMgrSocket != nullptr;
    readMessages(state);
    return state;
  }

 private:
  /// Parts the answers from the reports, both of which must be whole.
  void readMessages(State& state) const {
    // Length 12, byte 254, client, experiment, seconds; then length 24, client, experiment, one record of one double.
    constexpr std::size_t kStatus = 10;
    constexpr std::size_t kReport = 16 + 24;
    std::size_t position = 0;
    while (position < heard_.size()) {
      const bool isReport = heard_.compare(position, 5, std::string("\0\0\0\x0c\xfe", 5)) == 0;
      const bool isStatus = heard_.compare(position, 4, std::string("\0\0\0\x0a", 4)) == 0;
      if (isReport && heard_.compare(position + 16, 4, std::string("\0\0\0\x18", 4)) == 0) {
        ++state.reports;
        position += kReport;
      } else if (isStatus) {
        state.answers += heard_.substr(position, kStatus);
        position += kStatus;
      } else {
        state.answers += "a message of no kind";
        return;
      }
    }
    state.answers += position == heard_.size() ? "" : "an unfinished message";
  }

  std::unique_ptr<SimulatorProbe> simulator_;
  int manager_ = -1;
  std::string heard_;
};

/// The bytes as a manager may send them: no file outside the folder is named, and no text is left without an end.
std::string saidIn(Input input) {
  std::string said(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(std::min(input.size(), kMostBytes)));
  for (char& character : said) {
    character = character == '/' ? '_' : character;
  }
  return said + ";;";
}

}  // namespace

std::string checkSignals(Input input) {
  static const FuzzFolder folder;
  unsetenv("SIMTEST");
  useQueue();
  const bool hasFile = !input.empty() && input.front() % 2 == 1;
  const std::string said = saidIn(input.empty() ? input : input.subspan(1));
  State expected;
  if (hasFile) {
    expected.file = "named";
  }
  std::string difference;
  {
    PlainListener listener(said);
    Conversation conversation(hasFile);
    conversation.say(said);
    for (int report = 0; report < kReports && expected.control == SimulatorClass::GO && difference.empty(); ++report) {
      listener.report(expected);
      conversation.report();
      if (!(conversation.state() == expected)) {
        difference = "the simulator is in another state behind report " + std::to_string(report);
      }
    }
  }
  for (const auto& file : std::filesystem::directory_iterator(std::filesystem::current_path())) {
    std::filesystem::remove(file.path());
  }
  return difference;
}

}  // namespace fuzz
