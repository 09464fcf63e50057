// The engine on one kind of fields: the threads of a search and what each of them does in turn.
#pragma once

#include <algorithm>
#include <new>

#include "common/literal.h"
#include "easysolver/annealing.h"
#include "easysolver/elite_pool.h"
#include "easysolver/engine.h"
#include "easysolver/portfolio.h"
#include "zorv/engine/mutex.h"
#include "zorv/engine/thread_team.h"

namespace zorv::plugin::easy {

template <typename Fields>
class EngineOf final : public Engine {
 public:
  using Energy = typename State<Fields>::Energy;

  EngineOf(typename Fields::Table table, BodyTable<Energy> bodies, Energy at_zeros, EnergyUnit unit,
           Groups groups, const char* numbers)
      : table_(std::move(table)),
        bodies_(std::move(bodies)),
        at_zeros_(std::move(at_zeros)),
        unit_(std::move(unit)),
        groups_(std::move(groups)),
        numbers_(numbers) {}

  void search(SharedSearch& shared, const SearchParams& params, const uint64_t* hint) override {
    Run run(shared, *params.seed);
    ThreadTeam team(std::min(params.threads, kMostThreads) - 1,
                    [&](uint32_t t) { help(run, t + 1); });
    WalkOf walk = new_walk(run, 0);
    if (hint != nullptr) {
      start_from(walk, hint);
    } else {
      walk.randomize();
    }
    explore(run, walk);
    team.join();
    settle(run, walk);
    run.add(walk);
    facts_ = run.facts(numbers_, team.size() + 1);
  }

  Facts facts() const override { return facts_; }

 private:
  using WalkOf = Walk<Fields>;
  static constexpr size_t kElites = 12;

  // What the threads of one search share.
  class Run {
   public:
    Run(SharedSearch& shared, uint64_t seed) : shared(shared), seed(seed), elites(kElites) {}

    void add(const WalkOf& walk) {
      const MutexLock lock(mutex_);
      flips_ += walk.state.flips();
      sweeps_ += walk.sweeps;
      restarts_ += walk.restarts;
    }
    Facts facts(const char* numbers, uint32_t threads) {
      const MutexLock lock(mutex_);
      return {{"flips", std::to_string(flips_)},
              {"sweeps", std::to_string(sweeps_)},
              {"restarts", std::to_string(restarts_)},
              {"numbers", numbers},
              {"threads", std::to_string(threads)}};
    }

    SharedSearch& shared;
    const uint64_t seed;
    Population<Energy> population;
    ElitePool<Energy> elites;

   private:
    Mutex mutex_;
    uint64_t flips_ ZORV_GUARDED_BY(mutex_) = 0;
    uint64_t sweeps_ ZORV_GUARDED_BY(mutex_) = 0;
    uint64_t restarts_ ZORV_GUARDED_BY(mutex_) = 0;
  };

  WalkOf new_walk(Run& run, uint32_t t) const {
    return WalkOf(State<Fields>(table_, bodies_, at_zeros_), unit_, run.seed + t, run.shared);
  }

  static void start_from(WalkOf& walk, const uint64_t* hint) {
    for (uint32_t i = 0; i < walk.size(); ++i) {
      if (bit_at(hint, i)) walk.state.flip(i);
    }
  }

  void explore(Run& run, WalkOf& walk) const {
    walk.note();
    Portfolio<Fields>(walk, run.population, run.elites, groups_).run();
  }

  // All threads but the first, which the search can do without: one that comes too late, or for
  // which there is no memory, leaves it to the others.
  void help(Run& run, uint32_t t) const {
    if (run.shared.time_is_up()) return;
    try {
      WalkOf walk = new_walk(run, t);
      walk.randomize();
      explore(run, walk);
      run.add(walk);
    } catch (const std::bad_alloc&) {
    }
  }

  // Whatever ended the search, and wherever: the result is a state that no flip improves.
  static void settle(Run& run, WalkOf& walk) {
    const Solution best = run.shared.best();
    for (uint32_t i = 0; i < walk.size(); ++i) {
      if (walk.state.is_one(i) != bit_at(best.bits.data(), i)) walk.state.flip(i);
    }
    while (descend_once(walk.state)) continue;
    walk.offer();
  }

  const typename Fields::Table table_;
  const BodyTable<Energy> bodies_;
  const Energy at_zeros_;
  const EnergyUnit unit_;
  const Groups groups_;
  const char* const numbers_;
  Facts facts_;
};

}  // namespace zorv::plugin::easy
