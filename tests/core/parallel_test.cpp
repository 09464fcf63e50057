#include "core/parallel.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>
#include <vector>

#include "core/coeff.h"

namespace zorv {
namespace {

uint32_t threads_asked_for() {
  const char* text = std::getenv("ZORV_NUM_THREADS");
  const long n = text == nullptr ? 0 : std::strtol(text, nullptr, 10);
  return n > 0 ? static_cast<uint32_t>(n) : std::max(1u, std::thread::hardware_concurrency());
}

TEST(Parallel, CapsThreadsByLoopLength) {
  EXPECT_EQ(num_threads(), threads_asked_for());
  const struct {
    uint64_t n;
    uint32_t most;
  } rows[] = {{1, 8},
              {99'999'999, 8},
              {100'000'000, 16},
              {999'999'999, 16},
              {1'000'000'000, 32},
              {9'999'999'999, 32},
              {10'000'000'000, 64}};
  for (const auto& row : rows) EXPECT_EQ(par_threads(row.n), std::min(num_threads(), row.most));
}

TEST(Parallel, ChunksCoverEveryItemOnce) {
  for (const uint64_t threads : {1, 2, 8, 64}) {
    for (const uint64_t n : {0, 1, 33, 255, 9'999, 10'000, 100'001}) {
      const Chunking chunking(n, threads);
      uint64_t next = 0;
      for (uint64_t c = 0; c < chunking.chunks; ++c) {
        EXPECT_EQ(chunking.begin(c), next);
        EXPECT_LE(chunking.begin(c), chunking.end(c));  // chunks past the end are empty
        next = chunking.end(c);
      }
      EXPECT_EQ(next, n);
    }
  }
  const Chunking eight(10'000, 8);
  EXPECT_EQ(eight.chunks, 32u);
  EXPECT_EQ(eight.chunk_items, 313u);
}

TEST(Parallel, CallsEachItemOnceOnBothSidesOfTheThreshold) {
  for (const uint64_t n : {0, 1, 9'999, 10'000, 54'321}) {
    std::vector<std::atomic<int>> calls(n);
    par_for(n, [&](uint64_t i) { ++calls[i]; });
    for (const auto& count : calls) ASSERT_EQ(count, 1);
    for_chunks_on_fresh_threads(Chunking(n, num_threads()), num_threads(),
                                [&](uint32_t thread, uint64_t, uint64_t begin, uint64_t end) {
                                  ASSERT_LT(thread, std::max(1u, num_threads()));
                                  for (uint64_t i = begin; i < end; ++i) ++calls[i];
                                });
    for (const auto& count : calls) ASSERT_EQ(count, 2);
  }
}

TEST(Parallel, ARegionInsideARegionStaysOnItsThread) {
  std::atomic<uint64_t> sum{0};
  const auto enter_both_kinds = [&] {
    const auto outer = std::this_thread::get_id();
    const auto count = [&] { sum += std::this_thread::get_id() == outer; };
    par_for(10'000, [&](uint64_t) { count(); });
    for_chunks_on_fresh_threads(Chunking(8, num_threads()), num_threads(),
                                [&](uint32_t, uint64_t, uint64_t, uint64_t) { count(); });
  };
  const uint64_t once = 10'000 + Chunking(8, num_threads()).chunks;
  par_for(10'000, [&](uint64_t i) {
    if (i % 1'000 == 0) enter_both_kinds();
  });
  EXPECT_EQ(sum.exchange(0), 10 * once);
  for_chunks_on_fresh_threads(Chunking(10, num_threads()), num_threads(),
                              [&](uint32_t, uint64_t, uint64_t begin, uint64_t end) {
                                for (; begin < end; ++begin) enter_both_kinds();
                              });
  EXPECT_EQ(sum, 10 * once);
}

// What it would unwind, other threads still work on.
TEST(Parallel, AnExceptionPassesUnlessThreadsWorkTogether) {
  const auto divide_by_0 = [](uint64_t n) { par_for(n, [](uint64_t i) { coeff_t(i) /= 0; }); };
  EXPECT_THROW(divide_by_0(9'999), std::overflow_error);
  if (num_threads() < 2) {
    EXPECT_THROW(divide_by_0(10'000), std::overflow_error);
    return;
  }
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a forked child would have no pool
  for (const bool on_caller : {true, false}) {
    EXPECT_EXIT(
        try {
          const auto caller = std::this_thread::get_id();
          par_for(10'000, [=](uint64_t) {
            if ((std::this_thread::get_id() == caller) == on_caller) throw std::bad_alloc();
            std::this_thread::sleep_for(std::chrono::hours(1));  // the others are not waited for
          });
        } catch (const std::bad_alloc&) { std::_Exit(1); },
        ::testing::KilledBySignal(SIGABRT), "bad_alloc");
  }
}

TEST(Parallel, RegionsOfSeveralCallersAllFinish) {
  std::atomic<uint64_t> sum{0};
  std::vector<std::thread> callers;
  for (int c = 0; c < 4; ++c) {
    callers.emplace_back([&] {
      for (int r = 0; r < 50; ++r) par_for(10'000, [&](uint64_t) { ++sum; });
    });
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(sum, 4u * 50 * 10'000);
}

TEST(Parallel, AForkedChildWorksWithoutThePool) {
  par_for(10'000, [](uint64_t) {});  // the pool exists
  const pid_t child = fork();
  if (child == 0) {
    std::atomic<uint64_t> sum{0};
    par_for(10'000, [&](uint64_t) { ++sum; });
    std::exit(sum == 10'000 ? 0 : 1);  // runs the destructors, which must not wait for the pool
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

}  // namespace
}  // namespace zorv
