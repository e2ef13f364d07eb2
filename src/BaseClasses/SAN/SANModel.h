#pragma once

#include <cstdint>

#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/LocalStateImage.h"
#include "BaseClasses/SAN/Activity.h"

/// An atomic model: it holds its state variables, activities and groups directly.
/// Owns     its four arrays. The variables, activities and groups in them belong to the concrete model that made them.
/// Image    the images of the local variables in array order, without those that were shared away; read-only places are
///          never in it. No header, no padding, the machine's own byte order.
/// Cost     the image is copied variable by variable, once a batch; a firing never goes through it.
class SANModel : public BaseModelClass {
 public:
  /// A saved marking of a SANModel.
  class LocalState : public LocalStateImage {
   public:
    explicit LocalState(SANModel* model);

   protected:
    void SetState(const BaseModelClass* model) override;
    void GetState(const BaseModelClass* model) override;
  };

  /// A model without variables and actions, to be filled by initializeSANModelNow.
  SANModel();
  SANModel(const char* ModelName, int NPlaces, BaseStateVariableClass** Places, int NReadOnlyPlaces,
           BaseStateVariableClass** ROPlaces, int NActions, Activity** Activities, int NGroups,
           BaseGroupClass** Groups);

  ~SANModel() override;

  /// Takes over name, counts and copies of the arrays, and sets TheModel of each activity and group. To be called once,
  /// when the arrays are complete; the arcs are added behind it. Null pointers in the arrays fail an assertion.
  void initializeSANModelNow(const char* ModelName, int NPlaces, BaseStateVariableClass** Places, int NReadOnlyPlaces,
                             BaseStateVariableClass** ROPlaces, int NActions, Activity** Activities, int NGroups,
                             BaseGroupClass** Groups);

  /// Appends this model if the name is its name.
  void listModels(const char* TheModelName, List<BaseModelClass>* TheModelList) override;
  void CurrentState(void* MemoryLocation) override;
  void listActions(List<BaseActionClass>* TheActionList) override;
  void listGroups(List<BaseGroupClass>* TheGroupList) override;
  void SetState(void* TheState) override;
  int StateSize() override;
  bool CompareState(void* State1, void* State2) override;

  /// Appends the first action of that name, and no further one.
  void listActions(const char* TheActionName, List<BaseActionClass>* TheActionList) override;

  /// Looks through the local variables, then the read-only places.
  void listSVs(const char* TheModelName, const char* TheStateVariableName, List<BaseStateVariableClass>* TheSVList,
               List<BaseModelClass>* TheModelList) override;

  using BaseModelClass::printState;
  void printState(std::ostream* strm) override;

  BaseStateVariableClass** GetLocalStateVariables(std::ostream* strm) override;

  ModelType GetModelType() override;
  int GetNumberOfChildren() override;
  /// There is no child: fails an assertion.
  BaseModelClass* GetChild(int ChildIndex) override;

  /// Those actions of `ActionList` that are not global, each to the front.
  void GetLocalActions(base_action_list_t& actions) override;

  /// Those actions that affect, or are enabled by, a variable that was shared away, each to the front. Their order is
  /// that of their addresses.
  void GetGlobalActions(base_action_list_t& actions) override;

  bool HasLocalState() override;
  void GetLocalState(State* TheState) override;
  void SetLocalState(const State* TheState) override;
  void ConstructLocalState(State*& TheState) override;
  void DestructLocalState(State* TheState) override;

  int getNumReadOnlyPlaces() { return NumReadOnlyPlaces; }

  /// Writes counts, actions, groups and places to standard output.
  void PrintSANModelInfo();

 protected:
  void SetPlaces(BaseStateVariableClass** Places);
  void SetReadOnlyPlaces(BaseStateVariableClass** ROPlaces);
  void SetActions(Activity** Activities);
  void SetGroups(BaseGroupClass** Groups);

  BaseStateVariableClass** LocalStateVariables = nullptr;  // owned array of those that a firing may change
  BaseStateVariableClass** ReadOnlyPlaces = nullptr;  // owned array of those that no activity of this model changes
  std::int32_t NumReadOnlyPlaces = 0;
};
