#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <list>
#include <memory>
#include <string>

#include "BaseClasses/BaseActionClass.h"

class BaseGroupClass;
class BaseStudyClass;
class CPUTime;
class DataPacket;
struct Event;
class EventList;
template <typename T>
class Heap;
class PAddress;
class PVModel;
class PerformanceVariableNode;
template <typename T>
class QuorvaQueue;
class QuorvaSocket;
class TraceFileContainer;
class TraceFileQuorva;
class TraceFileXML;

namespace support {
class ArcCheck;
}

/// One run of the model compiled in, from its command line to its closing lines. The constructor does all set-up, Run
/// simulates, the destructor releases. One object performs one run.
/// Order    the constructor's steps are fixed: they decide which random stream the model sees and which performance
///          variables count. Global variables have their final values before any object of the model is built.
/// Owns     event list, connectivity chains, packets, sockets, files and trace sinks. The study, and through it the
///          reward model and the model tree, belong to the model's own GenerateStudy and DestructStudy.
/// Units    simulated time is a double in the model's own unit; processor time is in seconds.
/// Failure  a fatal condition prints its words on standard error and ends the process with status 1.
/// Threads  one: sockets and files are served on the simulation thread, from CheckReportSize.
class SimulatorClass {
 public:
  /// Generators that option -r chooses from.
  enum RandomNumberGeneratorType { LAGGED_FIBONACCI = 0, TAUSWORTHE = 1, MERSENNE_TWISTER = 2, MAX_NUM_GENERATORS = 3 };

  /// Values of SimControl, which only rises: go on; finish, flush what is queued and stop; stop now.
  enum { GO = 0, STOPSOFT = 1, STOPHARD = 2 };

  static constexpr std::int32_t DEFAULT_REPORT_SIZE = 1000;
  static constexpr std::uint32_t DEFAULT_SEED = 31415;
  static constexpr int MAXARGLENGTH = 128;  ///< characters in a word of the command line

  /// Does all set-up. Ends the process on any failure.
  SimulatorClass(int argc, char** argv);
  ~SimulatorClass();

  SimulatorClass(const SimulatorClass&) = delete;
  SimulatorClass& operator=(const SimulatorClass&) = delete;

  /// Performs the simulation, finishes the binary file and the traces, and prints the counters.
  void Run();

  /// What the run's check of arcs found amiss; 0 in a build without it.
  [[nodiscard]] int arcFaults() const;

 protected:
  // ---- Command line ------------------------------------------------------------------------------------------------

  /// Fills the run's settings. 0, or 1 at the first fault, after its message; what was set before the fault stays set.
  short ParseCommandLineOptions(int argc, char** argv);
  /// Lists the options on standard error.
  void PrintUsage();

  // ---- Connectivity: which groups a firing can touch ---------------------------------------------------------------

  /// Builds every action's Affects chain, walking from the action through the variables it changes to what they enable.
  /// O(arcs) time, one entry for each action ID of space. Own group last in a chain. Gives 0.
  short GenerateConnectivityList();
  /// Builds the same relation backwards, from each action through its enabling variables to the actions that change
  /// them. With SIMTEST 0 chains are in order of discovery and searched for duplicates; otherwise they are in reverse
  /// order and a matrix of all pairs of IDs finds duplicates. Gives 0.
  short GenerateConnectivityListOld();
  /// Puts `group` at the head of the chain of `action`, unchecked. Gives 0.
  short AddActionAffects(BaseActionClass* group, BaseActionClass* action);
  /// Puts `group` at the tail of the chain of `action`, unless it is there. Gives 0.
  short AddActionAffectsOld(BaseActionClass* group, BaseActionClass* action);
  /// Frees the chain of `action`.
  void ClearActionAffectsList(BaseActionClass* action);
  /// Frees the chains of all actions of the model.
  void DestructConnectivityList();
  /// Writes every chain, for whoever debugs a model. Requires each chain to hold a group.
  void PrintConnectivityList(std::ostream* out);

  // ---- One firing --------------------------------------------------------------------------------------------------

