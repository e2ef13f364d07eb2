#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "Simulator/ResultsTest.h"
#include "support/TemporaryFile.h"

namespace {

using support::bytes;
using support::TemporaryFile;

class ResultFilesTest : public support::ResultsTest {
 protected:
  std::string formatted(double value) {
    std::array<char, 330> text;
    text.fill('x');
    simulator->RemoveTrailingZeros(text.data(), value);
    return text.data();
  }

  std::string csvOf(DataPacket* packet, DataPacket* squares = nullptr) {
    std::ostringstream stream;
    simulator->OutputDataCSV(stream, packet, squares);
    return stream.str();
  }
};

/// `text` filled up with zero bytes to the size of a binary header.
std::string header(std::string text) {
  text.resize(256, '\0');
  return text;
}

// ---- One value ------------------------------------------------------------------------------------------------------

/// An independent form of the same: what the runtime prints, cut by hand.
std::string printedAndCut(double value) {
  std::array<char, 400> text{};
  std::snprintf(text.data(), text.size(), "%.10f", value);
  std::string result = text.data();
  while (result.size() > 2 && result.back() == '0' && result[result.size() - 2] != '.') {
    result.pop_back();
  }
  return result;
}

TEST_F(ResultFilesTest, AValueLosesItsTrailingZerosButOne) {
  start(1);
  EXPECT_EQ(formatted(1.5), "1.5");
  EXPECT_EQ(formatted(2.0), "2.0");
  EXPECT_EQ(formatted(0.0), "0.0");
  EXPECT_EQ(formatted(100.0), "100.0");
  EXPECT_EQ(formatted(10.01), "10.01");
  EXPECT_EQ(formatted(0.1234567891), "0.1234567891");
  EXPECT_EQ(formatted(1.0 / 3.0), "0.3333333333");
  EXPECT_EQ(formatted(2.0 / 3.0), "0.6666666667");
}

TEST_F(ResultFilesTest, ANegativeValueKeepsItsSign) {
  start(1);
  EXPECT_EQ(formatted(-1.25), "-1.25");
  EXPECT_EQ(formatted(-3.0), "-3.0");
}

TEST_F(ResultFilesTest, ValuesAreTakenToTenPlaces) {
  start(1);
  EXPECT_EQ(formatted(0.00000000004), "0.0");
  EXPECT_EQ(formatted(0.00000000006), "0.0000000001");
  EXPECT_EQ(formatted(0.99999999999), "1.0");
  EXPECT_EQ(formatted(DBL_MIN), "0.0");
}

TEST_F(ResultFilesTest, TheLargestDoubleHas309Digits) {
  start(1);
  const std::string largest = formatted(DBL_MAX);
  EXPECT_EQ(largest.size(), 311U);
  EXPECT_EQ(largest.substr(0, 17), "17976931348623157");  // 2^1024 - 2^971
  EXPECT_EQ(largest.substr(309), ".0");
  EXPECT_EQ(formatted(-DBL_MAX), "-" + largest);
}

TEST_F(ResultFilesTest, ValuesThatAreNoNumbersPrintAsThePlatformPrintsThem) {
  start(1);
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double value : {infinity, -infinity, nan, std::copysign(nan, -1.0)}) {
    EXPECT_EQ(formatted(value), printedAndCut(value));
  }
}

TEST_F(ResultFilesTest, ExactlyHalfwayValuesRoundAsThePlatformRoundsThem) {
  start(1);
  // k / 2^11 has eleven decimals, the last one a 5.
  EXPECT_EQ(formatted(1.0 / 2048), "0.0004882812");  // 0.00048828125, to the even neighbour
  for (int k = 1; k < 20000; k += 2) {
    const double value = k / 2048.0;
    ASSERT_EQ(formatted(value), printedAndCut(value)) << "k " << k;
  }
}

