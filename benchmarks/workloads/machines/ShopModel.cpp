#include "workloads/machines/ShopModel.h"

#include <array>

namespace {

constexpr const char* kSharedNames[] = {"down"};

}  // namespace

MachinesRep::MachinesRep() : Rep("machines", machines, 1, kSharedNames) {
  for (int i = 0; i < NumModels; ++i) {
    machines_.push_back(std::make_unique<MachineSAN>());
    ModelArray[i] = machines_.back().get();
  }
  SetupActions();
  if (machines_.empty()) {
    return;
  }
  MachineSAN& first = *machines_.front();
  addSharedPtr(&down, "down");
  down.ShareWith(&first.down);
  for (const auto& machine : machines_) {
    addSharingInfo(&machine->down, &down, nullptr);
  }
  for (std::size_t i = 1; i < machines_.size(); ++i) {
    first.down.ShareWith(&machines_[i]->down);
  }
  Setup("machine");
}

BoardSAN::BoardSAN() {
  std::array<BaseStateVariableClass*, 1> variables{&down};
  initializeSANModelNow("board", 1, variables.data(), 0, nullptr, 0, nullptr, 0, nullptr);
}

ShopModel::ShopModel() : Join("shop", 2, 1, kSharedNames) {
  ModelArray[0] = &machines_;
  ModelArray[1] = &board_;
  SetupActions();
  addSharedPtr(&down_, "down");
  down_.ShareWith(&machines_.down);
  addSharingInfo(&machines_.down, &down_, &machines_);
  down_.ShareWith(&board_.down);
  addSharingInfo(&board_.down, &down_, &board_);
  Setup();
}
