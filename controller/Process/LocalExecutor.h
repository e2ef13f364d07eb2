#pragma once

#include <sys/types.h>

#include <ctime>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "Process/ChildProcess.h"
#include "Process/Executor.h"

namespace controller {

/// Simulators as children of this process. Each works in a folder of its own below the scratch folder, which is the
/// executor's own and goes with it.
class LocalExecutor : public Executor {
 public:
  /// capacity       1 or more
  /// scratchFolder  made anew; whatever a killed predecessor left in it is removed
  LocalExecutor(std::size_t capacity, std::string scratchFolder);
  ~LocalExecutor() override;

  [[nodiscard]] std::size_t capacity() const override { return capacity_; }
  [[nodiscard]] std::size_t running() const override { return children_.size() + refused_.size(); }
  void start(std::int64_t ticket, const RunRequest& request) override;
  [[nodiscard]] std::vector<Finished> wait(std::chrono::milliseconds longest) override;
  void cancel(std::int64_t ticket) override;

  /// Takes in what the children have said and looks after them, without waiting.
  [[nodiscard]] std::vector<Finished> collect();

 private:
  struct Slot {
    std::size_t place = 0;
    std::unique_ptr<ChildProcess> process;
  };
  /// An executable as it was when its digest was taken.
  struct Seen {
    std::tuple<ino_t, off_t, time_t, long> stamp;
    std::string digest;
  };

  [[nodiscard]] bool isTheOneExpected(const RunRequest& request);

  std::size_t capacity_;
  std::string scratchFolder_;
  std::set<std::size_t> freePlaces_;
  std::map<std::int64_t, Slot> children_;
  std::vector<Finished> refused_;
  std::map<std::string, Seen> seen_;
};

/// One run to its end. `scratchFolder` is made for it and removed again.
[[nodiscard]] RunOutcome runAlone(const RunRequest& request, const std::string& scratchFolder);

}  // namespace controller
