#include "BaseClasses/TraceFileXML.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <ostream>
#include <utility>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/OwnedText.h"
#include "BaseClasses/TracedModel.h"
#include "Performance_Variables/PVModel.h"

namespace {

constexpr int kNoProcess = -1;

/// Names the document type. Nothing is at the address: docs/catalog.xml leads a parser to the file in docs instead.
constexpr const char* kDtdUrl = "http://quorva.invalid/dtd/jMSCVis_trace.dtd";

bool isComposed(BaseModelClass* model) {
  return model->GetModelType() != BaseModelClass::AtomicModel;
}

bool equalTexts(const char* one, const char* other) {
  return std::strcmp(one, other) == 0;
}

template <typename Use>
void forEachSharedLeaf(BaseModelClass* model, Use use) {
  support::forEachLeaf(model->GetSharedStateVariables(), model->NumSharedStateVariables,
                       [&](BaseStateVariableClass* leaf) {
                         if (leaf->getShared()) {
                           use(leaf);
                         }
                       });
}

template <typename Use>
void forEachPrivateLeaf(BaseModelClass* model, std::ostream& stream, Use use) {
  support::forEachLeaf(model->GetLocalStateVariables(&stream), model->NumStateVariables,
                       [&](BaseStateVariableClass* leaf) {
                         if (!leaf->getShared()) {
                           use(leaf);
                         }
                       });
}

}  // namespace

TraceFileXML::~TraceFileXML() {
  for (const char* const name : UsedStateNames) {
    delete[] name;
  }
}

void TraceFileXML::printHeader(PVModel* model) {
  if (runNum != -1) {
    return;
  }
  out() << R"(<?xml version="1.0" encoding="utf-8" ?>)" << std::endl;
  out() << "<!DOCTYPE Trace" << std::endl;
  out() << "  SYSTEM \"" << kDtdUrl << "\">" << std::endl;
  out() << R"(<Trace model="Example_Quorva" generator="manually_generated" >)" << std::endl;
  out() << "<Comment> Purpose of this trace: demonstration </Comment>" << std::endl;
  out() << "<!-- TESTING declaration of processes -->" << std::endl;
  out() << "<!-- Trace file of model Example_Quorva -->" << std::endl;
  BaseModelClass* const root = model->TheModel;
  printHeader(root, root->getId());
  out() << "<Interactions>" << std::endl;
  printHeaderInteractions(root);
  out() << "</Interactions>" << std::endl;
  out() << "<!-- process sequence -->" << std::endl;
  out() << R"(<Sequence type="StateActionType">)" << std::endl;
}

void TraceFileXML::printHeader(BaseModelClass* model, int parentId) {
  if (runNum != -1) {
    return;
  }
  auto declared = std::make_unique<Variables>();
  if (isComposed(model)) {
    out() << "<Process id=\"p" << model->getId() << "\" name=\"" << model->getName() << "\" >" << std::endl;
    model->SetParentId(parentId);
    declareComposed(model, *declared);
    out() << "</Process>" << std::endl;
    for (int i = 0; i < model->GetNumberOfChildren(); ++i) {
      printHeader(model->GetChild(i), model->getId());
    }
  } else {
    out() << "<Process id=\"p" << model->getId() << "\" name=\"" << model->getName() << model->getId() << "\" >"
          << std::endl;
    model->SetParentId(parentId);
    declareAtomic(model, *declared);
    out() << "</Process>" << std::endl;
  }
  insertIntoModelMap(model, std::move(declared));
}

void TraceFileXML::declareComposed(BaseModelClass* model, Variables& declared) {
  forEachSharedLeaf(model, [&](BaseStateVariableClass* leaf) {
    if (addUsedStateName(leaf->getFullyQualifiedName(), model->getParentId(), model->getId())) {
      declareVariable(model, leaf, declared);
    }
  });
}

void TraceFileXML::declareAtomic(BaseModelClass* model, Variables& declared) {
  for (int i = 0; i < model->getNumActions(); ++i) {
    BaseActionClass* const action = model->getActionList()[i];
    if (!touchesSharedVariable(action)) {
      UsedActionNames.push_back(action->ActionName);
      out() << "<Action id=\"a" << action->getID() << "\" name=\"" << action->ActionName << "\" />" << std::endl;
    }
  }
  forEachPrivateLeaf(model, out(), [&](BaseStateVariableClass* leaf) { declareVariable(model, leaf, declared); });
}

void TraceFileXML::declareVariable(BaseModelClass* model, BaseStateVariableClass* variable, Variables& declared) {
  declared.push_back(variable);
  const char* const name = variable->getFullyQualifiedName();
  out() << "<Var id=\"p" << model->getId() << name << "\" name=\"" << name << "\" />" << std::endl;
}

bool TraceFileXML::touchesSharedVariable(BaseActionClass* action) const {
  for (int i = 0; i < action->getNumAffectedSVs(); ++i) {
    if (inUsedStateName(action->getAffectedSV(i)->getFullyQualifiedName())) {
      return true;
    }
  }
  return false;
}

void TraceFileXML::printHeaderInteractions(BaseModelClass* model) {
  if (isComposed(model)) {
    for (int i = 0; i < model->GetNumberOfChildren(); ++i) {
      printHeaderInteractions(model->GetChild(i));
    }
    return;
  }
  for (int i = 0; i < model->getNumActions(); ++i) {
    BaseActionClass* const action = model->getActionList()[i];
    std::vector<int> touched = touchedBy(action, model->getId());
    if (touched.empty()) {
      continue;
    }
    if (std::ranges::find(touched, model->getId()) == touched.end()) {
      touched.push_back(model->getId());
    }
    writeInteraction(action, touched);
  }
}

