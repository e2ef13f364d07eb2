#include "railway/Atomic/RailwaySAN.h"

#include "BaseClasses/BaseStateVariableClass.h"

namespace support {

RailwaySAN::~RailwaySAN() {
  for (int i = 0; i < NumStateVariables; ++i) {
    delete LocalStateVariables[i];
  }
}

void RailwaySAN::takeOver(const char* name, std::span<BaseStateVariableClass*> variables,
                          std::span<Activity*> activities, std::span<BaseGroupClass*> groups) {
  initializeSANModelNow(name, static_cast<int>(variables.size()), variables.data(), 0, nullptr,
                        static_cast<int>(activities.size()), activities.data(), static_cast<int>(groups.size()),
                        groups.data());
}

void RailwaySAN::addAffectArcs(Activity& activity, std::initializer_list<BaseStateVariableClass*> variables) {
  for (BaseStateVariableClass* variable : variables) {
    AddAffectArc(variable, &activity);
  }
}

void RailwaySAN::addEnableArcs(Activity& activity, std::initializer_list<BaseStateVariableClass*> variables) {
  for (BaseStateVariableClass* variable : variables) {
    AddEnableArc(variable, &activity);
  }
}

}  // namespace support
