#include "Modelling/Modelling.h"

// The queue M/G/1: customers arrive at random, and one at a time is served for a time that has any distribution at all.
namespace {

using namespace modelling;

/// The distributions of the service time, in the order of the experiments.
enum Law : short {
  kDeterministic,
  kExponential,
  kErlang,
  kHypoExponential,
  kUniform,
  kTriangular,
  kHyperExponential,
  kWeibull,
  kLognormal,
  kGamma,
  kNormal,
  kGeometric,
  kBinomial,
  kNegativeBinomial,
  kPareto,
  kConditionalWeibull,
  kBeta,
  kMixture,
};

Parameter<Short> law{"law"};                   // a Law
Parameter<Double> arrivalRate{"arrivalRate"};  // customers per time unit

class Queue : public AtomicModel {
 public:
  Variable<Place> q{*this, "q"};  // customers, the one in service included

  Queue() : AtomicModel("queue") {
    activity("arrive").exponential(arrivalRate).fires({q}, [this] { ++q.Mark(); });
    serveByLaw();
  }

 private:
  auto service(const char* name) {
    return activity(name).enabledBy({q}, [this] { return q.Mark() > 0; });
  }

  /// `distributed` gives an activity in the making its delay.
  template <typename Distributed>
  void serve(Distributed distributed) {
    distributed(service("serve")).fires({q}, [this] { --q.Mark(); });
  }

  void serveByLaw() {
    switch (law) {
      case kDeterministic:
        return serve([](const auto& service) { return service.deterministic(1.0); });
      case kExponential:
        return serve([](const auto& service) { return service.exponential(1.0); });
      case kErlang:
        return serve([](const auto& service) { return service.erlang(4, 1.0); });
      case kHypoExponential:
        return serve([](const auto& service) { return service.hypoExponential({2.0, 2.0}); });
      case kUniform:
        return serve([](const auto& service) { return service.uniform(0.0, 2.0); });
      case kTriangular:
        return serve([](const auto& service) { return service.triangular(0.0, 2.0, 1.0); });
      case kHyperExponential:
        return serve([](const auto& service) { return service.hyperExponential({0.5, 1.0 / 3.0, 2.0, 2.0 / 3.0}); });
      case kWeibull:
        return serve([](const auto& service) { return service.weibull(2.0, 1.1283791671); });
      case kLognormal:
        return serve([](const auto& service) { return service.lognormal(-0.34657359028, 0.69314718056); });
      default:
        return serveByRarerLaw();
    }
  }

  void serveByRarerLaw() {
    switch (law) {
      case kGamma:
        return serve([](const auto& service) { return service.gamma(2.0, 0.5); });
      case kNormal:
        return serve([](const auto& service) { return service.normal(1.0, 0.04); });
      case kGeometric:
        return serve([](const auto& service) { return service.geometric(0.5); });
      case kBinomial:
        return serve([](const auto& service) { return service.binomial(2, 0.5); });
      case kNegativeBinomial:
        return serve([](const auto& service) { return service.negativeBinomial(2, 2.0 / 3.0); });
      case kPareto:
        return serve([](const auto& service) { return service.pareto(2.0 / 3.0, 3.0); });
      case kConditionalWeibull:
        return serve([](const auto& service) { return service.conditionalWeibull(2.0, 2.0, 2.0); });
      case kBeta:
        return serve([](const auto& service) { return service.beta(2.0, 2.0); });
      default:
        return serveTwoClasses();
    }
  }

  /// The hyper-exponential law once more, as two classes of customers: a member is chosen when a service begins.
  void serveTwoClasses() {
    const auto leave = [this] { --q.Mark(); };
    Activity& slow = service("slow").exponential(0.5).weight(1.0).firesInGroup({q}, leave);
    Activity& quick = service("quick").exponential(2.0).weight(2.0).firesInGroup({q}, leave);
    group<PreselectGroup>("serve", {&slow, &quick});
  }
};

/// In the results: 0 and 1 belong to terminating runs, 2 to 4 to steady-state runs; 5 is there for the mixture alone.
void measure(RewardModel& rewards) {
  rewards.model<Queue>();

  rewards.intervalOfTime("arrived", 0.0, 500.0).impulse("arrive", "queue");
  rewards.timeAveraged("arrived per time unit", 0.0, 500.0).impulse("arrive", "queue");

  constexpr double kTransient = 100.0;
  constexpr double kBatchLength = 400.0;
  rewards.steadyState("customers", kTransient, kBatchLength).rate("queue", [](Queue& queue) { return queue.q.Mark(); });
  rewards.steadyState("busy", kTransient, kBatchLength).rate("queue", [](Queue& queue) { return queue.q.Mark() > 0; });
  PerformanceVariable& served = rewards.steadyState("served per time unit", kTransient, kBatchLength);
  if (law == kMixture) {
    served.impulse("slow", "queue").impulse("quick", "queue");
    rewards.steadyState("slow ones per time unit", kTransient, kBatchLength).impulse("slow", "queue");
  } else {
    served.impulse("serve", "queue");
  }
}

Experiments<Short, Double> eachLaw() {
  Experiments experiments(law, arrivalRate);
  for (short number = kDeterministic; number <= kMixture; ++number) {
    // The law on [0, 1] is quicker than the others, whose mean is 1 or close to it.
    experiments.row(number, number == kBeta ? 1.0 : 0.5);
  }
  return experiments;
}

const StudyEntry study{"service-laws", eachLaw(), measure};

}  // namespace
