#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "support/ProcessRunner.h"

// The worked example of the documents, run as a user runs it.

namespace {

constexpr std::size_t kVariables = 4;  // numberInQueue at 1, 5 and 10, then numberServed
constexpr int kBatches = 60000;

/// Mean and standard error of the mean of each variable's observations.
struct Estimate {
  double mean = 0.0;
  double error = 0.0;
};

Estimate estimate(const std::vector<double>& observations) {
  const auto count = static_cast<double>(observations.size());
  double sum = 0.0;
  for (const double value : observations) {
    sum += value;
  }
  const double mean = sum / count;
  double squares = 0.0;
  for (const double value : observations) {
    squares += (value - mean) * (value - mean);
  }
  return {mean, std::sqrt(squares / (count - 1.0) / count)};
}

/// Runs the queue with these further options and reads its ASCII file.
std::array<Estimate, kVariables> simulate(const std::vector<std::string>& options) {
  std::string folder = (std::filesystem::temp_directory_path() / "queue-XXXXXX").string();
  EXPECT_NE(mkdtemp(folder.data()), nullptr) << folder;
  const std::filesystem::path file = std::filesystem::path(folder) / "values.csv";
  support::ProcessRequest request;
  request.program = QUORVA_QUEUE;
  request.arguments = {"-N" + std::to_string(kBatches), "-a" + file.string()};
  request.arguments.insert(request.arguments.end(), options.begin(), options.end());
  const support::ProcessResult run = support::runProcess(request);
  EXPECT_EQ(run.exitStatus, 0) << run.err;

  std::array<std::vector<double>, kVariables> observations;
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    if (line.front() != '#') {
      const std::size_t comma = line.find(',');
      observations.at(std::stoul(line.substr(0, comma))).push_back(std::stod(line.substr(comma + 1)));
    }
  }
  std::filesystem::remove_all(folder);

  std::array<Estimate, kVariables> estimates;
  for (std::size_t variable = 0; variable < kVariables; ++variable) {
    EXPECT_EQ(observations[variable].size(), static_cast<std::size_t>(kBatches)) << "variable " << variable;
    estimates[variable] = estimate(observations[variable]);
  }
  return estimates;
}

/// Four standard errors: one test in about 15 000 would fail by chance, and the seed is fixed. They must be no more
/// than four parts in a hundred of the value, so that the test can fail at all.
void expectEstimate(const Estimate& simulated, double exact, const std::string& what) {
  EXPECT_LE(std::abs(simulated.mean - exact), 4.0 * simulated.error)
      << what << ": simulated " << simulated.mean << ", exact " << exact << ", standard error " << simulated.error;
  EXPECT_LE(4.0 * simulated.error, 0.04 * exact) << what << ": too few batches to tell";
}

// With room for one customer the queue is a machine with two states. Started empty, it holds a customer at time t with
// probability p (1 - exp(-r t)), where r = lambda + mu and p = lambda / r; it serves at rate mu while it holds one, so
// that the number served by T has the mean mu p (T - (1 - exp(-r T)) / r).
TEST(QueueTest, RoomForOneCustomerGivesItsClosedForm) {
  const double lambda = 2.0;
  const double mu = 1.5;
  const double r = lambda + mu;
  const double p = lambda / r;
  const auto simulated = simulate({"-O", "s:capacity:1:d:arrivalRate:2:d:serviceRate:1.5"});
  expectEstimate(simulated[0], p * (1.0 - std::exp(-r * 1.0)), "numberInQueue at 1");
  expectEstimate(simulated[1], p * (1.0 - std::exp(-r * 5.0)), "numberInQueue at 5");
  expectEstimate(simulated[2], p * (1.0 - std::exp(-r * 10.0)), "numberInQueue at 10");
  expectEstimate(simulated[3], mu * p * (10.0 - (1.0 - std::exp(-r * 10.0)) / r), "numberServed by 10");
}

// Without service the customers are those of a Poisson process: with room for far more than ever come, lambda t.
TEST(QueueTest, WithoutServiceTheArrivalsPileUp) {
  const auto simulated = simulate({"-O", "s:capacity:1000:d:arrivalRate:0.8:d:serviceRate:1e-9"});
  expectEstimate(simulated[0], 0.8, "numberInQueue at 1");
  expectEstimate(simulated[1], 4.0, "numberInQueue at 5");
  expectEstimate(simulated[2], 8.0, "numberInQueue at 10");
}

/// The experiments of the study, with the means at time 10 from the Markov chain, solved by uniformisation.
struct ExperimentCase {
  int experiment;
  double numberInQueue;
  double numberServed;

  friend std::ostream& operator<<(std::ostream& out, const ExperimentCase& testCase) {
    return out << "experiment " << testCase.experiment;
  }
};

class QueueExperimentTest : public ::testing::TestWithParam<ExperimentCase> {};

INSTANTIATE_TEST_SUITE_P(Experiments, QueueExperimentTest,
                         ::testing::Values(ExperimentCase{0, 2.02211792552, 5.96971718973},
                                           ExperimentCase{1, 2.53069271825, 6.46930485249},
                                           ExperimentCase{2, 2.34075885612, 6.88518747748}),
                         [](const auto& testCase) { return "Number" + std::to_string(testCase.param.experiment); });

TEST_P(QueueExperimentTest, GivesTheMeansOfItsMarkovChain) {
  const auto simulated = simulate({"-e", std::to_string(GetParam().experiment)});
  expectEstimate(simulated[2], GetParam().numberInQueue, "numberInQueue at 10");
  expectEstimate(simulated[3], GetParam().numberServed, "numberServed by 10");
}

TEST(QueueTest, AnExperimentThatItDoesNotHaveEndsTheRun) {
  const support::ProcessResult run = support::runProcess(QUORVA_QUEUE, {"-N1", "-e3"});
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.err, "ERROR: Experiment 3 does not exist, the study's experiments are 0 to 2\n");
}

TEST(QueueTest, AnUnknownParameterIsReportedAndTheRunGoesOn) {
  const support::ProcessResult run = support::runProcess(QUORVA_QUEUE, {"-N1", "-Od:speed:1"});
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.err, "queue: there is no global variable speed\nSIMULATOR::MAIN()-GOOD EXIT\n");
}

}  // namespace
