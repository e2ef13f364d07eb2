#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "cli/RailwayProcessTest.h"

// Where the traces of a run go, what they leave alone, and what becomes of a run whose traces cannot be written.

namespace {

using support::goodOutput;
using support::ProcessRequest;
using support::ProcessResult;
using support::RailwayProcessTest;

constexpr int kNothingLost = 218;  // actions of a batch of one train, as CommandOptions_test.cpp counts them
const std::string kTextHead =
    "**************************************\n"
    "\t\tTRACE\n"
    "**************************************\n";
const std::string kAddingCout = "Adding cout: \n";
const std::string kBatch = "##### NEW BATCH #####\n";
const std::string kClosing = "</Sequence>\n</Trace>\n";

/// Adds to the output of a run what its loop prints, between the start of the run and the counters at its end.
std::string withLines(std::string out, const std::string& lines) {
  return out.insert(out.find("Actions fired: "), lines);
}

int occurrences(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
    ++count;
  }
  return count;
}

class RailwayTraceTest : public RailwayProcessTest {
 protected:
  /// The XML trace of a run with these arguments, cut in two where the run begins.
  struct Document {
    std::string head;
    std::string sequence;  // without the closing tags
  };

  [[nodiscard]] Document documentOf(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"-x", "-f", "cut"});
    EXPECT_EQ(railway(arguments).exitStatus, 0);
    const std::string text = contents("cut.xml");
    const std::string begin = "<Sequence type=\"StateActionType\">\n";
    const std::size_t cut = text.find(begin) + begin.size();
    EXPECT_EQ(text.substr(text.size() - kClosing.size()), kClosing);
    return {text.substr(0, cut), text.substr(cut, text.size() - cut - kClosing.size())};
  }

  void expectNoFile(const std::string& file) const { EXPECT_FALSE(std::filesystem::exists(path(file))) << file; }
};

TEST_F(RailwayTraceTest, BothTracesGoToTheirFilesAndLeaveStandardOutputAlone) {
  expectGoodRun(railway({"-N3", "-m", "-x", "-f", "both"}),
                goodOutput("Max Number of Batches: 3\nTraceFile: both\n", 3 * kNothingLost));
  EXPECT_EQ(railway({"-N3", "-m", "-f", "text"}).exitStatus, 0);
  EXPECT_EQ(railway({"-N3", "-x", "-f", "xml"}).exitStatus, 0);
  EXPECT_EQ(contents("both.txt"), contents("text.txt"));
  EXPECT_EQ(contents("both.xml"), contents("xml.xml"));
  expectNoFile("text.xml");
  expectNoFile("xml.txt");
  EXPECT_EQ(occurrences(contents("both.txt"), kBatch), 4);
  EXPECT_EQ(occurrences(contents("both.txt"), "#### Firing: "), 3 * kNothingLost);
  EXPECT_EQ(occurrences(contents("both.xml"), "<A id="), kNothingLost);
  EXPECT_EQ(occurrences(contents("both.xml"), "<?xml"), 1);
  EXPECT_EQ(occurrences(contents("both.xml"), kClosing), 1);
}

TEST_F(RailwayTraceTest, ATraceNeedsNoMoreThanItsFileNameOrItsLevel) {
  EXPECT_EQ(railway({"-N1", "-f", "name"}).exitStatus, 0);
  EXPECT_EQ(railway({"-N1", "-l1", "-f", "level"}).exitStatus, 0);
  EXPECT_EQ(railway({"-N1", "-m", "-l1", "-f", "all"}).exitStatus, 0);
  EXPECT_EQ(contents("name.txt"), contents("all.txt"));
  EXPECT_EQ(contents("level.txt"), contents("all.txt"));
  expectNoFile("name.xml");
  expectNoFile("level.xml");
  expectGoodRun(railway({"-N1", "-l0"}), withLines(goodOutput("Max Number of Batches: 1\nTraceLevel: 0\n", kNothingLost,
                                                              kAddingCout + kTextHead),
                                                   kBatch + kBatch));
}

TEST_F(RailwayTraceTest, ATraceDoesNotChangeTheRun) {
  const std::vector<std::string> run{"-N5", "-O", "s:nTrains:2:d:netNotDeliveryProb:0.5", "-a"};
  const auto observations = [&](const std::string& name, const std::vector<std::string>& traces) {
    std::vector<std::string> arguments = run;
    arguments.push_back(name);
    arguments.insert(arguments.end(), traces.begin(), traces.end());
    EXPECT_EQ(railway(arguments).exitStatus, 0);
    return contents(name);
  };
  const std::string untraced = observations("untraced", {});
  EXPECT_EQ(observations("text", {"-m", "-l4", "-f", "trace"}), untraced);
  EXPECT_EQ(observations("xml", {"-x", "-l4", "-f", "trace"}), untraced);
  EXPECT_EQ(observations("both", {"-m", "-x", "-l4"}), untraced);
}

TEST_F(RailwayTraceTest, ATextTraceOnStandardOutputStandsAmongTheProgressLines) {
  expectGoodRun(railway({"-N2", "-m", "-l0"}), withLines(goodOutput("Max Number of Batches: 2\nTraceLevel: 0\n",
                                                                    2 * kNothingLost, kAddingCout + kTextHead),
                                                         kBatch + kBatch + kBatch));
}

