#include "Cluster/Cluster.h"

#include <algorithm>
#include <thread>

#include "Process/LocalExecutor.h"

#ifdef QUORVA_HAS_MPI
#include <mpi.h>

#include <cstdlib>
#include <filesystem>

#include "Cluster/MpiExecutor.h"
#endif

namespace controller {
namespace {

std::size_t localJobs(std::size_t jobs) {
  return jobs > 0 ? jobs : std::max(1U, std::thread::hardware_concurrency());
}

}  // namespace

#ifdef QUORVA_HAS_MPI

namespace {

/// Whether something that speaks MPI has started this process. A call of MPI_Init without that costs a second, and fails where
/// there is no network.
bool isStartedByMpi() {
  for (const char* const name : {"OMPI_COMM_WORLD_SIZE", "PMIX_RANK", "PMI_RANK"}) {
    if (std::getenv(name) != nullptr) {
      return true;
    }
  }
  return false;
}

bool isInCluster = false;

}  // namespace

Cluster::Cluster(int* argc, char*** argv) {
  if (!isStartedByMpi()) {
    return;
  }
  MPI_Init(argc, argv);
  MPI_Comm_rank(MPI_COMM_WORLD, &rank_);
  MPI_Comm_size(MPI_COMM_WORLD, &size_);
  isInCluster = true;
}

Cluster::~Cluster() {
  if (!isInCluster) {
    return;
  }
  if (rank_ == 0) {
    endMpiWorkers(size_);
  }
  MPI_Finalize();
}

int Cluster::work() {
  const auto folder = std::filesystem::temp_directory_path() / ("quorva-worker-" + std::to_string(rank_) + "-XXXXXX");
  std::string name = folder.string();
  if (::mkdtemp(name.data()) == nullptr) {
    name = folder.string();
  }
  runMpiWorker(name);
  return 0;
}

bool Cluster::hasMpi() {
  return true;
}

std::unique_ptr<Executor> makeExecutor(std::size_t jobs, const std::string& scratchFolder) {
  int size = 1;
  if (isInCluster) {
    MPI_Comm_size(MPI_COMM_WORLD, &size);
  }
  if (size > 1) {
    return std::make_unique<MpiExecutor>(size, std::max<std::size_t>(jobs, 1));
  }
  return std::make_unique<LocalExecutor>(localJobs(jobs), scratchFolder);
}

#else

Cluster::Cluster(int* /*argc*/, char*** /*argv*/) {}

Cluster::~Cluster() = default;

int Cluster::work() {
  return 0;
}

bool Cluster::hasMpi() {
  return false;
}

std::unique_ptr<Executor> makeExecutor(std::size_t jobs, const std::string& scratchFolder) {
  return std::make_unique<LocalExecutor>(localJobs(jobs), scratchFolder);
}

#endif

std::string slurmScript(const std::string& commandLine, const std::string& name) {
  return "#!/bin/bash\n"
         "#SBATCH --job-name=" +
         name +
         "\n"
         "#SBATCH --output=" +
         name +
         "-%j.log\n"
         "#SBATCH --signal=B:TERM@60   # a minute ahead of the end of the time, to store what has come\n"
         "# One task decides, each of the others runs simulators: give one task more than the cores that are to work, "
         "such as\n"
         "#   sbatch --ntasks=65 --time=2:00:00 <this file>\n"
         "# The folder of the study must be one that the first node keeps; the simulator must be on every node.\n"
         "# The same file submitted again goes on where the study stopped.\n"
         "set -euo pipefail\n"
         "srun --mpi=pmix --kill-on-bad-exit=1 " +
         commandLine +
         " &\n"
         "step=$!\n"
         "trap 'kill -TERM \"$step\"' TERM\n"
         "status=0\n"
         "wait \"$step\" || status=$?\n"
         "# A wait that the signal broke off is taken up again for the step's own status.\n"
         "if kill -0 \"$step\" 2> /dev/null; then status=0; wait \"$step\" || status=$?; fi\n"
         "exit \"$status\"\n";
}

}  // namespace controller
