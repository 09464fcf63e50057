// VarList: the literals of one product term in one word.
//
// Invariants
//   1. The word is the head pair, the first literal in its low half; kNoLiteral fills what is
//   empty.
//      The literals stand in the order of creation; only a simplification sorts them.
//   2. A list of three literals or more stands in a block of malloc: its degree, its literals, and
//      kNoLiteral behind them. The word is then the block's address with kBlockMark in its top 16
//      bits. So does a pair whose second literal has the bits of that mark: no such literal names
//      anything, but callers hand over literals unchecked.
//   3. A block has room for the literals and, as malloc rounds sizes up, for a few more.
// What callers see of the literals from the third on, and hand over, is a run closed by kNoLiteral.
#pragma once

#include <cstdint>
#include <utility>

#include "core/literal.h"

namespace zorv {

class VarList {
 public:
  VarList() = default;
  explicit VarList(uint32_t literal) : word_(pair(literal, kNoLiteral)) {}
  // `a` may be kNoLiteral; `b` then goes to the first slot.
  VarList(uint32_t a, uint32_t b) : VarList(a == kNoLiteral ? pair(b, a) : pair(a, b)) {}
  VarList(const uint32_t* literals, uint32_t n)
      : word_(n > 2 ? block_of(literals, n)
                    : word_of(pair(n > 0 ? literals[0] : kNoLiteral,
                                   n > 1 ? literals[1] : kNoLiteral))) {}
  VarList(const VarList& other) : word_(other.is_block() ? other.copied_block() : other.word_) {}
  VarList(VarList&& other) noexcept : word_(std::exchange(other.word_, kEmpty)) {}
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
    if (a.is_single() && b.is_single()) {
      return VarList(static_cast<uint32_t>(a.word_), static_cast<uint32_t>(b.word_));
    }
    return concat_any(a, b);
  }

  uint32_t degree() const { return is_block() ? *block() : inline_degree(); }
  uint32_t operator[](uint32_t i) const {
    return is_block() ? block()[1 + i] : static_cast<uint32_t>(word_ >> 32 * i);
  }
  // The head pair of up to two literals; anything else has the highest bit set, as has a pair
  // whose second literal is negated or missing.
  uint64_t word() const { return word_; }
  uint64_t head_pair() const { return is_block() ? pair(block()[1], block()[2]) : word_; }
  // The literals from the third on, closed by kNoLiteral; null if there are none.
  const uint32_t* overflow() const { return degree() > 2 ? block() + 3 : nullptr; }
  // Same degree and the same raw literals at every position.
  bool operator==(const VarList& other) const {
    return word_ == other.word_ || (is_block() && other.is_block() && has_same_block(other));
  }

  void append(uint32_t literal);
  void append(const VarList& other);

  // Walks the literals in order: for (uint32_t literal : list).
  class Iterator;
  Iterator begin() const;
  Iterator end() const;

 private:
  static constexpr uint64_t kEmpty = ~uint64_t{0};
  static constexpr uint64_t kBlockMark = 0xC000;  // negated and an atom, which no literal is

  static uint64_t pair(uint32_t a, uint32_t b) { return a | uint64_t{b} << 32; }
  static bool is_block(uint64_t word) { return word >> 48 == kBlockMark; }
  bool is_block() const { return is_block(word_); }
  bool is_single() const {
    return word_ >> 32 == kNoLiteral && static_cast<uint32_t>(word_) != kNoLiteral;
  }
  uint32_t inline_degree() const {
    if (static_cast<uint32_t>(word_) == kNoLiteral) return 0;
    return word_ >> 32 == kNoLiteral ? 1 : 2;
  }
  static uint32_t* block(uint64_t word) {
    return reinterpret_cast<uint32_t*>(word & ~(kBlockMark << 48));
  }
  uint32_t* block() const { return block(word_); }

  // As it stands.
  explicit VarList(uint64_t head_pair) : word_(word_of(head_pair)) {}
  static VarList concat_any(const VarList& a, const VarList& b);
  static uint64_t word_of(uint64_t head_pair) {
    return is_block(head_pair) ? block_of_pair(head_pair) : head_pair;
  }
  static uint64_t block_of_pair(uint64_t head_pair);
  static uint64_t block_of(const uint32_t* literals, uint32_t n);
  uint64_t copied_block() const;
  bool has_same_block(const VarList& other) const;
  void free_block();
  // Makes this a list of `degree` literals, 3 or more, the first ones as they are.
  uint32_t* grow(uint32_t degree);

  uint64_t word_ = kEmpty;
};

static_assert(sizeof(VarList) == 8);

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
