#pragma once

#include <vector>

#include "models/ModelKit.h"

/// Tandem network with a two-phase first server; H. Hermanns, J. Meyer-Kayser, M. Siegle, Multi terminal binary
/// decision diagrams to represent and analyse continuous time Markov chains, 1999. With `stopsWhenFull`, nothing moves
/// any more once the first station was full.
class TandemModel : public kit::AtomicModel {
 public:
  static constexpr int kCapacity = 5;

  explicit TandemModel(bool stopsWhenFull) {
    Place& sc = place("sc", 0);
    Place& ph = place("ph", 0);
    Place& sm = place("sm", 0);
    Place& hit = place("hit", 0);
    const std::vector<BaseStateVariableClass*> all{&sc, &ph, &sm, &hit};
    activity("arrive", {&sc, &hit}, {&sc, &hit},
             {.enabled = [&sc, &hit] { return hit.Mark() == 0 && sc.Mark() < kCapacity; },
              .delay = kit::exponential(4.0 * kCapacity),
              .fire =
                  [&sc, &hit, stopsWhenFull] {
                    ++sc.Mark();
                    if (stopsWhenFull && sc.Mark() == kCapacity) {
                      hit.Mark() = 1;
                    }
                  }});
    const auto firstPhase = [&sc, &ph, &sm, &hit] {
      return hit.Mark() == 0 && sc.Mark() > 0 && ph.Mark() == 0 && sm.Mark() < kCapacity;
    };
    Activity& moves = member("phase1_case1", all, {&sc, &sm},
                             {.enabled = firstPhase,
                              .delay = kit::exponential(2.0),
                              .fire =
                                  [&sc, &sm] {
                                    --sc.Mark();
                                    ++sm.Mark();
                                  },
                              .weight = [] { return 0.9; }});
    Activity& stays = member("phase1_case2", all, {&ph},
                             {.enabled = firstPhase,
                              .delay = kit::exponential(2.0),
                              .fire = [&ph] { ph.Mark() = 1; },
                              .weight = [] { return 0.1; }});
    group<PostselectGroup>("phase1", {&moves, &stays});
    activity(
        "phase1b", all, {&ph},
        {.enabled = [&sc, &ph, &sm,
                     &hit] { return hit.Mark() == 0 && sc.Mark() > 0 && ph.Mark() == 0 && sm.Mark() == kCapacity; },
         .delay = kit::exponential(0.2),
         .fire = [&ph] { ph.Mark() = 1; }});
    activity("phase2", all, {&sc, &ph, &sm},
             {.enabled = [&sc, &ph, &sm,
                          &hit] { return hit.Mark() == 0 && sc.Mark() > 0 && ph.Mark() == 1 && sm.Mark() < kCapacity; },
              .delay = kit::exponential(2.0),
              .fire =
                  [&sc, &ph, &sm] {
                    --sc.Mark();
                    ph.Mark() = 0;
                    ++sm.Mark();
                  }});
    activity("serve2", {&sm, &hit}, {&sm},
             {.enabled = [&sm, &hit] { return hit.Mark() == 0 && sm.Mark() > 0; },
              .delay = kit::exponential(4.0),
              .fire = [&sm] { --sm.Mark(); }});
    finish("tandem");
    sc_ = &sc;
    sm_ = &sm;
    hit_ = &hit;
  }

  static kit::RateReward customers() {
    return {"tandem", [](kit::ModelInstances models) {
              const auto& tandem = *static_cast<TandemModel*>(models[0]);
              return static_cast<double>(tandem.sc_->Mark() + tandem.sm_->Mark());
            }};
  }
  static kit::RateReward wasFull() {
    return {"tandem", [](kit::ModelInstances models) { return static_cast<TandemModel*>(models[0])->hit_->Mark(); }};
  }

 private:
  Place* sc_;
  Place* sm_;
  Place* hit_;
};
