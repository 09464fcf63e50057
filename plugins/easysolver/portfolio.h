// What a thread does from its first state to the end of the search: annealing and tabu search by
// turns, by the work that each has had, most of it to the one that has come to lower energies.
//
// Measured on public instances: annealing is the better one on sparse and large models and with
// moves in groups, tabu search and path relinking on dense ones of up to a few thousand variables
// and on low autocorrelation sequences. No choice depends on the clock, so that a search with one
// thread repeats.
//
// Annealing breeds: its starts are children of two earlier results, with random values where these
// differ. Against starts from nowhere, after ten seconds on one thread: maximum cut G22 at 13359 by
// all seeds in place of 6 of 10, G14 at 3064 by all in place of 2 of 10, G55 at 10297 in place of
// 10290. Tried in place of the random values, and worse: one parent alone, the middle of a path
// between them (G14 in twice the time), an annealing of the blocks of variables that move together
// between the parents (G55 2 to 5 lower); and annealing again only what lies around one variable.
#pragma once

#include <cmath>
#include <optional>

#include "easysolver/annealing.h"
#include "easysolver/elite_pool.h"
#include "easysolver/path_relinking.h"
#include "easysolver/population.h"
#include "easysolver/soft_weights.h"
#include "easysolver/tabu.h"

namespace zorv::plugin::easy {

template <typename Fields>
class Portfolio {
 public:
  using Energy = typename Walk<Fields>::Energy;

  Portfolio(Walk<Fields>& walk, Population<Energy>& population, ElitePool<Energy>& elites,
            const Groups& groups)
      : walk_(walk),
        population_(population),
        elites_(elites),
        exchanges_(groups),
        memory_(walk.size()) {}

  void run() {
    if (walk_.size() == 0 || walk_.time_is_up()) return;
    descend(walk_);
    walk_.note_neighbours();
    keep(anneal_);
    restart();
    unit_ = usual_rise(walk_, exchanges_);
    most_for_tabu_ = most_for_tabu();
    is_symmetric_ = is_symmetric();
    if (is_constrained()) soft_weights_.measure(walk_.state);
    while (!walk_.must_stop(0)) {
      Method& method = choose();
      const uint64_t before = walk_.work();
      ++walk_.restarts;
      if (&method == &anneal_) {
        anneal_once();
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
    if (exchanges_.has_rows() || is_constrained()) return 0.1;
    uint64_t flips = 0;
    for (uint32_t i = 0; i < walk_.size(); ++i) flips += walk_.state.fields().work_of_flip(i);
    const uint64_t looks = uint64_t{walk_.size()} * walk_.size() / kLanes;
    return looks > 8 * flips ? 0.1 : 0.9;
  }

  // Whether constraints stay constraints, and there are no groups to move in.
  bool is_constrained() const { return !walk_.state.bodies().empty() && !exchanges_.has_rows(); }

  // Judged by one assignment, which is enough for what hangs on it.
  bool is_symmetric() {
    const Energy energy = walk_.state.energy();
    for (uint32_t i = 0; i < walk_.size(); ++i) walk_.state.flip(i);
    return walk_.state.energy() == energy;
  }

  void restart() {
    walk_.randomize();
    exchanges_.assign_randomly(walk_);
  }

  void anneal_once() {
    const auto order = population_.next(walk_.random, mother_, father_);
    if (order.has_parents) {
      cross();
    } else {
      restart();
    }
    if (is_constrained() && soft_weights_.are_usable()) {
      anneal_softly(order.sweeps, order.has_parents);
    } else {
      anneal(walk_, exchanges_, schedule(order.sweeps, order.has_parents));
    }
    population_.report(order, walk_.state.x(), walk_.size(), walk_.state.energy());
  }

  // Children begin colder, or they would forget their parents.
  Schedule schedule(uint64_t sweeps, bool is_child) {
    Schedule schedule = {unit_, unit_, sweeps};
    if (is_constrained()) {
      schedule.hot *= 0.04 * std::pow(10.0, walk_.random.unit());
      schedule.cold = schedule.hot * (0.15 + 0.35 * walk_.random.unit());
    } else {
      // Sparse maximum cuts gain from a hotter and warmer schedule, assignments lose by it.
      const double width = exchanges_.has_rows() ? 0.02 : 0.05;
      schedule.hot *= 0.3 + 4 * width * walk_.random.unit();
      schedule.cold *= 0.04 + width * walk_.random.unit();
    }
    if (is_child) schedule.hot *= exchanges_.has_rows() ? 0.8 : 0.55;
    schedule.hot = std::max(schedule.hot, schedule.cold);
    return schedule;
  }

  void anneal_softly(uint64_t sweeps, bool is_child) {
    const double unit = soft_weights_.unit();
    const double hot = (is_child ? 0.04 : 0.1) * (0.7 + 0.8 * walk_.random.unit());
    soft_weights_.soften(walk_);
    anneal(walk_, exchanges_, {unit * hot, unit * 0.01, sweeps});
    soft_weights_.harden(walk_);
    for (int turn = 0; turn < 2; ++turn) {
      exchanges_.sweep(walk_, 0);
      descend(walk_);
    }
    walk_.note_neighbours();
  }

  // The mother, with random values where the father differs.
  void cross() {
    auto& state = walk_.state;
    state.move_to(mother_.data());
    if (exchanges_.has_rows()) return;
    uint32_t distance = 0;
    for (uint32_t i = 0; i < walk_.size(); ++i) distance += mother_[i] != father_[i];
    const uint8_t is_complement = is_symmetric_ && 2 * distance > walk_.size();
    for (uint32_t i = 0; i < walk_.size(); ++i) {
      if ((mother_[i] ^ father_[i]) != is_complement && (walk_.random() >> 63) != 0) state.flip(i);
    }
  }

  void tabu_once() {
    if (elites_.size() < kElitesToRelink || walk_.random.below(3) == 0) {
      restart();
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
  Population<Energy>& population_;
  ElitePool<Energy>& elites_;
  Exchanges<Fields> exchanges_;
  TabuMemory memory_;
  Method anneal_, tabu_;
  typename ElitePool<Energy>::Elite from_, to_;
  typename Population<Energy>::Assignment mother_, father_;
  bool is_symmetric_ = false;  // whether complements have the same energy
  double unit_ = 0, most_for_tabu_ = 0;
  SoftWeights<Energy> soft_weights_;
};

}  // namespace zorv::plugin::easy
