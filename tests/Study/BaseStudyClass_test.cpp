#include "Study/BaseStudyClass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include "Study/StudyWithVariables.h"
#include "support/CapturedOutput.h"
#include "support/FlushWatch.h"

namespace {

using support::standardOutputOf;
using support::StudyWithVariables;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kTooFewTokens = "Not enough double override tokens";

class OverrideGVsTest : public ::testing::Test {
 protected:
  /// Applies the string and gives what that prints on standard output.
  std::string apply(const char* overrides) {
    return standardOutputOf([&] { study_.overrideGVs(overrides); });
  }

  /// Applies one triple whose name is the type's, and expects no word about it.
  void applyQuietly(const std::string& triple) { EXPECT_EQ(apply(triple.c_str()), "") << triple; }

  std::int16_t shortAfter(const std::string& value) {
    applyQuietly("s:short:" + value);
    return study_.shortVariable;
  }
  std::int32_t intAfter(const std::string& value) {
    applyQuietly("i:int:" + value);
    return study_.intVariable;
  }
  std::int32_t longAfter(const std::string& value) {
    applyQuietly("l:long:" + value);
    return study_.longVariable;
  }
  double doubleAfter(const std::string& value) {
    applyQuietly("d:double:" + value);
    return study_.doubleVariable;
  }
  float floatAfter(const std::string& value) {
    applyQuietly("f:float:" + value);
    return study_.floatVariable;
  }
  bool boolAfter(const std::string& value) {
    applyQuietly("b:bool:" + value);
    return study_.boolVariable;
  }
  char charAfter(const std::string& value) {
    applyQuietly("c:char:" + value);
    return study_.charVariable;
  }

