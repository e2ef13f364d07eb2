#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "Simulator/UserDistributions.h"
#include "models/ModelKit.h"

/// Workstation cluster of two sub-clusters with N = 2 stations each, their switches and a backbone, and one repair
/// unit; B. Haverkort, H. Hermanns, J.-P. Katoen, On the use of model checking techniques for dependability evaluation,
/// 2000.
class ClusterModel : public kit::AtomicModel {
 public:
  static constexpr short kStations = 2;

  ClusterModel() {
    struct Component {
      const char* name;
      short full;
      double failureRate;  // of one
      double repairRate;
    };
    constexpr std::array<Component, 5> components{{{"L", kStations, 1.0 / 500.0, 2.0},
                                                   {"R", kStations, 1.0 / 500.0, 2.0},
                                                   {"TL", 1, 1.0 / 4000.0, 0.25},
                                                   {"TR", 1, 1.0 / 4000.0, 0.25},
                                                   {"B", 1, 1.0 / 5000.0, 0.125}}};
    Place& busy = place("busy", 0);
    short number = 0;
    for (const Component& component : components) {
      ++number;
      const std::string name = component.name;
      Place& x = place(component.name, component.full);
      places_[static_cast<std::size_t>(number - 1)] = &x;
      const double failureRate = component.failureRate;
      const short full = component.full;
      activity(("fail_" + name).c_str(), {&x}, {&x},
               {.enabled = [&x] { return x.Mark() > 0; },
                .delay = [&x, failureRate] { return TheDistribution->Exponential(x.Mark() * failureRate); },
                .fire = [&x] { --x.Mark(); },
                .reactivates = true});
      activity(("inspect_" + name).c_str(), {&busy, &x}, {&busy},
               {.enabled = [&busy, &x, full] { return busy.Mark() == 0 && x.Mark() < full; },
                .delay = kit::exponential(10.0),
                .fire = [&busy, number] { busy.Mark() = number; }});
      activity(("repair_" + name).c_str(), {&busy}, {&busy, &x},
               {.enabled = [&busy, number] { return busy.Mark() == number; },
                .delay = kit::exponential(component.repairRate),
                .fire =
                    [&busy, &x] {
                      busy.Mark() = 0;
                      ++x.Mark();
                    }});
    }
    finish("cluster");
  }

  /// Share of time in which fewer than all stations of a side, or of a side's number of both, can be reached.
  static kit::RateReward isBelowPremium() {
    return {"cluster", [](kit::ModelInstances models) {
              const auto& places = static_cast<ClusterModel*>(models[0])->places_;
              const auto mark = [&places](std::size_t component) { return places[component]->Mark(); };
              const bool left = mark(0) >= kStations && mark(2) > 0;
              const bool right = mark(1) >= kStations && mark(3) > 0;
              const bool both = mark(0) + mark(1) >= kStations && mark(2) > 0 && mark(3) > 0 && mark(4) > 0;
              return left || right || both ? 0.0 : 1.0;
            }};
  }
  static kit::RateReward percentOfStations() {
    return {"cluster", [](kit::ModelInstances models) {
              const auto& places = static_cast<ClusterModel*>(models[0])->places_;
              return 100.0 * (places[0]->Mark() + places[1]->Mark()) / (2.0 * kStations);
            }};
  }

 private:
  std::array<Place*, 5> places_{};
};
