// States per second of the enumeration, in both number types: up to 25 binary variables
// beside two integer ones, 60 products of two, and 5 ranges.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "constraints/declare.h"
#include "core/simplify.h"
#include "core/tagged_arithmetic.h"
#include "core/var_registry.h"
#include "integer/int_var.h"
#include "solvers/int_enumeration.h"

namespace zorv {
namespace {

constexpr size_t kIntegers = 2, kPairs = 60, kRanges = 5, kRangeVariables = 8;

ModelHandle make_bench_model(size_t bits) {
  std::mt19937_64 random(1);
  std::vector<uint32_t> variables;
  for (size_t i = 0; i < bits; ++i) variables.push_back(new_var("x"));
  for (size_t j = 0; j < kIntegers; ++j) variables.push_back(new_int_var("k", -3, 4));
  // A sum of `count` different terms.
  const auto sum_of = [&](std::vector<VarList> terms, size_t count) {
    std::shuffle(terms.begin(), terms.end(), random);
    ExprImpl sum;
    for (size_t t = 0; t < count; ++t) {
      sum.list.append(TermImpl(static_cast<int>(random() % 41) - 20, terms[t]));
    }
    return expr_simplify_as_binary(sum);
  };

  std::vector<VarList> singles, pairs;
  for (const uint32_t a : variables) {
    for (const VarList& b : singles) pairs.push_back(VarList::concat(b, VarList(a)));
    singles.emplace_back(a);
  }
  ExprImpl energy = sum_of(pairs, kPairs);
  for (size_t c = 0; c < kRanges; ++c) {
    const ExprImpl range = cons_between(sum_of(singles, kRangeVariables), -5, 5);
    iadd_expr(energy, clone_mul_int(range, 10));
  }
  return make_model(energy);
}

void Enumerate(benchmark::State& state, bool is_wide) {
  const ModelHandle model = make_bench_model(static_cast<size_t>(state.range(0)));
  double states = 0;
  for (auto _ : state) {
    const SearchResult result = enumerate_states(*model, nullptr, is_wide);
    for (const InfoEntry& entry : result.info) {
      if (entry.key == "states") states += std::stod(entry.value);
    }
  }
  state.counters["states"] = benchmark::Counter(states, benchmark::Counter::kIsRate);
}

void MachineIntegers(benchmark::State& state) { Enumerate(state, false); }
void UnboundedIntegers(benchmark::State& state) { Enumerate(state, true); }

BENCHMARK(MachineIntegers)->ArgName("bits")->Arg(18)->Arg(25)->Unit(benchmark::kMillisecond);
BENCHMARK(UnboundedIntegers)->ArgName("bits")->Arg(14)->Arg(18)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zorv