  StudyWithVariables study_;
};

// ---- The base class's answers -----------------------------------------------------------------------

TEST(BaseStudyClassTest, HasNoRewardModelOfItsOwnWhateverTheArgument) {
  BaseStudyClass study;
  EXPECT_EQ(study.GetPVModel(true), nullptr);
  EXPECT_EQ(study.GetPVModel(false), nullptr);
}

TEST(BaseStudyClassTest, SetGVsPrintsItsNameAndNothingElse) {
  BaseStudyClass study;
  EXPECT_EQ(standardOutputOf([&] { study.SetGVs(0); }), "basestudyclass::SetGVs\n");
  EXPECT_TRUE(support::isFlushedAtTheEnd(std::cout, [&] { study.SetGVs(0); }));
}

TEST(BaseStudyClassTest, TheOtherOperationsOfTheBaseAreSilent) {
  BaseStudyClass study;
  double value = 1.0;
  EXPECT_EQ(standardOutputOf([&] {
              study.PrintGlobalValues(0);
              study.OverrideGVValue("any", &value);
              study.GetGVValue("any");
            }),
            "");
  EXPECT_EQ(value, 1.0);
}

TEST(BaseStudyClassTest, StartsWithoutVariablesAndExperiments) {
  BaseStudyClass study;
  EXPECT_EQ(study.GetNumGVs(), 0U);
  EXPECT_EQ(study.GetNumExps(), 0U);
}

TEST(BaseStudyClassTest, GivesNamesAndTypesByIndexAndReleasesThem) {
  StudyWithVariables study;
  study.listVariables({"speed", "length"}, {"short", "int"});
  study.setNumExps(4);
  EXPECT_EQ(study.GetNumGVs(), 2U);
  EXPECT_EQ(study.GetNumExps(), 4U);
  EXPECT_STREQ(study.GetGVName(0), "speed");
  EXPECT_STREQ(study.GetGVName(1), "length");
  EXPECT_STREQ(study.GetGVType(0), "short");
  EXPECT_STREQ(study.GetGVType(1), "int");
}

TEST(BaseStudyClassTest, NumbersExperimentsFromOneInTheirNames) {
  BaseStudyClass study;
  EXPECT_STREQ(study.GetExpName(0), "Experiment 1");
  EXPECT_STREQ(study.GetExpName(41), "Experiment 42");
  EXPECT_STREQ(study.GetExpName(-1), "Experiment 0");
}

TEST(BaseStudyClassTest, AnExperimentsNameOverwritesTheOneBefore) {
  BaseStudyClass study;
  BaseStudyClass other;
  const char* const first = study.GetExpName(0);
  const char* const second = other.GetExpName(6);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(first, "Experiment 7");
}

// ---- Cutting the string -----------------------------------------------------------------------------

TEST_F(OverrideGVsTest, ANullPointerChangesNothing) {
  EXPECT_EQ(apply(nullptr), "");
  EXPECT_THAT(study_.overridden, IsEmpty());
}

TEST_F(OverrideGVsTest, AnEmptyStringChangesNothing) {
  EXPECT_EQ(apply(""), "");
  EXPECT_EQ(apply(":::"), "");
  EXPECT_THAT(study_.overridden, IsEmpty());
}

TEST_F(OverrideGVsTest, AppliesTriplesInOrder) {
  EXPECT_EQ(apply("d:double:0.25:s:short:3"), "");
  EXPECT_THAT(study_.overridden, ElementsAre("double", "short"));
  EXPECT_EQ(study_.doubleVariable, 0.25);
  EXPECT_EQ(study_.shortVariable, 3);
}

TEST_F(OverrideGVsTest, LeavesTheCallersStringIntact) {
  char text[] = "d:double:0.25:s:short:3";
  EXPECT_EQ(apply(text), "");
  EXPECT_STREQ(text, "d:double:0.25:s:short:3");
}

TEST_F(OverrideGVsTest, RunsOfSeparatorsCountAsOneAndOuterOnesAreIgnored) {
  EXPECT_EQ(apply("::d::double:::2::"), "");
  EXPECT_THAT(study_.overridden, ElementsAre("double"));
  EXPECT_EQ(study_.doubleVariable, 2.0);
}

TEST_F(OverrideGVsTest, OnlyTheFirstCharacterOfTheTypeCounts) {
  EXPECT_EQ(apply("double:double:2:integer:int:5"), "");
  EXPECT_EQ(study_.doubleVariable, 2.0);
  EXPECT_EQ(study_.intVariable, 5);
}

TEST_F(OverrideGVsTest, NamesArePassedOnAsTheyStand) {
  EXPECT_EQ(apply("d:Double:2:d: double:2"), "");
  EXPECT_THAT(study_.overridden, ElementsAre("Double", " double"));
  EXPECT_EQ(study_.doubleVariable, 0.0);
}

TEST_F(OverrideGVsTest, AMissingValueIsReportedWithoutALineEnd) {
  EXPECT_EQ(apply("d:double"), kTooFewTokens);
  EXPECT_THAT(study_.overridden, IsEmpty());
}

TEST_F(OverrideGVsTest, AMissingNameIsReportedWithoutALineEnd) {
  EXPECT_EQ(apply("d"), kTooFewTokens);
  EXPECT_EQ(apply("x:"), kTooFewTokens);
  EXPECT_THAT(study_.overridden, IsEmpty());
}

TEST_F(OverrideGVsTest, WhatStandsBeforeAnIncompleteTripleStaysApplied) {
  EXPECT_EQ(apply("d:double:2:d"), kTooFewTokens);
  EXPECT_EQ(study_.doubleVariable, 2.0);
}

TEST_F(OverrideGVsTest, AnUnknownTypeDropsItsTripleAndGoesOn) {
  EXPECT_EQ(apply("x:foo:1:d:double:2"), "Type x not recognized\n");
  EXPECT_THAT(study_.overridden, ElementsAre("double"));
  EXPECT_EQ(study_.doubleVariable, 2.0);
}

TEST_F(OverrideGVsTest, AnUnknownTypeOfAnIncompleteTripleIsReportedAsIncomplete) {
  EXPECT_EQ(apply("x:foo"), kTooFewTokens);
}

TEST_F(OverrideGVsTest, TypeLettersAreCaseSensitive) {
  EXPECT_EQ(apply("D:double:2"), "Type D not recognized\n");
}

TEST_F(OverrideGVsTest, StoringAValueCannotDisturbTheCutting) {
  // A study that applies another override string while it stores a value.
  class NestingStudy : public StudyWithVariables {
   public:
    void OverrideGVValue(const char* name, void* value) override {
      StudyWithVariables::OverrideGVValue(name, value);
      if (std::string(name) == "short") {
        overrideGVs("i:int:9");
      }
    }
  };
  NestingStudy study;
  EXPECT_EQ(standardOutputOf([&] { study.overrideGVs("s:short:3:d:double:2.5"); }), "");
  EXPECT_THAT(study.overridden, ElementsAre("short", "int", "double"));
  EXPECT_EQ(study.doubleVariable, 2.5);
}

// ---- Reading a value --------------------------------------------------------------------------------

TEST_F(OverrideGVsTest, IntegersMayBeDecimalOctalAndHexadecimal) {
  EXPECT_EQ(intAfter("31"), 31);
  EXPECT_EQ(intAfter("-31"), -31);
  EXPECT_EQ(intAfter("+31"), 31);
  EXPECT_EQ(intAfter("031"), 25);
  EXPECT_EQ(intAfter("0x31"), 49);
  EXPECT_EQ(intAfter("-0X1f"), -31);
  EXPECT_EQ(longAfter("031"), 25);
  EXPECT_EQ(longAfter("0x31"), 49);
  EXPECT_EQ(shortAfter("031"), 25);
  EXPECT_EQ(shortAfter("0x31"), 49);
  EXPECT_TRUE(boolAfter("0x10"));
  EXPECT_FALSE(boolAfter("00"));
}

TEST_F(OverrideGVsTest, LeadingBlanksAreSkippedAndWhatFollowsANumberIsIgnored) {
  EXPECT_EQ(intAfter("  12 cars"), 12);
  EXPECT_EQ(intAfter("12.9"), 12);
  EXPECT_EQ(intAfter("09"), 0);  // octal, and 9 is no octal digit
  EXPECT_EQ(doubleAfter("\t 2.5x"), 2.5);
}

TEST_F(OverrideGVsTest, IntegersReachTheEndsOfTheirRange) {
  EXPECT_EQ(intAfter("2147483647"), 2147483647);
  EXPECT_EQ(intAfter("-2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(longAfter("2147483647"), 2147483647);
  EXPECT_EQ(shortAfter("32767"), 32767);
  EXPECT_EQ(shortAfter("-32768"), -32768);
}

TEST_F(OverrideGVsTest, ALargerIntegerKeepsItsLowBits) {
  EXPECT_EQ(shortAfter("32768"), -32768);
  EXPECT_EQ(shortAfter("65537"), 1);
  EXPECT_EQ(intAfter("4294967297"), 1);
  EXPECT_EQ(longAfter("0xFFFFFFFF"), -1);
}

TEST_F(OverrideGVsTest, ABoolIsTrueForAShortThatIsNotZero) {
  EXPECT_TRUE(boolAfter("1"));
  EXPECT_TRUE(boolAfter("-1"));
  EXPECT_TRUE(boolAfter("2"));
  EXPECT_FALSE(boolAfter("0"));
  EXPECT_FALSE(boolAfter("65536"));  // its low 16 bits are 0
  EXPECT_FALSE(boolAfter("true"));   // no number
}

TEST_F(OverrideGVsTest, OnlyTheFirstCharacterOfACharCounts) {
  EXPECT_EQ(charAfter("xyz"), 'x');
  EXPECT_EQ(charAfter(" y"), ' ');
  EXPECT_EQ(charAfter("7"), '7');
}

TEST_F(OverrideGVsTest, FloatingNumbersTakeTheUsualForms) {
  EXPECT_EQ(doubleAfter("0.5"), 0.5);
  EXPECT_EQ(doubleAfter(".5"), 0.5);
  EXPECT_EQ(doubleAfter("-1e3"), -1000.0);
  EXPECT_EQ(doubleAfter("+1.25E-1"), 0.125);
  EXPECT_EQ(doubleAfter("0x1p3"), 8.0);
  EXPECT_EQ(doubleAfter("inf"), std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(doubleAfter("nan")));
  EXPECT_EQ(doubleAfter("1e999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(doubleAfter("0.1"), 0.1);
  EXPECT_EQ(floatAfter("0.1"), 0.1F);
}

TEST_F(OverrideGVsTest, AValueThatDoesNotParseIsZeroAndNotReported) {
  EXPECT_EQ(intAfter("5"), 5);
  EXPECT_EQ(intAfter("many"), 0);
  EXPECT_EQ(longAfter("-"), 0);
  EXPECT_EQ(shortAfter("x1"), 0);
  EXPECT_EQ(doubleAfter("2.0"), 2.0);
  EXPECT_EQ(doubleAfter("fast"), 0.0);
  EXPECT_EQ(doubleAfter("1e"), 0.0);     // a scan fails in the middle of an exponent
  EXPECT_EQ(doubleAfter("0x1p+"), 0.0);  // likewise
  EXPECT_EQ(floatAfter("1e+"), 0.0F);
  EXPECT_EQ(doubleAfter("infinit"), 0.0);  // nor does it step back out of a longer word
  EXPECT_EQ(doubleAfter("-INFINIT"), 0.0);
  EXPECT_EQ(doubleAfter("-0xg"), 0.0);
  EXPECT_FALSE(std::signbit(doubleAfter("-0xg")));
  EXPECT_FALSE(std::signbit(doubleAfter("-0x.g")));
  EXPECT_TRUE(std::signbit(doubleAfter("-0")));
}

TEST_F(OverrideGVsTest, ANanHasItsSignAndNoPayload) {
  // A quiet NaN of 64 bits has all exponent bits and the first of the fraction, one of 32 bits likewise.
  for (const char* text : {"nan", "NaN(7)", "nan(abc)x", "nan(7"}) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(doubleAfter(text)), 0x7ff8000000000000U) << text;
    EXPECT_EQ(std::bit_cast<std::uint32_t>(floatAfter(text)), 0x7fc00000U) << text;
  }
  EXPECT_EQ(std::bit_cast<std::uint64_t>(doubleAfter("-nan(7)")), 0xfff8000000000000U);
}

TEST_F(OverrideGVsTest, ANumberEndsBehindItsOneExponent) {
  EXPECT_EQ(doubleAfter("1e3e3"), 1000.0);
  EXPECT_EQ(floatAfter("2E1e"), 20.0F);
  EXPECT_EQ(doubleAfter("0x1p3p"), 8.0);
}

TEST_F(OverrideGVsTest, AnInfinityHasNoExponentThatCouldBreakOff) {
  EXPECT_EQ(doubleAfter("infe1"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(doubleAfter("-infinityE"), -std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(doubleAfter("nane5")));
}

TEST_F(OverrideGVsTest, ANarrowerLetterLeavesTheRestOfTheValueZero) {
  EXPECT_EQ(apply("s:int:7"), "");
  EXPECT_EQ(study_.intVariable, 7);
  EXPECT_EQ(apply("s:int:-1"), "");
  EXPECT_EQ(study_.intVariable, 65535);
  EXPECT_EQ(apply("i:double:1"), "");
  EXPECT_EQ(study_.doubleVariable, std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(apply("c:short:A"), "");
  EXPECT_EQ(study_.shortVariable, 'A');
}

TEST_F(OverrideGVsTest, AWiderLetterGivesTheVariableTheFrontOfTheValue) {
  EXPECT_EQ(apply("i:short:0x12345"), "");
  EXPECT_EQ(study_.shortVariable, 0x2345);
  EXPECT_EQ(apply("d:int:1"), "");  // the low half of 1.0 is zero
  EXPECT_EQ(study_.intVariable, 0);
}

// ---- Echoing ----------------------------------------------------------------------------------------

TEST_F(OverrideGVsTest, TheEchoIsOff) {
  EXPECT_EQ(apply("d:double:2:f:float:1:b:bool:1:s:short:1:i:int:1:l:long:1:c:char:1"), "");
  EXPECT_EQ(study_.overridden.size(), 7U);
}

TEST_F(OverrideGVsTest, TheEchoTellsTheStringAndEachValueStored) {
  const char* const overrides = "d:double:0.25:f:float:1.5:b:bool:7:s:short:-3:i:int:0x10:l:long:11:c:char:xyz";
  EXPECT_EQ(standardOutputOf([&] { study_.applyOverrides<true>(overrides); }),
            std::string("\n!!Double override string:  ") + overrides +
                "\n** OVERRIDE  double to 0.250000"
                "\n** OVERRIDE  float to 1.500000"
                "\n** OVERRIDE  bool to 7"
                "\n** OVERRIDE  short to -3"
                "\n** OVERRIDE  int to 16"
                "\n** OVERRIDE  long to 11"
                "\n** OVERRIDE  char to x");
}

TEST_F(OverrideGVsTest, TheEchoKeepsSilentAboutANullPointer) {
  EXPECT_EQ(standardOutputOf([&] { study_.applyOverrides<true>(nullptr); }), "");
}

}  // namespace
