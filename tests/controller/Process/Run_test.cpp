#include "Process/Run.h"

#include <gtest/gtest.h>

namespace controller {
namespace {

RunOutcome ended(RunEnd end, int number) {
  RunOutcome outcome;
  outcome.end = end;
  outcome.number = number;
  return outcome;
}

RunOutcome said(const std::string& out, const std::string& err) {
  RunOutcome outcome;
  outcome.out = out;
  outcome.err = err;
  return outcome;
}

TEST(RunTest, AnEndIsToldInWords) {
  EXPECT_EQ(describe(ended(RunEnd::Exited, 3)), "ended with status 3");
  EXPECT_EQ(describe(ended(RunEnd::Killed, 9)), "was ended by signal 9 (Killed)");
  EXPECT_EQ(describe(ended(RunEnd::NotStarted, 2)), "cannot be started: No such file or directory");
  EXPECT_EQ(describe(ended(RunEnd::Replaced, 0)), "is another executable than the study began with");
  RunOutcome late = ended(RunEnd::TimedOut, 9);
  late.wallSeconds = 2.2;
  EXPECT_EQ(describe(late), "did not end within 2 seconds and was ended");
}

TEST(RunTest, AnEndIsGoodWithStatusZeroAlone) {
  EXPECT_TRUE(ended(RunEnd::Exited, 0).isGood());
  EXPECT_FALSE(ended(RunEnd::Exited, 1).isGood());
  EXPECT_FALSE(ended(RunEnd::Replaced, 0).isGood());
}

TEST(RunTest, TheLastWordsAreThoseOnStandardErrorOrElseOnStandardOutput) {
  EXPECT_EQ(lastWordsClause(said("out\n", "err\n")), "; its last words:\nerr");
  EXPECT_EQ(lastWordsClause(said("out\n", "\n")), "; its last words:\nout");
  EXPECT_EQ(lastWordsClause(said("SIMULATOR::MAIN()-GOOD EXIT\n", "")), "");
  EXPECT_EQ(lastWordsClause(said("", ""), " without a word"), " without a word");
}

TEST(RunTest, TheLastWordsAreAFewLinesThatATerminalMaySee) {
  EXPECT_EQ(lastWordsClause(said("", "1\n2\n3\n4\n5")), "; its last words:\n2\n3\n4\n5");
  EXPECT_EQ(lastWordsClause(said("", "\x1b[2Jgone\t\xff")), "; its last words:\n?[2Jgone??");
  EXPECT_EQ(lastWordsClause(said("", std::string(300, 'x'))), "; its last words:\n" + std::string(200, 'x'));
}

}  // namespace
}  // namespace controller
