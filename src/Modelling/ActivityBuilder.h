#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "BaseClasses/PostselectGroup.h"
#include "Modelling/Arcs.h"
#include "Modelling/AtomicModel.h"
#include "Modelling/Behaviour.h"
#include "Modelling/Constant.h"
#include "Modelling/DistributionDelay.h"
#include "Modelling/FunctionActivity.h"
#include "Modelling/FunctionDelay.h"
#include "Modelling/PhasesDelay.h"

namespace modelling {

/// What an activity has for a delay until it is told one.
struct NoDelay {};

/// An activity in the making. AtomicModel::activity starts it, each word below adds to it, and one of the last three
/// words makes it:
///
///   activity("serve")
///       .enabledBy({q}, [this] { return q.Mark() > 0; })
///       .exponential(serviceRate)
///       .fires({q}, [this] { --q.Mark(); });
///
/// A parameter of a distribution, a weight or a rank is a number, a global variable, or a function without parameters
/// that is called in the marking of the moment. Functions may be lambdas that capture `this`, but nothing that ends with
/// the model's constructor.
template <typename Parts>
class ActivityBuilder {
 public:
  ActivityBuilder(AtomicModel& model, std::string name, Arcs enabling, Parts parts)
      : model_(&model), name_(std::move(name)), enabling_(std::move(enabling)), parts_(std::move(parts)) {}

  /// The activity may fire while `predicate` holds; without this word, always. `arcs` names every variable that the
  /// predicate reads: it is asked again only when one of these was changed.
  template <typename Predicate>
  auto enabledBy(const Arcs& arcs, Predicate predicate) const {
    auto& [enabling, delay, weight, rank, watch, resample] = parts_;
    return remade(arcs, Behaviour{std::move(predicate), delay, weight, rank, watch, resample});
  }

  // The delay, from enabling to firing.

