// Tabu search by single flips: always the best flip that is not forbidden, after which the flip
// back is forbidden for a while. It ends when it has not come to a new best for some number of
// moves, at the best assignment it saw.
#pragma once

#include <algorithm>
#include <limits>
#include <vector>

#include "easysolver/walk.h"

namespace zorv::plugin::easy {

// What runs of the search need, allocated once.
struct TabuMemory {
  explicit TabuMemory(uint32_t n) : until(n + kLanes), best(n) {}
  std::vector<uint32_t> until;
  std::vector<uint8_t> best;
};

template <typename Energy>
struct Flip {
  Energy delta;
  uint32_t variable;
  bool exists;
};

// The best flip of [begin, end) that is allowed.
template <typename Fields>
auto best_flip(const State<Fields>& state, const TabuMemory& memory, uint32_t now,
               const typename State<Fields>::Energy& aspiration, uint32_t begin, uint32_t end) {
  using Energy = typename State<Fields>::Energy;
  if constexpr (std::is_same_v<typename Fields::Number, int32_t>) {
    if (state.bodies().empty()) {
      const auto bound =
          static_cast<int32_t>(std::clamp<int64_t>(aspiration, INT32_MIN, INT32_MAX));
      const BestMove move = kernels().best_move(state.fields().fields(), state.fields().signs(),
                                                memory.until.data(), now, bound, begin, end);
      return Flip<Energy>{move.delta, move.variable, move.delta != kNoMove};
    }
  }
  Flip<Energy> best = {0, 0, false};
  for (uint32_t i = begin; i < end; ++i) {
    Energy delta = state.delta(i);
    if (best.exists && delta >= best.delta) continue;
    if (memory.until[i] > now && delta >= aspiration) continue;
    best = {std::move(delta), i, true};
  }
  return best;
}

template <typename Fields>
void tabu_search(Walk<Fields>& walk, TabuMemory& memory, uint64_t patience) {
  using Energy = typename Walk<Fields>::Energy;
  auto& state = walk.state;
  const uint32_t n = state.size();
  const uint32_t tenure = n / 100 + std::min<uint32_t>(10, n / 8) + 1;
  const uint32_t spread = std::min<uint32_t>(10, n / 8 + 1);
  std::fill(memory.until.begin(), memory.until.end(), 0);
  Energy best = state.energy();
  std::copy(state.x(), state.x() + n, memory.best.begin());
  bool is_saved = true;  // whether `best` is also in the memory
  uint64_t since_best = 0;
  for (uint32_t now = 1; since_best < patience; ++now) {
    // Begun anywhere, so that of equal moves not always the first is taken.
    const uint32_t start = walk.random.below(n);
    const Energy aspiration = best - state.energy();
    auto move = best_flip(state, memory, now, aspiration, start, n);
    const auto other = best_flip(state, memory, now, aspiration, 0, start);
    if (other.exists && (!move.exists || other.delta < move.delta)) move = other;
    if (!move.exists) move.variable = start, move.delta = state.delta(start);
    if (!is_saved && !(move.delta < 0)) {
      std::copy(state.x(), state.x() + n, memory.best.begin());
      is_saved = true;
      walk.note();
    }
    const uint64_t work = n / kLanes + state.fields().work_of_flip(move.variable);
    state.flip(move.variable);
    memory.until[move.variable] = now + tenure + walk.random.below(spread);
    ++since_best;
    if (state.energy() < best) {
      best = state.energy();
      is_saved = false;
      since_best = 0;
    } else if (walk.keeps_lists()) {
      walk.note();
    }
    if (walk.must_stop(work)) break;
  }
  if (is_saved) state.move_to(memory.best.data());
  walk.note_neighbours();
}

}  // namespace zorv::plugin::easy
