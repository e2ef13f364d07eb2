#pragma once

/// The fixed words of the model framework's complaints. Each operation writes them to standard error; all but
/// MemoryAllocationError and InvalidStructType then return, so that the caller decides what follows.

/// Ends the process with status 1. Fit to be the process's std::new_handler: it allocates nothing.
[[noreturn]] void MemoryAllocationError();
void MemoryError();

/// `name` is the parameter that was an empty reference.
void ErrorEmptyParameter(const char* name);

/// Complaints about synchronized actions.
class SyncError {
 public:
  static void WrongDistributionType();
  static void NoAction();
};

void InconsistantState();
void UserError();

/// `a` and `b` name the state variables that were to be shared.
void ArrayTypeMismatchError(const char* a, const char* b);
void StructTypeMismatchError(const char* a, const char* b);

void InvalidArrayType();

/// Announces a memory fault and then causes it: the process dies from a store through a null pointer.
void InvalidStructType();
void InvalidUnorderedType();

/// `where` names the operation that was given the index. Returns, so that the caller's work goes on.
void ArrayOutOfBoundsError(const char* where);
