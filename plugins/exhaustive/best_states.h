// BestStates: the states that one thread of a search keeps. They come in ascending rank, so a state
// that is no better than the worst one kept is of no interest once there is no room, and limit()
// leaves the walk one comparison.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "common/params.h"

namespace zorv::plugin {

template <typename Number>
struct RankedState {
  Number energy;
  uint64_t rank;
  double tts;  // seconds from the start of the search

  // The better one, and among equals the earlier one.
  bool operator<(const RankedState& other) const {
    return energy != other.energy ? energy < other.energy : rank < other.rank;
  }
};

template <typename Number>
class BestStates {
 public:
  using State = RankedState<Number>;

  // `above_all` is above every energy.
  BestStates(const SearchParams& params, Number above_all)
      : are_ties_kept_(params.has_best_energy_sols),
        room_(are_ties_kept_ ? params.best_energy_cap : params.topk_sols),
        limit_(std::move(above_all)) {}

  // Only states below it are taken.
  const Number& limit() const { return limit_; }
  // Nothing before the first state is taken.
  const std::optional<State>& best() const { return best_; }
  // All that are to be listed, in no order; none if no list is wanted.
  const std::vector<State>& listed() const { return listed_; }

  // Takes a state below limit(); true if it is the best so far, and none before was as good.
  bool take(const Number& energy, uint64_t rank, double tts) {
    const bool is_new_best = !best_ || energy < best_->energy;
    if (is_new_best) best_ = {energy, rank, tts};
    if (are_ties_kept_) {
      take_tie({energy, rank, tts}, is_new_best);
    } else if (room_ != 0) {
      take_among_k({energy, rank, tts});
    } else {
      limit_ = energy;
    }
    return is_new_best;
  }

 private:
  // Without ++ and --, which Boost 1.74 gets wrong for negative numbers of more than one limb.
  void take_tie(State state, bool is_new_best) {
    if (is_new_best) {
      listed_.clear();
      limit_ = state.energy;
      limit_ += 1;
    }
    listed_.push_back(std::move(state));
    if (listed_.size() == room_) limit_ -= 1;
  }

  // A heap with the worst state on top.
  void take_among_k(State state) {
    if (listed_.size() == room_) {
      std::pop_heap(listed_.begin(), listed_.end());
      listed_.pop_back();
    }
    listed_.push_back(std::move(state));
    std::push_heap(listed_.begin(), listed_.end());
    if (listed_.size() == room_) limit_ = listed_.front().energy;
  }

  const bool are_ties_kept_;
  const uint64_t room_;  // 0: without end, or no list
  Number limit_;
  std::optional<State> best_;
  std::vector<State> listed_;
};

}  // namespace zorv::plugin
