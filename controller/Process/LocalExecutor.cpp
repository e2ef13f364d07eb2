#include "Process/LocalExecutor.h"

#include <poll.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Process/Sha256.h"
#include "Process/SignalPipe.h"

namespace controller {
namespace {

// However a child's end might escape the signal, it is looked for this often.
constexpr std::chrono::milliseconds kLongestLook{1000};

}  // namespace

LocalExecutor::LocalExecutor(std::size_t capacity, std::string scratchFolder)
    : capacity_(capacity), scratchFolder_(std::move(scratchFolder)) {
  SignalPipe::install();
  std::filesystem::remove_all(scratchFolder_);
  std::filesystem::create_directories(scratchFolder_);
  for (std::size_t place = 0; place < capacity_; ++place) {
    freePlaces_.insert(place);
  }
}

LocalExecutor::~LocalExecutor() {
  children_.clear();
  std::error_code ignored;  // what stays behind is removed by the next one
  std::filesystem::remove_all(scratchFolder_, ignored);
}

bool LocalExecutor::isTheOneExpected(const RunRequest& request) {
  struct stat now {};
  if (request.digest.empty() || ::stat(request.program.c_str(), &now) != 0) {
    return true;  // nothing is expected, or the start itself will tell
  }
  const auto stamp = std::tuple(now.st_ino, now.st_size, now.st_mtim.tv_sec, now.st_mtim.tv_nsec);
  Seen& seen = seen_[request.program];
  if (seen.stamp != stamp || seen.digest.empty()) {
    seen = {stamp, sha256OfFile(request.program)};
  }
  return seen.digest == request.digest;
}

void LocalExecutor::start(std::int64_t ticket, const RunRequest& request) {
  if (!isTheOneExpected(request)) {
    Finished refused{ticket, {}};
    refused.outcome.end = RunEnd::Replaced;
    refused_.push_back(std::move(refused));
    return;
  }
  const std::size_t place = *freePlaces_.begin();
  auto process = std::make_unique<ChildProcess>(request, scratchFolder_ + "/" + std::to_string(place));
  freePlaces_.erase(place);
  children_[ticket] = {place, std::move(process)};
}

void LocalExecutor::cancel(std::int64_t ticket) {
  if (const auto found = children_.find(ticket); found != children_.end()) {
    freePlaces_.insert(found->second.place);
    children_.erase(found);
  }
}

std::vector<Executor::Finished> LocalExecutor::wait(std::chrono::milliseconds longest) {
  const auto deadline = std::chrono::steady_clock::now() + longest;
  while (true) {
    std::vector<Finished> finished = collect();
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (!finished.empty() || SignalPipe::stopSignal() != 0 || left.count() <= 0) {
      return finished;
    }
    std::vector<pollfd> watched = {{SignalPipe::descriptor(), POLLIN, 0}};
    int milliseconds = static_cast<int>(std::min(left, kLongestLook).count());
    for (const auto& [ticket, slot] : children_) {
      for (const int descriptor : {slot.process->outDescriptor(), slot.process->errDescriptor()}) {
        if (descriptor >= 0) {
          watched.push_back({descriptor, POLLIN, 0});
        }
      }
      milliseconds = std::min(milliseconds, slot.process->millisecondsLeft());
    }
    ::poll(watched.data(), watched.size(), std::max(milliseconds, 1));
    SignalPipe::drain();
  }
}

std::vector<Executor::Finished> LocalExecutor::collect() {
  std::vector<Finished> finished = std::exchange(refused_, {});
  const std::size_t refusals = finished.size();
  for (auto& [ticket, slot] : children_) {
    slot.process->readOutputs();
    if (slot.process->hasEnded()) {
      finished.push_back({ticket, slot.process->outcome()});
    }
  }
  for (std::size_t i = refusals; i < finished.size(); ++i) {
    cancel(finished[i].ticket);
  }
  return finished;
}

RunOutcome runAlone(const RunRequest& request, const std::string& scratchFolder) {
  LocalExecutor executor(1, scratchFolder);
  executor.start(0, request);
  while (true) {
    auto finished = executor.wait(std::chrono::milliseconds(1000));
    if (!finished.empty()) {
      return std::move(finished.front().outcome);
    }
    if (SignalPipe::stopSignal() != 0) {
      RunOutcome outcome;
      outcome.end = RunEnd::Killed;
      outcome.number = SignalPipe::stopSignal();
      return outcome;
    }
  }
}

}  // namespace controller
