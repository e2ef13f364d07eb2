#pragma once

#include <cstdint>

class BaseStudyClass;

/// Value of one global variable: a model parameter that anyone reads by implicit conversion and that only a study
/// writes. It holds zero (false, NUL) until a study gives it an experiment's value.
/// T  one of the seven primitive types of the wrappers below
template <typename T>
class PrimitiveType {
 public:
  PrimitiveType() = default;

  // Implicit on purpose: it is how model code reads a parameter.
  operator T() const { return mVar; }  // NOLINT(google-explicit-constructor)

 protected:
  T mVar{};

 private:
  // A global variable is neither copied nor assigned from another one.
  PrimitiveType(const PrimitiveType&) = delete;
  PrimitiveType& operator=(const PrimitiveType&) = delete;
};

/// Global variable of 16 bits, type letter `s`.
class Short : public PrimitiveType<std::int16_t> {
  friend class BaseStudyClass;

 protected:
  void Set(std::int16_t value) { mVar = value; }
};

/// Global variable of 32 bits, type letter `i`.
class Int : public PrimitiveType<std::int32_t> {
  friend class BaseStudyClass;

 protected:
  void Set(std::int32_t value) { mVar = value; }
};

/// Global variable of 32 bits, type letter `l`: a long is 32 bits wide throughout.
class Long : public PrimitiveType<std::int32_t> {
  friend class BaseStudyClass;

 protected:
  void Set(std::int32_t value) { mVar = value; }
};

/// Global variable of single precision, type letter `f`.
class Float : public PrimitiveType<float> {
  friend class BaseStudyClass;

 protected:
  void Set(float value) { mVar = value; }
};

/// Global variable of double precision, type letter `d`.
class Double : public PrimitiveType<double> {
  friend class BaseStudyClass;

 protected:
  void Set(double value) { mVar = value; }
};

/// Global variable of a truth value, type letter `b`.
class Bool : public PrimitiveType<bool> {
  friend class BaseStudyClass;

 protected:
  void Set(bool value) { mVar = value; }
};

/// Global variable of one character, type letter `c`.
class Char : public PrimitiveType<char> {
  friend class BaseStudyClass;

 protected:
  void Set(char value) { mVar = value; }
};
