#include "solvers/int_search.h"

#include <cassert>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

#include "core/fatal.h"
#include "solvers/host_info.h"
#include "solvers/round_thread.h"
#include "solvers/search_bounds.h"
#include "solvers/search_core.h"
#include "solvers/search_params.h"
#include "solvers/search_worker.h"
#include "zorv/engine/mutex.h"
#include "zorv/engine/thread_team.h"

namespace zorv {

namespace {

constexpr std::chrono::milliseconds kPollPeriod{20};

void check_hint(const ModelImpl& model, const IntSearchOpts& opts, const coeff_t* hint_ints,
                uint64_t hint_int_count) {
  if (hint_int_count != model.int_lo.size()) {
    fatal(opts.solver_name, ": hint integer-variable count mismatch.");
  }
  for (size_t j = 0; j < model.int_lo.size(); ++j) {
    if (hint_ints[j] < model.int_lo[j] || model.int_hi[j] < hint_ints[j]) {
      fatal(opts.solver_name, ": hint value outside the integer variable's bounds.");
    }
  }
}

// The workers of a search on threads of their own. The calling thread waits for them in short
// turns, because it also serves the timer.
class WorkerThreads {
 public:
  explicit WorkerThreads(IntSearchCore& core) : core_(core) {}

  // Returns how many threads there were: as many as asked for, unless the system had fewer to give.
  uint32_t run(const std::function<void(uint32_t)>& work) {
    const ThreadTeam team(core_.opts.threads, [this, &work](uint32_t thread) {
      work(thread);
      const MutexLock lock(mutex_);
      ++ended_;
      last_end_.notify_one();
    });
    if (team.size() == 0 && core_.opts.threads > 0) {
      work(0);
      return 1;
    }
    serve_timer_until_ended(team.size());
    return team.size();
  }

 private:
  void serve_timer_until_ended(uint32_t threads) try {
    while (!wait_for_end(threads)) core_.serve_timer();
  } catch (...) {
    // What a callback throws passes on to the caller, after the threads have ended.
    core_.stop.store(1, std::memory_order_relaxed);
    throw;
  }

  // Waits for one turn at most.
  bool wait_for_end(uint32_t threads) {
    const auto end_of_turn = std::chrono::steady_clock::now() + kPollPeriod;
    const MutexLock lock(mutex_);
    while (ended_ < threads) {
      if (!last_end_.wait_until(mutex_, end_of_turn)) break;
    }
    return ended_ >= threads;
  }

  IntSearchCore& core_;
  Mutex mutex_;
  Condition last_end_;
  uint32_t ended_ ZORV_GUARDED_BY(mutex_) = 0;  // workers that have come to their end
};

// Returns the number of threads.
uint32_t run_workers(IntSearchCore& core, const std::function<void(uint32_t)>& work) {
  if (core.opts.threads >= 2 || core.opts.callback != nullptr) return WorkerThreads(core).run(work);
  work(0);
  return 1;
}

// The incremental energies of the best state must come to what the definition says.
void check_best(const IntSearchCore& core) {
  const MutexLock lock(core.mutex);
  if (!core.has_best) {
    fatal(core.opts.solver_name, ": internal error — integer engine produced no solution.");
  }
  const std::vector<coeff_t> state = core.read_best();
  const std::vector<uint64_t> words = words_of(core.model, state);
  const std::vector<coeff_t> ints = ints_of(core.model, state);
  if (full_energy(core.model, words.data(), ints.data()) != core.best_energy) {
    fatal(core.opts.solver_name,
          ": internal error — best-state energy mismatch in integer engine.");
  }
}

SearchResult make_result(const IntSearchCore& core, uint32_t threads) {
  const ModelImpl& model = core.model;
  const MutexLock lock(core.mutex);
  SearchResult result;
  result.energy = core.best_energy;
  result.tts = core.best_tts;
  result.scale = model.scale;
  const std::vector<coeff_t> best = core.read_best();
  result.bits = words_of(model, best);
  result.ints = ints_of(model, best);
  for (const PoolEntry& entry : core.pool.entries()) {
    const std::vector<coeff_t> state = entry.kept.read();
    result.topk.push_back({entry.energy, entry.tts, words_of(model, state), ints_of(model, state)});
  }
  add_run_time(result, core.elapsed_seconds());
  add_info(result, "threads", std::to_string(threads));
  add_info(result, "rounds", std::to_string(core.rounds.load()));
  add_info(result, "proposals", std::to_string(core.proposals.load()));
  add_info(result, "engine", core.opts.round_handle != nullptr ? "integer-cpu+gpu" : "integer-cpu");
  add_host_info(result);
  return result;
}

// The round thread of a search, if it has one, from here to the end of the scope.
template <typename Number>
class RoundsBeside {
 public:
  RoundsBeside(IntSearchCore& core, const SearchTables<Number>& tables) : rounds_(core, tables) {
    if (core.opts.round_handle != nullptr && core.opts.round_fn != nullptr) {
      thread_.emplace(1, [this](uint32_t) { rounds_.run(); });
    }
  }
  ~RoundsBeside() {
    if (!thread_) return;
    thread_->join();
    if (std::getenv("ZORV_KLB5_INT_DEBUG") == nullptr) return;
    std::cerr << "[klb5-int-gpu] rounds=" << rounds_.rounds()
              << " submissions=" << rounds_.submissions() << "\n";
  }

 private:
  RoundThread<Number> rounds_;
  std::optional<ThreadTeam> thread_;
};

template <typename Number>
SearchResult search_with(const ModelImpl& model, const IntSearchOpts& opts) {
  const SearchTables<Number> tables(model);
  IntSearchCore core(model, opts);
  core.fire_start_event();
  uint32_t threads = 0;
  {
    const RoundsBeside<Number> rounds(core, tables);
    threads = run_workers(
        core, [&](uint32_t thread) { SearchWorker<Number>(core, tables, thread).run(); });
  }
  check_best(core);
  return make_result(core, threads);
}

}  // namespace

SearchResult run_int_search(const ModelImpl& model, IntSearchOpts opts, const ParamPair* params,
                            const uint64_t* hint_bits, const coeff_t* hint_ints,
                            uint64_t hint_int_count) {
  opts.seed = default_seed();
  opts.threads = default_thread_count();
  read_search_params(params, opts);
  if (hint_bits != nullptr) {
    check_hint(model, opts, hint_ints, hint_int_count);
    opts.hint_bits = hint_bits;
    opts.hint_ints = hint_ints;
  }
  return easy_int_search(model, opts);
}

SearchResult easy_int_search(const ModelImpl& model, const IntSearchOpts& opts) {
  assert(!model.variables.empty() || !model.int_lo.empty());
  const bool is_wide = opts.force_wide_numbers || !fits_machine_integers(model);
  return is_wide ? search_with<coeff_t>(model, opts) : search_with<int64_t>(model, opts);
}

}  // namespace zorv
