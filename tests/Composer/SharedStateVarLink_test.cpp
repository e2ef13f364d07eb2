#include "Composer/SharedStateVarLink.h"

#include <gtest/gtest.h>

#include <sstream>

#include "BaseClasses/SAN/Place.h"
#include "Composer/TestModels.h"
#include "support/AllocationCounter.h"
#include "support/CapturedOutput.h"

namespace {

TEST(SharedStateVarLinkTest, ALinkHoldsTheVariableAndTheModelThatItWasGiven) {
  Place place("x");
  testing_support::Leaf model("model");
  const SharedStateVarLink empty;
  EXPECT_EQ(empty.getStateVar(), nullptr);
  EXPECT_EQ(empty.parent, nullptr);
  EXPECT_EQ(empty.getNext(), nullptr);
  const SharedStateVarLink withoutModel(&place);
  EXPECT_EQ(withoutModel.getStateVar(), &place);
  EXPECT_EQ(withoutModel.parent, nullptr);
  const SharedStateVarLink whole(&place, &model);
  EXPECT_EQ(whole.myStateVar, &place);
  EXPECT_EQ(whole.parent, &model);
}

TEST(SharedStateVarLinkTest, AListIsAttachedAtTheEnd) {
  SharedStateVarLink first;
  SharedStateVarLink second;
  SharedStateVarLink third;
  SharedStateVarLink fourth;
  third.addStateVarLink(&fourth);
  first.addStateVarLink(&second);
  first.addStateVarLink(&third);
  EXPECT_EQ(first.getNext(), &second);
  EXPECT_EQ(second.getNext(), &third);
  EXPECT_EQ(third.getNext(), &fourth);
  EXPECT_EQ(fourth.getNext(), nullptr);
}

TEST(SharedStateVarLinkTest, AListThatIsAttachedAlreadyIsNotAttachedToItself) {
  SharedStateVarLink first;
  SharedStateVarLink second;
  first.addStateVarLink(&second);
  first.addStateVarLink(&second);
  first.addStateVarLink(&first);
  EXPECT_EQ(first.getNext(), &second);
  EXPECT_EQ(second.getNext(), nullptr);
}

TEST(SharedStateVarLinkTest, AVariableIsFoundInTheLinkAndBehindItButNotBefore) {
  Place a("a");
  Place b("b");
  SharedStateVarLink first(&a);
  SharedStateVarLink second(&b);
  first.addStateVarLink(&second);
  EXPECT_TRUE(first.hasStateVar(&a));
  EXPECT_TRUE(first.hasStateVar(&b));
  EXPECT_FALSE(second.hasStateVar(&a));
  EXPECT_FALSE(SharedStateVarLink().hasStateVar(&a));
}

TEST(SharedStateVarLinkTest, ClearStateVarListFreesAWholeList) {
  const std::size_t before = support::liveAllocations();
  auto* const list = new SharedStateVarLink;
  list->addStateVarLink(new SharedStateVarLink);
  list->addStateVarLink(new SharedStateVarLink);
  ASSERT_NE(list->getNext()->getNext(), nullptr);
  SharedStateVarLink anchor;
  anchor.clearStateVarList(list);  // a second free is the sanitizer's to find
  EXPECT_EQ(support::liveAllocations(), before);
  anchor.clearStateVarList(nullptr);
  EXPECT_EQ(anchor.getNext(), nullptr);
}

TEST(SharedStateVarLinkTest, EveryLinkIsPrintedWithNameAndAddress) {
  Place a("a");
  Place b("b");
  SharedStateVarLink first(&a);
  SharedStateVarLink second(&b);
  first.addStateVarLink(&second);
  std::ostringstream expected;
  expected << "      This link holds state var a at address " << static_cast<const void*>(&a) << '\n'
           << "      This link holds state var b at address " << static_cast<const void*>(&b) << '\n';
  EXPECT_EQ(support::standardOutputOf([&first] { first.printAllStateVariables(); }), expected.str());
}

}  // namespace
