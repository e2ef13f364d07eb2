// Measures that take a trajectory of tens of millions of firings until their 95 % half-width is as small as it must be.

#include <gtest/gtest.h>

#include "models/ClusterModel.h"
#include "models/ModelKit.h"
#include "models/PollingModel.h"
#include "models/QueueModel.h"

using kit::Cut;
using kit::expectSteadyMean;
using kit::Experiment;
using kit::longRunAverage;
using kit::Observations;
using kit::throughput;

namespace {

constexpr int kBatches = 1600;

TEST(SteadyStateLongRunsTest, QueueOfTwentyPlacesIsFullForItsShareOfTime) {
  const Cut cut{2000.0, 26000.0};
  const Experiment experiment{[] { return new QueueModel(0.9, 20); },
                              {longRunAverage("full", cut, QueueModel::isFull())}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 104, .generator = 2});
  expectSteadyMean(seen[0], 0.0136513863542, "full");
}

/// All stations are alike, so that the mean over them is that of each; its standard error is smaller.
TEST(SteadyStateLongRunsTest, PollingServerKeepsStationsWaitingForTheirShareOfTime) {
  const Cut cut{50.0, 300.0};
  kit::Variable served = throughput("served", cut, "serve_1", "polling");
  served.impulses[0].function = [] { return 1.0 / PollingModel::kStations; };
  for (const char* const name : {"serve_2", "serve_3"}) {
    served.impulses.push_back(served.impulses[0]);
    served.impulses.back().action = name;
  }
  const Experiment experiment{[] { return new PollingModel; },
                              {longRunAverage("waiting", cut, PollingModel::shareWaiting()), served,
                               longRunAverage("beingServed", cut, PollingModel::shareServed())}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 202, .generator = 1});
  expectSteadyMean(seen[0], 0.1308020365834841, "waiting");
  expectSteadyMean(seen[1], 0.217299490854, "throughput of a station, by the firings");
  expectSteadyMean(seen[2], 0.217299490854, "throughput of a station, by the rate of 1 while enabled");
}

TEST(SteadyStateLongRunsTest, ClusterIsBelowItsPremiumServiceForItsShareOfTime) {
  const Cut cut{1000.0, 300000.0};
  const Experiment experiment{[] { return new ClusterModel; },
                              {longRunAverage("below", cut, ClusterModel::isBelowPremium())}};
  const Observations seen = kit::runSteadyState(experiment, {.batches = kBatches, .seed = 204, .generator = 0});
  expectSteadyMean(seen[0], 1.0 - 0.9999615335623628, "below premium");
}

}  // namespace
