#pragma once

#include <string>

#include "BaseClasses/state/ArrayType.h"
#include "BaseClasses/state/ExtendedPlace.h"
#include "BaseClasses/state/StructStateVariable.h"

namespace support {

/// `name` below `parent`, as a holder's elements and fields are qualified; the name alone below an empty parent.
inline std::string qualifiedName(const std::string& parent, const std::string& name) {
  return parent.empty() ? name : parent + "." + name;
}

/// A struct state variable of the railway: one extended place for each field of the record.
/// Owns     its fields.
template <typename Record>
class MessageStruct : public StructStateVariable<Record> {
 public:
  MessageStruct(const MessageStruct&) = delete;
  MessageStruct& operator=(const MessageStruct&) = delete;

  ~MessageStruct() override {
    for (auto& entry : this->fields) {
      delete entry.field;
    }
  }

 protected:
  MessageStruct(const char* name, const char* parent)
      : StructStateVariable<Record>(name, parent), fullName_(qualifiedName(parent, name)) {}

  /// Appends a field behind the others and returns it.
  template <typename T>
  ExtendedPlace<T>* addField(ArrayType type, const char* fieldName, T initial) {
    auto* place = new ExtendedPlace<T>(fieldName, fullName_.c_str(), initial);
    this->fields.push_back(BaseStructStateVariable::field(type, place));
    return place;
  }

 private:
  std::string fullName_;
};

}  // namespace support
