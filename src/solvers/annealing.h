// Simulated annealing of one walk. The temperature starts at twice the largest change that a few
// trial moves make and falls geometrically to a level where, with integer energies, no rise is
// accepted any more. The length follows the number of different moves.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "solvers/look_ahead.h"
#include "solvers/search_walk.h"

namespace zorv {

inline constexpr uint32_t kCalibrationProbes = 64;
inline constexpr double kSmallestScale = 1.0;     // of the energy changes, where no probe is larger
inline constexpr double kStartTemperature = 2.0;  // in units of the largest change
inline constexpr double kEndTemperature = 0.02;
inline constexpr uint64_t kStepsPerMove = 400;
inline constexpr uint64_t kShortestAnnealing = 4000;
inline constexpr uint64_t kStepsPerClockRead = 128;

// The largest change of the energy among a few random moves, none of which is made.
template <typename Number>
double largest_change(SearchWalk<Number>& walk) {
  double largest = kSmallestScale;
  for (uint32_t probe = 0; probe < kCalibrationProbes; ++probe) {
    const uint32_t i = walk.draw_variable();
    Number value;
    if (!walk.propose(i, value)) continue;
    largest = std::max(largest, std::abs(to_double(walk.state.move_delta(i, value))));
  }
  return largest;
}

template <typename Number>
void anneal(SearchWalk<Number>& walk) {
  double temperature = kStartTemperature * largest_change(walk);
  const uint64_t steps = std::max(kStepsPerMove * walk.tables.sweep_moves, kShortestAnnealing);
  const double cooling = std::pow(kEndTemperature / temperature, 1.0 / static_cast<double>(steps));
  const RiseTest accepts;
  LookAhead<Number> ahead(walk);
  for (uint64_t step = 0; step < steps; ++step, temperature *= cooling) {
    if (walk.core.stop_requested()) break;
    if (step % kStepsPerClockRead == 0 && walk.core.time_is_up()) break;
    ++walk.proposals;
    ahead.advance();
    const uint32_t i = walk.draw_variable();
    Number value;
    if (!walk.propose(i, value)) continue;
    const Number delta = walk.state.move_delta(i, value);
    if (delta <= 0 || accepts(walk.generator(), to_double(delta), temperature)) {
      walk.apply_move(i, value, delta);
    }
  }
}

}  // namespace zorv
