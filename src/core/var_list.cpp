#include "core/var_list.h"

#include <cassert>
#include <cstdlib>
#include <cstring>
#include <new>

namespace zorv {

namespace {

// Degrees have 32 bits, and so has the room for the list with all that stands around it.
constexpr uint32_t kMaxDegree = UINT32_MAX - 8;

// Entries of the block of a list of this degree: what malloc gives anyway for degree + 2, its
// blocks being of 6, 10, 14, ... entries.
constexpr uint32_t room_for(uint32_t degree) { return ((degree + 3) & ~3u) + 2; }

uint32_t* resize_block(uint32_t* block, uint32_t degree) {
  const uint64_t bytes = sizeof(uint32_t) * uint64_t{room_for(degree)};
  auto* resized =
      static_cast<uint32_t*>(block == nullptr ? std::malloc(bytes) : std::realloc(block, bytes));
  if (resized == nullptr) throw std::bad_alloc();
  resized[0] = degree;
  resized[1 + degree] = kNoLiteral;
  return resized;
}

uint32_t* new_block(const uint32_t* literals, uint32_t n) {
  uint32_t* const made = resize_block(nullptr, n);
  for (uint32_t i = 0; i < n; ++i) made[1 + i] = literals[i];  // few: not worth a call
  return made;
}

uint32_t run_length(const uint32_t* run) {
  uint32_t n = 0;
  while (run[n] != kNoLiteral) ++n;
  return n;
}

}  // namespace

VarList& VarList::operator=(VarList&& other) noexcept {
  if (this == &other) return *this;
  if (is_block()) free_block();
  stored_ = std::exchange(other.stored_, flip(kEmpty));
  return *this;
}

void VarList::free_block() { std::free(block(word())); }

uint64_t VarList::block_of_pair(uint64_t head_pair) {
  const uint32_t literals[] = {static_cast<uint32_t>(head_pair),
                               static_cast<uint32_t>(head_pair >> 32)};
  uint32_t* const made = new_block(literals, 2);
  if (literals[0] == kNoLiteral) made[0] = 0;
  return reinterpret_cast<uintptr_t>(made) | kBlock << 48;
}

uint64_t VarList::long_word(const uint32_t* literals, uint32_t n) {
  if (n <= kMostPacked) {
    const uint32_t bits = key_bits(n);
    uint64_t packed = 0;
    uint32_t used = 0;
    for (uint32_t i = n; i-- > 0;) {
      const uint32_t key = sort_key(literals[i]);
      used |= key;
      packed = packed << bits | key;
    }
    if (used >> bits == 0) return packed | (kBlock + n) << 48;
  }
  return reinterpret_cast<uintptr_t>(new_block(literals, n)) | kBlock << 48;
}

uint64_t VarList::copied_block() const {
  const uint32_t n = degree();
  if (n <= 2) return block_of_pair(head_pair());
  // As a copy it may be packed again.
  return long_word(overflow() - 2, n);
}

const uint32_t* VarList::overflow_of_packed() const {
  uint32_t literals[kMostPacked];
  const uint32_t n = degree();
  for (uint32_t i = 0; i < n; ++i) literals[i] = (*this)[i];
  uint32_t* const made = new_block(literals, n);
  uint64_t before = flip(word());
  const uint64_t block_word = reinterpret_cast<uintptr_t>(made) | kBlock << 48;
  if (!is_block(flip(before)) &&
      std::atomic_ref<uint64_t>(stored_).compare_exchange_strong(before, flip(block_word))) {
    return made + 3;
  }
  std::free(made);  // another thread was faster
  return block(flip(before)) + 3;
}

bool VarList::has_same_literals(const VarList& other) const {
  const uint32_t n = degree();
  if (n != other.degree() || head_pair() != other.head_pair()) return false;
  for (uint32_t i = 2; i < n; ++i) {
    if ((*this)[i] != other[i]) return false;
  }
  return true;
}

uint32_t* VarList::grow(uint32_t degree) {
  assert(degree > kMostPacked);
  if (is_block()) {
    uint32_t* grown = block(word());
    if (room_for(*grown) != room_for(degree)) grown = resize_block(grown, degree);
    grown[0] = degree;
    grown[1 + degree] = kNoLiteral;
    set(reinterpret_cast<uintptr_t>(grown) | kBlock << 48);
  } else {
    uint32_t* const made = resize_block(nullptr, degree);
    for (uint32_t i = 0, n = this->degree(); i < n; ++i) made[1 + i] = (*this)[i];
    set(reinterpret_cast<uintptr_t>(made) | kBlock << 48);
  }
  return block(word()) + 1;
}

VarList VarList::copy_of(uint64_t head_pair, const uint32_t* overflow) {
  VarList list(head_pair);
  if (list.degree() == 2 && overflow != nullptr) {
    list.append(VarList(overflow, run_length(overflow)));
  }
  return list;
}

VarList VarList::adopt(uint64_t head_pair, uint32_t* overflow) {
  VarList list = copy_of(head_pair, overflow);
  std::free(overflow);
  return list;
}

VarList VarList::concat_any(const VarList& a, const VarList& b) {
  VarList joined = a;
  joined.append(b);
  return joined;
}

void VarList::append(uint32_t literal) {
  assert(literal != kNoLiteral);
  if (degree() > 0) return append(VarList(literal));
  // Into the first slot, whatever stands in the second.
  *this = VarList(pair(literal, static_cast<uint32_t>(head_pair() >> 32)));
}

void VarList::append(const VarList& other) {
  const uint32_t mine = degree(), theirs = other.degree();
  if (theirs > kMaxDegree - mine) throw std::bad_alloc();
  if (theirs == 0) return;
  if (mine + theirs <= kMostPacked) {
    uint32_t literals[kMostPacked];
    for (uint32_t i = 0; i < mine; ++i) literals[i] = (*this)[i];
    for (uint32_t i = 0; i < theirs; ++i) literals[mine + i] = other[i];
    *this = VarList(literals, mine + theirs);
  } else {
    // `other` may be this very list: its literals below `theirs` stay where they are.
    uint32_t* const literals = grow(mine + theirs);
    for (uint32_t i = 0; i < theirs; ++i) literals[mine + i] = other[i];
  }
}

}  // namespace zorv
