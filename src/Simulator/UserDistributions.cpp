#include "Simulator/UserDistributions.h"

#include "BaseClasses/DebugLines.h"
#include "Simulator/LaggedFibonacci.h"
#include "Simulator/Tausworthe.h"

UserDistributions TheGenerator;
UserDistributions* TheDistribution = &TheGenerator;

namespace {

/// Debug line at every level but 0.
void debugCreation(const char* text) {
  if (GlobalDebugLevel != 0) [[unlikely]] {
    std::cout << "** " << text << std::endl;
  }
}

}  // namespace

UserDistributions::UserDistributions() {
  support::debugLine(3, "Entering UserDistributions::UserDistributions()");
  delete RNG;
  RNG = nullptr;
  RNG = new LaggedFibonacci;
}

UserDistributions::UserDistributions(int generator, std::int32_t seed) {
  support::debugLine(3, "Entering UserDistributions(int, long)");
  delete RNG;
  RNG = nullptr;
  switch (generator) {
    case 0:
      debugCreation("Creating Lagged Fibonacci Random Number Generator");
      RNG = new LaggedFibonacci;
      break;
    case 1:
      debugCreation("Creating Tausworthe Random Number Generator");
      RNG = new Tausworthe;
      break;
    default:
      debugCreation("Creating Lagged Fibonacci Random Number Generator (by default)");
      RNG = new LaggedFibonacci;
  }
  RNG->srnd(static_cast<std::uint32_t>(seed));
}

UserDistributions::~UserDistributions() = default;
