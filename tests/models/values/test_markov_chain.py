"""The solver of small chains, against closed forms."""

import math
import unittest

from markov_chain import MarkovChain

FAIL, REPAIR = 0.3, 1.1
SUM = FAIL + REPAIR


def machine(up):
    return [(FAIL, 0)] if up else [(REPAIR, 1)]


def queue(arrive, serve, places):
    def moves(number):
        return ([(arrive, number + 1)] if number < places else []) + ([(serve, number - 1)] if number else [])

    return MarkovChain(0, moves)


class Chains(unittest.TestCase):
    def test_a_machine_is_up_with_its_closed_form(self):
        chain = MarkovChain(1, machine)
        for time in (0.01, 1.0, 30.0):
            up = (REPAIR + FAIL * math.exp(-SUM * time)) / SUM
            spent = REPAIR / SUM * time + FAIL / SUM**2 * (1.0 - math.exp(-SUM * time))
            self.assertAlmostEqual(chain.mean(chain.at(time), float), up, 12)
            self.assertAlmostEqual(chain.variance(chain.at(time), float), up * (1.0 - up), 12)
            self.assertAlmostEqual(chain.mean(chain.over(time), float), spent, 11)
        self.assertAlmostEqual(chain.mean(chain.steady(), float), REPAIR / SUM, 14)

    def test_a_queue_has_its_geometric_law(self):
        rho, places = 0.8, 10
        probabilities = queue(rho, 1.0, places).steady()
        for number, probability in enumerate(probabilities):
            self.assertAlmostEqual(probability, (1.0 - rho) * rho**number / (1.0 - rho ** (places + 1)), 14)

    def test_a_queue_from_empty_has_its_published_mean(self):
        # At time 10, with room for 10 and rates 0.8 and 1.
        chain = queue(0.8, 1.0, 10)
        self.assertAlmostEqual(chain.mean(chain.at(10.0), float), 2.02211792552, 10)
        self.assertAlmostEqual(chain.variance(chain.at(10.0), float), 4.30820141938, 10)
        self.assertAlmostEqual(chain.mean(chain.over(10.0), float) / 10.0, 1.35027307143, 10)

    def test_moves_to_the_same_state_do_not_count(self):
        chain = MarkovChain(0, lambda state: [(5.0, state), (1.0, 1 - state)])
        self.assertAlmostEqual(chain.at(0.5)[1], (1.0 - math.exp(-1.0)) / 2.0, 13)


if __name__ == "__main__":
    unittest.main()
