#include "bare/Net.h"

#include <algorithm>
#include <limits>

namespace bare {

namespace {

constexpr std::int32_t kNoBound = std::numeric_limits<std::int32_t>::max();

std::uint32_t sizeOf(const auto& table) {
  return static_cast<std::uint32_t>(table.size());
}

}  // namespace

std::uint32_t Net::addPlace(std::int32_t mark, double rewardWeight) {
  marks.push_back(mark);
  weights.push_back(rewardWeight);
  return sizeOf(marks) - 1;
}

void Net::addTransition(double rate, const std::vector<Arc>& its, const std::vector<Condition>& when) {
  transitions.back().mean = 1.0 / rate;
  arcs.insert(arcs.end(), its.begin(), its.end());
  conditions.insert(conditions.end(), when.begin(), when.end());
  transitions.push_back({0.0, sizeOf(arcs), sizeOf(conditions), 0});
}

void Net::connect() {
  std::vector<std::vector<std::uint32_t>> readers(marks.size());
  for (std::uint32_t t = 0; t < transitionCount(); ++t) {
    for (std::uint32_t i = transitions[t].firstCondition; i < transitions[t + 1].firstCondition; ++i) {
      readers[conditions[i].place].push_back(t);
    }
  }
  for (std::uint32_t t = 0; t < transitionCount(); ++t) {
    const auto first = static_cast<std::ptrdiff_t>(affected.size());
    affected.push_back(t);
    for (std::uint32_t i = transitions[t].firstArc; i < transitions[t + 1].firstArc; ++i) {
      for (const std::uint32_t reader : readers[arcs[i].place]) {
        if (std::find(affected.begin() + first, affected.end(), reader) == affected.end()) {
          affected.push_back(reader);
        }
      }
    }
    transitions[t + 1].firstAffected = sizeOf(affected);
  }
}

Net queue(double arrivalRate, double serviceRate, std::int32_t capacity) {
  Net net;
  const std::uint32_t q = net.addPlace(0, 1.0);
  net.addTransition(arrivalRate, {{q, 1}}, {{q, 0, capacity - 1}});
  net.addTransition(serviceRate, {{q, -1}}, {{q, 1, kNoBound}});
  net.connect();
  return net;
}

Net cycle(std::uint32_t stations, std::int32_t customersEach) {
  Net net;
  for (std::uint32_t i = 0; i < stations; ++i) {
    net.addPlace(customersEach, i == 0 ? 1.0 : 0.0);
  }
  for (std::uint32_t i = 0; i < stations; ++i) {
    net.addTransition(1.0, {{i, -1}, {(i + 1) % stations, 1}}, {{i, 1, kNoBound}});
  }
  net.connect();
  return net;
}

Net machines(std::uint32_t count, double failureRate, double repairRate) {
  Net net;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t up = net.addPlace(1, 0.0);
    const std::uint32_t down = net.addPlace(0, 1.0);
    net.addTransition(failureRate, {{up, -1}, {down, 1}}, {{up, 1, kNoBound}});
    net.addTransition(repairRate, {{down, -1}, {up, 1}}, {{down, 1, kNoBound}});
  }
  net.connect();
  return net;
}

Net clocks(std::uint32_t count) {
  Net net;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t ticks = net.addPlace(0, 0.0);
    // A tick leaves the mark as it is, and is gone through like any other firing.
    net.addTransition(1.0, {{ticks, 0}}, {{ticks, 0, kNoBound}});
  }
  net.connect();
  return net;
}

}  // namespace bare
