#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "BaseClasses/state/ArrayStateVariable.h"
#include "BaseClasses/state/ExtendedPlace.h"
#include "BaseClasses/state/StructStateVariable.h"
#include "Simulator/UserDistributions.h"
#include "models/ModelKit.h"
#include "support/MarkovChain.h"

namespace cycle {

constexpr int kStations = 3;
constexpr double kRates[kStations] = {1.0, 2.0, 0.5};

/// An array of scalars, all zero.
template <typename Number, ArrayType kType>
class Numbers : public ArrayStateVariable<ExtendedPlace<Number>> {
 public:
  explicit Numbers(const char* name) : ArrayStateVariable<ExtendedPlace<Number>>(name, "", kType, kStations) {
    for (int i = 0; i < kStations; ++i) {
      this->fields.push_back(new ExtendedPlace<Number>(std::to_string(i).c_str(), name));
    }
  }
  ~Numbers() override {
    for (BaseStateVariableClass* element : this->fields) {
      delete element;
    }
  }
};

/// How many customers a station holds, in each element type.
struct Tally {
  short asShort;
  int asInt;
  char asChar;
  double asDouble;
  float asFloat;
};

class TallyVariable : public StructStateVariable<Tally> {
 public:
  TallyVariable(const char* name, const char* prefix) : StructStateVariable<Tally>(name, prefix) {
    const std::string qualified = std::string(prefix).empty() ? name : std::string(prefix) + "." + name;
    asShort = make<short>("asShort", qualified, ArrayType_SHORT);
    asInt = make<int>("asInt", qualified, ArrayType_INT);
    asChar = make<char>("asChar", qualified, ArrayType_CHAR);
    asDouble = make<double>("asDouble", qualified, ArrayType_DOUBLE);
    asFloat = make<float>("asFloat", qualified, ArrayType_FLOAT);
  }
  ~TallyVariable() override {
    for (const auto& entry : fields) {
      delete entry.field;
    }
  }

  void add(int change) {
    asShort->Mark() = static_cast<short>(asShort->Mark() + change);
    asInt->Mark() += change;
    asChar->Mark() = static_cast<char>(asChar->Mark() + change);
    asDouble->Mark() += change;
    asFloat->Mark() += static_cast<float>(change);
  }

  ExtendedPlace<short>* asShort;
  ExtendedPlace<int>* asInt;
  ExtendedPlace<char>* asChar;
  ExtendedPlace<double>* asDouble;
  ExtendedPlace<float>* asFloat;

 private:
  template <typename Number>
  ExtendedPlace<Number>* make(const char* name, const std::string& prefix, ArrayType type) {
    auto* made = new ExtendedPlace<Number>(name, prefix.c_str());
    fields.push_back(field(type, made));
    return made;
  }
};

class TallyArray : public ArrayStateVariable<TallyVariable> {
 public:
  explicit TallyArray(const char* name) : ArrayStateVariable<TallyVariable>(name, "", ArrayType_STRUCT, kStations) {
    for (int i = 0; i < kStations; ++i) {
      fields.push_back(new TallyVariable(std::to_string(i).c_str(), name));
    }
  }
  ~TallyArray() override {
    for (BaseStateVariableClass* element : fields) {
      delete element;
    }
  }
};

/// Closed cycle of single exponential servers. What each station holds stands in an array of each element type and in
/// an array of structs; each station reads another of them.
class CycleModel : public kit::AtomicModel {
 public:
  explicit CycleModel(int customers)
      : shorts_(variable(std::make_unique<Numbers<short, ArrayType_SHORT>>("shorts"))),
        ints_(variable(std::make_unique<Numbers<int, ArrayType_INT>>("ints"))),
        chars_(variable(std::make_unique<Numbers<char, ArrayType_CHAR>>("chars"))),
        doubles_(variable(std::make_unique<Numbers<double, ArrayType_DOUBLE>>("doubles"))),
        floats_(variable(std::make_unique<Numbers<float, ArrayType_FLOAT>>("floats"))),
        tallies_(variable(std::make_unique<TallyArray>("tallies"))) {
    add(0, customers);
    const std::vector<BaseStateVariableClass*> all{&shorts_, &ints_, &chars_, &doubles_, &floats_, &tallies_};
    for (int i = 0; i < kStations; ++i) {
      activity(("serve" + std::to_string(i)).c_str(), all, all,
               {.enabled = [this, i] { return holds(i) > 0.0; },
                .delay = [i] { return TheDistribution->Exponential(kRates[i]); },
                .fire =
                    [this, i] {
                      add(i, -1);
                      add((i + 1) % kStations, 1);
                    }});
    }
    finish("cycle");
  }

  /// The number at station i, from a variable of another element type for each station; all of them must agree.
  [[nodiscard]] double holds(int i) {
    const double number = shorts_.Index(i)->Mark();
    TallyVariable& tally = *tallies_.Index(i);
    EXPECT_EQ(number, ints_.Index(i)->Mark());
    EXPECT_EQ(number, chars_.Index(i)->Mark());
    EXPECT_EQ(number, doubles_.Index(i)->Mark());
    EXPECT_EQ(number, floats_.Index(i)->Mark());
    EXPECT_EQ(number, tally.asShort->Mark());
    EXPECT_EQ(number, tally.asInt->Mark());
    EXPECT_EQ(number, tally.asChar->Mark());
    EXPECT_EQ(number, tally.asDouble->Mark());
    EXPECT_EQ(number, tally.asFloat->Mark());
    return number;
  }

  static kit::RateReward numberAt(int station) {
    return {"cycle",
            [station](kit::ModelInstances models) { return static_cast<CycleModel*>(models[0])->holds(station); }};
  }

 private:
  void add(int i, int change) {
    shorts_.Index(i)->Mark() = static_cast<short>(shorts_.Index(i)->Mark() + change);
    ints_.Index(i)->Mark() += change;
    chars_.Index(i)->Mark() = static_cast<char>(chars_.Index(i)->Mark() + change);
    doubles_.Index(i)->Mark() += change;
    floats_.Index(i)->Mark() += static_cast<float>(change);
    tallies_.Index(i)->add(change);
  }

  Numbers<short, ArrayType_SHORT>& shorts_;
  Numbers<int, ArrayType_INT>& ints_;
  Numbers<char, ArrayType_CHAR>& chars_;
  Numbers<double, ArrayType_DOUBLE>& doubles_;
  Numbers<float, ArrayType_FLOAT>& floats_;
  TallyArray& tallies_;
};

/// What the stations hold, as a chain.
inline support::MarkovChain exactCycle(int customers) {
  return {{customers, 0, 0}, [](const support::MarkovChain::Marking& marking) {
            support::MarkovChain::Moves moves;
            for (std::size_t i = 0; i < kStations; ++i) {
              if (marking[i] > 0) {
                support::MarkovChain::Marking next = marking;
                --next[i];
                ++next[(i + 1) % kStations];
                moves.push_back({next, kRates[i]});
              }
            }
            return moves;
          }};
}

}  // namespace cycle
