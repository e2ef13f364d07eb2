#include "Modelling/ModelFault.h"

#include <cstdlib>
#include <iostream>

void modelling::failModel(const std::string& text) {
  std::cerr << "ERROR: " << text << std::endl;
  std::exit(1);
}
