#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "fuzz/Input.h"

namespace fuzz {

/// A check and the folder of its kept inputs, in corpus/.
struct Checked {
  const char* corpus;
  std::string (*check)(Input);

  /// In words, for the list of tests: it has the same bytes in every build.
  friend std::ostream& operator<<(std::ostream& out, const Checked& checked) { return out << checked.corpus; }
};

/// The tests that every check has; a program of tests instantiates them with its checks, and has KeptInputs_test.cpp among
/// its sources and QUORVA_CORPUS, the folder corpus/, defined.
class FuzzChecks : public testing::TestWithParam<Checked> {
 protected:
  /// The kept inputs, by name.
  static std::vector<std::filesystem::path> corpus();
};

/// The corpus's name as a part of a test's.
[[nodiscard]] std::string testNameOf(const testing::TestParamInfo<Checked>& info);

}  // namespace fuzz
