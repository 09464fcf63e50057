// The bit layout of a literal. No mask of it is written anywhere else.
//
//   bit 31     negation: the complement of the variable (1 - x as 0/1, -s as -1/+1)
//   bit 30     integer atom: the index refers to IntVarRegistry, not to VarRegistry
//   bits 29-0  index
//
// An atom is never negated. 0xFFFFFFFF fills an empty slot and names nothing.
#pragma once

#include <cstdint>

namespace zorv {

inline constexpr uint32_t kNoLiteral = 0xFFFFFFFFu;
inline constexpr uint32_t kNegationBit = 0x80000000u;
inline constexpr uint32_t kAtomBit = 0x40000000u;
inline constexpr uint32_t kIndexMask = 0x3FFFFFFFu;
inline constexpr uint32_t kIdentityMask = 0x7FFFFFFFu;
inline constexpr uint32_t kMaxVariables = 0x3FFFFFFFu;  // per registry

inline constexpr bool is_negated(uint32_t literal) { return (literal & kNegationBit) != 0; }
inline constexpr bool is_atom(uint32_t literal) { return (literal & kAtomBit) != 0; }
inline constexpr uint32_t index_of(uint32_t literal) { return literal & kIndexMask; }
// The variable of a literal, negation left aside; for an atom the atom bit stays.
inline constexpr uint32_t identity_of(uint32_t literal) { return literal & kIdentityMask; }
inline constexpr uint32_t atom_literal(uint32_t index) { return index | kAtomBit; }

// The key by which all literals are ordered: x and ~x are neighbours, x first, and every binary
// variable precedes every atom.
inline constexpr uint32_t sort_key(uint32_t literal) { return literal << 1 | literal >> 31; }
inline constexpr uint32_t literal_of_key(uint32_t key) { return key >> 1 | key << 31; }

}  // namespace zorv
