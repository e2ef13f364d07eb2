#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Process/ResultFile.h"
#include "controller/fuzz/AllocatedBytes.h"
#include "controller/fuzz/ReaderChecks.h"

namespace fuzz {

namespace {

/// A row of one observation takes a node of a map, its vector and a copy, for the 15 bytes that it has in the file.
constexpr std::size_t kFactor = 16;

constexpr std::size_t kHead = 256;

/// What a file holds: for each variable its observations, as their bits.
struct Content {
  std::string version;
  std::map<std::uint64_t, std::vector<std::uint64_t>> rows;
  bool operator==(const Content&) const = default;
};

/// Reads a file by its grammar, and gives nothing for one that does not follow it.
class PlainFile {
 public:
  PlainFile(Input bytes, bool isTerminating) : bytes_(bytes), isTerminating_(isTerminating) {}

  std::optional<Content> read() {
    if (!readHead()) {
      return {};
    }
    for (std::size_t at = kHead; at < bytes_.size();) {
      // A message that is cut off in its length has the length 0.
      const std::uint64_t length = fits(at, 4) ? number(at, 4) : 0;
      if (length < 9 || !fits(at, length) || !readMessage(bytes_.subspan(at, length))) {
        return {};
      }
      at += length;
    }
    const std::size_t batches = isTerminating_ ? 3 : 1;
    for (const auto& [variable, row] : content_.rows) {
      if (row.size() < batches || (isTerminating_ && row.size() > batches)) {
        return {};
      }
    }
    return content_.rows.empty() ? std::nullopt : std::optional(content_);
  }

 private:
  bool readHead() {
    if (!fits(0, kHead)) {
      return false;
    }
    const std::string head(bytes_.begin(), bytes_.begin() + kHead);
    const std::string before = "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=";
    const std::string behind = std::string(",FILE_VER=1,EXPERIMENTS=1,SEED=99,RANDOMGEN=Mersenne Twister,BATCHES=") +
                               (isTerminating_ ? "3" : "0") + ",,";
    const std::size_t comma = head.find(',', before.size());
    content_.version = head.substr(before.size(), comma - before.size());
    std::string whole = before + content_.version + behind;
    whole.resize(kHead, '\0');
    return comma != std::string::npos && head == whole && content_.version.find('\0') == std::string::npos;
  }

  bool readMessage(Input message) {
    const PlainFile inside(message, isTerminating_);
    if (inside.number(4, 1) != 0 || inside.number(5, 2) != 1) {
      return false;
    }
    std::size_t at = 9;
    for (std::uint64_t records = inside.number(7, 2); records > 0; --records) {
      if (!inside.fits(at, 7) || inside.number(at, 2) >= 0x8000 || inside.number(at + 2, 1) != 1) {
        return false;
      }
      std::vector<std::uint64_t>& row = content_.rows[inside.number(at, 2)];
      std::uint64_t count = inside.number(at + 3, 4);
      if (count == 0 || !inside.fits(at + 7, 8 * count)) {
        return false;
      }
      for (at += 7; count > 0; --count, at += 8) {
        row.push_back(inside.number(at, 8));
      }
    }
    return at == message.size();
  }

  [[nodiscard]] bool fits(std::size_t at, std::uint64_t count) const {
    return at <= bytes_.size() && count <= bytes_.size() - at;
  }
  [[nodiscard]] std::uint64_t number(std::size_t at, std::size_t width) const {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes_.subspan(at, width)) {
      value = value * 256 + byte;
    }
    return value;
  }

  Input bytes_;
  bool isTerminating_;
  Content content_;
};

/// The reader's answer, and in `excess` what it took too much memory for.
std::optional<Content> readByReader(Input input, bool isTerminating, std::string& excess) {
  const controller::ExpectedFile expected{99, 2, 1, isTerminating, isTerminating ? 3 : 1};
  const AllocatedBytes allocated;
  controller::UnitObservations unit;
  bool isRefused = false;
  try {
    unit = controller::readResultFile(std::as_bytes(input), expected);
  } catch (const controller::ResultFileError&) {
    isRefused = true;
  }
  excess = allocated.excess(input.size(), kFactor);
  if (isRefused) {
    return {};
  }
  Content content{unit.simulatorVersion, {}};
  for (const controller::VariableObservations& variable : unit.variables) {
    for (const double value : variable.values) {
      content.rows[static_cast<std::uint64_t>(variable.variable)].push_back(std::bit_cast<std::uint64_t>(value));
    }
  }
  return content;
}

}  // namespace

std::string checkResultFile(Input input) {
  for (const bool isTerminating : {true, false}) {
    const std::optional<Content> expected = PlainFile(input, isTerminating).read();
    std::string excess;
    const std::optional<Content> found = readByReader(input, isTerminating, excess);
    if (!excess.empty()) {
      return excess;
    }
    if (expected != found) {
      return std::string(isTerminating ? "terminating: " : "steady state: ") + (!expected ? "a faulty file was read"
                                                                                : !found  ? "a sound file was refused"
                                                                                          : "other values were read");
    }
  }
  return "";
}

}  // namespace fuzz
