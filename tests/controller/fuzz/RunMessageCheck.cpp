#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "Cluster/RunMessage.h"
#include "controller/fuzz/AllocatedBytes.h"
#include "controller/fuzz/ReaderChecks.h"

namespace fuzz {

namespace {

using Bytes = std::vector<std::byte>;

/// An array in an array takes, for one byte of the text, the head of the array, its place in the one around it and one on
/// the parser's stack, which grow by doubling.
constexpr std::size_t kFactor = 80;

constexpr std::size_t kLength = 8;

/// Where the other bytes begin behind the JSON, by the length ahead of it; nothing where that is more than there is.
std::optional<std::size_t> endOfText(Input input) {
  std::uint64_t length = 0;
  for (std::size_t i = 0; i < kLength && i < input.size(); ++i) {
    length |= std::uint64_t{input[i]} << (8 * i);
  }
  return input.size() < kLength || length > input.size() - kLength ? std::nullopt
                                                                   : std::optional(kLength + std::size_t{length});
}

auto partsOf(const controller::TicketedRequest& message) {
  const controller::RunRequest& request = message.request;
  return std::tuple(message.ticket, request.program, request.digest, request.arguments, request.timeLimitSeconds,
                    request.cpuLimitSeconds, request.greatestFileBytes, request.wantsTrace);
}

auto partsOf(const controller::Executor::Finished& message) {
  const controller::RunOutcome& outcome = message.outcome;
  return std::tuple(message.ticket, outcome.end, outcome.number, outcome.out, outcome.err, outcome.trace,
                    outcome.wallSeconds, outcome.cpuSeconds, outcome.host, outcome.resultFile);
}

Bytes packed(const controller::TicketedRequest& message) {
  return controller::packRequest(message.ticket, message.request);
}
Bytes packed(const controller::Executor::Finished& message) {
  return controller::packFinished(message);
}

/// Reads the message; what it took too much memory for is in `fault`.
template <typename Unpack>
auto readBy(Unpack unpack, Input input, std::string& fault) {
  std::optional<decltype(unpack(std::as_bytes(input)))> message;
  const AllocatedBytes allocated;
  try {
    message = unpack(std::as_bytes(input));
  } catch (const std::exception&) {
  }
  fault = allocated.excess(input.size(), kFactor);
  return message;
}

/// What is wrong with a message that was accepted.
template <typename Unpack, typename Message>
std::string faultOf(Unpack unpack, Input input, const Message& message) {
  if (!endOfText(input)) {
    return "a message that is cut off was read";
  }
  return partsOf(unpack(packed(message))) == partsOf(message) ? "" : "a message changes when it is sent on";
}

}  // namespace

std::string checkRunMessage(Input input) {
  std::string fault;
  const auto request = readBy(controller::unpackRequest, input, fault);
  if (fault.empty() && request) {
    fault = faultOf(controller::unpackRequest, input, *request);
  }
  if (!fault.empty()) {
    return "request: " + fault;
  }
  const auto finished = readBy(controller::unpackFinished, input, fault);
  if (fault.empty() && finished) {
    fault = faultOf(controller::unpackFinished, input, *finished);
    if (fault.empty() &&
        !std::ranges::equal(std::as_bytes(input.subspan(*endOfText(input))), finished->outcome.resultFile)) {
      fault = "the result file is not what stands behind the text";
    }
  }
  return fault.empty() ? "" : "answer: " + fault;
}

}  // namespace fuzz
