#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "fuzz/ModelRecipe.h"

// A model's tree laid flat, for the plain interpreter: lists of marks, of activities and groups, and of arcs.

namespace fuzz {

inline constexpr int kNone = -1;

/// An index for a vector.
inline std::size_t at(int index) {
  return static_cast<std::size_t>(index);
}

/// An atomic model of the tree: its recipe and where its cells and activities are in the whole model.
struct Instance {
  const LeafRecipe* leaf;  // borrowed from the recipe
  int firstCell;
  int firstActivity;
};

/// A mark, which one cell holds, or several that are shared.
struct Mark {
  int value = 0;
  std::vector<int> affecting;  // activities with an affecting arc, in the order in which the engine's list has them
  std::vector<int> enabled;    // activities with an enabling arc, likewise
};

/// An activity or a group.
struct Node {
  EntryRecipe::Kind kind = EntryRecipe::Kind::kActivity;
  std::string name;
  std::vector<int> members;  // nodes

  // An activity.
  const ActivityRecipe* recipe = nullptr;
  int firstCell = 0;
  int activity = kNone;
  int entry = kNone;  // of the group list
  bool answer = false;
  bool answerBefore = false;

  // A group.
  bool choiceIsDue = true;
  int chosen = kNone;  // an activity's node
};

/// The whole model.
struct Flat {
  std::vector<Instance> instances;
  std::vector<Mark> marks;
  std::vector<int> markOf;  // by cell
  std::vector<Node> nodes;
  std::vector<int> entries;                 // nodes that are scheduled
  std::vector<int> nodeOf;                  // by activity
  std::vector<std::vector<int>> affecting;  // by activity: cells with an affecting arc, in the order of the arcs
  std::vector<std::vector<int>> enabling;   // by activity, likewise
};

[[nodiscard]] Flat flattened(const NodeRecipe& top);

/// For each activity the entries to look at after its firing, in the order in which they are looked at. `simTest` is that of
/// the environment: 0, 1 or 2.
[[nodiscard]] std::vector<std::vector<int>> chainsOf(const Flat& flat, int simTest);

}  // namespace fuzz
