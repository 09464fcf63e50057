// Values that are stored once: equal values have one number. Nothing is ever removed, and a
// reference to a stored value stays good as long as the set.
//
// A value type has `uint64_t hash_of(const Value&)` and `bool same(const Value&, const Value&)`.
//
// Thread rules
//   number_of         one thread at a time, by a lock of the owner
//   size, operator[]  take no lock
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "core/fatal.h"
#include "core/stable_blocks.h"

namespace zorv {

template <typename Value>
class InternedSet {
 public:
  // Beyond kLimit values a new one aborts with `full_message`. The bit above a number is free for
  // the owner's use.
  static constexpr uint32_t kLimit = 0x7FFFFFFFu;
  explicit InternedSet(const char* full_message)
      : full_message_(full_message), slots_(kFirstSlots) {}

  uint64_t size() const { return values_.size(); }
  const Value& operator[](uint32_t number) const { return values_[number]; }

  // The number of the stored value that equals `value`, which is stored if there is none.
  uint32_t number_of(Value value);

 private:
  // An open hash table with linear probing. The hash beside the number spares most looks at values.
  struct Slot {
    uint32_t hash = 0;
    uint32_t number_plus_1 = 0;  // 0: free
  };
  static constexpr uint64_t kFirstSlots = 64;

  static uint32_t folded(uint64_t hash) { return static_cast<uint32_t>(hash ^ hash >> 32); }
  void insert(Slot slot);
  void grow_if_full();

  const char* const full_message_;
  StableBlocks<Value> values_;
  std::vector<Slot> slots_;  // a power of two of them, at most three in four taken
};

template <typename Value>
uint32_t InternedSet<Value>::number_of(Value value) {
  const uint32_t hash = folded(hash_of(value));
  for (uint64_t i = hash;; ++i) {
    const Slot& slot = slots_[i & (slots_.size() - 1)];
    if (slot.number_plus_1 == 0) break;
    if (slot.hash == hash && same(values_[slot.number_plus_1 - 1], value)) {
      return slot.number_plus_1 - 1;
    }
  }
  if (values_.size() >= kLimit) fatal(full_message_);
  grow_if_full();
  const auto number = static_cast<uint32_t>(values_.append(std::move(value)));
  insert({hash, number + 1});
  return number;
}

template <typename Value>
void InternedSet<Value>::insert(Slot slot) {
  uint64_t i = slot.hash & (slots_.size() - 1);
  while (slots_[i].number_plus_1 != 0) i = (i + 1) & (slots_.size() - 1);
  slots_[i] = slot;
}

template <typename Value>
void InternedSet<Value>::grow_if_full() {
  if ((values_.size() + 1) * 4 <= slots_.size() * 3) return;
  std::vector<Slot> old(slots_.size() * 2);
  old.swap(slots_);
  for (const Slot& slot : old) {
    if (slot.number_plus_1 != 0) insert(slot);
  }
}

}  // namespace zorv
