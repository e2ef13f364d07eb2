#include "ArcCheck/AccessLog.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <sstream>
#include <string>

namespace {

using support::AccessLog;

/// Three ranges of 4 bytes in 32, at 0, 8 and 12.
class AccessLogTest : public testing::Test {
 protected:
  [[nodiscard]] AccessLog::Range range(std::size_t offset) const {
    return {reinterpret_cast<std::uintptr_t>(memory_.data() + offset), 4};
  }
  void read(std::size_t offset, std::size_t bytes) { AccessLog::note(memory_.data() + offset, bytes, false); }
  void write(std::size_t offset, std::size_t bytes) { AccessLog::note(memory_.data() + offset, bytes, true); }

  /// "0r 2rw": the ranges with what was done to them, in the order noted.
  std::string stopped() {
    std::ostringstream text;
    const char* between = "";
    for (const AccessLog::Access& access : log_.stop()) {
      text << between << access.range << (access.isRead ? "r" : "") << (access.isWritten ? "w" : "");
      between = " ";
    }
    return text.str();
  }

  std::array<char, 32> memory_{};
  AccessLog log_{{range(0), range(8), range(12)}};
};

TEST_F(AccessLogTest, EachRangeIsNotedOnceInTheOrderOfTheFirstAccess) {
  log_.start();
  write(12, 4);
  read(0, 4);
  read(12, 4);
  write(12, 4);
  EXPECT_EQ(stopped(), "2rw 0r");
}

TEST_F(AccessLogTest, AnAccessCountsForEveryRangeThatItTouches) {
  log_.start();
  write(3, 1);
  read(11, 2);
  EXPECT_EQ(stopped(), "0w 1r 2r");
  log_.start();
  read(0, 32);
  EXPECT_EQ(stopped(), "0r 1r 2r");
}

TEST_F(AccessLogTest, AnAccessBesideTheRangesIsNone) {
  log_.start();
  read(4, 4);
  write(16, 16);
  EXPECT_EQ(stopped(), "");
  EXPECT_EQ(log_.seen(), 0U);
}

TEST_F(AccessLogTest, OnlyAListeningLogNotes) {
  read(0, 4);
  log_.start();
  read(8, 4);
  EXPECT_EQ(stopped(), "1r");
  read(12, 4);
  EXPECT_EQ(stopped(), "1r");
  log_.start();
  EXPECT_EQ(stopped(), "");
  EXPECT_EQ(log_.seen(), 1U);
}

TEST_F(AccessLogTest, ALogThatIsGoneDoesNotListen) {
  {
    AccessLog gone({range(0)});
    gone.start();
  }
  read(0, 4);
  log_.start();
  read(0, 4);
  EXPECT_EQ(stopped(), "0r");
}

}  // namespace
