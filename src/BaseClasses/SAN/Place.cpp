#include "BaseClasses/SAN/Place.h"

#include "BaseClasses/DebugLines.h"

Place::Place() {
  Register(&TheMark);
  setMark(0);
}

Place::Place(const char* name) {
  SetName(name);
  Register(&TheMark);
  setMark(0);
}

Place::Place(const char* name, short initialMark) {
  SetName(name);
  Register(&TheMark);
  setMark(initialMark);
  support::debugLine(1, "Initial Marking for ", StateVariableName, " is ", initialMark);
}
