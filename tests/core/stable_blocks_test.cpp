#include "core/stable_blocks.h"

#include <memory>
#include <thread>
#include <vector>

#include "support/support.h"
#include "zorv/engine/mutex.h"

namespace zorv::test {
namespace {

TEST(StableBlocks, EntriesKeepTheirAddressAcrossAllBlocks) {
  StableBlocks<std::unique_ptr<uint64_t>> table;
  std::vector<const std::unique_ptr<uint64_t>*> addresses;
  for (uint64_t i = 0; i < 5000; ++i) {  // blocks end after 64, 192, 448, ... entries
    ASSERT_EQ(table.append(std::make_unique<uint64_t>(i)), i);
    ASSERT_EQ(table.size(), i + 1);
    addresses.push_back(&table[i]);
  }
  for (uint64_t i = 0; i < 5000; ++i) {
    ASSERT_EQ(&table[i], addresses[i]);
    ASSERT_EQ(*table[i], i);
    ASSERT_EQ(*table.last_where([=](const auto& entry) { return *entry <= i; }), i);
  }
}

// Writers append pairs that belong together while a reader walks whatever is published.
TEST(StableBlocks, PublishesCompleteEntriesToReadersWithoutALock) {
  constexpr uint64_t kWriters = 3, kEach = 4000;
  struct Pair {
    uint64_t value, complement;
  };
  StableBlocks<Pair> table;
  Mutex mutex;
  std::vector<uint64_t> indices(kWriters * kEach);
  std::vector<std::thread> threads;
  for (uint64_t w = 0; w < kWriters; ++w) {
    threads.emplace_back([&, w] {
      for (uint64_t v = w * kEach; v < (w + 1) * kEach; ++v) {
        const MutexLock lock(mutex);
        indices[v] = table.append(Pair{v, ~v});
      }
    });
  }
  uint64_t torn = 0;
  for (uint64_t seen = 0; seen < kWriters * kEach;) {
    for (const uint64_t n = table.size(); seen < n; ++seen) {
      torn += table[seen].complement != ~table[seen].value;
    }
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(torn, 0u);
  for (uint64_t v = 0; v < kWriters * kEach; ++v) ASSERT_EQ(table[indices[v]].value, v);
}

}  // namespace
}  // namespace zorv::test
