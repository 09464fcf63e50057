// Arrays: einsum, sums, element-wise products. Beside each a plain loop that builds the same terms
// in a list that was reserved exactly. Results are freed outside the clock.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>

#include "arrays/einsum.h"
#include "arrays/elementwise.h"
#include "arrays/reductions.h"
#include "core/var_registry.h"

namespace zorv {
namespace {

using Clock = std::chrono::steady_clock;

void settings(benchmark::internal::Benchmark* b) {
  b->UseManualTime()->Unit(benchmark::kMillisecond)->MinWarmUpTime(0.3)->MinTime(1.0);
}

// Times build() alone; `terms` is what it makes.
template <typename Build>
void time_build(benchmark::State& state, uint64_t terms, Build build) {
  for (auto _ : state) {
    const auto start = Clock::now();
    auto result = build();
    const auto end = Clock::now();
    benchmark::DoNotOptimize(result);
    state.SetIterationTime(std::chrono::duration<double>(end - start).count());
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * terms));
  state.counters["terms"] = static_cast<double>(terms);
}

ArrayImpl<uint32_t> variables(const Shape& shape) {
  const uint32_t first = new_var_array("x", shape.data(), shape.size());
  return make_array<uint32_t>(shape, [=](uint64_t i) { return first + static_cast<uint32_t>(i); });
}

ExprImpl reserved(uint64_t terms) {
  ExprImpl e;
  e.list.reserve(terms - 1);
  return e;
}

// Einsum: n^3 terms of degree 2, n^4 of degree 3 -------------------------------------------------

constexpr uint32_t kVar = static_cast<uint32_t>(ElementKind::kVar);

uint64_t root(const benchmark::State& state, int k) {
  return static_cast<uint64_t>(std::llround(std::pow(state.range(0), 1.0 / k)));
}

void EinsumDegree2(benchmark::State& state) {
  const uint64_t n = root(state, 3);
  const auto a = variables({n, n}), b = variables({n, n});
  time_build(state, n * n * n, [&] { return einsum_expr("ij,jk->", {{kVar, &a}, {kVar, &b}}, 0); });
}

void PlainDegree2(benchmark::State& state) {
  const uint64_t n = root(state, 3);
  const auto a = variables({n, n}), b = variables({n, n});
  time_build(state, n * n * n, [&] {
    ExprImpl e = reserved(n * n * n);
    for (uint64_t i = 0; i < n; ++i) {
      for (uint64_t j = 0; j < n; ++j) {
        for (uint64_t k = 0; k < n; ++k) {
          e.list.append(TermImpl(1, VarList(a[i * n + j], b[j * n + k])));
        }
      }
    }
    return e;
  });
}

void EinsumDegree3(benchmark::State& state) {
  const uint64_t n = root(state, 4);
  const auto a = variables({n, n}), b = variables({n, n}), c = variables({n, n});
  time_build(state, n * n * n * n, [&] {
    return einsum_expr("ij,jk,kl->", {{kVar, &a}, {kVar, &b}, {kVar, &c}}, 0);
  });
}

void PlainDegree3(benchmark::State& state) {
  const uint64_t n = root(state, 4);
  const auto a = variables({n, n}), b = variables({n, n}), c = variables({n, n});
  time_build(state, n * n * n * n, [&] {
    ExprImpl e = reserved(n * n * n * n);
    for (uint64_t i = 0; i < n; ++i) {
      for (uint64_t j = 0; j < n; ++j) {
        for (uint64_t k = 0; k < n; ++k) {
          for (uint64_t l = 0; l < n; ++l) {
            const uint32_t literals[] = {a[i * n + j], b[j * n + k], c[k * n + l]};
            e.list.append(TermImpl(1, VarList(literals, 3)));
          }
        }
      }
    }
    return e;
  });
}

BENCHMARK(EinsumDegree2)->Apply(settings)->Arg(1'000'000)->Arg(10'000'000);
BENCHMARK(PlainDegree2)->Apply(settings)->Arg(1'000'000)->Arg(10'000'000);
BENCHMARK(EinsumDegree3)->Apply(settings)->Arg(1'000'000)->Arg(10'000'000);
BENCHMARK(PlainDegree3)->Apply(settings)->Arg(1'000'000)->Arg(10'000'000);

// A million outputs of one product each.
void EinsumOfShortSums(benchmark::State& state) {
  const auto a = variables({1'000'000});
  time_build(state, 1'000'000, [&] { return einsum_expr("i,i->i", {{kVar, &a}, {kVar, &a}}, 1); });
}

void PlainShortSums(benchmark::State& state) {
  const auto a = variables({1'000'000});
  time_build(state, 1'000'000, [&] {
    return map_array(a, [](uint32_t v) { return ExprImpl(TermImpl(1, VarList(v, v))); });
  });
}

BENCHMARK(EinsumOfShortSums)->Apply(settings);
BENCHMARK(PlainShortSums)->Apply(settings);

// Sums and products of a million variables --------------------------------------------------------

constexpr uint64_t kElements = 1'000'000;
constexpr uint64_t kSide = 1'000;

void SumOfVariables(benchmark::State& state) {
  const auto x = variables({kElements});
  time_build(state, kElements, [&] { return sum(x); });
}

ArrayImpl<ExprImpl> expressions() {
  return map_array(variables({kElements}),
                   [](uint32_t v) { return ExprImpl(TermImpl(3, VarList(v))); });
}

void SumOfExpressions(benchmark::State& state) {
  const auto x = expressions();
  time_build(state, kElements, [&] { return sum(x); });
}

void PlainSumOfExpressions(benchmark::State& state) {
  const auto x = expressions();
  time_build(state, kElements, [&] {
    ExprImpl e = reserved(kElements);
    for (uint64_t i = 0; i < kElements; ++i) {
      e.constant += x[i].constant;
      e.list.append(x[i].list.first);
    }
    return e;
  });
}

void PlainSum(benchmark::State& state) {
  const auto x = variables({kElements});
  time_build(state, kElements, [&] {
    ExprImpl e = reserved(kElements);
    for (uint64_t i = 0; i < kElements; ++i) e.list.append(TermImpl(1, VarList(x[i])));
    return e;
  });
}

void MultiplyArrays(benchmark::State& state) {
  const auto x = variables({kElements}), y = variables({kElements});
  time_build(state, kElements, [&] { return elementwise<Mul>(x, y); });
}

void PlainProducts(benchmark::State& state) {
  const auto x = variables({kElements}), y = variables({kElements});
  time_build(state, kElements, [&] {
    ExprImpl e = reserved(kElements);
    for (uint64_t i = 0; i < kElements; ++i) e.list.append(TermImpl(1, VarList(x[i], y[i])));
    return e;
  });
}

void VectorSum(benchmark::State& state) {
  const auto x = variables({kSide, kSide});
  const auto axis = static_cast<size_t>(state.range(0));
  time_build(state, kElements, [&] { return vector_sum(x, axis); });
}

void PlainVectorSum(benchmark::State& state) {
  const auto x = variables({kSide, kSide});
  const uint64_t outer = state.range(0) == 0 ? 1 : kSide;
  const uint64_t inner = state.range(0) == 0 ? kSide : 1;
  time_build(state, kElements, [&] {
    std::vector<ExprImpl> sums(kSide);
    for (uint64_t i = 0; i < kSide; ++i) {
      sums[i] = reserved(kSide);
      for (uint64_t j = 0; j < kSide; ++j) {
        sums[i].list.append(TermImpl(1, VarList(x[i * outer + j * inner])));
      }
    }
    return sums;
  });
}

BENCHMARK(SumOfVariables)->Apply(settings);
BENCHMARK(SumOfExpressions)->Apply(settings);
BENCHMARK(PlainSumOfExpressions)->Apply(settings);
BENCHMARK(PlainSum)->Apply(settings);
BENCHMARK(MultiplyArrays)->Apply(settings);
BENCHMARK(PlainProducts)->Apply(settings);
BENCHMARK(VectorSum)->Apply(settings)->Arg(0)->Arg(1);
BENCHMARK(PlainVectorSum)->Apply(settings)->Arg(0)->Arg(1);

}  // namespace
}  // namespace zorv
