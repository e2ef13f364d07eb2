"""Workstation cluster: the chain of what is up and what is under repair, solved by numbers."""

import math

from known_values import Run, Value
from markov_chain import MarkovChain

LIVES = (500.0, 500.0, 4000.0, 4000.0, 5000.0)  # left, right, their switches, backbone
REPAIR_TIMES = (0.5, 0.5, 4.0, 4.0, 8.0)
OTHER_SIDE = {0: 1, 1: 0, 2: 3, 3: 2, 4: 4, None: None}


class Cluster:
    """A state: the numbers of the five kinds that are up, and the number of the kind under repair or None. The two sides
    are alike, so that of two states which are each other's mirror image one stands for both."""

    def __init__(self, stations, wanted, factor, inspection):
        self.stations, self.wanted, self.factor, self.inspection = stations, wanted, factor, inspection
        self.full = (stations, stations, 1, 1, 1)
        self.chain = MarkovChain((self.full, None), self.moves)
        self.long_run = self.chain.steady()

    def moves(self, state):
        return [(rate, min(after, mirrored(after), key=str)) for rate, after in self.single_moves(*state)]

    def single_moves(self, up, job):
        for kind in range(5):
            if up[kind]:
                yield self.factor * up[kind] / LIVES[kind], (changed(up, kind, -1), job)
            if job is None and up[kind] < self.full[kind]:
                yield self.inspection, (up, kind)
            if job == kind:
                yield 1.0 / REPAIR_TIMES[kind], (changed(up, kind, +1), None)

    def is_below(self, state):
        left, right, left_switch, right_switch, backbone = state[0]
        return not (
            (left >= self.wanted and left_switch)
            or (right >= self.wanted and right_switch)
            or (left + right >= self.wanted and left_switch and right_switch and backbone)
        )

    def percent(self, state):
        return 100.0 * (state[0][0] + state[0][1]) / (2.0 * self.stations)

    @staticmethod
    def repairs(state):
        """The rate at which repairs end."""
        return 0.0 if state[1] is None else 1.0 / REPAIR_TIMES[state[1]]

    def until(self, time, function):
        """The mean reward in [0, time]: after 200 hours, the long-run one."""
        early = min(time, 200.0)
        return self.chain.mean(self.over_early, function) + (time - early) * self.chain.mean(self.long_run, function)

    def terminating(self, horizon):
        chain, at = self.chain, self.chain.at(20.0)
        self.over_early = chain.over(200.0)
        return {
            0: Value("percent of stations at 20", chain.mean(at, self.percent), chain.variance(at, self.percent)),
            1: Value("share of time below", self.until(horizon, self.is_below) / horizon),
            2: Value("repairs", self.until(horizon, self.repairs)),
        }

    def steady(self):
        return {
            3: Value("below", self.chain.mean(self.long_run, self.is_below)),
            4: Value("repairs an hour", self.chain.mean(self.long_run, self.repairs)),
        }


def changed(up, kind, change):
    return up[:kind] + (up[kind] + change,) + up[kind + 1 :]


def mirrored(state):
    (left, right, left_switch, right_switch, backbone), job = state
    return (right, left, right_switch, left_switch, backbone), OTHER_SIDE[job]


PUBLISHED, HARSH, LARGE = Cluster(2, 2, 1.0, 10.0), Cluster(2, 1, 100.0, 1.0), Cluster(4, 4, 40.0, 1.0)
MISSION = PUBLISHED.terminating(2000.0)

# What is known of the published cluster without this chain.
assert math.isclose(PUBLISHED.steady()[3].mean, 1.0 - 0.9999615335623628, rel_tol=1e-9)
assert math.isclose(MISSION[0].mean, 99.8764355825, rel_tol=1e-11)
assert math.isclose(MISSION[0].variance, 3.09716216, rel_tol=1e-8)
assert math.isclose(MISSION[2].mean, 17.3697782838, rel_tol=1e-9)

RUNS = [
    Run(experiment=0, generator=0, seed=8101, batches=185000, values=MISSION, long=True),
    Run(experiment=1, generator=1, seed=8102, batches=13000, values=HARSH.terminating(200.0)),
    Run(experiment=2, generator=2, seed=8103, batches=17000, values=LARGE.terminating(200.0)),
    Run(experiment=0, generator=2, seed=8104, batches=195000, steady=2000.0, values=PUBLISHED.steady(), long=True),
    Run(experiment=1, generator=0, seed=8105, batches=1500, steady=2000.0, values=HARSH.steady()),
    Run(experiment=2, generator=0, seed=8106, batches=1600, steady=2000.0, values=LARGE.steady()),
]
