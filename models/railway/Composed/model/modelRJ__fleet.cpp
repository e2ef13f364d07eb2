#include "railway/Composed/model/modelRJ__fleet.h"

#include <cstddef>
#include <type_traits>

#include "railway/Atomic/train/trainSAN.h"
#include "railway/Study/study/GlobalVariables.h"

namespace {

constexpr const char* modelRJ__fleet__SharedNames[] = {
    "Count",       "MAmessages",         "MAtoRBC",  "TPRmessages", "TPRtoRBC",
    "arrivalTime", "trainHeadPositions", "trainMAs", "trainSpeeds", "trainTailPositions"};

}  // namespace

template <typename Visitor>
void modelRJ__fleet::forEachShared(Visitor visit) {
  visit(Count, &trainSAN::Count);
  visit(MAmessages, &trainSAN::MAmessages);
  visit(MAtoRBC, &trainSAN::MAtoRBC);
  visit(TPRmessages, &trainSAN::TPRmessages);
  visit(TPRtoRBC, &trainSAN::TPRtoRBC);
  visit(arrivalTime, &trainSAN::arrivalTime);
  visit(trainHeadPositions, &trainSAN::trainHeadPositions);
  visit(trainMAs, &trainSAN::trainMAs);
  visit(trainSpeeds, &trainSAN::trainSpeeds);
  visit(trainTailPositions, &trainSAN::trainTailPositions);
}

modelRJ__fleet::modelRJ__fleet()
    : Rep("fleet", nTrains, static_cast<int>(std::size(modelRJ__fleet__SharedNames)), modelRJ__fleet__SharedNames) {
  InstanceArray = new trainSAN*[static_cast<std::size_t>(NumModels)];
  for (int i = 0; i < NumModels; ++i) {
    InstanceArray[i] = new trainSAN;
    ModelArray[i] = InstanceArray[i];
  }
  SetupActions();
  if (NumModels == 0) {
    return;
  }
  if (AllChildrenEmpty()) {
    NumSharedStateVariables = 0;
  } else {
    shareVariables();
  }
  Setup("train");
}

modelRJ__fleet::~modelRJ__fleet() {
  // The variables go first: they stand in for the trains' and do not depend on them.
  forEachShared([](auto* variable, auto /*member*/) { delete variable; });
  for (int i = 0; i < NumModels; ++i) {
    delete InstanceArray[i];
  }
  delete[] InstanceArray;
}

void modelRJ__fleet::shareVariables() {
  trainSAN* const first = InstanceArray[0];
  const char* const* name = modelRJ__fleet__SharedNames;
  forEachShared([&](auto*& variable, auto member) {
    variable = new std::remove_reference_t<decltype(*variable)>(*name);
    addSharedPtr(variable, *name);
    variable->ShareWith(first->*member);
    ++name;
  });
  forEachShared([this](auto* variable, auto member) {
    for (int i = 0; i < NumModels; ++i) {
      addSharingInfo(InstanceArray[i]->*member, variable, nullptr);
    }
  });
  for (int i = 1; i < NumModels; ++i) {
    forEachShared([&](auto* /*variable*/, auto member) { (first->*member)->ShareWith(InstanceArray[i]->*member); });
  }
}
