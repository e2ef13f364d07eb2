"""A server that goes round, as in Ibe and Trivedi's model: the values for three stations are known, the others come from
the chain below."""

import math

from known_values import Run, Value
from markov_chain import MarkovChain


class Polling:
    """States (position, serving, customer at each station); positions from 0."""

    def __init__(self, stations, arrive, walk, serve):
        self.stations, self.arrive, self.walk, self.serve = stations, arrive, walk, serve
        self.chain = MarkovChain((0, 0) + (0,) * stations, self.moves)

    def moves(self, state):
        position, serving, customers = state[0], state[1], state[2:]
        put = lambda station, number: customers[:station] + (number,) + customers[station + 1 :]
        behind = (position + 1) % self.stations
        moves = [
            (self.arrive, (position, serving) + put(station, 1))
            for station, number in enumerate(customers)
            if number == 0
        ]
        if serving:
            return moves + [(self.serve, (behind, 0) + put(position, 0))]
        return moves + [(self.walk, (position, 1) + customers if customers[position] else (behind, 0) + customers)]

    def terminating(self, time):
        over = self.chain.over(time)
        served = lambda state: state[:2] == (0, 1)
        return {
            0: Value("time waiting", self.chain.mean(over, lambda state: waits(state, 0))),
            1: Value("served", self.serve * self.chain.mean(over, served)),
        }

    def steady(self):
        """All stations are alike."""
        weights = self.chain.steady()
        serving = self.chain.mean(weights, lambda state: state[1])
        return {
            2: Value("waiting", self.chain.mean(weights, lambda state: waits(state, 0))),
            3: Value("served for a unit of time", self.serve * serving),
            4: Value("serving", serving),
        }


def waits(state, station):
    return state[2 + station] == 1 and state[:2] != (station, 1)


THREE, SLOW, FIVE = Polling(3, 1.0 / 3.0, 200.0, 1.0), Polling(3, 1.0 / 3.0, 5.0, 1.0), Polling(5, 0.2, 10.0, 1.0)

# The chain agrees with what is known of three stations.
KNOWN = {
    0: Value("time waiting", 1.84887137055, 3.03300290200),
    1: Value("served", 3.27671064504, 1.92578782826),
    2: Value("waiting", 0.1308020365834841),
    3: Value("served for a unit of time", 3.0 * 0.217299490854),
}
for number, value in (THREE.terminating(16.0) | THREE.steady()).items():
    assert number == 4 or math.isclose(value.mean, KNOWN[number].mean, rel_tol=1e-11), value

RUNS = [
    Run(experiment=0, generator=0, seed=3201, batches=36000, long=True, values={n: KNOWN[n] for n in (0, 1)}),
    Run(experiment=1, generator=1, seed=3202, batches=40000, values=SLOW.terminating(16.0)),
    Run(experiment=2, generator=2, seed=3203, batches=60000, values=FIVE.terminating(10.0)),
    Run(experiment=0, generator=2, seed=3204, batches=1200, steady=500.0, long=True, values=THREE.steady()),
    Run(experiment=1, generator=0, seed=3205, batches=2000, steady=500.0, values=SLOW.steady()),
    Run(experiment=2, generator=2, seed=3206, batches=2000, steady=500.0, values=FIVE.steady()),
]
