#include <iostream>

#include "LampSAN.h"

/// Gives 0 if the lamp burns out once and no more.
int main() {
  LampSAN lamp;
  const bool before = lamp.burnOut.Enabled();
  lamp.burnOut.Fire();
  const bool after = lamp.burnOut.Enabled();
  std::cout << "enabled before " << before << ", after " << after << ", mark " << lamp.alight.Mark() << '\n';
  return before && !after && lamp.alight.Mark() == 0 ? 0 : 1;
}
