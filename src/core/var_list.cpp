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

uint32_t run_length(const uint32_t* run) {
  uint32_t n = 0;
  while (run[n] != kNoLiteral) ++n;
  return n;
}

}  // namespace

VarList& VarList::operator=(VarList&& other) noexcept {
  if (this == &other) return *this;
  if (is_block()) free_block();
  word_ = std::exchange(other.word_, kEmpty);
  return *this;
}

void VarList::free_block() { std::free(block()); }

uint64_t VarList::block_of(const uint32_t* literals, uint32_t n) {
  uint32_t* const made = resize_block(nullptr, n);
  for (uint32_t i = 0; i < n; ++i) made[1 + i] = literals[i];  // few: not worth a call
  return reinterpret_cast<uintptr_t>(made) | kBlockMark << 48;
}

uint64_t VarList::block_of_pair(uint64_t head_pair) {
  const uint32_t literals[] = {static_cast<uint32_t>(head_pair),
                               static_cast<uint32_t>(head_pair >> 32)};
  const uint64_t word = block_of(literals, 2);
  if (literals[0] == kNoLiteral) *VarList::block(word) = 0;
  return word;
}

uint64_t VarList::copied_block() const {
  return degree() <= 2 ? block_of_pair(head_pair()) : block_of(block() + 1, degree());
}

bool VarList::has_same_block(const VarList& other) const {
  return degree() == other.degree() && head_pair() == other.head_pair() &&
         (degree() <= 2 ||
          std::memcmp(overflow(), other.overflow(), (degree() - 2) * sizeof(uint32_t)) == 0);
}

uint32_t* VarList::grow(uint32_t degree) {
  assert(degree > 2);
  const uint64_t pair_before = head_pair();
  uint32_t* grown;
  if (is_block() && room_for(this->degree()) == room_for(degree)) {
    grown = block();
    grown[0] = degree;
    grown[1 + degree] = kNoLiteral;
  } else {
    grown = resize_block(is_block() ? block() : nullptr, degree);
  }
  std::memcpy(grown + 1, &pair_before, sizeof(pair_before));
  word_ = reinterpret_cast<uintptr_t>(grown) | kBlockMark << 48;
  return grown + 1;
}

VarList VarList::copy_of(uint64_t head_pair, const uint32_t* overflow) {
  VarList list(head_pair);
  if (list.degree() < 2 || overflow == nullptr || overflow[0] == kNoLiteral) return list;
  const uint32_t n = run_length(overflow);
  std::memcpy(list.grow(2 + n) + 2, overflow, n * sizeof(uint32_t));
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
  const uint32_t n = degree();
  if (n >= 2) {
    grow(n + 1)[n] = literal;
  } else {
    const uint64_t before = head_pair();
    const auto low = static_cast<uint32_t>(before), high = static_cast<uint32_t>(before >> 32);
    *this = VarList(n == 0 ? pair(literal, high) : pair(low, literal));
  }
}

void VarList::append(const VarList& other) {
  const uint32_t mine = degree(), theirs = other.degree();
  if (theirs > kMaxDegree - mine) throw std::bad_alloc();
  if (mine + theirs <= 2) {
    for (uint32_t i = 0; i < theirs; ++i) append(other[i]);
    return;
  }
  // `other` may be this very list: its literals below `theirs` stay where they are.
  uint32_t* const literals = grow(mine + theirs);
  for (uint32_t i = 0; i < theirs; ++i) literals[mine + i] = other[i];
}

}  // namespace zorv
