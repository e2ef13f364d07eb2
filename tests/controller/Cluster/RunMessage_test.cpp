#include "Cluster/RunMessage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace controller {
namespace {

using testing::ElementsAre;

std::vector<std::byte> bytesOf(const std::string& text) {
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

/// A message put together by hand: eight bytes of length, the least significant first, and what follows.
std::vector<std::byte> message(std::size_t length, const std::string& rest) {
  return bytesOf(std::string(1, static_cast<char>(length)) + std::string(7, '\0') + rest);
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
  EXPECT_EQ(back.outcome.wallSeconds, 1.5);
  EXPECT_EQ(back.outcome.cpuSeconds, 0.1);
  EXPECT_EQ(back.outcome.host, "node-1");
}

TEST(RunMessageTest, WordsThatAreNoUtf8ComeBackWithReplacements) {
  Executor::Finished finished;
  finished.outcome.out =
      "a\xff"
      "b";
  EXPECT_EQ(unpackFinished(packFinished(finished)).outcome.out,
            "a\xEF\xBF\xBD"
            "b");
}

TEST(RunMessageTest, TheLengthOfTheJsonStandsAheadOfItWithItsLeastByteFirst) {
  const auto packed = packRequest(0, {});
  ASSERT_GT(packed.size(), 8U);
  const auto length = std::to_integer<std::size_t>(packed[0]) + 256 * std::to_integer<std::size_t>(packed[1]);
  EXPECT_EQ(length, packed.size() - 8);
  EXPECT_EQ(packed[8], std::byte{'{'});
}

TEST(RunMessageTest, WhatIsNoMessageIsRefused) {
  const auto whole = packRequest(0, {});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_THROW(static_cast<void>(unpackRequest(std::span(whole).first(length))), std::exception) << length;
  }
  EXPECT_THROW(static_cast<void>(unpackRequest(message(3, "{}"))), std::runtime_error);
  EXPECT_THROW(static_cast<void>(unpackRequest(message(2, "{}"))), std::exception);
  auto endless = whole;
  endless[7] = std::byte{0xff};  // beyond any memory
  EXPECT_THROW(static_cast<void>(unpackRequest(endless)), std::runtime_error);
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
