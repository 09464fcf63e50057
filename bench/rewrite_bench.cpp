// Evaluation, substitution, conversion between spin and binary, degree reduction. The first two
// and the energy of a solution stand beside plain loops over flat tables of the same terms, in
// int64_t and in coeff_t, which know that every term is a coefficient and two variables.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "core/evaluate.h"
#include "core/simplify.h"
#include "core/spin_forms.h"
#include "core/substitute.h"
#include "integer/degree_reduction.h"
#include "model/bit_words.h"
#include "model/sol.h"
#include "support/quadratic.h"

namespace zorv {
namespace {

void settings(benchmark::internal::Benchmark* b) {
  b->Unit(benchmark::kMillisecond)->UseRealTime()->MinWarmUpTime(0.3)->MinTime(1.0);
}

void one_and_ten_million(benchmark::internal::Benchmark* b) {
  settings(b);
  b->Arg(1'000'000)->Arg(10'000'000);
}

void count_terms(benchmark::State& state, uint64_t n) {
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * n));
}

// The terms of a quadratic polynomial as three flat tables.
template <typename Number>
struct FlatTerms {
  std::vector<Number> coeffs;
  std::vector<uint32_t> a, b;  // variables, counted from 0

  explicit FlatTerms(const ExprImpl& e) {
    e.list.for_each([&](const TermImpl& term) {
      coeffs.push_back(static_cast<Number>(term.coeff));
      a.push_back(term.vars[0] - first_variable());
      b.push_back(term.vars[1] - first_variable());
    });
  }
};

// Half of the variables 0, half of them 1, in random order.
std::vector<coeff_t> random_bits() {
  std::mt19937 generator(1);
  std::vector<coeff_t> values(kVariables);
  for (coeff_t& value : values) value = generator() % 2;
  return values;
}

std::vector<uint32_t> all_variables() {
  std::vector<uint32_t> variables(kVariables);
  for (uint32_t i = 0; i < kVariables; ++i) variables[i] = first_variable() + i;
  return variables;
}

// Evaluation ------------------------------------------------------------------------------------

void EvaluateOnMap(benchmark::State& state) {
  const ExprImpl e = quadratic(state.range(0));
  const std::vector<uint32_t> variables = all_variables();
  const std::vector<coeff_t> values = random_bits();
  for (auto _ : state) {
    benchmark::DoNotOptimize(evaluate(e, variables.data(), values.data(), kVariables));
  }
  count_terms(state, state.range(0));
}

template <typename Number>
void PlainEvaluate(benchmark::State& state) {
  const FlatTerms<Number> terms(quadratic(state.range(0)));
  std::vector<Number> values;
  for (const coeff_t& value : random_bits()) values.push_back(static_cast<Number>(value));
  for (auto _ : state) {
    Number sum = 0;
    for (size_t t = 0; t < terms.coeffs.size(); ++t) {
      sum += terms.coeffs[t] * values[terms.a[t]] * values[terms.b[t]];
    }
    benchmark::DoNotOptimize(sum);
  }
  count_terms(state, state.range(0));
}

void ComputeEnergy(benchmark::State& state) {
  Sol sol(make_model(quadratic(state.range(0))));
  const std::vector<coeff_t> values = random_bits();
  for (size_t i = 0; i < sol.model->variables.size(); ++i) {
    set_bit(sol.bits.data(), i, !is_zero(values[i]));
  }
  for (auto _ : state) {
    sol.energy_valid = false;
    benchmark::DoNotOptimize(compute_energy(sol));
  }
  count_terms(state, state.range(0));
}

template <typename Number>
void PlainEnergy(benchmark::State& state) {
  const FlatTerms<Number> terms(quadratic(state.range(0)));
  std::vector<char> bits;
  for (const coeff_t& value : random_bits()) bits.push_back(is_zero(value) ? 0 : 1);
  for (auto _ : state) {
    Number sum = 0;
    for (size_t t = 0; t < terms.coeffs.size(); ++t) {
      if (bits[terms.a[t]] != 0 && bits[terms.b[t]] != 0) sum += terms.coeffs[t];
    }
    benchmark::DoNotOptimize(sum);
  }
  count_terms(state, state.range(0));
}

BENCHMARK(EvaluateOnMap)->Apply(one_and_ten_million);
BENCHMARK(PlainEvaluate<coeff_t>)->Apply(one_and_ten_million);
BENCHMARK(PlainEvaluate<int64_t>)->Apply(one_and_ten_million);
BENCHMARK(ComputeEnergy)->Apply(one_and_ten_million);
BENCHMARK(PlainEnergy<coeff_t>)->Apply(one_and_ten_million);
BENCHMARK(PlainEnergy<int64_t>)->Apply(one_and_ten_million);

// Substitution: 1 - y for every second variable ---------------------------------------------------

