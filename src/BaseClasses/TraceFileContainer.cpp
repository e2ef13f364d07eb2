#include "BaseClasses/TraceFileContainer.h"

#include <array>
#include <cstdarg>
#include <cstdio>

#include "Performance_Variables/PVModel.h"

int TraceFileContainer::AddTraceFile(TraceFile* sink) {
  traceFileVec.push_back(sink);
  return 0;
}

int TraceFileContainer::RemoveTraceFile(TraceFile* /*sink*/) {
  return 0;
}

void TraceFileContainer::printHeader() {
  for (TraceFile* const sink : traceFileVec) {
    sink->printHeader(PVmodel);
  }
}

void TraceFileContainer::printHeader(PVModel* /*model*/) {}

void TraceFileContainer::printFooter() {
  for (TraceFile* const sink : traceFileVec) {
    sink->printFooter();
  }
}

void TraceFileContainer::printState() {
  for (TraceFile* const sink : traceFileVec) {
    sink->printState(PVmodel);
  }
}

void TraceFileContainer::printState(BaseModelClass* /*model*/) {}
void TraceFileContainer::printState(PVModel* /*model*/) {}

void TraceFileContainer::printInitialState() {
  // PVmodel is looked at only for a sink: without one the simulator never tells the reward model.
  for (TraceFile* const sink : traceFileVec) {
    sink->printInitialState(PVmodel->TheModel);
  }
}

void TraceFileContainer::printFireAction(BaseActionClass* action, double time) {
  for (TraceFile* const sink : traceFileVec) {
    sink->printFireAction(action, time);
  }
}

void TraceFileContainer::printPreFireAction(BaseActionClass* action) {
  for (TraceFile* const sink : traceFileVec) {
    sink->printPreFireAction(action);
  }
}

void TraceFileContainer::printPostFireAction(BaseActionClass* first, BaseActionClass* second) {
  for (TraceFile* const sink : traceFileVec) {
    sink->printPostFireAction(first, second);
  }
}

void TraceFileContainer::newBatch() {
  for (TraceFile* const sink : traceFileVec) {
    sink->newBatch();
  }
}

int TraceFileContainer::printf(int level, const char* format, ...) {
  std::array<char, kTextCapacity> text{};
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  printStr(level, text.data());
  return 0;
}

void TraceFileContainer::printStr(int level, const char* text) {
  for (TraceFile* const sink : traceFileVec) {
    sink->printStr(level, text);
  }
}
