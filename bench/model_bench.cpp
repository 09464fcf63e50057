// Compilation of a quadratic model, beside a plain copy of the tables that it makes.
#include <benchmark/benchmark.h>

#include <memory>

#include "core/expr.h"
#include "core/var_registry.h"
#include "model/model.h"

namespace zorv {
namespace {

constexpr uint64_t kVariables = 10'000;

uint32_t first_variable() {
  static const uint32_t first = new_var_array("x", &kVariables, 1);
  return first;
}

// `n` different terms c*x_i*x_j in term order, i over all variables, j spread behind i.
ExprImpl quadratic(uint64_t n) {
  const uint32_t x = first_variable();
  const uint64_t stride = std::max<uint64_t>(1, kVariables * (kVariables - 1) / 2 / n);
  ExprImpl e;
  e.list.allocate_slots(n);
  uint64_t made = 0;
  for (uint64_t i = 0; made < n; ++i) {
    for (uint64_t j = i + 1 + i % stride; j < kVariables && made < n; j += stride) {
      const auto a = static_cast<uint32_t>(x + i);
      const auto b = static_cast<uint32_t>(x + j);
      new (e.list.slot(made)) TermImpl(static_cast<int64_t>(made % 2001) - 2000, VarList(a, b));
      ++made;
    }
  }
  e.list.commit_slots(made);
  return e;
}

uint64_t table_bytes(const ModelImpl& m) {
  uint64_t bytes = 0;
  for (uint64_t d = 0; d < m.max_degree; ++d) {
    bytes += m.term_vars[d].size() * sizeof(uint32_t) + m.term_coeffs[d].size() * sizeof(coeff_t);
  }
  return bytes;
}

void report(benchmark::State& state, uint64_t bytes) {
  state.counters["bytes"] = static_cast<double>(bytes);
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void CompileModel(benchmark::State& state) {
  const ExprImpl e = quadratic(state.range(0));
  uint64_t bytes = 0;
  for (auto _ : state) {
    const auto model = std::make_unique<const ModelImpl>(e, 1.0, nullptr);
    bytes = table_bytes(*model);
    benchmark::DoNotOptimize(model->term_coeffs.data());
  }
  report(state, bytes);
}

void CopyTables(benchmark::State& state) {
  const ModelImpl model(quadratic(state.range(0)), 1.0, nullptr);
  for (auto _ : state) {
    const std::vector<std::vector<uint32_t>> vars = model.term_vars;
    const std::vector<std::vector<coeff_t>> coeffs = model.term_coeffs;
    benchmark::DoNotOptimize(vars.data());
    benchmark::DoNotOptimize(coeffs.data());
  }
  report(state, table_bytes(model));
}

void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(10'000)->Arg(1'000'000)->Arg(10'000'000);
  b->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(CompileModel)->Apply(sizes);
BENCHMARK(CopyTables)->Apply(sizes);

}  // namespace
}  // namespace zorv
