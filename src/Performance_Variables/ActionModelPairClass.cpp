#include "Performance_Variables/ActionModelPairClass.h"

#include "BaseClasses/OwnedText.h"

ActionModelPairClass::~ActionModelPairClass() {
  delete[] ActionName;
  delete[] ModelName;
}

void ActionModelPairClass::SetPair(const char* TheActionName, const char* TheModelName) {
  support::replaceText(ActionName, TheActionName);
  support::replaceText(ModelName, TheModelName);
}
