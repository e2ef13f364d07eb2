#include "BaseClasses/FastSet.h"

#include <algorithm>

int FastSet::number1 = 0;
int FastSet::number2 = 0;

namespace {

// The assertions' line numbers are part of their texts.
constexpr int kInsertLine = 49;
constexpr int kFindLine = 55;
constexpr int kEmptyLine = 60;
constexpr int kFreezeLine = 75;

void requireBuildingForm(const FastSet& set, int line) {
  support::requireRuntime(!set.is_vec_rep, "!is_vec_rep", "FastSet.cpp", line);
}

}  // namespace

FastSet::FastSet() {
  rep.set_rep = new std::set<int>;
  ++number1;
}

FastSet::~FastSet() {
  if (is_vec_rep) {
    delete[] rep.vec_rep.vec;
  } else {
    delete rep.set_rep;
  }
}

bool FastSet::insert(int item) {
  requireBuildingForm(*this, kInsertLine);
  return rep.set_rep->insert(item).second;
}

bool FastSet::find(int item) {
  requireBuildingForm(*this, kFindLine);
  return rep.set_rep->contains(item);
}

bool FastSet::empty() {
  requireBuildingForm(*this, kEmptyLine);
  return rep.set_rep->empty();
}

void FastSet::NoMoreModifications() {
  requireBuildingForm(*this, kFreezeLine);
  std::set<int>* const built = rep.set_rep;
  int* items = nullptr;
  if (!built->empty()) {
    items = new int[built->size()];
    std::copy(built->begin(), built->end(), items);
  }
  const int numItems = static_cast<int>(built->size());
  delete built;
  ++number2;
  is_vec_rep = true;
  rep.vec_rep = {items, numItems};
}

void FastSet::clear() {
  if (is_vec_rep) {
    delete[] rep.vec_rep.vec;
    rep.vec_rep = {nullptr, 0};
  } else {
    rep.set_rep->clear();
  }
}
