"""Kanban line: the chain of where the cards are, solved by numbers; with one card, also the published throughput."""

import math

from known_values import Run, Value
from markov_chain import MarkovChain

FAULT = (0.36, 0.42, 0.39, 0.33)
OK = (0.84, 0.98, 0.91, 0.77)
BACK, IN, SPLIT, MERGE, OUT = 0.3, 1.0, 0.4, 0.5, 0.9


def line(cards, fault_factor, supply):
    """A state gives, for each cell in turn, the parts in work, the faulty ones and the finished ones."""

    def free(state, cell):
        return cards - sum(state[3 * cell : 3 * cell + 3])

    def moved(state, *changes):
        after = list(state)
        for place, change in changes:
            after[place] += change
        return tuple(after)

    def moves(state):
        result = []
        for cell in range(4):
            work, faulty, done = 3 * cell, 3 * cell + 1, 3 * cell + 2
            if state[work]:
                result.append((OK[cell], moved(state, (work, -1), (done, 1))))
                if fault_factor:
                    result.append((fault_factor * FAULT[cell], moved(state, (work, -1), (faulty, 1))))
            if state[faulty]:
                result.append((BACK, moved(state, (faulty, -1), (work, 1))))
        if free(state, 0):
            result.append((supply, moved(state, (0, 1))))
        if state[2] and free(state, 1) and free(state, 2):
            result.append((SPLIT, moved(state, (2, -1), (3, 1), (6, 1))))
        if state[5] and state[8] and free(state, 3):
            result.append((MERGE, moved(state, (5, -1), (8, -1), (9, 1))))
        if state[11]:
            result.append((OUT, moved(state, (11, -1))))
        return result

    return MarkovChain((0,) * 12, moves)


def is_done(state):
    return state[11] > 0


def terminating(chain):
    five, twenty, fifty = chain.at(5.0), chain.at(20.0), chain.over(50.0)
    return {
        0: Value("parts at 5", chain.mean(five, sum), chain.variance(five, sum)),
        1: Value("parts at 20", chain.mean(twenty, sum), chain.variance(twenty, sum)),
        2: Value("parts until 50", chain.mean(fifty, sum) / 50.0),
        3: Value("delivered until 50", OUT * chain.mean(fifty, is_done)),
    }


def steady(chain, supply, variance=None):
    """`variance` is the asymptotic one of whether cell 1 has a card free."""
    long_run = chain.steady()
    parts = [chain.mean(long_run, lambda state: sum(state[3 * cell : 3 * cell + 3])) for cell in range(4)]
    has_free = chain.mean(long_run, lambda state: not any(state[:3]))
    throughput = OUT * chain.mean(long_run, is_done)
    assert math.isclose(throughput, supply * has_free, rel_tol=1e-11)
    values = [Value(f"throughput of {name}", throughput) for name in ("in", "split", "merge", "out")]
    values += [Value("cell 1 has a card free", has_free, variance)]
    values += [Value(f"parts in cell {cell + 1}", parts[cell]) for cell in range(4)]
    return dict(enumerate(values, 4))


ONE, PERFECT, SCARCE = line(1, 1.0, IN), line(1, 0.0, IN), line(1, 1.0, 0.1)
LONG_RUN = steady(ONE, IN, variance=0.11839885)

# What is known of the line with one card without this chain.
assert len(ONE.states) == 160
assert math.isclose(LONG_RUN[4].mean, 0.0925846346333826, rel_tol=1e-11)
assert math.isclose(LONG_RUN[9].mean, 0.907415365367, rel_tol=1e-11)

# Two cards give 4600 states, too many for a table that is worked out whenever it is read: the chain above for the times,
# and a Gauss-Seidel iteration of its balance equations, to changes below 1e-13, for the long run.
TWO_CARDS = {
    0: Value("parts at 5", 3.120061786982919, 1.7022466294252288),
    1: Value("parts at 20", 5.008132152891254, 2.1468189729992715),
    2: Value("parts until 50", 4.622507166209121),
    3: Value("delivered until 50", 6.843971734771338),
}
TWO_CARDS_LONG_RUN = {
    4: Value("throughput of in", 0.1738717061778),
    5: Value("throughput of split", 0.1738717061778),
    6: Value("throughput of merge", 0.1738717061778),
    7: Value("throughput of out", 0.1738717061778),
    8: Value("cell 1 has a card free", 0.1738717061778),
    9: Value("parts in cell 1", 1.810055687599),
    10: Value("parts in cell 2", 1.328513408200),
    11: Value("parts in cell 3", 1.328513408200),
    12: Value("parts in cell 4", 0.764262092338),
}

RUNS = [
    Run(experiment=0, generator=0, seed=7101, batches=10000, values=terminating(ONE)),
    Run(experiment=1, generator=1, seed=7102, batches=10000, values=terminating(PERFECT)),
    Run(experiment=2, generator=2, seed=7103, batches=80000, values=terminating(SCARCE)),
    Run(experiment=3, generator=1, seed=7107, batches=8000, values=TWO_CARDS),
    Run(experiment=0, generator=2, seed=7104, batches=4000, steady=500.0, values=LONG_RUN),
    Run(experiment=1, generator=0, seed=7105, batches=2000, steady=500.0, values=steady(PERFECT, IN)),
    Run(experiment=2, generator=0, seed=7106, batches=4000, steady=500.0, values=steady(SCARCE, 0.1)),
    Run(experiment=3, generator=0, seed=7108, batches=4000, steady=500.0, values=TWO_CARDS_LONG_RUN),
]
