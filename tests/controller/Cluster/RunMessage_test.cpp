#include "Cluster/RunMessage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <string>

namespace controller {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::byte> bytesOf(const std::string& text) {
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

/// A message put together by hand: the length of the text, the text, and what stands behind it.
std::vector<std::byte> message(const std::string& text, const std::string& rest = "") {
  std::string bytes;
  for (unsigned shift = 0; shift < 64; shift += 8) {
    bytes += static_cast<char>(std::uint64_t{text.size()} >> shift & 0xffU);
  }
  return bytesOf(bytes + text + rest);
}

constexpr const char* kRequest =
    R"({"ticket":-9007199254740993,"program":"/bin/lamp","digest":"ab","arguments":["-N","3"],"timeLimitSeconds":0.1,)"
    R"("cpuLimitSeconds":7,"greatestFileBytes":1099511627776,"wantsTrace":true})";

std::string answerWithEnd(int end) {
  return R"({"ticket":4,"end":)" + std::to_string(end) +
         R"(,"number":9,"out":"a\u0000b","err":"\ud83d\ude82","trace":"step","wallSeconds":1.5,"cpuSeconds":0.25,"host":"north"})";
}

TEST(RunMessageTest, ARequestIsReadAsItStands) {
  const TicketedRequest read = unpackRequest(message(kRequest));
  EXPECT_EQ(read.ticket, -9007199254740993);  // no double has it
  EXPECT_EQ(read.request.program, "/bin/lamp");
  EXPECT_EQ(read.request.digest, "ab");
  EXPECT_THAT(read.request.arguments, ElementsAre("-N", "3"));
  EXPECT_EQ(read.request.timeLimitSeconds, 0.1);
  EXPECT_EQ(read.request.cpuLimitSeconds, 7);
  EXPECT_EQ(read.request.greatestFileBytes, std::int64_t{1} << 40);
  EXPECT_TRUE(read.request.wantsTrace);
}

TEST(RunMessageTest, AnAnswerBringsTheResultFileBehindIt) {
  const Executor::Finished read = unpackFinished(message(answerWithEnd(1), std::string("\0{\xff", 3)));
  EXPECT_EQ(read.ticket, 4);
  EXPECT_EQ(read.outcome.end, RunEnd::Killed);
  EXPECT_EQ(read.outcome.number, 9);
  EXPECT_EQ(read.outcome.out, std::string("a\0b", 3));
  EXPECT_EQ(read.outcome.err, "\xf0\x9f\x9a\x82");
  EXPECT_EQ(read.outcome.trace, "step");
  EXPECT_EQ(read.outcome.wallSeconds, 1.5);
  EXPECT_EQ(read.outcome.cpuSeconds, 0.25);
  EXPECT_EQ(read.outcome.host, "north");
  EXPECT_THAT(read.outcome.resultFile, ElementsAre(std::byte{0}, std::byte{'{'}, std::byte{0xff}));
  EXPECT_THAT(unpackFinished(message(answerWithEnd(0))).outcome.resultFile, IsEmpty());
}

TEST(RunMessageTest, ARequestComesBackAsItWas) {
  RunRequest request;
  request.program = "/opt/it's here/\"railway\"";
  request.digest = "abc";
  request.arguments = {"-N", "10", "", "-O", "d:x:0.5"};
  request.timeLimitSeconds = 0.1;
  request.cpuLimitSeconds = 7;
  request.greatestFileBytes = std::int64_t{1} << 40;
  request.wantsTrace = true;
  const TicketedRequest back = unpackRequest(packRequest(std::int64_t{1} << 40, request));
  EXPECT_EQ(back.ticket, std::int64_t{1} << 40);
  EXPECT_EQ(back.request.program, request.program);
  EXPECT_EQ(back.request.digest, "abc");
  EXPECT_THAT(back.request.arguments, ElementsAre("-N", "10", "", "-O", "d:x:0.5"));
  EXPECT_EQ(back.request.timeLimitSeconds, 0.1);
  EXPECT_EQ(back.request.cpuLimitSeconds, 7);
  EXPECT_EQ(back.request.greatestFileBytes, std::int64_t{1} << 40);
  EXPECT_TRUE(back.request.wantsTrace);
}

TEST(RunMessageTest, AnOutcomeComesBackWithTheBytesOfItsResultFile) {
  Executor::Finished finished;
  finished.ticket = 3;
  finished.outcome.end = RunEnd::Killed;
  finished.outcome.number = 9;
  finished.outcome.resultFile = bytesOf(std::string("}\0\xff{", 4));
  finished.outcome.out = "said";
  finished.outcome.err = "complained";
  finished.outcome.trace = "a\nb\n";
  finished.outcome.wallSeconds = 1.5;
  finished.outcome.cpuSeconds = 0.1;
  finished.outcome.host = "node-1";
  const Executor::Finished back = unpackFinished(packFinished(finished));
  EXPECT_EQ(back.ticket, 3);
  EXPECT_EQ(back.outcome.end, RunEnd::Killed);
  EXPECT_EQ(back.outcome.number, 9);
  EXPECT_EQ(back.outcome.resultFile, finished.outcome.resultFile);
  EXPECT_EQ(back.outcome.out, "said");
  EXPECT_EQ(back.outcome.err, "complained");
  EXPECT_EQ(back.outcome.trace, "a\nb\n");
  EXPECT_EQ(back.outcome.wallSeconds, 1.5);
  EXPECT_EQ(back.outcome.cpuSeconds, 0.1);
  EXPECT_EQ(back.outcome.host, "node-1");
}

TEST(RunMessageTest, WhatIsNoUtf8IsSentAsAMarkInItsPlace) {
  Executor::Finished finished;
  finished.outcome.out = "a\xff";
  EXPECT_EQ(unpackFinished(packFinished(finished)).outcome.out, "a\xef\xbf\xbd");
}

TEST(RunMessageTest, DamagedMessagesAreRefused) {
  const auto whole = message(kRequest);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_THROW(static_cast<void>(unpackRequest(std::span(whole).first(length))), std::exception) << length;
  }
  auto longer = whole;
  longer[7] = std::byte{0xff};  // the most significant byte of the length
  EXPECT_THROW(static_cast<void>(unpackRequest(longer)), std::exception);
  EXPECT_THROW(static_cast<void>(unpackRequest(message("[1]"))), std::exception);
  EXPECT_THROW(static_cast<void>(unpackRequest(message("{}"))), std::exception);
  EXPECT_THROW(static_cast<void>(unpackFinished(message(kRequest))), std::exception);
}

TEST(RunMessageTest, WhatIsNoWholeNumberOfItsRangeIsRefused) {
  const std::string request = kRequest;
  for (const char* number :
       {"7.0", "1e3", "2147483648", "-2147483649", "18446744073709551615", "true", "\"7\"", "null"}) {
    std::string changed = request;
    changed.replace(changed.find(":7,") + 1, 1, number);
    EXPECT_THROW(static_cast<void>(unpackRequest(message(changed))), std::exception) << number;
  }
  std::string greatest = request;
  greatest.replace(greatest.find(":7,") + 1, 1, "2147483647");
  EXPECT_EQ(unpackRequest(message(greatest)).request.cpuLimitSeconds, 2147483647);
}

TEST(RunMessageTest, TheLengthOfTheJsonStandsAheadOfItWithItsLeastByteFirst) {
  const auto packed = packRequest(0, {});
  ASSERT_GT(packed.size(), 8U);
  const auto length = std::to_integer<std::size_t>(packed[0]) + 256 * std::to_integer<std::size_t>(packed[1]);
  EXPECT_EQ(length, packed.size() - 8);
  EXPECT_EQ(packed[8], std::byte{'{'});
}

TEST(RunMessageTest, AnEndThatThereIsNoneOfIsRefused) {
  Executor::Finished finished;
  for (const RunEnd end : {RunEnd::Exited, RunEnd::Replaced}) {
    finished.outcome.end = end;
    EXPECT_EQ(unpackFinished(packFinished(finished)).outcome.end, end);
  }
  for (const int end : {-1, static_cast<int>(RunEnd::Replaced) + 1}) {
    finished.outcome.end = static_cast<RunEnd>(end);
    EXPECT_THROW(static_cast<void>(unpackFinished(packFinished(finished))), std::runtime_error) << end;
  }
}

}  // namespace
}  // namespace controller
