#pragma once

#include <cstddef>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace support {

/// Tells the lines that were flushed at their end from those that were held back. Of the former a user sees the whole even
/// where the process is killed right behind them.
class FlushWatch {
 public:
  /// Watches what is written to `stream`, such as std::cout, in the lifetime of this object.
  explicit FlushWatch(std::ostream& stream) : stream_(stream), before_(stream.rdbuf(&written_)) {}
  FlushWatch(const FlushWatch&) = delete;
  FlushWatch& operator=(const FlushWatch&) = delete;
  ~FlushWatch() { stream_.rdbuf(before_); }

  /// The lines behind which another one came before a flush, or the end.
  [[nodiscard]] std::vector<std::string> heldBack() {
    written_.takeLines();
    return written_.heldBack;
  }

  /// Whether all that was written has been flushed.
  [[nodiscard]] bool isFlushed() { return written_.str().empty(); }

 private:
  class Buffer : public std::stringbuf {
   public:
    std::vector<std::string> heldBack;

    /// Empties the buffer and adds its lines to those held back.
    void takeLines() {
      std::istringstream text(str());
      str("");
      for (std::string line; std::getline(text, line);) {
        heldBack.push_back(line);
      }
    }

   protected:
    int sync() override {
      const std::size_t before = heldBack.size();
      takeLines();
      if (heldBack.size() > before) {
        heldBack.pop_back();  // the line that is flushed now
      }
      return 0;
    }
  };

  Buffer written_;
  std::ostream& stream_;  // borrowed
  std::streambuf* before_;
};

/// The lines that `action` writes to `stream` and does not flush at their ends.
template <typename Action>
std::vector<std::string> linesHeldBack(std::ostream& stream, Action&& action) {
  FlushWatch watch(stream);
  action();
  return watch.heldBack();
}

/// Whether what `action` writes to `stream` is flushed as a whole when `action` returns.
template <typename Action>
bool isFlushedAtTheEnd(std::ostream& stream, Action&& action) {
  FlushWatch watch(stream);
  action();
  return watch.isFlushed();
}

}  // namespace support
