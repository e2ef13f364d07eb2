#pragma once

#include <algorithm>

#include "Simulator/UserDistributions.h"
#include "models/ModelKit.h"
#include "support/MarkovChain.h"

/// M/M/c/K from empty: Poisson arrivals, `servers` servers of rate 1 each, room for `capacity` customers. One activity
/// serves for all servers at a rate that follows the marking. With as many servers as room it is Erlang's loss system.
class MultiServerModel : public kit::AtomicModel {
 public:
  /// reactivates  whether a service under way is drawn anew at the rate of a new marking, as it must be
  MultiServerModel(double arrivalRate, int servers, int capacity, bool reactivates = true)
      : servers_(servers), capacity_(capacity) {
    Place& q = place("q", 0);
    activity("arrive", {&q}, {&q},
             {.enabled = [&q, capacity] { return q.Mark() < capacity; },
              .delay = kit::exponential(arrivalRate),
              .fire = [&q] { ++q.Mark(); }});
    activity("serve", {&q}, {&q},
             {.enabled = [&q] { return q.Mark() > 0; },
              .delay = [this] { return TheDistribution->Exponential(busyServers()); },
              .fire = [&q] { --q.Mark(); },
              .reactivates = reactivates});
    finish("servers");
    q_ = &q;
  }

  static kit::RateReward numberInSystem() {
    return {"servers", [](kit::ModelInstances models) { return static_cast<double>(of(models).q_->Mark()); }};
  }
  static kit::RateReward numberBusy() {
    return {"servers", [](kit::ModelInstances models) { return of(models).busyServers(); }};
  }
  static kit::RateReward isFull() {
    return {"servers",
            [](kit::ModelInstances models) { return of(models).q_->Mark() == of(models).capacity_ ? 1.0 : 0.0; }};
  }

  /// The number of customers, as a birth-death chain.
  static support::MarkovChain exact(double arrivalRate, int servers, int capacity) {
    return {{0}, [=](const support::MarkovChain::Marking& marking) {
              support::MarkovChain::Moves moves;
              if (marking[0] < capacity) {
                moves.push_back({{marking[0] + 1}, arrivalRate});
              }
              if (marking[0] > 0) {
                moves.push_back({{marking[0] - 1}, static_cast<double>(std::min(marking[0], servers))});
              }
              return moves;
            }};
  }

 private:
  static MultiServerModel& of(kit::ModelInstances models) { return *static_cast<MultiServerModel*>(models[0]); }
  [[nodiscard]] double busyServers() const { return std::min<int>(q_->Mark(), servers_); }

  int servers_;
  int capacity_;
  Place* q_ = nullptr;
};
