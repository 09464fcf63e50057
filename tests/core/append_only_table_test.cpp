#include "core/append_only_table.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/support.h"

namespace zorv::test {
namespace {

TEST(AppendOnlyTable, EntriesKeepTheirAddressAcrossAllBlocks) {
  AppendOnlyTable<std::unique_ptr<uint64_t>> table(5000, "full");
  std::vector<const std::unique_ptr<uint64_t>*> addresses;
  for (uint64_t i = 0; i < 5000; ++i) {  // blocks end after 64, 192, 448, ... entries
    ASSERT_EQ(table.append(std::make_unique<uint64_t>(i)), i);
    ASSERT_EQ(table.size(), i + 1);
    addresses.push_back(&table[i]);
  }
  for (uint64_t i = 0; i < 5000; ++i) {
    ASSERT_EQ(&table[i], addresses[i]);
    ASSERT_EQ(*table[i], i);
  }
}

TEST(AppendOnlyTable, ChangesAnEntryAndReturnsWhatTheChangeReturns) {
  AppendOnlyTable<std::string> table(10, "full");
  table.append("a");
  table.append("b");
  EXPECT_EQ(table.change(1, [](std::string& s) { return (s += "c").size(); }), 2u);
  EXPECT_EQ(table[0], "a");
  EXPECT_EQ(table[1], "bc");
}

TEST(AppendOnlyTable, AbortsOnTheFirstEntryTooMany) {
  AppendOnlyTable<int> table(2, "Small: index overflow");
  table.append(1);
  EXPECT_EQ(table.append(2), 1u);
  EXPECT_FATAL(table.append(3), "Small: index overflow");
}

// Writers append pairs that belong together while a reader walks whatever is published.
TEST(AppendOnlyTable, PublishesCompleteEntriesToReadersWithoutALock) {
  constexpr uint64_t kWriters = 3, kEach = 4000;
  struct Pair {
    uint64_t value, complement;
  };
  AppendOnlyTable<Pair> table(kWriters * kEach, "full");
  std::vector<uint64_t> indices(kWriters * kEach);
  std::vector<std::thread> threads;
  for (uint64_t w = 0; w < kWriters; ++w) {
    threads.emplace_back([&, w] {
      for (uint64_t v = w * kEach; v < (w + 1) * kEach; ++v) indices[v] = table.append({v, ~v});
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
