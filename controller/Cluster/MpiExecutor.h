#pragma once

#include <map>
#include <string>
#include <vector>

#include "Process/Executor.h"

namespace controller {

/// Simulators on the other processes of the cluster, for the first one.
class MpiExecutor : public Executor {
 public:
  /// size  processes in all, 2 or more; jobs: simulators that each of the others runs at a time, 1 or more
  MpiExecutor(int size, std::size_t jobs);
  ~MpiExecutor() override;

  [[nodiscard]] std::size_t capacity() const override { return jobs_ * (load_.size() - 1); }
  [[nodiscard]] std::size_t running() const override { return places_.size(); }
  void start(std::int64_t ticket, const RunRequest& request) override;
  [[nodiscard]] std::vector<Finished> wait(std::chrono::milliseconds longest) override;
  void cancel(std::int64_t ticket) override;

 private:
  std::size_t jobs_;
  std::vector<std::size_t> load_;       // runs under way on each process
  std::map<std::int64_t, int> places_;  // the process of each ticket
};

/// What a process other than the first does: starts what it is asked to, hands back what comes of it, until it is told to end.
void runMpiWorker(const std::string& scratchFolder);
/// Tells the others to end, and waits until they do.
void endMpiWorkers(int size);

}  // namespace controller
