#pragma once

#include "BaseClasses/state/SharableSV.h"

/// A place of a stochastic activity network: a variable whose mark is a short. `TheMark` is a second pointer to the
/// location, on the chain like any other, so that it follows the location when the place is shared.
class Place : public SharableSV<short> {
 public:
  /// Called "default", with the mark 0.
  Place();
  /// With the mark 0.
  explicit Place(const char* name);
  Place(const char* name, short initialMark);

  short& Mark() { return *TheMark; }
  [[nodiscard]] short getMark() const { return *TheMark; }
  void setMark(short mark) { *TheMark = mark; }

  /// Does nothing; models may call it.
  void test() {}

 protected:
  short* TheMark = nullptr;  // borrowed: the location of the value, owned by this variable or its leader
};
