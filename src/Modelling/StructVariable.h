#pragma once

#include "BaseClasses/state/StructStateVariable.h"

namespace modelling {

/// The record of a struct that is never read or written as a whole.
struct NoRecord {};

/// A struct as a state variable. A struct of one's own derives from it and has its fields as members:
///
///   class Job : public modelling::StructVariable<> {
///    public:
///     using StructVariable::StructVariable;
///     modelling::Field<short> kind{*this, "kind"};
///     modelling::Field<double> size{*this, "size", 1.0};
///   };
///
/// and a model has `Variable<Job> job{*this, "job"};` and says `job.kind.Mark()`.
/// Record  plain data with a member for each field, in order, for getMark and setMark; nothing, if those are not used
template <typename Record = NoRecord>
class StructVariable : public StructStateVariable<Record> {
 public:
  /// `prefix` is the qualified name of the holder, for a struct inside another variable.
  explicit StructVariable(const char* name, const char* prefix = "") : StructStateVariable<Record>(name, prefix) {}

  StructVariable(const StructVariable&) = delete;
  StructVariable& operator=(const StructVariable&) = delete;

  /// Enters the next field. Called by Field.
  void addField(ArrayType type, BaseStateVariableClass& variable) {
    this->fields.push_back(BaseStructStateVariable::field(type, &variable));
  }
};

}  // namespace modelling
