#pragma once

#include "BaseClasses/SAN/Activity.h"
#include "support/ScriptedAnswers.h"

namespace support {

/// An activity whose predicate is the field isEnabled, and whose firing changes nothing.
class ScriptedActivity : public ScriptedAnswers<Activity> {
 public:
  using ScriptedAnswers<Activity>::ScriptedAnswers;

  bool Enabled() override {
    OldEnabled = NewEnabled;
    NewEnabled = ScriptedAnswers<Activity>::Enabled();
    return NewEnabled;
  }

  void LinkVariables() override {}
};

}  // namespace support
