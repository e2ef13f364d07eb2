#pragma once

#include <cstdint>

#include "Study/PrimitiveType.h"

class PVModel;

/// Outer frame of one simulation: the list of a model's global variables, the value of each in each experiment, and the
/// reward model. A concrete study fills the name and type lists in its constructor and writes the variables.
/// Order    GenerateStudy, SetGVs, overrideGVs when there is an override string, GetPVModel: the variables have their
///          final values before any model object exists.
/// Owns     the name and type lists, and the reward model, which the concrete study builds and deletes.
class BaseStudyClass {
 public:
  BaseStudyClass() = default;
  BaseStudyClass(const BaseStudyClass&) = delete;
  BaseStudyClass& operator=(const BaseStudyClass&) = delete;
  virtual ~BaseStudyClass();

  /// The reward model; null until a concrete study has built one. A concrete study builds it here, with one node for
  /// each time point of a variable when `expandTimeArrays`.
  virtual PVModel* GetPVModel(bool expandTimeArrays);
  /// Writes the values of experiment `experiment` (from 0) into every global variable.
  virtual void SetGVs(int experiment);
  /// Prints the global variables of experiment `experiment`.
  virtual void PrintGlobalValues(int experiment);
  /// Address of the global variable object of that name; null in this class.
  virtual void* GetGVValue(const char* name);
  /// Stores the value behind `value`, which has the variable's own type, into the global variable of that name.
  virtual void OverrideGVValue(const char* name, void* value);

  [[nodiscard]] std::uint32_t GetNumGVs() const { return NumGVs; }
  [[nodiscard]] std::uint32_t GetNumExps() const { return NumExps; }
  /// Requires: 0 <= index < GetNumGVs(); there is no check.
  [[nodiscard]] const char* GetGVName(int index) const { return GVNames[index]; }
  /// Requires: 0 <= index < GetNumGVs(); there is no check.
  [[nodiscard]] const char* GetGVType(int index) const { return GVTypes[index]; }
  /// "Experiment " and the index plus one. The text stands in one buffer of the process: each call overwrites it.
  [[nodiscard]] const char* GetExpName(int experiment) const;

  /// Applies an override string: triples of type letter, name and value, separated by colons. Runs of colons count as
  /// one, so that no field is empty. A null pointer does nothing.
  /// Failure  a triple that is not complete ends the operation with a message; an unknown type letter drops its triple
  ///          with a message; a value that does not parse counts as zero. Nothing stops the run.
  void overrideGVs(const char* overrides);

 protected:
  void SetGvValue(Short& variable, std::int16_t value) { variable.Set(value); }
  void SetGvValue(Int& variable, std::int32_t value) { variable.Set(value); }
  void SetGvValue(Long& variable, std::int32_t value) { variable.Set(value); }
  void SetGvValue(Float& variable, float value) { variable.Set(value); }
  void SetGvValue(Double& variable, double value) { variable.Set(value); }
  void SetGvValue(Bool& variable, bool value) { variable.Set(value); }
  void SetGvValue(Char& variable, char value) { variable.Set(value); }

  /// overrideGVs with the echo lines switched on or off at compile time.
  template <bool kEcho>
  void applyOverrides(const char* overrides);

  char** GVNames = nullptr;       // owned: NumGVs strings from malloc in an array from new[]
  char** GVTypes = nullptr;       // owned: NumGVs strings from malloc in an array from new[]
  PVModel* ThePVModel = nullptr;  // owned by the concrete study, which deletes it
  std::uint32_t NumGVs = 0;
  std::uint32_t NumExps = 0;
};

/// The one study of the process, built on the first call. Each model defines it.
BaseStudyClass* GenerateStudy();

/// Deletes the study, if there is one. Each model defines it.
void DestructStudy();
