#pragma once

#include <ostream>
#include <sstream>
#include <string>

namespace support {

/// What is written to a stream, such as std::cout, in the lifetime of this object.
class StreamCapture {
 public:
  explicit StreamCapture(std::ostream& stream) : stream_(stream), before_(stream.rdbuf(written_.rdbuf())) {}
  StreamCapture(const StreamCapture&) = delete;
  StreamCapture& operator=(const StreamCapture&) = delete;
  ~StreamCapture() { stream_.rdbuf(before_); }

  [[nodiscard]] std::string text() const { return written_.str(); }

 private:
  std::ostringstream written_;
  std::ostream& stream_;  // borrowed
  std::streambuf* before_;
};

}  // namespace support
