// Native searches of KLB5Solver, which with mode 0 need no library: callback, stop and hints.
#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

#include "solver_libraries/klb5_support.h"

namespace zorv::test {
namespace {

// What a callback saw, and the intervals that it answers the first ticks with.
struct Watch {
  std::vector<uint32_t> events;
  std::vector<coeff_t> energies;
  std::vector<double> times;
  std::string start;  // of event 0
  std::vector<double> answers;
  size_t ticks = 0;
  std::atomic<bool> has_begun = false;
  zorv_klb5_wrapper* ended_at_last_answer = nullptr;
  std::mutex mutex;  // events come from several threads

  static double see(void* ctx, zorv_sol* sol, uint32_t event) {
    Watch& self = *static_cast<Watch*>(ctx);
    const std::lock_guard lock(self.mutex);
    self.events.push_back(event);
    self.energies.push_back(unwrap(sol).energy);
    self.times.push_back(unwrap(sol).tts);
    const std::string line = take(sol, event);
    if (event == kEventStart) self.start = line;
    if (event == kEventNewBest) {
      self.has_begun = true;
      return std::numeric_limits<double>::quiet_NaN();
    }
    if (event == kEventTimer) ++self.ticks;
    if (self.ticks < self.answers.size()) return self.answers[self.ticks];
    if (self.ended_at_last_answer != nullptr) {
      zorv_klb5_wrapper_terminate(self.ended_at_last_answer);
    }
    return -1.0;
  }
};

const Params kLong = {{"time_limit", "60"}, {"threads", "2"}};

TEST(Klb5Native, ReportsTheStartAndEveryNewBest) {
  const uint32_t x = fresh(), a = new_int_var("a", -3, 7), b = new_int_var("b", pow2(70), pow2(71));
  const Model m =
      compiled(expr_simplify_as_binary(var(a) * var(a) - 2 * var(a) - 5 * var(x) + var(b) + 11));
  const Klb5 solver = klb5(m, 0);
  Watch watch;
  zorv_klb5_wrapper_set_callback(solver, Watch::see, &watch);
  const std::string best = coeff_t(pow2(70) + 5).str();
  const Result r = zorv_klb5_wrapper_search(
      solver, Params{{"threads", "1"}, {"time_limit", "60"}, {"target_energy", best.c_str()}},
      nullptr);
  EXPECT_EQ(unwrap(r).energy.str(), best);
  EXPECT_EQ(watch.start, "event 0 energy " + coeff_t(pow2(70) + 26).str() + " bits 0 ints -3 " +
                             pow2(70).str() + " at 0");
  ASSERT_GE(watch.events.size(), 2u);
  for (size_t i = 1; i < watch.events.size(); ++i) {
    EXPECT_EQ(watch.events[i], kEventNewBest);
    EXPECT_TRUE(i == 1 || watch.energies[i] < watch.energies[i - 1]) << "event " << i;
  }
  EXPECT_EQ(watch.energies.back().str(), best);
  EXPECT_EQ(watch.times.back(), unwrap(r).tts);

  zorv_klb5_wrapper_set_callback(solver, nullptr, nullptr);
  const size_t seen = watch.events.size();
  Result(zorv_klb5_wrapper_search(solver, Params{{"time_limit", "0"}}, nullptr));
  EXPECT_EQ(watch.events.size(), seen);
}

// The timer goes on with what each tick answers: below 0 as before, 0 never again.
TEST(Klb5Native, TicksAsTheCallbackSays) {
  const Needle needle;
  const struct {
    std::vector<double> answers;  // to the start, then to each tick
    size_t most_ticks;
  } rows[] = {
      {{-1.0}, 0}, {{0.01, 0.0}, 1}, {{0.01, -1.0, std::nan(""), 0.001, 0.0}, 4}, {{1e9}, 0}};
  for (const auto& row : rows) {
    const Klb5 solver = klb5(needle.model, 0);
    Watch watch;
    watch.answers = row.answers;
    zorv_klb5_wrapper_set_callback(solver, Watch::see, &watch);
    const Result r =
        zorv_klb5_wrapper_search(solver, Params{{"time_limit", "0.2"}, {"threads", "2"}}, nullptr);
    EXPECT_LE(watch.ticks, row.most_ticks);  // fewer on a machine that is busy elsewhere
  }
  const Klb5 solver = klb5(needle.model, 0);
  Watch watch;
  watch.answers = {0.001, -1.0, 0.002, -1.0, -1.0};
  watch.ended_at_last_answer = solver;
  zorv_klb5_wrapper_set_callback(solver, Watch::see, &watch);
  const Result r = zorv_klb5_wrapper_search(solver, kLong, nullptr);
  EXPECT_GE(watch.ticks, 5u);
  EXPECT_LT(std::stod(info(r, "run_time")), 30.0);
}

TEST(Klb5Native, IsEndedFromAnotherThread) {
  const Needle needle;
  const Klb5 solver = klb5(needle.model, 0);
  for (int repeat = 0; repeat < 2; ++repeat) {  // the second search begins anew
    Watch watch;
    zorv_klb5_wrapper_set_callback(solver, Watch::see, &watch);
    std::thread other([&] {
      while (!watch.has_begun) std::this_thread::yield();
      zorv_klb5_wrapper_terminate(solver);
    });
    const Result r = zorv_klb5_wrapper_search(solver, kLong, nullptr);
    other.join();
    EXPECT_LT(std::stod(info(r, "run_time")), 30.0);
  }
  // The last stop is not left over.
  zorv_klb5_wrapper_set_callback(solver, nullptr, nullptr);
  const Result r =
      zorv_klb5_wrapper_search(solver, Params{{"time_limit", "0.3"}, {"threads", "1"}}, nullptr);
  EXPECT_GE(std::stod(info(r, "run_time")), 0.3);
}

TEST(Klb5Native, TakesHintsUpDuringASearch) {
  const Needle needle;
  const Solution sol = needle.solution();
  const Params params = {{"time_limit", "60"}, {"threads", "2"}, {"target_energy", "-1"}};
  const Klb5 solver = klb5(needle.model, 0);
  zorv_klb5_wrapper_hint(solver, sol);  // before the search
  EXPECT_EQ(unwrap(Result(zorv_klb5_wrapper_search(solver, params, nullptr))).energy, -1);

  Watch watch;
  zorv_klb5_wrapper_set_callback(solver, Watch::see, &watch);
  std::thread other([&] {
    while (!watch.has_begun) std::this_thread::yield();
    zorv_klb5_wrapper_hint(solver, sol);
  });
  const Result r = zorv_klb5_wrapper_search_int(solver, params, nullptr, nullptr, 0);
  other.join();
  EXPECT_EQ(unwrap(r).energy, -1);
  EXPECT_EQ(unwrap(r).bits[0], needle.bits);
  EXPECT_LT(std::stod(info(r, "run_time")), 30.0);

  // What does not fit the model is no hint: too few integers, a value out of bounds, nothing.
  const Solution too_short = zorv_sol_create(compiled(constant(1))),
                 out_of_bounds = needle.solution(), no_ints = needle.solution();
  unwrap(static_cast<zorv_sol*>(out_of_bounds)).int_vals = {4};
  unwrap(static_cast<zorv_sol*>(no_ints)).int_vals.clear();
  zorv_klb5_wrapper_set_callback(solver, nullptr, nullptr);
  zorv_klb5_wrapper_hint(solver, nullptr);
  for (const Solution* unfit : {&too_short, &out_of_bounds, &no_ints}) {
    zorv_klb5_wrapper_hint(solver, *unfit);
  }
  const Params brief = {{"time_limit", "0"}, {"threads", "1"}};
  EXPECT_GE(unwrap(Result(zorv_klb5_wrapper_search(solver, brief, nullptr))).energy, 0);
}

TEST(Klb5Native, TakesHintsWithTheSearch) {
  const Needle needle;
  const Klb5 solver = klb5(needle.model, 0);
  const coeff_t zero = 0, four = 4;
  const Params params = {{"time_limit", "60"}, {"target_energy", "-1"}};
  const Result r = zorv_klb5_wrapper_search_int(solver, params, &needle.bits, borrow(&zero), 1);
  EXPECT_EQ(unwrap(r).energy, -1);
  EXPECT_FATAL(zorv_klb5_wrapper_search_int(solver, params, &needle.bits, borrow(&zero), 2),
               "KLB5Solver: hint integer-variable count mismatch.");
  EXPECT_FATAL(zorv_klb5_wrapper_search_int(solver, params, &needle.bits, borrow(&four), 1),
               "KLB5Solver: hint value outside the integer variable's bounds.");
  zorv_klb5_wrapper_destroy(nullptr);
}

}  // namespace
}  // namespace zorv::test
