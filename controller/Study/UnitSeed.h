#pragma once

#include <cstdint>
#include <string_view>

namespace controller {

/// Units of one experiment, and seeds: both from 1 to this number, 2^30 - 3, or from 0 to one less. The lagged Fibonacci
/// generator has a stream of its own for each seed up to there, and none with its top bit set.
inline constexpr std::int64_t kGreatestSeed = (std::int64_t{1} << 30) - 3;

/// The seed of one unit, from 1 to kGreatestSeed.
/// Order      seeds of units that follow each other have nothing in common that a generator could carry on
/// Different  within an experiment no two units have the same seed: a hash that may collide would, by the birthday paradox,
///            repeat a unit's observations with a chance of one in two before the forty-thousandth
/// How        the unit's number goes through a permutation of 30 bits, keyed by the study's seed and the experiment's name:
///            key = mix(mix(studySeed) xor fnv(experiment)); eight rounds of a Feistel network over halves of 15 bits, with
///            the round function f(i, x) = mix(key + (i + 1) * 0x9e3779b97f4a7c15 + x) mod 2^15 for i = 0 to 7; what falls
///            outside 1 to kGreatestSeed goes through again. It begins with unit + 1, the high half first.
/// Requires   0 <= unit < kGreatestSeed
/// Source     mix: the finaliser of SplitMix64, G. L. Steele, D. Lea and C. H. Flood, Fast splittable pseudorandom number
///            generators, 2014; fnv: FNV-1a of 64 bits, G. Fowler, L. C. Noll and K.-P. Vo; the network: M. Luby and
///            C. Rackoff, How to construct pseudorandom permutations from pseudorandom functions, 1988; going through again:
///            J. Black and P. Rogaway, Ciphers with arbitrary finite domains, 2002
[[nodiscard]] std::uint32_t unitSeed(std::uint64_t studySeed, std::string_view experiment, std::int64_t unit);

/// The hash FNV-1a of 64 bits.
[[nodiscard]] std::uint64_t fnvHash(std::string_view bytes);

}  // namespace controller
