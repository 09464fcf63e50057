// The native integer search: proposals per second on ft06, a job shop of 6 jobs on 6 machines, in
// both number types; the colouring of graphs from 50 to 100,000 nodes, with and without the default
// callback; and lists of equally good colourings.
#include <benchmark/benchmark.h>

#include <atomic>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "capi/handles.h"
#include "solvers/int_search.h"

namespace zorv {
namespace {

constexpr size_t kJobs = 6, kMachines = 6;
constexpr int kHorizon = 55;

struct Operation {
  int machine, duration;
};

constexpr Operation kFt06[kJobs][kMachines] = {
    {{2, 1}, {0, 3}, {1, 6}, {3, 7}, {5, 3}, {4, 6}},
    {{1, 8}, {2, 5}, {4, 10}, {5, 10}, {0, 10}, {3, 4}},
    {{2, 5}, {3, 4}, {5, 8}, {0, 9}, {1, 1}, {4, 7}},
    {{1, 5}, {0, 5}, {2, 5}, {3, 3}, {4, 8}, {5, 9}},
    {{2, 9}, {1, 3}, {4, 5}, {5, 4}, {0, 3}, {3, 1}},
    {{1, 3}, {3, 3}, {5, 9}, {0, 10}, {4, 4}, {2, 1}},
};

// A number to hand in; lives to the end of the call.
class Wire {
 public:
  Wire(int value) : limb_(value < 0 ? -value : value) {
    wire_ = {(value > 0) - (value < 0), value == 0 ? 0u : 1u, &limb_};
  }
  operator const CoeffWire*() const { return &wire_; }

 private:
  uint64_t limb_;
  CoeffWire wire_;
};

// The model as a caller of the C interface makes it: precedence as ranges, machines as one of two
// intervals for each pair of operations, and the makespan as the objective.
class Ft06 {
 public:
  Ft06() {
    add_variables();
    zorv_expr* energy = zorv_expr_create_var(makespan_);
    for (size_t job = 0; job < kJobs; ++job) add_order(job, energy);
    for (size_t a = 0; a < kJobs * kMachines; ++a) {
      for (size_t b = 0; b < a; ++b) add_conflict(a, b, energy);
    }
    zorv_expr* simple = zorv_expr_simplify_as_binary(energy);
    model_ = zorv_model_create(simple);
    zorv_expr_destroy(simple);
    zorv_expr_destroy(energy);
  }
  ~Ft06() { zorv_model_destroy(model_); }

  const ModelImpl& model() const { return *unwrap(model_); }

 private:
  static const Operation& operation(size_t i) { return kFt06[i / kMachines][i % kMachines]; }

  void add_variables() {
    for (const auto& job : kFt06) {
      int earliest = 0, latest = kHorizon;
      for (const Operation& operation : job) latest -= operation.duration;
      for (const Operation& operation : job) {
        starts_.push_back(zorv_new_int_var("start", Wire(earliest), Wire(latest)));
        earliest += operation.duration;
        latest += operation.duration;
      }
    }
    makespan_ = zorv_new_int_var("makespan", Wire(kHorizon - 8), Wire(kHorizon));
  }

  static void add_rule(zorv_expr* energy, zorv_expr* body, zorv_expr* rule) {
    zorv_expr_iadd_expr(energy, rule);
    zorv_expr_destroy(rule);
    zorv_expr_destroy(body);
  }

  static zorv_expr* difference(uint32_t later, uint32_t earlier) {
    zorv_expr* body = zorv_expr_create_var(later);
    zorv_expr_isub_var(body, earlier);
    return body;
  }

  void add_order(size_t job, zorv_expr* energy) const {
    for (size_t k = 0; k < kMachines; ++k) {
      const size_t i = job * kMachines + k;
      zorv_expr* body = difference(k + 1 < kMachines ? starts_[i + 1] : makespan_, starts_[i]);
      add_rule(energy, body, zorv_cons_between(body, Wire(operation(i).duration), Wire(kHorizon)));
    }
  }

  void add_conflict(size_t a, size_t b, zorv_expr* energy) const {
    if (operation(a).machine != operation(b).machine || a / kMachines == b / kMachines) return;
    const Wire least(-kHorizon), a_first(-operation(a).duration), b_first(operation(b).duration);
    const Wire most(kHorizon);
    const CoeffWire lows[] = {*static_cast<const CoeffWire*>(least),
                              *static_cast<const CoeffWire*>(b_first)};
    const CoeffWire highs[] = {*static_cast<const CoeffWire*>(a_first),
                               *static_cast<const CoeffWire*>(most)};
    zorv_expr* body = difference(starts_[a], starts_[b]);
    add_rule(energy, body, zorv_cons_equal(body, lows, highs, 2));
  }

  std::vector<uint32_t> starts_;
  uint32_t makespan_;
  zorv_model* model_;
};

// A fixed number of rounds, so that every run and both number types make the same moves.
struct RoundLimit {
  std::atomic<int> rounds_left;
  std::atomic<uint8_t> stop{0};

