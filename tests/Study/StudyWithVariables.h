#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Study/BaseStudyClass.h"

namespace support {

/// A study of one variable of each type, with the base class's protected operations open to tests. Each variable is
/// named after its type in lower case.
class StudyWithVariables : public BaseStudyClass {
 public:
  using BaseStudyClass::applyOverrides;
  using BaseStudyClass::SetGvValue;

  void OverrideGVValue(const char* name, void* value) override {
    overridden.emplace_back(name);
    const std::string wanted = name;
    store("short", shortVariable, std::int16_t{}, wanted, value);
    store("int", intVariable, std::int32_t{}, wanted, value);
    store("long", longVariable, std::int32_t{}, wanted, value);
    store("float", floatVariable, float{}, wanted, value);
    store("double", doubleVariable, double{}, wanted, value);
    store("bool", boolVariable, bool{}, wanted, value);
    store("char", charVariable, char{}, wanted, value);
  }

  /// Gives the study a list of names and of types, as a concrete study's constructor does.
  void listVariables(const std::vector<std::string>& names, const std::vector<std::string>& types) {
    NumGVs = static_cast<std::uint32_t>(names.size());
    GVNames = mallocCopies(names);
    GVTypes = mallocCopies(types);
  }
  void setNumExps(std::uint32_t count) { NumExps = count; }

  Short shortVariable;
  Int intVariable;
  Long longVariable;
  Float floatVariable;
  Double doubleVariable;
  Bool boolVariable;
  Char charVariable;
  std::vector<std::string> overridden;  // names, in the order of the calls

 private:
  template <typename Variable, typename Value>
  void store(const char* name, Variable& variable, Value value, const std::string& wanted, const void* source) {
    if (wanted == name) {
      std::memcpy(&value, source, sizeof value);
      SetGvValue(variable, value);
    }
  }

  static char** mallocCopies(const std::vector<std::string>& texts) {
    char** copies = new char*[texts.size()];
    for (std::size_t i = 0; i < texts.size(); ++i) {
      copies[i] = static_cast<char*>(std::malloc(texts[i].size() + 1));
      std::memcpy(copies[i], texts[i].c_str(), texts[i].size() + 1);
    }
    return copies;
  }
};

}  // namespace support
