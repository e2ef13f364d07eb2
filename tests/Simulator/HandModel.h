#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BaseClasses/SAN/Activity.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/SAN/SANModel.h"
#include "Performance_Variables/IntervalOfTimeWorker.h"
#include "Performance_Variables/PVModel.h"
#include "Performance_Variables/PerformanceVariableNode.h"
#include "support/CallLog.h"

// Small models put together by hand, for tests of the engine that look at every call it makes.

namespace support {

/// An activity that answers as its public fields say, and notes each call.
class HandActivity : public Activity {
 public:
  explicit HandActivity(const char* name) { ActivityInitialize(name, 0, Deterministic, RaceEnabled, 0, 0, false); }

  bool Enabled() override {
    noteCall("Enabled");
    OldEnabled = NewEnabled;
    NewEnabled = predicate();
    return NewEnabled;
  }
  double SampleDistribution() override {
    noteCall("Sample");
    return delay();
  }
  bool ReactivationPredicate() override {
    noteCall("Predicate");
    return watched();
  }
  bool ReactivationFunction() override {
    noteCall("Function");
    return resampled();
  }
  BaseActionClass* Fire() override {
    noteCall("Fire");
    effect();
    return fired;
  }
  double Weight() override { return weight; }
  double Rate() override { return 0.0; }
  int Rank() override { return rank; }
  double* ReturnDistributionParameters() override { return nullptr; }
  void LinkVariables() override {}

  std::function<bool()> predicate = [] { return true; };
  std::function<double()> delay = [] { return 1.0; };
  std::function<bool()> watched = [] { return false; };
  std::function<bool()> resampled = [] { return false; };
  std::function<void()> effect = [] {};
  BaseActionClass* fired = this;
  double weight = 1.0;
  int rank = 0;
  CallLog* log = nullptr;  // borrowed from the test, or null

 private:
  /// Makes no text when there is no log, so that a test can count the engine's own allocations.
  void noteCall(const char* call) {
    if (log != nullptr) {
      log->push_back(std::string(ActionName) + '.' + call);
    }
  }
};

/// An atomic model under construction: add parts, then call finish once.
class HandModel : public SANModel {
 public:
  using Variables = std::vector<BaseStateVariableClass*>;

  Place& addPlace(const char* name, short mark = 0) {
    places_.push_back(std::make_unique<Place>(name, mark));
    return *places_.back();
  }

  /// An activity that is a group of its own.
  HandActivity& addActivity(const char* name, Variables enabling = {}, Variables affected = {}) {
    HandActivity& added = addMember(name, std::move(enabling), std::move(affected));
    scheduled_.push_back(&added);
    return added;
  }

  /// An activity that is to be a member of a group.
  HandActivity& addMember(const char* name, Variables enabling = {}, Variables affected = {}) {
    parts_.push_back({std::make_unique<HandActivity>(name), std::move(enabling), std::move(affected)});
    return *parts_.back().activity;
  }

  template <class Group>
  Group& addGroup(const char* name, const std::vector<HandActivity*>& members) {
    auto group = std::make_unique<Group>();
    Group& added = *group;
    added.initialize(static_cast<int>(members.size()), name);
    for (HandActivity* const member : members) {
      added.appendGroup(member);
    }
    scheduled_.push_back(&added);
    groups_.push_back(std::move(group));
    return added;
  }

  /// Hands the parts to the model, which notes the calls of its activities in `log`, and adds the arcs.
  void finish(const char* name, CallLog* log) {
    std::vector<BaseStateVariableClass*> places;
    for (const auto& place : places_) {
      places.push_back(place.get());
    }
    std::vector<Activity*> activities;
    for (const Part& part : parts_) {
      part.activity->log = log;
      activities.push_back(part.activity.get());
    }
    initializeSANModelNow(name, static_cast<int>(places.size()), places.data(), 0, nullptr,
                          static_cast<int>(activities.size()), activities.data(), static_cast<int>(scheduled_.size()),
                          scheduled_.data());
    for (std::size_t i = 0; i < scheduled_.size(); ++i) {
      scheduled_[i]->setGroupId(static_cast<int>(i));
    }
    for (const Part& part : parts_) {
      for (BaseStateVariableClass* const variable : part.affected) {
        AddAffectArc(variable, part.activity.get());
      }
    }
    for (const Part& part : parts_) {
      for (BaseStateVariableClass* const variable : part.enabling) {
        AddEnableArc(variable, part.activity.get());
      }
    }
  }

 private:
  struct Part {
    std::unique_ptr<HandActivity> activity;
    Variables enabling;
    Variables affected;
  };

  std::vector<std::unique_ptr<Place>> places_;
  std::vector<Part> parts_;
  std::vector<std::unique_ptr<BaseGroupClass>> groups_;
  std::vector<BaseGroupClass*> scheduled_;  // borrowed from the two above
};

/// A variable that accumulates `rate` over [start, stop].
struct HandVariable {
  double stop = 1.0;
  std::function<double()> rate = [] { return 1.0; };
  PVType type = terminating;
  double start = 0.0;
};

/// A reward model over one HandModel named "model".
class HandReward : public PVModel {
 public:
  HandReward(HandModel* model, std::vector<HandVariable> variables) : variables_(std::move(variables)) {
    TheModel = model;
    DefineName("reward");
    StateMode = 1;
    CreatePVList(static_cast<int>(variables_.size()), true);
    Initialize();
  }

 protected:
  PerformanceVariableNode* createPVNode(int pvindex, int /*timeindex*/) override {
    return new Node(variables_[static_cast<std::size_t>(pvindex)]);
  }

 private:
  class Worker : public IntervalOfTimeWorker {
   public:
    explicit Worker(const HandVariable& variable) : IntervalOfTimeWorker(1), rate_(variable.rate) {}
    double Reward_Function() override { return rate_(); }

   private:
    std::function<double()> rate_;
  };

  class Node : public PerformanceVariableNode {
   public:
    explicit Node(const HandVariable& variable) : variable_(variable) {
      Initialize("variable", INTERVAL_OF_TIME, 1, &variable.start, &variable.stop, 0, 0, 1, 0);
      AddModelDependency("model");
      Type = variable.type;
    }
    void CreateWorkerList() override { fillWorkerList<Worker>(variable_); }

   private:
    HandVariable variable_;
  };

  std::vector<HandVariable> variables_;
};

}  // namespace support
