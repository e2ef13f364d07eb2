#include "BaseClasses/StandardErrors.h"

#include <sys/wait.h>

#include <csignal>
#include <new>
#include <ostream>
#include <string>

#include "BaseClasses/Sanitizers.h"
#include "gmock/gmock.h"
#include "gtest/gtest.h"

namespace {

using testing::Eq;
using testing::ExitedWithCode;

constexpr const char* kAllocationWords =
    "Insufficient Memory to allocate dynamic data structures from heap memory\n"
    "Exiting program...\n";

struct Complaint {
  const char* name;
  void (*call)();
  const char* text;
};

void PrintTo(const Complaint& tested, std::ostream* out) {
  *out << tested.name;
}

class StandardErrorsTest : public testing::TestWithParam<Complaint> {};

TEST_P(StandardErrorsTest, WritesItsWordsAndReturns) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  GetParam().call();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), GetParam().text);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

INSTANTIATE_TEST_SUITE_P(
    , StandardErrorsTest,
    testing::Values(
        Complaint{"MemoryError", MemoryError, "Memory Error\n"},
        Complaint{"ErrorEmptyParameter", [] { ErrorEmptyParameter("queue"); },
                  "queue: Parameter was an empty reference\n"},
        Complaint{"WrongDistributionType", SyncError::WrongDistributionType,
                  "You can only synchronize actions from one type,either exponential or instantenous\n"},
        Complaint{"NoAction", SyncError::NoAction, " no Action found in model\n"},
        Complaint{"InconsistantState", InconsistantState,
                  "This program has entered into an inconsistant state. Please report this bug.\n"},
        Complaint{"UserError", UserError, "A user error has been detected\n"},
        Complaint{"ArrayTypeMismatchError", [] { ArrayTypeMismatchError("left", "right"); },
                  "Array types for equivalence sharing do not match for state variables: \n  left\n  right\n"},
        Complaint{"StructTypeMismatchError", [] { StructTypeMismatchError("left", "right"); },
                  "Struct types for equivalence sharing do not match for state variables: \n  left\n  right\n"},
        Complaint{"InvalidArrayType", InvalidArrayType, "ArrayType is not valid\n"},
        Complaint{"InvalidUnorderedType", InvalidUnorderedType, "ArrayType is invalid for unordered element\n"},
        Complaint{"ArrayOutOfBoundsError", [] { ArrayOutOfBoundsError("BaseGroupClass::setMember"); },
                  "Array out of bounds error at BaseGroupClass::setMember\n"}),
    [](const auto& info) { return info.param.name; });

TEST(StandardErrorsDeathTest, MemoryAllocationErrorEndsTheProcessWithStatus1) {
  EXPECT_EXIT(MemoryAllocationError(), ExitedWithCode(1), Eq(kAllocationWords));
}

TEST(StandardErrorsDeathTest, MemoryAllocationErrorServesAsTheNewHandler) {
  EXPECT_EXIT(
      {
        std::set_new_handler(MemoryAllocationError);
        std::get_new_handler()();
      },
      ExitedWithCode(1), Eq(kAllocationWords));
}

/// Killed by a memory fault; AddressSanitizer reports the fault and ends the process its own way.
bool diedOfMemoryFault(int status) {
  if constexpr (support::kUnderAddressSanitizer) {
    return WIFSIGNALED(status) || (WIFEXITED(status) && WEXITSTATUS(status) != 0);
  }
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV;
}

TEST(StandardErrorsDeathTest, InvalidStructTypeAnnouncesAMemoryFaultAndDiesOfIt) {
  constexpr const char* kWords = "ArrayType is invalid for struct element\npreparing to segfault\n";
  const testing::Matcher<const std::string&> expected =
      support::kUnderAddressSanitizer ? testing::Matcher<const std::string&>(testing::StartsWith(kWords)) : Eq(kWords);
  EXPECT_EXIT(InvalidStructType(), diedOfMemoryFault, expected);
}

}  // namespace
