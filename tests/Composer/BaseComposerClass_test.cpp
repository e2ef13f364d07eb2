#include "Composer/BaseComposerClass.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "BaseClasses/state/TestVariables.h"
#include "Composer/TestModels.h"
#include "support/CapturedOutput.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing_support::AddOneActivity;
using testing_support::Children;
using testing_support::childrenOf;
using testing_support::imageOf;
using testing_support::Leaf;
using testing_support::leafWithPlaces;
using testing_support::Message;
using testing_support::placeOf;
using testing_support::ScalarArray;
using testing_support::sharedOf;
using testing_support::SharedVariable;
using testing_support::TestJoin;
using testing_support::TestRep;

template <typename C>
std::vector<C*> itemsOf(List<C>& list) {
  return {list.getList(), list.getList() + list.getNumItems()};
}

/// The variables along a list of links.
std::vector<BaseStateVariableClass*> variablesOf(SharedStateVarLink* list) {
  std::vector<BaseStateVariableClass*> variables;
  for (; list != nullptr; list = list->getNext()) {
    variables.push_back(list->getStateVar());
  }
  return variables;
}

const char* const kNames[] = {"x", "y"};

TEST(BaseComposerClassTest, ANewComposerHasEmptyArraysOfTheGivenSizes) {
  Join join("join", 3, 2, kNames);
  EXPECT_STREQ(join.getName(), "join");
  EXPECT_EQ(join.getNumModels(), 3);
  EXPECT_EQ(join.getNumSharedStateVariables(), 2);
  EXPECT_EQ(join.getNumActions(), 0);
  EXPECT_EQ(join.getNumGroups(), 0);
  EXPECT_EQ(join.AddedSharedPtrs, 0U);
  EXPECT_EQ(join.MyStateSize, 0);
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(join.getModelArray()[i], nullptr);
  }
  for (int i = 0; i < 2; i++) {
    EXPECT_EQ(join.SharedStatePtrs[i], nullptr);
    EXPECT_EQ(join.SharedStateVarList[i], nullptr);
    EXPECT_THAT(join.ChildrenSharedSVList[i], IsEmpty());
    EXPECT_STREQ(join.SharedStateNames[i], kNames[i]);
    EXPECT_NE(join.SharedStateNames[i], kNames[i]);
  }
}

TEST(BaseComposerClassTest, TheTableOfNamesMayBeOneOfMutableTexts) {
  char x[] = "x";
  char* names[] = {x};
  Join join("join", 1, 1, names);
  x[0] = 'z';
  EXPECT_STREQ(join.SharedStateNames[0], "x");
}

TEST(BaseComposerClassTest, WithoutChildrenTheCountOfSharedVariablesIsIgnored) {
  Join join("join", 0, 2, kNames);
  EXPECT_EQ(join.getNumSharedStateVariables(), 0);
  EXPECT_EQ(join.getNumModels(), 0);
}

TEST(BaseComposerClassTest, ChildrenWithoutVariablesLeaveNoSharedVariables) {
  TestJoin join("join", childrenOf(leafWithPlaces("a", {}), leafWithPlaces("b", {})),
                sharedOf(SharedVariable{std::make_unique<Place>("x"), {}}));
  EXPECT_TRUE(join.AllChildrenEmpty());
  EXPECT_EQ(join.getNumSharedStateVariables(), 0);
  EXPECT_EQ(join.getNumStateVariables(), 0);
  EXPECT_EQ(join.StateSize(), 0);
}

TEST(BaseComposerClassTest, AConcreteComposerMaySubstituteItsOwnArrayOfChildren) {
  class Substituting : public Join {
   public:
    explicit Substituting(BaseModelClass* child) : Join("join", 1, 0, nullptr), own_{child} {
      ModelArray = own_;
      SetupActions();
      Setup();
    }

   private:
    BaseModelClass* own_[1];
  };
  const auto leaf = leafWithPlaces("leaf", {7});
  Substituting join(leaf.get());
  EXPECT_EQ(join.GetChild(0), leaf.get());
  EXPECT_THAT(imageOf(join), ElementsAre(7, 0));
}

