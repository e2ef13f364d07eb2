"""Machines and their crew: a birth and death process, of the number of broken machines."""

import math

from known_values import Run, Value
from markov_chain import MarkovChain

IDLE_COST, REPAIR_COST = 10.0, 5.0


class Plant:
    """Broken machines n: n + 1 with rate (machines - n) fail, n - 1 with rate min(n, repairers) repair."""

    def __init__(self, machines, repairers, fail, repair):
        self.machines, self.repairers, self.fail, self.repair = machines, repairers, fail, repair
        self.chain = MarkovChain(0, self.moves)

    def busy(self, broken):
        return min(broken, self.repairers)

    def moves(self, broken):
        moves = [((self.machines - broken) * self.fail, broken + 1)] if broken < self.machines else []
        return moves + ([(self.busy(broken) * self.repair, broken - 1)] if broken else [])

    def terminating(self):
        chain, at, ten = self.chain, self.chain.at, self.chain.over(10.0)
        broken = chain.mean(ten, float)
        repairs = self.repair * chain.mean(ten, self.busy)
        found = math.fsum(chain.mean(at(float(time)), float) for time in range(1, 11))
        running = lambda n: self.machines - n
        return {
            0: Value("running at 1", chain.mean(at(1.0), running), chain.variance(at(1.0), running)),
            1: Value("running at 5", chain.mean(at(5.0), running), chain.variance(at(5.0), running)),
            2: Value("found broken at 5", chain.mean(at(5.0), float), chain.variance(at(5.0), float)),
            3: Value("all run in [0,10]", chain.mean(ten, lambda n: n == 0) / 10.0),
            4: Value("found broken in [0,10]", found / 10.0),
            5: Value("repairs in [0,10]", repairs),
            6: Value("cost in [0,10]", IDLE_COST * broken + REPAIR_COST * repairs),
        }

    def steady(self):
        # The ratio of the weights of n + 1 and n is that of the rates up and down between them.
        weights = [1.0]
        for n in range(self.machines):
            weights.append(weights[n] * (self.machines - n) * self.fail / (self.busy(n + 1) * self.repair))
        mean = lambda function: math.fsum(w * function(n) for n, w in enumerate(weights)) / math.fsum(weights)
        throughput = self.repair * mean(self.busy)
        return {
            7: Value("running", mean(lambda n: self.machines - n)),
            8: Value("all run", mean(lambda n: n == 0)),
            9: Value("repairs for a unit of time", throughput),
            10: Value("repairs in a batch", throughput * 100.0),
            11: Value("found broken", mean(float)),
        }


def independent(fail, repair, time):
    """Whether one machine with a repairer of its own runs."""
    return (repair + fail * math.exp(-(fail + repair) * time)) / (fail + repair)


ENOUGH, TWO, ONE = Plant(4, 4, 0.2, 1.0), Plant(10, 2, 0.1, 1.0), Plant(5, 1, 0.1, 0.5)

# With a repairer for each, the machines are independent of each other, so that there is a closed form.
assert math.isclose(ENOUGH.terminating()[1].mean, 4.0 * independent(0.2, 1.0, 5.0), rel_tol=1e-11)
assert math.isclose(ENOUGH.steady()[8].mean, (1.0 / 1.2) ** 4, rel_tol=1e-13)

RUNS = [
    Run(experiment=0, generator=0, seed=3101, batches=55000, values=ENOUGH.terminating()),
    Run(experiment=1, generator=1, seed=3102, batches=45000, values=TWO.terminating()),
    Run(experiment=2, generator=2, seed=3103, batches=40000, values=ONE.terminating()),
    Run(experiment=0, generator=0, seed=3104, batches=2000, steady=100.0, values=ENOUGH.steady()),
    Run(experiment=1, generator=0, seed=3105, batches=4000, steady=100.0, values=TWO.steady()),
    Run(experiment=2, generator=2, seed=3106, batches=6500, steady=100.0, values=ONE.steady()),
]
