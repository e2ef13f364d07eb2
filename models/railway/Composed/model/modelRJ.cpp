#include "railway/Composed/model/modelRJ.h"

#include <iterator>
#include <type_traits>

#include "railway/Atomic/trackside/tracksideSAN.h"
#include "railway/Composed/model/modelRJ__fleet.h"

namespace {

constexpr const char* modelRJ__SharedNames[] = {"MAmessages", "MAtoRBC", "TPRmessages", "TPRtoRBC"};

constexpr int kNumChildren = 2;

}  // namespace

template <typename Visitor>
void modelRJ::forEachShared(Visitor visit) {
  visit(MAmessages, &modelRJ__fleet::MAmessages, &tracksideSAN::MAmessages);
  visit(MAtoRBC, &modelRJ__fleet::MAtoRBC, &tracksideSAN::MAtoRBC);
  visit(TPRmessages, &modelRJ__fleet::TPRmessages, &tracksideSAN::TPRmessages);
  visit(TPRtoRBC, &modelRJ__fleet::TPRtoRBC, &tracksideSAN::TPRtoRBC);
}

modelRJ::modelRJ()
    : Join("join", kNumChildren, static_cast<int>(std::size(modelRJ__SharedNames)), modelRJ__SharedNames) {
  fleet = new modelRJ__fleet;
  ModelArray[0] = fleet;
  fleet->DefineName("fleet");
  trackside = new tracksideSAN;
  ModelArray[1] = trackside;
  trackside->DefineName("trackside");
  SetupActions();
  if (AllChildrenEmpty()) {
    NumSharedStateVariables = 0;
  } else {
    shareVariables();
  }
  Setup();
}

modelRJ::~modelRJ() {
  // The variables go first: they stand in for the children's and do not depend on them.
  forEachShared([](auto* variable, auto /*fleetMember*/, auto /*tracksideMember*/) { delete variable; });
  delete fleet;
  delete trackside;
}

void modelRJ::shareVariables() {
  const char* const* name = modelRJ__SharedNames;
  forEachShared([&](auto*& variable, auto fleetMember, auto tracksideMember) {
    variable = new std::remove_reference_t<decltype(*variable)>(*name);
    addSharedPtr(variable, *name);
    const auto join = [this, &variable](auto* childsVariable, BaseModelClass* child) {
      if (child->NumStateVariables > 0) {
        variable->ShareWith(getSharableSVPointer(childsVariable));
        addSharingInfo(childsVariable, variable, child);
      }
    };
    join(fleet->*fleetMember, fleet);
    join(trackside->*tracksideMember, trackside);
    ++name;
  });
}
