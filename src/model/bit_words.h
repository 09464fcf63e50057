// Bits packed in 64-bit words: bit i is bit i % 64 of word i / 64.
#pragma once

#include <cstdint>

namespace zorv {

inline uint64_t words_for(uint64_t bits) { return (bits + 63) / 64; }

inline bool bit_at(const uint64_t* words, uint64_t i) {
  return (words[i / 64] >> (i % 64) & 1) != 0;
}

inline void flip_bit(uint64_t* words, uint64_t i) { words[i / 64] ^= uint64_t{1} << (i % 64); }

inline void set_bit(uint64_t* words, uint64_t i, bool value) {
  if (bit_at(words, i) != value) flip_bit(words, i);
}

}  // namespace zorv
