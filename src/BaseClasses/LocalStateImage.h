#pragma once

#include <cstdint>
#include <cstdio>

#include "BaseClasses/State.h"

/// A saved run of state image bytes; what the LocalState classes of all models have in common. Each of those adds its
/// constructor, SetState and GetState.
/// Owns     the bytes. Their number is settled at construction.
class LocalStateImage : public State {
 public:
  LocalStateImage(const LocalStateImage&) = delete;
  ~LocalStateImage() override;

  /// Sum over the places i of byte i, as a signed number, times the prime at position i modulo 256, with wrap-around in
  /// 32 bits.
  [[nodiscard]] int hash() override;

  /// Compares this one's number of bytes. Requires `other` to be a LocalStateImage that is not shorter.
  [[nodiscard]] int compare(const State& other) override;

  /// Each byte as a signed number, five places wide, and a line end, to standard output.
  void print() override;

  /// Writes the number of bytes in 4 bytes, then the bytes.
  [[nodiscard]] int fwriteState(std::FILE* file) override;

  /// Reads what fwriteState wrote. A file of another number of bytes counts as a failed read: it is no image of this
  /// model, and the buffer has no room for a longer one.
  [[nodiscard]] int freadState(std::FILE* file) override;

  /// Copies the bytes. Requires `other` to be a LocalStateImage of the same size.
  const State& operator=(const State& other) override;
  LocalStateImage& operator=(const LocalStateImage& other);

  [[nodiscard]] void* GetStatePtr() override { return state; }

 protected:
  /// `imageSize` bytes, all zero.
  explicit LocalStateImage(std::int32_t imageSize);

 private:
  char* state = nullptr;  // owned array
  std::int32_t size = 0;
};
