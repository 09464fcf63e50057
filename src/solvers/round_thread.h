// RoundThread: one thread beside the workers of a search that has batches of states improved by
// somebody else, a GPU, and submits what comes back.
//
// Candidates are fresh random states or are bred from the thread's own list of elites. States that
// come back marked are trusted with nothing: their energy is computed anew and must agree.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "core/fatal.h"
#include "solvers/elite_list.h"
#include "solvers/library_model.h"
#include "solvers/perturbation.h"
#include "solvers/search_core.h"
#include "solvers/stagnation.h"
#include "solvers/state_history.h"

namespace zorv {

inline constexpr uint32_t kRoundSlots = 8;    // states in a batch
inline constexpr uint32_t kFreshSlots = 2;    // of which so many are always fresh
inline constexpr uint64_t kRandomBreed = 20;  // one slot in so many is bred in a random way
inline constexpr uint64_t kRoundSeedMix = 0xA24BAED4963EE407;
inline constexpr uint32_t kRoundConsumer = 1;  // of hints

template <typename Number>
class RoundThread {
 public:
  RoundThread(IntSearchCore& core, const SearchTables<Number>& tables);

  // Until the search stops, or a round fails.
  void run();

  uint64_t rounds() const { return rounds_; }
  uint64_t submissions() const { return submissions_; }

 private:
  void pass_on_hints();
  void take_in_best();
  Breed choose_breed(uint32_t slot);
  Breed breed(Breed how);
  void fill_slot(uint32_t slot);
  void copy_to_state(const EliteEntry& elite);
  const EliteEntry& random_elite();
  void cross();
  bool run_round();
  void submit(uint32_t slot);
  [[noreturn]] void refuse_state() const;

  IntSearchCore& core_;
  const SearchTables<Number>& tables_;
  Generator generator_;
  Stagnation stagnation_;
  EliteList elites_;
  std::vector<Number> state_;  // the candidate in the making
  uint64_t rounds_ = 0;
  uint64_t submissions_ = 0;

  // A batch: `words_` words and `ints_` integers for each slot.
  const uint64_t words_, ints_;
  std::vector<Breed> breeds_;
  std::vector<uint64_t> in_bits_, out_bits_;
  std::vector<coeff_t> in_ints_, out_ints_, out_energies_;
  std::vector<uint8_t> out_flags_;

