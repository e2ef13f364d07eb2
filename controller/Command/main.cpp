#include "Cluster/Cluster.h"
#include "Command/CommandLine.h"

/// The entry of the program quorva.
int main(int argc, char** argv) {
  controller::Cluster cluster(&argc, &argv);
  return cluster.isWorker() ? cluster.work() : controller::runCommandLine(argc, argv);
}
