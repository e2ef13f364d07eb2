#include "BaseClasses/TraceFileQuorva.h"

#include <ostream>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/TracedModel.h"
#include "BaseClasses/Traceprintf.h"
#include "Performance_Variables/PVModel.h"

namespace {

constexpr const char* kRuler = "**************************************";

/// "<indent><name> = <value>" on a line of its own.
void writeVariable(std::ostream& stream, const char* indent, BaseStateVariableClass* variable) {
  stream << indent << variable->getFullyQualifiedName() << " = ";
  variable->printStateVal(&stream);
  stream << std::endl;
}

}  // namespace

TraceFileQuorva::TraceFileQuorva(const char* name) : TraceFile(name) {
  trout = tracefileout;
}

TraceFileQuorva::TraceFileQuorva(std::ostream* stream) : TraceFile(stream) {
  trout = tracefileout;
}

void TraceFileQuorva::printHeader(PVModel* /*model*/) {
  if (tracefileout == nullptr) {
    return;
  }
  *tracefileout << kRuler << std::endl;
  *tracefileout << "\t\tTRACE" << std::endl;
  *tracefileout << kRuler << std::endl;
}

void TraceFileQuorva::printFooter() {}

void TraceFileQuorva::printInitialState(BaseModelClass* model) {
  if (tracefileout == nullptr) {
    return;
  }
  *tracefileout << "Initial Model State:" << std::endl;
  printState(model);
}

void TraceFileQuorva::printState(PVModel* model) {
  if (tracefileout == nullptr) {
    return;
  }
  *tracefileout << "Model State:" << std::endl;
  printState(model->TheModel);
}

void TraceFileQuorva::printState(BaseModelClass* model) {
  if (tracefileout == nullptr) {
    return;
  }
  *tracefileout << "  Model: (" << model->getId() << ")" << model->getName() << std::endl;
  support::forEachLeaf(model->GetLocalStateVariables(tracefileout), model->NumStateVariables,
                       [&](BaseStateVariableClass* leaf) { writeVariable(*tracefileout, "    ", leaf); });
  for (int i = 0; i < model->GetNumberOfChildren(); ++i) {
    printState(model->GetChild(i));
  }
}

void TraceFileQuorva::printFireAction(BaseActionClass* action, double time) {
  if (tracefileout == nullptr || TraceLevel <= 0) {
    return;
  }
  BaseModelClass* const model = support::modelOf(action);
  *tracefileout << "#### Firing: " << time << "  Action: (" << model->getId() << ")" << model->getName() << "->"
                << action->ActionName << std::endl;
}

void TraceFileQuorva::printPreFireAction(BaseActionClass* action) {
  if (tracefileout == nullptr || TraceLevel <= 1) {
    return;
  }
  BaseActionClass* const shown = action->getPrintedAction();
  *tracefileout << "Enabling state before action firing:" << std::endl;
  for (int i = 0; i < shown->getNumEnablingSVs(); ++i) {
    writeVariable(*tracefileout, "  ", shown->getEnablingSV(i));
  }
}

void TraceFileQuorva::printPostFireAction(BaseActionClass* first, BaseActionClass* second) {
  if (tracefileout == nullptr || TraceLevel <= 0) {
    return;
  }
  *tracefileout << "#### After: (" << support::modelOf(first)->getId() << ")" << first->ActionName << "->"
                << second->ActionName << std::endl;
  if (TraceLevel > 1) {
    *tracefileout << "Affected state after firing: " << std::endl;
    for (int i = 0; i < second->getNumAffectedSVs(); ++i) {
      writeVariable(*tracefileout, "  ", second->getAffectedSV(i));
    }
  }
}

void TraceFileQuorva::newBatch() {
  if (tracefileout != nullptr) {
    *tracefileout << "##### NEW BATCH #####" << std::endl;
  }
}
