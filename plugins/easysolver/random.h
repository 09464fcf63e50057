// The engine's own generator (xoshiro256**, by Blackman and Vigna): one for each thread, so that
// one thread and one seed repeat exactly.
#pragma once

#include <array>
#include <cstdint>

namespace zorv::plugin::easy {

class Random {
 public:
  explicit Random(uint64_t seed) {
    for (uint64_t& word : state_) {  // splitmix64
      uint64_t z = seed += 0x9E3779B97F4A7C15u;
      z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
      z = (z ^ z >> 27) * 0x94D049BB133111EBu;
      word = z ^ z >> 31;
    }
  }

  uint64_t operator()() {
    const uint64_t result = rotate(state_[1] * 5, 7) * 9;
    const uint64_t shifted = state_[1] << 17;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= shifted;
    state_[3] = rotate(state_[3], 45);
    return result;
  }

  // From 0 to n - 1, for n from 1 to 2^32.
  uint32_t below(uint64_t n) { return static_cast<uint32_t>(((*this)() >> 32) * n >> 32); }
  // Above 0 and at most 1.
  double unit() { return static_cast<double>(((*this)() >> 11) + 1) * 0x1p-53; }

 private:
  static uint64_t rotate(uint64_t x, int k) { return x << k | x >> (64 - k); }

  std::array<uint64_t, 4> state_;
};

}  // namespace zorv::plugin::easy
