#pragma once

#include <iosfwd>

#include "BaseClasses/TraceFile.h"

class BaseStateVariableClass;

/// The trace as a text for people: states, firings and what each firing changed.
///
/// Level 0 writes the header and a line for each batch; 1 adds the initial state of each batch and the firings; 2 adds
/// the enabling state before and the affected state after each firing; from 3 on the simulation loops add the whole
/// state after each event step. Every line is flushed as it is written, so that the trace of a run that dies is whole.
/// A sink without a stream writes nothing.
class TraceFileQuorva : public TraceFile {
 public:
  TraceFileQuorva() = default;
  /// These two point the global trout at the sink's stream, so that Traceprintf writes into the trace.
  explicit TraceFileQuorva(const char* name);
  explicit TraceFileQuorva(std::ostream* stream);

  void printHeader(PVModel* model) override;
  void printFooter() override;
  void printInitialState(BaseModelClass* model) override;
  void printState(BaseModelClass* model) override;
  void printState(PVModel* model) override;
  void printFireAction(BaseActionClass* action, double time) override;
  void printPreFireAction(BaseActionClass* action) override;
  void printPostFireAction(BaseActionClass* first, BaseActionClass* second) override;
  void newBatch() override;
};