  /// Fires the event in NextEvent and brings the event list in line with the new marking. True, with NextEvent,
  /// CurrentTime and CurrAction set for the next firing; false, with CurrentTime and CurrAction those of this firing,
  /// when nothing is pending any more.
  bool SimStep();
  /// Whether AffectsAction is set before or after the watched groups are looked at: all that SimStep and SimStepSS
  /// differ in.
  enum class Cursor { SetFirst, SetAfterwards };
  /// What the two do.
  bool step(Cursor cursor);
  template <bool kWatched>
  bool stepInForm(Cursor cursor);
  bool watchedStep(Cursor cursor);
  /// Whether there is a trace that a step shows itself to.
  [[nodiscard]] bool stepsAreTraced() const;
  /// A step of a run without a trace.
  bool untracedStep(Cursor cursor);
  /// Builds InitiallyEnabled on the present marking. Gives 0.
  short GenerateInitialEnabledList();
  /// Schedules every group of InitiallyEnabled, all of which must be enabled. Gives 0.
  short GenerateCompleteEventList();
  /// Samples watched groups again where their reactivation function asks for it, and drops those no longer enabled.
  void CheckReactivationList();
  /// Drops the events of affected groups whose enabling changed or whose reactivation function asks for it.
  void RemoveAffectedActions();
  /// Schedules affected groups that are enabled and have no event, in the order of the chain.
  void InsertAffectedActions();
  /// Ends the process for a distribution whose parameters are out of range. `text` must hold "INVALID_DIST_PARAMS:".
  [[noreturn]] void HandleInvalidDistParams(BaseActionClass* action, std::string text);

  /// SampleDistribution of `action`; parameters out of range end the process.
  double sampleOrEnd(BaseActionClass* action) {
    try {
      return action->SampleDistribution();
    } catch (const std::string& text) {
      HandleInvalidDistParams(action, text);
    }
  }
  /// Schedules `group` at CurrentTime plus a fresh sample and, if its predicate asks for it, watches it for
  /// reactivation. The group must not be scheduled. Order of the calls: SampleDistribution, ReactivationPredicate.
  void schedule(BaseActionClass* group);
  /// Puts `group` at the front of TheReactivationList.
  void watchForReactivation(BaseActionClass* group);
  /// Takes the element at `position` off TheReactivationList; gives the position after it.
  std::list<BaseActionClass*>::iterator dropFromReactivationList(std::list<BaseActionClass*>::iterator position);
  /// Ends the process after a Fire that gave no action.
  [[noreturn]] void endForNoAction();
  /// Ends the process for a tie in which no group has a positive weight.
  [[noreturn]] void endForNoChoice();
  /// Takes the event in NextEvent off the list, accumulates the rewards up to CurrentTime and fires CurrAction; a
  /// watched step shows all that. TempAction becomes the member that fired.
  template <bool kWatched>
  void fireNextEvent();
  /// Accumulates the rewards and fires CurrAction before whatever watches. Gives the member that fired, or null.
  BaseActionClass* fireAndShow();
  static void debugAffectedActions();
  /// The three passes over the groups that the firing of TempAction affects, in their order.
  void updateAffectedActions(Cursor cursor);
  // Ask the processor for what the next firing will read.
  void fetchAhead() const;
  static void fetchGroup(const BaseActionClass* group);
  static void fetchAheadOf(const BaseActionClass* group);
  // What RemoveAffectedActions and InsertAffectedActions do.
  void removeAffected();
  void insertAffected();
  /// Drops the event of `group`, and the group from TheReactivationList.
  void unschedule(BaseActionClass* group, PAddress& address);
  static PAddress& addressOf(const BaseActionClass* group);
  /// Chooses the next event into NextEvent, and its time and group into CurrentTime and CurrAction. False, with these
  /// two untouched, when nothing is pending.
  bool chooseNextEvent();

  // ---- Terminating simulation --------------------------------------------------------------------------------------

  /// Repeats the model from its initial marking to its stop time, batch after batch, until SimControl rises.
  void TerminatingSimulation();

  // What both loops begin and end with.

  /// Makes CurrEvent, TempEvent and NullAction.
  void makeLoopObjects();
  void deleteLoopObjects();
  /// Makes _cpuTimer and starts it.
  void startCpuTimer();
  /// Seconds of processor time since startCpuTimer; 0 when it was not called.
  [[nodiscard]] double cpuSeconds() const;

