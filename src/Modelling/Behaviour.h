#pragma once

namespace modelling {

/// What an activity does, but for its effect: six functions without parameters, each of a type of its own, so that the
/// compiler can see through them.
template <typename Enabling, typename Delay, typename Weight, typename Rank, typename Watch, typename Resample>
struct Behaviour {
  Enabling enabling;  // bool: may the activity fire in the present marking?
  Delay delay;        // a delay class: see DistributionDelay
  Weight weight;      // double: among due activities of equal rank
  Rank rank;          // int: of due activities the highest fires first
  Watch watch;        // bool, asked when a delay has been drawn: watch it for reactivation?
  Resample resample;  // bool, asked of a watched activity after each firing: draw the delay anew?
};

template <typename E, typename D, typename W, typename R, typename P, typename F>
Behaviour(E, D, W, R, P, F) -> Behaviour<E, D, W, R, P, F>;

}  // namespace modelling
