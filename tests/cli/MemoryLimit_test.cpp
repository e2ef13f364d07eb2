#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/ProcessRunner.h"

namespace {

// Each train brings arrays with one element for each train, so that a fleet's memory grows with the square of its size:
// thousands of trains do not fit into 300 MB. Only the process's address space is limited, so that the machine has
// memory to spare when the process has none.
TEST(RailwayMemoryTest, AFleetTooLargeForTheMemoryEndsWithItsWords) {
  const std::string command = std::string("ulimit -v 300000 && exec \"$0\" -N 1 -O s:nTrains:4000");
  const support::ProcessResult run = support::runProcess("/bin/sh", {"-c", command, QUORVA_RAILWAY});
  EXPECT_FALSE(run.timedOut);
  EXPECT_EQ(run.exitStatus, 1);
  // Which allocation is the first to fail depends on the sizes of all before it. A name that finds no memory is left as it
  // was, with a line; a list has words of its own ahead of the common ones.
  EXPECT_THAT(run.err,
              testing::MatchesRegex("(Not Enough Memory\n)*"
                                    "(!! Crtical error in List<C>::append\\(List\\*\\) do to insufficient "
                                    "memory\\.\\.\\.exiting\n)?"
                                    "Insufficient Memory to allocate dynamic data structures from heap memory\n"
                                    "Exiting program\\.\\.\\.\n"));
  EXPECT_EQ(run.out,
            "Max Number of Batches: 1\n"
            "OverrideString is s:nTrains:4000\n"
            "Overriding global variables in simulator\n");
}

}  // namespace
