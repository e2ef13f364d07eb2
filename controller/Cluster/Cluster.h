#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "Process/Executor.h"

namespace controller {

/// The processes that mpirun or srun started together, if this is one of them. The first decides; the others start
/// simulators on their own nodes and hand back what these leave. Without MPI in the build, or started alone, a process is
/// its own only one.
class Cluster {
 public:
  /// Joins the others, where there are any. One object, which lives as long as main.
  Cluster(int* argc, char*** argv);
  /// Tells the others to end, if this is the first, and leaves.
  ~Cluster();
  Cluster(const Cluster&) = delete;
  Cluster& operator=(const Cluster&) = delete;

  [[nodiscard]] bool isWorker() const { return rank_ > 0; }
  /// Runs what the first process asks for, until it ends. Gives the exit status.
  [[nodiscard]] int work();

  /// Whether MPI was found at build time.
  [[nodiscard]] static bool hasMpi();

 private:
  int rank_ = 0;
  int size_ = 1;
};

/// The executor of this process: on the other processes of the cluster, or on this machine where there are none.
/// jobs  simulators at a time, on each of the others; 0 for one on each of them, or here as many as there are processors
[[nodiscard]] std::unique_ptr<Executor> makeExecutor(std::size_t jobs, const std::string& scratchFolder);

/// A job script for Slurm that runs the command line under srun, one process for each task.
[[nodiscard]] std::string slurmScript(const std::string& commandLine, const std::string& name);

}  // namespace controller
