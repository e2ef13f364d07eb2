#pragma once

#include <string>

#include "BaseClasses/BaseActionClass.h"
#include "support/CallLog.h"

namespace support {

/// Answers as its public fields say, and notes each call. With `Base` an Activity, or, below that layer, a group of its
/// own that has selected itself as an activity does.
template <typename Base>
class ScriptedAnswers : public Base {
 public:
  explicit ScriptedAnswers(const char* name, double theWeight = 1.0, int theRank = 0, CallLog* theLog = nullptr)
      : weight(theWeight), rank(theRank), log(theLog) {
    this->defineName(name);
    this->SelectedAction = this;
  }

  bool Enabled() override { return noted("Enabled", isEnabled); }
  double Weight() override { return noted("Weight", weight); }
  double Rate() override { return noted("Rate", rate); }
  int Rank() override { return noted("Rank", rank); }
  double SampleDistribution() override { return noted("SampleDistribution", delay); }
  bool ReactivationPredicate() override { return noted("ReactivationPredicate", predicate); }
  bool ReactivationFunction() override { return noted("ReactivationFunction", function); }
  BaseActionClass* Fire() override { return noted("Fire", this); }

  double weight;
  int rank;
  CallLog* log;  // borrowed from the test, or null
  bool isEnabled = true;
  double rate = 0.0;
  double delay = 0.0;
  bool predicate = false;
  bool function = false;

 protected:
  /// Notes the call and hands its answer on.
  template <typename Answer>
  Answer noted(const char* call, Answer answer) {
    if (log != nullptr) {
      note(log, std::string(this->ActionName) + '.' + call);
    }
    return answer;
  }
};

}  // namespace support
