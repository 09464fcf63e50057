// Simulated annealing by sweeps: all variables in their order, each flipped if that raises the
// energy by no more than the temperature times -log(u). At low temperatures nearly all are
// rejected, a block at a time; after a flip that changes others of its block the rest of the block
// is tested anew, so the result is that of one variable after the other. (Where what
// such a flip lets pass waited for the next sweep, a torus of 720 nodes was cut at 504 after 0.1 s
// in place of 508.)
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>

#include "easysolver/exchanges.h"

namespace zorv::plugin::easy {

struct Schedule {
  double hot, cold;  // first and last temperature
  uint64_t sweeps;
};

// Which of the variables from `begin` on, at most kBlock of them, pass as the state is now; or all
// of them, where passes() has to tell.
template <typename Fields>
uint64_t candidates(const State<Fields>& state, const float* draws, double temperature,
                    uint32_t begin, uint32_t count) {
  const uint64_t all = ~uint64_t{0} >> (kBlock - count);
  if constexpr (std::is_same_v<typename Fields::Number, int32_t>) {
    if (state.has_vectors()) {
      return all & kernels().accepted(state.fields().fields(), state.fields().signs(), begin, draws,
                                      static_cast<float>(temperature));
    }
  }
  return all;
}

template <typename Fields>
bool passes(const State<Fields>& state, uint32_t i, double bound) {
  return to_double(state.delta(i)) <= bound;
}

template <typename Fields>
void sweep(Walk<Fields>& walk, double temperature) {
  auto& state = walk.state;
  walk.draws.renew(walk.random);
  const float* draws = nullptr;
  uint64_t work = state.work_of_look();
  for (uint32_t begin = 0; begin < state.size(); begin += kBlock) {
    if (begin % Draws::kWindow == 0) {
      if (walk.must_stop(work)) return;
      work = 0;
      draws = walk.draws.window(walk.random);
    }
    const uint32_t count = std::min<uint32_t>(kBlock, state.size() - begin);
    const float* const own = draws + begin % Draws::kWindow;
    uint64_t mask = candidates(state, own, temperature, begin, count);
    while (mask != 0) {
      const auto k = static_cast<uint32_t>(std::countr_zero(mask));
      mask &= mask - 1;
      if (!state.has_vectors() && !passes(state, begin + k, temperature * own[k])) continue;
      work += state.fields().work_of_flip(begin + k) + 1;
      state.flip(begin + k);
      if (!state.has_vectors() || !state.fields().changes_own_block(begin + k)) continue;
      mask = candidates(state, own, temperature, begin, count) & ~uint64_t{1} << k;
    }
  }
  ++walk.sweeps;
  walk.must_stop(work);
}

// Goes once through all variables and flips those that lower the energy; false if none does.
template <typename Fields>
bool descend_once(State<Fields>& state) {
  bool has_moved = false;
  for (uint32_t i = 0; i < state.size(); ++i) {
    if (!(state.delta(i) < 0)) continue;
    state.flip(i);
    has_moved = true;
  }
  return has_moved;
}

// The same until there is none, or the search is to end.
template <typename Fields>
void descend(Walk<Fields>& walk) {
  while (descend_once(walk.state)) {
    if (walk.must_stop(walk.size())) return;
  }
  walk.must_stop(walk.size());
}

template <typename Fields>
void anneal(Walk<Fields>& walk, Exchanges<Fields>& exchanges, const Schedule& schedule) {
  const double steps = static_cast<double>(std::max<uint64_t>(1, schedule.sweeps - 1));
  for (uint64_t k = 0; k < schedule.sweeps; ++k) {
    const double at = static_cast<double>(k) / steps;
    const double temperature = schedule.hot + (schedule.cold - schedule.hot) * at;
    if (!exchanges.empty()) exchanges.sweep(walk, temperature);
    sweep(walk, temperature);
    walk.note_neighbours();
    if (walk.must_stop(0)) return;
  }
  if (!exchanges.empty()) exchanges.sweep(walk, 0);
  descend(walk);
  walk.note_neighbours();
}

// The unit of temperatures: the size of what a usual move does to the energy. That is the mean over
// the moves of a random assignment; but where constraints stay constraints, most of these only lead
// deeper into penalties, so there it is what the cheaper moves of a local minimum cost.
template <typename Fields>
double usual_rise(Walk<Fields>& walk, Exchanges<Fields>& exchanges) {
  if (exchanges.has_rows()) return exchanges.mean_rise(walk);
  const bool has_bodies = !walk.state.bodies().empty();
  if (has_bodies) descend(walk);
  std::vector<double> rises;
  double sum = 0;
  for (uint32_t i = 0; i < walk.size(); ++i) {
    rises.push_back(std::abs(to_double(walk.state.delta(i))));
    sum += rises.back();
  }
  if (!has_bodies) return sum / static_cast<double>(std::max<size_t>(1, rises.size()));
  std::sort(rises.begin(), rises.end());
  return rises.empty() ? 0 : rises[rises.size() / 8];
}

}  // namespace zorv::plugin::easy
