"""Two queues with blocking. The values for room for five are those of Hermanns, Meyer-Kayser and Siegle's network with
c = 5, solved by iteration and uniformisation; the others come from the chain below."""

import math

from known_values import Run, Value
from markov_chain import MarkovChain


class Tandem:
    """States (first, phase, second, hit). Nothing happens any more once hit is 1."""

    def __init__(self, room, arrive, phase, again, serve, stop):
        self.room, self.arrive, self.phase, self.again, self.serve, self.stop = room, arrive, phase, again, serve, stop
        self.chain = MarkovChain((0, 0, 0, 0), self.moves)

    def after(self, first, phase, second):
        full = first == self.room
        hit = (self.stop == 1 and full) or (self.stop == 2 and full and second == self.room and phase == 1)
        return (first, phase, second, int(hit))

    def moves(self, state):
        first, phase, second, hit = state
        if hit:
            return []
        moves = []
        if first < self.room:
            moves.append((self.arrive, self.after(first + 1, phase, second)))
        if first and phase == 0:
            moves.append((self.phase * self.again, self.after(first, 1, second)))
        if first and second < self.room:
            rate = self.phase if phase else self.phase * (1.0 - self.again)
            moves.append((rate, self.after(first - 1, 0, second + 1)))
        if second:
            moves.append((self.serve, self.after(first, phase, second - 1)))
        return moves

    def terminating(self, time):
        at, over = self.chain.at(time), self.chain.over(time)
        return {
            0: Value("customers", self.chain.mean(at, customers), self.chain.variance(at, customers)),
            1: Value("stopped", self.chain.mean(at, stopped)),
            2: Value("time going on", self.chain.mean(over, lambda state: 1 - state[3])),
        }

    def steady(self):
        weights = self.chain.steady()
        served = self.serve * self.chain.mean(weights, lambda state: state[2] > 0)
        second = lambda state: state[0] > 0 and state[1] == 1 and state[2] < self.room
        return {
            3: Value("customers in the long run", self.chain.mean(weights, customers)),
            4: Value("served for a unit of time", served),
            5: Value("two phases for a unit of time", self.phase * self.chain.mean(weights, second)),
        }


def customers(state):
    return state[0] + state[2]


def stopped(state):
    return state[3]


FIVE, FIRST_FULL, ALL_FULL = (Tandem(5, 20.0, 2.0, 0.1, 4.0, stop) for stop in (0, 1, 2))
THREE = Tandem(3, 1.5, 2.0, 0.4, 2.0, 0)

# The chain agrees with the values that are known of the network with room for five.
PUBLISHED = Value("customers in the long run", 5.679249959967679, 1.7955181)
assert math.isclose(FIVE.steady()[3].mean, PUBLISHED.mean, rel_tol=1e-13)
assert math.isclose(FIVE.steady()[4].mean, 1.79925468651, rel_tol=1e-11)
assert math.isclose(FIVE.terminating(0.2)[0].mean, 3.576667592270, rel_tol=1e-12)
assert math.isclose(FIVE.terminating(0.2)[0].variance, 2.140797, rel_tol=1e-6)
assert math.isclose(FIRST_FULL.terminating(0.2)[1].mean, 0.335260561862, rel_tol=1e-11)

RUNS = [
    Run(experiment=0, generator=0, seed=3301, batches=20000, values=FIVE.terminating(0.2)),
    Run(experiment=1, generator=1, seed=3302, batches=78000, values=FIRST_FULL.terminating(0.2)),
    # By the same iteration as the others, until time 1000.
    Run(experiment=2, generator=2, seed=3303, batches=25000, long=True, values={
        0: Value("customers", 9.323790942007, 2.641666816301),
        1: Value("stopped", 0.843790696255),
        2: Value("time going on", 455.3796221529),
    }),
    Run(experiment=3, generator=0, seed=3304, batches=32000, values=THREE.terminating(1.0)),
    Run(experiment=0, generator=2, seed=3305, batches=8000, steady=50.0, values=FIVE.steady() | {3: PUBLISHED}),
    Run(experiment=3, generator=0, seed=3306, batches=4000, steady=50.0, values=THREE.steady()),
]
