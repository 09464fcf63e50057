// Solutions on their way back to the caller, and the distinct good ones that a search gathers.
#pragma once

#include <cstdint>
#include <unordered_set>
#include <vector>

#include "common/params.h"

namespace zorv::plugin {

struct Solution {
  Coeff energy;
  std::vector<uint64_t> bits;  // variable i at bit i % 64 of word i / 64, the rest zero
  double tts = 0.0;            // seconds from the start of the search
};

// What the list functions of a library are given. A search returns one made with new, or null.
using SolutionList = std::vector<Solution>;

// Fills in a caller's record.
void write_solution(const Solution& solution, SolutionOut* out);

// Two rules, by the parameters of the search; without either nothing is kept.
//
//   topk_sols         the k best states, by energy and among equals by arrival
//   best_energy_sols  all states of the best energy offered so far, in order of arrival, up to a
//                     cap; a new best empties it
//
// No lock: a search that offers from several threads has one around it.
class SolutionPool {
 public:
  SolutionPool(const SearchParams& params, uint64_t nvars);

  // Whether a state of this energy could be kept: the test before a state is put together.
  bool is_wanted(const Coeff& energy) const;
  // Keeps the state, of words_for(nvars) words, if the rule says so and it is not there yet.
  void offer(const Coeff& energy, const uint64_t* bits, double tts);

  const SolutionList& entries() const { return entries_; }
  SolutionList take() { return std::move(entries_); }

 private:
  struct Hash {
    size_t operator()(const std::vector<uint64_t>& words) const;
  };

  bool is_full() const { return room_ != 0 && entries_.size() >= room_; }

  const uint64_t words_;
  const bool is_kept_, are_ties_kept_;
  const uint64_t room_;  // 0: no end
  SolutionList entries_;
  std::unordered_set<std::vector<uint64_t>, Hash> states_;  // of the entries
};

}  // namespace zorv::plugin
