#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "fuzz/Bytes.h"
#include "fuzz/Uniforms.h"

// A small model as plain data: what both the engine and the plain interpreter run. Nothing here knows of either.

namespace fuzz {

/// Marks stay in 0..kMostTokens.
inline constexpr int kMostTokens = 6;

/// What an activity asks of the marks. Cells are numbered within the atomic model: a variable has one, an array one for
/// each element.
struct Condition {
  enum class Kind { kAlways, kNever, kAtLeast, kBelow, kEqual, kBelowOther };
  Kind kind = Kind::kAlways;
  int cell = 0;
  int other = 0;
  int value = 0;

  template <typename Marks>
  [[nodiscard]] bool holds(const Marks& marks) const {
    switch (kind) {
      case Kind::kNever:
        return false;
      case Kind::kAtLeast:
        return marks.get(cell) >= value;
      case Kind::kBelow:
        return marks.get(cell) < value;
      case Kind::kEqual:
        return marks.get(cell) == value;
      case Kind::kBelowOther:
        return marks.get(cell) < marks.get(other);
      default:
        return true;
    }
  }
  [[nodiscard]] std::vector<int> cellsRead() const;
};

/// base + perMark * mark of `cell`.
struct Amount {
  double base = 1.0;
  double perMark = 0.0;
  int cell = 0;

  template <typename Marks>
  [[nodiscard]] double value(const Marks& marks) const {
    return perMark == 0.0 ? base : base + perMark * marks.get(cell);
  }
};

/// One change that a firing makes.
struct Effect {
  enum class Kind { kAdd, kSet, kMove, kCopy };
  Kind kind = Kind::kAdd;
  int cell = 0;
  int other = 0;
  int value = 1;

  template <typename Marks>
  void apply(Marks& marks) const {
    switch (kind) {
      case Kind::kSet:
        marks.set(cell, value);
        break;
      case Kind::kMove:
        if (marks.get(cell) > 0 && marks.get(other) < kMostTokens) {
          marks.set(cell, marks.get(cell) - 1);
          marks.set(other, marks.get(other) + 1);
        }
        break;
      case Kind::kCopy:
        marks.set(cell, marks.get(other));
        break;
      default:
        marks.set(cell, std::clamp(marks.get(cell) + value, 0, kMostTokens));
    }
  }
  [[nodiscard]] std::vector<int> cellsChanged() const;
};

/// Numbered as the engine's distributions are; Instantaneous is the last.
inline constexpr int kInstantaneous = 18;

struct DelayRecipe {
  int distribution = 2;
  std::vector<Amount> parameters;  // in the order of the sampler's arguments; all phases in turn for the last two kinds
};

/// An arc to a variable of the atomic model, or to one element of an array.
struct ArcEnd {
  int variable = 0;
  int element = -1;  // -1: the whole variable
};

struct ActivityRecipe {
  std::string name;
  DelayRecipe delay;
  Condition first;  // enabled if both hold
  Condition second;
  std::vector<Effect> effects;
  Amount weight;
  Amount rank;  // truncated
  Condition watch{Condition::Kind::kNever};
  Condition resample{Condition::Kind::kNever};
  std::vector<ArcEnd> enabling;
  std::vector<ArcEnd> affected;

  template <typename Marks>
  [[nodiscard]] bool enabled(const Marks& marks) const {
    return first.holds(marks) && second.holds(marks);
  }
};

/// An entry of an atomic model's list of groups, or a member of one.
struct EntryRecipe {
  enum class Kind { kActivity, kPreselect, kPostselect };
  Kind kind = Kind::kActivity;
  std::string name;                  // of a group
  int activity = 0;                  // for kActivity: its number in the model
  std::vector<EntryRecipe> members;  // of a group
};

struct VariableRecipe {
  enum class Kind { kPlace, kShort, kInt, kShortArray, kIntArray };
  Kind kind = Kind::kPlace;
  std::string name;
  int size = 1;
  int initial = 0;
  bool readOnly = false;

  [[nodiscard]] bool isArray() const { return kind == Kind::kShortArray || kind == Kind::kIntArray; }
  /// Whether the two can be shared.
  [[nodiscard]] bool isLike(const VariableRecipe& other) const;
};

/// An atomic model.
struct LeafRecipe {
  std::string name;
  std::vector<VariableRecipe> variables;
  std::vector<ActivityRecipe> activities;  // in the order in which the entries hold them
  std::vector<EntryRecipe> entries;

  /// First cell of a variable.
  [[nodiscard]] int cellOf(int variable) const;
  [[nodiscard]] int cells() const { return cellOf(static_cast<int>(variables.size())); }
};

/// A variable of a composed model, made of variables of its children. In a replication all copies take part under the one
/// name.
struct SharedRecipe {
  struct Part {
    int child;
    std::string variable;
  };
  VariableRecipe variable;  // as the parts are, with the name of this level
  std::vector<Part> parts;  // by ascending child
};

struct NodeRecipe {
  enum class Kind { kLeaf, kJoin, kReplication };
  Kind kind = Kind::kLeaf;
  std::string name;
  LeafRecipe leaf;                   // of a kLeaf
  std::vector<NodeRecipe> children;  // one for a kReplication
  int copies = 1;                    // of a kReplication
  std::vector<SharedRecipe> shared;

  /// What the level above can share.
  [[nodiscard]] std::vector<VariableRecipe> offered() const;
};

/// One performance variable. Its window is that of each terminating batch; that of a steady-state variable is its first batch,
/// behind the transient, and each further one follows the one before it.
struct RewardRecipe {
  enum class Kind { kInstant, kInterval, kTimeAveraged, kSteadyState };
  Kind kind = Kind::kInstant;
  double start = 0.0;
  double stop = 1.0;
  bool hasRate = true;
  std::string rateModel;
  Amount rate;
  bool hasImpulse = false;
  std::string impulseModel;
  std::string impulseAction;
  Amount impulse;
  bool impulseIsSum = false;

  [[nodiscard]] bool isSteadyState() const { return kind == Kind::kSteadyState; }
};

struct ModelRecipe {
  NodeRecipe top;
  std::vector<RewardRecipe> rewards;  // the first of the run's kind
  bool isSteadyState = false;         // the run
  int batches = 1;                    // in a steady-state run, of the slowest variable
  int reportSize = 1000;
  int simTest = 2;  // how the engine builds the chains
  Uniforms uniforms{Uniforms::Grain::kFine, 0};
};

/// The model that these bytes stand for. Every string of bytes stands for one.
[[nodiscard]] ModelRecipe modelOf(std::span<const std::uint8_t> bytes);

/// The model in words, for whoever looks into a difference.
[[nodiscard]] std::string describe(const ModelRecipe& model);

}  // namespace fuzz
