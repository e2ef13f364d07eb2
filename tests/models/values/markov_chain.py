"""Small Markov chains solved by numbers: what a table of known values is worked out from where there is no closed form.

A chain is given by its first state and by a function that gives the moves out of a state. Nothing of the simulator comes
in: the states are plain tuples, and the moves are written down again from the description of the model.
"""

import math


class MarkovChain:
    """The states that can be reached from `start`; moves(state) gives pairs of rate and next state."""

    def __init__(self, start, moves):
        self.states = [start]
        self._numbers = {start: 0}
        self._moves = []  # for each state, pairs of rate and number of the next state
        for state in self.states:  # which grows meanwhile
            self._moves.append([(rate, self._number(after)) for rate, after in moves(state) if after != state])

    def _number(self, state):
        if state not in self._numbers:
            self._numbers[state] = len(self.states)
            self.states.append(state)
        return self._numbers[state]

    def mean(self, weights, function):
        """The sum of function(state) with these weights of the states, such as their probabilities."""
        return math.fsum(weight * function(state) for weight, state in zip(weights, self.states))

    def variance(self, probabilities, function):
        mean = self.mean(probabilities, function)
        return self.mean(probabilities, lambda state: (function(state) - mean) ** 2)

    def steady(self):
        """The long-run probabilities of the states, all of which can be reached from each other.

        Source: W. K. Grassmann, M. I. Taksar, D. P. Heyman, Regenerative analysis and steady state distributions for
        Markov chains, Operations Research 33(5), 1985: elimination without a subtraction.
        """
        count = len(self.states)
        rates = [[0.0] * count for _ in range(count)]
        for row, moves in zip(rates, self._moves):
            for rate, after in moves:
                row[after] += rate
        for last in range(count - 1, 0, -1):
            out = rates[last]
            total = math.fsum(out[:last])
            for before in range(last):
                if rates[before][last]:
                    rates[before][last] /= total
                    share = rates[before][last]
                    row = rates[before]
                    for after in range(last):
                        row[after] += share * out[after]
        weights = [1.0]
        for state in range(1, count):
            weights.append(math.fsum(weights[before] * rates[before][state] for before in range(state)))
        total = math.fsum(weights)
        return [weight / total for weight in weights]

    def at(self, time):
        """The probabilities of the states at `time`, from the first state on."""
        return self._transient(time)[0]

    def over(self, time):
        """The mean times spent in the states until `time`."""
        return self._transient(time)[1]

    def _transient(self, time):
        """Probabilities at `time` and mean times until then.

        Source: A. Jensen, Markoff chains as an aid in the study of Markoff processes, Skandinavisk Aktuarietidskrift 36,
        1953: the chain is looked at at the points of a Poisson process faster than any of its states.
        """
        speed = 1.05 * max(math.fsum(rate for rate, _ in moves) for moves in self._moves)
        points = speed * time
        present = [1.0] + [0.0] * (len(self.states) - 1)
        probabilities = [0.0] * len(present)
        times = [0.0] * len(present)
        beyond = 1.0  # probability of more points than those looked at
        for point in range(int(points + 12.0 * math.sqrt(points) + 60.0)):
            chance = math.exp(point * math.log(points) - points - math.lgamma(point + 1.0))
            beyond -= chance
            for state, share in enumerate(present):
                probabilities[state] += chance * share
                times[state] += max(beyond, 0.0) / speed * share
            present = self._step(present, speed)
        return probabilities, times

    def _step(self, present, speed):
        after = list(present)
        for share, moves, state in zip(present, self._moves, range(len(present))):
            for rate, number in moves:
                moved = share * rate / speed
                after[number] += moved
                after[state] -= moved
        return after
