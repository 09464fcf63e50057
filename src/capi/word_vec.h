// The run of words that a caller holds as three pointers, seen as the vector that it is.
#pragma once

#include <vector>

#include "zorv/wire.h"

namespace zorv {

// A WordVec has the layout of the standard vector, begin, end and end of storage, so the caller's
// record can take part in moves and swaps of vectors and no word is ever copied. Its block comes
// from operator new for that reason.
inline std::vector<uint64_t>& as_vector(WordVec* words) {
  static_assert(sizeof(std::vector<uint64_t>) == sizeof(WordVec));
  static_assert(alignof(std::vector<uint64_t>) == alignof(WordVec));
  return *reinterpret_cast<std::vector<uint64_t>*>(words);
}

// Hands the block of `from` over. What the caller's record held is freed, `from` is left empty.
inline void steal_words(std::vector<uint64_t>& from, WordVec* to) {
  std::vector<uint64_t> taken;
  taken.swap(from);
  as_vector(to).swap(taken);
}

}  // namespace zorv
