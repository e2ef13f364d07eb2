#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "Composer/Rep.h"
#include "models/ModelKit.h"
#include "support/MarkovChain.h"

/// One machine of a shop with a single repairer, who takes up a failed machine at once when free.
class MachineModel : public kit::AtomicModel {
 public:
  static constexpr double kFailureRate = 0.4;
  static constexpr double kRepairRate = 1.0;

  MachineModel() {
    Place& up = place("up", 1);
    Place& waiting = place("waiting", 0);
    Place& inRepair = place("inRepair", 0);
    Place& repairerFree = place("repairerFree", 1);
    activity("fail", {&up}, {&up, &waiting},
             {.enabled = [&up] { return up.Mark() > 0; },
              .delay = kit::exponential(kFailureRate),
              .fire =
                  [&up, &waiting] {
                    --up.Mark();
                    ++waiting.Mark();
                  }});
    activity("takeUp", {&waiting, &repairerFree}, {&waiting, &repairerFree, &inRepair},
             {.enabled = [&waiting, &repairerFree] { return waiting.Mark() > 0 && repairerFree.Mark() > 0; },
              .delay = [] { return 0.0; },
              .fire =
                  [&waiting, &repairerFree, &inRepair] {
                    --waiting.Mark();
                    --repairerFree.Mark();
                    ++inRepair.Mark();
                  }});
    activity("repair", {&inRepair}, {&inRepair, &repairerFree, &up},
             {.enabled = [&inRepair] { return inRepair.Mark() > 0; },
              .delay = kit::exponential(kRepairRate),
              .fire =
                  [&inRepair, &repairerFree, &up] {
                    --inRepair.Mark();
                    ++repairerFree.Mark();
                    ++up.Mark();
                  }});
    finish("machine");
    up_ = &up;
    inRepair_ = &inRepair;
    repairerFree_ = &repairerFree;
  }

  [[nodiscard]] double isUp() const { return up_->Mark(); }
  [[nodiscard]] double isInRepair() const { return inRepair_->Mark(); }
  [[nodiscard]] Place* repairerFree() const { return repairerFree_; }

 private:
  Place* up_;
  Place* inRepair_;
  Place* repairerFree_;
};

/// Machines with one repairer for all of them.
class ShopModel : public Rep {
 public:
  explicit ShopModel(int machines)
      : Rep("shop", machines, 1, kSharedNames), repairerFree_(std::make_unique<Place>("repairerFree")) {
    for (int i = 0; i < NumModels; ++i) {
      machines_.push_back(std::make_unique<MachineModel>());
      ModelArray[i] = machines_.back().get();
    }
    SetupActions();
    addSharedPtr(repairerFree_.get(), "repairerFree");
    repairerFree_->ShareWith(machines_[0]->repairerFree());
    for (const auto& machine : machines_) {
      addSharingInfo(machine->repairerFree(), repairerFree_.get(), nullptr);
    }
    for (std::size_t i = 1; i < machines_.size(); ++i) {
      machines_[0]->repairerFree()->ShareWith(machines_[i]->repairerFree());
    }
    Setup("machine");
  }

  /// Whether one machine is up, or in repair, summed by the variable over all of them.
  static kit::RateReward machinesUp() {
    return {"machine", [](kit::ModelInstances models) { return of(models).isUp(); }};
  }
  static kit::RateReward machinesInRepair() {
    return {"machine", [](kit::ModelInstances models) { return of(models).isInRepair(); }};
  }

  /// The number of machines up, as a birth-death chain.
  static support::MarkovChain exact(int machines) {
    return {{machines}, [machines](const support::MarkovChain::Marking& marking) {
              const int up = marking[0];
              support::MarkovChain::Moves moves;
              if (up > 0) {
                moves.push_back({{up - 1}, up * MachineModel::kFailureRate});
              }
              if (up < machines) {
                moves.push_back({{up + 1}, MachineModel::kRepairRate});
              }
              return moves;
            }};
  }

 private:
  static constexpr const char* kSharedNames[] = {"repairerFree"};

  static MachineModel& of(kit::ModelInstances models) { return *static_cast<MachineModel*>(models[0]); }

  std::unique_ptr<Place> repairerFree_;
  std::vector<std::unique_ptr<MachineModel>> machines_;
};
