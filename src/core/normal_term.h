// NormalTerm: a term brought to the rules of its domain, on its way into a merge.
#pragma once

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <cstdint>

#include "core/term.h"

namespace zorv {

// Literals as sort keys. Terms of more than a few are rare.
using Keys = boost::container::small_vector<uint32_t, 8>;

// Sorted literals as sort keys: the first two packed in one word, so that a term of degree 2 or
// less is compared by one instruction; the rest in `tail`, which means something from degree 3 on
// only. An unused half of the word is all ones.
struct NormalTerm {
  bool is_negated = false;  // the coefficient is minus that of the source
  uint32_t degree = 0;
  uint64_t head = ~uint64_t{0};
  Keys tail;

  NormalTerm() = default;
  NormalTerm(const NormalTerm& other) { *this = other; }
  NormalTerm& operator=(const NormalTerm& other) {
    is_negated = other.is_negated;
    degree = other.degree;
    head = other.head;
    if (degree > 2) tail = other.tail;
    return *this;
  }

  void set() { degree = 0; }
  void set(uint32_t key) {
    degree = 1;
    head = static_cast<uint64_t>(key) << 32 | 0xFFFFFFFFu;
  }
  void set(uint32_t low_key, uint32_t high_key) {
    degree = 2;
    head = static_cast<uint64_t>(low_key) << 32 | high_key;
  }
  // `keys` is sorted.
  void set(const Keys& keys);

  uint32_t key(uint32_t i) const {
    if (i < 2) return static_cast<uint32_t>(i == 0 ? head >> 32 : head);
    return tail[i - 2];
  }
};

inline void NormalTerm::set(const Keys& keys) {
  switch (keys.size()) {
    case 0:
      return set();
    case 1:
      return set(keys[0]);
    case 2:
      return set(keys[0], keys[1]);
    default:
      set(keys[0], keys[1]);
      degree = static_cast<uint32_t>(keys.size());
      tail.assign(keys.begin() + 2, keys.end());
  }
}

inline bool same_literals(const NormalTerm& a, const NormalTerm& b) {
  return a.head == b.head && a.degree == b.degree && (a.degree < 3 || a.tail == b.tail);
}

// Term order.
inline bool precedes(const NormalTerm& a, const NormalTerm& b) {
  if (a.degree != b.degree) return a.degree < b.degree;
  if (a.head != b.head) return a.head < b.head;
  return a.degree > 2 && a.tail < b.tail;
}

// Without a branch for the short lists that most terms have: their order is as good as random.
inline void sort_keys(Keys& keys) {
  const auto order = [&](size_t i, size_t j) {
    const uint32_t low = std::min(keys[i], keys[j]), high = std::max(keys[i], keys[j]);
    keys[i] = low;
    keys[j] = high;
  };
  if (keys.size() == 3) {
    order(0, 1), order(1, 2), order(0, 1);
  } else if (keys.size() == 4) {
    order(0, 1), order(2, 3), order(0, 2), order(1, 3), order(1, 2);
  } else {
    std::sort(keys.begin(), keys.end());
  }
}

// The literals of `vars` as sort keys, sorted, in `keys`.
inline void load_sorted_keys(const VarList& vars, Keys& keys) {
  const uint32_t degree = vars.degree();
  keys.resize(degree, boost::container::default_init);
  for (uint32_t i = 0; i < degree; ++i) keys[i] = sort_key(vars[i]);
  sort_keys(keys);
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
