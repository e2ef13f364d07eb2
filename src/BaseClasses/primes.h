#pragma once

/// The first 256 prime numbers in ascending order, 2 to 1619: the multipliers of the state snapshots' hashes.
extern const int primes[256];
