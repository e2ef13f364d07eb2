#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Simulator/EventStep.h"
#include "Simulator/SimulatorClass.h"

namespace support {

/// A command line in the form that main gets it: the program's name and the words behind it.
class CommandLine {
 public:
  explicit CommandLine(std::vector<std::string> words) : words_(std::move(words)) {
    words_.insert(words_.begin(), "simulator");
    for (std::string& word : words_) {
      pointers_.push_back(word.data());
    }
    pointers_.push_back(nullptr);
  }
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  [[nodiscard]] int argc() const { return static_cast<int>(words_.size()); }
  [[nodiscard]] char** argv() { return pointers_.data(); }

 private:
  std::vector<std::string> words_;
  std::vector<char*> pointers_;
};

}  // namespace support

/// The simulator with its insides open to tests. GenerateStudy must have been given a study before; see TestStudy.h.
class SimulatorProbe : public SimulatorClass {
 public:
  /// A simulator started with these words behind the program's name.
  explicit SimulatorProbe(std::vector<std::string> words) : SimulatorProbe(support::CommandLine(std::move(words))) {}

  using SimulatorClass::_cpuTimer;
  using SimulatorClass::_fireActionCount;
  using SimulatorClass::AcceptSelectDelay;
  using SimulatorClass::AccumulateStartTime;
  using SimulatorClass::AccumulateStopTime;
  using SimulatorClass::ActionList;
  using SimulatorClass::AddActionAffects;
  using SimulatorClass::AddActionAffectsOld;
  using SimulatorClass::AffectsAction;
  using SimulatorClass::ASCIIFilename;
  using SimulatorClass::BatchRuns;
  using SimulatorClass::BinFilename;
  using SimulatorClass::CheckAlwaysList;
  using SimulatorClass::CheckCompletedBatches;
  using SimulatorClass::CheckReactivationList;
  using SimulatorClass::CheckReportSize;
  using SimulatorClass::chooseNextEvent;
  using SimulatorClass::ClearActionAffectsList;
  using SimulatorClass::CloseAsciiFile;
  using SimulatorClass::CloseBinFile;
  using SimulatorClass::CompletedBatches;
  using SimulatorClass::ConnectionSocket;
  using SimulatorClass::cpuSeconds;
  using SimulatorClass::CPUSeconds;
  using SimulatorClass::CreateAsciiFile;
  using SimulatorClass::CreateBinFile;
  using SimulatorClass::CreateBinFileHeader;
  using SimulatorClass::CreateDataPacket;
  using SimulatorClass::CurPacket;
  using SimulatorClass::CurrAction;
  using SimulatorClass::CurrentTime;
  using SimulatorClass::CurrEvent;
  using SimulatorClass::CurSqrPacket;
  using SimulatorClass::db_entity;
  using SimulatorClass::deleteLoopObjects;
  using SimulatorClass::DestructConnectivityList;
  using SimulatorClass::dropFromReactivationList;
  using SimulatorClass::EnableQuorvaTrace;
  using SimulatorClass::EnableXMLTrace;
  using SimulatorClass::EndianConvertDouble;
  using SimulatorClass::EventListType;
  using SimulatorClass::EventPointerArray;
  using SimulatorClass::FileBin;
  using SimulatorClass::FileCSV;
  using SimulatorClass::fireNextEvent;
  using SimulatorClass::GenerateCompleteEventList;
  using SimulatorClass::GenerateCompleteEventListSS;
  using SimulatorClass::GenerateConnectivityList;
  using SimulatorClass::GenerateConnectivityListOld;
  using SimulatorClass::GenerateInitialEnabledList;
  using SimulatorClass::GroupList;
  using SimulatorClass::HandleInvalidDistParams;
  using SimulatorClass::InitiallyEnabled;
  using SimulatorClass::InsertAffectedActions;
  using SimulatorClass::InSocket;
  using SimulatorClass::isTerminatingSimulation;
  using SimulatorClass::ListenToSimMgr;
  using SimulatorClass::ListenToSimMgrLoop;
  using SimulatorClass::makeLoopObjects;
  using SimulatorClass::MaxDataPackets;
  using SimulatorClass::MaxNumOfBatches;
  using SimulatorClass::MyClientID;
  using SimulatorClass::NextEvent;
  using SimulatorClass::NullAction;
  using SimulatorClass::NullEvent;
  using SimulatorClass::NumberCheckAlways;
  using SimulatorClass::NumberReports;
  using SimulatorClass::NumberResampling;
  using SimulatorClass::NumInitiallyEnabled;
  using SimulatorClass::NumPVs;
  using SimulatorClass::OtherAction;
  using SimulatorClass::Output;
  using SimulatorClass::OutputByte;
  using SimulatorClass::OutputCPUTime;
  using SimulatorClass::OutputDataBinary;
  using SimulatorClass::OutputDataCSV;
  using SimulatorClass::OutputInt;
  using SimulatorClass::OutputPackets;
  using SimulatorClass::OutputShort;
  using SimulatorClass::OutputThreadFunc;
  using SimulatorClass::OverrideString;
  using SimulatorClass::ParseCommandLineOptions;
  using SimulatorClass::PrintConnectivityList;
  using SimulatorClass::PrintUsage;
  using SimulatorClass::PVList;
  using SimulatorClass::RandomNumberGenerator;
  using SimulatorClass::RandomNumberSeed;
  using SimulatorClass::ReadSelectDelay;
  using SimulatorClass::RemoveAffectedActions;
  using SimulatorClass::RemoveTrailingZeros;
  using SimulatorClass::ReportSize;
  using SimulatorClass::ResamplingList;
  using SimulatorClass::ResetDataPacketBuffer;
  using SimulatorClass::sampleOrEnd;
  using SimulatorClass::schedule;
  using SimulatorClass::SendSSResults;
  using SimulatorClass::SimControl;
  using SimulatorClass::SimMgrSocket;
  using SimulatorClass::SimStep;
  using SimulatorClass::SimStepSS;
  using SimulatorClass::SocketPort;
  using SimulatorClass::SocketThreadFunc;
  using SimulatorClass::startCpuTimer;
  using SimulatorClass::StaticOutputThreadFunc;
  using SimulatorClass::StaticSocketThreadFunc;
  using SimulatorClass::SteadyStateSimulation;
  using SimulatorClass::StopTimes;
  using SimulatorClass::TempAction;
  using SimulatorClass::TempEvent;
  using SimulatorClass::TempPVAffects;
  using SimulatorClass::TerminatingSimulation;
  using SimulatorClass::TheActionContainer;
  using SimulatorClass::TheEventList;
  using SimulatorClass::TheExperimentNumber;
  using SimulatorClass::TheGroupContainer;
  using SimulatorClass::TheModel;
  using SimulatorClass::TheReactivationList;
  using SimulatorClass::TheStudy;
  using SimulatorClass::trace;
  using SimulatorClass::TraceFilename;
  using SimulatorClass::TraceLevel;
  using SimulatorClass::traceQuorva;
  using SimulatorClass::traceXML;
  using SimulatorClass::UnusedPackets;
  using SimulatorClass::updateAffectedActions;
  using SimulatorClass::UpdateBinFileHeader;
  using SimulatorClass::WaitForSimMgrConnection;
  using SimulatorClass::WaitForSocket;
  using SimulatorClass::watchForReactivation;

 private:
  explicit SimulatorProbe(support::CommandLine&& commandLine)
      : SimulatorClass(commandLine.argc(), commandLine.argv()) {}
};