  /// Mean 1 / rate. With a rate that depends on the marking also say `reactivating`.
  template <typename Rate>
  auto exponential(Rate&& rate) const {
    return distributed<Exponential, &Distributions::Exponential>(std::forward<Rate>(rate));
  }
  template <typename Value>
  auto deterministic(Value&& value) const {
    return distributed<Deterministic, &Distributions::Deterministic>(std::forward<Value>(value));
  }
  template <typename Lower, typename Upper>
  auto uniform(Lower&& lower, Upper&& upper) const {
    return distributed<Uniform, &Distributions::Uniform>(std::forward<Lower>(lower), std::forward<Upper>(upper));
  }
  /// On [lower, upper] with that mode.
  template <typename Lower, typename Upper, typename Mode>
  auto triangular(Lower&& lower, Upper&& upper, Mode&& mode) const {
    return distributed<Triangular, &Distributions::Triangular>(std::forward<Lower>(lower), std::forward<Upper>(upper),
                                                               std::forward<Mode>(mode));
  }
  /// `mean` is that of the whole.
  template <typename Stages, typename Mean>
  auto erlang(Stages&& stages, Mean&& mean) const {
    return distributed<Erlang, &Distributions::Erlang>(std::forward<Stages>(stages), std::forward<Mean>(mean));
  }
  template <typename Shape, typename Scale>
  auto weibull(Shape&& shape, Scale&& scale) const {
    return distributed<Weibull, &Distributions::Weibull>(std::forward<Shape>(shape), std::forward<Scale>(scale));
  }
  /// What is left of a Weibull life that has lasted `age`.
  template <typename Shape, typename Scale, typename Age>
  auto conditionalWeibull(Shape&& shape, Scale&& scale, Age&& age) const {
    return distributed<ConditionalWeibull, &Distributions::ConditionalWeibull>(
        std::forward<Shape>(shape), std::forward<Scale>(scale), std::forward<Age>(age));
  }
  /// Cut off below 0.
  template <typename Mean, typename Variance>
  auto normal(Mean&& mean, Variance&& variance) const {
    return distributed<Normal, &Distributions::Normal>(std::forward<Mean>(mean), std::forward<Variance>(variance));
  }
  /// Its logarithm has that mean and that variance.
  template <typename Mean, typename Variance>
  auto lognormal(Mean&& mean, Variance&& variance) const {
    return distributed<Lognormal, &Distributions::Lognormal>(std::forward<Mean>(mean),
                                                             std::forward<Variance>(variance));
  }
  template <typename Shape, typename Scale>
  auto gamma(Shape&& shape, Scale&& scale) const {
    return distributed<Gamma, &Distributions::Gamma>(std::forward<Shape>(shape), std::forward<Scale>(scale));
  }
  template <typename First, typename Second>
  auto beta(First&& first, Second&& second) const {
    return distributed<Beta, &Distributions::Beta>(std::forward<First>(first), std::forward<Second>(second));
  }
  template <typename Least, typename Shape>
  auto pareto(Least&& least, Shape&& shape) const {
    return distributed<Pareto, &Distributions::Pareto>(std::forward<Least>(least), std::forward<Shape>(shape));
  }
  /// Failures before the first success.
  template <typename Success>
  auto geometric(Success&& success) const {
    return distributed<Geometric, &Distributions::Geometric>(std::forward<Success>(success));
  }
  template <typename Trials, typename Success>
  auto binomial(Trials&& trials, Success&& success) const {
    return distributed<Binomial, &Distributions::Binomial>(std::forward<Trials>(trials),
                                                           std::forward<Success>(success));
  }
  /// Failures before the success of that number.
  template <typename Successes, typename Success>
  auto negativeBinomial(Successes&& successes, Success&& success) const {
    return distributed<NegativeBinomial, &Distributions::NegativeBinomial>(std::forward<Successes>(successes),
                                                                           std::forward<Success>(success));
  }
  /// Rate and weight of each phase in turn.
  auto hyperExponential(std::vector<double> ratesAndWeights) const {
    return delayed(PhasesDelay<HyperExponential, &Distributions::HyperExponential, 2>(std::move(ratesAndWeights)));
  }
  /// The rate of each phase in turn.
  auto hypoExponential(std::vector<double> rates) const {
    return delayed(PhasesDelay<HypoExponential, &Distributions::HypoExponential, 1>(std::move(rates)));
  }
  /// The activity fires at the time at which it becomes enabled. Rank and weight order those of one time.
  auto instantaneous() const { return delayedBy<Instantaneous>(Constant<double>{0.0}); }
  /// Whatever `sample` gives: a function that draws through TheDistribution. `kKind` is what a trace calls it.
  template <Distribution kKind = Proprietary, typename Sample>
  auto delayedBy(Sample sample) const {
    return delayed(FunctionDelay<kKind, Sample>(std::move(sample)));
  }

  // The order among activities of one time, and of the members of a group.

  /// Of those that are due at one time the highest rank fires first; 1 if nothing is said.
  template <typename Value>
  auto rank(Value&& value) const {
    auto& [enabling, delay, weight, rank, watch, resample] = parts_;
    return remade(enabling_,
                  Behaviour{enabling, delay, weight, asFunction<int>(std::forward<Value>(value)), watch, resample});
  }
  /// Among those of one rank the chance is in proportion to the weight; 1 if nothing is said.
  template <typename Value>
  auto weight(Value&& value) const {
    auto& [enabling, delay, weight, rank, watch, resample] = parts_;
    return remade(enabling_,
                  Behaviour{enabling, delay, asFunction<double>(std::forward<Value>(value)), rank, watch, resample});
  }

