#pragma once

class BaseModelClass;
class BaseStateVariableClass;

/// One entry of the list of the variables that are the same as a shared variable of a composer.
/// Owns     nothing. The composer that made a link frees it, also when a composer further up has attached it to a list
///          of its own.
class SharedStateVarLink {
 public:
  SharedStateVarLink() = default;
  explicit SharedStateVarLink(BaseStateVariableClass* variable);
  SharedStateVarLink(BaseStateVariableClass* variable, BaseModelClass* model);

  SharedStateVarLink(const SharedStateVarLink&) = delete;
  SharedStateVarLink& operator=(const SharedStateVarLink&) = delete;

  [[nodiscard]] BaseStateVariableClass* getStateVar() const { return myStateVar; }
  [[nodiscard]] SharedStateVarLink* getNext() const { return next; }

  /// Whether the variable stands in this link or one behind it.
  [[nodiscard]] bool hasStateVar(BaseStateVariableClass* variable) const;

  /// Attaches a list at the end of this one. A list that is attached already is left where it is.
  void addStateVarLink(SharedStateVarLink* list);

  /// Frees every link of `list`, for lists that no composer holds.
  void clearStateVarList(SharedStateVarLink* list);

  /// "      This link holds state var ", the name, " at address " and the address, a line for each link.
  void printAllStateVariables() const;

  BaseStateVariableClass* myStateVar = nullptr;  // borrowed from its model
  BaseModelClass* parent = nullptr;              // borrowed: the child through which it was shared; null when not told
  SharedStateVarLink* next = nullptr;            // borrowed from the composer that made it
};
