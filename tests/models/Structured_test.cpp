#include <gtest/gtest.h>

#include "models/CycleModel.h"
#include "models/ModelKit.h"
#include "support/MarkovChain.h"

using cycle::CycleModel;
using kit::expectMean;
using kit::Experiment;
using kit::firings;
using kit::instant;
using kit::interval;
using kit::Observations;

namespace {

TEST(StructuredTest, StateImageHoldsEveryElementType) {
  CycleModel model(2);
  // 3 stations: arrays of 2, 4, 1, 8 and 4 bytes an element, then structs of all five.
  EXPECT_EQ(model.StateSize(), 3 * (2 + 4 + 1 + 8 + 4) * 2);
}

class StructuredRunTest : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(EachGenerator, StructuredRunTest, testing::Values(0, 1, 2));

TEST_P(StructuredRunTest, CycleInArraysAndStructsGivesItsTransient) {
  const Experiment experiment{
      [] { return new CycleModel(2); },
      {instant("first", 2.0, CycleModel::numberAt(0)), instant("last", 2.0, CycleModel::numberAt(2)),
       interval("lastOver", 2.0, CycleModel::numberAt(2)), firings("served", 2.0, "serve2", "cycle")}};
  const Observations seen = kit::run(experiment, {.batches = 130000, .seed = 83, .generator = GetParam()});
  const support::MarkovChain exact = cycle::exactCycle(2);
  expectMean(seen[0], exact.at(2.0, [](const auto& n) { return n[0]; }), "customers at station 0");
  expectMean(seen[1], exact.at(2.0, [](const auto& n) { return n[2]; }), "customers at station 2");
  expectMean(seen[2], exact.over(2.0, [](const auto& n) { return n[2]; }), "customer time at station 2");
  expectMean(seen[3], cycle::kRates[2] * exact.over(2.0, [](const auto& n) { return n[2] > 0 ? 1.0 : 0.0; }),
             "served at station 2");
}

}  // namespace
