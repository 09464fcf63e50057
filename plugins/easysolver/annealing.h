// Simulated annealing by sweeps: all variables in their order, each flipped if that raises the
// energy by no more than the temperature times -log(u). At low temperatures nearly all are
// rejected, eight at a time; after a flip the test goes on behind it with the fields as they are
// then, so the result is that of one variable after the other.
#pragma once

#include <algorithm>
#include <cmath>

#include "easysolver/exchanges.h"

namespace zorv::plugin::easy {

struct Schedule {
  double hot, cold;  // first and last temperature
  uint64_t sweeps;
};

// The first variable of [begin, end) to flip; `draws` belong to the variables from `base` on.
template <typename Fields>
uint32_t next_accepted(const State<Fields>& state, const float* draws, double temperature,
                       uint32_t base, uint32_t begin, uint32_t end) {
  if constexpr (std::is_same_v<typename Fields::Number, int32_t>) {
    if (state.bodies().empty()) {
      const auto i =
          kernels().next_accepted(state.fields().fields() + base, state.fields().signs() + base,
                                  draws, static_cast<float>(temperature), begin - base, end - base);
      return base + static_cast<uint32_t>(i);
    }
  }
  for (uint32_t i = begin; i < end; ++i) {
    if (to_double(state.delta(i)) <= temperature * draws[i - base]) return i;
  }
  return end;
}

template <typename Fields>
void sweep(Walk<Fields>& walk, double temperature) {
  auto& state = walk.state;
  walk.draws.renew(walk.random);
  for (uint32_t base = 0; base < state.size(); base += Draws::kWindow) {
    const uint32_t end = std::min(state.size(), base + Draws::kWindow);
    const float* const draws = walk.draws.window(walk.random);
    uint64_t work = (end - base) / kLanes + 1;
    for (uint32_t i = base; (i = next_accepted(state, draws, temperature, base, i, end)) < end;
         ++i) {
      work += state.fields().work_of_flip(i) + 1;
      state.flip(i);
    }
    if (walk.must_stop(work)) return;
  }
  ++walk.sweeps;
}

// Flips that lower the energy, until there is none.
template <typename Fields>
void descend(Walk<Fields>& walk) {
  auto& state = walk.state;
  for (bool has_moved = true; has_moved;) {
    has_moved = false;
    for (uint32_t i = 0; i < state.size(); ++i) {
      if (!(state.delta(i) < 0)) continue;
      state.flip(i);
      has_moved = true;
    }
    if (walk.must_stop(state.size())) return;
  }
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
