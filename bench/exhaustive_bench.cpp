// States per second of the library that looks at every assignment: dense models of degree 2 and 4,
// one with constraints, in all number types and on one and two threads; and its plain twin, a Gray
// walk that keeps the gain of every flip up to date.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <bit>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "exhaustive/search.h"

namespace zorv::plugin {
namespace {

// Every product of at most `degree` variables, with coefficients up to `most` times `scale`, and
// `ranges` sums of 8 variables that are to lie between -5 and 5.
class DenseModel {
 public:
  DenseModel(uint32_t variables, uint32_t degree, int64_t most, const Coeff& scale, int ranges)
      : literals_(degree), coeffs_(degree) {
    for (uint64_t set = 1; set >> variables == 0; set = next_of(set, degree)) {
      const auto d = static_cast<uint32_t>(std::popcount(set));
      for (uint64_t rest = set; rest != 0; rest &= rest - 1) {
        literals_[d - 1].push_back(static_cast<uint32_t>(std::countr_zero(rest)));
      }
      coeffs_[d - 1].push_back(number(most) * scale);
    }
    for (uint32_t d = 0; d < degree; ++d) {
      counts_.push_back(coeffs_[d].size());
      literal_tables_.push_back(literals_[d].data());
      coeff_tables_.push_back(abi(coeffs_[d].data()));
    }
    model_.emplace(variables, degree, abi(&constant_), counts_.data(), literal_tables_.data(),
                   coeff_tables_.data());
    for (int i = 0; i < ranges; ++i) add_range(variables);
  }
  const BinaryModel& model() const { return *model_; }

 private:
  static const coeff_t* abi(const Coeff* c) { return reinterpret_cast<const coeff_t*>(c); }
  // The next larger set of at most that many.
  static uint64_t next_of(uint64_t set, uint32_t degree) {
    if (std::popcount(set) < static_cast<int>(degree)) return set + 1;
    return set + (set & -set);
  }
  int64_t number(int64_t most) {
    return static_cast<int64_t>(random_() % static_cast<uint64_t>(2 * most + 1)) - most;
  }
  void add_range(uint32_t variables) {
    std::vector<uint32_t> vars;
    std::vector<Coeff> coeffs;
    while (vars.size() < 8) {
      vars.push_back(static_cast<uint32_t>(random_() % variables));
      coeffs.emplace_back(number(20));
    }
    const Coeff weight = 10, lo = -5, hi = 5;
    model_->add_constraint(abi(&weight), abi(&lo), abi(&hi), abi(&constant_), vars.size(),
                           vars.data(), abi(coeffs.data()));
  }

  std::mt19937_64 random_{1};
  const Coeff constant_ = 0;
  std::vector<std::vector<uint32_t>> literals_;
  std::vector<std::vector<Coeff>> coeffs_;
  std::vector<uint64_t> counts_;
  std::vector<const uint32_t*> literal_tables_;
  std::vector<const coeff_t*> coeff_tables_;
  std::optional<BinaryModel> model_;
};

void search(benchmark::State& state, const DenseModel& dense, uint32_t threads) {
  SearchParams params;
  params.threads = threads;
  double states = 0;
  for (auto _ : state) {
    const ExhaustiveResult result = search_all(dense.model(), params);
    states += static_cast<double>(result.states);
    state.SetLabel(result.numbers + ", best " + result.best.energy.str());
  }
  state.counters["states"] = benchmark::Counter(states, benchmark::Counter::kIsRate);
}

void Quadratic(benchmark::State& state) {
  const DenseModel dense(static_cast<uint32_t>(state.range(0)), 2, 1'000'000, 1, 0);
  search(state, dense, static_cast<uint32_t>(state.range(1)));
}
void DegreeFour(benchmark::State& state) {
  const DenseModel dense(static_cast<uint32_t>(state.range(0)), 4, 1'000, 1, 0);
  search(state, dense, static_cast<uint32_t>(state.range(1)));
}
void SixRanges(benchmark::State& state) {
  const DenseModel dense(static_cast<uint32_t>(state.range(0)), 2, 20, 1, 6);
  search(state, dense, static_cast<uint32_t>(state.range(1)));
}
void QuadraticOfNumbers(benchmark::State& state) {
  const Coeff scale = Coeff(1) << static_cast<unsigned>(state.range(0));
  const DenseModel dense(static_cast<uint32_t>(state.range(1)), 2, 1'000'000, scale, 0);
  search(state, dense, 1);
}

// For comparison: one state a step, and a gain of every variable, in rows of fixed length.
constexpr uint32_t kRow = 32;

#if defined(__GNUC__) && !defined(__clang__)
[[gnu::target_clones("avx2", "default")]]
#endif
int64_t
plain_best(const std::vector<int64_t>& pairs, const std::vector<int64_t>& first_gains, uint32_t n) {
  int64_t gains[kRow];
  std::copy_n(first_gains.begin(), kRow, gains);
  int64_t energy = 0, best = 0;
  for (uint64_t t = 1; t >> n == 0; ++t) {
    const auto k = static_cast<uint32_t>(std::countr_zero(t));
    const int64_t* row = &pairs[uint64_t{k} * kRow];
    if ((t >> k & 2) == 0) {  // up
      energy += gains[k];
      for (uint32_t i = 0; i < kRow; ++i) gains[i] += row[i];
    } else {
      energy -= gains[k];
      for (uint32_t i = 0; i < kRow; ++i) gains[i] -= row[i];
    }
    best = std::min(best, energy);
  }
  return best;
}

void PlainQuadratic(benchmark::State& state) {
  const auto n = static_cast<uint32_t>(state.range(0));
  const DenseModel dense(n, 2, 1'000'000, 1, 0);
  std::vector<int64_t> pairs(uint64_t{kRow} * kRow), first_gains(kRow);
  dense.model().for_each_term([&](const Coeff& coeff, const uint32_t* literals, uint64_t degree) {
    const auto c = static_cast<int64_t>(coeff);
    if (degree == 1) {
      first_gains[literals[0]] = c;
    } else {
      pairs[literals[0] * kRow + literals[1]] = pairs[literals[1] * kRow + literals[0]] = c;
    }
  });
  for (auto _ : state) {
    state.SetLabel("best " + std::to_string(plain_best(pairs, first_gains, n)));
  }
  state.counters["states"] = benchmark::Counter(
      static_cast<double>(state.iterations()) * static_cast<double>(uint64_t{1} << n),
      benchmark::Counter::kIsRate);
}

BENCHMARK(PlainQuadratic)->ArgName("variables")->Arg(28)->Unit(benchmark::kMillisecond);
BENCHMARK(Quadratic)
    ->ArgNames({"variables", "threads"})
    ->ArgsProduct({{28, 32}, {1, 2}})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(DegreeFour)
    ->ArgNames({"variables", "threads"})
    ->ArgsProduct({{28}, {1, 2}})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(SixRanges)
    ->ArgNames({"variables", "threads"})
    ->ArgsProduct({{28}, {1, 2}})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(QuadraticOfNumbers)
    ->ArgNames({"times_2_to", "variables"})
    ->Args({20, 28})
    ->Args({80, 22})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zorv::plugin
