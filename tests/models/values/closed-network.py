"""A ring of single exponential servers: a product form in the long run (W. J. Gordon, G. F. Newell, Closed queuing systems
with exponential servers, Operations Research 15(2), 1967), and the chain itself for short times on small rings."""

import math

from known_values import Run, Value
from markov_chain import MarkovChain


class Ring:
    def __init__(self, stations, customers, rate, first_rate, crowd):
        self.stations, self.customers, self.crowd = stations, customers, crowd
        self.rates = [first_rate] + [rate] * (stations - 1)
        self.sums = self.normalising(self.rates)

    def normalising(self, rates):
        """The normalising constants for 0, 1 and more customers.

        Source: J. P. Buzen, Computational algorithms for closed queueing networks with exponential servers,
        Communications of the ACM 16(9), 1973
        """
        sums = [1.0] + [0.0] * self.customers
        for rate in rates:
            for number in range(1, self.customers + 1):
                sums[number] += sums[number - 1] / rate
        return sums

    def at_least(self, station, number):
        """Probability of at least that many customers at a station."""
        return self.rates[station] ** -number * self.sums[self.customers - number] / self.sums[self.customers]

    def steady(self):
        stations = range(self.stations)
        return {
            2: Value("served by a station for a unit of time", self.sums[-2] / self.sums[-1]),
            3: Value("stations at work", math.fsum(self.at_least(station, 1) for station in stations)),
            4: Value("crowded stations", math.fsum(self.at_least(station, self.crowd) for station in stations)),
            5: Value("first station at work", self.at_least(0, 1)),
        }

    def terminating(self, time):
        start = tuple((self.customers + self.stations - 1 - station) // self.stations for station in range(self.stations))
        chain = MarkovChain(start, self.moves)
        at, over = chain.at(time), chain.over(time)
        first = lambda state: state[0]
        return {
            0: Value("at the first station", chain.mean(at, first), chain.variance(at, first)),
            1: Value("at the first station on the average", chain.mean(over, first) / time),
        }

    def moves(self, state):
        for station, number in enumerate(state):
            if number:
                after = list(state)
                after[station] -= 1
                after[(station + 1) % self.stations] += 1
                yield self.rates[station], tuple(after)


LARGE, SMALL, NECK = Ring(50, 200, 1.0, 1.0, 10), Ring(3, 5, 1.0, 1.0, 3), Ring(5, 10, 1.0, 0.6, 4)


def among(customers, stations):
    """The ways to put that many customers on so many stations."""
    return math.comb(customers + stations - 1, stations - 1)


# Where all stations are alike, each way to spread the customers is as likely as any other.
assert math.isclose(LARGE.steady()[2].mean, 200.0 / 249.0, rel_tol=1e-12)
assert math.isclose(LARGE.steady()[4].mean, 50.0 * among(190, 50) / among(200, 50), rel_tol=1e-12)

# Spread evenly at first, and thus alike at any time, each of the stations has four on the average.
EVEN = {0: Value("at the first station", 4.0), 1: Value("at the first station on the average", 4.0)}

RUNS = [
    Run(experiment=0, generator=0, seed=3401, batches=20000, values=EVEN),
    Run(experiment=1, generator=1, seed=3402, batches=30000, values=SMALL.terminating(2.0)),
    Run(experiment=2, generator=2, seed=3403, batches=20000, values=NECK.terminating(2.0)),
    Run(experiment=0, generator=2, seed=3404, batches=1000, steady=500.0, values=LARGE.steady()),
    Run(experiment=1, generator=0, seed=3405, batches=1000, steady=500.0, values=SMALL.steady()),
    Run(experiment=2, generator=2, seed=3406, batches=1000, steady=500.0, values=NECK.steady()),
]
