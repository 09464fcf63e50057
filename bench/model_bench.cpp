// Compilation of a quadratic model, beside a plain copy of the tables that it makes.
#include <benchmark/benchmark.h>

#include <memory>

#include "model/model.h"
#include "support/quadratic.h"

namespace zorv {
namespace {

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
