#pragma once

#include <cstdint>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/GroupWeight.h"

/// An action that stands for several others; what the pending event list holds. Its answers are composed from its
/// members', and which member is meant is a weighted random choice among the enabled members of the highest rank.
/// Groups nest; an Activity is a group without members that has selected itself, so that each choice ends at one.
/// Order    members in the order of insertion; a choice draws exactly one number, before it asks any member.
/// Owns     its two arrays, not its members.
/// Cost     a choice is one pass over the members and a binary search; it allocates nothing.
class BaseGroupClass : public BaseActionClass {
 public:
  /// A group named "default" without members.
  BaseGroupClass();

  /// An empty group with room for `NumMembers` members; the other parameters are those of BaseGroupClassInitialize.
  BaseGroupClass(const char* ActName, int GID, Distribution DistType, ExecutionPolicyType ExPolicy, int ASV, int ESV,
                 bool TheReactivation, int NumMembers);

  ~BaseGroupClass() override;

  /// Whether any member is enabled. Asks each of them, as the asking has side effects.
  bool Enabled() override;

  // These four ask the selected action; legal only while there is one.
  double Weight() override;
  double Rate() override;
  int Rank() override;
  double SampleDistribution() override;

  /// Whether the enabling of any member has changed. Asks each of them, as the asking has side effects.
  bool EnablingChange() override;

  /// Fires the selected action, and drops the selection.
  BaseActionClass* Fire() override;

  bool ReactivationPredicate() override;
  bool ReactivationFunction() override;

  /// Whether `TheAction` is a direct member; nested groups are not searched.
  bool IsAMember(BaseActionClass* TheAction) override;

  /// Chance that `TheAction` is selected in the current marking. Members of negative rank never count. 0.0 for an
  /// action that is neither a member nor a member of a member. With a total weight of 0 it writes a line and returns
  /// the quotient all the same: NaN or an infinity.
  double Probability(BaseActionClass* TheAction) override;

  /// printState of each enabling variable of the first member, or of this group if it has none.
  void printEnablingState(std::ostream* strm) override;

  /// The first member, or this group if it has none.
  BaseActionClass* getPrintedAction() override;

  /// Chooses a member, and takes that member's own selection for this group's. False, with the old selection left in
  /// place, if no member is enabled. One number is drawn in any case.
  virtual bool SelectAction();

  /// Hands the number down to every activity below; the group's own GroupID is not written.
  virtual void setGroupId(int TheNewID);

  /// Forwards to BaseActionClassInitialize.
  void BaseGroupClassInitialize(const char* ActName, int GID, Distribution DistType, ExecutionPolicyType ExPolicy,
                                int ASV, int ESV, bool TheReactivation);

  /// Names the group and gives it fresh arrays with room for `NumMembers`, all null; NumActions stays as it was.
  void initialize(int NumMembers, const char* TheGroupName);

  /// Adds one member behind the others; repeats are not looked for. The arrays grow by exactly one entry when full.
  void appendGroup(BaseGroupClass* TheNewMember);

  /// Adds the members of `TheNewMember`, not the group itself, behind the others.
  void appendMembers(BaseGroupClass* TheNewMember);

  /// Overwrites a member. An index outside the members is reported, and nothing is written.
  void setMember(BaseGroupClass* TheMemberGroup, int TheIndex);

  int getNumMembers() { return NumActions; }

  BaseGroupClass* getMember(int TheIndex) {
    support::require(TheIndex >= 0, "BaseGroupClass");
    support::require(TheIndex < NumActions, "BaseGroupClass");
    support::require(GroupArray[TheIndex] != nullptr, "BaseGroupClass");
    return GroupArray[TheIndex];
  }

  /// Puts `theNew` in every place of `theOld`, the selection included. Requires `theNew` to be a group or null wherever
  /// `theOld` is a member.
  void replaceMember(BaseActionClass* theOld, BaseActionClass* theNew);

  /// Builds the cumulative weights of the enabled members of the highest rank, and sets each member's `Disabled`.
  /// returns  the total weight; -1.0 if no member is enabled
  /// order    each member is asked Enabled once, and Rank up to three times, in the order of the members
  double CalculateWeightDistribution();

  /// Requires the group to have members.
  void Check();

  /// Writes the members and the selection, of which there must be one, to standard output.
  void PrintInfo();

  /// Writes the tree of members to standard output.
  void printGroup();

  BaseGroupClass** GroupArray = nullptr;      // owned array; the members are borrowed from the concrete model
  BaseActionClass* SelectedAction = nullptr;  // borrowed: the activity that will fire, or null
  GroupWeight* ActionWeights = nullptr;       // owned array, as long as GroupArray; scratch table of a choice
  std::int32_t HighestRank = 0;               // rank of the last choice
  std::int32_t NumActions = 0;                // members in use
  std::int32_t NumSelectableActions = 0;      // rows of ActionWeights in use after the last choice

 protected:
  /// Writes the members, indented by `IndentSpace` blanks and numbered behind `ThePrefix`, and what is below them.
  void printGroup(const char* ThePrefix, int IndentSpace);

  /// Requires TheNewSize > ArraySize. Keeps the members, not the weights.
  void enlargeArrays(int TheNewSize);

  std::int32_t ArraySize = 0;  // capacity of the two arrays

 private:
  void replaceArrays(int newSize, int membersToKeep);
};
