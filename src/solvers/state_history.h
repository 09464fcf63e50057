// StateHistory: the StateKeeper of a SearchState, in its number type.
//
// The candidate is a whole copy of the state that follows it change by change. Of a kept state only
// the way back to it is stored: the values that later changes replaced. So a walk that finds a new
// best at every move pays for its moves and not for its variables. A whole copy is made now and
// then, when the ways back have become longer than one, and where a state is compared.
#pragma once

#include <cassert>
#include <deque>
#include <utility>
#include <vector>

#include "solvers/search_moves.h"
#include "solvers/state_keeper.h"

namespace zorv {

template <typename Number>
class StateHistory final : public StateKeeper {
 public:
  StateHistory(const ModelImpl& model, SearchState<Number>& state, bool hashes);

  void catch_up() override;
  uint64_t hash() const override { return hash_; }
  ConstraintTally tally() override;

  uint64_t keep() override;
  void release(uint64_t number) override;
  bool is_candidate(uint64_t number, const StateKeeper& other) override;
  std::vector<coeff_t> read(uint64_t number) const override;

 private:
  struct Change {
    uint32_t variable;
    Number value;
  };
  struct Version {
    uint64_t users = 1;
    // From the next version, or the candidate, to this one; each variable once.
    std::vector<Change> way_back;
    std::vector<Number> whole;  // may be empty
  };

  Version& version(uint64_t number) { return versions_[number - first_number_]; }
  void note_value(uint32_t variable);
  std::vector<Number> whole_state(uint64_t number) const;

  SearchState<Number>& state_;
  const bool hashes_;
  std::vector<Number> candidate_;
  uint64_t hash_ = 0;

  std::deque<Version> versions_;  // numbered from first_number_ on; the first one is in use
  uint64_t first_number_ = 1;
  // For each variable the version that last stored a value of it.
  std::vector<uint64_t> stored_by_;
  uint64_t changes_since_whole_ = 0;
  uint64_t required_ = 0;  // of the constraints
};

// One value of one variable. The sum over all variables is the hash of a state.
inline uint64_t hash_of(uint32_t variable, uint64_t word) {
  uint64_t mixed =
      (word + 1) * 0x9E3779B97F4A7C15u ^ (variable + uint64_t{1}) * 0xD1B54A32D192ED03u;
  mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9u;
  mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EBu;
  return mixed ^ mixed >> 31;
}
inline uint64_t hash_of(uint32_t variable, int64_t value) {
  return hash_of(variable, static_cast<uint64_t>(value));
}
inline uint64_t hash_of(uint32_t variable, const coeff_t& value) {
  return hash_of(variable, static_cast<uint64_t>(hash_value(value)));
}

template <typename Number>
StateHistory<Number>::StateHistory(const ModelImpl& model, SearchState<Number>& state, bool hashes)
    : state_(state), hashes_(hashes), candidate_(state.x), stored_by_(state.x.size()) {
  for (const NativeCons& cons : model.native_cons) required_ += cons.shape_kind == 0;
}

template <typename Number>
void StateHistory<Number>::catch_up() {
  state_.changes.drain([&](uint32_t variable) { note_value(variable); });
}

template <typename Number>
ConstraintTally StateHistory<Number>::tally() {
  const auto& [penalties, violated] = state_.tally();
  return {coeff_t(penalties), required_, violated};
}

template <typename Number>
void StateHistory<Number>::note_value(uint32_t variable) {
  Number& value = candidate_[variable];
  const Number& now = state_.x[variable];
  if (value == now) return;
  if (hashes_) hash_ += hash_of(variable, now) - hash_of(variable, value);
  if (!versions_.empty()) {
    const uint64_t newest = first_number_ + versions_.size() - 1;
    if (stored_by_[variable] != newest) {
      stored_by_[variable] = newest;
      versions_.back().way_back.push_back({variable, std::move(value)});
      ++changes_since_whole_;
    }
  }
  value = now;
}

template <typename Number>
uint64_t StateHistory<Number>::keep() {
  const bool is_kept = !versions_.empty() && versions_.back().way_back.empty();
  if (is_kept) {
    ++versions_.back().users;
  } else {
    Version& made = versions_.emplace_back();
    if (changes_since_whole_ > candidate_.size()) {
      made.whole = candidate_;
      changes_since_whole_ = 0;
    }
  }
  return first_number_ + versions_.size() - 1;
}

template <typename Number>
void StateHistory<Number>::release(uint64_t number) {
  --version(number).users;
  // The way back to a state leads through all later ones.
  while (!versions_.empty() && versions_.front().users == 0) {
    versions_.pop_front();
    ++first_number_;
  }
}

template <typename Number>
std::vector<Number> StateHistory<Number>::whole_state(uint64_t number) const {
  const size_t wanted = number - first_number_;
  size_t known = wanted;
  while (known != versions_.size() && versions_[known].whole.empty()) ++known;
  std::vector<Number> state = known == versions_.size() ? candidate_ : versions_[known].whole;
  while (known != wanted) {
    --known;
    for (const Change& change : versions_[known].way_back) state[change.variable] = change.value;
  }
  return state;
}

template <typename Number>
bool StateHistory<Number>::is_candidate(uint64_t number, const StateKeeper& other) {
  std::vector<Number>& whole = version(number).whole;
  if (whole.empty()) whole = whole_state(number);
  return whole == static_cast<const StateHistory&>(other).candidate_;
}

template <typename Number>
std::vector<coeff_t> StateHistory<Number>::read(uint64_t number) const {
  const std::vector<Number> state = whole_state(number);
  return {state.begin(), state.end()};
}

}  // namespace zorv
