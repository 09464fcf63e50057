// SearchWorker: one thread of a search. It starts a round somewhere, anneals, descends, and begins
// the next round, until the search stops.
#pragma once

#include <cstdint>
#include <vector>

#include "solvers/annealing.h"
#include "solvers/descent.h"
#include "solvers/perturbation.h"
#include "solvers/search_walk.h"
#include "solvers/stagnation.h"

namespace zorv {

template <typename Number>
class SearchWorker {
 public:
  SearchWorker(IntSearchCore& core, const SearchTables<Number>& tables, uint32_t thread)
      : core_(core), tables_(tables), thread_(thread), walk_(core, tables, thread) {}

  void run();

 private:
  void note_stagnation();
  void choose_start(bool is_first_round);
  bool take_external_state(bool is_first_round);
  void set_state(const uint64_t* words, const coeff_t* ints);

  IntSearchCore& core_;
  const SearchTables<Number>& tables_;
  const uint32_t thread_;
  SearchWalk<Number> walk_;

  Stagnation stagnation_;  // of the shared best energy, round by round
};

template <typename Number>
void SearchWorker<Number>::run() {
  uint64_t rounds = 0;
  do {
    ++rounds;
    note_stagnation();
    choose_start(rounds == 1);
    walk_.start();
    if (core_.stop_requested()) break;
    anneal(walk_);
    if (!core_.stop_requested() && !core_.time_is_up()) descend(walk_);
  } while (!core_.stop_requested() && !core_.time_is_up());
  core_.rounds.fetch_add(rounds, std::memory_order_relaxed);
  core_.proposals.fetch_add(walk_.proposals, std::memory_order_relaxed);
}

template <typename Number>
void SearchWorker<Number>::note_stagnation() {
  const MutexLock lock(core_.mutex);
  if (core_.has_best) stagnation_.note(core_.best_energy);
}

template <typename Number>
void SearchWorker<Number>::choose_start(bool is_first_round) {
  std::vector<Number>& x = walk_.state.x;
  if (take_external_state(is_first_round)) return;
  if (is_first_round) {
    random_state(walk_.generator, tables_, x);
    return;
  }
  if ((walk_.generator() & 1) != 0) {
    const MutexLock lock(core_.mutex);
    if (core_.has_best) {
      const std::vector<coeff_t> best = core_.read_best();
      for (size_t i = 0; i < x.size(); ++i) x[i] = number_from<Number>(best[i]);
    }
  }
  perturb_state(walk_.generator, tables_, stagnation_.rounds(), x);
}

template <typename Number>
bool SearchWorker<Number>::take_external_state(bool is_first_round) {
  const IntSearchOpts& opts = core_.opts;
  if (is_first_round && thread_ == 0 && opts.hint_bits != nullptr) {
    set_state(opts.hint_bits, opts.hint_ints);
    return true;
  }
  if (opts.next_hint == nullptr) return false;
  std::vector<uint64_t> words(tables_.bit_count / 64 + 1);
  std::vector<coeff_t> ints(core_.model.int_lo.size());
  if (!opts.next_hint(opts.next_hint_ctx, 0, words.data(), ints.data())) return false;
  set_state(words.data(), ints.data());
  return true;
}

template <typename Number>
void SearchWorker<Number>::set_state(const uint64_t* words, const coeff_t* ints) {
  std::vector<Number>& x = walk_.state.x;
  for (uint32_t i = 0; i < tables_.bit_count; ++i) x[i] = Number(words[i / 64] >> (i % 64) & 1);
  for (uint32_t i = tables_.bit_count; i < tables_.variable_count; ++i) {
    x[i] = number_from<Number>(ints[i - tables_.bit_count]);
  }
}

}  // namespace zorv
