// Literals of a binary model, and assignments as words of 64 bits.
#pragma once

#include <cstdint>

namespace zorv::plugin {

inline constexpr uint32_t variable_of(uint32_t literal) { return literal & 0x7FFFFFFFu; }
inline constexpr bool is_complement(uint32_t literal) { return (literal >> 31) != 0; }

inline constexpr uint64_t words_for(uint64_t bits) { return (bits + 63) / 64; }
inline bool bit_at(const uint64_t* words, uint32_t i) { return (words[i / 64] >> i % 64 & 1) != 0; }
inline void flip_bit(uint64_t* words, uint32_t i) { words[i / 64] ^= uint64_t{1} << i % 64; }

inline bool holds(uint32_t literal, const uint64_t* words) {
  return bit_at(words, variable_of(literal)) != is_complement(literal);
}

}  // namespace zorv::plugin
