// The distinct good solutions that a search gathers beside its best one. Two rules:
//
//   top k        the k best states, by energy and among equals by arrival
//   best energy  all states of the best energy seen so far, up to a cap; a new best empties it
//
// Under the mutex of the search, like the keepers whose states it lists.
#pragma once

#include <cstdint>
#include <deque>
#include <unordered_map>

#include "core/coeff.h"
#include "solvers/state_keeper.h"

namespace zorv {

struct PoolEntry {
  coeff_t energy;
  double tts;  // seconds from the start of the search
  uint64_t hash;
  KeptState kept;
};

class SolutionPool {
 public:
  const std::deque<PoolEntry>& entries() const { return entries_; }

  // Whether a new state would be taken; k and cap as in the search's options.
  bool has_room_among(uint64_t k, const coeff_t& energy) const {
    return k != 0 && (entries_.size() < k || energy < entries_.back().energy);
  }
  bool has_room_for_tie(uint64_t cap) const { return cap == 0 || entries_.size() < cap; }

  // Takes the candidate of `keeper`, for which there is room, unless it is known. Above `most`
  // entries, if that is not 0, the last one goes.
  void offer(StateKeeper& keeper, const coeff_t& energy, double tts, uint64_t most);
  void clear();

 private:
  bool holds_candidate(const StateKeeper& keeper) const;
  void drop_last();

  std::deque<PoolEntry> entries_;  // by energy, then by arrival
  std::unordered_multimap<uint64_t, KeptState> by_hash_;
};

}  // namespace zorv
