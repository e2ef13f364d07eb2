#include "BaseClasses/Traceprintf.h"

#include <gtest/gtest.h>

#include <iostream>
#include <limits>
#include <sstream>
#include <string>

#include "support/CapturedOutput.h"

namespace {

// As the process finds them, before any test.
const int levelAtStart = TraceLevel;
std::ostream* const troutAtStart = trout;

class TraceprintfTest : public testing::Test {
 protected:
  ~TraceprintfTest() override {
    trout = &std::cout;
    TraceLevel = 0;
  }

  std::ostringstream stream;
};

TEST_F(TraceprintfTest, StartsOnStandardOutputAtLevelZero) {
  EXPECT_EQ(troutAtStart, &std::cout);
  EXPECT_EQ(levelAtStart, 0);
}

TEST_F(TraceprintfTest, WritesLevelsUpToTheGlobalOne) {
  trout = &stream;
  TraceLevel = 2;
  Traceprintf(1, "a%d ", 1);
  Traceprintf(2, "b%d ", 2);
  Traceprintf(3, "c%d ", 3);
  EXPECT_EQ(stream.str(), "a1 b2 ");
}

TEST_F(TraceprintfTest, LevelZeroGoesToStandardOutputToo) {
  trout = &stream;
  TraceLevel = 0;
  const std::string out = support::standardOutputOf([] { Traceprintf(0, "%s", "end\n"); });
  EXPECT_EQ(out, "end\n");
  EXPECT_EQ(stream.str(), "end\n");
}

TEST_F(TraceprintfTest, OtherLevelsStayOffStandardOutput) {
  trout = &stream;
  TraceLevel = 1;
  const std::string out = support::standardOutputOf([] { Traceprintf(1, "%s", "end\n"); });
  EXPECT_EQ(out, "");
  EXPECT_EQ(stream.str(), "end\n");
}

TEST_F(TraceprintfTest, OnStandardOutputATextOfLevelZeroComesOnce) {
  const std::string out = support::standardOutputOf([] { Traceprintf(0, "once"); });
  EXPECT_EQ(out, "once");
}

/// Counts how often it is flushed.
class FlushCounter : public std::stringbuf {
 public:
  int flushes = 0;

 protected:
  int sync() override {
    ++flushes;
    return std::stringbuf::sync();
  }
};

TEST_F(TraceprintfTest, EachTextIsFlushed) {
  FlushCounter own;
  FlushCounter standard;
  std::ostream target(&own);
  trout = &target;
  std::streambuf* const console = std::cout.rdbuf(&standard);
  Traceprintf(0, "one");
  EXPECT_EQ(own.flushes, 1);
  EXPECT_EQ(standard.flushes, 1);
  TraceLevel = 1;
  Traceprintf(1, "two");
  std::cout.rdbuf(console);
  EXPECT_EQ(own.flushes, 2);
  EXPECT_EQ(standard.flushes, 1);
}

TEST_F(TraceprintfTest, ALongIntegerPrintsAsItsDigits) {
  trout = &stream;
  TraceLevel = 1;
  Traceprintf(1, "%lld and %lld", std::numeric_limits<long long>::min(), 5LL);
  EXPECT_EQ(stream.str(), "-9223372036854775808 and 5");
}

TEST_F(TraceprintfTest, ATextOfAnyLengthIsWrittenWhole) {
  trout = &stream;
  TraceLevel = 1;
  for (const std::size_t length : {std::size_t{999}, std::size_t{1000}, std::size_t{100000}, std::size_t{3}}) {
    stream.str("");
    const std::string text(length, 'x');
    Traceprintf(1, "<%s>", text.c_str());
    EXPECT_EQ(stream.str(), "<" + text + ">");
  }
}

TEST(MicrosoftLongLongTest, RewritesEveryOccurrenceAndNothingElse) {
  EXPECT_EQ(support::withMicrosoftLongLong("%lld%lld"), "%I64d%I64d");
  EXPECT_EQ(support::withMicrosoftLongLong("a %lld b %llu %ld %d"), "a %I64d b %llu %ld %d");
  EXPECT_EQ(support::withMicrosoftLongLong(""), "");
  EXPECT_EQ(support::withMicrosoftLongLong("%ll"), "%ll");
}

}  // namespace
