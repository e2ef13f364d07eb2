#pragma once

#include <deque>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "BaseClasses/TraceFile.h"

class BaseStateVariableClass;

/// The trace of the first batch of a run as one XML document for a sequence chart viewer.
///
/// Models are processes. The variables and actions that only one model touches are members of its process; a shared
/// variable is a member of the outermost composed model that holds it, and an action that changes one is an interaction
/// of the processes it touches. The run is a sequence of states and of firings with what they changed.
/// Order    the batch number decides: before the first batch the head is written, in batch 0 the sequence, with the end
///          of batch 0 the closing tags, and later nothing. A run that dies before leaves the document open.
/// Level    has no say here, but that the simulation loops ask for an initial state from level 1 on only.
/// Names    are written as they are, without escaping: those of a model are identifiers.
/// A sink without a stream writes nothing. docs/trace.dtd describes the document, docs/traces.md explains it.
class TraceFileXML : public TraceFile {
 public:
  TraceFileXML() = default;
  explicit TraceFileXML(const char* name) : TraceFile(name) {}
  explicit TraceFileXML(std::ostream* stream) : TraceFile(stream) {}
  TraceFileXML(const TraceFileXML&) = delete;
  TraceFileXML& operator=(const TraceFileXML&) = delete;
  ~TraceFileXML() override;

  /// The head of the document: the processes of the whole model, their interactions, and the start of the sequence.
  void printHeader(PVModel* model) override;
  /// The processes of `model` and all below it.
  /// parentId  Id of the composed model that holds it, which the model is told; its own for the root
  void printHeader(BaseModelClass* model, int parentId);
  /// The interactions of the actions of `model` and all below it. Requires: the processes have been written.
  void printHeaderInteractions(BaseModelClass* model);
  void printFooter() override {}
  void printInitialState(BaseModelClass* model) override;
  void printState(BaseModelClass* model) override;
  /// Does nothing: the document has the state at the start of the batch alone.
  void printState(PVModel* model) override;
  void printFireAction(BaseActionClass* action, double time) override;
  void printPreFireAction(BaseActionClass* /*action*/) override {}
  void printPostFireAction(BaseActionClass* first, BaseActionClass* second) override;
  void newBatch() override;

 private:
  friend class TraceFileXMLProbe;  // the tests'

  /// The order of ModelMap: a model goes in front of every other, and none equals another, so that a walk goes from
  /// the model inserted last to the one inserted first. No strict order, so that no container of the standard library
  /// may be given it.
  struct comp {
    bool operator()(const BaseModelClass* /*one*/, const BaseModelClass* /*other*/) const { return true; }
  };
  using Variables = std::vector<BaseStateVariableClass*>;
  using DeclaredVariables = std::pair<const BaseModelClass*, std::unique_ptr<Variables>>;

  /// Keeps the name, borrowed, unless an equal one is there already; whether it was kept.
  bool addState(const char* name);
  /// Declares a shared variable `name` of the composed model `id`; false if a model of an Id up to `parentId` has
  /// declared it.
  bool addUsedStateName(const char* name, int parentId, int id);
  [[nodiscard]] bool inUsedStateName(const char* name) const;
  /// Id of the outermost model that has declared `name` and whose Id is `id` at most; -1 if there is none.
  [[nodiscard]] int getModelMap(const char* name, int id) const;

  /// Puts the entry in front of the first one that comp lets it precede.
  void insertIntoModelMap(const BaseModelClass* model, std::unique_ptr<Variables> declared);

  void declareComposed(BaseModelClass* model, Variables& declared);
  void declareAtomic(BaseModelClass* model, Variables& declared);
  void declareVariable(BaseModelClass* model, BaseStateVariableClass* variable, Variables& declared);
  [[nodiscard]] bool touchesSharedVariable(BaseActionClass* action) const;
  /// Ids of the processes of the shared variables that the action changes, each once, in the order of the variables.
  [[nodiscard]] std::vector<int> touchedBy(BaseActionClass* action, int modelId) const;
  void writeInteraction(BaseActionClass* action, const std::vector<int>& touched);
  void writeStateValue(int processId, BaseStateVariableClass* variable);
  [[nodiscard]] std::ostream& out() const;

  std::vector<const char*> stateNames;              // borrowed texts, for addState
  std::vector<char*> UsedStateNames;                // owned texts: shared variables declared so far
  std::vector<const char*> UsedActionNames;         // borrowed: the own names of the actions declared in a process
  std::vector<std::vector<int>> UsedStateNamesIds;  // beside UsedStateNames: first the Id of the declaring model
  int runNum = -1;                                  // batch in progress; -1 before the first
  double LastActionTime = 0.0;                      // simulated time of the latest firing traced
  std::deque<DeclaredVariables> ModelMap;           // in the order of comp: borrowed models, each with the borrowed
                                                    // variables that it declared
  // Indexes, so that large models are traced in a time that grows with their traces alone.
  std::unordered_set<std::string_view> usedNames_;                                // views of UsedStateNames
  std::unordered_map<std::string, std::deque<const BaseModelClass*>> declarers_;  // by name, in the order of ModelMap
};
