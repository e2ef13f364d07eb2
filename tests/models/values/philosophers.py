"""Dining philosophers: the chain of what each does, up to a rotation of the table, solved by numbers."""

import itertools
import math

from known_values import Run, Value
from markov_chain import MarkovChain

THINKS, WAITS, EATS = range(3)
LEFT, RIGHT = range(2)


class Table:
    """A state: for each philosopher, what he does and which fork he takes first."""

    def __init__(self, number, eat_rate, left_chance):
        self.number, self.eat_rate = number, eat_rate
        self.sides = [(side, chance) for side, chance in ((LEFT, left_chance), (RIGHT, 1.0 - left_chance)) if chance]

    def start(self):
        chances = {}
        for choices in itertools.product(self.sides, repeat=self.number):
            state = self.turned(tuple((THINKS, side) for side, _ in choices))
            chances[state] = chances.get(state, 0.0) + math.prod(chance for _, chance in choices)
        return chances

    def turned(self, state):
        """The same for all rotations."""
        return min(state[n:] + state[:n] for n in range(self.number))

    def fork(self, seat, side):
        return (seat + side) % self.number

    def taken(self, state):
        forks = set()
        for seat, (does, side) in enumerate(state):
            if does in (WAITS, EATS):
                forks.add(self.fork(seat, side))
            if does == EATS:
                forks.add(self.fork(seat, 1 - side))
        return forks

    def moves(self, state):
        result = []
        taken = self.taken(state)
        for seat, (does, side) in enumerate(state):
            before, behind = state[:seat], state[seat + 1 :]
            after = lambda next, first=side: self.turned(before + ((next, first),) + behind)
            if does == THINKS and self.fork(seat, side) not in taken:
                result.append((1.0, after(WAITS)))
            elif does == WAITS and self.fork(seat, 1 - side) not in taken:
                result.append((1.0, after(EATS)))
            elif does == EATS:
                result += [(self.eat_rate * chance, after(THINKS, next)) for next, chance in self.sides]
        return result

    def is_deadlock(self, state):
        return all(does == WAITS for does, _ in state)

    def meals(self, state):
        """The rate at which meals end."""
        return self.eat_rate * sum(does == EATS for does, _ in state)

    def chains(self):
        """Pairs of a probability and the chain that the first choices start with it."""
        return [(chance, MarkovChain(state, self.moves)) for state, chance in self.start().items()]

    def values(self, horizon):
        chains = self.chains()
        mean = lambda of_chain: math.fsum(chance * of_chain(chain) for chance, chain in chains)
        deadlock_by = lambda time: mean(lambda chain: chain.mean(chain.at(time), self.is_deadlock))
        until = lambda time, function: mean(lambda chain: chain.mean(chain.over(time), function))
        p, q = deadlock_by(5.0), deadlock_by(10.0)
        left = math.fsum(chance for side, chance in self.sides if side == LEFT)
        return {
            0: Value("deadlock by 5", p, p * (1.0 - p)),
            1: Value("deadlock by 10", q, q * (1.0 - q)),
            2: Value("time to deadlock", horizon - until(horizon, self.is_deadlock)),
            3: Value("meals", until(horizon, self.meals)),
            4: Value("meals per time unit until 5", until(5.0, self.meals) / 5.0),
            5: Value("left at first", self.number * left, self.number * left * (1.0 - left)),
        }


ALL_LEFT, MIXED, QUICK_EATERS = Table(4, 1.0, 1.0), Table(3, 1.0, 0.75), Table(5, 2.0, 1.0)
FOUR = ALL_LEFT.values(200.0)

# The mean time is known as a fraction, the chance of a deadlock by 1 as a number.
assert math.isclose(FOUR[2].mean, 550.0 / 101.0, rel_tol=1e-11)
((_, chain),) = ALL_LEFT.chains()
assert math.isclose(chain.mean(chain.at(1.0), ALL_LEFT.is_deadlock), 0.0912394078297, rel_tol=1e-11)
FOUR[2] = Value("time to deadlock", 550.0 / 101.0, 23.797556612)

RUNS = [
    Run(experiment=0, generator=0, seed=9101, batches=60000, values=FOUR),
    Run(experiment=1, generator=1, seed=9102, batches=100000, values=MIXED.values(200.0)),
    Run(experiment=2, generator=2, seed=9103, batches=80000, values=QUICK_EATERS.values(200.0)),
]
