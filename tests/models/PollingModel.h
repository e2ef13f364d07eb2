#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "models/ModelKit.h"

/// Cyclic-server polling; O. C. Ibe, K. S. Trivedi, Stochastic Petri net models of polling systems, 1990.
class PollingModel : public kit::AtomicModel {
 public:
  static constexpr short kStations = 3;

  PollingModel() {
    Place& pos = place("pos", 1);
    Place& srv = place("srv", 0);
    pos_ = &pos;
    srv_ = &srv;
    for (short i = 1; i <= kStations; ++i) {
      const std::string number = std::to_string(i);
      Place& q = place(("q" + number).c_str(), 0);
      const std::vector<BaseStateVariableClass*> all{&pos, &srv, &q};
      const auto next = static_cast<short>(i % kStations + 1);
      const auto here = [&pos, i] { return pos.Mark() == i; };
      activity(("arrive_" + number).c_str(), {&q}, {&q},
               {.enabled = [&q] { return q.Mark() == 0; },
                .delay = kit::exponential(1.0 / kStations),
                .fire = [&q] { q.Mark() = 1; }});
      activity(("walk_" + number).c_str(), all, {&pos},
               {.enabled = [here, &srv, &q] { return here() && srv.Mark() == 0 && q.Mark() == 0; },
                .delay = kit::exponential(200.0),
                .fire = [&pos, next] { pos.Mark() = next; }});
      activity(("start_" + number).c_str(), all, {&srv},
               {.enabled = [here, &srv, &q] { return here() && srv.Mark() == 0 && q.Mark() == 1; },
                .delay = kit::exponential(200.0),
                .fire = [&srv] { srv.Mark() = 1; }});
      activity(("serve_" + number).c_str(), {&pos, &srv}, all,
               {.enabled = [here, &srv] { return here() && srv.Mark() == 1; },
                .delay = kit::exponential(1.0),
                .fire =
                    [&pos, &srv, &q, next] {
                      q.Mark() = 0;
                      srv.Mark() = 0;
                      pos.Mark() = next;
                    }});
      queues_[static_cast<std::size_t>(i - 1)] = &q;
    }
    finish("polling");
  }

  static kit::RateReward firstWaits() {
    return {"polling", [](kit::ModelInstances models) { return of(models).waits(1) ? 1.0 : 0.0; }};
  }
  /// Share of the stations that wait, or are served. By symmetry the mean is that of any one station.
  static kit::RateReward shareWaiting() {
    return {"polling", [](kit::ModelInstances models) {
              int waiting = 0;
              for (short i = 1; i <= kStations; ++i) {
                waiting += of(models).waits(i) ? 1 : 0;
              }
              return static_cast<double>(waiting) / kStations;
            }};
  }
  static kit::RateReward shareServed() {
    return {"polling", [](kit::ModelInstances models) { return of(models).srv_->Mark() / double{kStations}; }};
  }

 private:
  static PollingModel& of(kit::ModelInstances models) { return *static_cast<PollingModel*>(models[0]); }
  [[nodiscard]] bool waits(short i) const {
    const bool isServed = pos_->Mark() == i && srv_->Mark() == 1;
    return queues_[static_cast<std::size_t>(i - 1)]->Mark() == 1 && !isServed;
  }

  Place* pos_;
  Place* srv_;
  std::array<Place*, kStations> queues_{};
};
