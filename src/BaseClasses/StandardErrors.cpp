#include "BaseClasses/StandardErrors.h"

#include <cstdlib>
#include <iostream>

namespace {

void reportMismatch(const char* kind, const char* a, const char* b) {
  std::cerr << kind << " types for equivalence sharing do not match for state variables: " << std::endl
            << "  " << a << std::endl
            << "  " << b << std::endl;
}

}  // namespace

void MemoryAllocationError() {
  std::cerr << "Insufficient Memory to allocate dynamic data structures from heap memory" << std::endl
            << "Exiting program..." << std::endl;
  std::exit(1);
}

void MemoryError() {
  std::cerr << "Memory Error" << std::endl;
}

void ErrorEmptyParameter(const char* name) {
  std::cerr << name << ": Parameter was an empty reference" << std::endl;
}

void SyncError::WrongDistributionType() {
  std::cerr << "You can only synchronize actions from one type,"
            << "either exponential or instantenous" << std::endl;
}

void SyncError::NoAction() {
  std::cerr << " no Action found in model" << std::endl;
}

void InconsistantState() {
  std::cerr << "This program has entered into an inconsistant state. Please report this bug." << std::endl;
}

void UserError() {
  std::cerr << "A user error has been detected" << std::endl;
}

void ArrayTypeMismatchError(const char* a, const char* b) {
  reportMismatch("Array", a, b);
}

void StructTypeMismatchError(const char* a, const char* b) {
  reportMismatch("Struct", a, b);
}

void InvalidArrayType() {
  std::cerr << "ArrayType is not valid" << std::endl;
}

void InvalidStructType() {
  std::cerr << "ArrayType is invalid for struct element" << std::endl << "preparing to segfault" << std::endl;
  // On purpose: the fault is what the words announce. Pointer and target are volatile, so that no compiler can tell
  // that the pointer is null and leave the store out or put a trap of its own in its place.
  volatile int* volatile nowhere = nullptr;
  *nowhere = 0;
}

void InvalidUnorderedType() {
  std::cerr << "ArrayType is invalid for unordered element" << std::endl;
}

void ArrayOutOfBoundsError(const char* where) {
  std::cerr << "Array out of bounds error at " << where << std::endl;
}
