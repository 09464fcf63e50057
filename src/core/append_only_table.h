// A process-wide table that only grows: entries never move, and reading one takes no lock.
//
// Block b holds kFirstBlockItems * 2^b entries and is made when it is first needed, so the highest
// bit of an index tells its block, and a reference to an entry stays good as long as the table.
//
// Thread rules
//   append            takes the mutex; the new size is published after the entry is complete, so
//                     whoever learns of an index finds its block and its entry
//   change            takes the mutex; keeping readers of that very entry away is the caller's task
//   size, operator[]  take no lock
//   clear             must be alone
#pragma once

#include <atomic>
#include <bit>
#include <cassert>
#include <cstdint>
#include <memory>
#include <utility>

#include "core/fatal.h"
#include "zorv/engine/mutex.h"

namespace zorv {

template <typename Entry>
class AppendOnlyTable {
 public:
  AppendOnlyTable() = default;
  // Beyond `limit` entries an append aborts with `full_message`.
  AppendOnlyTable(uint64_t limit, const char* full_message)
      : limit_(limit), full_message_(full_message) {}
  AppendOnlyTable(const AppendOnlyTable&) = delete;
  AppendOnlyTable& operator=(const AppendOnlyTable&) = delete;
  ~AppendOnlyTable() { clear(); }

  uint64_t size() const { return size_.load(std::memory_order_acquire); }
  const Entry& operator[](uint64_t i) const {
    assert(i < size());
    return *address(i);
  }

  // Returns the index of the new entry.
  uint64_t append(Entry entry);

  // f(entry i), alone with all appends and changes; returns what `f` does. It must be short and
  // must not enter a parallel loop, whose other threads may be waiting for this very table.
  template <typename F>
  auto change(uint64_t i, F f) {
    const MutexLock lock(mutex_);
    assert(i < size());
    return f(*address(i));
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
    const int block = block_of(i);
    return blocks_[block] + (i + kFirstBlockItems - items_of(block));
  }

  const uint64_t limit_ = UINT64_MAX;
  const char* const full_message_ = nullptr;
  Mutex mutex_;
  std::atomic<uint64_t> size_{0};
  // Written under the mutex, once each, before a size that reaches into the block is published.
  Entry* blocks_[kBlocks] = {};
};

template <typename Entry>
uint64_t AppendOnlyTable<Entry>::append(Entry entry) {
  const MutexLock lock(mutex_);
  const uint64_t i = size_.load(std::memory_order_relaxed);
  if (i >= limit_) fatal(full_message_);
  Entry*& block = blocks_[block_of(i)];
  if (block == nullptr) block = std::allocator<Entry>().allocate(items_of(block_of(i)));
  new (address(i)) Entry(std::move(entry));
  size_.store(i + 1, std::memory_order_release);
  return i;
}

template <typename Entry>
void AppendOnlyTable<Entry>::clear() {
  for (uint64_t i = 0; i < size(); ++i) address(i)->~Entry();
  size_.store(0, std::memory_order_release);
  for (int b = 0; b < kBlocks; ++b) {
    if (blocks_[b] != nullptr) std::allocator<Entry>().deallocate(blocks_[b], items_of(b));
    blocks_[b] = nullptr;
  }
}

}  // namespace zorv
