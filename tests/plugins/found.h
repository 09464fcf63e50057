// What a solver library hands out, read back, and what it should have found.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

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

// That no flip of a single variable has less energy.
inline void expect_local_minimum(const AbiModel& m, const Found& found) {
  EXPECT_EQ(found.energy, m.energy(found.state));
  for (uint64_t i = 0; i < m.variables; ++i) {
    EXPECT_GE(m.energy(found.state ^ uint64_t{1} << i), found.energy) << "flip of " << i;
  }
}

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

// Expects of statements that they come to the value `true` where no thread can be started.
#define EXPECT_TRUE_WITHOUT_THREADS(...)                                            \
  EXPECT_EXIT(std::_Exit(zorv::test::allow_no_threads() && !(__VA_ARGS__) ? 1 : 0), \
              ::testing::ExitedWithCode(0), ::testing::Eq(""))

// Root may always start threads, so it becomes nobody; false where it cannot.
inline bool allow_no_threads() {
  constexpr uid_t kNobody = 65534;
  const rlimit none = {0, 0};
  return (geteuid() != 0 || setresuid(kNobody, kNobody, kNobody) == 0) &&
         setrlimit(RLIMIT_NPROC, &none) == 0;
}

}  // namespace zorv::test
