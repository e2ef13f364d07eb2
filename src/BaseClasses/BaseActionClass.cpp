#include "BaseClasses/BaseActionClass.h"

#include <cstddef>
#include <iostream>

#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/DebugLines.h"
#include "BaseClasses/OwnedText.h"

namespace {

constexpr const char* kVariableIndent = "           ";  // eleven blanks

void printNames(List<BaseStateVariableClass>& variables) {
  for (int i = 0; i < variables.getNumItems(); ++i) {
    std::cout << kVariableIndent << variables.getItem(i)->StateVariableName << '\n';
  }
}

void printStates(List<BaseStateVariableClass>& variables, std::ostream* strm) {
  for (int i = 0; i < variables.getNumItems(); ++i) {
    variables.getItem(i)->printState(strm);
  }
}

}  // namespace

std::int32_t BaseActionClass::MaxID = 0;

BaseActionClass::BaseActionClass() : ActionName(support::copyOfText("default")), ID(MaxID) {
  ++MaxID;
}

BaseActionClass::BaseActionClass(const char* TheName, int GroupIDNum, Distribution DistType,
                                 ExecutionPolicyType ExPolicy, int ASV, int ESV, bool TheReactivation)
    : BaseActionClass() {
  BaseActionClassInitialize(TheName, GroupIDNum, DistType, ExPolicy, ASV, ESV, TheReactivation);
}

BaseActionClass::~BaseActionClass() {
  support::debugLine(3, "BaseActionClassDestructor");
  delete[] ActionName;
}

bool BaseActionClass::isSync() {
  return false;
}

bool BaseActionClass::Enabled() {
  return false;
}

double BaseActionClass::Weight() {
  return 0.0;
}

double BaseActionClass::Rate() {
  return 0.0;
}

bool BaseActionClass::ReactivationPredicate() {
  return false;
}

bool BaseActionClass::ReactivationFunction() {
  return false;
}

double BaseActionClass::SampleDistribution() {
  return 0.0;
}

double* BaseActionClass::ReturnDistributionParameters() {
  return nullptr;
}

void BaseActionClass::SetFired(int HasFired) {
  Fired = HasFired != 0;
}

BaseActionClass* BaseActionClass::Fire() {
  return nullptr;
}

int BaseActionClass::Rank() {
  return 0;
}

bool BaseActionClass::EnablingChange() {
  return false;
}

bool BaseActionClass::IsAMember(BaseActionClass* TheAction) {
  return TheAction == this;
}

double BaseActionClass::Probability(BaseActionClass* /*TheAction*/) {
  return 1.0;
}

void BaseActionClass::printAffectedState(std::ostream* strm) {
  printStates(AffectedStateVariables, strm);
}

void BaseActionClass::printEnablingState(std::ostream* strm) {
  printStates(EnablingStateVariables, strm);
}

BaseActionClass* BaseActionClass::getPrintedAction() {
  return this;
}

double BaseActionClass::ErlangParamM() {
  return 1.0;
}

void BaseActionClass::BaseActionClassInitialize(const char* TheName, int GroupIDNum, Distribution DistType,
                                                ExecutionPolicyType ExPolicy, int /*ASV*/, int /*ESV*/,
                                                bool TheReactivation) {
  defineName(TheName);
  GroupID = GroupIDNum;
  DistributionType = DistType;
  ExecutionPolicy = ExPolicy;
  Reactivation = TheReactivation;
}

void BaseActionClass::defineName(const char* TheName) {
  support::replaceText(ActionName, TheName);
}

void BaseActionClass::addEnablingSV(BaseStateVariableClass* TheSV) {
  if (TheSV->isLeafNode()) {
    EnablingStateVariables.append(TheSV);
  } else {
    TheSV->addSelfAsEnablingSVToAction(this);
  }
}

void BaseActionClass::addAffectedSV(BaseStateVariableClass* TheSV) {
  if (TheSV->isLeafNode()) {
    AffectedStateVariables.append(TheSV);
  } else {
    TheSV->addSelfAsAffectedSVToAction(this);
  }
}

void BaseActionClass::removeEnablingSV(BaseStateVariableClass* TheSV) {
  if (TheSV->isLeafNode()) {
    EnablingStateVariables.remove(TheSV);
  } else {
    TheSV->removeSelfFromEnablingSVOfAction(this);
  }
}

void BaseActionClass::removeAffectedSV(BaseStateVariableClass* TheSV) {
  if (TheSV->isLeafNode()) {
    AffectedStateVariables.remove(TheSV);
  } else {
    TheSV->removeSelfFromAffectedSVOfAction(this);
  }
}

void BaseActionClass::replaceEnablingSV(BaseStateVariableClass* TheOld, BaseStateVariableClass* TheNew) {
  EnablingStateVariables.replaceItem(TheOld, TheNew);
}

void BaseActionClass::replaceAffectedSV(BaseStateVariableClass* TheOld, BaseStateVariableClass* TheNew) {
  AffectedStateVariables.replaceItem(TheOld, TheNew);
}

void BaseActionClass::AllocatePVRateDS(int NumPVs) {
  AffectedRateWorkers = new FastSet[static_cast<std::size_t>(NumPVs)];
}

void BaseActionClass::AllocatePVImpulseDS(int NumPVs) {
  const auto count = static_cast<std::size_t>(NumPVs);
  AffectedImpulseRewards = new FastSet[count];
  AffectedImpulseWorkers = new int**[count]();
  NumAffectedImpulseWorkers = new int*[count]();
}

// On purpose: the two operations below leave the pointers as they are, so that the data still look allocated.

void BaseActionClass::DeallocatePVRateDS() {
  delete[] AffectedRateWorkers;
}

void BaseActionClass::DeallocatePVImpulseDS() {
  delete[] AffectedImpulseRewards;
  delete[] AffectedImpulseWorkers;
  delete[] NumAffectedImpulseWorkers;
}

void BaseActionClass::PrintInfo() {
  std::cout << "********* " << ActionName << "**********\n\n";
  std::cout << "Enabled by:\n";
  printNames(EnablingStateVariables);
  std::cout << "Affects:\n";
  printNames(AffectedStateVariables);
  std::cout << "Group ID = " << GroupID << '\n';
  std::cout << "Execution Policy = " << static_cast<int>(ExecutionPolicy) << '\n';
  std::cout << "Disabled = " << static_cast<int>(Disabled) << '\n';
  std::cout << "Reactivation = " << static_cast<int>(Reactivation) << '\n';
  std::cout << "DistributionType = " << static_cast<int>(DistributionType) << std::endl;
}
