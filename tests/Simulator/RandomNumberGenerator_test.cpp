#include "Simulator/RandomNumberGenerator.h"

#include <memory>
#include <type_traits>

#include "gtest/gtest.h"

namespace {

TEST(RandomNumberGeneratorTest, TheBaseReturnsZeroWhateverItsSeed) {
  RandomNumberGenerator generator;
  EXPECT_EQ(generator.rnd(), 0.0);
  generator.srnd(31415);
  EXPECT_EQ(generator.rnd(), 0.0);
}

TEST(RandomNumberGeneratorTest, AGeneratorIsDeletedThroughItsBase) {
  class Mortal : public RandomNumberGenerator {
   public:
    explicit Mortal(bool& dead) : dead_(dead) {}
    ~Mortal() override { dead_ = true; }

   private:
    bool& dead_;
  };
  bool dead = false;
  std::unique_ptr<RandomNumberGenerator> generator = std::make_unique<Mortal>(dead);
  generator.reset();
  EXPECT_TRUE(dead);
}

}  // namespace
