#include "fuzz/Checks.h"

#include "fuzz/KeptInputs.h"

namespace fuzz {

namespace {

INSTANTIATE_TEST_SUITE_P(Inputs, FuzzChecks,
                         testing::Values(Checked{"command-line", checkCommandLine},
                                         Checked{"overrides", checkOverrides}, Checked{"signals", checkSignals},
                                         Checked{"random-models", checkRandomModel}),
                         testNameOf);

}  // namespace

}  // namespace fuzz
