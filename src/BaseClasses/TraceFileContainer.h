#pragma once

#include <vector>

#include "BaseClasses/TraceFile.h"

/// The one trace object that the simulator writes to: hands every call on to the sinks added to it.
/// Order    sinks are called in the order of addition.
/// Owns     no sink.
/// Without a sink every call does nothing. Its own level is the one that the simulation loops ask for.
class TraceFileContainer : public TraceFile {
 public:
  /// Longest text of printf, the closing zero byte included; what is longer is cut.
  static constexpr int kTextCapacity = 1000;

  TraceFileContainer() = default;

  int AddTraceFile(TraceFile* sink);
  /// Whether any call would reach a sink. The event step asks, so that a run without a trace pays for no call.
  [[nodiscard]] bool hasSinks() const { return !traceFileVec.empty(); }
  /// Does nothing: a sink stays for the whole run.
  int RemoveTraceFile(TraceFile* sink);
  /// Sets the reward model that the sinks are shown.
  void addPVModel(PVModel* model) { PVmodel = model; }

  void printHeader();
  void printState();
  void printInitialState();
  using TraceFile::printInitialState;

  void printHeader(PVModel* model) override;
  void printFooter() override;
  void printState(BaseModelClass* model) override;
  void printState(PVModel* model) override;
  void printFireAction(BaseActionClass* action, double time) override;
  void printPreFireAction(BaseActionClass* action) override;
  void printPostFireAction(BaseActionClass* first, BaseActionClass* second) override;
  void newBatch() override;
  /// Formats once and hands the text to each sink's printStr. Returns 0.
  int printf(int level, const char* format, ...) override;
  void printStr(int level, const char* text) override;

  PVModel* PVmodel = nullptr;  // borrowed from the study

 private:
  std::vector<TraceFile*> traceFileVec;  // borrowed sinks, in order of addition
};
