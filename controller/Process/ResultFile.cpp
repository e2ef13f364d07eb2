#include "Process/ResultFile.h"

#include <fmt/format.h>

#include <bit>
#include <map>
#include <string_view>
#include <utility>

#include "Process/ByteOrder.h"

namespace controller {
namespace {

constexpr std::size_t kHeadBytes = 256;
constexpr std::size_t kMessageHeadBytes = 9;
constexpr std::size_t kRecordHeadBytes = 7;
constexpr std::size_t kDoubleBytes = 8;
constexpr std::uint64_t kObservationKind = 1;

[[noreturn]] void refuse(const std::string& text) {
  throw ResultFileError(text);
}

/// Bytes from front to back, numbers with their most significant byte first.
class Reader {
 public:
  explicit Reader(std::span<const std::byte> bytes) : bytes_(bytes) {}

  [[nodiscard]] std::size_t position() const { return position_; }
  [[nodiscard]] std::size_t left() const { return bytes_.size() - position_; }

  std::uint64_t number(std::size_t width) {
    std::uint64_t value = 0;
    for (const std::byte byte : take(width)) {
      value = value << 8 | std::to_integer<std::uint64_t>(byte);
    }
    return value;
  }

  std::span<const std::byte> take(std::size_t count) {
    if (count > left()) {
      refuse(fmt::format("the result file is cut off at byte {}: {} more bytes should follow byte {}", bytes_.size(),
                         count, position_));
    }
    const auto taken = bytes_.subspan(position_, count);
    position_ += count;
    return taken;
  }

 private:
  std::span<const std::byte> bytes_;
  std::size_t position_ = 0;
};

/// Compares the head with the only text that it can have; gives the simulator's version, the one part that is open.
std::string readHead(Reader& reader, const ExpectedFile& expected) {
  if (reader.left() < kHeadBytes) {
    refuse(fmt::format("the result file has {} bytes, and its head alone has {}", reader.left(), kHeadBytes));
  }
  const auto bytes = reader.take(kHeadBytes);
  const std::string_view head(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const std::string_view text = head.substr(0, head.find('\0'));
  constexpr std::string_view kBegin = "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=";
  if (!text.starts_with(kBegin) || head.find_first_not_of('\0', text.size()) != std::string_view::npos) {
    refuse("the result file does not begin with the head of a binary result file");
  }
  const std::string_view behind = text.substr(kBegin.size());
  const std::string_view version = behind.substr(0, behind.find(','));
  // A steady-state run does not count its batches there.
  const std::string rest =
      fmt::format(",FILE_VER=1,EXPERIMENTS={},SEED={},RANDOMGEN={},BATCHES={},,", expected.experiment, expected.seed,
                  generatorName(expected.generator), expected.isTerminating ? expected.batches : 0);
  if (behind.substr(version.size()) != rest) {
    refuse(fmt::format("the head of the result file ends in \"{}\" and should in \"{}\"", behind.substr(version.size()),
                       rest));
  }
  return std::string(version);
}

using Rows = std::map<std::int32_t, std::vector<double>>;

void readRecord(Reader& reader, std::size_t endOfMessage, Rows& rows) {
  const std::size_t start = reader.position();
  if (endOfMessage - start < kRecordHeadBytes) {
    refuse(fmt::format("the message that ends at byte {} has no room for the record at byte {}", endOfMessage, start));
  }
  const std::uint64_t variable = reader.number(2);
  const std::uint64_t kind = reader.number(1);
  const std::uint64_t count = reader.number(4);
  const std::size_t room = (endOfMessage - reader.position()) / kDoubleBytes;
  if (variable > 0x7fff || kind != kObservationKind || count == 0) {
    refuse(fmt::format("the record at byte {} is of variable {}, kind {}, with {} observations", start, variable, kind,
                       count));
  }
  if (count > room) {
    refuse(fmt::format("the record at byte {} announces {} observations, and its message has room for {}", start, count,
                       room));
  }
  std::vector<double>& values = rows[static_cast<std::int32_t>(variable)];
  const auto bytes = reader.take(static_cast<std::size_t>(count) * kDoubleBytes);
  const std::size_t before = values.size();
  values.resize(before + static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < count; ++i) {
    values[before + i] = std::bit_cast<double>(readEight<std::endian::big>(bytes.data() + i * kDoubleBytes));
  }
}

void readMessage(Reader& reader, const ExpectedFile& expected, Rows& rows) {
  const std::size_t start = reader.position();
  if (reader.left() < kMessageHeadBytes) {
    refuse(fmt::format("the result file is cut off in the head of the message at byte {}", start));
  }
  const std::uint64_t length = reader.number(4);
  if (length < kMessageHeadBytes || length - 4 > reader.left()) {
    refuse(fmt::format("the message at byte {} announces {} bytes, and {} are left", start, length, reader.left() + 4));
  }
  const std::size_t end = start + static_cast<std::size_t>(length);
  const std::uint64_t client = reader.number(1);
  const std::uint64_t experiment = reader.number(2);
  const std::uint64_t records = reader.number(2);
  if (client != 0 || experiment != (static_cast<std::uint32_t>(expected.experiment) & 0xffffU)) {
    refuse(fmt::format("the message at byte {} is of client {} and experiment {}", start, client, experiment));
  }
  for (std::uint64_t record = 0; record < records; ++record) {
    readRecord(reader, end, rows);
  }
  if (reader.position() != end) {
    refuse(fmt::format("the message at byte {} ends at byte {}, and its records at byte {}", start, end,
                       reader.position()));
  }
}

void requireBatches(const Rows& rows, const ExpectedFile& expected) {
  if (rows.empty()) {
    refuse("the result file holds no observation");
  }
  for (const auto& [variable, values] : rows) {
    const auto count = static_cast<std::int64_t>(values.size());
    if (expected.isTerminating ? count != expected.batches : count < expected.batches) {
      refuse(fmt::format("the result file holds {} observations of variable {}, and {} batches were asked for", count,
                         variable, expected.batches));
    }
  }
}

}  // namespace

const char* generatorName(std::int32_t generator) {
  constexpr const char* kNames[] = {"Lagged Fibonacci", "Tausworthe", "Mersenne Twister"};
  if (generator < 0 || generator > 2) {
    throw std::out_of_range(fmt::format("there is no generator {}", generator));
  }
  return kNames[generator];
}

UnitObservations readResultFile(std::span<const std::byte> file, const ExpectedFile& expected) {
  Reader reader(file);
  UnitObservations result;
  result.simulatorVersion = readHead(reader, expected);
  Rows rows;
  while (reader.left() > 0) {
    readMessage(reader, expected, rows);
  }
  requireBatches(rows, expected);
  for (auto& [variable, values] : rows) {
    result.variables.push_back({variable, std::move(values)});
  }
  return result;
}

}  // namespace controller
