#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/PostselectGroup.h"
#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "Composer/Join.h"
#include "Composer/Rep.h"

/// Concrete models as a generated system declares them, put together by the test.
namespace testing_support {

/// An activity that adds 1 to a place through a cached pointer, as generated code does.
class AddOneActivity : public Activity {
 public:
  AddOneActivity(const char* name, Place* place) : place_(place) {
    ActivityInitialize(name, 0, Deterministic, RaceEnabled, 1, 1, false);
  }
  BaseActionClass* Fire() override {
    ++*mark_;
    return this;
  }
  void LinkVariables() override {
    if (place_ != nullptr) {
      place_->Register(&mark_);
    }
  }

 private:
  Place* place_ = nullptr;  // borrowed from the model
  short* mark_ = nullptr;   // follows the location of the place
};

/// An atomic model. The test adds variables and activities and calls finish(); each activity is a group of its own
/// unless it was put in one.
class Leaf : public SANModel {
 public:
  explicit Leaf(const char* name) : name_(name) {}

  /// Adds a variable and returns it.
  template <typename Variable, typename... Arguments>
  Variable* add(Arguments&&... arguments) {
    auto variable = std::make_unique<Variable>(std::forward<Arguments>(arguments)...);
    Variable* const added = variable.get();
    variables_.push_back(std::move(variable));
    return added;
  }

  /// Adds an activity that is enabled by and affects the place, if there is one.
  AddOneActivity* addActivity(const char* name, Place* place = nullptr) {
    AddOneActivity* const activity = addMember(name, place);
    groups_.push_back(activity);
    return activity;
  }

  /// Adds one group of activities.
  PostselectGroup* addGroup(const char* name, const std::vector<const char*>& members) {
    PostselectGroup* const group = ownGroups_.emplace_back(std::make_unique<PostselectGroup>()).get();
    group->initialize(static_cast<int>(members.size()), name);
    for (const char* const member : members) {
      group->appendGroup(addMember(member, nullptr));
    }
    groups_.push_back(group);
    return group;
  }

  Leaf* finish() {
    std::vector<BaseStateVariableClass*> variables;
    for (const auto& variable : variables_) {
      variables.push_back(variable.get());
    }
    std::vector<Activity*> activities;
    for (const auto& entry : activities_) {
      activities.push_back(entry.activity.get());
    }
    initializeSANModelNow(name_.c_str(), static_cast<int>(variables.size()), variables.data(), 0, nullptr,
                          static_cast<int>(activities.size()), activities.data(), static_cast<int>(groups_.size()),
                          groups_.data());
    for (const auto& entry : activities_) {
      if (entry.place != nullptr) {
        AddAffectArc(entry.place, entry.activity.get());
        AddEnableArc(entry.place, entry.activity.get());
      }
      entry.activity->LinkVariables();
    }
    return this;
  }

 private:
  struct Entry {
    std::unique_ptr<AddOneActivity> activity;
    Place* place;  // borrowed from variables_, or null
  };

  AddOneActivity* addMember(const char* name, Place* place) {
    activities_.push_back({std::make_unique<AddOneActivity>(name, place), place});
    return activities_.back().activity.get();
  }

