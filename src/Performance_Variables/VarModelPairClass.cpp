#include "Performance_Variables/VarModelPairClass.h"

#include "BaseClasses/OwnedText.h"

VarModelPairClass::~VarModelPairClass() {
  delete[] VarName;
  delete[] ModelName;
}

void VarModelPairClass::SetPair(const char* TheVarName, const char* TheModelName) {
  support::replaceText(VarName, TheVarName);
  support::replaceText(ModelName, TheModelName);
}
