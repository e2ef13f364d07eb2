"""Multiprocessor: the chain of what is up, with like computers counted together, solved by numbers.

A site fails when it has too few computers or no bus left, and neither is repaired. They are independent of each other, so
that its reliability is also a product, and a duplex has closed forms.
"""

import math

from known_values import Run, Value
from markov_chain import MarkovChain

SPEED = 1.5
DOWN = (0, 0)


class Site:
    """A state: for each computer its processors and memories that are up or DOWN, in order; the buses that are up."""

    def __init__(self, computers, needed, processors, memories, needed_memories, buses, rates, coverage, repair, mission):
        self.needed, self.needed_memories, self.mission = needed, needed_memories, mission
        self.full = (processors, memories)
        self.processor_rate, self.memory_rate, self.bus_rate = rates
        self.coverage, self.repair = coverage, repair
        self.chain = MarkovChain(((self.full,) * computers, buses), self.moves)

    def computer_moves(self, computer):
        """Pairs of rate and next state of one computer."""
        if computer == DOWN:
            return []
        processors, memories = computer
        failures = self.processor_rate * processors, self.memory_rate * memories
        result = [((1.0 - self.coverage) * sum(failures), DOWN)]
        result.append((self.coverage * failures[0], (processors - 1, memories) if processors > 1 else DOWN))
        spare = memories > self.needed_memories
        result.append((self.coverage * failures[1], (processors, memories - 1) if spare else DOWN))
        result.append((self.repair * (self.full[0] - processors), (processors + 1, memories)))
        result.append((self.repair * (self.full[1] - memories), (processors, memories + 1)))
        return [(rate, after) for rate, after in result if rate > 0.0]

    def moves(self, state):
        computers, buses = state
        result = [(self.bus_rate * buses, (computers, buses - 1))] if buses and self.bus_rate else []
        for n, computer in enumerate(computers):
            others = computers[:n] + computers[n + 1 :]
            result += [
                (rate, (tuple(sorted((*others, after))), buses)) for rate, after in self.computer_moves(computer)
            ]
        return result

    def has_failed(self, state):
        computers, buses = state
        return buses == 0 or sum(computer != DOWN for computer in computers) < self.needed

    @staticmethod
    def processors(state):
        return sum(processors for processors, _ in state[0])

    def power(self, state):
        return SPEED * self.processors(state)

    def power_lost(self, state):
        """The rate at which power comes to be what is left when the site fails."""
        if self.has_failed(state):
            return 0.0
        return math.fsum(rate * self.power(after) for rate, after in self.moves(state) if self.has_failed(after))

    def reliability(self, time):
        """The same as a product: needed of the computers, each by itself, and one of the buses."""
        computers, buses = self.chain.states[0]
        single = MarkovChain(self.full, self.computer_moves)
        up = 1.0 - single.mean(single.at(time), lambda computer: computer == DOWN)
        enough = math.fsum(
            math.comb(len(computers), n) * up**n * (1.0 - up) ** (len(computers) - n)
            for n in range(self.needed, len(computers) + 1)
        )
        return enough * (1.0 - (1.0 - math.exp(-self.bus_rate * time)) ** buses)

    def values(self, service=None):
        """`service` is the mean time of service where it does not end with the mission."""
        chain, mission = self.chain, self.mission
        failed, over = chain.mean(chain.at(mission), self.has_failed), chain.over(mission)
        assert math.isclose(failed, 1.0 - self.reliability(mission), rel_tol=1e-10)
        if service is None:
            service = mission - chain.mean(over, self.has_failed)
        lost = self.processor_rate * chain.mean(over, self.processors)
        return {
            0: Value("site failed", failed, failed * (1.0 - failed)),
            1: Value("hours of service", service),
            2: Value("mean power", chain.mean(over, self.power) / mission),
            3: Value("processors lost", self.coverage * lost),
            4: Value("crashes an hour", (1.0 - self.coverage) * lost / mission),
            5: Value("power left at failure", chain.mean(over, self.power_lost)),
        }


def duplex(failure, repair, coverage, mission):
    """One computer of two processors, and nothing else that fails."""
    return Site(1, 1, 2, 1, 1, 1, (failure, 0.0, 0.0), coverage, repair, mission)


def duplex_life(failure, repair, coverage):
    """Mean time to failure of a duplex."""
    return (failure * (1.0 + 2.0 * coverage) + repair) / (2.0 * failure * (failure + repair * (1.0 - coverage)))


QUICK = duplex(0.01, 1.0, 0.9, 1000.0)
SLOW = duplex(0.001, 0.1, 0.95, 8000.0)
SPARES = Site(3, 2, 3, 3, 2, 2, (0.001, 0.0005, 0.0005), 0.9, 0.0, 1000.0)
REPAIRED = Site(3, 2, 3, 3, 2, 2, (0.001, 0.0005, 0.0002), 0.9, 0.02, 1500.0)

# What is known of the two duplexes without the chain, and of the second one at another time.
LIFE = duplex_life(0.01, 1.0, 0.9)
assert math.isclose(LIFE, 467.272727273, rel_tol=1e-11)
assert math.isclose(duplex_life(0.001, 0.1, 0.95), 8575.0, rel_tol=1e-12)
assert math.isclose(QUICK.reliability(1000.0), 1.0 - 0.882372595665, rel_tol=1e-10)
assert math.isclose(SLOW.reliability(1000.0), 1.0 - 0.109947702332, rel_tol=1e-10)

RUNS = [
    Run(experiment=0, generator=0, seed=6101, batches=45000, values=QUICK.values(service=LIFE)),
    Run(experiment=1, generator=1, seed=6102, batches=45000, values=SLOW.values()),
    Run(experiment=2, generator=2, seed=6103, batches=60000, values=SPARES.values()),
    Run(experiment=3, generator=0, seed=6104, batches=60000, values=REPAIRED.values()),
]
