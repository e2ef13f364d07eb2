#include "Performance_Variables/ImpulseNodeClass.h"

#include "BaseClasses/OwnedText.h"

ImpulseNodeClass::~ImpulseNodeClass() {
  delete[] Name;
}

void ImpulseNodeClass::Reset() {
  Impulse = 0.0;
  ImpulseSqr = 0.0;
}

void ImpulseNodeClass::DefineName(const char* TheName, int first, int second) {
  support::replaceText(Name, TheName);
  ImpulseNumber = first;
  WorkerNumber = second;
}