bool is_replaced(uint32_t variable) { return variable % 2 == 0; }

void Replace(benchmark::State& state) {
  const ExprImpl e = quadratic(state.range(0));
  std::vector<uint32_t> keys;
  std::vector<ExprImpl> complements;
  for (uint32_t i = 0; i < kVariables; i += 2) {
    const uint32_t x = first_variable() + i;
    keys.push_back(x);
    complements.emplace_back(TermImpl(-1, VarList(x + 1)));
    complements.back().constant = 1;
  }
  std::vector<const ExprImpl*> exprs;
  for (const ExprImpl& complement : complements) exprs.push_back(&complement);
  for (auto _ : state) {
    const ExprImpl replaced = replace(e, Substitution(keys.data(), exprs.data(), keys.size()));
    benchmark::DoNotOptimize(replaced.list.terms);
    state.PauseTiming();
    state.counters["terms"] = static_cast<double>(replaced.list.size());
    state.ResumeTiming();
  }
  count_terms(state, state.range(0));
}

// The same into flat tables that are reserved exactly: a factor is 1 - y or a variable.
template <typename Number>
void PlainReplace(benchmark::State& state) {
  const FlatTerms<Number> terms(quadratic(state.range(0)));
  struct FlatTerm {
    Number coeff;
    uint32_t a, b;
  };
  for (auto _ : state) {
    size_t size = 0;
    for (size_t t = 0; t < terms.coeffs.size(); ++t) {
      const bool both = is_replaced(terms.a[t]) && is_replaced(terms.b[t]);
      size += both ? 3 : is_replaced(terms.a[t]) || is_replaced(terms.b[t]) ? 2 : 1;
    }
    std::vector<FlatTerm> result;
    result.reserve(size);
    Number constant = 0;
    for (size_t t = 0; t < terms.coeffs.size(); ++t) {
      const Number& c = terms.coeffs[t];
      const uint32_t a = terms.a[t];
      const uint32_t b = terms.b[t];
      if (is_replaced(a) && is_replaced(b)) {
        constant += c;
        result.push_back({-c, b + 1, kNoLiteral});
        result.push_back({-c, a + 1, kNoLiteral});
        result.push_back({c, a + 1, b + 1});
      } else if (is_replaced(a)) {
        result.push_back({c, b, kNoLiteral});
        result.push_back({-c, a + 1, b});
      } else if (is_replaced(b)) {
        result.push_back({c, a, kNoLiteral});
        result.push_back({-c, a, b + 1});
      } else {
        result.push_back({c, a, b});
      }
    }
    benchmark::DoNotOptimize(constant);
    benchmark::DoNotOptimize(result.data());
  }
  count_terms(state, state.range(0));
}

BENCHMARK(Replace)->Apply(one_and_ten_million);
BENCHMARK(PlainReplace<coeff_t>)->Apply(one_and_ten_million);
BENCHMARK(PlainReplace<int64_t>)->Apply(one_and_ten_million);

// Rewrites of the whole polynomial ----------------------------------------------------------------

void BinaryToSpin(benchmark::State& state) {
  const ExprImpl e = quadratic(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(binary_to_spin(e).list.terms);
  count_terms(state, state.range(0));
}

void SpinToBinary(benchmark::State& state) {
  const ExprImpl e = quadratic(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(spin_to_binary(e).list.terms);
  count_terms(state, state.range(0));
}

// The last step of both, and all that a conversion cannot do without.
void SimplifyAsBinary(benchmark::State& state) {
  const ExprImpl e = quadratic(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(expr_simplify_as_binary(e).list.terms);
  count_terms(state, state.range(0));
}

// Terms of degree 5 over 1,000 variables, half of them with negative coefficients. The auxiliary
// variables of all rounds stay in the registry.
void ReduceDegree(benchmark::State& state) {
  std::mt19937 generator(1);
  ExprImpl e;
  for (int64_t t = 0; t < state.range(0); ++t) {
    uint32_t literals[5];
    for (uint32_t& literal : literals) literal = first_variable() + generator() % 1000;
    e.list.append(TermImpl(t % 2 == 0 ? t + 1 : -t, VarList(literals, 5)));
  }
  e = expr_simplify_as_binary(e);
  for (auto _ : state) {
    const ExprImpl reduced = reduce_degree(e);
    state.counters["terms"] = static_cast<double>(reduced.list.size());
  }
  count_terms(state, state.range(0));
}

BENCHMARK(BinaryToSpin)->Apply(settings)->Arg(1'000'000);
BENCHMARK(SpinToBinary)->Apply(settings)->Arg(1'000'000);
BENCHMARK(SimplifyAsBinary)->Apply(settings)->Arg(1'000'000);
BENCHMARK(ReduceDegree)->Apply(settings)->Arg(100'000);

}  // namespace
}  // namespace zorv
