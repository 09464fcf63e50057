// Weights of constraints while annealing. Those of a model are often so high that a step across the
// border of what is allowed is never accepted, and then the search creeps along that border. So
// annealing counts violations with weights that are only as high as they need to be for its result
// to be allowed now and then: each goes up when its constraint was violated at the end, and down a
// little when it was not. What counts in the end are the model's weights, under which the result
// descends.
//
// Three multi-dimensional knapsacks with weights of 1000, how far below the best known value the
// median after ten seconds is: 0.26, 0.75 and 0.49 % with the model's weights, 0.03, 0.49 and 0 %
// with these. Without exchanges between the variables of a constraint: 0.9, 1.4 and 1.6 %.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "easysolver/walk.h"

namespace zorv::plugin::easy {

template <typename Energy>
class SoftWeights {
 public:
  // Not usable with an objective of nothing: there is no height that a weight could be held to.
  bool are_usable() const { return unit_ > 0; }
  // A usual step of the objective: the unit of temperatures.
  double unit() const { return unit_; }

  // From a state with the model's weights.
  template <typename Fields>
  void measure(const State<Fields>& state) {
    unit_ = 0;
    for (uint32_t i = 0; i < state.size(); ++i) {
      unit_ += std::abs(to_double(state.fields().delta(i)));
    }
    unit_ /= std::max<uint32_t>(1, state.size());
    hard_ = state.bodies().weights();
    heights_ = state.bodies().usual_penalties();
    for (double& height : heights_) height = kFirst * unit_ / height;
  }

  template <typename Fields>
  void soften(Walk<Fields>& walk) {
    soft_ = hard_;
    for (uint32_t c = 0; c < hard_.size(); ++c) {
      const double hard = to_double(hard_[c]);
      heights_[c] = std::min(1.0, std::max(heights_[c], 1 / hard));
      const double soft = std::ceil(heights_[c] * hard);
      if (std::isfinite(soft)) soft_[c] = std::min(hard_[c], Energy(soft));
    }
    walk.is_silent = true;
    walk.state.set_weights(soft_);
  }
  template <typename Fields>
  void harden(Walk<Fields>& walk) {
    for (uint32_t c = 0; c < hard_.size(); ++c) {
      heights_[c] *= walk.state.bodies().is_violated(c) ? kUp : kDown;
    }
    walk.state.set_weights(hard_);
    walk.is_silent = false;
  }

 private:
  // Against a usual step of the objective, how much a usual violation costs at first. With 4 the
  // search takes longer; a kUp of 1.3 or 2 is worse.
  static constexpr double kFirst = 40;
  static constexpr double kUp = 1.1, kDown = 0.97;

  double unit_ = 0;
  std::vector<Energy> hard_, soft_;
  std::vector<double> heights_;  // soft weights as parts of the hard ones
};

}  // namespace zorv::plugin::easy
