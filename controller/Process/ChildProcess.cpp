#include "Process/ChildProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

#include "Process/SignalPipe.h"

namespace controller {
namespace {

constexpr std::size_t kKeptHead = 8 * 1024;
constexpr std::size_t kKeptTail = 16 * 1024;

// Within the simulator's limit of 128 characters for a word.
constexpr const char* kResultFile = "unit.bin";
constexpr const char* kTraceBase = "trace";
constexpr const char* kTraceFile = "trace.txt";

std::array<int, 2> makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  return ends;
}

void closeAt(int& descriptor) {
  if (descriptor >= 0) {
    ::close(descriptor);
    descriptor = -1;
  }
}

/// Reads what there is; closes the descriptor at its end.
void readFrom(int& descriptor, KeptText& text) {
  std::array<char, 16384> bytes{};
  // A simulator that never stops printing must not keep us here.
  for (int piece = 0; descriptor >= 0 && piece < 64; ++piece) {
    const ssize_t count = ::read(descriptor, bytes.data(), bytes.size());
    if (count > 0) {
      text.add(bytes.data(), static_cast<std::size_t>(count));
    } else if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
      return;
    } else {
      closeAt(descriptor);
    }
  }
}

std::vector<std::byte> bytesOf(const std::string& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  if (error || !file) {
    return {};
  }
  std::vector<std::byte> bytes(size);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return bytes;
}

/// The files that a run leaves.
void removeFiles(const std::string& folder) {
  std::error_code ignored;  // what is not there need not be removed
  for (const char* const file : {kResultFile, kTraceFile}) {
    std::filesystem::remove(folder + "/" + file, ignored);
  }
}

void setLimit(__rlimit_resource resource, rlim_t value) {
  struct rlimit limit {};
  if (::getrlimit(resource, &limit) == 0) {
    limit.rlim_cur = std::min(value, limit.rlim_max);
    ::setrlimit(resource, &limit);
  }
}

}  // namespace

void KeptText::add(const char* bytes, std::size_t count) {
  const std::size_t first = std::min(count, kKeptHead - head_.size());
  head_.append(bytes, first);
  tail_.append(bytes + first, count - first);
  if (tail_.size() > 2 * kKeptTail) {
    tail_.erase(0, tail_.size() - kKeptTail);
    hasGap_ = true;
  }
}

std::string KeptText::text() const {
  return hasGap_ ? head_ + "\n...\n" + tail_ : head_ + tail_;
}

ChildProcess::ChildProcess(const RunRequest& request, std::string folder)
    : folder_(std::move(folder)), wantsTrace_(request.wantsTrace), timeLimitSeconds_(request.timeLimitSeconds) {
  SignalPipe::install();
  outcome_.host = hostName();
  std::filesystem::create_directories(folder_);
  removeFiles(folder_);
  start(request);
}

ChildProcess::~ChildProcess() {
  end();
  if (pid_ > 0) {
    ::waitpid(pid_, nullptr, 0);
  }
  closeAt(outFd_);
  closeAt(errFd_);
}

void ChildProcess::start(const RunRequest& request) {
  auto out = makePipe();
  auto err = makePipe();
  auto report = makePipe();  // closed by a successful start, or else it carries the error
  const pid_t parent = ::getpid();
  pid_ = ::fork();
  if (pid_ == 0) {
    becomeSimulator(request, out[1], err[1], report[1], parent);
  }
  const int forkError = errno;
  ::close(out[1]);
  ::close(err[1]);
  ::close(report[1]);
  outFd_ = out[0];
  errFd_ = err[0];
  ::fcntl(outFd_, F_SETFL, O_NONBLOCK);
  ::fcntl(errFd_, F_SETFL, O_NONBLOCK);
  int error = pid_ < 0 ? forkError : 0;
  if (pid_ > 0 && ::read(report[0], &error, sizeof error) == sizeof error) {
    ::waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }
  ::close(report[0]);
  if (error != 0) {
    outcome_.end = RunEnd::NotStarted;
    outcome_.number = error;
  }
}

