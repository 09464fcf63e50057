// VarList: the literals of one product term in one word, whose top 16 bits tell which of three
// forms it has.
//
//   the head pair   up to two literals, the first in the low half; kNoLiteral fills what is empty
//   packed keys     three or four literals whose sort keys have at most 16 or 12 bits each, as have
//                   the first 32,768 or 2,048 variables; the first in the lowest bits
//   a block         of malloc, for all others: the degree, the literals, and kNoLiteral behind;
//                   the rest of the word is its address
//
// It is stored with the mark of a block flipped: a block's address then stands there as it is, and
// tools that look for lost memory see it.
//
// The literals stand in the order of creation; only a simplification sorts them. Callers hand over
// literals unchecked: a head pair whose second literal has the bits of a mark goes to a block.
//
// Callers also see the literals from the third on, as a run closed by kNoLiteral that is good as
// long as the list. A packed list gets a block when it is first asked for that run, while others
// may read it: so the word is read and exchanged as an atomic, and one list may have two forms.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "core/literal.h"

namespace zorv {

class VarList {
 public:
  VarList() = default;
  explicit VarList(uint32_t literal) : stored_(flip(pair(literal, kNoLiteral))) {}
  // `a` may be kNoLiteral; `b` then goes to the first slot.
  VarList(uint32_t a, uint32_t b) : VarList(a == kNoLiteral ? pair(b, a) : pair(a, b)) {}
  VarList(const uint32_t* literals, uint32_t n)
      : stored_(flip(n > 2 ? long_word(literals, n)
                           : pair_word(pair(n > 0 ? literals[0] : kNoLiteral,
                                            n > 1 ? literals[1] : kNoLiteral)))) {}
  VarList(const VarList& other) : stored_(flip(other.word())) {
    if (is_block()) set(other.copied_block());
  }
  VarList(VarList&& other) noexcept : stored_(std::exchange(other.stored_, flip(kEmpty))) {}
  VarList& operator=(const VarList& other) { return *this = VarList(other); }
  VarList& operator=(VarList&& other) noexcept;
  ~VarList() {
    if (is_block()) free_block();
  }

  // From a head pair and a run of further literals, which may be null and counts only if both
  // literals of the pair are there.
  static VarList copy_of(uint64_t head_pair, const uint32_t* overflow);
  // The same, and frees the run, a block of malloc.
  static VarList adopt(uint64_t head_pair, uint32_t* overflow);
  // The literals of `a`, then those of `b`.
  static VarList concat(const VarList& a, const VarList& b) {
    const uint64_t x = a.word(), y = b.word();
    if (is_single(x) && is_single(y)) {
      return VarList(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
    }
    return concat_any(a, b);
  }

  uint32_t degree() const;
  uint32_t operator[](uint32_t i) const;
  // The head pair of up to two literals; anything else has the highest bit set, as has a pair
  // whose second literal is negated or missing.
  uint64_t word() const {
    return flip(std::atomic_ref<uint64_t>(stored_).load(std::memory_order_acquire));
  }
  uint64_t head_pair() const;
  // The literals from the third on, closed by kNoLiteral; null if there are none.
  const uint32_t* overflow() const;
  // Same degree and the same raw literals at every position.
  bool operator==(const VarList& other) const {
    const uint64_t x = word(), y = other.word();
    return x == y || (is_marked(x) && is_marked(y) && has_same_literals(other));
  }

  void append(uint32_t literal);
  void append(const VarList& other);

  // Walks the literals in order: for (uint32_t literal : list).
  class Iterator;
  Iterator begin() const;
  Iterator end() const;

 private:
  static constexpr uint64_t kEmpty = ~uint64_t{0};
  // Negated and an atom at once, which no literal is. Behind kBlock come the marks of three and of
  // four packed keys.
  static constexpr uint64_t kBlock = 0xC000;
  static constexpr uint32_t kMostPacked = 4;

  static uint64_t pair(uint32_t a, uint32_t b) { return a | uint64_t{b} << 32; }
  // Between a word and what is stored of it.
  static constexpr uint64_t flip(uint64_t word) { return word ^ kBlock << 48; }
  void set(uint64_t word) { stored_ = flip(word); }
  // A block or packed keys.
  static bool is_marked(uint64_t word) { return (word >> 48) - kBlock <= kMostPacked; }
  static bool is_block(uint64_t word) { return word >> 48 == kBlock; }
  bool is_block() const { return is_block(flip(stored_)); }
  static bool is_single(uint64_t word) {
    return word >> 32 == kNoLiteral && static_cast<uint32_t>(word) != kNoLiteral;
  }
  static constexpr uint32_t key_bits(uint32_t degree) { return degree == 3 ? 16 : 12; }
  static uint32_t* block(uint64_t word) {
    return reinterpret_cast<uint32_t*>(word & ~(kBlock << 48));
  }

  // As it stands.
  explicit VarList(uint64_t head_pair) : stored_(flip(pair_word(head_pair))) {}
  static uint64_t pair_word(uint64_t head_pair) {
    return is_marked(head_pair) ? block_of_pair(head_pair) : head_pair;
  }
  static uint64_t block_of_pair(uint64_t head_pair);
  static uint64_t long_word(const uint32_t* literals, uint32_t n);
  static VarList concat_any(const VarList& a, const VarList& b);
  uint64_t copied_block() const;
  const uint32_t* overflow_of_packed() const;
  bool has_same_literals(const VarList& other) const;
  void free_block();
  // Makes this a list of more literals in a block, the first ones as they are; returns them.
  uint32_t* grow(uint32_t degree);

  mutable uint64_t stored_ = flip(kEmpty);
};

static_assert(sizeof(VarList) == 8);

inline uint32_t VarList::degree() const {
  const uint64_t word = this->word();
  if (is_marked(word)) {
    return is_block(word) ? *block(word) : static_cast<uint32_t>((word >> 48) - kBlock);
  }
  if (static_cast<uint32_t>(word) == kNoLiteral) return 0;
  return word >> 32 == kNoLiteral ? 1 : 2;
}

inline uint32_t VarList::operator[](uint32_t i) const {
  const uint64_t word = this->word();
  if (!is_marked(word)) return static_cast<uint32_t>(word >> 32 * i);
  if (is_block(word)) return block(word)[1 + i];
  const uint32_t bits = key_bits(static_cast<uint32_t>((word >> 48) - kBlock));
  return literal_of_key(static_cast<uint32_t>(word >> bits * i) & ((1u << bits) - 1));
}

inline uint64_t VarList::head_pair() const {
  const uint64_t word = this->word();
  return is_marked(word) ? pair((*this)[0], (*this)[1]) : word;
}

inline const uint32_t* VarList::overflow() const {
  const uint64_t word = this->word();
  if (!is_marked(word)) return nullptr;
  if (!is_block(word)) return overflow_of_packed();
  return *block(word) > 2 ? block(word) + 3 : nullptr;
}

class VarList::Iterator {
 public:
  Iterator(const VarList& list, uint32_t i) : list_(list), i_(i) {}
  uint32_t operator*() const { return list_[i_]; }
  Iterator& operator++() {
    ++i_;
    return *this;
  }
  bool operator!=(const Iterator& other) const { return i_ != other.i_; }

 private:
  const VarList& list_;
  uint32_t i_;
};

inline VarList::Iterator VarList::begin() const { return Iterator(*this, 0); }
inline VarList::Iterator VarList::end() const { return Iterator(*this, degree()); }

}  // namespace zorv