  std::string name_;
  std::vector<std::unique_ptr<BaseStateVariableClass>> variables_;
  std::vector<Entry> activities_;
  std::vector<std::unique_ptr<PostselectGroup>> ownGroups_;
  std::vector<BaseGroupClass*> groups_;  // borrowed from the two above
};

using Children = std::vector<std::unique_ptr<BaseModelClass>>;

/// The children as a list that can be written in one expression.
template <typename... Models>
Children childrenOf(std::unique_ptr<Models>... models) {
  Children children;
  (children.push_back(std::move(models)), ...);
  return children;
}

/// A variable of a child, by the position of the child.
struct Member {
  std::size_t child;
  BaseStateVariableClass* variable;  // borrowed from the child
};

/// A variable of a composer's own and the children's variables that become one with it.
struct SharedVariable {
  std::unique_ptr<BaseStateVariableClass> variable;
  std::vector<Member> members;
};

template <typename... Entries>
std::vector<SharedVariable> sharedOf(Entries... entries) {
  std::vector<SharedVariable> shared;
  (shared.push_back(std::move(entries)), ...);
  return shared;
}

/// The names that a composer's constructor takes.
inline std::vector<const char*> namesOf(const std::vector<SharedVariable>& shared) {
  std::vector<const char*> names;
  for (const SharedVariable& entry : shared) {
    names.push_back(entry.variable->getName());
  }
  return names;
}

/// A join that carries out the steps of a generated join's constructor. It owns its children and shared variables, and
/// frees the variables first.
class TestJoin : public Join {
 public:
  explicit TestJoin(const char* name, Children models = {}, std::vector<SharedVariable> shared = {})
      : Join(name, static_cast<int>(models.size()), static_cast<int>(shared.size()), namesOf(shared).data()),
        models_(std::move(models)),
        shared_(std::move(shared)) {
    for (std::size_t i = 0; i < models_.size(); i++) {
      ModelArray[i] = models_[i].get();
    }
    SetupActions();
    if (models_.empty() || AllChildrenEmpty()) {
      NumSharedStateVariables = 0;
    } else {
      for (const SharedVariable& entry : shared_) {
        addSharedPtr(entry.variable.get(), entry.variable->getName());
        for (const Member& member : entry.members) {
          entry.variable->share(member.variable);
          addSharingInfo(member.variable, entry.variable.get(), models_[member.child].get());
        }
      }
    }
    Setup();
  }

  using BaseComposerClass::AllChildrenEmpty;

 private:
  Children models_;
  std::vector<SharedVariable> shared_;
};

/// A rep that carries out the steps of a generated rep's constructor; the members of a shared variable are those of
/// replica 0, 1 and so on.
class TestRep : public Rep {
 public:
  TestRep(const char* name, const char* submodelName, Children replicas, std::vector<SharedVariable> shared = {})
      : Rep(name, static_cast<int>(replicas.size()), static_cast<int>(shared.size()), namesOf(shared).data()),
        replicas_(std::move(replicas)),
        shared_(std::move(shared)) {
    for (std::size_t i = 0; i < replicas_.size(); i++) {
      ModelArray[i] = replicas_[i].get();
    }
    SetupActions();
    if (replicas_.empty()) {
      return;
    }
    if (AllChildrenEmpty()) {
      NumSharedStateVariables = 0;
    } else {
      shareReplicas();
    }
    Setup(submodelName);
  }

 private:
  void shareReplicas() {
    for (const SharedVariable& entry : shared_) {
      addSharedPtr(entry.variable.get(), entry.variable->getName());
      entry.variable->share(entry.members.front().variable);
    }
    for (const SharedVariable& entry : shared_) {
      for (const Member& member : entry.members) {
        addSharingInfo(member.variable, entry.variable.get(), nullptr);
      }
    }
    for (std::size_t i = 1; i < replicas_.size(); i++) {
      for (const SharedVariable& entry : shared_) {
        entry.members.front().variable->share(entry.members[i].variable);
      }
    }
  }

  Children replicas_;
  std::vector<SharedVariable> shared_;
};

inline std::vector<unsigned char> imageOf(BaseModelClass& model) {
  std::vector<unsigned char> image(static_cast<std::size_t>(model.StateSize()));
  model.CurrentState(image.data());
  return image;
}

/// A finished atomic model with places of the given marks, called p0, p1 and so on.
inline std::unique_ptr<Leaf> leafWithPlaces(const char* name, std::initializer_list<int> marks) {
  auto leaf = std::make_unique<Leaf>(name);
  int number = 0;
  for (const int mark : marks) {
    std::string placeName = "p";
    placeName += std::to_string(number++);
    leaf->add<Place>(placeName.c_str(), static_cast<short>(mark));
  }
  leaf->finish();
  return leaf;
}

/// The place at a position of an atomic model.
inline Place* placeOf(BaseModelClass& leaf, std::size_t position) {
  return static_cast<Place*>(leaf.GetLocalStateVariables(nullptr)[position]);
}

}  // namespace testing_support
