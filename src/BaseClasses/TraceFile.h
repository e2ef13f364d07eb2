#pragma once

#include <iosfwd>
#include <memory>
#include <utility>

class BaseActionClass;
class BaseModelClass;
class PVModel;

/// A sink for the trace of a run; by itself one that writes nothing.
///
/// The simulator calls the operations in this order: printHeader once; newBatch before the first batch and at the end
/// of each; in a batch printInitialState, then for each firing printPreFireAction, printFireAction, printPostFireAction
/// and printState; printFooter at the end of the run. Which of them write what depends on the sink and on its level.
/// Owns     nothing. A stream that a sink opens by name stays open to the end of the process, beyond the sink's own
///          life; a stream handed in belongs to the caller and outlives the sink.
class TraceFile {
 public:
  /// A sink without a stream at level 1; sets the global TraceLevel to 1 as well.
  TraceFile();
  /// A sink at level 0 on a new file `name`, which is truncated. A file that cannot be opened shows in no other way
  /// than by its absence: the stream is in its failed state, and the output is lost.
  explicit TraceFile(const char* name);
  /// A sink at level 0 on `stream`.
  explicit TraceFile(std::ostream* stream);
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;

  virtual void printHeader(PVModel* model);
  virtual void printFooter();
  virtual void printInitialState(BaseModelClass* model);
  virtual void printState(BaseModelClass* model);
  /// Shows the model that the reward model stands for.
  virtual void printState(PVModel* model);
  virtual void printFireAction(BaseActionClass* action, double time);
  virtual void printPreFireAction(BaseActionClass* action);
  /// first   the scheduled action, which for a group is the group
  /// second  the action that really fired
  virtual void printPostFireAction(BaseActionClass* first, BaseActionClass* second);
  virtual void newBatch();
  virtual int printf(int level, const char* format, ...);
  virtual void printStr(int level, const char* text);
  virtual ~TraceFile() = default;

  /// Stores the level here and in the global TraceLevel, which Traceprintf reads.
  void setTraceLevel(int level);
  [[nodiscard]] int getTraceLevel() const { return TraceLevel; }

 protected:
  int TraceLevel = 0;
  std::ostream* tracefileout = nullptr;  // borrowed: from the caller, or from the streams kept for the process
};

namespace support {

/// Keeps a sink to the end of the process and hands it back, borrowed: sinks and their streams outlive the simulator
/// that made them, as the global trout may point at the stream of one.
TraceFile* keepSink(std::unique_ptr<TraceFile> sink);

/// Makes a sink that is kept to the end of the process.
template <typename Sink, typename... Arguments>
Sink* makeKeptSink(Arguments&&... arguments) {
  auto sink = std::make_unique<Sink>(std::forward<Arguments>(arguments)...);
  Sink* const kept = sink.get();
  keepSink(std::move(sink));
  return kept;
}

}  // namespace support
