#include "support/ProcessRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <system_error>
#include <thread>

extern char** environ;  // POSIX leaves its declaration to the program

namespace support {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kReapInterval{20};  // between looks at a child that has closed its outputs and lives on

void check(int result, const char* call) {
  if (result == -1) {
    throw std::system_error(errno, std::generic_category(), call);
  }
}

/// The spawn calls give the error as their result.
void checkSpawn(int error, const char* call) {
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), call);
  }
}

class FileActions {
 public:
  FileActions() { checkSpawn(posix_spawn_file_actions_init(&actions_), "posix_spawn_file_actions_init"); }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  void redirect(int from, int to) {
    checkSpawn(posix_spawn_file_actions_adddup2(&actions_, from, to), "posix_spawn_file_actions_adddup2");
  }
  void enter(const std::string& folder) {
    checkSpawn(posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str()), "posix_spawn_file_actions_addchdir_np");
  }
  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

void closeFd(int& fd) {
  if (fd != -1) {
    close(fd);
    fd = -1;
  }
}

void makeNonBlocking(int fd) {
  check(fcntl(fd, F_SETFL, O_NONBLOCK), "fcntl");
}

std::vector<std::string> mergedEnvironment(const std::map<std::string, std::optional<std::string>>& changes) {
  std::vector<std::string> merged;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!changes.contains(text.substr(0, text.find('=')))) {
      merged.push_back(text);
    }
  }
  for (const auto& [name, value] : changes) {
    if (value.has_value()) {
      merged.push_back(name + "=" + *value);
    }
  }
  return merged;
}

/// What exec wants: pointers to the texts, and null behind the last.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

/// Appends all that waits in `fd`, and closes it at its end.
void drain(int& fd, std::string& text) {
  std::array<char, 65536> buffer;
  while (fd != -1) {
    const ssize_t count = read(fd, buffer.data(), buffer.size());
    if (count > 0) {
      text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0) {
      closeFd(fd);
    } else if (errno == EAGAIN) {
      return;
    } else if (errno != EINTR) {
      check(-1, "read");
    }
  }
}

int millisecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
  return static_cast<int>(std::max<milliseconds::rep>(left.count(), 0));
}

}  // namespace

Process::Process(const ProcessRequest& request) : input_(request.input) {
  start(request);
}

Process::~Process() {
  if (!reaped_ && pid_ != -1) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  closeAll();
}

void Process::start(const ProcessRequest& request) {
  // A socket for the input: unlike a pipe it can be written to without a signal once the child has closed its end.
  std::array<int, 2> in{};
  std::array<int, 2> out{};
  std::array<int, 2> err{};
  check(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, in.data()), "socketpair");
  check(pipe2(out.data(), O_CLOEXEC), "pipe2");
  check(pipe2(err.data(), O_CLOEXEC), "pipe2");

  FileActions actions;
  actions.redirect(in[1], STDIN_FILENO);
  actions.redirect(out[1], STDOUT_FILENO);
  actions.redirect(err[1], STDERR_FILENO);
  if (!request.workingDirectory.empty()) {
    actions.enter(request.workingDirectory);
  }
  std::vector<std::string> words{request.program};
  words.insert(words.end(), request.arguments.begin(), request.arguments.end());
  std::vector<std::string> environment = mergedEnvironment(request.environment);
  const int error = posix_spawnp(&pid_, request.program.c_str(), actions.get(), nullptr, pointersTo(words).data(),
                                 pointersTo(environment).data());
  close(in[1]);
  close(out[1]);
  close(err[1]);
  inFd_ = in[0];
  outFd_ = out[0];
  errFd_ = err[0];
  if (error != 0) {
    pid_ = -1;
    reaped_ = true;
    result_.exitStatus = 127;
    result_.err = request.program + ": " + std::strerror(error) + "\n";
    closeAll();
    return;
  }
  for (const int fd : {inFd_, outFd_, errFd_}) {
    makeNonBlocking(fd);
  }
  writeInput();
}

void Process::closeAll() {
  closeFd(inFd_);
  closeFd(outFd_);
  closeFd(errFd_);
}

void Process::writeInput() {
  while (inFd_ != -1 && !input_.empty()) {
    const ssize_t count = send(inFd_, input_.data(), input_.size(), MSG_NOSIGNAL);
    if (count > 0) {
      input_.erase(0, static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      return;
    } else if (errno != EINTR) {
      input_.clear();  // the child reads no more
    }
  }
  closeFd(inFd_);
}

bool Process::pump(Deadline deadline) {
  if (outFd_ == -1 && errFd_ == -1) {
    return false;
  }
  std::array<pollfd, 3> waiting{pollfd{outFd_, POLLIN, 0}, pollfd{errFd_, POLLIN, 0}, pollfd{inFd_, POLLOUT, 0}};
  const int ready = poll(waiting.data(), waiting.size(), millisecondsUntil(deadline));
  if (ready == -1 && errno != EINTR) {
    check(-1, "poll");
  }
  drain(outFd_, result_.out);
  drain(errFd_, result_.err);
  writeInput();
  return ready != 0;
}

void Process::reap(Deadline deadline) {
  while (!reaped_) {
    int status = 0;
    const int pid = waitpid(pid_, &status, WNOHANG);
    if (pid == -1 && errno != EINTR) {
      check(-1, "waitpid");
    }
    if (pid == pid_) {
      reaped_ = true;
      if (WIFEXITED(status)) {
        result_.exitStatus = WEXITSTATUS(status);
      } else {
        result_.signal = WTERMSIG(status);
      }
    } else if (Clock::now() >= deadline) {
      return;
    } else if (!pump(std::min(deadline, Clock::now() + kReapInterval)) && outFd_ == -1 && errFd_ == -1) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  drain(outFd_, result_.out);
  drain(errFd_, result_.err);
}

const std::string& Process::readUntil(const std::string& text, milliseconds timeout) {
  const Deadline deadline = Clock::now() + timeout;
  while (result_.out.find(text) == std::string::npos && pump(deadline)) {
  }
  return result_.out;
}

ProcessResult Process::waitForEnd(milliseconds timeout) {
  reap(Clock::now() + timeout);
  if (!reaped_) {
    result_.timedOut = true;
    kill(pid_, SIGKILL);
    reap(Deadline::max());
  }
  return result_;
}

ProcessResult runProcess(const ProcessRequest& request) {
  return Process(request).waitForEnd(request.timeout);
}

ProcessResult runProcess(const std::string& program, const std::vector<std::string>& arguments) {
  ProcessRequest request;
  request.program = program;
  request.arguments = arguments;
  return runProcess(request);
}

}  // namespace support
