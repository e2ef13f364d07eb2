#pragma once

#include "BaseClasses/BaseGroupClass.h"

/// A group that takes its delay from its first member and chooses a member only when it fires: an activity with several
/// cases, whose members share the timing and are told apart at the moment of completion.
/// Order    enters every tie with rank 1 and weight 1.0, whatever its members say.
class PostselectGroup : public BaseGroupClass {
 public:
  /// A group without members.
  PostselectGroup();

  /// A group of `NumMembers` empty slots, to be filled by setMember before anything is asked.
  explicit PostselectGroup(int NumMembers);

  /// Chooses among the members in the present marking, fires the choice and drops it. Requires an enabled member.
  BaseActionClass* Fire() override;

  // These three ask the first member, of which there must be one.
  bool ReactivationPredicate() override;
  bool ReactivationFunction() override;
  double SampleDistribution() override;

  int Rank() override;
  double Weight() override;
};
