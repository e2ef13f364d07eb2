"""What the workloads must come out at: for a stop time, the expectation of one replication's answer and its standard
deviation, or None where there is no formula for that."""

import math


def queue(stop_time, arrival=0.9, service=1.0, capacity=100):
    """Number in an M/M/1/K queue, averaged over [0, stop_time] from empty.

    With f the number, p its stationary law and m its mean, the deviation h(i) = integral over time of
    E[f | start i] - m solves Poisson's equation; the expectation is m + h(0) / T up to terms that fade exponentially,
    and the variance 2 sum p (f - m) h / T. Source: S. Asmussen, P. W. Glynn, Stochastic Simulation, 2007, chapter IV.
    """
    weights = [(arrival / service) ** i for i in range(capacity + 1)]
    law = [weight / sum(weights) for weight in weights]
    mean = sum(i * p for i, p in enumerate(law))
    deviation, flow = [0.0], 0.0
    for i in range(capacity):
        flow -= law[i] * (i - mean)  # arrival * law[i] * (h(i+1) - h(i))
        deviation.append(deviation[-1] + flow / (arrival * law[i]))
    offset = sum(p * h for p, h in zip(law, deviation))
    deviation = [h - offset for h in deviation]
    variance = 2.0 * sum(p * (i - mean) * h for i, (p, h) in enumerate(zip(law, deviation)))
    return mean + deviation[0] / stop_time, math.sqrt(variance / stop_time)


def cycle(_stop_time, stations=50, customers=200):
    """Throughput of a station: its stationary chance of not being empty, as the customers are spread in all ways
    alike. From 4 at each the throughput is higher at first, by some 8 firings of a station in all: far below the error
    of a station's share of time in the runs here, and left out where all stations' firings are counted."""
    return customers / (customers + stations - 1), None


def machines(stop_time, count, failure=0.1, repair=1.0):
    """Number down of independent machines that start up, averaged over [0, stop_time]."""
    down, rate = failure / (failure + repair), failure + repair
    mean = down * (1.0 - (1.0 - math.exp(-rate * stop_time)) / (rate * stop_time))
    return count * mean, math.sqrt(count * 2.0 * down * (1.0 - down) / (rate * stop_time))


def hold(operations):
    """Progress of the time in an operation: n clocks of rate 1 tick at intervals of mean 1/n."""
    return 1.0, 1.0 / math.sqrt(operations)
