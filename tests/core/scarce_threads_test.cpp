// A system that has no more threads to give: everything is computed all the same, by those there
// are. This file's pthread_create takes the place of the system's in the whole test program.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "arrays/elementwise.h"
#include "core/evaluate.h"
#include "core/parallel.h"
#include "core/simplify.h"
#include "support/small_polynomials.h"
#include "zorv/engine/thread_team.h"

namespace {

std::atomic<int> threads_to_give{INT_MAX};

}  // namespace

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) noexcept {
  static const auto system_create =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  if (threads_to_give.fetch_sub(1) <= 0) return EAGAIN;
  return system_create(thread, attributes, start, argument);
}

namespace zorv::test {
namespace {

// One result of every kind of work that is spread over threads.
std::string results_of_parallel_work() {
  Random random(20);
  const std::vector<uint32_t> literals = with_complements(fresh_block(300));
  const auto literal = [&] { return literals[below(random, literals.size())]; };
  ExprImpl quadratic, linear;
  for (int i = 0; i < 60'000; ++i) {
    quadratic.list.append(TermImpl(below(random, 9) + 1, VarList(literal(), literal())));
  }
  for (int i = 0; i < 150; ++i) linear.list.append(TermImpl(i + 1, VarList(literal())));

  const ExprImpl simplified = expr_simplify_as_binary(quadratic);  // sorts by threads
  std::string results = text(simplified) + text(linear * linear) + text(sqr(linear));
  const std::vector<coeff_t> values(literals.size(), 1);
  results += evaluate(quadratic, literals.data(), values.data(), values.size()).str();
  const auto array = make_array<ExprImpl>(
      {12'000}, [&](uint64_t i) { return var(literals[i % literals.size()]); });
  for (uint64_t i = 0; i < array.size; ++i) results += text(array[i]);
  return results;
}

void expect_equal_results_with(int threads) {
  EXPECT_EXIT(
      {
        threads_to_give = threads;  // the pool, too, starts with no more than these
        const std::string few = results_of_parallel_work();
        const bool was_capped = num_threads() <= kMostThreads;
        threads_to_give = INT_MAX;
        reset_variables();
        // No tidy end: a sort that lacked a thread has lost a buffer.
        std::_Exit(was_capped && few == results_of_parallel_work() ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "^$")
      << threads << " threads";
}

TEST(ScarceThreads, GiveTheSameResults) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // each case is a process of its own
  for (const int threads : {0, 1, 6}) expect_equal_results_with(threads);
}

TEST(ScarceThreads, AreAllThatAHugeCountGets) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const char* text = std::getenv("ZORV_NUM_THREADS");
  const std::string before = text == nullptr ? "" : text;
  setenv("ZORV_NUM_THREADS", "99999999999999999999", 1);
  expect_equal_results_with(6);
  setenv("ZORV_NUM_THREADS", before.c_str(), 1);  // an empty text counts as none
}

}  // namespace
}  // namespace zorv::test
