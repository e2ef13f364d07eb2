#pragma once

#include "BaseClasses/BaseGroupClass.h"

/// A group that chooses its member first, and then takes delay, rank and reactivation from the chosen one: alternatives
/// that are decided when they become enabled.
/// Order    a question makes a choice when one is due; a choice is kept until it has fired, also when its event is
///          removed in between. A failed choice stays due, so that every further question draws a number again.
class PreselectGroup : public BaseGroupClass {
 public:
  /// A group without members.
  PreselectGroup();

  /// A group of `NumMembers` empty slots, to be filled by setMember before anything is asked.
  explicit PreselectGroup(int NumMembers);

  bool SelectAction() override;
  bool Enabled() override;
  bool ReactivationPredicate() override;
  bool ReactivationFunction() override;

  /// Delay of the chosen member. Requires a choice to succeed if one is due.
  double SampleDistribution() override;

  /// Rank of the chosen member; after a failed choice, of the last one chosen.
  int Rank() override;

  /// Fires the chosen member. The selection stays, but the next question chooses anew.
  BaseActionClass* Fire() override;

 protected:
  bool NeedToReselect = true;

 private:
  /// Makes the choice if one is due.
  void selectIfDue() {
    if (NeedToReselect) {
      SelectAction();
    }
  }
};
