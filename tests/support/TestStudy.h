#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Study/BaseStudyClass.h"

class PVModel;

namespace support {

/// Makes the study that GenerateStudy gives to the next simulator of this test program.
using StudyFactory = std::function<std::unique_ptr<BaseStudyClass>()>;

/// Installs `factory` for GenerateStudy, and drops the study of an earlier one.
void setStudyFactory(StudyFactory factory);

/// A study of one reward model, without global variables, for tests that bring a model of their own.
/// Owns     the reward model it has built last, as every concrete study does.
class TestStudy : public BaseStudyClass {
 public:
  /// Builds the reward model; the argument says whether every time point gets a node of its own.
  using ModelFactory = std::function<std::unique_ptr<PVModel>(bool)>;

  explicit TestStudy(ModelFactory factory, std::uint32_t numberOfExperiments = 1);
  ~TestStudy() override;

  PVModel* GetPVModel(bool expandTimeArrays) override;
  /// Keeps the experiment's number, which is all there is to it.
  void SetGVs(int experiment) override { experimentSet_ = experiment; }

  /// Experiment that SetGVs was given last, -1 for none.
  [[nodiscard]] int experimentSet() const { return experimentSet_; }

 private:
  ModelFactory factory_;
  int experimentSet_ = -1;
};

/// The study factory of a test that needs a reward model and nothing else.
void setModelFactory(TestStudy::ModelFactory factory);

}  // namespace support
