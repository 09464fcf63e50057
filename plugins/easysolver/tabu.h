// Tabu search by single flips: always the best flip that is not forbidden, after which the flip
// back is forbidden for a while. It ends when it has not come to a new best for some number of
// moves, at the best assignment it saw.
#pragma once

#include <algorithm>
#include <bit>
#include <vector>

#include "easysolver/tabu_list.h"
#include "easysolver/walk.h"

namespace zorv::plugin::easy {

// What runs of the search need, allocated once.
struct TabuMemory {
  // A flip is barred for `tenure` moves and up to `spread` - 1 more.
  explicit TabuMemory(uint32_t n)
      : tenure(n / 100 + std::min<uint32_t>(10, n / 8)),
        spread(std::min<uint32_t>(10, n / 8 + 1)),
        list(n, tenure + spread + 2),
        least((n + kBlock - 1) / kBlock),
        best(n) {}

  uint32_t tenure, spread;
  TabuList list;
  std::vector<int32_t> least;  // rise by a flip that is not barred, by blocks
  std::vector<uint8_t> best;
};

template <typename Energy>
struct Flip {
  Energy delta;
  uint32_t variable;
  bool exists;
};

// The best flip that is not barred, or lowers the energy by more than `aspiration` does, which is
// not positive. Of equal ones that which follows `start`.
inline Flip<int64_t> best_flip_by_blocks(const int32_t* fields, const int32_t* signs,
                                         TabuMemory& memory, int64_t aspiration, uint32_t n,
                                         uint32_t start) {
  const int32_t* const bars = memory.list.bars();
  std::vector<int32_t>& least = memory.least;
  const int32_t of_all = kernels().least_rises(fields, signs, bars, least.size(), least.data());
  const int32_t of_free = *std::min_element(least.begin(), least.end());
  if (of_all < of_free && of_all < aspiration) {
    for (uint32_t i = 0; i < n; ++i) {
      const int32_t sign = signs == nullptr ? 0 : signs[i];
      if (signed_value<int32_t>(fields[i], sign) == of_all) return {of_all, i, true};
    }
  }
  if (of_free == kNoMove) return {0, 0, false};
  size_t block = start / kBlock;
  while (least[block] != of_free) block = block + 1 < least.size() ? block + 1 : 0;
  const auto base = static_cast<uint32_t>(block * kBlock);
  const uint64_t mask = kernels().equal(fields, signs, bars, base, of_free);
  const uint32_t turn = start % kBlock;
  const auto k = static_cast<uint32_t>(std::countr_zero(std::rotr(mask, static_cast<int>(turn))));
  return {of_free, base + static_cast<uint32_t>((k + turn) % kBlock), true};
}

template <typename Fields>
auto best_flip(const State<Fields>& state, TabuMemory& memory,
               const typename State<Fields>::Energy& aspiration, uint32_t start) {
  using Energy = typename State<Fields>::Energy;
  const uint32_t n = state.size();
  if constexpr (std::is_same_v<typename Fields::Number, int32_t>) {
    if (state.has_vectors()) {
      return best_flip_by_blocks(state.fields().fields(), state.fields().signs(), memory,
                                 aspiration, n, start);
    }
  }
  Flip<Energy> best = {0, 0, false};
  for (uint32_t k = 0; k < n; ++k) {
    const uint32_t i = start + k < n ? start + k : start + k - n;
    Energy delta = state.delta(i);
    if (best.exists && delta >= best.delta) continue;
    if (memory.list.is_barred(i) && delta >= aspiration) continue;
    best = {std::move(delta), i, true};
  }
  return best;
}

template <typename Fields>
void tabu_search(Walk<Fields>& walk, TabuMemory& memory, uint64_t patience) {
  using Energy = typename Walk<Fields>::Energy;
  auto& state = walk.state;
  const uint32_t n = state.size();
  memory.list.clear();
  Energy best = state.energy();
  std::copy(state.x(), state.x() + n, memory.best.begin());
  bool is_saved = true;  // whether `best` is also in the memory
  uint64_t since_best = 0;
  while (since_best < patience) {
    memory.list.tick();
    const uint32_t start = walk.random.below(n);
    auto move = best_flip(state, memory, Energy(best - state.energy()), start);
    if (!move.exists) move.variable = start, move.delta = state.delta(start);
    if (!is_saved && !(move.delta < 0)) {
      std::copy(state.x(), state.x() + n, memory.best.begin());
      is_saved = true;
      walk.note();
    }
    const uint64_t work = state.work_of_look() + state.fields().work_of_flip(move.variable);
    state.flip(move.variable);
    memory.list.bar(move.variable, memory.tenure + walk.random.below(memory.spread));
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
