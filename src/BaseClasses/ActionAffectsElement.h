#pragma once

class BaseActionClass;

/// One link of the chain `BaseActionClass::Affects`: the groups that must be looked at after an action has fired.
/// Order    as the connectivity list was built; the event step walks it from the head.
/// Owns     nothing: the chain belongs to whoever built it, and the action to the model tree.
struct ActionAffectsElement {
  BaseActionClass* Action = nullptr;     // borrowed from the model tree: the affected group
  ActionAffectsElement* next = nullptr;  // borrowed from the chain; null at its end
};
