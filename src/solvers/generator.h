// Generator: the 64-bit Mersenne Twister, draw for draw the sequence of std::mt19937_64.
//
// Draws are made a block of 312 at a time, by loops without branches that the compiler can
// vectorise. The standard library's form branches on a random bit for every draw, which the
// processor guesses wrong half of the time, and that cost more than the moves themselves.
#pragma once

#include <array>
#include <cstdint>

namespace zorv {

class Generator {
 public:
  static constexpr uint32_t kBlock = 312;

  explicit Generator(uint64_t seed) {
    state_[0] = seed;
    for (uint32_t k = 1; k < kBlock; ++k) {
      state_[k] = 6364136223846793005u * (state_[k - 1] ^ state_[k - 1] >> 62) + k;
    }
  }

  uint64_t operator()() {
    if (next_ == kBlock) refill();
    return draws_[next_++];
  }

  // The block that draws are taken from, and how many were, for those who look ahead.
  const uint64_t* block() const { return draws_.data(); }
  uint32_t taken() const { return next_; }

 private:
  static constexpr uint32_t kShift = 156;

  static uint64_t twist(uint64_t word, uint64_t following, uint64_t shifted) {
    const uint64_t mixed = (word & ~uint64_t{0x7FFFFFFF}) | (following & 0x7FFFFFFF);
    return shifted ^ mixed >> 1 ^ ((0 - (mixed & 1)) & 0xB5026F5AA96619E9u);
  }

  static uint64_t temper(uint64_t word) {
    word ^= word >> 29 & 0x5555555555555555u;
    word ^= word << 17 & 0x71D67FFFEDA60000u;
    word ^= word << 37 & 0xFFF7EEE000000000u;
    return word ^ word >> 43;
  }

  void refill();

  std::array<uint64_t, kBlock> state_;
  std::array<uint64_t, kBlock> draws_;
  uint32_t next_ = kBlock;
};

}  // namespace zorv
