#include "controller/fuzz/ReaderChecks.h"

#include "fuzz/KeptInputs.h"

namespace fuzz {

namespace {

INSTANTIATE_TEST_SUITE_P(Inputs, FuzzChecks,
                         testing::Values(Checked{"result-file", checkResultFile},
                                         Checked{"run-message", checkRunMessage},
                                         Checked{"observations", checkObservations}),
                         testNameOf);

}  // namespace

}  // namespace fuzz
