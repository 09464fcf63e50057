// What the C++ header costs beside the C calls that it makes: each pair builds the same expression.
#include <benchmark/benchmark.h>

#include "zorv/zorv.hpp"

namespace {

using namespace zorv;

constexpr int64_t kVars = 1000;
constexpr int64_t kTerms = 1'000'000;

const Array<Var, 1>& vars() {
  static const Array<Var, 1> array = var_array("x", {kVars});
  return array;
}

// A small number that changes from term to term.
int64_t coeff_of(int64_t t) { return t % 199 - 99; }
uint64_t factor_of(int64_t t, int64_t i) { return static_cast<uint64_t>(t * (7 * i + 1) % kVars); }

void HeaderQuadraticLoop(benchmark::State& state) {
  const Array<Var, 1>& x = vars();
  for (auto _ : state) {
    Expr e;
    for (int64_t t = 0; t < kTerms; ++t) e += coeff_of(t) * x[factor_of(t, 0)] * x[factor_of(t, 1)];
    benchmark::DoNotOptimize(e.term_count());
  }
}
void CallsQuadraticLoop(benchmark::State& state) {
  const uint32_t* x = zorv_array_var_data(vars().handle());
  for (auto _ : state) {
    zorv_expr* e = zorv_expr_create();
    for (int64_t t = 0; t < kTerms; ++t) {
      const int64_t c = coeff_of(t);
      uint64_t limb = static_cast<uint64_t>(c < 0 ? -c : c);
      const CoeffWire wire = {(c > 0) - (c < 0), c != 0, &limb};
      const uint32_t literals[] = {x[factor_of(t, 0)], x[factor_of(t, 1)]};
      zorv_expr_iadd_raw_term(e, &wire, literals, 2);
    }
    benchmark::DoNotOptimize(zorv_expr_term_count(e));
    zorv_expr_destroy(e);
  }
}
BENCHMARK(HeaderQuadraticLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(CallsQuadraticLoop)->Unit(benchmark::kMillisecond);

void HeaderQuarticLoop(benchmark::State& state) {
  const Array<Var, 1>& x = vars();
  for (auto _ : state) {
    Expr e;
    for (int64_t t = 0; t < kTerms; ++t) {
      e += coeff_of(t) * x[factor_of(t, 0)] * x[factor_of(t, 1)] * x[factor_of(t, 2)] *
           ~x[factor_of(t, 3)];
    }
    benchmark::DoNotOptimize(e.term_count());
  }
}
void CallsQuarticLoop(benchmark::State& state) {
  const uint32_t* x = zorv_array_var_data(vars().handle());
  for (auto _ : state) {
    zorv_expr* e = zorv_expr_create();
    for (int64_t t = 0; t < kTerms; ++t) {
      const int64_t c = coeff_of(t);
      uint64_t limb = static_cast<uint64_t>(c < 0 ? -c : c);
      const CoeffWire wire = {(c > 0) - (c < 0), c != 0, &limb};
      const uint32_t literals[] = {x[factor_of(t, 0)], x[factor_of(t, 1)], x[factor_of(t, 2)],
                                   x[factor_of(t, 3)] ^ uint32_t{1} << 31};
      zorv_expr_iadd_raw_term(e, &wire, literals, 4);
    }
    benchmark::DoNotOptimize(zorv_expr_term_count(e));
    zorv_expr_destroy(e);
  }
}
BENCHMARK(HeaderQuarticLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(CallsQuarticLoop)->Unit(benchmark::kMillisecond);

// Terms collected first and added up in one call.
void HeaderBulk(benchmark::State& state) {
  const Array<Var, 1>& x = vars();
  std::vector<Term> terms;
  for (int64_t t = 0; t < kTerms; ++t) {
    terms.push_back(coeff_of(t) * x[factor_of(t, 0)] * x[factor_of(t, 1)]);
  }
  for (auto _ : state) benchmark::DoNotOptimize(sum(terms).term_count());
}
BENCHMARK(HeaderBulk)->Unit(benchmark::kMillisecond);

void HeaderOneHotSquare(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(sqr(sum(vars()) - 1).term_count());
}
void CallsOneHotSquare(benchmark::State& state) {
  uint64_t one = 1;
  const CoeffWire wire = {1, 1, &one};
  for (auto _ : state) {
    zorv_expr* e = zorv_array_var_sum(vars().handle());
    zorv_expr_isub_int(e, &wire);
    zorv_expr* square = zorv_expr_sqr(e);
    benchmark::DoNotOptimize(zorv_expr_term_count(square));
    zorv_expr_destroy(square);
    zorv_expr_destroy(e);
  }
}
BENCHMARK(HeaderOneHotSquare)->Unit(benchmark::kMillisecond);
BENCHMARK(CallsOneHotSquare)->Unit(benchmark::kMillisecond);

// Ten thousand declared ranges of three variables each.
constexpr int64_t kRules = 10'000;

void HeaderRules(benchmark::State& state) {
  const Array<Var, 1>& x = vars();
  for (auto _ : state) {
    Expr rules;
    for (int64_t t = 0; t < kRules; ++t) {
      rules += 5 * cons(0 <= x[factor_of(t, 0)] + 2 * x[factor_of(t, 1)] - x[factor_of(t, 2)] <= 2);
    }
    benchmark::DoNotOptimize(rules.is_declared());
  }
}
void CallsRules(benchmark::State& state) {
  const uint32_t* x = zorv_array_var_data(vars().handle());
  uint64_t two_limb = 2, five_limb = 5;
  const CoeffWire zero = {0, 0, nullptr}, two = {1, 1, &two_limb}, five = {1, 1, &five_limb};
  for (auto _ : state) {
    zorv_expr* rules = zorv_expr_create();
    for (int64_t t = 0; t < kRules; ++t) {
      zorv_expr* f = zorv_expr_create_var(x[factor_of(t, 0)]);
      zorv_expr_iadd_raw_term(f, &two, &x[factor_of(t, 1)], 1);
      zorv_expr_isub_var(f, x[factor_of(t, 2)]);
      zorv_expr* rule = zorv_cons_between(f, &zero, &two);
      zorv_expr_imul_int(rule, &five);
      zorv_expr_iadd_expr(rules, rule);
      zorv_expr_destroy(rule);
      zorv_expr_destroy(f);
    }
    benchmark::DoNotOptimize(zorv_expr_is_declared(rules));
    zorv_expr_destroy(rules);
  }
}
// The tables of constraints keep every entry, so the rounds are few.
BENCHMARK(HeaderRules)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(CallsRules)->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace
