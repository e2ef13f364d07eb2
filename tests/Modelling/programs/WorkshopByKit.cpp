#include <span>

#include "Modelling/Modelling.h"

// Machines that wear and fail, and a crew that repairs them: a model without a purpose but to have one of everything.
// WorkshopByHand.cpp is the same model on the engine's classes alone.

namespace {

using namespace modelling;

Parameter<Short> machines{"machines"};
Parameter<Double> failureRate{"failureRate"};

struct OrderRecord {
  std::int16_t kind;
  double size;
};

class Order : public StructVariable<OrderRecord> {
 public:
  using StructVariable::StructVariable;
  Field<short> kind{*this, "kind"};
  Field<double> size{*this, "size", 1.5};
};

class Machine : public AtomicModel {
 public:
  Variable<Place> up{*this, "up", 1};
  Variable<Place> broken{*this, "broken"};
  Variable<ArrayVariable<short>> stock{*this, "stock", 2, 3};
  Variable<Order> order{*this, "order"};
  Variable<ExtendedPlace<double>> work{*this, "work", 0.5};

  Machine() : AtomicModel("machine") {
    activity("fail")
        .enabledBy({up}, [this] { return up.Mark() == 1; })
        .exponential(failureRate)
        .withCase(0.9, {up, broken},
                  [this] {
                    up.Mark() = 0;
                    ++broken.Mark();
                  })
        .withCase([this] { return 0.1 * stock[1]->Mark(); }, {stock, order},
                  [this] {
                    --stock[1]->Mark();
                    order.size.Mark() += 0.25;
                  });
    const auto isDown = [this] { return up.Mark() == 0 && stock[0]->Mark() > 0; };
    Activity& patch = activity("patch")
                          .enabledBy({up, stock}, isDown)
                          .uniform(0.5, 2.0)
                          .weight(2.0)
                          .firesInGroup({up, stock, work}, [this] {
                            up.Mark() = 1;
                            --stock[0]->Mark();
                            work.Mark() += 0.5;
                          });
    Activity& overhaul =
        activity("overhaul").enabledBy({up, stock}, isDown).erlang(3, 2.0).firesInGroup({up, work}, [this] {
          up.Mark() = 1;
          work.Mark() = 0.0;
        });
    group<PreselectGroup>("mend", {&patch, &overhaul});
    activity("refill")
        .enabledBy({stock}, [this] { return stock[0]->Mark() == 0 || stock[1]->Mark() == 0; })
        .instantaneous()
        .rank(5)
        .weight(0.5)
        .fires({stock, order}, [this] {
          stock[0]->Mark() = 2;
          stock[1]->Mark() = 2;
          ++order.kind.Mark();
        });
    activity("wear")
        .enabledBy({up}, [this] { return up.Mark() == 1; })
        .exponential([this] { return 0.25 + work.Mark(); })
        .reactivating()
        .fires({work}, [this] { work.Mark() = 0.5 * work.Mark() + 0.125; });
  }
};

class Crew : public AtomicModel {
 public:
  Variable<Place> queue{*this, "queue"};
  Variable<Order> order{*this, "order"};

  Crew() : AtomicModel("crew") {
    activity("repair")
        .enabledBy({queue}, [this] { return queue.Mark() > 0; })
        .exponential([this] { return 0.5 * queue.Mark(); })
        .reactivating()
        .fires({queue, order}, [this] {
          --queue.Mark();
          order.kind.Mark() = 0;
        });
  }
};

void measure(RewardModel& rewards) {
  rewards.model(
      join("workshop",
           {replicate("fleet", machines, child<Machine>("machine"), {"broken", "stock", "order"}), child<Crew>("crew")},
           {{"broken", {{"fleet", "broken"}, {"crew", "queue"}}}, "order"}));
  rewards.instantOfTime("up", {1.0, 20.0}).rate("machine", [](Machine& machine) { return machine.up.Mark(); });
  rewards.timeAveraged("allUp", 2.0, 60.0)
      .rateOfAll<Machine>("machine",
                          [](std::span<Machine* const> all) {
                            double up = 1.0;
                            for (Machine* const machine : all) {
                              up *= machine->up.Mark();
                            }
                            return up;
                          })
      .impulse("refill", "machine");
  rewards.intervalOfTime("waiting", 0.0, 10.0)
      .rate({"machine", "crew"}, [](Machine& machine, Crew& crew) { return machine.work.Mark() * crew.queue.Mark(); })
      .impulse("repair", "crew", [](Crew& crew) { return crew.queue.Mark(); })
      .impulse("fail_case2", "machine", [](Machine& machine) { return machine.order.size.Mark(); });
  rewards.steadyState("queueLength", 10.0, 50.0)
      .rate("crew", [](Crew& crew) { return crew.queue.Mark(); })
      .impulse("repair", "crew", 2.0);
  rewards.steadyState("repairs", 20.0, 40.0).impulseSum("repair", "crew", 1.0);
}

const StudyEntry study{"workshop", Experiments(machines, failureRate).row(3, 0.5).row(1, 2.0).row(5, 0.125), measure};

}  // namespace