  // The state that came back, while the thread runs.
  std::optional<SearchState<Number>> found_;
  StateKeeper* keeper_ = nullptr;
};

template <typename Number>
RoundThread<Number>::RoundThread(IntSearchCore& core, const SearchTables<Number>& tables)
    : core_(core),
      tables_(tables),
      generator_(core.opts.seed ^ kRoundSeedMix),
      state_(tables.variable_count),
      words_(std::max<uint64_t>(1, (tables.bit_count + 63) / 64)),
      ints_(std::max<uint64_t>(1, tables.variable_count - tables.bit_count)),
      breeds_(kRoundSlots, Breed::kFresh),
      in_bits_(kRoundSlots * words_),
      out_bits_(kRoundSlots * words_),
      in_ints_(kRoundSlots * ints_),
      out_ints_(kRoundSlots * ints_),
      out_energies_(kRoundSlots),
      out_flags_(kRoundSlots) {}

template <typename Number>
void RoundThread<Number>::run() {
  const IntSearchOpts& opts = core_.opts;
  if (opts.hint_bits != nullptr && opts.round_hint_fn != nullptr) {
    opts.round_hint_fn(opts.round_handle, opts.hint_bits, as_abi(opts.hint_ints));
  }
  found_.emplace(core_.model, tables_);
  keeper_ = &core_.add_keeper(
      std::make_unique<StateHistory<Number>>(core_.model, *found_, core_.needs_hashes()));
  while (!core_.stop_requested() && !core_.time_is_up()) {
    pass_on_hints();
    take_in_best();
    for (uint32_t slot = 0; slot < kRoundSlots; ++slot) fill_slot(slot);
    if (!run_round()) return;
    for (uint32_t slot = 0; slot < kRoundSlots; ++slot) {
      if (out_flags_[slot] != 0) submit(slot);
    }
  }
}

template <typename Number>
void RoundThread<Number>::pass_on_hints() {
  const IntSearchOpts& opts = core_.opts;
  if (opts.next_hint == nullptr || opts.round_hint_fn == nullptr) return;
  std::vector<uint64_t> words(words_);
  std::vector<coeff_t> ints(ints_);
  if (opts.next_hint(opts.next_hint_ctx, kRoundConsumer, words.data(), ints.data())) {
    opts.round_hint_fn(opts.round_handle, words.data(), as_abi(ints.data()));
  }
}

template <typename Number>
void RoundThread<Number>::take_in_best() {
  const MutexLock lock(core_.mutex);
  if (!core_.has_best) return;
  stagnation_.note(core_.best_energy);
  elites_.offer(core_.best_energy, core_.read_best(), Breed::kFound);
}

template <typename Number>
Breed RoundThread<Number>::choose_breed(uint32_t slot) {
  if (slot < kFreshSlots || elites_.entries().empty()) return Breed::kFresh;
  if (generator_() % kRandomBreed != 0) {
    const Breed how = random_elite().breed;
    if (how != Breed::kFound) return how;
  }
  return static_cast<Breed>((generator_() & 3) + 1);
}

template <typename Number>
const EliteEntry& RoundThread<Number>::random_elite() {
  return elites_.entries()[generator_() % elites_.entries().size()];
}

template <typename Number>
void RoundThread<Number>::copy_to_state(const EliteEntry& elite) {
  for (size_t i = 0; i < state_.size(); ++i) state_[i] = number_from<Number>(elite.state[i]);
}

// Each variable from one of two different elites.
template <typename Number>
void RoundThread<Number>::cross() {
  const std::vector<EliteEntry>& elites = elites_.entries();
  const uint64_t first = generator_() % elites.size();
  uint64_t second = generator_() % (elites.size() - 1);
  if (second >= first) ++second;
  copy_to_state(elites[first]);
  for (size_t i = 0; i < state_.size(); ++i) {
    if ((generator_() & 1) != 0) state_[i] = number_from<Number>(elites[second].state[i]);
  }
}

// Makes a candidate; returns how it was made in the end.
template <typename Number>
Breed RoundThread<Number>::breed(Breed how) {
  switch (how) {
    case Breed::kBest:
      copy_to_state(elites_.entries().front());
      return how;
    case Breed::kPerturbed:
      copy_to_state(random_elite());
      perturb_state(generator_, tables_, stagnation_.rounds(), state_);
      return how;
    case Breed::kCrossed:
      if (elites_.entries().size() >= 2) {
        cross();
        return how;
      }
      [[fallthrough]];
    default:
      random_state(generator_, tables_, state_);
      return Breed::kFresh;
  }
}

template <typename Number>
void RoundThread<Number>::fill_slot(uint32_t slot) {
  breeds_[slot] = breed(choose_breed(slot));
  uint64_t* words = &in_bits_[slot * words_];
  std::fill(words, words + words_, 0);
  for (uint32_t i = 0; i < tables_.bit_count; ++i) {
    if (state_[i] != 0) words[i / 64] |= uint64_t{1} << (i % 64);
  }
  for (uint32_t i = tables_.bit_count; i < tables_.variable_count; ++i) {
    in_ints_[slot * ints_ + i - tables_.bit_count] = coeff_t(state_[i]);
  }
}

template <typename Number>
bool RoundThread<Number>::run_round() {
  std::fill(out_flags_.begin(), out_flags_.end(), 0);
  const int32_t status = core_.opts.round_fn(
      core_.opts.round_handle, in_bits_.data(), as_abi(in_ints_.data()), kRoundSlots,
      out_bits_.data(), as_abi(out_ints_.data()), as_abi(out_energies_.data()), out_flags_.data());
  if (status != 0) return false;
  ++rounds_;
  return true;
}

template <typename Number>
void RoundThread<Number>::submit(uint32_t slot) {
  const ModelImpl& model = core_.model;
  const uint64_t* words = &out_bits_[slot * words_];
  const coeff_t* ints = &out_ints_[slot * ints_];
  // A value out of bounds is no state of the model, whatever its energy.
  for (size_t j = 0; j < model.int_lo.size(); ++j) {
    if (ints[j] < model.int_lo[j] || model.int_hi[j] < ints[j]) refuse_state();
  }
  std::vector<coeff_t> state(tables_.variable_count);
  for (uint32_t i = 0; i < tables_.bit_count; ++i) state[i] = words[i / 64] >> (i % 64) & 1;
  std::copy_n(ints, model.int_lo.size(), state.begin() + tables_.bit_count);
  SearchState<Number>& found = *found_;
  for (size_t i = 0; i < state.size(); ++i) found.x[i] = number_from<Number>(state[i]);
  found.evaluate();
  const coeff_t energy(found.energy());
  if (energy != out_energies_[slot]) refuse_state();

  ++submissions_;
  elites_.offer(energy, state, breeds_[slot]);
  const MutexLock lock(core_.mutex);
  core_.submit(*keeper_, energy);
}

template <typename Number>
void RoundThread<Number>::refuse_state() const {
  fatal(core_.opts.solver_name, ": internal error — GPU integer engine energy mismatch.");
}

}  // namespace zorv
