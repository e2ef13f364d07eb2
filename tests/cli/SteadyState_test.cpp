#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "cli/RailwayProcessTest.h"

namespace {

using RailwaySteadyStateTest = support::RailwayProcessTest;

/// All variables of the railway are of terminating runs.
TEST_F(RailwaySteadyStateTest, AModelWithoutSteadyStateVariablesAborts) {
  const support::ProcessResult run = railway({"-t", "0", "-N", "3"});
  EXPECT_FALSE(run.exitStatus.has_value());
  EXPECT_EQ(run.signal, SIGABRT);
  EXPECT_EQ(run.out,
            "Is Terminating Simulation: 0\n"
            "Max Number of Batches: 3\n"
            "GenerateConnectivityList()\n"
            "GenerateConnectivityList() Time=<time>\n"
            "SIMULATOR::Preparing to run()\n");
  EXPECT_THAT(run.err, testing::MatchesRegex("Assertion failed: size > 0, file Heap\\.h, line [0-9]+\n"));
}

}  // namespace
