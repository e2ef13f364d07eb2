#include "BaseClasses/state/BaseStructStateVariable.h"

#include <algorithm>
#include <memory>
#include <span>

#include "BaseClasses/Assertions.h"
#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/state/BaseArrayStateVariable.h"

namespace {

/// Where a scalar of the kind stands in a record: `alignment` as the compiler aligns a member of that type.
struct ScalarLayout {
  std::size_t size;
  std::size_t alignment;
};

template <typename T>
constexpr ScalarLayout memberLayout() {
  struct Probe {
    char first;
    T second;
  };
  return {sizeof(T), offsetof(Probe, second)};
}

ScalarLayout scalarLayout(ArrayType type) {
  switch (type) {
    case ArrayType_SHORT:
      return memberLayout<short>();
    case ArrayType_INT:
      return memberLayout<int>();
    case ArrayType_CHAR:
      return memberLayout<char>();
    case ArrayType_DOUBLE:
      return memberLayout<double>();
    case ArrayType_FLOAT:
      return memberLayout<float>();
    default:
      support::failRuntimeAssertion("a record holds scalars, arrays and structs", __FILE__, __LINE__);
  }
}

/// The layout of a plain record whose members mirror a struct variable's fields, found by the rules of the compiler:
/// members in order, each at the next multiple of its alignment, and a struct's size a multiple of its own alignment.
class RecordLayout {
 public:
  struct Slot {
    BaseStateVariableClass* variable;  // borrowed scalar variable
    std::size_t offset;
  };

  explicit RecordLayout(const BaseStructStateVariable::field_list& fields) { placeStruct(fields); }

  [[nodiscard]] std::span<const Slot> slots() const { return slots_; }
  [[nodiscard]] std::size_t size() const { return size_; }

 private:
  using StructFields = BaseStructStateVariable::field_list;

  static std::size_t alignmentOf(BaseStateVariableClass* variable, ArrayType type) {
    if (auto* const array = dynamic_cast<BaseArrayStateVariable*>(variable); array != nullptr) {
      return array->getFields().empty() ? 1 : alignmentOf(array->getFields().front(), array->getType());
    }
    if (auto* const record = dynamic_cast<BaseStructStateVariable*>(variable); record != nullptr) {
      return alignmentOf(record->getFields());
    }
    return scalarLayout(type).alignment;
  }

  static std::size_t alignmentOf(const StructFields& fields) {
    std::size_t strictest = 1;
    for (const auto& entry : fields) {
      strictest = std::max(strictest, alignmentOf(entry.field, entry.type));
    }
    return strictest;
  }

  void alignTo(std::size_t alignment) { size_ = (size_ + alignment - 1) / alignment * alignment; }

  void place(BaseStateVariableClass* variable, ArrayType type) {
    if (variable == nullptr) {
      support::failRuntimeAssertion("variable != nullptr", __FILE__, __LINE__);
    }
    if (auto* const array = dynamic_cast<BaseArrayStateVariable*>(variable); array != nullptr) {
      for (BaseStateVariableClass* const element : array->getFields()) {
        place(element, array->getType());
      }
    } else if (auto* const record = dynamic_cast<BaseStructStateVariable*>(variable); record != nullptr) {
      placeStruct(record->getFields());
    } else {
      const ScalarLayout layout = scalarLayout(type);
      support::requireRuntime(static_cast<std::size_t>(variable->StateSize()) == layout.size,
                              "variable->StateSize() == layout.size");
      alignTo(layout.alignment);
      slots_.push_back({variable, size_});
      size_ += layout.size;
    }
  }

  void placeStruct(const StructFields& fields) {
    const std::size_t alignment = alignmentOf(fields);
    alignTo(alignment);
    for (const auto& entry : fields) {
      place(entry.field, entry.type);
    }
    alignTo(alignment);
  }

  std::vector<Slot> slots_;
  std::size_t size_ = 0;
};

}  // namespace

BaseStructStateVariable::BaseStructStateVariable(const char* name, const char* prefix)
    : BaseStateVariableClass(name, prefix), calculatedStateSize(-1) {}

BaseStructStateVariable::BaseStructStateVariable(const char* name, const char* prefix, const ArrayType* types,
                                                 int count)
    : BaseStateVariableClass(name, prefix) {
  makeArrays(types, count);
}

void BaseStructStateVariable::makeArrays(const ArrayType* types, int count) {
  for (int i = 0; i < count; i++) {
    // An override takes part only once its class is constructed; from the constructor here this is the entry of this
    // class. NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.VirtualCall)
    fields.push_back(field(types[i], nullptr));
  }
  calculatedStateSize = -1;
}

BaseStructStateVariable::fieldType BaseStructStateVariable::field(ArrayType type, BaseStateVariableClass* variable) {
  return {variable, type};
}

int BaseStructStateVariable::imageSize(const fieldType& entry) {
  const int scalar = support::scalarImageSize(entry.type);
  return scalar != 0 ? scalar : entry.field->StateSize();
}

int BaseStructStateVariable::calculateStateSize() {
  int sum = 0;
  for (const fieldType& entry : fields) {
    sum += imageSize(entry);
  }
  return sum;
}

int BaseStructStateVariable::StateSize() {
  if (calculatedStateSize < 0) {
    calculatedStateSize = calculateStateSize();
  }
  return calculatedStateSize;
}

void BaseStructStateVariable::SetState(void* image) {
  auto* place = static_cast<std::byte*>(image);
  for (const fieldType& entry : fields) {
    entry.field->SetState(place);
    place += imageSize(entry);
  }
}