std::vector<int> TraceFileXML::touchedBy(BaseActionClass* action, int modelId) const {
  std::vector<int> touched;
  if (std::ranges::find(UsedActionNames, action->ActionName) != UsedActionNames.end()) {
    return touched;
  }
  for (int i = 0; i < action->getNumAffectedSVs(); ++i) {
    const char* const name = action->getAffectedSV(i)->getFullyQualifiedName();
    if (!inUsedStateName(name)) {
      continue;
    }
    const int process = getModelMap(name, modelId);
    if (process != kNoProcess && std::ranges::find(touched, process) == touched.end()) {
      touched.push_back(process);
    }
  }
  return touched;
}

void TraceFileXML::writeInteraction(BaseActionClass* action, const std::vector<int>& touched) {
  out() << "<Undiraction id=\"a" << action->getID() << "\" name=\"" << action->ActionName << "\">" << std::endl;
  for (const int process : touched) {
    out() << "<Touch>p" << process << "</Touch>";
  }
  out() << "</Undiraction>" << std::endl;
}

void TraceFileXML::printInitialState(BaseModelClass* model) {
  if (runNum != 0) {
    return;
  }
  out() << "<S>" << std::endl;
  printState(model);
  out() << "</S>" << std::endl;
  stateNames.clear();
}

void TraceFileXML::printState(PVModel* /*model*/) {}

void TraceFileXML::printState(BaseModelClass* model) {
  if (runNum != 0) {
    return;
  }
  if (!isComposed(model)) {
    forEachPrivateLeaf(model, out(), [&](BaseStateVariableClass* leaf) { writeStateValue(model->getId(), leaf); });
    return;
  }
  forEachSharedLeaf(model, [&](BaseStateVariableClass* leaf) {
    writeStateValue(getModelMap(leaf->getFullyQualifiedName(), model->getId()), leaf);
  });
  for (int i = 0; i < model->GetNumberOfChildren(); ++i) {
    printState(model->GetChild(i));
  }
}

void TraceFileXML::writeStateValue(int processId, BaseStateVariableClass* variable) {
  out() << "<V id=\"p" << processId << variable->getFullyQualifiedName() << "\" val=\"";
  variable->printStateVal(&out());
  out() << "\" />" << std::endl;
}

void TraceFileXML::printFireAction(BaseActionClass* /*action*/, double time) {
  if (runNum == 0) {
    LastActionTime = time;
  }
}

void TraceFileXML::printPostFireAction(BaseActionClass* first, BaseActionClass* second) {
  if (runNum != 0) {
    return;
  }
  out() << "<A id=\"a" << second->getID() << "\" t=\"" << LastActionTime << "\">" << std::endl;
  const int id = support::modelOf(first)->getId();
  for (int i = 0; i < second->getNumAffectedSVs(); ++i) {
    BaseStateVariableClass* const variable = second->getAffectedSV(i);
    const int process = variable->getShared() ? getModelMap(variable->getFullyQualifiedName(), id) : id;
    out() << "  <V id=\"p" << process << variable->getFullyQualifiedName() << "\"  val=\"";
    variable->printStateVal(&out());
    out() << "\" />" << std::endl;
  }
  out() << "</A>" << std::endl;
}

void TraceFileXML::newBatch() {
  if (runNum == std::numeric_limits<int>::max()) {
    return;
  }
  ++runNum;
  if (runNum == 1) {
    out() << "</Sequence>" << std::endl;
    out() << "</Trace>" << std::endl;
  }
}

bool TraceFileXML::addState(const char* name) {
  const auto equalsName = [name](const char* other) { return equalTexts(name, other); };
  if (std::ranges::any_of(stateNames, equalsName)) {
    return false;
  }
  stateNames.push_back(name);
  return true;
}

bool TraceFileXML::addUsedStateName(const char* name, int parentId, int id) {
  for (std::size_t i = 0; i < UsedStateNames.size(); ++i) {
    if (equalTexts(UsedStateNames[i], name) && UsedStateNamesIds[i].front() <= parentId) {
      return false;
    }
  }
  UsedStateNames.push_back(support::copyOfText(name));
  usedNames_.insert(UsedStateNames.back());
  UsedStateNamesIds.push_back({id});
  return true;
}

bool TraceFileXML::inUsedStateName(const char* name) const {
  return usedNames_.contains(name);
}

void TraceFileXML::insertIntoModelMap(const BaseModelClass* model, std::unique_ptr<Variables> declared) {
  // The first place whose holder the model goes in front of.
  const auto placeIn = [model](auto& models, auto modelOf) {
    return std::ranges::find_if(models, [&](const auto& entry) { return comp()(model, modelOf(entry)); });
  };
  for (BaseStateVariableClass* const variable : *declared) {
    std::deque<const BaseModelClass*>& models = declarers_[variable->getFullyQualifiedName()];
    models.insert(placeIn(models, std::identity()), model);
  }
  const auto place = placeIn(ModelMap, [](const DeclaredVariables& entry) { return entry.first; });
  ModelMap.emplace(place, model, std::move(declared));
}

int TraceFileXML::getModelMap(const char* name, int id) const {
  const auto found = declarers_.find(name);
  if (found == declarers_.end()) {
    return kNoProcess;
  }
  const auto declarer = std::ranges::find_if(found->second, [id](const auto* model) { return model->Id <= id; });
  return declarer == found->second.end() ? kNoProcess : (*declarer)->Id;
}

std::ostream& TraceFileXML::out() const {
  static std::ostream nowhere(nullptr);
  return tracefileout != nullptr ? *tracefileout : nowhere;
}
