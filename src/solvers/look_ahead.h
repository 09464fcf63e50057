// LookAhead: fetches what the next moves of an annealing will read, so that the moves of a model
// larger than the caches do not wait for memory.
//
// The draws of a generator's block are made before they are taken, so the variables that they will
// choose can be worked out early. Not every draw chooses a variable, and how many a move takes is
// open: each coming draw is treated as if it did, which fetches two or three times what is used and
// is still cheap. Nothing is taken from the generator, so the walk stays the same.
//
// A move waits for the variable's row, and then for the lists that the row points into: rows are
// fetched first, and lists once their row has had the time to come.
#pragma once

#include <algorithm>
#include <cstdint>

#include "solvers/search_walk.h"

namespace zorv {

// Below this the tables stay in the caches, and looking ahead would only cost.
inline constexpr uint32_t kManyVariables = 16'384;
// In draws, of which a move takes two or three.
inline constexpr uint32_t kRowLead = 24, kListLead = 12;

template <typename Number>
class LookAhead {
 public:
  explicit LookAhead(const SearchWalk<Number>& walk)
      : walk_(walk), pays_(walk.tables.variable_count >= kManyVariables) {}

  // To be called before each move.
  void advance() {
    if (pays_) fetch();
  }

 private:
  void fetch();
  void fetch_row(uint64_t draw) const;
  void fetch_lists(uint64_t draw) const;

  const SearchWalk<Number>& walk_;
  const bool pays_;
  // Positions in the generator's block: what was fetched so far.
  uint32_t rows_ = 0, lists_ = 0, taken_ = 0;
};

// Functions that only fetch have to be inlined: as functions they look free of effects to g++ 12,
// which drops their calls.
template <typename Number>
[[gnu::always_inline]] inline void LookAhead<Number>::fetch() {
  const Generator& generator = walk_.generator;
  if (generator.taken() < taken_) rows_ = lists_ = 0;  // a new block
  taken_ = generator.taken();
  const uint32_t row_end = std::min(taken_ + kRowLead, Generator::kBlock);
  const uint32_t list_end = std::min(taken_ + kListLead, Generator::kBlock);
  for (rows_ = std::max(rows_, taken_); rows_ < row_end; ++rows_) {
    fetch_row(generator.block()[rows_]);
  }
  for (lists_ = std::max(lists_, taken_); lists_ < list_end; ++lists_) {
    fetch_lists(generator.block()[lists_]);
  }
}

template <typename Number>
[[gnu::always_inline]] inline void LookAhead<Number>::fetch_row(uint64_t draw) const {
  const uint64_t i = walk_.tables.any_variable(draw);
  __builtin_prefetch(&walk_.tables.variables[i]);
  __builtin_prefetch(&walk_.state.x[i]);
}

template <typename Number>
[[gnu::always_inline]] inline void LookAhead<Number>::fetch_lists(uint64_t draw) const {
  const SearchTables<Number>& tables = walk_.tables;
  const uint64_t i = tables.any_variable(draw);
  const VariableRow<Number>& row = tables.variables[i];
  if (row.is_in_objective) __builtin_prefetch(&tables.objective[i]);
  if (row.pair_count != 0) {
    const PairEntry* const last = tables.pairs.data() + row.pairs_end() - 1;
    __builtin_prefetch(tables.pairs.data() + row.pairs_begin);
    __builtin_prefetch(last);
  }
  if (row.bands_begin != row.gaps_end()) {
    __builtin_prefetch(tables.simple_bodies.data() + row.bands_begin);
  }
}

}  // namespace zorv