void BaseStructStateVariable::CurrentState(void* image) {
  auto* place = static_cast<std::byte*>(image);
  for (const fieldType& entry : fields) {
    entry.field->CurrentState(place);
    place += imageSize(entry);
  }
}

void BaseStructStateVariable::share(BaseStateVariableClass* other) {
  auto* const otherStruct = dynamic_cast<BaseStructStateVariable*>(other);
  support::requireRuntime(otherStruct != nullptr, "otherStruct");
  ShareWith(otherStruct);
}

void BaseStructStateVariable::ShareWith(BaseStructStateVariable* otherStruct) {
  requirePartner(otherStruct);
  fieldIterator otheri = otherStruct->fields.begin();
  for (const fieldType& entry : fields) {
    support::requireRuntime(otheri != otherStruct->fields.end(), "otheri!=otherStruct->fields.end()");
    entry.field->share(otheri->field);
    ++otheri;
  }

  BaseStructStateVariable* const otherOwner = otherStruct->listOwner_;
  if (otherOwner == listOwner_) {
    return;  // one variable already
  }
  // Only the actions of the lists as they stand now can name the other struct; to ask all those of the merged lists would
  // make the building of a model of n replicas take the square of n.
  const std::vector<BaseActionClass*> affecting = itemsOf(otherStruct->getAffectingActions());
  const std::vector<BaseActionClass*> enabled = itemsOf(otherStruct->getEnabledActions());
  takeIn(otherOwner);
  for (BaseActionClass* const action : affecting) {
    action->replaceAffectedSV(otherStruct, this);
  }
  for (BaseActionClass* const action : enabled) {
    action->replaceEnablingSV(otherStruct, this);
  }
}

void BaseStructStateVariable::takeIn(BaseStructStateVariable* other) {
  BaseStructStateVariable* const owner = listOwner_;
  copyAffectingActions(other->getAffectingActions());
  copyEnabledActions(other->getEnabledActions());
  delete other->getAffectingActions();
  delete other->getEnabledActions();
  other->setShared(true);
  other->setStored(false);

  std::vector<BaseStructStateVariable*> moving = std::move(other->borrowers_);
  other->borrowers_.clear();
  moving.push_back(other);
  for (BaseStructStateVariable* const borrower : moving) {
    borrower->setAffectingActions(SVAffectingActions);
    borrower->setEnabledActions(SVEnabledActions);
    borrower->listOwner_ = owner;
    owner->borrowers_.push_back(borrower);
  }
}

void BaseStructStateVariable::printState(std::ostream* strm) {
  *strm << StateVariableName << " = {\n";
  for (const fieldType& entry : fields) {
    *strm << '.';
    entry.field->printState(strm);
  }
  *strm << "}\n";
}

void BaseStructStateVariable::appendAffectingAction(BaseActionClass* action) {
  for (const fieldType& entry : fields) {
    entry.field->appendAffectingAction(action);
  }
  BaseStateVariableClass::appendAffectingAction(action);
}

void BaseStructStateVariable::appendEnabledAction(BaseActionClass* action) {
  BaseStateVariableClass::appendEnabledAction(action);
  for (const fieldType& entry : fields) {
    entry.field->appendEnabledAction(action);
  }
}

List<BaseStateVariableClass>* BaseStructStateVariable::getLeafNodes() {
  auto temp = std::make_unique<List<BaseStateVariableClass>>();
  support::requireRuntime(temp != nullptr, "temp");
  for (const fieldType& entry : fields) {
    const std::unique_ptr<List<BaseStateVariableClass>> childTemp(entry.field->getLeafNodes());
    support::requireRuntime(childTemp != nullptr, "childTemp");
    temp->append(childTemp.get());
  }
  return temp.release();
}

int BaseStructStateVariable::getNumLeafNodes() {
  int sum = 0;
  for (const fieldType& entry : fields) {
    sum += entry.field->getNumLeafNodes();
  }
  return sum == 0 ? 1 : sum;
}

void BaseStructStateVariable::addSelfAsEnablingSVToAction(BaseActionClass* action) {
  for (const fieldType& entry : fields) {
    entry.field->addSelfAsEnablingSVToAction(action);
  }
}

void BaseStructStateVariable::addSelfAsAffectedSVToAction(BaseActionClass* action) {
  for (const fieldType& entry : fields) {
    entry.field->addSelfAsAffectedSVToAction(action);
  }
}

void BaseStructStateVariable::removeSelfFromEnablingSVOfAction(BaseActionClass* action) {
  for (const fieldType& entry : fields) {
    entry.field->removeSelfFromEnablingSVOfAction(action);
  }
}

void BaseStructStateVariable::removeSelfFromAffectedSVOfAction(BaseActionClass* action) {
  for (const fieldType& entry : fields) {
    entry.field->removeSelfFromAffectedSVOfAction(action);
  }
}

void BaseStructStateVariable::readRecord(void* record, std::size_t size) {
  const RecordLayout layout(fields);
  support::requireRuntime(layout.size() == size, "layout.size() == size");
  for (const RecordLayout::Slot& slot : layout.slots()) {
    slot.variable->CurrentState(static_cast<std::byte*>(record) + slot.offset);
  }
}

void BaseStructStateVariable::writeRecord(const void* record, std::size_t size) {
  const RecordLayout layout(fields);
  support::requireRuntime(layout.size() == size, "layout.size() == size");
  for (const RecordLayout::Slot& slot : layout.slots()) {
    // SetState reads from its argument and does not write there.
    slot.variable->SetState(const_cast<std::byte*>(static_cast<const std::byte*>(record)) + slot.offset);
  }
}