  // ---- Steady-state simulation -------------------------------------------------------------------------------------

  /// Follows one trajectory and cuts it into batches, variable by variable, until SimControl rises.
  void SteadyStateSimulation();
  /// Schedules every enabled group of the model. Gives 0.
  short GenerateCompleteEventListSS();
  /// As SimStep.
  bool SimStepSS();
  /// Closes the batch of each variable whose stop has come due by CurrentTime.
  void CheckCompletedBatches(PerformanceVariableNode** ThePVList, int* ResultCounters, int* ResultSqrCounters);
  /// Reports the observations counted so far, and counts anew.
  void SendSSResults(int* ResultCounters, int* ResultSqrCounters);

  // ---- Conversation with the manager -------------------------------------------------------------------------------

  /// Listens at the first free port from SocketPort on, tells it on standard output and waits for the manager, -1 for
  /// ever. Gives the connection, owned by the caller, or null.
  QuorvaSocket* WaitForSimMgrConnection(int timeout_ms);
  /// Looks once for a signal of the manager and answers it.
  void ListenToSimMgr(QuorvaSocket* ms);
  /// The same until SimControl rises or the manager whose socket it is detaches.
  void ListenToSimMgrLoop(QuorvaSocket* ms);
  /// Takes the current packets as a report, puts fresh ones in their place and outputs all waiting reports or holds
  /// them back. True if it output. `seconds` is the processor time used so far.
  bool CheckReportSize(double seconds);
  /// A packet for `numPVs` variables of ReportSize observations each; owned by the caller.
  DataPacket* CreateDataPacket(int numPVs);

  /// Writes all waiting reports to the socket and the files. Gives 0.
  std::uint32_t OutputThreadFunc();
  /// For a build with a thread of its own for the socket; a run starts none. Gives 0.
  std::uint32_t SocketThreadFunc();
  /// Entry of such a thread; `data` is the SimulatorClass.
  static std::uint32_t StaticSocketThreadFunc(void* data);
  /// Entry of a thread of its own for output; `data` is the SimulatorClass.
  static std::uint32_t StaticOutputThreadFunc(void* data);
  /// Makes all waiting packets free ones, unwritten.
  void ResetDataPacketBuffer();

  /// Write one value in network byte order to the socket and the stream, either of which may be null. Give the number
  /// of bytes, or -1, with SimControl at STOPHARD and the stream untouched, when the socket fails.
  int OutputInt(QuorvaSocket* ms, std::ostream* ostr, int value);
  int OutputShort(QuorvaSocket* ms, std::ostream* ostr, short value);
  int OutputByte(QuorvaSocket* ms, std::ostream* ostr, char value);
  /// The same for `sizeArray` doubles in one piece.
  int Output(QuorvaSocket* ms, std::ostream* ostr, double* array, int sizeArray);
  /// Writes the processor time message, to the socket alone.
  void OutputCPUTime(QuorvaSocket* ms, double seconds);
  /// Writes the data message of one report; `dpsqr` may be null.
  void OutputDataBinary(QuorvaSocket* ms, std::ostream* ostr, DataPacket* dp, DataPacket* dpsqr);
  /// The double whose bytes in memory are those of `value` in network order.
  double EndianConvertDouble(double value);

  // ---- Result files ------------------------------------------------------------------------------------------------

  /// Opens ASCIIFilename, truncating, and writes its head lines. A file that cannot be opened gives a failed stream.
  std::ofstream* CreateAsciiFile(const char* name);
  /// Writes the last line and closes.
  void CloseAsciiFile(std::ofstream& stream);
  /// One line for each observation of the packet; `dpsqr` may be null.
  void OutputDataCSV(std::ostream& ostr, DataPacket* dp, DataPacket* dpsqr);
  /// Formats `value` with ten decimals, less the zeros at its end, but never less than one decimal. `str` must have
  /// room for the largest double so formatted.
  void RemoveTrailingZeros(char* str, double value);
  /// Opens `name` in binary mode, truncating, and writes the header.
  std::ofstream* CreateBinFile(const char* name);
  /// Writes the header anew and leaves the stream at its end.
  void UpdateBinFileHeader(std::ofstream& stream);
  /// The same, then closes.
  void CloseBinFile(std::ofstream& stream);
  /// The header's text, filled up with zero bytes to its fixed size.
  std::string CreateBinFileHeader(int fileVersion);