/// Two atomic models with two activities each and one group of two, under a join under a join.
class CollectionTest : public testing::Test {
 protected:
  CollectionTest() {
    auto first = std::make_unique<Leaf>("first");
    a_ = first->addActivity("a");
    group_ = first->addGroup("group", {"b", "c"});
    first->add<Place>("p", static_cast<short>(1));
    first->finish();
    auto second = std::make_unique<Leaf>("second");
    d_ = second->addActivity("d");
    secondA_ = second->addActivity("a");
    second->add<Place>("p", static_cast<short>(2));
    second->finish();
    first_ = first.get();
    second_ = second.get();
    auto inner = std::make_unique<TestJoin>("inner", childrenOf(std::move(first)));
    inner_ = inner.get();
    outer_ = std::make_unique<TestJoin>("outer", childrenOf(std::move(second), std::move(inner)));
  }

  Leaf* first_ = nullptr;
  Leaf* second_ = nullptr;
  TestJoin* inner_ = nullptr;
  AddOneActivity* a_ = nullptr;
  PostselectGroup* group_ = nullptr;
  AddOneActivity* d_ = nullptr;
  AddOneActivity* secondA_ = nullptr;
  std::unique_ptr<TestJoin> outer_;
};

TEST_F(CollectionTest, ActionsAndGroupsAreCollectedChildByChild) {
  List<BaseActionClass> actions;
  List<BaseGroupClass> groups;
  outer_->listActions(&actions);
  outer_->listGroups(&groups);
  EXPECT_EQ(outer_->getNumActions(), 5);
  EXPECT_EQ(outer_->getNumGroups(), 4);
  EXPECT_THAT(itemsOf(actions), ElementsAre(d_, secondA_, a_, group_->getMember(0), group_->getMember(1)));
  EXPECT_THAT(itemsOf(groups), ElementsAre(d_, secondA_, a_, group_));
}

TEST_F(CollectionTest, TheGroupNumberOfAnActivityIsItsIndexInTheOutermostComposer) {
  EXPECT_EQ(inner_->getGroupList()[0], a_);
  EXPECT_EQ(d_->getGroupId(), 0);
  EXPECT_EQ(secondA_->getGroupId(), 1);
  EXPECT_EQ(a_->getGroupId(), 2);
  EXPECT_EQ(group_->getMember(0)->getGroupId(), 3);
  EXPECT_EQ(group_->getMember(1)->getGroupId(), 3);
}

/// Notes the numbers that it is given.
class NumberedGroup : public PostselectGroup {
 public:
  void setGroupId(int number) override {
    numbers.push_back(number);
    PostselectGroup::setGroupId(number);
  }

  std::vector<int> numbers;
};

TEST(BaseComposerClassTest, AGroupOfSeveralMembersIsGivenItsNumberTwice) {
  AddOneActivity a("a", nullptr);
  AddOneActivity b("b", nullptr);
  AddOneActivity c("c", nullptr);
  NumberedGroup single;
  NumberedGroup pair;
  single.appendGroup(&a);
  pair.appendGroup(&b);
  pair.appendGroup(&c);
  Activity* activities[] = {&a, &b, &c};
  BaseGroupClass* groups[] = {&single, &pair};
  SANModel model("model", 0, nullptr, 0, nullptr, 3, activities, 2, groups);
  Join join("join", 1, 0, nullptr);
  join.ModelArray[0] = &model;
  join.SetupActions();
  EXPECT_THAT(single.numbers, ElementsAre(0));
  EXPECT_THAT(pair.numbers, ElementsAre(1, 1));
}

TEST_F(CollectionTest, ActionsOfANameAreListedFromEveryChild) {
  List<BaseActionClass> actions;
  outer_->listActions("a", &actions);
  EXPECT_THAT(itemsOf(actions), ElementsAre(secondA_, a_));
}

TEST_F(CollectionTest, ModelsAreListedByNameBelowTheComposersThemselves) {
  List<BaseModelClass> models;
  outer_->listModels("first", &models);
  outer_->listModels("second", &models);
  outer_->listModels("inner", &models);
  outer_->listModels("outer", &models);
  EXPECT_THAT(itemsOf(models), ElementsAre(first_, second_));
}