TEST_F(RailwayTraceTest, ATextTraceOnStandardOutputHoldsTheLinesOfTheFile) {
  EXPECT_EQ(railway({"-N1", "-l3", "-f", "text"}).exitStatus, 0);
  const std::string text = contents("text.txt");
  ASSERT_EQ(text.substr(0, kTextHead.size()), kTextHead);
  expectGoodRun(railway({"-N1", "-l3", "-m"}), withLines(goodOutput("Max Number of Batches: 1\nTraceLevel: 3\n",
                                                                    kNothingLost, kAddingCout + kTextHead),
                                                         text.substr(kTextHead.size())));
}

TEST_F(RailwayTraceTest, AnXmlTraceOnStandardOutputStandsAmongTheProgressLinesWithoutALineOfItsOwn) {
  const Document document = documentOf({"-N2", "-l1"});
  expectGoodRun(railway({"-N2", "-l1", "-x"}),
                withLines(goodOutput("Max Number of Batches: 2\nTraceLevel: 1\n", 2 * kNothingLost, document.head),
                          document.sequence + kClosing));
}

TEST_F(RailwayTraceTest, BothTracesOnStandardOutputTakeTurns) {
  const Document document = documentOf({"-N1", "-l0"});
  expectGoodRun(railway({"-N1", "-l0", "-m", "-x"}),
                withLines(goodOutput("Max Number of Batches: 1\nTraceLevel: 0\n", kNothingLost,
                                     kAddingCout + kTextHead + document.head),
                          kBatch + document.sequence + kBatch + kClosing));
}

TEST_F(RailwayTraceTest, BothTracesOnStandardOutputCanBeToldApartByTheirLines) {
  EXPECT_EQ(railway({"-N1", "-l3", "-m", "-x", "-f", "both"}).exitStatus, 0);
  const ProcessResult run = railway({"-N1", "-l3", "-m", "-x"});
  EXPECT_EQ(run.exitStatus, 0);
  std::string xml;
  std::string rest;
  std::istringstream lines(run.out);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t first = line.find_first_not_of(' ');
    const bool ofXml = first != std::string::npos && (line[first] == '<' || line.starts_with("  SYSTEM "));
    (ofXml ? xml : rest) += line + "\n";
  }
  EXPECT_EQ(xml, contents("both.xml"));
  const std::string text = contents("both.txt");
  EXPECT_EQ(rest, withLines(goodOutput("Max Number of Batches: 1\nTraceLevel: 3\n", kNothingLost,
                                       kAddingCout + text.substr(0, kTextHead.size())),
                            text.substr(kTextHead.size())));
}

TEST_F(RailwayTraceTest, AnOlderTraceIsReplaced) {
  EXPECT_EQ(railway({"-N5", "-m", "-x", "-l4", "-f", "old"}).exitStatus, 0);
  EXPECT_EQ(railway({"-N1", "-m", "-x", "-l0", "-f", "old"}).exitStatus, 0);
  EXPECT_EQ(railway({"-N1", "-m", "-x", "-l0", "-f", "new"}).exitStatus, 0);
  EXPECT_EQ(contents("old.txt"), contents("new.txt"));
  EXPECT_EQ(contents("old.xml"), contents("new.xml"));
}

TEST_F(RailwayTraceTest, TracesThatCannotBeOpenedLeaveTheRunAlone) {
  EXPECT_EQ(railway({"-N2", "-a", "untraced"}).exitStatus, 0);
  expectGoodRun(railway({"-N2", "-m", "-x", "-l4", "-f", "no/such/folder/trace", "-a", "traced"}),
                goodOutput("Max Number of Batches: 2\nTraceLevel: 4\nTraceFile: no/such/folder/trace\n"
                           "ASCIIFilename: traced\n",
                           2 * kNothingLost));
  EXPECT_EQ(contents("traced"), contents("untraced"));
}

TEST_F(RailwayTraceTest, TracesOnAFullDiskLeaveTheRunAlone) {
  if (!std::filesystem::exists("/dev/full")) {
    GTEST_SKIP() << "no /dev/full, which stands for a full disk";
  }
  EXPECT_EQ(railway({"-N2", "-a", "untraced"}).exitStatus, 0);
  std::filesystem::create_symlink("/dev/full", path("trace.txt"));
  std::filesystem::create_symlink("/dev/full", path("trace.xml"));
  expectGoodRun(railway({"-N2", "-m", "-x", "-l4", "-f", "trace", "-a", "traced"}),
                goodOutput("Max Number of Batches: 2\nTraceLevel: 4\nTraceFile: trace\nASCIIFilename: traced\n",
                           2 * kNothingLost));
  EXPECT_EQ(contents("traced"), contents("untraced"));
}

TEST_F(RailwayTraceTest, AStandardOutputThatIsFullLeavesTheRunAlone) {
  if (!std::filesystem::exists("/dev/full")) {
    GTEST_SKIP() << "no /dev/full, which stands for a full disk";
  }
  EXPECT_EQ(railway({"-N2", "-a", "untraced"}).exitStatus, 0);
  ProcessRequest request;
  request.program = "/bin/sh";
  request.arguments = {"-c", "exec \"$@\" > /dev/full", "sh", QUORVA_RAILWAY, "-N2", "-m", "-x", "-a", "traced"};
  request.environment = {{"SIMTEST", std::nullopt}};
  request.workingDirectory = path("").string();
  expectGoodRun(runProcess(request), "");
  EXPECT_EQ(contents("traced"), contents("untraced"));
}

}  // namespace
