#include "ArcCheck/ArcCheck.h"

#include <algorithm>
#include <ostream>

#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/BaseStateVariableClass.h"
#include "BaseClasses/SAN/Activity.h"

namespace support {

namespace {

constexpr int kElementsTold = 3;  // of one variable, in one kind of fault of one activity

std::string quoted(const std::string& text) {
  return '"' + text + '"';
}

void insert(std::vector<std::size_t>& ascending, std::size_t mark) {
  ascending.insert(std::ranges::lower_bound(ascending, mark), mark);
}

/// An activity that is asked outside the engine's order must not notice.
class KeptAnswers {
 public:
  explicit KeptAnswers(Activity& activity)
      : activity_(activity), newEnabled_(activity.NewEnabled), oldEnabled_(activity.OldEnabled) {}
  ~KeptAnswers() {
    activity_.NewEnabled = newEnabled_;
    activity_.OldEnabled = oldEnabled_;
  }
  KeptAnswers(const KeptAnswers&) = delete;
  KeptAnswers& operator=(const KeptAnswers&) = delete;

 private:
  Activity& activity_;
  bool newEnabled_;
  bool oldEnabled_;
};

/// Whether the model or one below it has no variables, such as a replication of none: what is shared with it has no
/// partner there, and need not.
bool hasEmptyModel(BaseModelClass& model) {
  if (model.getNumStateVariables() == 0) {
    return true;
  }
  for (int i = 0; i < model.GetNumberOfChildren(); ++i) {
    if (hasEmptyModel(*model.GetChild(i))) {
      return true;
    }
  }
  return false;
}

}  // namespace

ArcCheck::ArcCheck(BaseModelClass& top, std::ostream& out) : marks_(top), log_(marks_.ranges()), out_(&out) {
  for (const MarkTable::Name& name : marks_.hidden()) {
    *out_ << "ARCS: not watched: " << quoted(name.variable) << " of model " << quoted(marks_.pathOf(name.model))
          << ", which is of a kind of its own" << std::endl;
  }
  requirePartners(top);
  for (int i = 0; i < top.getNumActions(); ++i) {
    if (auto* const activity = dynamic_cast<Activity*>(top.getActionList()[i]); activity != nullptr) {
      watch(*activity);
    }
  }
  askAll();
}

void ArcCheck::watch(Activity& activity) {
  indexOf_[&activity] = watched_.size();
  Watched& one = watched_.emplace_back(Watched{&activity, {}, {}, {}});
  for (int i = 0; i < activity.getNumEnablingSVs(); ++i) {
    addArc(activity, *activity.getEnablingSV(i), one.enabling);
  }
  for (int i = 0; i < activity.getNumAffectedSVs(); ++i) {
    addArc(activity, *activity.getAffectedSV(i), one.affected);
  }
}

void ArcCheck::addArc(const Activity& activity, BaseStateVariableClass& leaf, Marks& marks) {
  if (const auto mark = marks_.markOf(leaf); mark.has_value()) {
    insert(marks, *mark);
  } else if (MarkTable::hasMark(leaf)) {
    tell(placeOf(activity) + "an arc leads to " + quoted(leaf.getFullyQualifiedName()) +
         ", which is no variable of a model; enter it among the variables of its model");
  }
}

void ArcCheck::requirePartners(BaseModelClass& model) {
  for (int i = 0; i < model.GetNumberOfChildren(); ++i) {
    requirePartners(*model.GetChild(i));
  }
  if (model.GetModelType() != BaseModelClass::JoinModel || hasEmptyModel(model)) {
    return;
  }
  for (int i = 0; i < model.getNumSharedStateVariables(); ++i) {
    BaseStateVariableClass* const shared = model.GetSharedStateVariables()[i];
    const std::string place = "model " + quoted(marks_.pathOf(&model)) + ": ";
    if (shared == nullptr) {
      tell(place + "shared variable " + std::to_string(i + 1) + " was never made");
    } else if (shared->getNumLeafNodes() > 0 && marks_.countAtomicModels(*shared) < 2) {
      tell(place + quoted(shared->getName()) + " is shared with nobody; join the variables of two children with it");
    }
  }
}

void ArcCheck::askAll() {
  for (Watched& one : watched_) {
    const KeptAnswers kept(*one.activity);
    log_.start();
    static_cast<void>(one.activity->Enabled());
    judgeQuestion(one, log_.stop());
  }
}

void ArcCheck::judgeQuestion(Watched& one, std::span<const AccessLog::Access> accesses) {
  for (const AccessLog::Access& access : accesses) {
    if (access.isWritten) {
      judge(one, one.changedInEnabled, access.range, {"Enabled changes ", ", and may only look; change it in Fire"});
    }
    if (access.isRead) {
      judge(one, one.enabling, access.range,
            {"Enabled reads ", " without an enabling arc; name it in enabledBy, or in a call of AddEnableArc"});
    }
  }
}

void ArcCheck::judgeFiring(const BaseActionClass* fired, std::span<const AccessLog::Access> accesses) {
  ++firings_;
  if (const auto found = indexOf_.find(fired); found != indexOf_.end()) {
    Watched& one = watched_[found->second];
    for (const AccessLog::Access& access : accesses) {
      if (access.isWritten) {
        judge(one, one.affected, access.range,
              {"Fire changes ", " without an affecting arc; name it in fires, or in a call of AddAffectArc"});
      }
    }
  }
  askAll();
}

void ArcCheck::judge(const Watched& one, Marks& known, std::size_t mark, const Fault& fault) {
  if (std::ranges::binary_search(known, mark)) {
    return;
  }
  insert(known, mark);
  // By the name in the activity's own model, where it has one.
  const std::vector<MarkTable::Name>& names = marks_.namesOf(mark);
  const auto own =
      std::ranges::find_if(names, [&one](const MarkTable::Name& name) { return name.model == one.activity->TheModel; });
  const MarkTable::Name& name = own == names.end() ? names.front() : *own;
  const std::string origin = own == names.end() ? " of model " + quoted(marks_.pathOf(name.model)) : "";
  const std::string text = placeOf(*one.activity) + fault.deed + quoted(name.variable) + origin + fault.reproach;
  if (told_.contains(text)) {
    return;
  }
  int& elements = elementsTold_[placeOf(*one.activity) + fault.deed + quoted(name.holder) + origin];
  ++elements;
  if (elements <= kElementsTold) {
    tell(text);
  } else if (elements == kElementsTold + 1) {
    tell(placeOf(*one.activity) + fault.deed + "more of " + quoted(name.holder) + origin + " than is told here");
  }
}

std::string ArcCheck::placeOf(const Activity& activity) const {
  const auto* const model = static_cast<const BaseModelClass*>(activity.TheModel);
  return "model " + quoted(model == nullptr ? "" : marks_.pathOf(model)) + ", activity " + quoted(activity.ActionName) +
         ": ";
}

void ArcCheck::tell(const std::string& fault) {
  if (told_.insert(fault).second) {
    ++faults_;
    *out_ << "ARCS: " << fault << std::endl;
  }
}

void ArcCheck::conclude() {
  const bool hasArcs = std::ranges::any_of(watched_, [](const Watched& one) { return !one.enabling.empty(); });
  if (hasArcs && log_.seen() == 0) {
    tell("no access was seen: the model was compiled without QUORVA_CHECK_ARCS");
  }
  *out_ << "ARCS: " << watched_.size() << " activities in " << firings_ << " firings, " << faults_ << " faults"
        << std::endl;
}

}  // namespace support
