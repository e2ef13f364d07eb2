#pragma once

#include <iostream>
#include <streambuf>

namespace support {

/// Swallows what the process writes to std::cout and std::cerr, for its lifetime. What ends the process in between has been
/// swallowed too.
class QuietOutput {
 public:
  QuietOutput() : out_(std::cout.rdbuf(&nothing_)), err_(std::cerr.rdbuf(&nothing_)) {}
  QuietOutput(const QuietOutput&) = delete;
  QuietOutput& operator=(const QuietOutput&) = delete;
  ~QuietOutput() {
    std::cout.rdbuf(out_);
    std::cerr.rdbuf(err_);
  }

 private:
  class Nothing : public std::streambuf {
   protected:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    std::streamsize xsputn(const char* /*text*/, std::streamsize count) override { return count; }
  };

  Nothing nothing_;
  std::streambuf* out_;
  std::streambuf* err_;
};

}  // namespace support
