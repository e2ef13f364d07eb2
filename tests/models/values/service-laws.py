"""The queue M/G/1 by the formula of Pollaczek and Khinchine, which needs mean and second moment of the service law."""

import math

from known_values import Run, Value

HORIZON, BATCH = 500.0, 400.0


def conditional_weibull(scale):
    """Mean and second moment of what is left of a Weibull life of shape 2 at the age of its scale."""
    mean = scale * math.e * math.sqrt(math.pi) / 2.0 * math.erfc(1.0)
    return mean, scale * scale - 2.0 * scale * mean


def weibull(shape, scale):
    return scale * math.gamma(1.0 + 1.0 / shape), scale * scale * math.gamma(1.0 + 2.0 / shape)


def lognormal(mu, variance):
    return math.exp(mu + variance / 2.0), math.exp(2.0 * mu + 2.0 * variance)


def of_variance(mean, variance):
    return mean, variance + mean * mean


HYPER = (1.0 / 3.0 / 0.5 + 2.0 / 3.0 / 2.0, 2.0 * (1.0 / 3.0 / 0.25 + 2.0 / 3.0 / 4.0))

# Mean and second moment of each law, in the order of the experiments; where no source is given, from mean and variance.
LAWS = {
    "deterministic": (1.0, 1.0),
    "exponential": (1.0, 2.0),
    "Erlang": of_variance(1.0, 1.0 / 4.0),
    "hypo-exponential": of_variance(1.0, 2.0 / 4.0),
    "uniform": of_variance(1.0, 4.0 / 12.0),
    "triangular": of_variance(1.0, 1.0 / 6.0),
    "hyper-exponential": HYPER,
    "Weibull": weibull(2.0, 1.1283791671),
    "lognormal": lognormal(-0.34657359028, 0.69314718056),
    "gamma": of_variance(1.0, 2.0 * 0.25),
    "normal": of_variance(1.0, 0.04),  # cut off at five deviations
    "geometric": of_variance(1.0, 0.5 / 0.25),
    "binomial": of_variance(1.0, 0.5),
    "negative binomial": of_variance(1.0, 2.0 * (1.0 / 3.0) / (4.0 / 9.0)),
    "Pareto": (3.0 / 2.0 * 2.0 / 3.0, 3.0 / 1.0 * 4.0 / 9.0),
    "conditional Weibull": conditional_weibull(2.0),
    "beta": of_variance(0.5, 1.0 / 20.0),
    "mixture": HYPER,
}


def customers(rate, mean, second):
    """Of which the mean number is there in the long run; F. Pollaczek 1930, A. Y. Khinchine 1932."""
    load = rate * mean
    return load + rate * rate * second / (2.0 * (1.0 - load))


def steady(name, rate, mean, second):
    # For the queue M/M/1 the asymptotic variance is 2 rho (1 + rho) / (1 - rho)^4; W. Whitt, Planning queueing
    # simulations, Management Science 35(11), 1989.
    load = rate * mean
    variance = 2.0 * load * (1.0 + load) / (1.0 - load) ** 4 if name == "exponential" else None
    values = [
        Value(f"customers, {name}", customers(rate, mean, second), variance),
        Value("busy", load),
        Value("served per time unit", rate),
    ]
    if name == "mixture":
        values.append(Value("slow ones per time unit", rate / 3.0))
    return dict(enumerate(values, 2))


def terminating(rate):
    arrived = rate * HORIZON  # a Poisson number
    return {0: Value("arrived", arrived, arrived), 1: Value("arrived per time unit", rate, rate / HORIZON)}


def runs():
    for number, (name, (mean, second)) in enumerate(LAWS.items()):
        rate = 1.0 if name == "beta" else 0.5
        yield Run(number, number % 3, 10100 + number, 1000, terminating(rate))
        yield Run(number, (0, 2)[number % 2], 10200 + number, 8000, steady(name, rate, mean, second), steady=BATCH)


assert math.isclose(customers(0.5, *LAWS["hyper-exponential"]), 1.25)
assert math.isclose(customers(0.5, *LAWS["negative binomial"]), 1.125)
assert math.isclose(customers(0.5, *LAWS["Pareto"]), 0.833333333, rel_tol=1e-9)
assert math.isclose(customers(0.5, *LAWS["Weibull"]), 0.818309886, rel_tol=1e-8)

RUNS = list(runs())
