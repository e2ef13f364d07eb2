"""The comparison with known values, on observations made up here: what must pass and what must not."""

import contextlib
import io
import random
import tempfile
import unittest

from known_values import Run, Value, check_observations, check_page, larger_batches


def complaints(run, observations):
    with contextlib.redirect_stdout(io.StringIO()):
        return check_observations(run, observations)


def terminating(mean, variance=None):
    return Run(experiment=0, generator=0, seed=1, batches=10000, values={3: Value("waiting", mean, variance)})


def steady(mean, variance=None, length=5.0):
    return Run(0, 0, 1, 3200, values={3: Value("waiting", mean, variance)}, steady=length)


def two_values(low, high, count):
    """As many of one as of the other: the mean is half-way, the variance the square of half the distance."""
    return [low, high] * (count // 2)


class Means(unittest.TestCase):
    # 10,000 observations of 9 and 11: the standard error is 0.01.
    SEEN = {3: two_values(9.0, 11.0, 10000)}

    def test_a_mean_within_four_errors_passes(self):
        self.assertEqual(complaints(terminating(10.0), self.SEEN), [])
        self.assertEqual(complaints(terminating(10.0399), self.SEEN), [])
        self.assertEqual(complaints(terminating(9.9601), self.SEEN), [])

    def test_a_mean_beyond_four_errors_does_not(self):
        for value in (10.0401, 9.9599):
            with self.subTest(value):
                (complaint,) = complaints(terminating(value), self.SEEN)
                self.assertIn("off by", complaint)

    def test_a_half_width_above_one_hundredth_does_not(self):
        # 1.96 * s / sqrt(n), with s = 10 and n = 10,000, is 0.196; with n = 38,416 it is 0.1.
        (complaint,) = complaints(terminating(10.0), {3: two_values(0.0, 20.0, 10000)})
        self.assertIn("too few batches", complaint)
        self.assertEqual(complaints(terminating(10.0), {3: two_values(0.0, 20.0, 38500)}), [])

    def test_small_values_may_have_a_half_width_of_one_twentieth(self):
        seen = {3: two_values(0.0, 0.0018, 10000)}  # the half-width is 0.0000176, 1.96 % of the mean
        self.assertEqual(complaints(terminating(0.0009), seen), [])
        (complaint,) = complaints(terminating(0.01), {3: two_values(0.0, 0.02, 10000)})
        self.assertIn("too few batches", complaint)
        (complaint,) = complaints(terminating(0.0009), {3: two_values(0.0, 0.0018, 1000)})
        self.assertIn("too few batches", complaint)

    def test_a_value_that_never_varies_must_be_met(self):
        self.assertEqual(complaints(terminating(2.0), {3: [2.0] * 10000}), [])
        self.assertNotEqual(complaints(terminating(2.001), {3: [2.0] * 10000}), [])


class Variances(unittest.TestCase):
    def setUp(self):
        stream = random.Random(7)
        self.seen = {3: [stream.gauss(10.0, 2.0) for _ in range(10000)]}  # the variance's error is 4 sqrt(2 / n) = 0.057

    def test_a_variance_within_four_errors_passes(self):
        self.assertEqual(complaints(terminating(10.0, 4.0), self.seen), [])

    def test_a_variance_beyond_four_errors_does_not(self):
        for variance in (3.6, 4.4):
            with self.subTest(variance):
                (complaint,) = complaints(terminating(10.0, variance), self.seen)
                self.assertIn("variance", complaint)

    def test_the_variance_of_a_steady_state_run_is_taken_for_its_length(self):
        stream = random.Random(8)
        seen = {3: [stream.gauss(10.0, 2.0) for _ in range(6400)]}
        self.assertEqual(complaints(steady(10.0, 20.0, length=5.0), seen), [])
        self.assertNotEqual(complaints(steady(10.0, 4.0, length=5.0), seen), [])


class SteadyState(unittest.TestCase):
    def test_batches_are_put_together_into_larger_ones(self):
        means = larger_batches([float(n) for n in range(330)])  # 32 times 10, and 10 left over
        self.assertEqual(means, [10 * n + 4.5 for n in range(32)])

    def test_batches_that_depend_on_each_other_do_not_look_like_more_than_they_are(self):
        # 32 stretches of 100 equal observations each, 9 and 11 in turn. Taken one by one the error would be 0.018; it is
        # that of 32 observations, 0.18, and the run too short.
        seen = {3: [9.0 if n // 100 % 2 else 11.0 for n in range(3200)]}
        (complaint,) = complaints(steady(10.0), seen)
        self.assertIn("too few batches", complaint)

    def test_too_few_batches_do_not_pass(self):
        (complaint,) = complaints(steady(2.0), {3: [2.0] * 999})
        self.assertIn("1000 observations are needed", complaint)
        self.assertEqual(complaints(steady(2.0), {3: [2.0] * 1000}), [])


class Tables(unittest.TestCase):
    SEEN = Means.SEEN[3]

    def test_a_variable_that_is_not_in_the_table_is_told(self):
        (complaint,) = complaints(terminating(10.0), {3: self.SEEN, 4: self.SEEN})
        self.assertEqual(complaint, "variable 4 is observed, and not in the table")

    def test_a_variable_of_a_steady_state_run_is_zero_in_a_terminating_one(self):
        self.assertEqual(complaints(terminating(10.0), {3: self.SEEN, 4: [0.0] * 10000}), [])
        self.assertEqual(len(complaints(steady(10.0), {3: self.SEEN, 4: [0.0] * 10000})), 1)

    def test_a_variable_that_is_not_observed_is_told(self):
        (complaint,) = complaints(terminating(10.0), {})
        self.assertEqual(complaint, "variable 3, waiting, is not observed")


class Pages(unittest.TestCase):
    def complaints(self, text):
        with tempfile.NamedTemporaryFile("w", suffix=".md", encoding="utf-8") as page:
            page.write(text)
            page.flush()
            return check_page(page.name, [terminating(0.26794919, 1.5)])

    def test_a_page_that_states_mean_and_variance_passes(self):
        self.assertEqual(self.complaints("| 3 | waiting | 0.267949 (1.5) |"), [])

    def test_a_value_that_is_not_on_the_page_is_told(self):
        (complaint,) = self.complaints("| 3 | waiting | 0.267950 (1.5) |")
        self.assertIn("does not state the value 0.267949", complaint)
        (complaint,) = self.complaints("| 3 | waiting | 0.267949 (11.5) |")
        self.assertIn("does not state the value 1.5", complaint)


if __name__ == "__main__":
    unittest.main()
