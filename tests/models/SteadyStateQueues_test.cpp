#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "Simulator/UserDistributions.h"
#include "models/ModelKit.h"
#include "models/MultiServerModel.h"
#include "models/QueueModel.h"
#include "support/MarkovChain.h"

using kit::Cut;
using kit::expectSteadyMean;
using kit::Experiment;
using kit::firingsInBatch;
using kit::longRunAverage;
using kit::Observations;
using kit::throughput;

namespace {

constexpr int kBatches = 1600;

// ---- M/M/1/K --------------------------------------------------------------------------------------------------------

struct FiniteQueue {
  double arrivalRate;
  int capacity;
  double number;  // in system, in the long run
  double full;
  double served;  // for a unit of time
};

constexpr FiniteQueue kRoomForTen{0.8, 10, 2.96631426648, 0.0234928575799, 0.781205713936};
constexpr FiniteQueue kRoomForTwenty{0.9, 20, 6.41988797906, 0.0136513863542, 0.887713752281};
constexpr FiniteQueue kRoomForFive{1.0, 5, 2.5, 0.166666666667, 0.833333333333};

void expectQueue(const FiniteQueue& queue, Cut cut, kit::RunSettings settings) {
  const Experiment experiment{
      [=] { return new QueueModel(queue.arrivalRate, queue.capacity); },
      {longRunAverage("number", cut, QueueModel::numberInSystem()), throughput("served", cut, "serve", "queue"),
       longRunAverage("busy", cut, QueueModel::isBusy()), firingsInBatch("arrivals", cut, "arrive", "queue")}};
  const Observations seen = kit::runSteadyState(experiment, settings);
  expectSteadyMean(seen[0], queue.number, "number in system");
  expectSteadyMean(seen[1], queue.served, "throughput, by the firings");
  expectSteadyMean(seen[2], queue.served, "throughput, by the rate of 1 while enabled");
  expectSteadyMean(seen[3], queue.served * cut.length, "arrivals let in during a batch");
}

void expectFull(const FiniteQueue& queue, Cut cut, kit::RunSettings settings) {
  const Experiment experiment{[=] { return new QueueModel(queue.arrivalRate, queue.capacity); },
                              {longRunAverage("full", cut, QueueModel::isFull())}};
  expectSteadyMean(kit::runSteadyState(experiment, settings)[0], queue.full, "full");
}

TEST(SteadyStateQueuesTest, QueueOfTenPlacesGivesItsLongRunMeans) {
  expectQueue(kRoomForTen, {200.0, 800.0}, {.batches = kBatches, .seed = 101, .generator = 0});
}

TEST(SteadyStateQueuesTest, QueueOfTenPlacesIsFullForItsShareOfTime) {
  expectFull(kRoomForTen, {200.0, 9000.0}, {.batches = kBatches, .seed = 102, .generator = 1});
}

TEST(SteadyStateQueuesTest, QueueOfTwentyPlacesGivesItsLongRunMeans) {
  expectQueue(kRoomForTwenty, {2000.0, 2000.0}, {.batches = kBatches, .seed = 103, .generator = 1});
}

TEST(SteadyStateQueuesTest, QueueOfFivePlacesGivesItsLongRunMeans) {
  expectQueue(kRoomForFive, {100.0, 150.0}, {.batches = kBatches, .seed = 105, .generator = 2});
}

TEST(SteadyStateQueuesTest, QueueOfFivePlacesIsFullForItsShareOfTime) {
  expectFull(kRoomForFive, {100.0, 700.0}, {.batches = kBatches, .seed = 106, .generator = 0});
}

/// Without a limit on the room: with load r, r / (1 - r) in the system, busy for a share of r.
TEST(SteadyStateQueuesTest, QueueWithoutLimitHoldsItsLoadOverOneLessIt) {
  constexpr double kLoad = 0.5;
  const Cut cut{100.0, 1400.0};
  const Experiment experiment{
      [] { return new QueueModel(kLoad, std::numeric_limits<short>::max()); },
      {longRunAverage("number", cut, QueueModel::numberInSystem()), longRunAverage("busy", cut, QueueModel::isBusy()),
       throughput("served", cut, "serve", "queue")}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 107, .generator = 0});
  expectSteadyMean(seen[0], kLoad / (1.0 - kLoad), "number in system");
  expectSteadyMean(seen[1], kLoad, "busy");
  expectSteadyMean(seen[2], kLoad, "served for a unit of time");
}

