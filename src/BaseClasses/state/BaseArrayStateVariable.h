#pragma once

#include <ostream>
#include <vector>

#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/List.h"
#include "BaseClasses/state/ArrayType.h"

class BaseActionClass;

/// A composite variable: an ordered sequence of element variables of one kind and one size. Models name the array,
/// while the actions' lists and the sharing work on its leaves. Here stands all that does not depend on the element
/// type.
///
/// Owns     nothing. The concrete class that makes the elements deletes them in its destructor.
/// Image    the images of the elements in index order. An array with no elements has an image of 0 bytes.
/// Sharing  takes place between elements only: the array itself stays Stored and keeps its own lists.
class BaseArrayStateVariable : public BaseStateVariableClass {
 public:
  using field_list = std::vector<BaseStateVariableClass*>;
  using fieldIterator = field_list::const_iterator;

  BaseArrayStateVariable(const BaseArrayStateVariable&) = delete;
  BaseArrayStateVariable& operator=(const BaseArrayStateVariable&) = delete;

  /// Bytes of the elements: their number times the size that the type fixes, or that element 0 tells.
  int StateSize() override;
  void SetState(void* image) override;
  void CurrentState(void* image) override;

  /// The virtual ShareWith, for a variable whose type is not known. Anything but an array ends the process.
  void share(BaseStateVariableClass* other) override;

  using BaseStateVariableClass::printState;
  /// The name and " = {" as a line, the elements' states, "}" as a line.
  void printState(std::ostream* strm) override;

  [[nodiscard]] ArrayType getType() const { return type; }
  [[nodiscard]] int getSize() const { return static_cast<int>(fields.size()); }
  [[nodiscard]] const field_list& getFields() const { return fields; }

  /// Enters the action in each element's list. On purpose not in the array's own, unlike appendEnabledAction.
  void appendAffectingAction(BaseActionClass* TheAction) override;
  /// Enters the action in the array's own list and then in each element's.
  void appendEnabledAction(BaseActionClass* TheAction) override;

  /// The leaves of the elements in index order. The caller owns the list.
  List<BaseStateVariableClass>* getLeafNodes() override;
  /// The sum over the elements, or 1 if that is 0.
  int getNumLeafNodes() override;
  /// True if there are no elements.
  bool isLeafNode() override { return fields.empty(); }

  void addSelfAsEnablingSVToAction(BaseActionClass* action) override;
  void addSelfAsAffectedSVToAction(BaseActionClass* action) override;
  void removeSelfFromEnablingSVOfAction(BaseActionClass* action) override;
  void removeSelfFromAffectedSVOfAction(BaseActionClass* action) override;

  /// Shares each element with the element of the same index. Surplus elements of the other array are left alone; an
  /// array that is too short ends the process.
  virtual void ShareWith(BaseArrayStateVariable* otherArray);

 protected:
  BaseArrayStateVariable() = default;
  BaseArrayStateVariable(const char* name, const char* prefix);
  /// Reserves room for `size` elements and has none yet.
  BaseArrayStateVariable(const char* name, const char* prefix, ArrayType elementType, int size);

  /// Reports an index outside the array and ends the process.
  [[noreturn]] void failIndex(int i);

  ArrayType type = ArrayType_EMPTY;
  field_list fields;  // borrowed here; the concrete class that fills it deletes the elements
};