  /// A delay already drawn is drawn anew after every firing that leaves the activity enabled: what an exponential
  /// activity needs whose rate depends on the marking.
  auto reactivating() const { return reactivating(Constant<bool>{true}, Constant<bool>{true}); }
  /// The same under conditions: `watch` is asked when a delay has been drawn, `resample` after each firing while the
  /// activity is watched.
  template <typename Watch, typename Resample>
  auto reactivating(Watch watch, Resample resample) const {
    auto& [enabling, delay, weight, rank, oldWatch, oldResample] = parts_;
    return remade(enabling_, Behaviour{enabling, delay, weight, rank, std::move(watch), std::move(resample)});
  }

  // The last word.

  /// Makes the activity. Its firing calls `effect`, which may change the variables that `arcs` names and no others.
  template <typename Effect>
  Activity& fires(const Arcs& arcs, Effect effect) const {
    return model_->add(make(name_, parts_, std::move(effect)), enabling_, arcs);
  }

  /// Makes an activity that is not scheduled by itself: give it to AtomicModel::group.
  template <typename Effect>
  Activity& firesInGroup(const Arcs& arcs, Effect effect) const {
    return model_->addMember(make(name_, parts_, std::move(effect)), enabling_, arcs);
  }

  /// Makes a case of the activity, and with the first case the PostselectGroup of the activity's name: when its delay is
  /// over, one of the cases fires, with chances in proportion to their weights. Case n is an activity named
  /// "<name>_case<n>", from 1, under which impulses find it. Call it once for each case, one behind the other.
  template <typename Weight, typename Effect>
  ActivityBuilder& withCase(Weight&& caseWeight, const Arcs& arcs, Effect effect) {
    if (group_ == nullptr) {
      group_ = &model_->template group<PostselectGroup>(name_.c_str(), {});
    }
    auto& [enabling, delay, weight, rank, watch, resample] = parts_;
    const Behaviour parts{enabling, delay, asFunction<double>(std::forward<Weight>(caseWeight)), rank, watch, resample};
    const std::string caseName = name_ + "_case" + std::to_string(group_->getNumMembers() + 1);
    model_->enter(*group_, model_->addMember(make(caseName, parts, std::move(effect)), enabling_, arcs));
    return *this;
  }

 private:
  template <typename NewParts>
  auto remade(const Arcs& enabling, NewParts parts) const {
    return ActivityBuilder<NewParts>(*model_, name_, enabling, std::move(parts));
  }

  template <typename Delay>
  auto delayed(Delay newDelay) const {
    auto& [enabling, delay, weight, rank, watch, resample] = parts_;
    return remade(enabling_, Behaviour{enabling, std::move(newDelay), weight, rank, watch, resample});
  }

  template <Distribution kKind, auto kDraw, typename... Values>
  auto distributed(Values&&... values) const {
    return delayed(DistributionDelay<kKind, kDraw, decltype(asFunction<double>(std::forward<Values>(values)))...>(
        asFunction<double>(std::forward<Values>(values))...));
  }

  template <typename MadeParts, typename Effect>
  static std::unique_ptr<Activity> make(const std::string& name, const MadeParts& parts, Effect effect) {
    static_assert(!std::is_same_v<decltype(parts.delay), NoDelay>,
                  "an activity needs a delay: say exponential(rate), instantaneous() or another distribution");
    return std::make_unique<FunctionActivity<MadeParts, Effect>>(name.c_str(), parts, std::move(effect));
  }

  AtomicModel* model_;  // borrowed: the model under construction
  std::string name_;
  Arcs enabling_;
  Parts parts_;
  PostselectGroup* group_ = nullptr;  // borrowed from the model: the group of the cases, once there is one
};

/// What AtomicModel::activity starts from: always enabled, without a delay, of weight 1 and rank 1.
using FirstParts = Behaviour<Constant<bool>, NoDelay, Constant<double>, Constant<int>, Constant<bool>, Constant<bool>>;

inline ActivityBuilder<FirstParts> AtomicModel::activity(const std::string& name) {
  return {*this, name, {}, {{true}, {}, {1.0}, {1}, {false}, {false}}};
}

}  // namespace modelling
