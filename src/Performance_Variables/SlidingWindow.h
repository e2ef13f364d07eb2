#pragma once

namespace support {

/// Moves a window of steady-state batches on by one batch, with the very additions by which its node moves its own, so
/// that both stay equal to the last bit.
class SlidingWindow {
 public:
  /// Length of a batch, in simulated time: that of the first window, and of all that follow it.
  [[nodiscard]] double batchLength(double start, double stop) const { return length_ > 0.0 ? length_ : stop - start; }

  /// The batch that follows [start, stop].
  void slide(double& start, double& stop) {
    length_ = batchLength(start, stop);
    start = stop;
    stop += length_;
  }

 private:
  double length_ = 0.0;  // 0 until the window has moved
};

}  // namespace support
