#include "BaseClasses/BaseSyncActionClass.h"

#include <gtest/gtest.h>

#include <csignal>

#include "support/CapturedOutput.h"

namespace {

TEST(BaseSyncActionClassTest, ItNamesTheActionsThatItSuperposes) {
  BaseActionClass first;
  BaseActionClass second;
  BaseActionClass* actions[] = {&second, &first};
  BaseSyncActionClass sync(actions, 2);
  actions[0] = nullptr;
  EXPECT_TRUE(sync.isSync());
  ASSERT_EQ(sync.getNumSuperposedActions(), 2);
  EXPECT_EQ(sync.getSuperposedAction(0), &second);
  EXPECT_EQ(sync.getSuperposedAction(1), &first);
}

TEST(BaseSyncActionClassTest, ByDefaultItSuperposesNothing) {
  BaseSyncActionClass sync;
  EXPECT_TRUE(sync.isSync());
  EXPECT_EQ(sync.getNumSuperposedActions(), 0);
}

TEST(BaseSyncActionClassTest, AnIndexOutsideItsActionsFailsAnAssertion) {
  BaseActionClass first;
  BaseActionClass* actions[] = {&first};
  BaseSyncActionClass sync(actions, 1);
  EXPECT_EXIT(sync.getSuperposedAction(1), testing::KilledBySignal(SIGABRT),
              support::assertionIn("BaseSyncActionClass"));
  EXPECT_EXIT(sync.getSuperposedAction(-1), testing::KilledBySignal(SIGABRT),
              support::assertionIn("BaseSyncActionClass"));
}

}  // namespace
