// The result files: one line per observation in the ASCII file, a header of fixed size and the data messages in the
// binary one. A file that cannot be opened leaves its stream in the failed state, in which every write is lost, and the
// run goes on.

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <ostream>
#include <string>

#include "Simulator/DataPacket.h"
#include "Simulator/HeaderText.h"
#include "Simulator/SimulatorClass.h"

namespace {

constexpr const char* kProgramVersion = "Version 2.5";
constexpr int kAsciiFileVersion = 1;
constexpr int BinFileVersion = 1;
constexpr std::size_t headerSize = 256;

constexpr int kDecimals = 10;
// The largest double takes 309 digits, a sign, a point, ten decimals and the closing zero byte: 322.
constexpr std::size_t kValueCapacity = 330;
// An index, two values, two commas and a line feed.
constexpr std::size_t kLineCapacity = 16 + 2 * kValueCapacity;

// Line feeds are to be the same bytes on every platform.
constexpr std::ios::openmode kNewFile = std::ios::out | std::ios::trunc | std::ios::binary;

/// The seed in use: 0 on the command line stands for the default.
std::uint32_t seedInUse(std::uint32_t seed) {
  return seed == 0 ? SimulatorClass::DEFAULT_SEED : seed;
}

/// Closes a file for good. What could not be written is lost, also when there is room again by now: a part of it may stand
/// in the file already, and all of it would follow that part.
void closeFile(std::ofstream& stream) {
  struct Buffer : std::filebuf {
    static void drop(std::filebuf& buffer) { (buffer.*(&Buffer::setp))(nullptr, nullptr); }
  };
  if (stream.fail()) {
    Buffer::drop(*stream.rdbuf());
  }
  stream.close();
}

/// Collects lines and writes them to a stream in large pieces, the last one at the end of its scope.
class LineWriter {
 public:
  explicit LineWriter(std::ostream& stream) : stream_(stream) {}
  LineWriter(const LineWriter&) = delete;
  LineWriter& operator=(const LineWriter&) = delete;
  ~LineWriter() { writeOut(); }

  /// Where the next line goes: kLineCapacity characters.
  char* beginLine() {
    if (lines_.size() - used_ < kLineCapacity) {
      writeOut();
    }
    return lines_.data() + used_;
  }
  /// Takes over what was written up to `end`.
  void endLine(const char* end) { used_ = static_cast<std::size_t>(end - lines_.data()); }

 private:
  void writeOut() {
    stream_.write(lines_.data(), static_cast<std::streamsize>(used_));
    used_ = 0;
  }

  std::ostream& stream_;
  std::array<char, 16 * 1024> lines_;  // on purpose without a start value: only the first used_ characters are read
  std::size_t used_ = 0;
};

}  // namespace

std::ofstream* SimulatorClass::CreateAsciiFile(const char* /*name*/) {
  auto* const stream = new std::ofstream(ASCIIFilename, kNewFile);
  *stream << "#QUORVA_SIM_ASCII_FILE,"
          << "QUORVA_VER=" << kProgramVersion << ","
          << "FILE_VER=" << kAsciiFileVersion << ","
          << "EXPERIMENTS=" << TheExperimentNumber << ","
          << "SEED=" << seedInUse(RandomNumberSeed) << ","
          << "RANDOMGEN=" << to_string(RandomNumberGenerator) << '\n';
  *stream << "#FORMAT: (PV ID Number),(PV Value)\n";
  stream->flush();  // whoever looks at the file before the first report finds its head
  return stream;
}

void SimulatorClass::CloseAsciiFile(std::ofstream& stream) {
  stream << "#META_DATA,"
         << "BATCHES=" << BatchRuns << '\n';
  closeFile(stream);
}

void SimulatorClass::OutputDataCSV(std::ostream& ostr, DataPacket* dp, DataPacket* dpsqr) {
  {
    LineWriter writer(ostr);
    const auto appendValue = [this](char* end, double value) {
      *end++ = ',';
      RemoveTrailingZeros(end, value);
      return end + std::strlen(end);
    };
    for (int i = 0; i < NumPVs; ++i) {
      const int count = dp->GetNumObs(i);
      const double* const values = dp->GetObsArray(i);
      const double* const squares = dpsqr != nullptr ? dpsqr->GetObsArray(i) : nullptr;
      for (int n = 0; n < count; ++n) {
        char* const line = writer.beginLine();
        char* end = std::to_chars(line, line + kLineCapacity, i).ptr;
        end = appendValue(end, values[n]);
        if (squares != nullptr) {
          end = appendValue(end, squares[n]);
        }
        *end++ = '\n';
        writer.endLine(end);
      }
    }
  }
  ostr.flush();
}

void SimulatorClass::RemoveTrailingZeros(char* str, double value) {
  // The text of "%.10lf", several times faster and in no locale but the plain one.
  char* const end = std::to_chars(str, str + kValueCapacity - 1, value, std::chars_format::fixed, kDecimals).ptr;
  char* last = end - 1;
  while (last > str && *last == '0' && *(last - 1) != '.') {
    --last;
  }
  *(last + 1) = '\0';
}

std::ofstream* SimulatorClass::CreateBinFile(const char* name) {
  auto* const stream = new std::ofstream;
  if (name == nullptr) {
    // The manager named no file: lost output, as with a name that cannot be opened.
    stream->setstate(std::ios::failbit);
    return stream;
  }
  stream->open(name, kNewFile);
  const std::string header = CreateBinFileHeader(BinFileVersion);
  stream->write(header.data(), static_cast<std::streamsize>(header.size()));
  stream->flush();
  return stream;
}

void SimulatorClass::UpdateBinFileHeader(std::ofstream& stream) {
  const std::string header = CreateBinFileHeader(BinFileVersion);
  stream.seekp(0);
  stream.write(header.data(), static_cast<std::streamsize>(header.size()));
  stream.seekp(0, std::ios::end);
}

void SimulatorClass::CloseBinFile(std::ofstream& stream) {
  UpdateBinFileHeader(stream);
  closeFile(stream);
}

std::string SimulatorClass::CreateBinFileHeader(int fileVersion) {
  std::string text = "QUORVA_SIM_BIN_FILE,";
  text += std::to_string(headerSize);
  text += std::string(",QUORVA_VER=") + kProgramVersion;
  text += ",FILE_VER=" + std::to_string(fileVersion);
  text += ",EXPERIMENTS=" + std::to_string(TheExperimentNumber);

  const std::array<std::string, 3> entries = {
      ",SEED=" + std::to_string(seedInUse(RandomNumberSeed)),
      std::string(",RANDOMGEN=") + to_string(RandomNumberGenerator),
      ",BATCHES=" + std::to_string(BatchRuns) + ",",
  };
  return support::headerText(std::move(text), entries, headerSize);
}