TEST_F(CollectionTest, VariablesAreListedWithTheirModels) {
  List<BaseStateVariableClass> variables;
  List<BaseModelClass> models;
  outer_->listSVs("first", "p", &variables, &models);
  EXPECT_THAT(itemsOf(variables), ElementsAre(placeOf(*first_, 0)));
  EXPECT_THAT(itemsOf(models), ElementsAre(first_));
}

TEST_F(CollectionTest, TheStateIsPrintedModelByModel) {
  std::ostringstream text;
  outer_->printState(&text);
  const auto id = [](BaseModelClass* model) { return std::to_string(model->getId()); };
  EXPECT_EQ(text.str(), "Model: (" + id(outer_.get()) + ")outer\n" +           //
                            "Model: (" + id(second_) + ")second\n  p = 2\n" +  //
                            "Model: (" + id(inner_) + ")inner\n" +             //
                            "Model: (" + id(first_) + ")first\n  p = 1\n" +    //
                            "Shared Variables:\nShared Variables:\n");
}

/// Two atomic models whose place p0 is one with the join's place x.
class SharedPlaceTest : public testing::Test {
 protected:
  SharedPlaceTest() {
    auto a = leafWithPlaces("a", {1, 2});
    auto b = leafWithPlaces("b", {3, 4});
    auto x = std::make_unique<Place>("x", static_cast<short>(9));
    a_ = a.get();
    b_ = b.get();
    x_ = x.get();
    join_ = std::make_unique<TestJoin>(
        "join", childrenOf(std::move(a), std::move(b)),
        sharedOf(SharedVariable{std::move(x), {{0, placeOf(*a_, 0)}, {1, placeOf(*b_, 0)}}}));
  }

  Leaf* a_ = nullptr;
  Leaf* b_ = nullptr;
  Place* x_ = nullptr;
  std::unique_ptr<TestJoin> join_;
};

TEST_F(SharedPlaceTest, TheJoinsVariableLeadsAndTheLastChildsMarkStays) {
  EXPECT_TRUE(x_->getStored());
  EXPECT_EQ(x_->getMark(), 3);
  for (Leaf* const child : {a_, b_}) {
    EXPECT_FALSE(placeOf(*child, 0)->getStored());
    EXPECT_EQ(placeOf(*child, 0)->getPointer(), x_->getPointer());
  }
}

TEST_F(SharedPlaceTest, TheSharedVariablesAreKnownInOrder) {
  EXPECT_EQ(join_->AddedSharedPtrs, 1U);
  EXPECT_EQ(join_->GetSharedStateVariables()[0], x_);
  EXPECT_THAT(join_->ChildrenSharedSVList[0], ElementsAre(placeOf(*a_, 0), placeOf(*b_, 0)));
  EXPECT_THAT(variablesOf(join_->SharedStateVarList[0]), ElementsAre(placeOf(*a_, 0), placeOf(*b_, 0)));
  EXPECT_EQ(join_->SharedStateVarList[0]->parent, a_);
  EXPECT_EQ(join_->SharedStateVarList[0]->getNext()->parent, b_);
}

TEST_F(SharedPlaceTest, AMemberHasAMainVariableAndNoListOfItsOwn) {
  EXPECT_EQ(join_->getMainSharedVariable(placeOf(*b_, 0)), x_);
  EXPECT_EQ(join_->getListOfSharedVariables(placeOf(*b_, 0)), nullptr);
  EXPECT_EQ(join_->getListOfSharedVariables(x_), join_->SharedStateVarList[0]);
}

TEST_F(SharedPlaceTest, AVariableThatIsNowhereSharedHasNeither) {
  EXPECT_EQ(join_->getMainSharedVariable(placeOf(*a_, 1)), nullptr);
  EXPECT_EQ(join_->getListOfSharedVariables(placeOf(*a_, 1)), nullptr);
  EXPECT_EQ(join_->getMainSharedVariable(x_), nullptr);
}

TEST_F(SharedPlaceTest, AMergedGroupCountsAsOneVariable) {
  EXPECT_EQ(join_->getNumStateVariables(), 4 - 2 + 1);
}

