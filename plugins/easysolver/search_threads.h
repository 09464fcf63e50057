// The engine on one kind of fields: the threads of a search and what each of them does in turn.
#pragma once

#include <thread>

#include "common/literal.h"
#include "easysolver/annealing.h"
#include "easysolver/elite_pool.h"
#include "easysolver/engine.h"
#include "easysolver/portfolio.h"

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
    tally_ = {};
    Population<Energy> population;
    ElitePool<Energy> elites(kElites);
    std::vector<std::thread> threads;
    std::vector<Tally> tallies(params.threads);
    const auto run = [&](uint32_t t) {
      Walk<Fields> walk(State<Fields>(table_, bodies_, at_zeros_), unit_, *params.seed + t, shared);
      if (t == 0 && hint != nullptr) {
        start_from(walk, hint);
      } else {
        walk.randomize();
      }
      walk.note();
      Portfolio<Fields>(walk, population, elites, groups_).run();
      tallies[t] = {walk.state.flips(), walk.sweeps, walk.restarts};
    };
    for (uint32_t t = 1; t < params.threads; ++t) threads.emplace_back(run, t);
    run(0);
    for (std::thread& thread : threads) thread.join();
    for (const Tally& tally : tallies) {
      tally_.flips += tally.flips;
      tally_.sweeps += tally.sweeps;
      tally_.restarts += tally.restarts;
    }
  }

  Facts facts() const override {
    return {{"flips", std::to_string(tally_.flips)},
            {"sweeps", std::to_string(tally_.sweeps)},
            {"restarts", std::to_string(tally_.restarts)},
            {"numbers", numbers_}};
  }

 private:
  static constexpr size_t kElites = 12;
  struct Tally {
    uint64_t flips = 0, sweeps = 0, restarts = 0;
  };

  static void start_from(Walk<Fields>& walk, const uint64_t* hint) {
    for (uint32_t i = 0; i < walk.size(); ++i) {
      if (bit_at(hint, i)) walk.state.flip(i);
    }
  }

  const typename Fields::Table table_;
  const BodyTable<Energy> bodies_;
  const Energy at_zeros_;
  const EnergyUnit unit_;
  const Groups groups_;
  const char* const numbers_;
  Tally tally_;
};

}  // namespace zorv::plugin::easy
