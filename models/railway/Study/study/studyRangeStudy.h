#pragma once

#include <cstdint>

#include "Study/BaseStudyClass.h"

class PVModel;

/// The railway's study: twelve global variables, one experiment. Each variable has an array with its value in each
/// experiment, so that a range of values is one more element an array.
/// Order    the variables stand in the order of GVNames everywhere: in the arrays, in the operations and in print.
/// Owns     the value arrays and the reward model.
class studyRangeStudy : public BaseStudyClass {
 public:
  studyRangeStudy();
  studyRangeStudy(const studyRangeStudy&) = delete;
  studyRangeStudy& operator=(const studyRangeStudy&) = delete;
  ~studyRangeStudy() override;

  /// Deletes the reward model of an earlier call and builds a new one, and with it a new composed model. Requires: the
  /// global variables have their final values.
  PVModel* GetPVModel(bool expandTimeArrays) override;
  /// An experiment that the study does not have is reported, and the last experiment stands in for it.
  void SetGVs(int experiment) override;
  /// Writes the experiment's values into the variables, over any override, and prints them.
  void PrintGlobalValues(int experiment) override;
  /// Address of the variable, one of the wrappers of PrimitiveType.h; null with a report for an unknown name.
  void* GetGVValue(const char* name) override;
  /// An unknown name is reported and changes nothing.
  void OverrideGVValue(const char* name, void* value) override;

 private:
  void SetValues_MAnetDelay();
  void SetValues_RBCprocessingTime();
  void SetValues_TPRUpdatePeriod();
  void SetValues_TPRnetDelay();
  void SetValues_integrityNotConfirmedProb();
  void SetValues_lineLength();
  void SetValues_maxTrainSpeed();
  void SetValues_nTrains();
  void SetValues_netNotDeliveryProb();
  void SetValues_positionUpdatePeriod();
  void SetValues_safetyMargin();
  void SetValues_trainLength();

  /// Calls `visit(name, variable, values, setValues)` for each variable in order: `values` is the member that holds its
  /// array, `setValues` the operation that fills the array.
  template <typename Visitor>
  void forEachGV(Visitor visit);

  /// `experiment`, or the last experiment with a report when the study has no such experiment.
  std::uint32_t experimentIndex(int experiment) const;

  // Owned arrays of NumExps values each.
  double* MAnetDelayValues = nullptr;
  double* RBCprocessingTimeValues = nullptr;
  double* TPRUpdatePeriodValues = nullptr;
  double* TPRnetDelayValues = nullptr;
  double* integrityNotConfirmedProbValues = nullptr;
  std::int32_t* lineLengthValues = nullptr;
  std::int16_t* maxTrainSpeedValues = nullptr;
  std::int16_t* nTrainsValues = nullptr;
  double* netNotDeliveryProbValues = nullptr;
  double* positionUpdatePeriodValues = nullptr;
  std::int32_t* safetyMarginValues = nullptr;
  std::int32_t* trainLengthValues = nullptr;
};

/// The one study of the process; null before GenerateStudy and after DestructStudy. Owned here.
extern BaseStudyClass* GlobalStudyPtr;
