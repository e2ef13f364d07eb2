#include "Cluster/RunMessage.h"

#include <bit>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>

#include "Process/ByteOrder.h"

namespace controller {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kLengthBytes = sizeof(std::uint64_t);

/// The length of the JSON, the JSON, and other bytes behind it.
std::vector<std::byte> pack(const Json& json, std::span<const std::byte> rest) {
  // Simulators may print what is no UTF-8.
  const std::string text = json.dump(-1, ' ', true, Json::error_handler_t::replace);
  std::vector<std::byte> bytes(kLengthBytes);
  bytes.reserve(kLengthBytes + text.size() + rest.size());
  writeEight<std::endian::little>(bytes.data(), text.size());
  const auto letters = std::as_bytes(std::span(text));
  bytes.insert(bytes.end(), letters.begin(), letters.end());
  bytes.insert(bytes.end(), rest.begin(), rest.end());
  return bytes;
}

struct Parts {
  Json json;
  std::span<const std::byte> rest;
};

Parts unpack(std::span<const std::byte> bytes) {
  const bool hasLength = bytes.size() >= kLengthBytes;
  const std::uint64_t length = hasLength ? readEight<std::endian::little>(bytes.data()) : 0;
  if (!hasLength || length > bytes.size() - kLengthBytes) {
    throw std::runtime_error("a message between processes is cut off");
  }
  const auto* const text = reinterpret_cast<const char*>(bytes.data()) + kLengthBytes;
  return {Json::parse(text, text + length), bytes.subspan(kLengthBytes + static_cast<std::size_t>(length))};
}

/// A whole number that a variable of the type holds. A conversion would take a fraction too, and cut what is too large.
template <typename Number>
void getWhole(const Json& json, const char* name, Number& number) {
  const Json& value = json.at(name);
  const bool isWhole = value.is_number_integer() &&
                       (!value.is_number_unsigned() || std::in_range<std::int64_t>(value.get<std::uint64_t>()));
  if (!isWhole || !std::in_range<Number>(value.get<std::int64_t>())) {
    throw std::runtime_error(std::string("a message between processes has no whole number for ") + name);
  }
  number = value.get<Number>();
}

}  // namespace

std::vector<std::byte> packRequest(std::int64_t ticket, const RunRequest& request) {
  return pack({{"ticket", ticket},
               {"program", request.program},
               {"digest", request.digest},
               {"arguments", request.arguments},
               {"timeLimitSeconds", request.timeLimitSeconds},
               {"cpuLimitSeconds", request.cpuLimitSeconds},
               {"greatestFileBytes", request.greatestFileBytes},
               {"wantsTrace", request.wantsTrace}},
              {});
}

TicketedRequest unpackRequest(std::span<const std::byte> bytes) {
  const Json json = unpack(bytes).json;
  TicketedRequest result;
  getWhole(json, "ticket", result.ticket);
  json.at("program").get_to(result.request.program);
  json.at("digest").get_to(result.request.digest);
  json.at("arguments").get_to(result.request.arguments);
  json.at("timeLimitSeconds").get_to(result.request.timeLimitSeconds);
  getWhole(json, "cpuLimitSeconds", result.request.cpuLimitSeconds);
  getWhole(json, "greatestFileBytes", result.request.greatestFileBytes);
  json.at("wantsTrace").get_to(result.request.wantsTrace);
  return result;
}

std::vector<std::byte> packFinished(const Executor::Finished& finished) {
  const RunOutcome& outcome = finished.outcome;
  return pack({{"ticket", finished.ticket},
               {"end", static_cast<int>(outcome.end)},
               {"number", outcome.number},
               {"out", outcome.out},
               {"err", outcome.err},
               {"trace", outcome.trace},
               {"wallSeconds", outcome.wallSeconds},
               {"cpuSeconds", outcome.cpuSeconds},
               {"host", outcome.host}},
              outcome.resultFile);
}

Executor::Finished unpackFinished(std::span<const std::byte> bytes) {
  const Parts parts = unpack(bytes);
  Executor::Finished finished;
  getWhole(parts.json, "ticket", finished.ticket);
  int end = 0;
  getWhole(parts.json, "end", end);
  if (end < 0 || end > static_cast<int>(RunEnd::Replaced)) {
    throw std::runtime_error("a message between processes tells of an end that there is none of");
  }
  finished.outcome.end = static_cast<RunEnd>(end);
  getWhole(parts.json, "number", finished.outcome.number);
  parts.json.at("out").get_to(finished.outcome.out);
  parts.json.at("err").get_to(finished.outcome.err);
  parts.json.at("trace").get_to(finished.outcome.trace);
  parts.json.at("wallSeconds").get_to(finished.outcome.wallSeconds);
  parts.json.at("cpuSeconds").get_to(finished.outcome.cpuSeconds);
  parts.json.at("host").get_to(finished.outcome.host);
  finished.outcome.resultFile.assign(parts.rest.begin(), parts.rest.end());
  return finished;
}

}  // namespace controller
