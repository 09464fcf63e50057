// What a thread does from its first state to the end of the search: annealing and tabu search by
// turns, by the work that each has had, most of it to the one that has come to lower energies.
//
// Measured on public instances: annealing is the better one on sparse and large models and with
// moves in groups, tabu search and path relinking on dense ones of up to a few thousand variables
// and on low autocorrelation sequences. No choice depends on the clock, so that a search with one
// thread repeats.
#pragma once

#include <optional>

#include "easysolver/breeding.h"
#include "easysolver/elite_pool.h"
#include "easysolver/path_relinking.h"
#include "easysolver/tabu.h"

namespace zorv::plugin::easy {

template <typename Fields>
class Portfolio {
 public:
  using Energy = typename Walk<Fields>::Energy;

  Portfolio(Walk<Fields>& walk, Population<Energy>& population, ElitePool<Energy>& elites,
            const Groups& groups)
      : walk_(walk),
        elites_(elites),
        exchanges_(groups),
        breeding_(walk, population, exchanges_),
        memory_(walk.size()) {}

  void run() {
    if (walk_.size() == 0 || walk_.time_is_up()) return;
    descend(walk_);
    walk_.note_neighbours();
    keep(anneal_);
    restart(walk_, exchanges_);
    breeding_.measure();
    most_for_tabu_ = most_for_tabu();
    while (!walk_.must_stop(0)) {
      Method& method = choose();
      const uint64_t before = walk_.work();
      ++walk_.restarts;
      if (&method == &anneal_) {
        breeding_.anneal_once();
      } else {
        tabu_once();
      }
      method.work += static_cast<double>(walk_.work() - before);
      keep(method);
      if (walk_.keeps_lists()) wander();
    }
  }

 private:
  struct Method {
    double work = 0, work_to_best = 0;
    std::optional<Energy> best;

    bool is_ahead_of(const Method& other) const {
      if (*best == *other.best) return work_to_best < other.work_to_best;
      return *best < *other.best;
    }
  };
  static constexpr uint32_t kMostForTabu = 20'000;  // above, a look at all flips takes too long
  // Moves without a new best that end a tabu search, times the variables; 5 took twice as long.
  static constexpr uint64_t kPatience = 20;
  static constexpr size_t kElitesToRelink = 8;

  Method& choose() {
    if (walk_.size() > kMostForTabu) return anneal_;
    double share = most_for_tabu_ / 2;
    if (tabu_.best && anneal_.best && tabu_.is_ahead_of(anneal_)) share = most_for_tabu_;
    return tabu_.work * (1 - share) <= anneal_.work * share ? tabu_ : anneal_;
  }

  // The share of the work that tabu search gets where it is ahead. Single flips do not get far in
  // groups, nor along constraints; and on sparse models a look at all of them costs far more than
  // the flip that it finds.
  double most_for_tabu() const {
    if (exchanges_.has_rows() || is_constrained(walk_.state, exchanges_)) return 0.1;
    uint64_t flips = 0;
    for (uint32_t i = 0; i < walk_.size(); ++i) flips += walk_.state.fields().work_of_flip(i);
    const uint64_t looks = uint64_t{walk_.size()} * walk_.size() / kLanes;
    return looks > 8 * flips ? 0.1 : 0.9;
  }

  void tabu_once() {
    if (elites_.size() < kElitesToRelink || walk_.random.below(3) == 0) {
      restart(walk_, exchanges_);
    } else {
      elites_.draw_two(walk_.random, from_, to_);
      relink(walk_, from_.x, to_.x);
    }
    tabu_search(walk_, memory_, kPatience * walk_.size());
    // Results of annealing stay out: with them a low autocorrelation sequence of 40 took ten times
    // as long.
    elites_.offer(walk_.state.x(), walk_.size(), walk_.state.energy());
  }

  // For lists: what lies around the result, which a search for the best alone passes by.
  void wander() {
    constexpr uint32_t kSteps = 32;
    for (uint32_t step = 0; step < std::min(kSteps, walk_.size()); ++step) {
      walk_.state.flip(walk_.random.below(walk_.size()));
      walk_.note_neighbours();
      if (walk_.must_stop(walk_.size())) return;
    }
  }

  void keep(Method& method) {
    const Energy& energy = walk_.state.energy();
    if (!method.best || energy < *method.best) {
      method.best = energy;
      method.work_to_best = method.work;
    }
  }

  Walk<Fields>& walk_;
  ElitePool<Energy>& elites_;
  Exchanges<Fields> exchanges_;
  Breeding<Fields> breeding_;
  TabuMemory memory_;
  Method anneal_, tabu_;
  typename ElitePool<Energy>::Elite from_, to_;
  double most_for_tabu_ = 0;
};

}  // namespace zorv::plugin::easy
