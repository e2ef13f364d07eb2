#include <iostream>

#include "ArcCheck/ArcCheck.h"
#include "BaseClasses/MemoryLimit.h"
#include "Simulator/SimulatorClass.h"

/// The process's entry, for the executable of a model. Gives 0 after a run; a fatal condition ends the process before. A
/// build that checks arcs has a status of its own for what it found.
int main(int argc, char** argv) {
  support::limitMemoryToMachine();
  SimulatorClass simulator(argc, argv);
  std::cout << "SIMULATOR::Preparing to run()" << std::endl;
  simulator.Run();
  std::cout << "SIMULATOR::MAIN()-GOOD EXIT" << std::endl;
  std::cerr << "SIMULATOR::MAIN()-GOOD EXIT" << std::endl;
  return simulator.arcFaults() == 0 ? 0 : support::ArcCheck::kFaultStatus;
}
