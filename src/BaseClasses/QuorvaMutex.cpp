#include "BaseClasses/QuorvaMutex.h"

#include <cstdio>

QuorvaMutex::QuorvaMutex() {
  ++_globalID;
  std::snprintf(_name, sizeof _name, "mutex%d", _globalID);
}