  // ---- Data --------------------------------------------------------------------------------------------------------

  char* OverrideString = nullptr;  // owned, kept to the process's end: text of option -O
  char* db_entity = nullptr;       // owned; "fake", and never read

  Heap<double>* StopTimes = nullptr;      // owned by the steady-state loop: next stop of each variable
  Heap<int>* CompletedBatches = nullptr;  // owned by the steady-state loop: finished batches of each variable
  CPUTime* _cpuTimer = nullptr;           // owned; made and started by the simulation loop

  PerformanceVariableNode** PVList = nullptr;           // borrowed from the reward model
  BaseActionClass** ActionList = nullptr;               // borrowed from TheActionContainer: every action of the model
  List<BaseGroupClass>* TheGroupContainer = nullptr;    // owned
  List<BaseActionClass>* TheActionContainer = nullptr;  // owned

  Event* CurrEvent = nullptr;                     // owned by the loop: filled before an insertion
  Event* TempEvent = nullptr;                     // owned by the loop: of no group
  Event** NextEvent = nullptr;                    // borrowed from TheEventList: slot of the event that fires next
  Event* NullEvent = nullptr;                     // unused
  BaseActionClass* CurrAction = nullptr;          // borrowed from the model: the group whose event fires next
  BaseActionClass* TempAction = nullptr;          // borrowed from the model: the member that fired last, or NullAction
  BaseActionClass* OtherAction = nullptr;         // unused
  BaseActionClass* NullAction = nullptr;          // owned by the loop: stands for none
  ActionAffectsElement* AffectsAction = nullptr;  // borrowed from the fired action: cursor of the passes

  EventList* TheEventList = nullptr;                // owned
  PAddress* EventPointerArray = nullptr;            // owned array, one for each group
  BaseGroupClass** GroupList = nullptr;             // borrowed from TheGroupContainer: groups by number
  BaseActionClass** InitiallyEnabled = nullptr;     // owned array: groups enabled in the initial marking, borrowed
  BaseActionClass** ResamplingList = nullptr;       // unused
  std::int32_t NumberResampling = 0;                // unused
  std::list<BaseActionClass*> TheReactivationList;  // groups watched for reactivation, the latest first; borrowed
  BaseActionClass** CheckAlwaysList = nullptr;      // unused
  std::int32_t NumberCheckAlways = 0;               // unused
  int** TempPVAffects = nullptr;                    // unused
  std::int32_t NumInitiallyEnabled = 0;             // entries of InitiallyEnabled
  double AccumulateStartTime = 0.0;                 // unused
  double AccumulateStopTime = 0.0;                  // unused

  std::int32_t SimControl = GO;
  double CurrentTime = 0.0;            // simulated time of the step under way
  PVModel* TheModel = nullptr;         // borrowed from the study: the reward model, which stands for the whole model
  BaseStudyClass* TheStudy = nullptr;  // borrowed from GenerateStudy

  QuorvaQueue<DataPacket*>* UnusedPackets = nullptr;  // owned, with the packets in it
  QuorvaQueue<DataPacket*>* OutputPackets = nullptr;  // owned, with the packets in it: reports waiting for output
  DataPacket* CurPacket = nullptr;                    // owned: receives observations
  DataPacket* CurSqrPacket = nullptr;                 // owned: receives squared observations
  std::int32_t MaxDataPackets = 50;                   // capacity of both queues; as many waiting force output
  std::int32_t NumberReports = 1;                     // outputs so far, the first being counted from the start

  QuorvaSocket* SimMgrSocket = nullptr;      // owned: the manager's connection
  QuorvaSocket* InSocket = nullptr;          // unused
  QuorvaSocket* ConnectionSocket = nullptr;  // owned: the listening socket
  std::int32_t AcceptSelectDelay = 2000;     // milliseconds, for each round of waiting for the manager
  std::int32_t ReadSelectDelay = 0;          // milliseconds, of waiting for a signal

