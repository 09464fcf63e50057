// Entries by number that never move: the storage of tables that only grow.
//
// Block b holds kFirstBlockItems * 2^b entries and is made when it is first needed, so the highest
// bit of an index tells its block, and a reference to an entry stays good as long as the storage.
//
// Thread rules
//   append, skip      one thread at a time, by a lock of the owner; the new size is published after
//                     the entry is complete, so every thread that learns of an index finds it
//   what only reads   takes no lock
//   clear             must be alone
#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cassert>
#include <cstdint>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

namespace zorv {

template <typename Entry>
class StableBlocks {
 public:
  StableBlocks() = default;
  StableBlocks(const StableBlocks&) = delete;
  StableBlocks& operator=(const StableBlocks&) = delete;
  ~StableBlocks() { clear(); }

  uint64_t size() const { return size_.load(std::memory_order_acquire); }
  const Entry& operator[](uint64_t i) const { return *address(i); }
  Entry& operator[](uint64_t i) { return *address(i); }

  // The last entry for which `holds` is true, where it is for the first one and for none behind one
  // for which it is not.
  template <typename Predicate>
  const Entry& last_where(Predicate holds) const;

  // Makes an entry from `args` and returns its index.
  template <typename... Args>
  uint64_t append(Args&&... args);
  // Uses up n indices that never get an entry. Their memory is not touched.
  void skip(uint64_t n) {
    static_assert(std::is_trivially_destructible_v<Entry>);
    size_.store(size_.load(std::memory_order_relaxed) + n, std::memory_order_release);
  }
  void clear();

 private:
  static constexpr int kFirstBlockBits = 6;
  static constexpr uint64_t kFirstBlockItems = uint64_t{1} << kFirstBlockBits;
  static constexpr int kBlocks = 64 - kFirstBlockBits;  // room for any index

  static int block_of(uint64_t i) {
    return static_cast<int>(std::bit_width(i / kFirstBlockItems + 1)) - 1;
  }
  static uint64_t items_of(int block) { return kFirstBlockItems << block; }
  Entry* address(uint64_t i) const {
    assert(i < size());
    return address_in(block_of(i), i);
  }
  Entry* address_in(int block, uint64_t i) const {
    return blocks_[block] + (i + kFirstBlockItems - items_of(block));
  }

  std::atomic<uint64_t> size_{0};
  // Written once each, before a size that reaches into the block is published.
  Entry* blocks_[kBlocks] = {};
};

template <typename Entry>
template <typename Predicate>
const Entry& StableBlocks<Entry>::last_where(Predicate holds) const {
  const uint64_t n = size();
  int block = block_of(n - 1);
  while (block > 0 && !holds(blocks_[block][0])) --block;
  const uint64_t before = items_of(block) - kFirstBlockItems;
  const Entry* begin = blocks_[block];
  const Entry* end = begin + std::min(items_of(block), n - before);
  return *std::prev(std::partition_point(begin, end, holds));
}

template <typename Entry>
template <typename... Args>
uint64_t StableBlocks<Entry>::append(Args&&... args) {
  const uint64_t i = size_.load(std::memory_order_relaxed);
  const int block = block_of(i);
  if (blocks_[block] == nullptr) {
    blocks_[block] = std::allocator<Entry>().allocate(items_of(block));
  }
  new (address_in(block, i)) Entry(std::forward<Args>(args)...);
  size_.store(i + 1, std::memory_order_release);
  return i;
}

template <typename Entry>
void StableBlocks<Entry>::clear() {
  if constexpr (!std::is_trivially_destructible_v<Entry>) {
    for (uint64_t i = 0; i < size(); ++i) address(i)->~Entry();
  }
  size_.store(0, std::memory_order_release);
  for (int b = 0; b < kBlocks; ++b) {
    if (blocks_[b] != nullptr) std::allocator<Entry>().deallocate(blocks_[b], items_of(b));
    blocks_[b] = nullptr;
  }
}

}  // namespace zorv