TEST_F(ResultFilesTest, RandomValuesPrintAsThePlatformPrintsThem) {
  start(1);
  std::mt19937_64 random(20240607);
  for (int i = 0; i < 100000; ++i) {
    double value = 0.0;
    if (i % 2 == 0) {  // any bits
      const std::uint64_t bits = random();
      std::memcpy(&value, &bits, sizeof value);
    } else {  // observations of ordinary size
      value =
          static_cast<double>(static_cast<std::int64_t>(random())) * std::ldexp(1.0, -static_cast<int>(random() % 64));
    }
    ASSERT_EQ(formatted(value), printedAndCut(value)) << "step " << i;
  }
}

// ---- ASCII file -----------------------------------------------------------------------------------------------------

TEST_F(ResultFilesTest, TheLinesGoByVariableAndNameItsIndex) {
  start(3);
  const auto packet = packetOf({{1.5, 2.0}, {}, {-0.25}});
  EXPECT_EQ(csvOf(packet.get()), "0,1.5\n0,2.0\n2,-0.25\n");
}

TEST_F(ResultFilesTest, ASquaredPacketAddsAColumn) {
  start(2);
  const auto packet = packetOf({{1.5, 2.0}, {3.0}});
  const auto squares = packetOf({{2.25, 4.0}, {9.0}});
  EXPECT_EQ(csvOf(packet.get(), squares.get()), "0,1.5,2.25\n0,2.0,4.0\n1,3.0,9.0\n");
}

TEST_F(ResultFilesTest, APacketWithoutObservationsLeavesNoLine) {
  start(2);
  const auto packet = packetOf({{}, {}});
  EXPECT_EQ(csvOf(packet.get()), "");
}

TEST_F(ResultFilesTest, ALargeReportIsWrittenWhole) {
  constexpr int kVariables = 11;
  constexpr int kObservations = 1000;
  start(kVariables);
  DataPacket packet(0, 0, kVariables, kObservations);
  std::string expected;
  for (int pv = 0; pv < kVariables; ++pv) {
    packet.SetNumObs(pv, kObservations);
    for (int n = 0; n < kObservations; ++n) {
      // Every thirtieth value has 309 digits, so that pieces of every length meet the ends of the writer's buffer.
      const double value = n % 30 == 0 ? -DBL_MAX : n / 4.0;
      packet.SetObs(pv, n, value);
      expected += std::to_string(pv) + "," + printedAndCut(value) + "\n";
    }
  }
  EXPECT_EQ(csvOf(&packet), expected);
}

TEST_F(ResultFilesTest, TheAsciiFileHasTwoHeadLinesAndTheBatchesAtItsEnd) {
  const TemporaryFile file("csv");
  SimulatorProbe& probe = start(1, {"-N5", std::string("-a") + file.name()});
  ASSERT_NE(probe.FileCSV, nullptr);
  probe.OutputDataCSV(*probe.FileCSV, packetOf({{4.0}}).get(), nullptr);
  const std::string head =
      "#QUORVA_SIM_ASCII_FILE,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,RANDOMGEN=Lagged Fibonacci\n"
      "#FORMAT: (PV ID Number),(PV Value)\n";
  EXPECT_EQ(file.bytes(), head + "0,4.0\n");  // flushed with the report
  probe.BatchRuns = 5;
  probe.CloseAsciiFile(*probe.FileCSV);
  EXPECT_FALSE(probe.FileCSV->is_open());
  EXPECT_EQ(file.bytes(), head + "0,4.0\n#META_DATA,BATCHES=5\n");
  delete probe.FileCSV;
  probe.FileCSV = nullptr;
}

TEST_F(ResultFilesTest, TheAsciiFileNamesExperimentSeedAndGeneratorInUse) {
  const TemporaryFile file("csv");
  SimulatorProbe& probe = start(1);
  probe.TheExperimentNumber = 4294967295U;
  probe.RandomNumberSeed = 4000000000U;
  probe.RandomNumberGenerator = SimulatorClass::MERSENNE_TWISTER;
  probe.ASCIIFilename = new char[std::strlen(file.name()) + 1];
  std::strcpy(probe.ASCIIFilename, file.name());
  probe.FileCSV = probe.CreateAsciiFile(probe.ASCIIFilename);
  probe.FileCSV->flush();
  EXPECT_EQ(file.bytes(),
            "#QUORVA_SIM_ASCII_FILE,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=4294967295,SEED=4000000000,"
            "RANDOMGEN=Mersenne Twister\n#FORMAT: (PV ID Number),(PV Value)\n");
}

