#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/List.h"
#include "BaseClasses/state/ArrayType.h"

class BaseActionClass;

/// A composite variable with named fields, each a state variable of its own kind: a message or a record in a marking.
/// Here stands all that does not depend on the record.
///
/// Owns     its two action lists while Stored. The concrete class that makes the fields deletes them in its destructor.
/// Image    the images of the fields in declaration order; a field's place is fixed by its declared type.
/// Sharing  merges the two structs as well as their fields: the other one is not Stored afterwards, and both see the
///          same action lists. Structs of a ring may be destroyed in any order, once all sharing is done.
class BaseStructStateVariable : public BaseStateVariableClass {
 public:
  /// One entry of the field list.
  struct fieldType {
    BaseStateVariableClass* field = nullptr;  // borrowed from the concrete class; null until that has made it
    ArrayType type = ArrayType_EMPTY;
  };
  using field_list = std::vector<fieldType>;
  using fieldIterator = field_list::const_iterator;

  BaseStructStateVariable(const BaseStructStateVariable&) = delete;
  BaseStructStateVariable& operator=(const BaseStructStateVariable&) = delete;

  /// Bytes of the fields, computed by the first call. A struct built without a name answers 0 whatever is added to it.
  int StateSize() override;
  void SetState(void* image) override;
  void CurrentState(void* image) override;

  /// The virtual ShareWith, for a variable whose type is not known. Anything but a struct ends the process.
  void share(BaseStateVariableClass* other) override;

  using BaseStateVariableClass::printState;
  /// The name and " = {" as a line; for each field "." and its state; "}" as a line.
  void printState(std::ostream* strm) override;

  [[nodiscard]] int getSize() const { return static_cast<int>(fields.size()); }
  /// The kind of the field at `position`, which must be one of the fields.
  [[nodiscard]] ArrayType getType(int position) const { return fields[static_cast<std::size_t>(position)].type; }
  [[nodiscard]] const field_list& getFields() const { return fields; }

  /// Enters the action in each field's list and then in the struct's own.
  void appendAffectingAction(BaseActionClass* action) override;
  /// Enters the action in the struct's own list and then in each field's.
  void appendEnabledAction(BaseActionClass* action) override;

  /// The leaves of the fields in declaration order. The caller owns the list.
  List<BaseStateVariableClass>* getLeafNodes() override;
  /// The sum over the fields, or 1 if that is 0.
  int getNumLeafNodes() override;
  /// True if there are no fields.
  bool isLeafNode() override { return fields.empty(); }

  void addSelfAsEnablingSVToAction(BaseActionClass* action) override;
  void addSelfAsAffectedSVToAction(BaseActionClass* action) override;
  void removeSelfFromEnablingSVOfAction(BaseActionClass* action) override;
  void removeSelfFromAffectedSVOfAction(BaseActionClass* action) override;

  /// Shares each field with the field of the same position, merges the action lists into this struct's and swaps the
  /// other struct for this one in the actions. A struct with fewer fields ends the process. This struct's own flags
  /// stay as they are: if it is itself a member of a ring, the other one joins its lists.
  virtual void ShareWith(BaseStructStateVariable* otherStruct);

 protected:
  BaseStructStateVariable() = default;
  BaseStructStateVariable(const char* name, const char* prefix);
  /// With `count` entries of the given types, whose variables the concrete class has still to fill in.
  BaseStructStateVariable(const char* name, const char* prefix, const ArrayType* types, int count);

  /// An entry for the field list.
  virtual fieldType field(ArrayType type, BaseStateVariableClass* variable);

  void makeArrays(const ArrayType* types, int count);
  int calculateStateSize();

  /// Fills a plain record of `size` bytes from the fields, or the fields from the record. The record holds the fields
  /// in declaration order, each aligned as the compiler aligns a member of its type; nested structs are nested records
  /// and arrays are arrays. A record of another size ends the process.
  void readRecord(void* record, std::size_t size);
  void writeRecord(const void* record, std::size_t size);

  std::int32_t calculatedStateSize = 0;  // bytes of the image; negative while it has to be computed
  field_list fields;

 private:
  /// Bytes of a field in the image.
  static int imageSize(const fieldType& entry);
  /// Lets `other`, which owned its lists, and all that borrowed them use this struct's lists.
  void takeIn(BaseStructStateVariable* other);

  BaseStructStateVariable* listOwner_ = this;        // borrowed: whose lists this one uses; itself until shared away
  std::vector<BaseStructStateVariable*> borrowers_;  // borrowed: who uses this one's lists
};