void ChildProcess::becomeSimulator(const RunRequest& request, int outFd, int errFd, int reportFd, pid_t parent) const {
  ::setpgid(0, 0);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) {
    ::_exit(127);
  }
  for (const int signal : {SIGCHLD, SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    std::signal(signal, SIG_DFL);
  }
  setLimit(RLIMIT_CORE, 0);
  setLimit(RLIMIT_FSIZE, static_cast<rlim_t>(request.greatestFileBytes));
  if (request.cpuLimitSeconds > 0) {
    setLimit(RLIMIT_CPU, static_cast<rlim_t>(request.cpuLimitSeconds));
  }
  ::unsetenv("SIMTEST");  // it would change the observations
  std::vector<std::string> words = {request.program};
  words.insert(words.end(), request.arguments.begin(), request.arguments.end());
  words.insert(words.end(), {"-b", kResultFile});
  if (request.wantsTrace) {
    words.insert(words.end(), {"-f", kTraceBase, "-m", "-l", "4"});
  }
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  const int null = ::open("/dev/null", O_RDONLY);
  if (null >= 0 && ::chdir(folder_.c_str()) == 0 && ::dup2(null, 0) >= 0 && ::dup2(outFd, 1) >= 0 &&
      ::dup2(errFd, 2) >= 0) {
    ::execv(request.program.c_str(), pointers.data());
  }
  const int error = errno;
  [[maybe_unused]] const auto written = ::write(reportFd, &error, sizeof error);
  ::_exit(127);
}

void ChildProcess::readOutputs() {
  readFrom(outFd_, out_);
  readFrom(errFd_, err_);
}

bool ChildProcess::hasEnded() {
  if (pid_ < 0) {
    return true;
  }
  if (!timedOut_ && millisecondsLeft() <= 0) {
    timedOut_ = true;
    end();
  }
  int status = 0;
  struct rusage usage {};
  const pid_t found = ::wait4(pid_, &status, WNOHANG | WUNTRACED, &usage);
  if (found != pid_) {
    return false;
  }
  if (WIFSTOPPED(status)) {
    ::kill(pid_, SIGCONT);
    return false;
  }
  ::kill(-pid_, SIGKILL);  // whatever the simulator may have started in its group
  pid_ = -1;
  const std::chrono::duration<double> wall = Clock::now() - started_;
  outcome_.wallSeconds = wall.count();
  outcome_.cpuSeconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                        static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
  const bool isExit = WIFEXITED(status);
  outcome_.end = timedOut_ ? RunEnd::TimedOut : isExit ? RunEnd::Exited : RunEnd::Killed;
  outcome_.number = isExit ? WEXITSTATUS(status) : WTERMSIG(status);
  return true;
}

int ChildProcess::millisecondsLeft() const {
  if (timeLimitSeconds_ <= 0 || pid_ < 0 || timedOut_) {
    return INT_MAX;
  }
  const std::chrono::duration<double> passed = Clock::now() - started_;
  return static_cast<int>(std::clamp((timeLimitSeconds_ - passed.count()) * 1000.0, 0.0, 1e9));
}

void ChildProcess::end() {
  if (pid_ > 0) {
    ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);  // before it has a group of its own
  }
}

RunOutcome ChildProcess::outcome() {
  readOutputs();
  outcome_.out = out_.text();
  outcome_.err = err_.text();
  if (outcome_.end == RunEnd::Exited || wantsTrace_) {
    outcome_.resultFile = bytesOf(folder_ + "/" + kResultFile);
  }
  if (wantsTrace_) {
    const auto bytes = bytesOf(folder_ + "/" + kTraceFile);
    outcome_.trace.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }
  removeFiles(folder_);
  return std::move(outcome_);
}

}  // namespace controller
