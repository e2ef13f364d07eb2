#pragma once

#include <array>
#include <bit>
#include <concepts>
#include <type_traits>

#include "BaseClasses/DebugLines.h"
#include "BaseClasses/state/SharableSV.h"

/// A scalar state variable of any value type: the element of an array, the field of a struct, or a place whose mark is
/// not a short. It adds no state of its own and reads and writes the shared location directly.
///
/// An initial value is given as a T; any other arithmetic type is converted to T, so that a literal such as 0 serves
/// for every T.
template <typename T>
class ExtendedPlace : public SharableSV<T> {
 public:
  /// Called "default", with the value zero().
  ExtendedPlace() { *TheState = zero(); }

  /// With the value zero().
  explicit ExtendedPlace(const char* name) : ExtendedPlace(name, zero()) {}

  /// For a variable inside an array or a struct: `prefix` is the qualified name of the holder. The value is zero().
  ExtendedPlace(const char* name, const char* prefix) : ExtendedPlace(name, prefix, zero()) {}

  ExtendedPlace(const char* name, T initialMark) {
    this->SetName(name);
    *TheState = initialMark;
  }

  template <typename V>
  requires(std::is_arithmetic_v<V> && !std::same_as<V, T>) ExtendedPlace(const char* name, V initialMark)
      : ExtendedPlace(name, static_cast<T>(initialMark)) {}

  /// A variable with a prefix enters its own pointer in its chain a second time.
  ExtendedPlace(const char* name, const char* prefix, T initialMark) {
    this->SetName(name);
    this->SetPrefix(prefix);
    this->Register(&TheState);
    *TheState = initialMark;
    if (GlobalDebugLevel > 1) [[unlikely]] {
      std::cout << "** Initial Marking for " << this->getName() << " is ";
      this->printStateVal(&std::cout);
      std::cout << std::endl;
    }
  }

  template <typename V>
  requires(std::is_arithmetic_v<V> && !std::same_as<V, T>)
      ExtendedPlace(const char* name, const char* prefix, V initialMark)
      : ExtendedPlace(name, prefix, static_cast<T>(initialMark)) {}

  int StateSize() override { return static_cast<int>(sizeof(T)); }
  void SetState(void* image) override { readMemory2<T>(image, TheState); }
  void CurrentState(void* image) override { writeMemory<T>(*TheState, image); }

  T& Mark() { return *TheState; }
  [[nodiscard]] T getMark() const { return *TheState; }
  void setMark(T mark) { *TheState = mark; }

  /// Does nothing; models may call it.
  void test() {}

 protected:
  using SharableSV<T>::TheState;

  /// The T whose bytes are all zero.
  [[nodiscard]] static constexpr T zero() { return std::bit_cast<T>(std::array<unsigned char, sizeof(T)>{}); }
};
