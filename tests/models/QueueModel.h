#pragma once

#include "Simulator/UserDistributions.h"
#include "models/ModelKit.h"

/// M/M/1/K from empty: Poisson arrivals, exponential service at rate 1, room for `capacity` customers.
class QueueModel : public kit::AtomicModel {
 public:
  QueueModel(double arrivalRate, int capacity) : capacity_(capacity) {
    Place& q = place("q", 0);
    activity("arrive", {&q}, {&q},
             {.enabled = [&q, capacity] { return q.Mark() < capacity; },
              .delay = [arrivalRate] { return TheDistribution->Exponential(arrivalRate); },
              .fire = [&q] { ++q.Mark(); }});
    activity("serve", {&q}, {&q},
             {.enabled = [&q] { return q.Mark() > 0; },
              .delay = [] { return TheDistribution->Exponential(1.0); },
              .fire = [&q] { --q.Mark(); }});
    finish("queue");
    q_ = &q;
  }

  static kit::RateReward numberInSystem() {
    return {"queue", [](kit::ModelInstances models) { return static_cast<double>(of(models).mark()); }};
  }
  static kit::RateReward isEmpty() {
    return {"queue", [](kit::ModelInstances models) { return of(models).mark() == 0 ? 1.0 : 0.0; }};
  }
  static kit::RateReward isBusy() {
    return {"queue", [](kit::ModelInstances models) { return of(models).mark() > 0 ? 1.0 : 0.0; }};
  }
  static kit::RateReward isFull() {
    return {"queue", [](kit::ModelInstances models) { return of(models).mark() == of(models).capacity_ ? 1.0 : 0.0; }};
  }

 private:
  static QueueModel& of(kit::ModelInstances models) { return *static_cast<QueueModel*>(models[0]); }
  [[nodiscard]] short mark() const { return q_->Mark(); }

  int capacity_;
  Place* q_;
};
