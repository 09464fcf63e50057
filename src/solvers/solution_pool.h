// The distinct good solutions that a search gathers beside its best one. Two rules:
//
//   top k        the k best states, by energy and among equals by arrival
//   best energy  all states of the best energy seen so far, up to a cap; a new best empties it
#pragma once

#include <cstdint>
#include <vector>

#include "core/coeff.h"

namespace zorv {

struct PoolEntry {
  coeff_t energy;
  std::vector<coeff_t> state;  // binary variables as 0 and 1, then the integer variables
  double tts;                  // seconds from the start of the search
};

class SolutionPool {
 public:
  const std::vector<PoolEntry>& entries() const { return entries_; }

  // Keeps the candidate if it is new and among the k best; 0 keeps nothing.
  void offer_top_k(uint64_t k, const std::vector<coeff_t>& state, const coeff_t& energy,
                   double tts);
  // A candidate as good as the best: keeps it if it is new and the cap, unless 0, leaves room.
  void offer_tie(uint64_t cap, const std::vector<coeff_t>& state, const coeff_t& energy,
                 double tts);
  // A new best: the only entry from now on.
  void restart(const std::vector<coeff_t>& state, const coeff_t& energy, double tts);

 private:
  bool holds(const std::vector<coeff_t>& state) const;

  std::vector<PoolEntry> entries_;
};

}  // namespace zorv
