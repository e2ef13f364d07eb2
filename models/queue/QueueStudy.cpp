#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "BaseClasses/StandardErrors.h"
#include "Study/BaseStudyClass.h"
#include "queue/QueuePVModel.h"
#include "queue/QueueParameters.h"

Double arrivalRate;
Double serviceRate;
Short capacity;

namespace {

/// The parameters' values, experiment by experiment; option -e chooses one.
struct Experiment {
  double arrivalRate;
  double serviceRate;
  std::int16_t capacity;
};

constexpr std::array<Experiment, 3> kExperiments{{{0.8, 1.0, 10}, {0.9, 1.0, 20}, {1.0, 1.0, 5}}};

/// One parameter: its name and type as option -O and the listings use them.
struct Parameter {
  const char* name;
  const char* type;
};

constexpr std::array<Parameter, 3> kParameters{
    {{"arrivalRate", "double"}, {"serviceRate", "double"}, {"capacity", "short"}}};

/// A copy that the base class will release with free.
char* mallocCopy(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  auto* copy = static_cast<char*>(std::malloc(size));
  if (copy == nullptr) {
    MemoryAllocationError();
  }
  return static_cast<char*>(std::memcpy(copy, text, size));
}

class QueueStudy : public BaseStudyClass {
 public:
  QueueStudy() {
    NumGVs = kParameters.size();
    NumExps = kExperiments.size();
    GVNames = new char*[NumGVs];
    GVTypes = new char*[NumGVs];
    for (std::size_t i = 0; i < kParameters.size(); ++i) {
      GVNames[i] = mallocCopy(kParameters[i].name);
      GVTypes[i] = mallocCopy(kParameters[i].type);
    }
  }
  ~QueueStudy() override { delete ThePVModel; }

  QueueStudy(const QueueStudy&) = delete;
  QueueStudy& operator=(const QueueStudy&) = delete;

  /// Builds the reward model, and with it the queue. The parameters have their final values by then.
  PVModel* GetPVModel(bool expandTimeArrays) override {
    delete ThePVModel;
    ThePVModel = nullptr;
    ThePVModel = new QueuePVModel(expandTimeArrays);
    return ThePVModel;
  }

  /// The run driver asks for none but the NumExps experiments.
  void SetGVs(int experiment) override {
    const Experiment& values = kExperiments.at(static_cast<std::size_t>(experiment));
    SetGvValue(arrivalRate, values.arrivalRate);
    SetGvValue(serviceRate, values.serviceRate);
    SetGvValue(capacity, values.capacity);
  }

  void* GetGVValue(const char* name) override {
    const std::array<void*, 3> variables{&arrivalRate, &serviceRate, &capacity};
    for (std::size_t i = 0; i < kParameters.size(); ++i) {
      if (std::strcmp(kParameters[i].name, name) == 0) {
        return variables[i];
      }
    }
    std::cerr << "queue: there is no global variable " << name << '\n';
    return nullptr;
  }

  /// Option -O ends here: `value` points at a value of the parameter's own type.
  void OverrideGVValue(const char* name, void* value) override {
    void* const variable = GetGVValue(name);
    if (variable == &capacity) {
      SetGvValue(capacity, *static_cast<std::int16_t*>(value));
    } else if (variable != nullptr) {
      SetGvValue(variable == &arrivalRate ? arrivalRate : serviceRate, *static_cast<double*>(value));
    }
  }
};

BaseStudyClass* theStudy = nullptr;  // owned

}  // namespace

BaseStudyClass* GenerateStudy() {
  if (theStudy == nullptr) {
    theStudy = new QueueStudy;
  }
  return theStudy;
}

void DestructStudy() {
  delete theStudy;
  theStudy = nullptr;
}
