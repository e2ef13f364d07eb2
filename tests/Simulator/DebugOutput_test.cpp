#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "Simulator/EngineTest.h"
#include "support/CapturedOutput.h"

// The debug lines of a run, which are dormant until someone raises GlobalDebugLevel.

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

/// A line and the lowest level that shows it.
struct DebugLine {
  int level;
  std::string text;
};

/// The lines of `output` that are among the given ones, whatever stands between them.
std::vector<std::string> linesAmong(const std::vector<DebugLine>& wanted, const std::string& output) {
  std::vector<std::string> found;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    if (std::any_of(wanted.begin(), wanted.end(), [&](const DebugLine& one) { return one.text == line; })) {
      found.push_back(line);
    }
  }
  return found;
}

std::vector<std::string> shownAt(int level, const std::vector<DebugLine>& lines) {
  std::vector<std::string> shown;
  for (const DebugLine& line : lines) {
    if (level >= line.level) {
      shown.push_back(line.text);
    }
  }
  return shown;
}

/// `tick` fires at 1, 2 and so on, `never` not at all. A batch ends at 1.5, so that it has one firing.
class DebugOutputTest : public support::EngineTest {
 protected:
  DebugOutputTest() {
    useModel(
        [](support::HandModel& model) {
          Place& place = model.addPlace("place", 5);
          model.addActivity("tick", {&place}, {&place});
          model.addActivity("never").predicate = [] { return false; };
        },
        {{.stop = 1.5}});
  }

  std::string outputOfSetUp(int level, std::vector<std::string> words) {
    const support::DebugLevelGuard guard(level);
    return support::standardOutputOf([&] { simulator = std::make_unique<SimulatorProbe>(std::move(words)); });
  }
};

TEST_F(DebugOutputTest, SettingUpShowsItsStagesAboveLevelThree) {
  const std::vector<DebugLine> stages = {{4, "** Starting SimulationClass"},
                                         {4, "** Generating Study and getting pv model"},
                                         {4, "** Getting groups"},
                                         {4, "** End getting groups"},
                                         {4, "** AddActionAffects on tick"},
                                         {4, "** AddActionAffects on never"},
                                         {4, "** Using Lagged Fibonacci Random Number Generator"},
                                         {4, "** Done creating random number generator"},
                                         {4, "** About to start simulation"}};
  for (const int level : {0, 3, 4}) {
    EXPECT_THAT(linesAmong(stages, outputOfSetUp(level, {"-N1"})), ElementsAreArray(shownAt(level, stages))) << level;
    simulator.reset();
  }
}

TEST_F(DebugOutputTest, SettingUpShowsTheGeneratorThatItInstalls) {
  const std::vector<DebugLine> generators = {{4, "** Using Lagged Fibonacci Random Number Generator"},
                                             {4, "** Using Tausworthe Random Number Generator"},
                                             {4, "** Using Mersenne Twister Random Number Generator"}};
  for (std::size_t i = 0; i < generators.size(); ++i) {
    const std::vector<std::string> words = {"-N1", "-r", std::to_string(i)};
    EXPECT_THAT(linesAmong(generators, outputOfSetUp(4, words)), ElementsAre(generators[i].text));
    simulator.reset();
    EXPECT_THAT(linesAmong(generators, outputOfSetUp(3, words)), IsEmpty());
    simulator.reset();
  }
}

/// The image begins with the place's mark, two bytes in the order of the machine.
TEST_F(DebugOutputTest, ABatchShowsItsStepsEachFromItsLevelOn) {
  start();
  const std::string size = std::to_string(simulator->TheModel->StateSize());
  const std::vector<DebugLine> steps = {
      {3, "** Size of original state = " + size},
      {4, "** OriginalState[0] = 5"},
      {4, "** OriginalState[1] = 0"},
      {4, "** Current Action Enabled"},
      {4, "** End if"},
      {4, "** PVModel::Accumulate(double)"},
      {2, "** Accumulation Time = 1"},
      {1, "** PV Model firing action"},
      {1, "** Starting to look at the other actions that are affected by the firing"},
      {2, "** Simulator called EndAccumulate at time = 1.5"},
  };
  for (int level = 0; level <= 4; ++level) {
    start();
    const support::DebugLevelGuard guard(level);
    const std::string output = support::standardOutputOf([this] { simulator->Run(); });
    EXPECT_THAT(linesAmong(steps, output), ElementsAreArray(shownAt(level, steps))) << "level " << level;
  }
}

/// For each group whether it is enabled, and its end.
TEST_F(DebugOutputTest, TheFirstSchedulingOfASteadyStateRunShowsEachGroupAboveLevelThree) {
  const std::vector<DebugLine> lines = {{4, "** Current Action Enabled"}, {4, "** After if Enabled"}};
  for (const int level : {3, 4}) {
    start();
    simulator->makeLoopObjects();
    const support::DebugLevelGuard guard(level);
    const std::string output = support::standardOutputOf([this] { simulator->GenerateCompleteEventListSS(); });
    if (level == 3) {
      EXPECT_THAT(linesAmong(lines, output), IsEmpty());
    } else {
      EXPECT_THAT(linesAmong(lines, output),
                  ElementsAre("** Current Action Enabled", "** After if Enabled", "** After if Enabled"));
    }
    simulator->deleteLoopObjects();
  }
}

}  // namespace
