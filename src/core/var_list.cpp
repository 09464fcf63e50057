#include "core/var_list.h"

#include <cassert>
#include <cstring>
#include <new>
#include <utility>

namespace zorv {

namespace {

// Degrees have 32 bits, and so has the room for the list that closes with kNoLiteral.
constexpr uint32_t kMaxDegree = UINT32_MAX - 3;

// Entries of the overflow block of a list of this degree (3 or more).
constexpr uint32_t overflow_room(uint32_t degree) { return degree & ~1u; }

uint32_t overflow_length(const uint32_t* overflow) {
  if (overflow == nullptr) return 0;
  uint32_t n = 0;
  while (overflow[n] != kNoLiteral) ++n;
  return n;
}

uint32_t* resize_block(uint32_t* block, uint32_t entries) {
  auto* grown = static_cast<uint32_t*>(std::realloc(block, entries * sizeof(uint32_t)));
  if (grown == nullptr) throw std::bad_alloc();
  return grown;
}

// A closed block that holds the `n` literals; null for none.
uint32_t* new_block(const uint32_t* literals, uint32_t n) {
  if (n == 0) return nullptr;
  uint32_t* block = resize_block(nullptr, overflow_room(n + 2));
  std::memcpy(block, literals, n * sizeof(uint32_t));
  block[n] = kNoLiteral;
  return block;
}

}  // namespace

VarList::VarList(const uint32_t* literals, uint32_t n) {
  if (n > 0) head_[0] = literals[0];
  if (n > 1) head_[1] = literals[1];
  if (n > 2) overflow_ = new_block(literals + 2, n - 2);
}

uint32_t* VarList::copy_block(const uint32_t* overflow) {
  return new_block(overflow, overflow_length(overflow));
}

VarList& VarList::operator=(const VarList& other) {
  if (this != &other) *this = VarList(other);
  return *this;
}

VarList& VarList::operator=(VarList&& other) noexcept {
  if (this == &other) return *this;
  std::free(overflow_);
  head_[0] = std::exchange(other.head_[0], kNoLiteral);
  head_[1] = std::exchange(other.head_[1], kNoLiteral);
  overflow_ = std::exchange(other.overflow_, nullptr);
  return *this;
}

VarList VarList::adopt(uint64_t head_pair, uint32_t* overflow) {
  VarList list;
  list.set_head_pair(head_pair);
  list.overflow_ = overflow;
  return list;
}

VarList VarList::copy_of(uint64_t head_pair, const uint32_t* overflow) {
  VarList list = adopt(head_pair, nullptr);
  if (list.head_[0] != kNoLiteral && list.head_[1] != kNoLiteral) {
    list.overflow_ = copy_block(overflow);
  }
  return list;
}

VarList VarList::concat_any(const VarList& a, const VarList& b) {
  VarList joined = a;
  joined.append(b);
  return joined;
}

uint32_t VarList::degree() const {
  const uint32_t capped = degree_capped_at_3();
  return capped < 3 ? capped : 2 + overflow_length(overflow_);
}

bool VarList::operator==(const VarList& other) const {
  if (head_pair() != other.head_pair()) return false;
  const uint32_t n = overflow_length(overflow_);
  return n == overflow_length(other.overflow_) &&
         (n == 0 || std::memcmp(overflow_, other.overflow_, n * sizeof(uint32_t)) == 0);
}

void VarList::append(uint32_t literal) {
  assert(literal != kNoLiteral);
  if (head_[0] == kNoLiteral) {
    head_[0] = literal;
  } else if (head_[1] == kNoLiteral) {
    head_[1] = literal;
  } else {
    const uint32_t n = overflow_length(overflow_);
    // An empty block was made for at least one literal, so only a full one has to grow.
    if (overflow_ == nullptr || (n > 0 && n % 2 == 1)) {
      overflow_ = resize_block(overflow_, overflow_room(n + 3));
    }
    overflow_[n] = literal;
    overflow_[n + 1] = kNoLiteral;
  }
}

void VarList::append(const VarList& other) {
  const uint32_t mine = degree();
  const uint32_t theirs = other.degree();
  if (theirs == 0) return;
  if (theirs > kMaxDegree - mine) throw std::bad_alloc();
  if (mine + theirs > 2) {
    overflow_ = resize_block(overflow_, overflow_room(mine + theirs));
    overflow_[mine + theirs - 2] = kNoLiteral;
  }
  // `other` may be this very list: its literals below `theirs` are not overwritten.
  for (uint32_t i = 0; i < theirs; ++i) (*this)[mine + i] = other[i];
}

}  // namespace zorv