  static bool begin_round(void* ctx, uint32_t, uint64_t*, coeff_t*) {
    RoundLimit& self = *static_cast<RoundLimit*>(ctx);
    if (self.rounds_left.fetch_sub(1) <= 0) self.stop = 1;
    return false;
  }
};

void Search(benchmark::State& state, bool is_wide) {
  static const Ft06 ft06;
  const auto threads = static_cast<uint32_t>(state.range(0));
  double proposals = 0;
  for (auto _ : state) {
    RoundLimit limit{static_cast<int>(threads * (is_wide ? 2 : 20))};
    IntSearchOpts opts;
    opts.seed = 1;
    opts.threads = threads;
    opts.time_limit = 1e9;
    opts.force_wide_numbers = is_wide;
    opts.external_stop = &limit.stop;
    opts.next_hint = RoundLimit::begin_round;
    opts.next_hint_ctx = &limit;
    const SearchResult result = easy_int_search(ft06.model(), opts);
    for (const InfoEntry& entry : result.info) {
      if (entry.key == "proposals") proposals += std::stod(entry.value);
    }
  }
  state.counters["proposals"] = benchmark::Counter(proposals, benchmark::Counter::kIsRate);
}

void MachineIntegers(benchmark::State& state) { Search(state, false); }
void UnboundedIntegers(benchmark::State& state) { Search(state, true); }

void threads(benchmark::internal::Benchmark* b) {
  b->ArgName("threads")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(MachineIntegers)->Apply(threads);
BENCHMARK(UnboundedIntegers)->Apply(threads);

// A random graph with four edges a node, in five colours that must differ along each edge.
ModelImpl colouring(uint32_t nodes) {
  constexpr int kColours = 5;
  std::mt19937_64 random(nodes);
  ModelImpl model(ExprImpl{}, 1.0, nullptr);
  for (uint32_t i = 0; i < nodes; ++i) model.int_atoms.push_back(i);
  model.int_lo.assign(nodes, 0);
  model.int_hi.assign(nodes, kColours - 1);
  while (model.native_cons.size() < size_t{4} * nodes) {
    const auto a = static_cast<uint32_t>(random() % nodes);
    const auto b = static_cast<uint32_t>(random() % nodes);
    if (a == b) continue;
    NativeCons& edge = model.native_cons.emplace_back();
    edge.weight = 1;
    edge.vars = {a | kAtomBit, b | kAtomBit};
    edge.coeffs = {1, -1};
    edge.allowed = {{1 - kColours, -1}, {1, kColours - 1}};
    edge.lo = 1 - kColours;
    edge.hi = kColours - 1;
  }
  return model;
}

// Forgets what is written to it.
class NullBuffer : public std::streambuf {
  int overflow(int c) override { return c; }
  std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

// One search on one thread, from a random state until no edge is violated or the time is up.
void Colouring(benchmark::State& state) {
  const ModelImpl model = colouring(static_cast<uint32_t>(state.range(0)));
  IntSearchOpts opts;
  opts.time_limit = 60.0;
  opts.has_target = true;
  opts.enable_default_callback = state.range(1) != 0;
  double proposals = 0;
  NullBuffer nowhere;
  std::streambuf* const output = std::cout.rdbuf(&nowhere);
  for (auto _ : state) {
    opts.seed += 1;
    const SearchResult result = easy_int_search(model, opts);
    state.counters["violated"] = static_cast<double>(result.energy);
    for (const InfoEntry& entry : result.info) {
      if (entry.key == "proposals") proposals += std::stod(entry.value);
    }
  }
  std::cout.rdbuf(output);
  state.counters["proposals"] = benchmark::Counter(proposals, benchmark::Counter::kIsRate);
}

// All optima of a model with few rules, which the walks come upon again and again.
void Ties(benchmark::State& state) {
  ModelImpl model = colouring(static_cast<uint32_t>(state.range(0)));
  model.native_cons.resize(model.native_cons.size() / 2);
  double proposals = 0, listed = 0;
  for (auto _ : state) {
    RoundLimit limit{1};
    IntSearchOpts opts;
    opts.seed = 1;
    opts.time_limit = 1e9;
    opts.has_best_energy_sols = true;
    opts.external_stop = &limit.stop;
    opts.next_hint = RoundLimit::begin_round;
    opts.next_hint_ctx = &limit;
    const SearchResult result = easy_int_search(model, opts);
    listed += static_cast<double>(result.topk.size());
    for (const InfoEntry& entry : result.info) {
      if (entry.key == "proposals") proposals += std::stod(entry.value);
    }
  }
  state.counters["listed"] = benchmark::Counter(listed, benchmark::Counter::kAvgIterations);
  state.counters["proposals"] = benchmark::Counter(proposals, benchmark::Counter::kIsRate);
}

BENCHMARK(Ties)->ArgName("nodes")->Arg(10)->Arg(20)->Arg(40)->Iterations(1)->Unit(
    benchmark::kMillisecond);

BENCHMARK(Colouring)
    ->ArgNames({"nodes", "callback"})
    ->ArgsProduct({{50, 1'000, 10'000, 100'000}, {0, 1}})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zorv
