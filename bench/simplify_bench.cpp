// Model building: products, and the merge of their terms into a canonical expression, through the
// exports. Every case stands beside two yardsticks of as many items in random order: the block sort
// alone on 48-byte records, and std::sort on 64-bit keys.
//
// Times are of building alone; the blocks of the last round are freed outside the clock.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <boost/sort/sort.hpp>
#include <chrono>
#include <random>
#include <vector>

#include "core/coeff_wire.h"
#include "core/parallel.h"
#include "core/term.h"
#include "zorv/zorv.h"

namespace {

using Clock = std::chrono::steady_clock;

// A warm-up, so that memory is recycled as it is in a process that builds more than one model, and
// at least a second of rounds.
void settings(benchmark::internal::Benchmark* b) {
  b->UseManualTime()->Unit(benchmark::kMillisecond)->MinWarmUpTime(0.5)->MinTime(1.0);
}

const CoeffWire* small_wire(int64_t value) {
  static uint64_t limb;
  static CoeffWire wire;
  limb = static_cast<uint64_t>(value < 0 ? -value : value);
  wire = {value < 0 ? -1 : 1, value == 0 ? 0u : 1u, &limb};
  return &wire;
}

uint32_t variables(uint64_t n) { return zorv_new_var_array("x", &n, 1); }

zorv_expr* sum_of(uint32_t base, uint64_t n) {
  zorv_expr* e = zorv_expr_create();
  for (uint64_t i = 0; i < n; ++i) zorv_expr_iadd_var(e, base + static_cast<uint32_t>(i));
  return e;
}

// Runs build() to a product, simplifies it as binary, and reports both parts.
template <typename Build>
void build_and_simplify(benchmark::State& state, Build build) {
  double build_seconds = 0;
  uint64_t products = 0;
  for (auto _ : state) {
    const auto start = Clock::now();
    zorv_expr* product = build();
    const auto built = Clock::now();
    zorv_expr* simplified = zorv_expr_simplify_as_binary(product);
    const auto end = Clock::now();
    state.SetIterationTime(std::chrono::duration<double>(end - start).count());
    build_seconds += std::chrono::duration<double>(built - start).count();
    products = zorv_expr_term_count(product);
    zorv_expr_destroy(product);
    zorv_expr_destroy(simplified);
  }
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  state.counters["products"] = static_cast<double>(products);
  state.counters["build_s"] = build_seconds / static_cast<double>(state.iterations());
  state.counters["peak/block"] = static_cast<double>(usage.ru_maxrss) * 1024 /
                                 (static_cast<double>(products) * sizeof(zorv::TermImpl));
}

void SquareOfSum(benchmark::State& state) {
  zorv_expr* sum = sum_of(variables(state.range(0)), state.range(0));
  zorv_expr_isub_int(sum, small_wire(1));
  build_and_simplify(state, [&] { return zorv_expr_sqr(sum); });
  zorv_expr_destroy(sum);
}
BENCHMARK(SquareOfSum)->Arg(1000)->Arg(2000)->Arg(4000)->Apply(settings);

void ProductOfSums(benchmark::State& state) {
  zorv_expr* a = sum_of(variables(state.range(0)), state.range(0));
  zorv_expr* b = sum_of(variables(state.range(0)), state.range(0));
  build_and_simplify(state, [&] { return zorv_expr_mul_expr(a, b); });
  zorv_expr_destroy(a);
  zorv_expr_destroy(b);
}
BENCHMARK(ProductOfSums)->Arg(2000)->Apply(settings);

// The same sum on both sides, so that every quadratic term comes twice and out of order.
void ProductWithItself(benchmark::State& state) {
  zorv_expr* a = sum_of(variables(state.range(0)), state.range(0));
  build_and_simplify(state, [&] { return zorv_expr_mul_expr(a, a); });
  zorv_expr_destroy(a);
}
BENCHMARK(ProductWithItself)->Arg(2000)->Apply(settings);

void RandomDegree4(benchmark::State& state) {
  const uint64_t n = state.range(0);
  const uint32_t base = variables(200);
  std::mt19937_64 random(1);
  std::vector<uint64_t> limbs(n);
  std::vector<CoeffWire> coeffs(n);
  std::vector<uint32_t> degrees(n, 4), literals(4 * n);
  for (uint64_t i = 0; i < n; ++i) {
    limbs[i] = random() % 1000 + 1;
    coeffs[i] = {random() % 2 ? 1 : -1, 1, &limbs[i]};
  }
  for (uint32_t& literal : literals) literal = base + static_cast<uint32_t>(random() % 200);
  build_and_simplify(state, [&] {
    return zorv_expr_create_from_bulk(small_wire(0), n, coeffs.data(), degrees.data(),
                                      literals.data());
  });
}
BENCHMARK(RandomDegree4)->Arg(1000000)->Apply(settings);

void SquareOfWideCoefficients(benchmark::State& state) {
  const uint64_t n = state.range(0);
  const uint32_t base = variables(n);
  std::mt19937_64 random(1);
  std::vector<uint64_t> limbs(4 * n);
  std::vector<CoeffWire> coeffs(n);
  std::vector<uint32_t> degrees(n, 1), literals(n);
  for (uint64_t i = 0; i < n; ++i) {
    for (int l = 0; l < 4; ++l) limbs[4 * i + l] = l == 3 ? random() >> 56 | 0x80 : random();
    coeffs[i] = {1, 4, &limbs[4 * i]};
    literals[i] = base + static_cast<uint32_t>(i);
  }
  zorv_expr* sum =
      zorv_expr_create_from_bulk(small_wire(0), n, coeffs.data(), degrees.data(), literals.data());
  build_and_simplify(state, [&] { return zorv_expr_sqr(sum); });
  zorv_expr_destroy(sum);
}
BENCHMARK(SquareOfWideCoefficients)->Arg(500)->Apply(settings);

// The square of 4000 variables, its products handed over in flat arrays.
void BulkSquare(benchmark::State& state) {
  const uint64_t n = state.range(0);
  const uint32_t base = variables(n);
  std::vector<uint32_t> literals, degrees;
  uint64_t two = 2;
  for (uint64_t i = 0; i < n; ++i) {
    for (uint64_t j = i; j < n; ++j) {
      literals.push_back(base + static_cast<uint32_t>(i));
      literals.push_back(base + static_cast<uint32_t>(j));
      degrees.push_back(2);
    }
  }
  const std::vector<CoeffWire> coeffs(degrees.size(), CoeffWire{1, 1, &two});
  build_and_simplify(state, [&] {
    zorv_expr* e = zorv_expr_create();
    zorv_expr_iadd_terms_bulk(e, small_wire(1), degrees.size(), coeffs.data(), degrees.data(),
                              literals.data());
    return e;
  });
}
BENCHMARK(BulkSquare)->Arg(4000)->Apply(settings);

struct Record {
  uint64_t coeff[4];
  uint64_t key;
  uint64_t overflow;
};
static_assert(sizeof(Record) == sizeof(zorv::TermImpl));

template <typename Item, typename Make, typename Sort>
void sort_yardstick(benchmark::State& state, Make make, Sort sort) {
  const uint64_t n = state.range(0);
  std::mt19937_64 random(1);
  std::vector<Item> items(n);
  for (auto _ : state) {
    for (Item& item : items) item = make(random());
    const auto start = Clock::now();
    sort(items);
    state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
  }
}

void YardstickBlockSort(benchmark::State& state) {
  sort_yardstick<Record>(
      state,
      [](uint64_t key) {
        return Record{{1, 0, 1, 0}, key, 0};
      },
      [](std::vector<Record>& records) {
        boost::sort::block_indirect_sort(
            records.begin(), records.end(),
            [](const Record& a, const Record& b) { return a.key < b.key; }, zorv::num_threads());
      });
}
BENCHMARK(YardstickBlockSort)
    ->Arg(501500)
    ->Arg(1000000)
    ->Arg(2003000)
    ->Arg(4000000)
    ->Arg(8006000)
    ->Apply(settings);

void YardstickStdSort(benchmark::State& state) {
  sort_yardstick<uint64_t>(
      state, [](uint64_t key) { return key; },
      [](std::vector<uint64_t>& keys) { std::sort(keys.begin(), keys.end()); });
}
BENCHMARK(YardstickStdSort)
    ->Arg(501500)
    ->Arg(1000000)
    ->Arg(2003000)
    ->Arg(4000000)
    ->Arg(8006000)
    ->Apply(settings);

}  // namespace
