#include "BaseClasses/TraceFile.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "BaseClasses/Traceprintf.h"
#include "support/TemporaryFile.h"
#include "support/TraceModels.h"

namespace {

/// Shows the stream, and which model printState of a reward model hands on.
class TraceFileProbe : public TraceFile {
 public:
  using TraceFile::printState;
  using TraceFile::TraceFile;
  using TraceFile::tracefileout;

  void printState(BaseModelClass* model) override { lastModel = model; }

  BaseModelClass* lastModel = nullptr;
};

TEST(TraceFileTest, WithoutAStreamTheLevelIsOneHereAndInTheGlobal) {
  TraceLevel = 7;
  const TraceFileProbe sink;
  EXPECT_EQ(sink.getTraceLevel(), 1);
  EXPECT_EQ(TraceLevel, 1);
  EXPECT_EQ(sink.tracefileout, nullptr);
}

TEST(TraceFileTest, OnAStreamTheLevelIsZeroAndTheGlobalStays) {
  TraceLevel = 7;
  std::ostringstream stream;
  const TraceFileProbe sink(&stream);
  EXPECT_EQ(sink.getTraceLevel(), 0);
  EXPECT_EQ(TraceLevel, 7);
  EXPECT_EQ(sink.tracefileout, &stream);
}

TEST(TraceFileTest, ByNameTheFileIsTruncatedTheLevelIsZeroAndTheGlobalStays) {
  TraceLevel = 7;
  const support::TemporaryFile file("trace");
  std::ofstream(file.name()) << "old text";
  const TraceFileProbe sink(file.name());
  EXPECT_EQ(file.bytes(), "");
  EXPECT_EQ(sink.getTraceLevel(), 0);
  EXPECT_EQ(TraceLevel, 7);
}

TEST(TraceFileTest, TheStreamOfANameOutlivesTheSink) {
  const support::TemporaryFile file("trace");
  std::ostream* stream = nullptr;
  {
    const TraceFileProbe sink(file.name());
    stream = sink.tracefileout;
  }
  *stream << "late" << std::flush;
  EXPECT_EQ(file.bytes(), "late");
}

TEST(TraceFileTest, AFileThatCannotBeOpenedLosesItsOutputSilently) {
  const TraceFileProbe sink("/no/such/folder/trace.txt");
  ASSERT_NE(sink.tracefileout, nullptr);
  EXPECT_TRUE(sink.tracefileout->fail());
  *sink.tracefileout << "lost" << std::endl;
  EXPECT_TRUE(sink.tracefileout->fail());
}

TEST(TraceFileTest, SettingTheLevelSetsTheGlobalToo) {
  std::ostringstream stream;
  TraceFile sink(&stream);
  sink.setTraceLevel(3);
  EXPECT_EQ(sink.getTraceLevel(), 3);
  EXPECT_EQ(TraceLevel, 3);
}

TEST(TraceFileTest, TheBaseWritesNothing) {
  std::ostringstream stream;
  TraceFile sink(&stream);
  sink.setTraceLevel(4);
  support::ShownRewardModel rewards(new support::ShownModel("top"));
  BaseActionClass action;
  sink.printHeader(&rewards);
  sink.printInitialState(rewards.TheModel);
  sink.printState(rewards.TheModel);
  sink.printState(&rewards);
  sink.printPreFireAction(&action);
  sink.printFireAction(&action, 1.0);
  sink.printPostFireAction(&action, &action);
  sink.newBatch();
  EXPECT_EQ(sink.printf(0, "%d", 5), 0);
  sink.printStr(0, "text");
  sink.printFooter();
  EXPECT_EQ(stream.str(), "");
}

TEST(TraceFileTest, TheStateOfARewardModelIsThatOfItsModel) {
  support::ShownRewardModel rewards(new support::ShownModel("top"));
  TraceFileProbe sink;
  sink.printState(&rewards);
  EXPECT_EQ(sink.lastModel, rewards.TheModel);
}

TEST(TraceFileTest, AKeptSinkOutlivesItsMaker) {
  std::ostringstream stream;
  TraceFile* const sink = support::makeKeptSink<TraceFile>(&stream);
  sink->setTraceLevel(2);
  EXPECT_EQ(sink->getTraceLevel(), 2);
}

}  // namespace
