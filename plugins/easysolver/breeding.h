// Annealing that breeds: its starts are children of two earlier results, with random values where
// these differ.
//
// Against starts from nowhere, on one thread: the best known maximum cut of G22 in 1.5 s in place
// of 9.3, that of G14 in 5.8 s, where 2 of 10 seeds reached it in ten, and G55 after ten seconds at
// 10297 in place of 10290. Tried in place of the random values, and worse: one parent alone (G14
// in up to twice the time), the middle of a path between them (G22), an annealing of the blocks of
// variables that move together between the parents (G55 2 to 5 lower); and annealing again only
// what lies around one variable.
#pragma once

#include <algorithm>
#include <cmath>

#include "easysolver/annealing.h"
#include "easysolver/population.h"
#include "easysolver/soft_weights.h"

namespace zorv::plugin::easy {

template <typename Fields>
void restart(Walk<Fields>& walk, Exchanges<Fields>& exchanges) {
  walk.randomize();
  exchanges.assign_randomly(walk);
}

// Whether constraints stay constraints, and there are no groups to move in.
template <typename Fields>
bool is_constrained(const State<Fields>& state, const Exchanges<Fields>& exchanges) {
  return !state.bodies().empty() && !exchanges.has_rows();
}

template <typename Fields>
class Breeding {
 public:
  using Energy = typename Walk<Fields>::Energy;

  Breeding(Walk<Fields>& walk, Population<Energy>& population, Exchanges<Fields>& exchanges)
      : walk_(walk), population_(population), exchanges_(exchanges) {}

  // Takes the measure of the model, from a random state.
  void measure() {
    unit_ = usual_rise(walk_, exchanges_);
    is_symmetric_ = is_symmetric();
    if (is_constrained(walk_.state, exchanges_)) soft_weights_.measure(walk_.state);
  }

  void anneal_once() {
    const auto order = population_.next(walk_.random, mother_, father_);
    if (order.has_parents) {
      cross();
    } else {
      restart(walk_, exchanges_);
    }
    if (soft_weights_.are_usable()) {
      anneal_softly(order.sweeps, order.has_parents);
    } else {
      anneal(walk_, exchanges_, schedule(order.sweeps, order.has_parents));
    }
    population_.report(order, walk_.state.x(), walk_.size(), walk_.state.energy());
  }

 private:
  // Judged by one assignment, which is enough for what hangs on it.
  bool is_symmetric() {
    const Energy energy = walk_.state.energy();
    for (uint32_t i = 0; i < walk_.size(); ++i) walk_.state.flip(i);
    return walk_.state.energy() == energy;
  }

  // Children begin colder, or they would forget their parents.
  Schedule schedule(uint64_t sweeps, bool is_child) {
    Schedule result = {unit_, unit_, sweeps};
    if (is_constrained(walk_.state, exchanges_)) {
      result.hot *= 0.04 * std::pow(10.0, walk_.random.unit());
      result.cold = result.hot * (0.15 + 0.35 * walk_.random.unit());
    } else {
      // Sparse maximum cuts gain from a hotter and warmer schedule, assignments lose by it.
      const double width = exchanges_.has_rows() ? 0.02 : 0.05;
      result.hot *= 0.3 + 4 * width * walk_.random.unit();
      result.cold *= 0.04 + width * walk_.random.unit();
    }
    if (is_child) result.hot *= exchanges_.has_rows() ? 0.8 : 0.55;
    result.hot = std::max(result.hot, result.cold);
    return result;
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

  Walk<Fields>& walk_;
  Population<Energy>& population_;
  Exchanges<Fields>& exchanges_;
  typename Population<Energy>::Assignment mother_, father_;
  bool is_symmetric_ = false;  // whether complements have the same energy
  double unit_ = 0;
  SoftWeights<Energy> soft_weights_;
};

}  // namespace zorv::plugin::easy
