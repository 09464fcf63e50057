// The parts of the search that can be looked at alone: draws, bounds, parameters, the pool, the
// progress line, and events.
#include <sched.h>

#include <cmath>
#include <iomanip>
#include <iostream>
#include <map>
#include <random>
#include <sstream>

#include "reference/int_search.h"
#include "solvers/fast_modulo.h"
#include "solvers/generator.h"
#include "solvers/progress.h"
#include "solvers/search_bounds.h"
#include "solvers/search_core.h"
#include "solvers/search_draws.h"
#include "solvers/search_models.h"
#include "solvers/search_params.h"
#include "solvers/state_history.h"
#include "support/random.h"
#include "zorv/exact_range.h"

namespace zorv::test {
namespace {

// Draws -----------------------------------------------------------------------------------------

TEST(SearchDraws, FollowTheStandardGenerator) {
  for (const uint64_t seed : {uint64_t{0}, uint64_t{5489}, ~uint64_t{0}}) {
    Generator generator(seed);
    std::mt19937_64 standard(seed);
    for (int k = 0; k < 1000; ++k) ASSERT_EQ(generator(), standard()) << k;
  }
  Generator third = worker_generator(77, 2);
  EXPECT_EQ(third(), std::mt19937_64(77 ^ 3 * 0x9E3779B97F4A7C15u)());
}

TEST(SearchDraws, FastModuloIsTheRemainder) {
  Random random(1);
  std::vector<uint64_t> edges{0, 1, 2, 3, 5, 7, 15, 16, 17, 1000, 0xFFFFFFFF, 0x100000000};
  for (unsigned shift = 61; shift < 64; ++shift) {
    for (int d = -2; d <= 2; ++d) edges.push_back((uint64_t{1} << shift) + d);
  }
  for (const uint64_t near : {0, 1, 2, 3}) edges.push_back(~near);
  edges.push_back(17999999999999990000u);
  for (int k = 0; k < 200; ++k) edges.push_back(random() >> below(random, 64));
  for (const uint64_t divisor : edges) {
    if (divisor == 0) continue;
    const FastModulo modulo(divisor);
    EXPECT_EQ(modulo.divisor(), divisor);
    for (const uint64_t draw : edges) {
      ASSERT_EQ(modulo(draw), draw % divisor) << draw << " % " << divisor;
      const uint64_t multiple = draw / divisor * divisor;
      ASSERT_EQ(modulo(multiple), 0u) << multiple << " % " << divisor;
      ASSERT_EQ(modulo(multiple - 1), (multiple - 1) % divisor) << multiple << " % " << divisor;
    }
  }
}

TEST(SearchDraws, UniformIsTheDrawOverTheFullRange) {
  Random random(2);
  std::vector<uint64_t> draws{0, 1, 2, ~uint64_t{0}, ~uint64_t{0} - 1023, ~uint64_t{0} - 1024};
  for (int k = 0; k < 10'000; ++k) draws.push_back(random() >> below(random, 64));
  for (const uint64_t draw : draws) {
    const double expected = std::min(static_cast<double>(draw) * 0x1p-64, std::nextafter(1.0, 0.0));
    ASSERT_EQ(uniform(draw), expected) << draw;
  }
}

TEST(SearchDraws, RiseTestIsTheComparisonWithTheExponential) {
  Random random(3);
  const RiseTest test;
  for (int k = 0; k < 200'000; ++k) {
    const uint64_t draw = k % 100 == 0 ? 0 : random() >> below(random, 64);
    // On both sides of the border, and close to it.
    const double border = -std::log(std::max(uniform(draw), 1e-300));
    const double delta = border * (1.0 + std::ldexp(1.0, -static_cast<int>(below(random, 60))) *
                                             (below(random, 2) == 0 ? 1 : -1));
    const double t = std::ldexp(1.0, static_cast<int>(below(random, 70)) - 6);
    ASSERT_EQ(test(draw, delta * t, t), uniform(draw) < std::exp(-(delta * t) / t))
        << draw << ", " << delta << ", " << t;
  }
  EXPECT_TRUE(test(0, 700.0, 1.0));
  EXPECT_FALSE(test(0, 1000.0, 1.0));  // the exponential is 0 there
}

// Bounds ----------------------------------------------------------------------------------------

TEST(SearchBounds, DrawnInIntervalsKeepEveryViolation) {
  Random random(4);
  const auto pick = [&] { return coeff_t(static_cast<int>(below(random, 25)) - 12); };
  for (int round = 0; round < 3000; ++round) {
    NativeCons cons;
    cons.lo = pick(), cons.hi = pick();
    for (uint64_t k = below(random, 5); k > 0; --k) {
      const coeff_t low = pick();
      // Now and then with the ends crossed.
      cons.allowed.emplace_back(low,
                                below(random, 20) == 0 ? pick() : coeff_t(low + below(random, 6)));
    }
    Interval range{pick(), 0};
    range.second = range.first + below(random, 9);
    const std::vector<Interval> intervals = penalty_intervals(cons, range);
    for (coeff_t body = range.first; body <= range.second; body += 1) {
      ASSERT_EQ(distance_to_set(body, intervals), violation_of(cons, body))
          << "round " << round << ", body " << body;
    }
  }
}

TEST(SearchBounds, MachineIntegersEndWhereTheyMust) {
  const ExprImpl x = bit(), a = integer(0, 1), wide = integer(0, pow2(61) - 1);
  const ExprImpl wider = integer(0, pow2(61) + 1);
  const coeff_t half = pow2(61);
  const struct {
    const char* name;
    ModelHandle model;
    bool fits;
  } rows[] = {
      {"a coefficient of half the limit", Sketch(half * a), true},
      {"one more", Sketch((half + 1) * a), false},
      {"the sum of both signs", Sketch(half * a - x), false},
      {"the constant counts", Sketch(a + half), false},
      {"a range of half the limit", Sketch(wide), true},
      {"a step beyond the bounds", Sketch(wider), false},
      {"a power", Sketch(integer(0, pow2(30)) * a), true},
      {"a high power", Sketch(sqr_of(sqr_of(integer(-pow2(16), 0)))), false},
      {"a squared violation", Sketch(a).between(pow2(30) * a, 0, 0), true},
      {"a large one", Sketch(a).between(pow2(31) * a, 0, 0), false},
      {"of which only the reachable part counts",
       Sketch(a).between(pow2(31) * a, -pow2(500), pow2(31) - 5), true},
      {"a far interval", Sketch(a).between(a, pow2(31), pow2(40)), false},
      {"a heavy weight", Sketch(a).between(a, 0, 0, half - 1), true},
      {"a heavier one", Sketch(a).between(a, 0, 0, half), false},
      {"a negative one", Sketch(a).between(a, 0, 0, -half), false},
      {"a heavy weight on nothing", Sketch(a).between(a, 0, 1, pow2(63)), false},
      {"gaps between intervals", Sketch(a).in(pow2(31) * a, {{0, 0}, {pow2(31), pow2(31)}}), true},
      {"a wide gap", Sketch(a).in(pow2(33) * a, {{0, 0}, {pow2(33), pow2(33)}}), false},
      {"a wide gap out of reach", Sketch(a).in(a, {{0, 0}, {pow2(33), pow2(33)}}), true},
  };
  for (const auto& row : rows) EXPECT_EQ(fits_machine_integers(*row.model), row.fits) << row.name;
}

// Parameters ------------------------------------------------------------------------------------

// What differs from the defaults.
std::string describe(const IntSearchOpts& o) {
  std::ostringstream text;
  if (o.time_limit != 10.0) text << " limit " << o.time_limit;
  if (o.has_target) text << " target " << o.target_energy;
  if (o.seed != 0) text << " seed " << o.seed;
  if (o.threads != 1) text << " threads " << o.threads;
  if (o.topk_sols != 0) text << " top " << o.topk_sols;
  if (o.has_best_energy_sols) text << " ties " << o.best_energy_cap;
  if (o.enable_default_callback) text << " print";
  return text.str();
}

std::string read(const char* key, const char* value) {
  const ParamPair params[] = {{key, value}, {nullptr, nullptr}};
  IntSearchOpts opts;
  read_search_params(params, opts);
  return describe(opts);
}

TEST(SearchParams, AreReadAsTheirKindsSay) {
  const struct {
    const char *key, *value, *expected;
  } rows[] = {
      {"time_limit", "2.5e0s", " limit 2.5"},
      {"time_limit", "soon", " limit 0"},
      {"time_limit", nullptr, " limit 0"},
      {"target_energy", " \t-0010.9", " target -10"},
      {"target_energy", "+36893488147419103232", " target 36893488147419103232"},
      {"target_energy", "0x10", " target 0"},
      {"target_energy", "- 5", " target 0"},
      {"target_energy", nullptr, " target 0"},
      {"seed", "18446744073709551615", " seed 18446744073709551615"},
      {"seed", "-1", " seed 18446744073709551615"},
      {"seed", "x", ""},
      {"threads", "12 or so", " threads 12"},
      {"threads", "4294967298", " threads 2"},
      {"topk_sols", "3", " top 3"},
      {"best_energy_sols", nullptr, " ties 0"},
      {"best_energy_sols", "", " ties 0"},
      {"best_energy_sols", "0", " ties 0"},
      {"best_energy_sols", "12x", " ties 12"},
      {"best_energy_sols", " 12", " ties 0"},
      {"best_energy_sols", "-1", " ties 0"},
      {"enable_default_callback", "1", " print"},
      {"enable_default_callback", "true", " print"},
      {"enable_default_callback", "True", " print"},
      {"enable_default_callback", "TRUE", ""},
      {"enable_default_callback", "1 ", ""},
      {"enable_default_callback", nullptr, ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(read(row.key, row.value), row.expected) << row.key << " = " << row.value;
  }
  IntSearchOpts opts;
  read_search_params(nullptr, opts);
  const ParamPair two[] = {{"seed", "1"}, {"topk_sols", "2"}, {"seed", "3"}, {nullptr, "x"}};
  read_search_params(two, opts);
  EXPECT_EQ(describe(opts), " seed 3 top 2");
}

TEST(SearchParams, RefuseWhatTheyCannotMean) {
  const char* const no_threads = "EasySolver: threads must be >= 1.";
  const char* const no_list = "EasySolver: topk_sols must be >= 1.";
  EXPECT_FATAL(read("threads", "0"), no_threads);
  EXPECT_FATAL(read("threads", "many"), no_threads);
  EXPECT_FATAL(read("threads", nullptr), no_threads);
  EXPECT_FATAL(read("threads", "4294967296"), no_threads);  // 0 in 32 bits
  EXPECT_FATAL(read("topk_sols", "0"), no_list);
  EXPECT_FATAL(read("topk_sols", nullptr), no_list);
  const auto unknown = [](const std::string& key) {
    return "EasySolver: parameter '" + key + "' is not supported for native integer models yet.";
  };
  EXPECT_FATAL(read("thread", "1"), unknown("thread"));
  EXPECT_FATAL(read("threads ", "1"), unknown("threads "));
  EXPECT_FATAL(read("Seed", nullptr), unknown("Seed"));
  EXPECT_FATAL(read("", "1"), unknown(""));
  IntSearchOpts opts;
  opts.solver_name = "OtherSolver";
  const ParamPair params[] = {{"threads", "0"}, {nullptr, nullptr}};
  EXPECT_FATAL(read_search_params(params, opts), "OtherSolver: threads must be >= 1.");
}

TEST(SearchParams, DefaultsComeFromTheMachine) {
  EXPECT_LE(default_seed(), 0xFFFFFFFFu);
  cpu_set_t all, one;
  ASSERT_EQ(sched_getaffinity(0, sizeof(all), &all), 0);
  EXPECT_EQ(default_thread_count(), static_cast<uint32_t>(CPU_COUNT(&all)));
  CPU_ZERO(&one);
  for (size_t cpu = 0; CPU_COUNT(&one) == 0; ++cpu) {
    if (CPU_ISSET(cpu, &all)) CPU_SET(cpu, &one);
  }
  ASSERT_EQ(sched_setaffinity(0, sizeof(one), &one), 0);
  EXPECT_EQ(default_thread_count(), 1u);
  ASSERT_EQ(sched_setaffinity(0, sizeof(all), &all), 0);
}

// Pool ------------------------------------------------------------------------------------------

// Submits states and energies that a test makes up.
class Source {
 public:
  explicit Source(IntSearchCore& core)
      : core_(core),
        tables_(core.model),
        state_(core.model, tables_),
        keeper_(core.add_keeper(
            std::make_unique<StateHistory<coeff_t>>(core.model, state_, core.needs_hashes()))) {}

  void submit(const std::vector<coeff_t>& x, const coeff_t& energy) {
    state_.x = x;
    state_.evaluate();
    const MutexLock lock(core_.mutex);
    core_.submit(keeper_, energy);
  }

 private:
  IntSearchCore& core_;
  const SearchTables<coeff_t> tables_;
  SearchState<coeff_t> state_;
  StateKeeper& keeper_;
};

// Candidates, of two sources in turn, and pools as text: each a letter for the state and a digit
// for the energy.
std::string pool_after(const std::string& candidates, const IntSearchOpts& opts) {
  static const ModelHandle model = Sketch(integer(0, 999));
  IntSearchCore core(*model, opts);
  Source sources[] = {Source(core), Source(core)};
  std::istringstream words(candidates);
  int turn = 0;
  for (std::string word; words >> word; turn = 1 - turn) {
    sources[turn].submit({coeff_t(word[0])}, coeff_t(word[1] - '0'));
  }
  const MutexLock lock(core.mutex);
  std::string text;
  double last_tts = 0.0;
  for (const PoolEntry& entry : core.pool.entries()) {
    text += static_cast<char>(entry.kept.read()[0]) + entry.energy.str() + " ";
    if (opts.has_best_energy_sols) {
      EXPECT_GE(entry.tts, last_tts);
    }
    last_tts = entry.tts;
  }
  return text + "best " + static_cast<char>(core.read_best()[0]) + core.best_energy.str();
}

TEST(SearchPool, FollowsItsRules) {
  IntSearchOpts none, top2, top3, ties, two_ties, both;
  top2.topk_sols = 2;
  top3.topk_sols = 3;
  ties.has_best_energy_sols = true;
  two_ties = ties;
  two_ties.best_energy_cap = 2;
  both = ties;
  both.topk_sols = 1;
  const struct {
    const IntSearchOpts& opts;
    const char *candidates, *expected;
  } rows[] = {
      {none, "a5 b4 c4", "best b4"},
      {top3, "a5 b4 c4", "b4 c4 a5 best b4"},
      {top3, "a5 b5 c5 d5", "a5 b5 c5 best a5"},     // equals queue, a full list takes no more
      {top3, "a5 b6 a5 c7", "a5 b6 c7 best a5"},     // known states are passed over
      {top3, "a5 b6 c7 d8 e6", "a5 b6 e6 best a5"},  // worse than the best, still listed
      {top2, "a5 b4 c3 d4", "c3 b4 best c3"},
      {ties, "a5", "a5 best a5"},
      {ties, "a5 b5 a5 c6 d5", "a5 b5 d5 best a5"},
      {ties, "a5 b5 c4 b5 d4", "c4 d4 best c4"},  // a new best empties the pool
      {two_ties, "a5 b5 c5", "a5 b5 best a5"},
      {two_ties, "a5 b5 c5 d4 e4 f4", "d4 e4 best d4"},
      {both, "a5 b5 c5", "a5 b5 c5 best a5"},  // the list's size then means nothing
  };
  for (const auto& row : rows) {
    EXPECT_EQ(pool_after(row.candidates, row.opts), row.expected) << row.candidates;
  }
}

// Kept states ----------------------------------------------------------------------------------

// Against plain copies: a walk that moves, keeps and releases at random.
template <typename Number>
void compare_kept_states(uint64_t seed) {
  Random random(seed);
  const ExprImpl x = bit(), a = integer(-3, 9), b = integer(0, 99);
  const ModelHandle model = Sketch(a * b - x)
                                .between(a + b, 3, 20, 5)
                                .in(a - b, {{-9, -6}, {3, 4}, {8, 8}}, 2)
                                .between(a * b - x, 0, 30)
                                .relu(a - coeff_t(2) * x, 1, 3)
                                .between(constant(9), 0, 7);  // no variable, never held
  const PlainSearch plain(*model, {});
  const SearchTables<Number> tables(*model);
  SearchState<Number> state(*model, tables);
  StateHistory<Number> history(*model, state, true);
  state.evaluate();
  std::vector<std::pair<uint64_t, std::vector<coeff_t>>> kept;
  std::map<std::vector<coeff_t>, uint64_t> hashes;
  for (int step = 0; step < 3000; ++step) {
    for (uint64_t moves = below(random, 4); moves > 0; --moves) {
      const auto i = static_cast<uint32_t>(below(random, tables.variable_count));
      const VariableRow<Number>& row = tables.variables[i];
      const Number value =
          row.lo + Number(below(random, static_cast<uint64_t>(row.hi - row.lo) + 1));
      if (value != state.x[i]) state.apply_move(i, value, state.move_delta(i, value));
    }
    const std::vector<coeff_t> now(state.x.begin(), state.x.end());
    history.catch_up();
    ASSERT_EQ(hashes.emplace(now, history.hash()).first->second, history.hash());
    const ConstraintTally tally = history.tally();
    ASSERT_EQ(tally.required, 4u);
    ASSERT_EQ(tally.violated, plain.broken(now));
    ASSERT_EQ(tally.penalties, plain.energy(now) - (now[1] * now[2] - now[0]));
    if (below(random, 2) == 0) kept.emplace_back(history.keep(), now);
    for (const auto& [number, expected] : kept) {
      if (below(random, 8) != 0) continue;  // comparing leaves a whole copy behind
      ASSERT_EQ(history.read(number), expected);
      ASSERT_EQ(history.is_candidate(number, history), now == expected);
    }
    while (kept.size() > 12 || (!kept.empty() && below(random, 3) == 0)) {
      const auto place = kept.begin() + static_cast<std::ptrdiff_t>(below(random, kept.size()));
      history.release(place->first);
      kept.erase(place);
    }
  }
}

TEST(StateHistory, KeepsWhatCopiesWouldKeep) {
  compare_kept_states<int64_t>(1);
  compare_kept_states<coeff_t>(2);
}

// Progress line ---------------------------------------------------------------------------------

TEST(SearchProgress, TellsWhatTheModelHas) {
  const ExprImpl a = integer(-99, 99);
  const auto rule = [&](Sketch sketch) {
    return sketch.between(a, 0, 5, 2).in(a, {{3, 3}, {9, 9}});
  };
  const struct {
    ModelHandle model;
    coeff_t value;
    const char* expected;
  } rows[] = {
      {Sketch(a), 0, "s Energy = -7\n"},
      {Sketch(a).abs(a, 1, 4), -2, "s Energy = -7 Obj = -15\n"},
      {rule(a), 3, "s Energy = -7 Obj = -7 Viol = 0/2\n"},
      {rule(a), 8, "s Energy = -7 Obj = -26 Viol = 2/2\n"},
      {rule(Sketch(a).relu(a - 3, 2)), 9, "s Energy = -7 Obj = -75 Viol = 1/2\n"},
  };
  for (const auto& row : rows) {
    IntSearchOpts opts;
    opts.enable_default_callback = true;
    IntSearchCore core(*row.model, opts);
    ::testing::internal::CaptureStdout();
    Source(core).submit({row.value}, -7);
    const std::string line = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(line.substr(line.find("s E")), row.expected);
  }
}

TEST(SearchProgress, LeavesTheStreamAsItWas) {
  std::ios saved(nullptr);
  saved.copyfmt(std::cout);
  std::cout << std::hex << std::showbase << std::scientific << std::setprecision(9)
            << std::setfill('*') << std::setw(30);
  ::testing::internal::CaptureStdout();
  print_progress(*ModelHandle(Sketch(integer(0, 9))), 1234.0625, 10, {0, 12, 11});
  const std::string line = ::testing::internal::GetCapturedStdout();
  std::ostringstream after;
  after.copyfmt(std::cout);
  std::cout.copyfmt(saved);
  EXPECT_EQ(line, "TTS = 1234.062s Energy = 10 Viol = 11/12\n");
  after << 0.5;
  EXPECT_EQ(after.str(), "***************5.000000000e-01");  // even the width is still there
}

TEST(SearchProgress, AppearsOnceForEachNewBest) {
  const ModelHandle model = Sketch(integer(0, 99));
  for (const bool is_on : {true, false}) {
    IntSearchOpts opts;
    opts.enable_default_callback = is_on;
    IntSearchCore core(*model, opts);
    Source source(core);
    ::testing::internal::CaptureStdout();
    for (const int energy : {9, 9, 10, 8}) source.submit({energy}, energy);
    std::istringstream lines(::testing::internal::GetCapturedStdout());
    std::string energies;
    for (std::string line; std::getline(lines, line);) energies += line.substr(line.find("s E"));
    EXPECT_EQ(energies, is_on ? "s Energy = 9s Energy = 8" : "");
  }
}

// Events ----------------------------------------------------------------------------------------

struct Timer {
  std::vector<double> answers;  // to the ticks, in order
  std::vector<std::string> ticks;
};

double answer_tick(void* ctx, Sol* sol, uint32_t event) {
  Timer& timer = *static_cast<Timer*>(ctx);
  const size_t k = timer.ticks.size();
  std::ostringstream text;
  text << event << ":" << sol_energy(*sol) << (sol->bits.empty() ? "" : " bits") << " "
       << sol->int_vals[0];
  timer.ticks.push_back(text.str());
  delete sol;
  return k < timer.answers.size() ? timer.answers[k] : 0.0;
}

TEST(SearchEvents, TimerFollowsTheAnswers) {
  // Long enough for no poll to be early, and for any to be.
  constexpr double kShort = 1e-12, kLong = 1e9, kKeep = -1.0, kNaN = NAN, kOff = 0.0;
  const struct {
    std::vector<double> answers;  // the first one to the start event
    size_t expected;              // calls after six polls, the start event included
  } rows[] = {
      {{kKeep, kShort}, 1},  // the timer is off at first
      {{kNaN}, 1},
      {{kLong}, 1},
      {{kShort, kOff, kShort}, 2},
      {{kShort, kKeep, kNaN, -0.5, kOff}, 5},
      {{kShort, kShort, kLong}, 3},
  };
  const ModelHandle model = Sketch(integer(7, 99) + bit());
  for (size_t k = 0; k < std::size(rows); ++k) {
    Timer timer{rows[k].answers, {}};
    IntSearchOpts opts;
    opts.model = model;
    opts.callback = answer_tick;
    opts.callback_ctx = &timer;
    IntSearchCore core(*model, opts);
    core.fire_start_event();
    for (int poll = 0; poll < 6; ++poll) core.serve_timer();
    EXPECT_EQ(timer.ticks.size(), rows[k].expected) << "row " << k;
  }
}

TEST(SearchEvents, TimerShowsTheBestSoFar) {
  const ModelHandle model = Sketch(integer(7, 99) + bit());
  Timer timer{{1e-12, -1, -1, -1}, {}};
  IntSearchOpts opts;
  opts.model = model;
  opts.callback = answer_tick;
  opts.callback_ctx = &timer;
  IntSearchCore core(*model, opts);
  core.fire_start_event();
  core.serve_timer();
  Source(core).submit({1, 30}, 31);
  core.serve_timer();
  EXPECT_EQ(timer.ticks,
            (std::vector<std::string>{"0:7 bits 7", "2:0 7", "1:31 bits 30", "2:31 bits 30"}));
}

// Results ---------------------------------------------------------------------------------------

TEST(SearchResults, HandTheirWordsOver) {
  const ModelHandle model = Sketch(integer(7, 99) + bit());
  SearchResult result;
  result.energy = -3;  // reported, never computed again
  result.tts = 0.25;
  result.bits = {1};
  result.topk.push_back({5, 0.5, {1}, {42}});
  const Sol best = take_sol(result, model), again = take_sol(result, model);
  EXPECT_EQ(sol_energy(best), -3);
  EXPECT_EQ(best.tts, 0.25);
  EXPECT_EQ(best.bits, std::vector<uint64_t>{1});
  EXPECT_EQ(best.int_vals, model->int_lo);  // a result without integers leaves them low
  EXPECT_TRUE(again.bits.empty());
  const Sol entry = take_topk_sol(result, 0, model);
  EXPECT_EQ(sol_energy(entry), 5);
  EXPECT_EQ(entry.int_vals, std::vector<coeff_t>{42});
  EXPECT_TRUE(result.topk[0].bits.empty());
}

}  // namespace
}  // namespace zorv::test
