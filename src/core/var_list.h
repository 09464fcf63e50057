// VarList: the literals of one product term, up to two of them inline.
//
// Invariants
//   1. The slots fill from the front: head[0], head[1], then the overflow block.
//   2. kNoLiteral fills an empty head slot and closes the overflow block.
//   3. The block comes from malloc, with room for the degree rounded down to an even number of
//      entries (degree 3: 2, 4: 4, 5: 4), so the closing entry always fits and growing by one
//      literal reallocates only when the degree becomes even. Callers hand over and receive blocks
//      of this form, which is why the rule is fixed.
//   4. A block that is present may still be empty; the list then has degree 2.
// The literals stand in the order of creation; only a simplification sorts them.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "core/literal.h"

namespace zorv {

class VarList {
 public:
  VarList() = default;
  explicit VarList(uint32_t literal) : head_{literal, kNoLiteral} {}
  // `a` may be kNoLiteral; `b` then goes to the first slot.
  VarList(uint32_t a, uint32_t b)
      : head_{a == kNoLiteral ? b : a, a == kNoLiteral ? kNoLiteral : b} {}
  VarList(const uint32_t* literals, uint32_t n);
  VarList(const VarList& other)
      : head_{other.head_[0], other.head_[1]},
        overflow_(other.overflow_ == nullptr ? nullptr : copy_block(other.overflow_)) {}
  VarList(VarList&& other) noexcept;
  VarList& operator=(const VarList& other);
  VarList& operator=(VarList&& other) noexcept;
  ~VarList() {
    if (overflow_ != nullptr) std::free(overflow_);
  }

  // A head pair is one 64-bit value, the first literal in its low half. `adopt` takes the block
  // over as it is, unchecked; `copy_of` copies it, and only if both head slots are filled.
  static VarList adopt(uint64_t head_pair, uint32_t* overflow);
  static VarList copy_of(uint64_t head_pair, const uint32_t* overflow);
  // The literals of `a`, then those of `b`.
  static VarList concat(const VarList& a, const VarList& b) {
    if (a.degree_capped_at_3() == 1 && b.degree_capped_at_3() == 1) {
      return VarList(a.head_[0], b.head_[0]);
    }
    return concat_any(a, b);
  }

  uint32_t degree() const;
  // At most `degree()`, at no cost: exact up to 2, and 3 for anything longer.
  uint32_t degree_capped_at_3() const;
  uint32_t operator[](uint32_t i) const { return i < 2 ? head_[i] : overflow_[i - 2]; }
  uint32_t& operator[](uint32_t i) { return i < 2 ? head_[i] : overflow_[i - 2]; }
  uint64_t head_pair() const { return head_[0] | static_cast<uint64_t>(head_[1]) << 32; }
  void set_head_pair(uint64_t head_pair) {
    head_[0] = static_cast<uint32_t>(head_pair);
    head_[1] = static_cast<uint32_t>(head_pair >> 32);
  }
  const uint32_t* overflow() const { return overflow_; }
  bool has_overflow() const { return overflow_ != nullptr && overflow_[0] != kNoLiteral; }
  // Same degree and the same raw literals at every position.
  bool operator==(const VarList& other) const;

  void append(uint32_t literal);
  void append(const VarList& other);

  // Walks the literals in order: for (uint32_t literal : list).
  class Iterator;
  struct Sentinel {};
  Iterator begin() const;
  Sentinel end() const { return {}; }

 private:
  static uint32_t* copy_block(const uint32_t* overflow);
  static VarList concat_any(const VarList& a, const VarList& b);

  uint32_t head_[2] = {kNoLiteral, kNoLiteral};
  uint32_t* overflow_ = nullptr;
};

class VarList::Iterator {
 public:
  explicit Iterator(const VarList& list) : list_(list) {}
  uint32_t operator*() const { return list_[i_]; }
  Iterator& operator++() {
    ++i_;
    return *this;
  }
  bool operator!=(Sentinel) const {
    if (i_ == 2 && list_.overflow_ == nullptr) return false;
    return list_[i_] != kNoLiteral;
  }

 private:
  const VarList& list_;
  uint32_t i_ = 0;
};

inline VarList::Iterator VarList::begin() const { return Iterator(*this); }

inline uint32_t VarList::degree_capped_at_3() const {
  if (head_[0] == kNoLiteral) return 0;
  if (head_[1] == kNoLiteral) return 1;
  return has_overflow() ? 3 : 2;
}

inline VarList::VarList(VarList&& other) noexcept
    : head_{other.head_[0], other.head_[1]}, overflow_(other.overflow_) {
  other.head_[0] = other.head_[1] = kNoLiteral;
  other.overflow_ = nullptr;
}

static_assert(sizeof(VarList) == 16);

}  // namespace zorv