TEST_F(ResultFilesTest, SeedZeroReadsAsTheDefaultInBothFiles) {
  const TemporaryFile csv("csv");
  const TemporaryFile bin("bin");
  start(1, {"-N1", "-s0", std::string("-a") + csv.name(), std::string("-b") + bin.name()});
  simulator.reset();
  EXPECT_NE(csv.bytes().find(",SEED=31415,"), std::string::npos);
  EXPECT_NE(bin.bytes().find(",SEED=31415,"), std::string::npos);
}

TEST_F(ResultFilesTest, AnExistingFileIsTruncated) {
  const TemporaryFile csv("csv");
  const TemporaryFile bin("bin");
  std::ofstream(csv.name()) << std::string(1000, 'o');
  std::ofstream(bin.name()) << std::string(1000, 'o');
  start(1, {"-N1", std::string("-a") + csv.name(), std::string("-b") + bin.name()});
  simulator.reset();
  EXPECT_EQ(csv.bytes().find('o' + std::string("o")), std::string::npos);
  EXPECT_EQ(bin.bytes().size(), 256U);
}

// ---- Flushing -------------------------------------------------------------------------------------------------------

TEST_F(ResultFilesTest, BothFilesAreHeadedAtOnce) {
  const TemporaryFile csv("csv");
  const TemporaryFile bin("bin");
  start(1, {"-N1", std::string("-a") + csv.name(), std::string("-b") + bin.name()});
  EXPECT_EQ(csv.bytes(),
            "#QUORVA_SIM_ASCII_FILE,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,"
            "RANDOMGEN=Lagged Fibonacci\n#FORMAT: (PV ID Number),(PV Value)\n");
  EXPECT_EQ(bin.bytes(), header("QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,"
                                "RANDOMGEN=Lagged Fibonacci,BATCHES=0,,"));
}

/// A stream that knows how much of it was flushed.
class FlushNotingStream : public std::ostream {
 public:
  FlushNotingStream() : std::ostream(&buffer_) {}

  [[nodiscard]] std::string written() const { return buffer_.str(); }
  [[nodiscard]] std::string flushed() const { return buffer_.flushed; }

 private:
  struct Buffer : std::stringbuf {
    int sync() override {
      flushed = str();
      return 0;
    }
    std::string flushed;
  };
  Buffer buffer_;
};

TEST_F(ResultFilesTest, AReportIsFlushedAtItsEndInEitherForm) {
  start(2);
  const auto packet = packetOf({{1.5, 2.0}, {-0.25}});
  FlushNotingStream lines;
  simulator->OutputDataCSV(lines, packet.get(), nullptr);
  EXPECT_EQ(lines.flushed(), "0,1.5\n0,2.0\n1,-0.25\n");
  FlushNotingStream message;
  simulator->OutputDataBinary(nullptr, &message, packet.get(), nullptr);
  EXPECT_EQ(message.flushed().size(), 9U + 7 * 2 + 8 * 3);
  EXPECT_EQ(message.flushed(), message.written());
}

// ---- Binary file ----------------------------------------------------------------------------------------------------

TEST_F(ResultFilesTest, TheHeaderIsTextToItsTwoCommasAndZeroBytesTo256) {
  SimulatorProbe& probe = start(1);
  probe.BatchRuns = 1000;
  EXPECT_EQ(probe.CreateBinFileHeader(1),
            header("QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,"
                   "RANDOMGEN=Lagged Fibonacci,BATCHES=1000,,"));
}

