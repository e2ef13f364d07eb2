"""M/M/1/K. In the long run the numbers have a geometric law cut off at K; asymptotic variances, variances of counts and
those of averages over [0,10] are from the Markov chain, solved with its accumulated rewards."""

import math

from known_values import Run, Value
from markov_chain import MarkovChain


class Queue:
    """Customers n, one served at a time with rate 1."""

    def __init__(self, arrive, room):
        self.arrive, self.room = arrive, room
        self.chain = MarkovChain(0, self.moves)

    def moves(self, number):
        up = [(self.arrive, number + 1)] if number < self.room else []
        return up + ([(1.0, number - 1)] if number else [])

    def terminating(self, average_variance, served_variance):
        mean, at, over = self.chain.mean, self.chain.at(10.0), self.chain.over(10.0)
        return {
            0: Value("customers at 10", mean(at, float), self.chain.variance(at, float)),
            1: Value("empty at 10", mean(at, lambda number: number == 0)),
            2: Value("customers in [0,10]", mean(over, float) / 10.0, average_variance),
            3: Value("served in [0,10]", mean(over, lambda number: number > 0), served_variance),
        }

    def steady(self, number_variance, full_variance):
        weights = [self.arrive**number for number in range(self.room + 1)]
        total = math.fsum(weights)
        serving = 1.0 - weights[0] / total
        mean = math.fsum(number * weight for number, weight in enumerate(weights)) / total
        return {
            4: Value("customers in the long run", mean, number_variance),
            5: Value("full", weights[-1] / total, full_variance),
            6: Value("served for a unit of time", serving),
            7: Value("service rate in use", serving),
        }


TEN, TWENTY, FIVE = Queue(0.8, 10), Queue(0.9, 20), Queue(1.0, 5)

RUNS = [
    Run(experiment=0, generator=0, seed=3601, batches=100000, values=TEN.terminating(1.15271181766, 4.92286811149)),
    Run(experiment=1, generator=1, seed=3602, batches=135000, values=TWENTY.terminating(1.52921921320, 5.26153044695)),
    Run(experiment=2, generator=2, seed=3603, batches=172000, values=FIVE.terminating(0.936478091441, 5.44110031527)),
    Run(experiment=0, generator=2, seed=3604, batches=1800, steady=8000.0, values=TEN.steady(174.54323, 0.15176959)),
    Run(experiment=1, generator=0, seed=3605, batches=1900, steady=26000.0, long=True,
        values=TWENTY.steady(2368.5897, 0.16806874)),
    Run(experiment=2, generator=0, seed=3606, batches=1600, steady=800.0, values=FIVE.steady(21.583333, 0.50925926)),
]

# What is known of these queues.
KNOWN = {
    0: (2.02211792552, 0.286424008515, 1.35027307143, 5.96971718973, 2.96631426648, 0.0234928575799, 0.781205713936),
    1: (2.53069271825, 0.227266132843, 1.62600235962, 6.46930485249, 6.41988797906, 0.0136513863542, 0.887713752281),
    2: (2.34075885612, 0.188012284898, 1.68442960385, 6.88518747748, 2.5, 0.166666666667, 0.833333333333),
}
for run in RUNS:
    for number, value in run.values.items():
        assert math.isclose(value.mean, KNOWN[run.experiment][min(number, 6)], rel_tol=1e-11), value
