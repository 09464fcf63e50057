// CompactCoeff: an exact, unbounded integer in one word, the coefficient of a term.
//
// Invariants
//   1. A value from -2^62 to 2^62 - 1 is small: the word is twice the value, and there is no other
//      form of it.
//   2. Any other value stands in a block on the heap; the word is the block's address plus 1, an
//      odd number, in which tools that look for lost memory still see the block. Copies share it
//      and count its users, and nobody changes it. So a copy never allocates.
//   3. Nothing points into the word: its bytes may be moved like those of any number.
#pragma once

#include <atomic>
#include <concepts>
#include <cstdint>
#include <utility>

#include "core/coeff.h"

namespace zorv {

class CompactCoeff {
 public:
  static constexpr int64_t kMostSmall = (int64_t{1} << 62) - 1;
  static constexpr int64_t kLeastSmall = -(int64_t{1} << 62);

  CompactCoeff() = default;
  template <std::integral T>
  CompactCoeff(T value);
  CompactCoeff(const coeff_t& value);
  CompactCoeff(coeff_t&& value);
  CompactCoeff(const CompactCoeff& other) noexcept : word_(other.word_) {
    if (!is_small()) share();
  }
  CompactCoeff(CompactCoeff&& other) noexcept : word_(std::exchange(other.word_, 0)) {}
  CompactCoeff& operator=(const CompactCoeff& other) noexcept {
    return *this = CompactCoeff(other);
  }
  CompactCoeff& operator=(CompactCoeff&& other) noexcept {
    if (this == &other) return *this;
    if (!is_small()) release();
    word_ = std::exchange(other.word_, 0);
    return *this;
  }
  ~CompactCoeff() {
    if (!is_small()) release();
  }

  bool is_small() const { return (word_ & 1) == 0; }
  // Of a small one.
  int64_t small() const { return word_ >> 1; }
  // Of one that is not small.
  const coeff_t& large() const { return block()->value; }
  explicit operator coeff_t() const { return is_small() ? coeff_t(small()) : large(); }

  CompactCoeff& operator+=(const CompactCoeff& other);
  CompactCoeff& operator-=(const CompactCoeff& other);
  CompactCoeff& operator*=(const CompactCoeff& other) { return *this = *this * other; }
  friend CompactCoeff operator*(const CompactCoeff& a, const CompactCoeff& b);
  friend CompactCoeff operator+(CompactCoeff a, const CompactCoeff& b) {
    a += b;
    return a;
  }
  friend CompactCoeff operator-(CompactCoeff a, const CompactCoeff& b) {
    a -= b;
    return a;
  }
  CompactCoeff operator-() const {
    CompactCoeff negative = *this;
    negative.negate();
    return negative;
  }
  friend bool operator==(const CompactCoeff& a, const CompactCoeff& b) {
    return a.word_ == b.word_ || (!a.is_small() && !b.is_small() && a.large() == b.large());
  }
  void negate();

 private:
  struct Block {
    const coeff_t value;
    std::atomic<uint64_t> users{1};
  };

  static bool are_small(const CompactCoeff& a, const CompactCoeff& b) {
    return ((a.word_ | b.word_) & 1) == 0;
  }
  Block* block() const { return reinterpret_cast<Block*>(word_ - 1); }
  void hold(Block* made) { word_ = reinterpret_cast<int64_t>(made) + 1; }
  void share() const { block()->users.fetch_add(1, std::memory_order_relaxed); }
  void release();
  void add_large(const CompactCoeff& other);
  void subtract_large(const CompactCoeff& other);
  static CompactCoeff multiply_large(const CompactCoeff& a, const CompactCoeff& b);

  int64_t word_ = 0;
};

static_assert(sizeof(CompactCoeff) == 8);

template <std::integral T>
CompactCoeff::CompactCoeff(T value) {
  bool fits;
  if constexpr (std::signed_integral<T>) {
    fits = kLeastSmall <= int64_t{value} && int64_t{value} <= kMostSmall;
  } else {
    fits = uint64_t{value} <= static_cast<uint64_t>(kMostSmall);
  }
  if (fits) {
    word_ = 2 * static_cast<int64_t>(value);
  } else {
    *this = CompactCoeff(coeff_t(value));
  }
}

inline CompactCoeff& CompactCoeff::operator+=(const CompactCoeff& other) {
  int64_t sum;
  if (are_small(*this, other) && !__builtin_add_overflow(word_, other.word_, &sum)) {
    word_ = sum;
  } else {
    add_large(other);
  }
  return *this;
}

inline CompactCoeff& CompactCoeff::operator-=(const CompactCoeff& other) {
  int64_t difference;
  if (are_small(*this, other) && !__builtin_sub_overflow(word_, other.word_, &difference)) {
    word_ = difference;
  } else {
    subtract_large(other);
  }
  return *this;
}

inline CompactCoeff operator*(const CompactCoeff& a, const CompactCoeff& b) {
  int64_t twice;
  if (CompactCoeff::are_small(a, b) && !__builtin_mul_overflow(a.small(), b.word_, &twice)) {
    CompactCoeff product;
    product.word_ = twice;
    return product;
  }
  return CompactCoeff::multiply_large(a, b);
}

inline void CompactCoeff::negate() {
  if (is_small() && word_ != INT64_MIN) {
    word_ = -word_;
  } else {
    *this = 0 - *this;
  }
}

inline bool is_zero(const CompactCoeff& c) { return c == 0; }
inline bool is_one(const CompactCoeff& c) { return c == 1; }
inline bool is_negative(const CompactCoeff& c) {
  return c.is_small() ? c.small() < 0 : is_negative(c.large());
}
inline void negate(CompactCoeff& c) { c.negate(); }

// Sums and products in the type of models and results.
inline coeff_t& operator+=(coeff_t& sum, const CompactCoeff& c) {
  return c.is_small() ? sum += c.small() : sum += c.large();
}
inline coeff_t& operator-=(coeff_t& difference, const CompactCoeff& c) {
  return c.is_small() ? difference -= c.small() : difference -= c.large();
}
inline coeff_t& operator*=(coeff_t& product, const CompactCoeff& c) {
  return c.is_small() ? product *= c.small() : product *= c.large();
}

}  // namespace zorv
