#include <array>
#include <string>
#include <utility>
#include <vector>

#include "Modelling/Modelling.h"

// Production line of four cells, of which the second and the third stand side by side; G. Ciardo, M. Tilgner, On the use
// of Kronecker operators for the solution of generalized stochastic Petri nets, 1996.
namespace {

using namespace modelling;

Parameter<Short> cards{"cards"};               // of each cell: it holds no more parts than that
Parameter<Double> faultFactor{"faultFactor"};  // by how much more often than usual a part must be done again
Parameter<Double> inRate{"inRate"};            // of the supply of raw parts
Parameter<Double> outRate{"outRate"};          // of the delivery of finished ones

constexpr int kCells = 4;
constexpr double kBackRate = 0.3;   // from the rework place back to work
constexpr double kSplitRate = 0.4;  // from cell 1 to cells 2 and 3
constexpr double kMergeRate = 0.5;  // from cells 2 and 3 to cell 4
constexpr std::array<double, kCells> kRedoRates{0.36, 0.42, 0.39, 0.33};
constexpr std::array<double, kCells> kOkRates{0.84, 0.98, 0.91, 0.77};

/// Where the cards of a cell are: each is free or on a part.
class Cell : public StructVariable<> {
 public:
  using StructVariable::StructVariable;
  Field<short> free{*this, "free", static_cast<short>(cards)};
  Field<short> inWork{*this, "inWork"};
  Field<short> faulty{*this, "faulty"};
  Field<short> done{*this, "done"};

  [[nodiscard]] int parts() { return inWork.Mark() + faulty.Mark() + done.Mark(); }
};

class Line : public AtomicModel {
 public:
  using Token = ExtendedPlace<short>;

  Variable<ArrayVariable<Cell>> cells{*this, "cells", kCells};

  Line() : AtomicModel("line") {
    for (int i = 0; i < kCells; ++i) {
      Cell& cell = *cells[i];
      const auto index = static_cast<std::size_t>(i);
      const std::string number = std::to_string(i + 1);
      if (faultFactor > 0.0) {
        move("redo_" + number, faultFactor * kRedoRates[index], {{&cell.inWork, &cell.faulty}});
      }
      move("ok_" + number, kOkRates[index], {{&cell.inWork, &cell.done}});
      move("back_" + number, kBackRate, {{&cell.faulty, &cell.inWork}});
    }
    Cell& first = *cells[0];
    Cell& upper = *cells[1];
    Cell& lower = *cells[2];
    Cell& last = *cells[3];
    move("in", inRate, {{&first.free, &first.inWork}});
    move("split", kSplitRate, {{&first.done, &first.free}, {&upper.free, &upper.inWork}, {&lower.free, &lower.inWork}});
    move("merge", kMergeRate, {{&upper.done, &upper.free}, {&lower.done, &lower.free}, {&last.free, &last.inWork}});
    move("out", outRate, {{&last.done, &last.free}});
  }

  [[nodiscard]] int parts() {
    int sum = 0;
    for (int i = 0; i < kCells; ++i) {
      sum += cells[i]->parts();
    }
    return sum;
  }

 private:
  using Moves = std::vector<std::pair<Token*, Token*>>;

  /// An activity that takes a card from the first to the second place of each pair, and waits until all can be taken.
  void move(const std::string& name, double rate, const Moves& moves) {
    std::vector<Token*> sources;
    std::vector<Token*> both;
    for (const auto& [from, to] : moves) {
      sources.push_back(from);
      both.insert(both.end(), {from, to});
    }
    activity(name)
        .enabledBy(sources,
                   [sources] {
                     for (Token* const source : sources) {
                       if (source->Mark() == 0) {
                         return false;
                       }
                     }
                     return true;
                   })
        .exponential(rate)
        .fires(both, [moves] {
          for (const auto& [from, to] : moves) {
            --from->Mark();
            ++to->Mark();
          }
        });
  }
};

/// In the results: 0 to 3 belong to terminating runs, 4 to 12 to steady-state runs.
void measure(RewardModel& rewards) {
  rewards.model<Line>();

  // From an empty line on.
  rewards.instantOfTime("parts", {5.0, 20.0}).rate("line", [](Line& line) { return line.parts(); });
  rewards.timeAveraged("parts until 50", 0.0, 50.0).rate("line", [](Line& line) { return line.parts(); });
  rewards.intervalOfTime("delivered until 50", 0.0, 50.0).impulse("out", "line");

  constexpr double kTransient = 100.0;
  constexpr double kBatchLength = 500.0;
  for (const char* const crossing : {"in", "split", "merge", "out"}) {
    rewards.steadyState(std::string("throughput of ") + crossing, kTransient, kBatchLength).impulse(crossing, "line");
  }
  rewards.steadyState("cell 1 has a card free", kTransient, kBatchLength).rate("line", [](Line& line) {
    return line.cells[0]->free.Mark() > 0;
  });
  for (int cell = 0; cell < kCells; ++cell) {
    rewards.steadyState("parts in cell " + std::to_string(cell + 1), kTransient, kBatchLength)
        .rate("line", [cell](Line& line) { return line.cells[cell]->parts(); });
  }
}

const StudyEntry study{"kanban",
                       Experiments(cards, faultFactor, inRate, outRate)
                           .row(1, 1.0, 1.0, 0.9)   // one card in each cell
                           .row(1, 0.0, 1.0, 0.9)   // no part is ever done again
                           .row(1, 1.0, 0.1, 0.9)   // raw parts are scarce
                           .row(2, 1.0, 1.0, 0.9),  // two cards
                       measure};

}  // namespace
