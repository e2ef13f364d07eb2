#pragma once

#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/state/ArrayStateVariable.h"
#include "BaseClasses/state/ExtendedPlace.h"
#include "BaseClasses/state/StructStateVariable.h"

/// Concrete variables as a model declares them, for the tests.
namespace testing_support {

/// What `printState` writes.
inline std::string printed(BaseStateVariableClass& variable) {
  std::ostringstream text;
  variable.printState(&text);
  return text.str();
}

inline std::vector<unsigned char> imageOf(BaseStateVariableClass& variable) {
  std::vector<unsigned char> image(static_cast<std::size_t>(variable.StateSize()));
  variable.CurrentState(image.data());
  return image;
}

/// An action with a name and nothing else.
class NamedAction : public BaseActionClass {
 public:
  explicit NamedAction(const char* name) { defineName(name); }

  [[nodiscard]] std::vector<BaseStateVariableClass*> affected() {
    std::vector<BaseStateVariableClass*> variables;
    for (int i = 0; i < getNumAffectedSVs(); i++) {
      variables.push_back(getAffectedSV(i));
    }
    return variables;
  }

  [[nodiscard]] std::vector<BaseStateVariableClass*> enabling() {
    std::vector<BaseStateVariableClass*> variables;
    for (int i = 0; i < getNumEnablingSVs(); i++) {
      variables.push_back(getEnablingSV(i));
    }
    return variables;
  }
};

/// The arcs of a model's constructor.
inline void addAffectArc(BaseStateVariableClass& variable, BaseActionClass& action) {
  variable.appendAffectingAction(&action);
  action.addAffectedSV(&variable);
}

inline void addEnableArc(BaseStateVariableClass& variable, BaseActionClass& action) {
  variable.appendEnabledAction(&action);
  action.addEnablingSV(&variable);
}

/// The kind that an array of ExtendedPlace<T> declares.
template <typename T>
constexpr ArrayType kKindOf = ArrayType_EMPTY;
template <>
inline constexpr ArrayType kKindOf<short> = ArrayType_SHORT;
template <>
inline constexpr ArrayType kKindOf<int> = ArrayType_INT;
template <>
inline constexpr ArrayType kKindOf<char> = ArrayType_CHAR;
template <>
inline constexpr ArrayType kKindOf<bool> = ArrayType_CHAR;
template <>
inline constexpr ArrayType kKindOf<double> = ArrayType_DOUBLE;
template <>
inline constexpr ArrayType kKindOf<float> = ArrayType_FLOAT;

/// An array of scalars with the given values.
template <typename T>
class ScalarArray : public ArrayStateVariable<ExtendedPlace<T>> {
 public:
  ScalarArray(const char* name, std::initializer_list<T> values)
      : ArrayStateVariable<ExtendedPlace<T>>(name, "", kKindOf<T>, static_cast<int>(values.size())) {
    for (const T value : values) {
      const std::string elementName = std::to_string(this->fields.size());
      this->fields.push_back(new ExtendedPlace<T>(elementName.c_str(), this->getName(), value));
    }
  }
  ~ScalarArray() override {
    for (BaseStateVariableClass* const element : this->fields) {
      delete element;
    }
  }
};

struct Message_state {
  int timestamp;
  int EoA;
};

/// A struct of two INT fields, as a model's message.
class Message : public StructStateVariable<Message_state> {
 public:
  explicit Message(const char* name, const char* prefix = "", Message_state initial = {})
      : StructStateVariable<Message_state>(name, prefix) {
    const std::string holder = *prefix == '\0' ? name : std::string(prefix) + "." + name;
    timestamp = new ExtendedPlace<int>("timestamp", holder.c_str(), initial.timestamp);
    EoA = new ExtendedPlace<int>("EoA", holder.c_str(), initial.EoA);
    fields.push_back(field(ArrayType_INT, timestamp));
    fields.push_back(field(ArrayType_INT, EoA));
  }
  ~Message() override {
    for (const fieldType& entry : fields) {
      delete entry.field;
    }
  }

  ExtendedPlace<int>* timestamp = nullptr;  // owned
  ExtendedPlace<int>* EoA = nullptr;        // owned
};

/// An array of messages: two leaves for each element.
class MessageArray : public ArrayStateVariable<Message> {
 public:
  MessageArray(const char* name, int size) : ArrayStateVariable<Message>(name, "", ArrayType_STRUCT, size) {
    for (int i = 0; i < size; i++) {
      fields.push_back(new Message(std::to_string(i).c_str(), getName()));
    }
  }
  ~MessageArray() override {
    for (BaseStateVariableClass* const element : fields) {
      delete element;
    }
  }
};

/// A struct whose fields, of any kind, are handed over; it deletes them.
template <typename Record>
class AnyStruct : public StructStateVariable<Record> {
 public:
  using Entry = BaseStructStateVariable::fieldType;

  AnyStruct(const char* name, std::initializer_list<Entry> entries) : StructStateVariable<Record>(name, "") {
    this->fields.assign(entries);
  }
  ~AnyStruct() override {
    for (const Entry& entry : this->fields) {
      delete entry.field;
    }
  }
};

}  // namespace testing_support
