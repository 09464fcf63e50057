// One thread's walk through the assignments: its state, its draws, and what it has to tell the
// others.
#pragma once

#include <optional>
#include <vector>

#include "easysolver/draws.h"
#include "easysolver/shared_search.h"
#include "easysolver/source.h"
#include "easysolver/state.h"

namespace zorv::plugin::easy {

template <typename Fields>
class Walk {
 public:
  using StateOf = State<Fields>;
  using Energy = typename StateOf::Energy;
  using Number = typename StateOf::Number;

  Walk(StateOf start, const EnergyUnit& unit, uint64_t seed, SharedSearch& shared)
      : state(std::move(start)), random(seed), draws(random), shared_(shared), unit_(unit) {}

  StateOf state;
  Random random;
  Draws draws;
  uint64_t sweeps = 0, restarts = 0;
  bool is_silent =
      false;  // whether the state's energy is not that of the model, and not to be told

  uint32_t size() const { return state.size(); }

  void randomize() {
    for (uint32_t i = 0; i < size(); ++i) {
      if ((random() >> 63) != 0) state.flip(i);
    }
  }

  // Tells the others of the present state if it is a record of this walk, or fit for a list.
  void note() {
    if (is_silent) return;
    const bool is_record = !has_record_ || state.energy() < record_;
    if (is_record) record_ = state.energy(), has_record_ = true;
    if (is_record || is_wanted(state.energy())) offer();
  }
  // Tells them of it in any case.
  void offer() { shared_.offer(exact(state.energy()), state.x()); }
  // Where lists are kept: also of all neighbours.
  void note_neighbours() {
    if (is_silent) return;
    note();
    if (!shared_.keeps_lists()) return;
    for (uint32_t i = 0; i < size(); ++i) {
      const Energy energy = state.energy() + state.delta(i);
      if (!is_wanted(energy)) continue;
      std::vector<uint8_t> x(state.x(), state.x() + size());
      x[i] ^= 1;
      shared_.offer(exact(energy), x.data());
    }
  }
  bool keeps_lists() const { return shared_.keeps_lists(); }

  // Counts work done, in touched numbers, and reads the clock now and then. Whether to end.
  bool must_stop(uint64_t work) {
    constexpr uint64_t kWorkPerReading = 1 << 16;
    work_ += work + 1;
    if (work_ < next_reading_) return shared_.must_stop();
    next_reading_ = work_ + kWorkPerReading;
    return shared_.time_is_up();
  }
  bool time_is_up() { return shared_.time_is_up(); }
  uint64_t work() const { return work_; }

 private:
  // Whether a list may take it. What a list refuses once, it and all above it are refused for good.
  bool is_wanted(const Energy& energy) {
    if (!shared_.keeps_lists() || (refused_ && !(energy < *refused_))) return false;
    if (shared_.is_wanted(exact(energy))) return true;
    refused_ = energy;
    return false;
  }
  Coeff exact(const Energy& energy) const {
    return unit_.constant + Coeff(energy) / Coeff(unit_.scale);
  }

  SharedSearch& shared_;
  const EnergyUnit& unit_;
  bool has_record_ = false;
  Energy record_ = 0;
  std::optional<Energy> refused_;
  uint64_t work_ = 0, next_reading_ = 0;
};

}  // namespace zorv::plugin::easy
