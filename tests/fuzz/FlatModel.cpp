#include "fuzz/FlatModel.h"

#include <algorithm>
#include <map>
#include <utility>

namespace fuzz {

namespace {

template <typename Item>
void addOnce(std::vector<Item>& items, const Item& item) {
  if (std::ranges::find(items, item) == items.end()) {
    items.push_back(item);
  }
}

/// What a level offers the one above: for each variable its cells, one of those that are the same.
using Offer = std::map<std::string, std::vector<int>>;

class Flattening {
 public:
  static Flat of(const NodeRecipe& top) {
    Flattening flattening;
    flattening.add(top);
    return std::move(flattening.flat_);
  }

 private:
  Offer add(const NodeRecipe& node) {
    switch (node.kind) {
      case NodeRecipe::Kind::kJoin:
        return addJoin(node);
      case NodeRecipe::Kind::kReplication:
        return addReplication(node);
      default:
        return addLeaf(node.leaf);
    }
  }

  Offer addJoin(const NodeRecipe& node) {
    std::vector<Offer> offers;
    for (const NodeRecipe& child : node.children) {
      offers.push_back(add(child));
    }
    Offer offered;
    for (const SharedRecipe& shared : node.shared) {
      std::vector<std::vector<int>> parts;
      for (const SharedRecipe::Part& part : shared.parts) {
        parts.push_back(offers[at(part.child)].at(part.variable));
      }
      // The value of the last child holds.
      offered[shared.variable.name] = unite(parts, parts.size() - 1);
    }
    return offered;
  }

  Offer addReplication(const NodeRecipe& node) {
    std::vector<Offer> offers;
    for (int copy = 0; copy < node.copies; ++copy) {
      offers.push_back(add(node.children.front()));
    }
    Offer offered;
    for (const SharedRecipe& shared : node.shared) {
      std::vector<std::vector<int>> parts;
      for (const Offer& offer : offers) {
        parts.push_back(offer.at(shared.parts.front().variable));
      }
      if (!parts.empty()) {
        // The value of the first copy holds.
        offered[shared.variable.name] = unite(parts, 0);
      }
    }
    return offered;
  }

  /// Makes the marks of these variables one, element by element. The lists of activities follow each other.
  std::vector<int> unite(const std::vector<std::vector<int>>& parts, std::size_t valueOf) {
    for (std::size_t element = 0; element < parts.front().size(); ++element) {
      Mark united;
      united.value = flat_.marks[at(flat_.markOf[at(parts[valueOf][element])])].value;
      std::vector<int> old;
      for (const std::vector<int>& part : parts) {
        const int mark = flat_.markOf[at(part[element])];
        for (const int activity : flat_.marks[at(mark)].affecting) {
          addOnce(united.affecting, activity);
        }
        for (const int activity : flat_.marks[at(mark)].enabled) {
          addOnce(united.enabled, activity);
        }
        old.push_back(mark);
      }
      const int number = static_cast<int>(flat_.marks.size());
      flat_.marks.push_back(united);
      for (int& mark : flat_.markOf) {
        if (std::ranges::find(old, mark) != old.end()) {
          mark = number;
        }
      }
    }
    return parts.front();
  }

  Offer addLeaf(const LeafRecipe& leaf) {
    const Instance instance{&leaf, static_cast<int>(flat_.markOf.size()), static_cast<int>(flat_.nodeOf.size())};
    flat_.instances.push_back(instance);
    Offer offered;
    for (const VariableRecipe& variable : leaf.variables) {
      for (int element = 0; element < variable.size; ++element) {
        offered[variable.name].push_back(static_cast<int>(flat_.markOf.size()));
        flat_.markOf.push_back(static_cast<int>(flat_.marks.size()));
        flat_.marks.push_back(Mark{variable.initial, {}, {}});
      }
    }
    for (const EntryRecipe& entry : leaf.entries) {
      const int number = static_cast<int>(flat_.entries.size());
      flat_.entries.push_back(addNode(entry, instance, number));
    }
    return offered;
  }

  int addNode(const EntryRecipe& entry, const Instance& instance, int number) {
    Node node;
    node.kind = entry.kind;
    node.name = entry.name;
    node.entry = number;
    if (entry.kind == EntryRecipe::Kind::kActivity) {
      node.recipe = &instance.leaf->activities[at(entry.activity)];
      node.name = node.recipe->name;
      node.firstCell = instance.firstCell;
      node.activity = static_cast<int>(flat_.nodeOf.size());
      flat_.affecting.push_back(drawArcs(node.recipe->affected, instance, &Mark::affecting, node.activity));
      flat_.enabling.push_back(drawArcs(node.recipe->enabling, instance, &Mark::enabled, node.activity));
      flat_.nodeOf.push_back(static_cast<int>(flat_.nodes.size()));
    }
    for (const EntryRecipe& member : entry.members) {
      node.members.push_back(addNode(member, instance, number));
    }
    flat_.nodes.push_back(node);
    return static_cast<int>(flat_.nodes.size()) - 1;
  }

  std::vector<int> drawArcs(const std::vector<ArcEnd>& arcs, const Instance& instance, std::vector<int> Mark::*list,
                            int activity) {
    std::vector<int> cells;
    for (const ArcEnd& arc : arcs) {
      const int first = instance.firstCell + instance.leaf->cellOf(arc.variable);
      const int size = instance.leaf->variables[at(arc.variable)].size;
      for (int element = 0; element < size; ++element) {
        if (arc.element == kNone || arc.element == element) {
          addOnce(cells, first + element);
          addOnce(flat_.marks[at(flat_.markOf[at(first + element)])].*list, activity);
        }
      }
    }
    return cells;
  }

  Flat flat_;
};

}  // namespace

Flat flattened(const NodeRecipe& top) {
  return Flattening::of(top);
}

std::vector<std::vector<int>> chainsOf(const Flat& flat, int simTest) {
  const auto entryOf = [&](int activity) { return flat.nodes[at(flat.nodeOf[at(activity)])].entry; };
  const auto markOf = [&](int cell) -> const Mark& { return flat.marks[at(flat.markOf[at(cell)])]; };
  const int activities = static_cast<int>(flat.nodeOf.size());
  std::vector<std::vector<int>> chains(at(activities));
  for (int activity = 0; activity < activities; ++activity) {
    if (simTest == 2) {
      // Forward: its own entry, then those that the changed marks enable.
      addOnce(chains[at(activity)], entryOf(activity));
      for (const int cell : flat.affecting[at(activity)]) {
        for (const int other : markOf(cell).enabled) {
          addOnce(chains[at(activity)], entryOf(other));
        }
      }
    } else {
      // Backward: whoever changes what this one reads.
      addOnce(chains[at(activity)], entryOf(activity));
      for (const int cell : flat.enabling[at(activity)]) {
        for (const int other : markOf(cell).affecting) {
          addOnce(chains[at(other)], entryOf(activity));
        }
      }
    }
  }
  if (simTest != 0) {
    for (std::vector<int>& chain : chains) {
      std::ranges::reverse(chain);  // the latest found stands first
    }
  }
  return chains;
}

}  // namespace fuzz