// ---- Several servers ------------------------------------------------------------------------------------------------

struct Loss {
  double load;
  int servers;
  double full;
  double number;
};

void expectLoss(const Loss& loss, Cut cut, kit::RunSettings settings) {
  const Experiment experiment{[=] { return new MultiServerModel(loss.load, loss.servers, loss.servers); },
                              {longRunAverage("full", cut, MultiServerModel::isFull()),
                               longRunAverage("number", cut, MultiServerModel::numberInSystem())}};
  const Observations seen = kit::runSteadyState(experiment, settings);
  expectSteadyMean(seen[0], loss.full, "all servers busy");
  expectSteadyMean(seen[1], loss.number, "busy servers");
}

TEST(SteadyStateQueuesTest, FifteenServersLoseTheirShareOfALoadOfTen) {
  expectLoss({10.0, 15, 0.0364969454724, 9.63503054528}, {50.0, 300.0},
             {.batches = kBatches, .seed = 108, .generator = 1});
}

TEST(SteadyStateQueuesTest, TenServersLoseTheirShareOfALoadOfFive) {
  expectLoss({5.0, 10, 0.0183845703366, 4.90807714832}, {50.0, 1000.0},
             {.batches = kBatches, .seed = 109, .generator = 2});
}

TEST(SteadyStateQueuesTest, FiveServersLoseTheirShareOfALoadOfTwo) {
  expectLoss({2.0, 5, 0.0366972477064, 1.92660550459}, {50.0, 650.0},
             {.batches = kBatches, .seed = 110, .generator = 0});
}

/// With a = 1.6 and 2 servers, P(n) is a P(0) at 1, and a^n / 2^(n-1) P(0) / 2 from there on.
TEST(SteadyStateQueuesTest, TwoServersWithRoomForTenHoldTheirNumber) {
  constexpr double kLoad = 1.6;
  constexpr int kRoom = 10;
  double sum = 1.0;
  double number = 0.0;
  double busy = 0.0;
  double weight = 1.0;
  for (int n = 1; n <= kRoom; ++n) {
    weight *= kLoad / (n == 1 ? 1.0 : 2.0);
    sum += weight;
    number += n * weight;
    busy += (n == 1 ? 1.0 : 2.0) * weight;
  }
  const double lost = weight / sum;

  const Cut cut{100.0, 300.0};
  const Experiment experiment{
      [] { return new MultiServerModel(kLoad, 2, kRoom); },
      {longRunAverage("number", cut, MultiServerModel::numberInSystem()),
       longRunAverage("busy", cut, MultiServerModel::numberBusy()), throughput("served", cut, "serve", "servers")}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 111, .generator = 2});
  expectSteadyMean(seen[0], number / sum, "number in system");
  expectSteadyMean(seen[1], busy / sum, "busy servers");
  expectSteadyMean(seen[2], kLoad * (1.0 - lost), "served for a unit of time");
}

// ---- M/G/1: every sampler through the engine ------------------------------------------------------------------------
//
// Under the generators 0 and 2. The draws of the Tausworthe generator depend on the one before, a small one being
// followed by one 8193 times as large, and in a queue, where gaps and services take turns, that shows: over 48 million
// units of time it misses the number of Weibull services by +0.4 % and that of binomial ones by -0.5 %, nine standard
// errors and more, where the two other generators stay within two.

/// Poisson arrivals at rate 0.5, one server whose mean service time is 1, room for all.
class GeneralServiceModel : public kit::AtomicModel {
 public:
  explicit GeneralServiceModel(std::function<double()> service) {
    Place& q = place("q", 0);
    activity("arrive", {&q}, {&q},
             {.enabled = [] { return true; }, .delay = kit::exponential(0.5), .fire = [&q] { ++q.Mark(); }});
    activity("serve", {&q}, {&q},
             {.enabled = [&q] { return q.Mark() > 0; }, .delay = std::move(service), .fire = [&q] { --q.Mark(); }});
    finish("general");
    q_ = &q;
  }

