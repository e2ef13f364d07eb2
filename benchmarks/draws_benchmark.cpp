// How long is one draw, of each generator and of each distribution?

#include <benchmark/benchmark.h>

#include <array>
#include <memory>

#include "Simulator/LaggedFibonacci.h"
#include "Simulator/MersenneTwister.h"
#include "Simulator/Tausworthe.h"
#include "Simulator/UserDistributions.h"

namespace {

constexpr std::uint32_t kSeed = 31415;

template <typename Generator>
void generatorDraw(benchmark::State& state) {
  const std::unique_ptr<RandomNumberGenerator> generator = std::make_unique<Generator>();
  generator->srnd(kSeed);
  for (auto _ : state) {
    benchmark::DoNotOptimize(generator->rnd());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_TEMPLATE(generatorDraw, LaggedFibonacci);
BENCHMARK_TEMPLATE(generatorDraw, Tausworthe);
BENCHMARK_TEMPLATE(generatorDraw, MersenneTwister);

std::array<double, 4> phases{0.5, 1.0 / 3.0, 2.0, 2.0 / 3.0};
std::array<double, 2> rates{2.0, 2.0};

template <typename Sampler>
void distributionDraw(benchmark::State& state, Sampler sample) {
  UserDistributions distributions(0, kSeed);
  for (auto _ : state) {
    benchmark::DoNotOptimize(sample(distributions));
  }
  state.SetItemsProcessed(state.iterations());
}

#define QUORVA_DRAW(name, call) \
  BENCHMARK_CAPTURE(distributionDraw, name, [](UserDistributions& from) { return from.call; })

QUORVA_DRAW(Exponential, Exponential(1.0));
QUORVA_DRAW(Deterministic, Deterministic(1.0));
QUORVA_DRAW(Geometric, Geometric(0.5));
QUORVA_DRAW(Weibull, Weibull(2.0, 1.0));
QUORVA_DRAW(ConditionalWeibull, ConditionalWeibull(2.0, 1.0, 0.5));
QUORVA_DRAW(Normal, Normal(1.0, 0.04));
QUORVA_DRAW(Lognormal, Lognormal(-0.3, 0.7));
QUORVA_DRAW(Erlang4, Erlang(4.0, 1.0));
QUORVA_DRAW(Triangular, Triangular(0.0, 2.0, 1.0));
QUORVA_DRAW(GammaAboveOne, Gamma(2.0, 0.5));
QUORVA_DRAW(GammaBelowOne, Gamma(0.5, 0.5));
QUORVA_DRAW(Beta, Beta(2.0, 3.0));
QUORVA_DRAW(Uniform, Uniform(0.0, 2.0));
QUORVA_DRAW(Binomial10, Binomial(10.0, 0.5));
QUORVA_DRAW(NegativeBinomial2, NegativeBinomial(2.0, 2.0 / 3.0));
QUORVA_DRAW(HyperExponential2, HyperExponential(2, phases.data()));
QUORVA_DRAW(HypoExponential2, HypoExponential(2, rates.data()));
QUORVA_DRAW(Pareto, Pareto(2.0 / 3.0, 3.0));

}  // namespace
