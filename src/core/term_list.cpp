#include "core/term_list.h"

#include <algorithm>

#include "core/block_cache.h"
#include "core/parallel.h"
#include "core/sizes.h"

namespace zorv {

namespace {

constexpr uint64_t kFirstCapacity = 4;

}  // namespace

TermList::TermList(const TermList& other) : first(other.first) {
  reserve(other.count);
  append_entries(other);
}

TermList::TermList(TermList&& other) noexcept
    : first(std::move(other.first)),
      capacity(std::exchange(other.capacity, 0)),
      count(std::exchange(other.count, 0)),
      terms(std::exchange(other.terms, nullptr)) {}

TermList& TermList::operator=(const TermList& other) {
  if (this == &other) return *this;
  for (; count > 0; --count) terms[count - 1].~TermImpl();
  first = other.first;
  reserve(other.count);
  append_entries(other);
  return *this;
}

TermList& TermList::operator=(TermList&& other) noexcept {
  if (this == &other) return *this;
  clear();
  first = std::move(other.first);
  capacity = std::exchange(other.capacity, 0);
  count = std::exchange(other.count, 0);
  terms = std::exchange(other.terms, nullptr);
  return *this;
}

TermList::~TermList() { clear(); }

void TermList::clear() {
  first = TermImpl();
  for (uint64_t i = 0; i < count; ++i) terms[i].~TermImpl();
  count = 0;
  resize(0);
}

// Gives the block room for `entries` terms, or for none at all; a fresh one may be larger.
void TermList::resize(uint64_t entries) {
  const Block old = {terms, capacity * sizeof(TermImpl)};
  const uint64_t bytes = size_product(entries, sizeof(TermImpl));
  Block block;
  if (entries == 0) {
    release_block(old);
  } else if (terms == nullptr) {
    block = acquire_block(bytes);
  } else {
    block = resize_block(old, bytes);
  }
  terms = static_cast<TermImpl*>(block.data);
  capacity = block.bytes / sizeof(TermImpl);
}

void TermList::append(TermImpl term) {
  if (!has_first()) {
    first = std::move(term);
    return;
  }
  if (count == capacity) resize(capacity == 0 ? kFirstCapacity : 2 * capacity);
  new (terms + count) TermImpl(std::move(term));
  ++count;
}

void TermList::reserve(uint64_t more) {
  if (more == 0 || count + more <= capacity) return;
  // A fresh block is exact. A block that grows again at least doubles, or a sum that takes in one
  // small expression after the other would copy itself each time.
  resize(std::max(count + more, count == 0 ? 0 : 2 * capacity));
}

void TermList::append_entries(const TermList& other) {
  TermImpl* to = terms + count;
  const TermImpl* from = other.terms;
  par_for(other.count, [=](uint64_t i) { new (to + i) TermImpl(from[i]); });
  count += other.count;
}

void TermList::allocate_slots(uint64_t s) {
  if (s > 1) resize(s - 1);
}

void TermList::commit_slots(uint64_t s) {
  count = s == 0 ? 0 : s - 1;
  // A block that is a little too large may be a recycled one, and is worth another round.
  if (count == 0 || capacity - count > capacity / 4) resize(count);
}

}  // namespace zorv