  static kit::RateReward numberInSystem() {
    return {"general", [](kit::ModelInstances models) {
              return static_cast<double>(static_cast<GeneralServiceModel*>(models[0])->q_->Mark());
            }};
  }

 private:
  Place* q_;
};

struct Service {
  const char* name;
  int generator;
  double (*sample)();
  double number;  // in system, by F. Pollaczek (1930) and A. J. Khinchine (1932)
};

void PrintTo(const Service& service, std::ostream* stream) {
  *stream << service.name;
}

UserDistributions& sampler() {
  return *TheDistribution;
}

const std::array<Service, 14> kServices{{
    {"Deterministic", 0, [] { return sampler().Deterministic(1.0); }, 0.75},
    {"Exponential", 2, [] { return sampler().Exponential(1.0); }, 1.0},
    {"Erlang", 0, [] { return sampler().Erlang(4.0, 1.0); }, 0.8125},
    {"HypoExponential", 2,
     [] {
       std::array<double, 2> rates{2.0, 2.0};
       return sampler().HypoExponential(2, rates.data());
     },
     0.875},
    {"Uniform", 0, [] { return sampler().Uniform(0.0, 2.0); }, 0.833333333},
    {"Triangular", 2, [] { return sampler().Triangular(0.0, 2.0, 1.0); }, 0.791666667},
    {"HyperExponential", 0,
     [] {
       std::array<double, 4> rateAndWeight{0.5, 1.0 / 3.0, 2.0, 2.0 / 3.0};
       return sampler().HyperExponential(2, rateAndWeight.data());
     },
     1.25},
    {"Weibull", 2, [] { return sampler().Weibull(2.0, 1.1283791671); }, 0.818309886},
    {"Lognormal", 0, [] { return sampler().Lognormal(-0.34657359028, 0.69314718056); }, 1.0},
    {"Gamma", 2, [] { return sampler().Gamma(2.0, 0.5); }, 0.875},
    {"Normal", 0, [] { return sampler().Normal(1.0, 0.04); }, 0.76},
    {"Geometric", 2, [] { return sampler().Geometric(0.5); }, 1.25},
    {"Binomial", 0, [] { return sampler().Binomial(2.0, 0.5); }, 0.875},
    {"NegativeBinomial", 2, [] { return sampler().NegativeBinomial(2.0, 2.0 / 3.0); }, 1.125},
}};

class GeneralServiceTest : public testing::TestWithParam<Service> {};

std::string nameOf(const testing::TestParamInfo<Service>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(EachSampler, GeneralServiceTest, testing::ValuesIn(kServices), nameOf);

Observations runService(double (*sample)(), kit::RunSettings settings) {
  const Cut cut{100.0, 2000.0};
  const Experiment experiment{[=] { return new GeneralServiceModel(sample); },
                              {longRunAverage("number", cut, GeneralServiceModel::numberInSystem())}};
  return kit::runSteadyState(experiment, settings);
}

TEST_P(GeneralServiceTest, SamplerGivesTheNumberOfItsFirstTwoMoments) {
  const Observations seen =
      runService(GetParam().sample, {.batches = kBatches, .seed = 112, .generator = GetParam().generator});
  expectSteadyMean(seen[0], GetParam().number, "number in system");
}

/// The third moment of these services is infinite, and with it the variance of the number in the system: no standard
/// error could be told.
TEST(SteadyStateQueuesTest, ParetoServiceGivesTheNumberOfItsFirstTwoMomentsWithinFivePercent) {
  const Observations seen = runService([] { return sampler().Pareto(2.0 / 3.0, 3.0); },
                                       {.batches = 2 * kBatches, .seed = 113, .generator = 2});
  double sum = 0.0;
  for (const double value : seen[0]) {
    sum += value;
  }
  const double mean = sum / static_cast<double>(seen[0].size());
  EXPECT_NEAR(mean, 0.833333333, 0.05 * 0.833333333);
}

}  // namespace
