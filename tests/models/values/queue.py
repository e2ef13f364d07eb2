"""The queue of the modelling guide: its Markov chain, from empty."""

from known_values import Run, Value
from markov_chain import MarkovChain


def queue(arrive, serve, room):
    def moves(number):
        return ([(arrive, number + 1)] if number < room else []) + ([(serve, number - 1)] if number else [])

    chain = MarkovChain(0, moves)
    values = {
        n: Value(f"customers at {time}", chain.mean(chain.at(time), float), chain.variance(chain.at(time), float))
        for n, time in enumerate((1.0, 5.0, 10.0))
    }
    return values | {3: Value("served in [0,10]", serve * chain.mean(chain.over(10.0), lambda number: number > 0))}


RUNS = [
    Run(experiment=0, generator=0, seed=3501, batches=90000, values=queue(0.8, 1.0, 10)),
    Run(experiment=1, generator=1, seed=3502, batches=80000, values=queue(0.9, 1.0, 20)),
    Run(experiment=2, generator=2, seed=3503, batches=80000, values=queue(1.0, 1.0, 5)),
]