  std::int32_t ReportSize = DEFAULT_REPORT_SIZE;  // observations in a report
  std::int16_t SocketPort = 10000;                // first port tried
  std::int32_t MyClientID = 0;                    // this simulator's number at the manager
  std::uint32_t TheExperimentNumber = 0;          // 0 is the first
  std::int32_t NumPVs = 0;                        // performance variables of the reward model, of either type
  double CPUSeconds = 0.0;                        // processor time at the last report, seconds
  std::int32_t isTerminatingSimulation = 1;       // 0 for steady state

  char* TraceFilename = nullptr;           // owned: base name of the trace files
  std::int32_t TraceLevel = 1;             // level asked for
  bool EnableQuorvaTrace = false;          // text trace asked for
  bool EnableXMLTrace = false;             // XML trace asked for
  TraceFileContainer* trace = nullptr;     // owned: hands every call on to the sinks
  TraceFileQuorva* traceQuorva = nullptr;  // left to the process's end: the text sink
  TraceFileXML* traceXML = nullptr;        // left to the process's end: the XML sink

  std::uint32_t RandomNumberSeed = DEFAULT_SEED;  // 0 stands for DEFAULT_SEED
  std::int16_t EventListType = 0;                 // one kind of list exists, whatever this says
  std::int32_t MaxNumOfBatches = -1;              // stop after as many; 0 or less is no limit
  char* ASCIIFilename = nullptr;                  // owned: option -a
  char* BinFilename = nullptr;                    // owned: option -b, or named by the manager
  bool WaitForSocket = false;                     // option -w
  std::int32_t _fireActionCount = 0;              // firings of the whole run
  // Hides the class of the same name in here: that one is ::RandomNumberGenerator.
  RandomNumberGeneratorType RandomNumberGenerator = LAGGED_FIBONACCI;
  std::ofstream* FileCSV = nullptr;  // owned: ASCII result file
  std::ofstream* FileBin = nullptr;  // owned: binary result file
  std::int32_t BatchRuns = 0;        // batches finished over the whole run

 private:
  /// Forbids a simulator without a command line: ends the process with status 1.
  SimulatorClass();

  /// The generator's name, as printed and as written to the result files.
  static const char* to_string(RandomNumberGeneratorType type);

  /// Takes over an option with its value, and tells of it. False for a value that will not do.
  bool applyValue(char letter, const char* param);
  /// Takes over an option that has no value: m, w or x.
  void applyFlag(char letter);
  bool setReportSize(std::int32_t size);
  bool setGenerator(std::int32_t ranNumGen);

  // Steps of a batch.
  void scheduleBatch();
  void fireUpTo(double StopTime);
  void storeObservations(std::int32_t batch);
  void reportObservations(std::int32_t batch);

  /// Fills StopTimes and CompletedBatches with the steady-state variables.
  void makeStopHeaps();

  // Steps of the constructor.
  void createResultFiles();
  void createTraceSinks();
  void createTextSink();
  void createXmlSink();
  void obtainStudy();
  void requireExperiment();
  void selectPerformanceVariables();
  void listGroups();
  void buildConnectivity();
  void installGenerator();
  void listActions();
  void seedGenerator();

  // Conversation with the manager.
  /// Answers signal 3 and lets the manager go.
  void detachFromSimMgr(QuorvaSocket* ms);
  /// Sends the status message of these two bytes.
  void sendStatus(QuorvaSocket* ms, int kind, int code);
  /// A packet that is free, or a new one.
  DataPacket* takeUnusedPacket();
  /// Writes bytes as they are to the socket and the stream, with the result of the writers above.
  int outputBytes(QuorvaSocket* ms, std::ostream* ostr, const char* bytes, int count);

  /// Closes the binary file, if there is one still.
  void finishBinFile();

  /// The group that stands for `action` in the event list. A number that no group has ends the process.
  BaseGroupClass* groupOf(BaseActionClass* action);

  std::unique_ptr<support::ArcCheck> arcCheck_;  // none but during a run of a build that checks arcs

  std::list<BaseActionClass*> spareReactivationNodes_;  // nodes taken off TheReactivationList, to be used again
};
