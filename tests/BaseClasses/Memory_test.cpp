#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "BaseClasses/BaseActionClass.h"
#include "BaseClasses/BaseGroupClass.h"
#include "BaseClasses/FastSet.h"
#include "BaseClasses/List.h"
#include "BaseClasses/StandardErrors.h"
#include "support/CapturedOutput.h"
#include "support/ScriptedGenerator.h"
#include "support/ScriptedLeaf.h"
#include "support/TestVariable.h"

// This program's own operators count the allocations and can refuse them, which no test of a whole process can do. They
// stand in a program of their own, as they hold for all of it.

namespace {

std::size_t allocations = 0;
std::size_t releases = 0;
bool memoryIsOut = false;

void* allocate(std::size_t bytes) {
  ++allocations;
  while (memoryIsOut) {
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) {
      throw std::bad_alloc();
    }
    memoryIsOut = false;  // the handler may well allocate for its words
    handler();
    memoryIsOut = true;
  }
  void* const memory = std::malloc(bytes == 0 ? 1 : bytes);
  if (memory == nullptr) {
    std::abort();
  }
  return memory;
}

void release(void* memory) noexcept {
  releases += memory == nullptr ? 0 : 1;
  std::free(memory);
}

/// Allocations that were not given back.
std::size_t live() {
  return allocations - releases;
}

void* allocateOrNull(std::size_t bytes) noexcept {
  try {
    return allocate(bytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

// clang-format off
void* operator new(std::size_t bytes) { return allocate(bytes); }
void* operator new[](std::size_t bytes) { return allocate(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept { return allocateOrNull(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t& /*tag*/) noexcept { return allocateOrNull(bytes); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t /*bytes*/) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t /*bytes*/) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept { release(memory); }
// clang-format on

namespace {

using support::ScriptedGenerator;
using support::ScriptedLeaf;
using support::TestVariable;

constexpr const char* kWords =
    "Insufficient Memory to allocate dynamic data structures from heap memory\nExiting program...\n";

TEST(MemoryTest, AVariableThatCannotBeRenamedSaysSoAndKeepsItsName) {
  std::set_new_handler(MemoryAllocationError);
  TestVariable variable("queue", 0, "line");
  const std::string words = support::standardErrorOf([&] {
    memoryIsOut = true;
    variable.SetName("server");
    variable.SetPrefix("hall");
    memoryIsOut = false;
  });
  EXPECT_EQ(words, "Not Enough Memory\nNot Enough Memory\n");
  EXPECT_STREQ(variable.getFullyQualifiedName(), "line.queue");
  EXPECT_EQ(std::get_new_handler(), &MemoryAllocationError) << "the process's handler is back in place";
}

TEST(MemoryTest, AnActionThatCannotBeNamedEndsTheProcess) {
  std::set_new_handler(MemoryAllocationError);
  BaseActionClass action;
  EXPECT_EXIT(
      {
        memoryIsOut = true;
        action.defineName("serve");
      },
      testing::ExitedWithCode(1), kWords);
}

TEST(MemoryTest, AGroupThatCannotGrowEndsTheProcess) {
  std::set_new_handler(MemoryAllocationError);
  BaseGroupClass group;
  ScriptedLeaf leaf("leaf");
  EXPECT_EXIT(
      {
        memoryIsOut = true;
        group.appendGroup(&leaf);
      },
      testing::ExitedWithCode(1), kWords);
}

TEST(MemoryTest, AVariableThatCannotHaveItsListsEndsTheProcess) {
  std::set_new_handler(MemoryAllocationError);
  EXPECT_EXIT(
      {
        memoryIsOut = true;
        TestVariable variable("queue");
      },
      testing::ExitedWithCode(1), kWords);
}

TEST(MemoryTest, AChoiceAllocatesNothing) {
  BaseGroupClass inner;
  BaseGroupClass group;
  ScriptedLeaf a("a", 1.0);
  ScriptedLeaf b("b", 3.0);
  ScriptedLeaf c("c", 2.0);
  inner.appendGroup(&a);
  inner.appendGroup(&b);
  inner.SelectedAction = &a;
  group.appendGroup(&inner);
  group.appendGroup(&c);
  ScriptedGenerator generator(std::vector<double>(200, 0.25));
  const std::size_t before = allocations;
  bool selected = true;
  for (int i = 0; i < 100; ++i) {
    selected = group.SelectAction() && selected;
    selected = group.Enabled() && !group.EnablingChange() && selected;
  }
  const std::size_t after = allocations;
  EXPECT_TRUE(selected);
  EXPECT_EQ(after - before, 0U);
}

TEST(MemoryTest, AFrozenSetGivesItsArrayBackWhenItIsClearedAndWhenItEnds) {
  const std::size_t before = live();
  {
    FastSet cleared;
    FastSet kept;
    cleared.insert(7);
    kept.insert(7);
    cleared.NoMoreModifications();
    kept.NoMoreModifications();
    EXPECT_EQ(live(), before + 2);
    cleared.clear();
    EXPECT_EQ(live(), before + 1);
  }
  EXPECT_EQ(live(), before);
}

TEST(MemoryTest, AListThatGrowsGivesItsEarlierArrayBack) {
  const std::size_t before = live();
  {
    List<int> list(1);
    int first = 1;
    int second = 2;
    list.append(&first);
    list.append(&second);
    EXPECT_EQ(live(), before + 1);
  }
  EXPECT_EQ(live(), before);
}

}  // namespace