TEST_F(SharedPlaceTest, ImagesAreComparedOverTheirWholeLength) {
  auto image = imageOf(*join_);
  auto other = image;
  ASSERT_EQ(image.size(), 6U);
  EXPECT_EQ(join_->MyStateSize, 6);
  EXPECT_TRUE(join_->CompareState(image.data(), image.data()));
  EXPECT_TRUE(join_->CompareState(image.data(), other.data()));
  other.back() = 1;
  EXPECT_FALSE(join_->CompareState(image.data(), other.data()));
}

TEST_F(SharedPlaceTest, TheStoredSharedVariablesArePrinted) {
  std::ostringstream text;
  join_->printState(&text);
  EXPECT_THAT(text.str(), HasSubstr("  p1 = 4\nShared Variables:\n  x = 3\n"));
  x_->setStored(false);
  std::ostringstream without;
  join_->printState(&without);
  EXPECT_THAT(without.str(), HasSubstr("  p1 = 4\nShared Variables:\n"));
  EXPECT_THAT(without.str(), testing::Not(HasSubstr("  x = 3")));
  x_->setStored(true);
}

TEST_F(SharedPlaceTest, TheEquivalenceGroupsArePrinted) {
  const auto address = [](const void* pointer) {
    std::ostringstream text;
    text << pointer;
    return text.str();
  };
  EXPECT_EQ(support::standardOutputOf([this] { join_->printAllSharedVariables(); }),
            "Shared Variables for composer node join\n"
            "  Shared Variable 0 has name x and address " +
                address(x_) +
                "\n"
                "    And here is its list of equivalent variables:\n"
                "      This link holds state var p0 at address " +
                address(placeOf(*a_, 0)) +
                "\n"
                "      This link holds state var p0 at address " +
                address(placeOf(*b_, 0)) + "\n");
}

TEST_F(SharedPlaceTest, GeneralSetupPrintsTheGroupsAboveDebugLevel3) {
  const auto outputAtLevel = [this](int number) {
    const support::DebugLevelGuard level(number);
    return support::standardOutputOf([this] { join_->GeneralSetup(); });
  };
  EXPECT_THAT(outputAtLevel(4), HasSubstr("** Now printing all shared state variable equivalence groups.\n"
                                          "Shared Variables for composer node join\n"));
  EXPECT_EQ(outputAtLevel(3), "");
  EXPECT_EQ(join_->getNumStateVariables(), 3);
}

