#pragma once

#include "BaseClasses/BaseGroupClass.h"
#include "support/ScriptedAnswers.h"

namespace support {

/// A leaf of the tree of groups, without an Activity's memory of its enabling.
class ScriptedLeaf : public ScriptedAnswers<BaseGroupClass> {
 public:
  using ScriptedAnswers<BaseGroupClass>::ScriptedAnswers;

  bool EnablingChange() override { return noted("EnablingChange", enablingChange); }
  bool SelectAction() override { return Enabled(); }
  double Probability(BaseActionClass* action) override { return action == this ? 1.0 : 0.0; }
  void setGroupId(int newId) override { GroupID = newId; }

  bool enablingChange = false;
};

}  // namespace support
