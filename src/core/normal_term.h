// NormalTerm: a term brought to the rules of its domain, on its way into a merge.
#pragma once

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <cstdint>

#include "core/term.h"

namespace zorv {

// Literals as sort keys. Terms of more than a few are rare.
using Keys = boost::container::small_vector<uint32_t, 8>;

// Sorted literals as sort keys: the first four packed in two words, so that nearly all terms are
// copied and compared by a few instructions; the others, from degree 5 on, in `rest`. The words
// that a degree does not reach mean nothing, and an unused half of one is all ones.
struct NormalTerm {
  bool is_negated = false;  // the coefficient is minus that of the source
  uint32_t degree = 0;
  uint64_t head = ~uint64_t{0};
  uint64_t second = ~uint64_t{0};
  Keys rest;

  NormalTerm() = default;
  NormalTerm(const NormalTerm& other) { *this = other; }
  NormalTerm& operator=(const NormalTerm& other) {
    is_negated = other.is_negated;
    degree = other.degree;
    head = other.head;
    second = other.second;
    if (degree > 4) rest = other.rest;
    return *this;
  }

  void set() { degree = 0; }
  void set(uint32_t key) {
    degree = 1;
    head = pack(key, kNone);
  }
  void set(uint32_t low_key, uint32_t high_key) {
    degree = 2;
    head = pack(low_key, high_key);
  }
  // The lowest `n` keys, 3 or 4 of them, which ascend; the last counts only as the fourth.
  void set(uint32_t n, uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
    degree = n;
    head = pack(a, b);
    second = pack(c, n == 3 ? kNone : d);
  }
  // `keys` is sorted.
  void set(const Keys& keys);

  // The bits of all keys, or-ed: those of a term of this degree whose words are given, or-ed over
  // many if need be, and of its other keys.
  static uint32_t used_bits(uint32_t degree, uint64_t head, uint64_t second, uint32_t rest) {
    const auto both = [](uint64_t word) {
      return static_cast<uint32_t>(word >> 32) | static_cast<uint32_t>(word);
    };
    if (degree == 1) return static_cast<uint32_t>(head >> 32);
    if (degree == 2) return both(head);
    if (degree == 3) return both(head) | static_cast<uint32_t>(second >> 32);
    return both(head) | both(second) | rest;
  }

  uint32_t key(uint32_t i) const {
    if (i >= 4) return rest[i - 4];
    const uint64_t word = i < 2 ? head : second;
    return static_cast<uint32_t>(i % 2 == 0 ? word >> 32 : word);
  }

 private:
  static constexpr uint32_t kNone = 0xFFFFFFFF;
  static uint64_t pack(uint32_t low, uint32_t high) { return uint64_t{low} << 32 | high; }
};

inline void NormalTerm::set(const Keys& keys) {
  const auto n = static_cast<uint32_t>(keys.size());
  if (n < 3) return n == 0 ? set() : n == 1 ? set(keys[0]) : set(keys[0], keys[1]);
  set(n, keys[0], keys[1], keys[2], n == 3 ? kNone : keys[3]);
  if (n > 4) rest.assign(keys.begin() + 4, keys.end());
}

inline bool same_literals(const NormalTerm& a, const NormalTerm& b) {
  return a.head == b.head && a.degree == b.degree && (a.degree < 3 || a.second == b.second) &&
         (a.degree < 5 || a.rest == b.rest);
}

// Term order.
inline bool precedes(const NormalTerm& a, const NormalTerm& b) {
  if (a.degree != b.degree) return a.degree < b.degree;
  if (a.head != b.head || a.degree < 3) return a.head < b.head;
  if (a.second != b.second || a.degree < 5) return a.second < b.second;
  return a.rest < b.rest;
}

// Brings two keys, and thereby short lists, in order without a branch: as good as random, it would
// be guessed wrong half of the time.
inline void order_keys(uint32_t& a, uint32_t& b) {
  const uint32_t swapped = (a ^ b) & (0u - static_cast<uint32_t>(b < a));
  a ^= swapped;
  b ^= swapped;
}

// The literals of `vars` as sort keys, sorted, in `keys`.
inline void load_sorted_keys(const VarList& vars, Keys& keys) {
  const uint32_t degree = vars.degree();
  keys.resize(degree, boost::container::default_init);
  for (uint32_t i = 0; i < degree; ++i) keys[i] = sort_key(vars[i]);
  std::sort(keys.begin(), keys.end());
}

// Takes equal neighbours away two by two: of an odd number one is left, of an even number none.
inline void cancel_pairs(Keys& sorted_keys) {
  size_t kept = 0;
  for (const uint32_t key : sorted_keys) {
    if (kept > 0 && sorted_keys[kept - 1] == key) {
      --kept;
    } else {
      sorted_keys[kept++] = key;
    }
  }
  sorted_keys.resize(kept);
}

}  // namespace zorv
