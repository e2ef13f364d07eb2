#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "models/ModelKit.h"

/// Kanban line of four cells with one card each; G. Ciardo, M. Tilgner, On the use of Kronecker operators for the
/// solution of generalized stochastic Petri nets, 1996. Of cell i, `k` holds free cards, `m` parts in work, `b` parts to
/// be done again, `o` finished parts. Cells 2 and 3 stand between 1 and 4, side by side.
class KanbanModel : public kit::AtomicModel {
 public:
  static constexpr std::size_t kCells = 4;

  KanbanModel() {
    constexpr std::array<double, kCells> kRedoRates{0.36, 0.42, 0.39, 0.33};
    constexpr std::array<double, kCells> kOkRates{0.84, 0.98, 0.91, 0.77};
    for (std::size_t i = 0; i < kCells; ++i) {
      const std::string number = std::to_string(i + 1);
      Cell& cell = cells_[i];
      cell.k = &place(("k_" + number).c_str(), 1);
      cell.m = &place(("m_" + number).c_str(), 0);
      cell.b = &place(("b_" + number).c_str(), 0);
      cell.o = &place(("o_" + number).c_str(), 0);
      move(("redo_" + number).c_str(), kRedoRates[i], {{cell.m, cell.b}});
      move(("ok_" + number).c_str(), kOkRates[i], {{cell.m, cell.o}});
      move(("back_" + number).c_str(), 0.3, {{cell.b, cell.m}});
    }
    const auto& [one, two, three, four] = cells_;
    move("in", 1.0, {{one.k, one.m}});
    move("s1", 0.4, {{one.o, one.k}, {two.k, two.m}, {three.k, three.m}});
    move("s2", 0.5, {{two.o, two.k}, {three.o, three.k}, {four.k, four.m}});
    move("out", 0.9, {{four.o, four.k}});
    finish("kanban");
  }

  /// Parts in the cell, 1 to 4.
  static kit::RateReward partsIn(int cell) {
    return {"kanban", [cell](kit::ModelInstances models) {
              const Cell& seen = of(models).cells_[static_cast<std::size_t>(cell - 1)];
              return static_cast<double>(seen.m->Mark() + seen.b->Mark() + seen.o->Mark());
            }};
  }
  /// Whether `in` is enabled, which has rate 1.
  static kit::RateReward takesIn() {
    return {"kanban", [](kit::ModelInstances models) { return of(models).cells_[0].k->Mark() > 0 ? 1.0 : 0.0; }};
  }

 private:
  struct Cell {
    Place* k;
    Place* m;
    Place* b;
    Place* o;
  };
  using Moves = std::vector<std::pair<Place*, Place*>>;

  static KanbanModel& of(kit::ModelInstances models) { return *static_cast<KanbanModel*>(models[0]); }

  /// Moves one token from the first to the second place of each pair.
  void move(const char* name, double rate, const Moves& moves) {
    std::vector<BaseStateVariableClass*> enabling;
    std::vector<BaseStateVariableClass*> affected;
    for (const auto& [from, to] : moves) {
      enabling.push_back(from);
      affected.push_back(from);
      affected.push_back(to);
    }
    activity(name, enabling, affected,
             {.enabled =
                  [moves] {
                    for (const auto& [from, to] : moves) {
                      if (from->Mark() == 0) {
                        return false;
                      }
                    }
                    return true;
                  },
              .delay = kit::exponential(rate),
              .fire =
                  [moves] {
                    for (const auto& [from, to] : moves) {
                      --from->Mark();
                      ++to->Mark();
                    }
                  }});
  }

  std::array<Cell, kCells> cells_{};
};
