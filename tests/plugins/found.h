// What a solver library hands out, read back, and what it should have found.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <vector>

#include "plugins/abi_model.h"

namespace zorv::test {

struct Found {
  Coeff energy;
  uint64_t state;
  bool operator==(const Found&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const Found& f) {
  return out << f.energy << " at " << f.state;
}

class Output {
 public:
  explicit Output(uint64_t variables)
      : nbits_(static_cast<uint32_t>(variables)), nwords_((nbits_ + 63) / 64), words_(nwords_) {}
  ~Output() { std::free(energy_.limbs); }
  SolutionOut* record() { return &record_; }
  Found found() const {
    Coeff energy = 0;
    for (uint32_t i = energy_.nlimbs; i > 0; --i) energy = (energy << 64) + energy_.limbs[i - 1];
    EXPECT_TRUE(tts_ >= 0 && tts_ < 1e3);
    return {energy * energy_.sign, words_.empty() ? 0 : words_[0]};
  }
  const std::vector<uint64_t>& words() const { return words_; }

 private:
  uint32_t nbits_, nwords_;
  CoeffWire energy_ = {0, 0, nullptr};
  std::vector<uint64_t> words_;
  double tts_ = -1;
  SolutionOut record_ = {&nbits_, &nwords_, &energy_, words_.data(), &tts_};
};

// All states, by energy and among equals in the order of the Gray code.
inline std::vector<Found> all_states(const AbiModel& m) {
  std::vector<Found> states;
  for (uint64_t rank = 0; rank < uint64_t{1} << m.variables; ++rank) {
    const uint64_t state = rank ^ rank >> 1;
    states.push_back({m.energy(state), state});
  }
  std::stable_sort(states.begin(), states.end(),
                   [](const Found& a, const Found& b) { return a.energy < b.energy; });
  return states;
}

}  // namespace zorv::test