TEST_F(ResultFilesTest, TheHeaderHasRoomForTheLongestNumbers) {
  SimulatorProbe& probe = start(1);
  probe.TheExperimentNumber = 4294967295U;
  probe.RandomNumberSeed = 4294967295U;
  probe.BatchRuns = 2147483647;
  probe.RandomNumberGenerator = SimulatorClass::TAUSWORTHE;
  EXPECT_EQ(probe.CreateBinFileHeader(-2147483647 - 1),
            header("QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=-2147483648,EXPERIMENTS=4294967295,"
                   "SEED=4294967295,RANDOMGEN=Tausworthe,BATCHES=2147483647,,"));
}

TEST_F(ResultFilesTest, AGeneratorOutsideTheListIsUnknown) {
  SimulatorProbe& probe = start(1);
  probe.RandomNumberGenerator = SimulatorClass::MAX_NUM_GENERATORS;
  EXPECT_NE(probe.CreateBinFileHeader(1).find(",RANDOMGEN=Unknown,"), std::string::npos);
}

TEST_F(ResultFilesTest, ABinaryFileWithoutMessagesIsItsHeader) {
  const TemporaryFile file("bin");
  start(1, {"-N1", std::string("-b") + file.name()});
  simulator.reset();
  EXPECT_EQ(file.bytes(), header("QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,"
                                 "RANDOMGEN=Lagged Fibonacci,BATCHES=0,,"));
}

TEST_F(ResultFilesTest, TheHeaderFollowsTheBatchesAndMessagesGoToTheEnd) {
  const TemporaryFile file("bin");
  SimulatorProbe& probe = start(1, {"-N5", std::string("-b") + file.name()});
  ASSERT_NE(probe.FileBin, nullptr);
  const std::string text =
      "QUORVA_SIM_BIN_FILE,256,QUORVA_VER=Version 2.5,FILE_VER=1,EXPERIMENTS=0,SEED=31415,"
      "RANDOMGEN=Lagged Fibonacci,BATCHES=";
  std::string messages;
  for (const int batches : {3, 10, 5}) {  // the text may also become shorter
    *probe.FileBin << "message";
    messages += "message";
    probe.BatchRuns = batches;
    probe.UpdateBinFileHeader(*probe.FileBin);
    EXPECT_EQ(file.bytes(), header(text + std::to_string(batches) + ",,") + messages);
  }
  probe.BatchRuns = 12;
  probe.CloseBinFile(*probe.FileBin);
  EXPECT_FALSE(probe.FileBin->is_open());
  EXPECT_EQ(file.bytes(), header(text + "12,,") + messages);
  delete probe.FileBin;
  probe.FileBin = nullptr;
}

TEST_F(ResultFilesTest, AFileThatCannotBeOpenedLosesItsOutputSilently) {
  std::string out;
  const std::string err = support::standardErrorOf([&] {
    SimulatorProbe& probe = start(1, {"-N1", "-a/no/such/folder/csv", "-b/no/such/folder/bin"});
    ASSERT_NE(probe.FileCSV, nullptr);
    ASSERT_NE(probe.FileBin, nullptr);
    EXPECT_TRUE(probe.FileCSV->fail());
    EXPECT_TRUE(probe.FileBin->fail());
    const auto packet = packetOf({{1.0}});
    probe.OutputDataCSV(*probe.FileCSV, packet.get(), nullptr);
    probe.OutputDataBinary(nullptr, probe.FileBin, packet.get(), nullptr);
    probe.UpdateBinFileHeader(*probe.FileBin);
    EXPECT_EQ(probe.SimControl, SimulatorClass::GO);
    simulator.reset();
  });
  EXPECT_EQ(err, "");
}

TEST_F(ResultFilesTest, WithoutANameTheStreamFailsAndNoFileIsMade) {
  SimulatorProbe& probe = start(1);
  const std::unique_ptr<std::ofstream> stream(probe.CreateBinFile(nullptr));
  EXPECT_TRUE(stream->fail());
  EXPECT_FALSE(stream->is_open());
  probe.CloseBinFile(*stream);
}

}  // namespace