TEST(BaseComposerClassTest, TwoChildrenOf10VariablesWith4SharedAcrossBothCount16) {
  auto a = leafWithPlaces("a", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  auto b = leafWithPlaces("b", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  std::vector<SharedVariable> shared;
  for (std::size_t i = 0; i < 4; i++) {
    std::string name = "s";
    name += std::to_string(i);
    shared.push_back({std::make_unique<Place>(name.c_str()), {{0, placeOf(*a, i)}, {1, placeOf(*b, i)}}});
  }
  TestJoin join("join", childrenOf(std::move(a), std::move(b)), std::move(shared));
  EXPECT_EQ(join.getNumStateVariables(), 20 - 8 + 4);
}

TEST(BaseComposerClassTest, AVariableSharedLowerDownBringsItsEquivalentsWithIt) {
  auto a = leafWithPlaces("a", {1});
  auto b = leafWithPlaces("b", {2});
  auto c = leafWithPlaces("c", {3});
  Place* const inA = placeOf(*a, 0);
  Place* const inB = placeOf(*b, 0);
  Place* const inC = placeOf(*c, 0);
  auto low = std::make_unique<Place>("low");
  Place* const lowX = low.get();
  auto inner = std::make_unique<TestJoin>("inner", childrenOf(std::move(a), std::move(b)),
                                          sharedOf(SharedVariable{std::move(low), {{0, inA}, {1, inB}}}));
  TestJoin* const innerJoin = inner.get();
  auto top = std::make_unique<Place>("top");
  Place* const topX = top.get();
  TestJoin outer("outer", childrenOf(std::move(inner), std::move(c)),
                 sharedOf(SharedVariable{std::move(top), {{0, lowX}, {1, inC}}}));

  EXPECT_THAT(variablesOf(outer.getListOfSharedVariables(topX)), ElementsAre(lowX, inA, inB, inC));
  EXPECT_EQ(outer.getListOfSharedVariables(topX)->getNext(), innerJoin->SharedStateVarList[0]);
  EXPECT_EQ(outer.getListOfSharedVariables(lowX), innerJoin->SharedStateVarList[0]);
  for (Place* const variable : {lowX, inA, inB, inC}) {
    EXPECT_EQ(outer.getMainSharedVariable(variable), topX);
  }
  EXPECT_EQ(innerJoin->getMainSharedVariable(inA), lowX);
}

TEST(BaseComposerClassTest, AComposerBelowAnswersWhenThisOneDoesNotKnowTheVariable) {
  auto a = leafWithPlaces("a", {1});
  Place* const inA = placeOf(*a, 0);
  auto low = std::make_unique<Place>("low");
  Place* const lowX = low.get();
  auto inner = std::make_unique<TestJoin>("inner", childrenOf(std::move(a)),
                                          sharedOf(SharedVariable{std::move(low), {{0, inA}}}));
  TestJoin outer("outer", childrenOf(leafWithPlaces("b", {2}), std::move(inner)));
  EXPECT_EQ(outer.getMainSharedVariable(inA), lowX);
  EXPECT_THAT(variablesOf(outer.getListOfSharedVariables(lowX)), ElementsAre(inA));
}

TEST(BaseComposerClassTest, TheSizeForComparisonIsThatOfTheFinishedComposer) {
  auto a = leafWithPlaces("a", {1});
  Place* const inA = placeOf(*a, 0);
  auto low = std::make_unique<Place>("low");
  Place* const lowX = low.get();
  auto inner = std::make_unique<TestJoin>("inner", childrenOf(std::move(a)),
                                          sharedOf(SharedVariable{std::move(low), {{0, inA}}}));
  TestJoin* const innerJoin = inner.get();
  const TestJoin outer("outer", childrenOf(std::move(inner)),
                       sharedOf(SharedVariable{std::make_unique<Place>("top"), {{0, lowX}}}));
  EXPECT_EQ(innerJoin->StateSize(), 0);
  EXPECT_EQ(innerJoin->MyStateSize, 2);
  unsigned char first[2] = {1, 1};
  unsigned char second[2] = {1, 2};
  EXPECT_FALSE(innerJoin->CompareState(first, second));
}

TEST(BaseComposerClassTest, TheLastMatchingSharedVariableTakesTheSharingInfo) {
  Join join("join", 1, 2, kNames);
  const auto leaf = leafWithPlaces("leaf", {1});
  join.ModelArray[0] = leaf.get();
  Place twice("x");
  Place member("member");
  join.addSharedPtr(&twice, "x");
  join.addSharedPtr(&twice, "y");
  join.addSharingInfo(&member, &twice, nullptr);
  EXPECT_THAT(join.ChildrenSharedSVList[0], IsEmpty());
  EXPECT_THAT(join.ChildrenSharedSVList[1], ElementsAre(&member));
}

/// The told hash as a sum of powers, an arithmetic of its own: character i of n counts 32 to the power n - 1 - i.
unsigned int hashAsSum(std::string_view key, std::uint64_t size) {
  std::uint64_t sum = 0;
  std::uint64_t weight = 1;
  for (auto character = key.rbegin(); character != key.rend(); ++character) {
    const auto value = static_cast<signed char>(*character);
    sum += value < 0
               ? (std::uint64_t{1} << 32) - (weight * static_cast<std::uint64_t>(-value)) % (std::uint64_t{1} << 32)
               : weight * static_cast<std::uint64_t>(value);
    weight = weight * 32 % (std::uint64_t{1} << 32);
  }
  return static_cast<unsigned int>(sum % (std::uint64_t{1} << 32) % size);
}

TEST(BaseComposerClassHashTest, ShortTextsHashToTheirArithmetic) {
  Join join("join", 0, 0, nullptr);
  EXPECT_EQ(join.Hash("", 7), 0U);
  EXPECT_EQ(join.Hash("A", 7), 65U % 7U);
  EXPECT_EQ(join.Hash("AB", 10000), 65U * 32U + 66U);
}

TEST(BaseComposerClassHashTest, AByteAbove127EntersAsANegativeNumber) {
  Join join("join", 0, 0, nullptr);
  // 0xC8 is -56, which is 4294967240 in 32 bits without a sign; 4294967240 = 7 * 613566748 + 4.
  EXPECT_EQ(join.Hash("\xC8", 7), 4U);
  // 65 * 32 - 56 = 2024
  EXPECT_EQ(join.Hash("A\xC8", 10000), 2024U);
}

TEST(BaseComposerClassHashTest, ALongTextWrapsIn32Bits) {
  Join join("join", 0, 0, nullptr);
  for (const char* const key : {"TPRNetworkDelay_case1", "zzzzzzzzzzzzzzzzzzzzzzzzzzzzzzzz", "Z\xFFpq\x80ssss\xC8z"}) {
    EXPECT_EQ(join.Hash(key, 1 << 30), hashAsSum(key, 1U << 30)) << key;
    EXPECT_EQ(join.Hash(key, 28), hashAsSum(key, 28)) << key;
  }
}

TEST(BaseComposerClassPointerTest, OneNameGivesThePointerToAnyKindOfVariable) {
  Place place("p");
  ExtendedPlace<double> extended("e");
  ScalarArray<int> array("a", {1});
  Message message("m");
  static_assert(std::is_same_v<decltype(BaseComposerClass::getSharableSVPointer(place)), SharableSV<short>*>);
  static_assert(std::is_same_v<decltype(BaseComposerClass::getSharableSVPointer(array)), BaseArrayStateVariable*>);
  EXPECT_EQ(BaseComposerClass::getSharableSVPointer(place), &place);
  EXPECT_EQ(BaseComposerClass::getSharableSVPointer(&place), &place);
  EXPECT_EQ(BaseComposerClass::getSharableSVPointer(extended), &extended);
  EXPECT_EQ(BaseComposerClass::getSharableSVPointer(&extended), &extended);
  EXPECT_EQ(BaseComposerClass::getSharableSVPointer(array), &array);
  EXPECT_EQ(BaseComposerClass::getSharableSVPointer(&array), &array);
  EXPECT_EQ(BaseComposerClass::getSharableSVPointer(message), &message);
  EXPECT_EQ(BaseComposerClass::getSharableSVPointer(&message), &message);
}

TEST(BaseComposerClassDeathTest, ANullNameFailsTheAssertion) {
  const char* const names[] = {"x", nullptr};
  EXPECT_DEATH(Join("join", 1, 2, names), support::assertionIn("BaseComposerClass"));
}

TEST(BaseComposerClassDeathTest, VariablesOutOfTheOrderOfTheNamesFailTheAssertion) {
  Join join("join", 1, 2, kNames);
  Place y("y");
  EXPECT_DEATH(join.addSharedPtr(&y, "y"),
               "Assertion failed: 0 == strcmp\\(VarName, SharedStateNames\\[AddedSharedPtrs\\]\\), "
               "file BaseComposerClass\\.cpp, line [0-9]+");
}

TEST(BaseComposerClassDeathTest, MoreVariablesThanNamesFailTheAssertion) {
  Join join("join", 1, 1, kNames);
  Place x("x");
  join.addSharedPtr(&x, "x");
  EXPECT_DEATH(join.addSharedPtr(&x, "x"),
               "Assertion failed: AddedSharedPtrs < NumSharedStateVariables, file BaseComposerClass\\.cpp");
}

TEST(BaseComposerClassDeathTest, SharingInfoForAVariableThatIsNotHeldFailsTheAssertion) {
  Join join("join", 1, 1, kNames);
  Place stranger("x");
  EXPECT_DEATH(join.addSharingInfo(&stranger, &stranger, nullptr),
               "Assertion failed: VarIndex != -1, file BaseComposerClass\\.cpp");
}

TEST(BaseComposerClassDeathTest, ATableOfNoSlotsHasNoHash) {
  Join join("join", 0, 0, nullptr);
  EXPECT_DEATH(join.Hash("A", 0), "Assertion failed: hash_size != 0, file BaseComposerClass\\.cpp");
}

}  // namespace
