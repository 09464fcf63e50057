#include "solvers/int_search.h"

#include <algorithm>
#include <functional>
#include <set>

#include "reference/int_search.h"
#include "solvers/search_bounds.h"
#include "solvers/search_models.h"
#include "support/random.h"

namespace zorv::test {
namespace {

using State = PlainSearch::State;

IntSearchOpts options(uint64_t seed) {
  IntSearchOpts opts;
  opts.seed = seed;
  opts.time_limit = 1e9;
  return opts;
}

State state_of(const std::vector<uint64_t>& bits, const std::vector<coeff_t>& ints, size_t n) {
  State state(n - ints.size());
  for (size_t i = 0; i < state.size(); ++i) state[i] = bits[i / 64] >> i % 64 & 1;
  state.insert(state.end(), ints.begin(), ints.end());
  return state;
}

void expect_same(const SearchResult& result, const PlainSearch& plain) {
  const size_t n = plain.best.state.size();
  EXPECT_EQ(result.energy, plain.best.energy);
  EXPECT_EQ(state_of(result.bits, result.ints, n), plain.best.state);
  ASSERT_EQ(result.topk.size(), plain.pool.size());
  for (size_t k = 0; k < plain.pool.size(); ++k) {
    EXPECT_EQ(result.topk[k].energy, plain.pool[k].energy) << "solution " << k;
    EXPECT_EQ(state_of(result.topk[k].bits, result.topk[k].ints, n), plain.pool[k].state)
        << "solution " << k;
  }
  EXPECT_EQ(info(result, "rounds"), std::to_string(plain.rounds));
  EXPECT_EQ(info(result, "proposals"), std::to_string(plain.proposals));
}

// The engine in both number types against the plain form, for `rounds` full rounds. An engine that
// is forced to wide numbers where machine integers do is a third implementation, in effect.
void compare(const ModelImpl& model, IntSearchOpts opts, int rounds) {
  const auto limited = [&](const auto& search) {
    RoundLimit limit(opts, rounds);
    search();
  };
  PlainSearch plain(model, opts);
  limited([&] { plain.run(); });
  for (const bool is_forced : {false, true}) {
    SCOPED_TRACE(is_forced ? "wide numbers" : "the model's own numbers");
    opts.force_wide_numbers = is_forced;
    limited([&] { expect_same(easy_int_search(model, opts), plain); });
  }
}

struct Case {
  const char* name;
  bool is_machine;  // whether the model's own numbers are machine integers
  ModelHandle model;
};

ExprImpl random_cubic(const std::vector<ExprImpl>& x, Random& random) {
  ExprImpl e;
  for (int t = 0; t < 12; ++t) {
    const auto pick = [&] { return x[below(random, x.size())]; };
    const coeff_t c = static_cast<int>(below(random, 41)) - 20;
    e = e + c * pick() * pick() * pick() + c * pick();
  }
  return e;
}

std::vector<Case> cases() {
  Random random(17);
  const ExprImpl x = bit(), y = bit(), z = bit(), w = bit();
  const ExprImpl not_x = var(x.list.first.vars[0] | kNegationBit);
  const ExprImpl not_y = var(y.list.first.vars[0] | kNegationBit);
  const ExprImpl one = integer(-1, 0), a = integer(-5, 10), b = integer(0, 16);
  const ExprImpl c = integer(3, 20), d = integer(-500, 500), k40 = integer(-7, pow2(40));
  const ExprImpl k28 = integer(0, pow2(28)), k62 = integer(-pow2(61), pow2(61) - 3);
  const ExprImpl under = integer(1, coeff_t("17999999999999990000"));
  const ExprImpl over = integer(-9, coeff_t("18100000000000000000"));
  const ExprImpl k64 = integer(-pow2(63), pow2(63)), k70 = integer(pow2(70), pow2(71));
  const auto far = [](const ExprImpl& e) { return coeff_t(1) * e - 1'000'000; };
  return {
      {"bits, cubic, with complements", true,
       Sketch(random_cubic({x, y, z, w, not_x, not_y}, random) + coeff_t(7) * not_x * not_y * z -
              coeff_t(9) * not_x * y * w)},
      {"small ranges 1 and 15 beside a bit", true,
       Sketch(sqr_of(a + coeff_t(3) * one - 4) - coeff_t(5) * a * x + y)},
      {"ranges 16 and 17", true, Sketch(sqr_of(b - c + 2) - coeff_t(3) * b + x * c)},
      {"range 1000, powers 3 and 4", true,
       Sketch(d * d * d * d - coeff_t(100) * d * d * d + coeff_t(7) * d * d * b * x - d)},
      {"range 2^28 squared", true, Sketch(sqr_of(k28 - coeff_t(65537) * b - 99) + x * k28)},
      {"range 2^40, k = 1", true, Sketch(k40 - d).abs(k40 - coeff_t(3) * b - 1'000'003, 1, 3)},
      {"range 2^40 squared", false, Sketch(sqr_of(k40 - 123456789) + sqr_of(b - 3))},
      {"range near 2^62", false, Sketch(k62).between(k62 + x, 5, 5, pow2(20))},
      {"ranges around the largest that is sampled", false,
       Sketch(under - over).abs(under - over - pow2(40), 1, 3)},
      {"ranges 2^64 and 2^70", false, Sketch(sqr_of(k64 - 7) + k70 * x - coeff_t(2) * k70)},
      {"coefficients of 2^70", false,
       Sketch(pow2(70) * x * y - (pow2(70) + 1) * x + pow2(69) * b - pow2(67) * a)},
      {"allowed sets of 1, 2, 3 intervals", true,
       Sketch(coeff_t(-4) * a - c + d)
           .in(a + b, {{12, 14}}, 3)
           .in(a - b + x, {{-100, -4}, {5, 100}}, 2)
           .in(c - b, {{-3, -3}, {4, 4}}, 2)
           .in(a + c + y, {{25, 30}, {-2, 1}, {8, 9}}, 2)},
      {"overlapping intervals, and an interval far away", true,
       Sketch(a + b).in(a - b, {{-3, 4}, {0, 9}, {20, 900}}).in(far(c), {{-4000, -3000}})},
      {"an upper end below the lower one", true,
       Sketch(a).between(a + b, 7, 2, 2).in(b - c, {{4, -4}, {-30, -9}})},
      {"abs and relu, k = 1 and 2", true,
       Sketch(x + c).abs(a - b + 3, 1, 4).abs(a + c - 9, 2).relu(d - a, 1, 2).relu(b - d, 2)},
      {"nonlinear bodies", true,
       Sketch(coeff_t(-1) * a)
           .between(a * a - b, -2, 2, 3)
           .between(a * b * x - c * y + c, 4, 40)
           .between(x * y - z, 0, 0, 50)},
      {"negative weights", true,
       Sketch(sqr_of(a - b)).between(a + x, -1, 1, -2).abs(b - c, 1, -7).between(b * a, 2, 3, -1)},
      {"small ranges where the lowest limb comes to 0", false,
       Sketch(sqr_of(integer(-pow2(64) - 3, -pow2(64) + 3) + pow2(64) - 2) +
              sqr_of(integer(-pow2(128) - 7, -pow2(128) + 2) + pow2(128) + 1) +
              sqr_of(integer(pow2(64) - 4, pow2(64) + 4) - x - pow2(64)))
           .between(integer(-3 * pow2(64) - 2, -3 * pow2(64) + 5), -3 * pow2(64) + 4, 0)},
      {"an objective of 0", true, Sketch(ExprImpl()).between(a + b + c, 17, 17)},
  };
}

TEST(IntSearch, MakesTheDrawsAndMovesOfThePlainForm) {
  for (const Case& c : cases()) {
    for (const uint64_t seed : {1u, 20261121u}) {
      SCOPED_TRACE(std::string(c.name) + ", seed " + std::to_string(seed));
      EXPECT_EQ(fits_machine_integers(*c.model), c.is_machine);
      IntSearchOpts opts = options(seed);
      opts.topk_sols = 1000;
      compare(*c.model, opts, 2);
    }
  }
}

TEST(IntSearch, MakesTheMovesOfThePlainFormWithEveryOption) {
  const ExprImpl x = bit(), a = integer(-5, 10), b = integer(0, 100);
  const ModelHandle model =
      Sketch(coeff_t(-1) * a).between(coeff_t(2) * a + b, 30, 31, 5).relu(a + x - b, 1);
  const uint64_t hint_bits[] = {1};
  const coeff_t hint_ints[] = {-5, 100};
  const struct {
    const char* name;
    std::function<void(IntSearchOpts&)> change;
  } rows[] = {
      {"a hint", [&](auto& o) { o.hint_bits = hint_bits, o.hint_ints = hint_ints; }},
      {"a short list", [](auto& o) { o.topk_sols = 2; }},
      {"all ties", [](auto& o) { o.has_best_energy_sols = true; }},
      {"some ties", [](auto& o) { o.has_best_energy_sols = true, o.best_energy_cap = 3; }},
      {"ties win over the list", [](auto& o) { o.has_best_energy_sols = true, o.topk_sols = 1; }},
      {"a target", [](auto& o) { o.has_target = true, o.target_energy = -8, o.topk_sols = 50; }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    IntSearchOpts opts = options(5);
    row.change(opts);
    compare(*model, opts, 5);
  }
}

TEST(IntSearch, PerturbsHarderWhileNothingImproves) {
  // With 40 variables a quarter of them changes at first, and more with every idle round.
  ExprImpl sum;
  for (int i = 0; i < 40; ++i) sum = sum + (i % 4 != 0 ? bit() : integer(0, i < 20 ? 9 : 300));
  IntSearchOpts opts = options(3);
  opts.topk_sols = 1000;
  compare(*ModelHandle(Sketch(sum)), opts, 4);
}

TEST(IntSearch, TakesStatesFromOutside) {
  const ExprImpl x = bit(), a = integer(-3, 40);
  const ModelHandle model = Sketch(x + a);
  std::atomic<uint8_t> stop{0};
  struct Source {
    int calls = 0;
    std::atomic<uint8_t>* stop;
  };
  IntSearchOpts opts = options(1);
  opts.topk_sols = 10'000;
  opts.external_stop = &stop;
  opts.next_hint = [](void* ctx, uint32_t consumer, uint64_t* words, coeff_t* ints) {
    Source& source = *static_cast<Source*>(ctx);
    EXPECT_EQ(consumer, 0u);
    EXPECT_EQ(words[0], 0u);
    if (source.calls++ == 3) *source.stop = 1;
    if (source.calls == 2) return false;
    words[0] = 1;
    ints[0] = 40 - source.calls;
    return true;
  };
  const auto reset = [&](Source& source) {
    source.stop = &stop;
    stop = 0;
    opts.next_hint_ctx = &source;
  };
  Source first, second;
  PlainSearch plain(*model, opts);
  reset(first);
  plain.run();
  reset(second);
  const SearchResult result = easy_int_search(*model, opts);
  expect_same(result, plain);
  EXPECT_EQ(result.topk.back().energy, 40);  // the first state handed out
}

// All states of the model, which must have narrow bounds.
void for_each_state(const ModelImpl& m, const std::function<void(const State&)>& visit) {
  State lo(m.variables.size(), 0), hi(m.variables.size(), 1);
  lo.insert(lo.end(), m.int_lo.begin(), m.int_lo.end());
  hi.insert(hi.end(), m.int_hi.begin(), m.int_hi.end());
  State state = lo;
  while (true) {
    visit(state);
    size_t i = 0;
    while (i < state.size() && state[i] == hi[i]) state[i] = lo[i], ++i;
    if (i == state.size()) return;
    state[i] += 1;
  }
}

TEST(IntSearch, FindsTheBestOfAllStates) {
  Random random(11);
  for (int round = 0; round < 8; ++round) {
    SCOPED_TRACE(round);
    const ExprImpl x = bit(), y = bit(), a = integer(-4, 9), b = integer(0, 25);
    Sketch sketch(random_cubic({x, y, a, b}, random));
    sketch.in(a - b, {{-9, -6}, {3, 4}}, 1 + below(random, 30));
    sketch.abs(coeff_t(3) * a - b + x, 1 + round % 2, 10);
    const ModelHandle model = sketch;

    IntSearchOpts opts = options(random());
    const PlainSearch plain(*model, opts);
    std::set<State> optima;
    coeff_t least;
    for_each_state(*model, [&](const State& state) {
      const coeff_t energy = plain.energy(state);
      if (optima.empty() || energy < least) {
        least = energy;
        optima.clear();
      }
      if (energy == least) optima.insert(state);
    });

    opts.has_best_energy_sols = true;
    RoundLimit limit(opts, 8);
    const SearchResult result = easy_int_search(*model, opts);
    EXPECT_EQ(result.energy, least);
    std::set<State> found;
    for (const TopKEntry& e : result.topk) found.insert(state_of(e.bits, e.ints, 4));
    EXPECT_EQ(found, optima);
    EXPECT_EQ(result.topk.size(), optima.size());
  }
}

TEST(IntSearch, RepeatsItselfOnOneThread) {
  const ExprImpl x = bit(), a = integer(0, 1000), b = integer(0, 1000);
  const ModelHandle model = Sketch(a + b).between(a - b, 300, 400, 2).between(a + x, 501, 501, 3);
  const ParamPair params[] = {{"seed", "42"},       {"threads", "1"},      {"target_energy", "600"},
                              {"topk_sols", "999"}, {"time_limit", "1e9"}, {nullptr, nullptr}};
  const SearchResult one = run_int_search(*model, {}, params, nullptr, nullptr, 0);
  const SearchResult two = run_int_search(*model, {}, params, nullptr, nullptr, 0);
  EXPECT_EQ(one.energy, two.energy);
  EXPECT_EQ(one.bits, two.bits);
  EXPECT_EQ(one.ints, two.ints);
  ASSERT_EQ(one.topk.size(), two.topk.size());
  for (size_t k = 0; k < one.topk.size(); ++k) EXPECT_EQ(one.topk[k].ints, two.topk[k].ints);
  for (const char* key : {"rounds", "proposals"}) EXPECT_EQ(info(one, key), info(two, key));
}

// Large enough for the annealing to fetch ahead: variables with every kind of list, and with none.
TEST(IntSearch, AnnealsTensOfThousandsOfVariables) {
  ModelImpl model(ExprImpl{}, 1.0, nullptr);
  for (uint32_t i = 0; i < 20'000; ++i) {
    model.int_atoms.push_back(i);
    model.int_lo.push_back(0);
    model.int_hi.push_back(1);
  }
  for (uint32_t i = 0; i + 2 < 10'000; ++i) {  // to be 1
    NativeCons& cons = model.native_cons.emplace_back();
    cons.weight = 1;
    for (uint32_t k = 0; k <= i % 3; ++k) cons.vars.push_back((i + k) | kAtomBit);
    cons.coeffs.assign(cons.vars.size(), 1);
    cons.lo = cons.hi = static_cast<int>(cons.vars.size());
  }
  IntSearchOpts opts = options(1);
  opts.threads = 1;
  opts.has_target = true;
  EXPECT_EQ(easy_int_search(model, opts).energy, 0);
}

TEST(IntSearch, SharesTheBestBetweenThreads) {
  const ExprImpl x = bit(), a = integer(-8, 7), b = integer(0, 1 << 20);
  const ModelHandle model = Sketch(sqr_of(a - 3) + b).between(coeff_t(64) * a + b, 1000, 1001, 7);
  IntSearchOpts opts = options(9);
  opts.threads = 4;
  opts.topk_sols = 5;
  RoundLimit limit(opts, 8);
  const SearchResult result = easy_int_search(*model, opts);
  EXPECT_EQ(info(result, "threads"), "4");
  // Every thread begins one more round before it sees the stop.
  EXPECT_GE(std::stoul(info(result, "rounds")), 9u);
  EXPECT_LE(std::stoul(info(result, "rounds")), 12u);
  ASSERT_EQ(result.topk.size(), 5u);
  EXPECT_EQ(result.topk[0].energy, result.energy);
  EXPECT_EQ(result.topk[0].ints, result.ints);
  for (size_t k = 1; k < 5; ++k) {
    EXPECT_GE(result.topk[k].energy, result.topk[k - 1].energy);
    EXPECT_NE(result.topk[k].ints, result.topk[k - 1].ints);
  }
}

TEST(IntSearch, EndsAfterTheFirstStartStates) {
  const ModelHandle model = Sketch(integer(0, 1000) + bit());
  std::atomic<uint8_t> stop{1};
  for (const uint32_t threads : {1u, 3u}) {
    IntSearchOpts stopped = options(2), late = options(2);
    stopped.external_stop = &stop;
    late.time_limit = 0;
    for (IntSearchOpts* opts : {&stopped, &late}) {
      opts->threads = threads;
      const SearchResult result = easy_int_search(*model, *opts);
      EXPECT_EQ(info(result, "rounds"), std::to_string(threads));
      EXPECT_EQ(info(result, "proposals"), "0");
      EXPECT_EQ(info(result, "threads"), std::to_string(threads));
    }
  }
}

TEST(IntSearch, GoesOnWhenOnlyAViolationReachesTheTarget) {
  // Without the requirement a <= 5 the target needs a >= 6; at a = 10 the energy is lowest.
  const ExprImpl a = integer(0, 20);
  const ModelHandle required = Sketch(coeff_t(-10) * a).between(a, -99, 5);
  const ModelHandle shaped = Sketch(coeff_t(-10) * a).relu(a - 5, 2);
  for (const bool is_required : {true, false}) {
    IntSearchOpts opts = options(4);
    opts.has_target = true;
    opts.target_energy = -60;
    RoundLimit limit(opts, 3);
    const SearchResult result = easy_int_search(is_required ? *required : *shaped, opts);
    EXPECT_LE(result.energy, -60);
    EXPECT_EQ(info(result, "rounds"), is_required ? "4" : "1");
  }
}

TEST(IntSearch, KeepsAVariableOfOneValue) {
  ModelImpl model = *ModelHandle(Sketch(coeff_t(3) * integer(5, 6)));
  model.int_hi[0] = 5;
  IntSearchOpts opts = options(1);
  opts.topk_sols = 3;
  compare(model, opts, 3);
  opts.time_limit = 0.01;
  const SearchResult result = easy_int_search(model, opts);
  EXPECT_EQ(result.energy, 15);
  EXPECT_EQ(result.topk.size(), 1u);
}

TEST(IntSearch, StartsTheFirstThreadFromTheHint) {
  const ExprImpl x = bit(), a = integer(-3, 1000), b = integer(-3, 1000);
  const ModelHandle model = Sketch(coeff_t(-1) * x).between(a - b, 77, 77, 9).between(a, 5, 5);
  const uint64_t bits[] = {1};
  const coeff_t best[] = {5, -72}, low[] = {-3, -3}, below[] = {-4, 0}, above[] = {0, 1001};
  const ParamPair params[] = {{"target_energy", "-1"}, {"threads", "1"}, {nullptr, nullptr}};
  const auto search = [&](const uint64_t* words, const coeff_t* ints, uint64_t count) {
    return run_int_search(*model, {}, params, words, ints, count);
  };
  ModelImpl wider = *model;
  wider.int_lo[1] = -72;
  const SearchResult result = run_int_search(wider, {}, params, bits, best, 2);
  EXPECT_EQ(result.energy, -1);
  EXPECT_EQ(info(result, "rounds"), "1");
  EXPECT_EQ(info(result, "proposals"), "0");

  // On several threads the others start anywhere, and the hint is the least that comes out.
  std::atomic<uint8_t> stop{1};
  IntSearchOpts opts = options(1);
  opts.threads = 3;
  opts.external_stop = &stop;
  opts.hint_bits = bits;
  opts.hint_ints = low;
  const coeff_t start = PlainSearch(*model, opts).energy({1, -3, -3});
  EXPECT_LE(easy_int_search(*model, opts).energy, start);

  EXPECT_FATAL(search(bits, best, 2),
               "EasySolver: hint value outside the integer variable's bounds.");
  EXPECT_FATAL(search(bits, below, 2),
               "EasySolver: hint value outside the integer variable's bounds.");
  EXPECT_FATAL(search(bits, above, 2),
               "EasySolver: hint value outside the integer variable's bounds.");
  EXPECT_FATAL(search(bits, low, 1), "EasySolver: hint integer-variable count mismatch.");
  // Without words nothing of a hint is looked at.
  const ParamPair quick[] = {{"time_limit", "0"}, {nullptr, nullptr}};
  run_int_search(*model, {}, quick, nullptr, below, 7);
}

TEST(IntSearch, ChecksItsOwnResult) {
  const auto model = std::make_shared<ModelImpl>(*ModelHandle(Sketch(integer(0, 9))));
  IntSearchOpts opts = options(1);
  opts.model = model;
  opts.callback_ctx = model.get();
  opts.threads = 0;
  opts.callback = [](void*, Sol* sol, uint32_t) { return delete sol, -1.0; };
  EXPECT_FATAL(easy_int_search(*model, opts),
               "EasySolver: internal error \u2014 integer engine produced no solution.");
  opts.threads = 1;
  opts.time_limit = 0;
  opts.callback = [](void* ctx, Sol* sol, uint32_t event) {
    if (event == 1) static_cast<ModelImpl*>(ctx)->constant += 1;
    return delete sol, -1.0;
  };
  EXPECT_FATAL(easy_int_search(*model, opts),
               "EasySolver: internal error \u2014 best-state energy mismatch in integer engine.");
}

TEST(IntSearch, ReportsHowItWent) {
  const ModelHandle model = Sketch(integer(0, 9) + bit());
  const ParamPair params[] = {{"time_limit", "0"}, {"threads", "2"}, {nullptr, nullptr}};
  const SearchResult result = run_int_search(*model, {}, params, nullptr, nullptr, 0);
  std::vector<std::string> keys;
  for (const InfoEntry& entry : result.info) keys.push_back(entry.key);
  EXPECT_EQ(keys, (std::vector<std::string>{"run_time", "threads", "rounds", "proposals", "engine",
                                            "os", "cpu", "gpu", "ram"}));
  EXPECT_EQ(info(result, "engine"), "integer-cpu");
  const std::string run_time = info(result, "run_time");
  EXPECT_EQ(run_time, std::to_string(std::stod(run_time)));  // six decimals
  EXPECT_GE(result.tts, 0.0);
  EXPECT_EQ(result.scale, 1.0);
  EXPECT_EQ(result.bits.size(), 1u);
  EXPECT_EQ(result.ints.size(), 1u);
  EXPECT_TRUE(result.topk.empty());
}

TEST(IntSearch, FiresEventsInOrder) {
  struct Event {
    uint32_t event;
    coeff_t energy;
    std::vector<uint64_t> bits;
    std::vector<coeff_t> ints;
    double tts;
  };
  const ModelHandle model = Sketch(integer(-7, 10'000) + bit() + 100);
  std::vector<Event> events;
  IntSearchOpts opts = options(6);
  opts.model = model;
  opts.has_target = true;
  opts.target_energy = 93;
  opts.callback_ctx = &events;
  opts.callback = [](void* ctx, Sol* sol, uint32_t event) {
    static_cast<std::vector<Event>*>(ctx)->push_back(
        {event, sol_energy(*sol), sol->bits, sol->int_vals, sol->tts});
    delete sol;
    return 0.0;
  };
  const SearchResult result = easy_int_search(*model, opts);
  ASSERT_GE(events.size(), 2u);
  EXPECT_EQ(events[0].event, kEventStart);
  EXPECT_EQ(events[0].energy, 93);
  EXPECT_EQ(events[0].bits, std::vector<uint64_t>{0});
  EXPECT_EQ(events[0].ints, std::vector<coeff_t>{-7});
  EXPECT_EQ(events[0].tts, 0.0);
  for (size_t k = 1; k < events.size(); ++k) {
    EXPECT_EQ(events[k].event, kEventNewBest);
    EXPECT_EQ(events[k].energy, events[k].ints[0] + coeff_t(events[k].bits[0]) + 100);
    if (k > 1) {
      EXPECT_LT(events[k].energy, events[k - 1].energy);
      EXPECT_GE(events[k].tts, events[k - 1].tts);
    }
  }
  EXPECT_EQ(events.back().energy, result.energy);
  EXPECT_EQ(events.back().ints, result.ints);
  EXPECT_EQ(events.back().tts, result.tts);
}

// Models whose numbers come close to what machine integers hold: the sanitizer would see an
// overflow, and the comparison a wrong result.
TEST(IntSearch, StaysExactNearTheLimitOfMachineIntegers) {
  Random random(2026);
  int machine = 0;
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    const auto scaled = [&](unsigned exponent) {
      const coeff_t value = pow2(exponent - below(random, 3)) - below(random, 99);
      return below(random, 2) == 0 ? value : coeff_t(-value);
    };
    const ExprImpl x = bit(), a = integer(-3, 12), b = integer(-pow2(28), pow2(27));
    Sketch sketch(scaled(61) * x + scaled(54) * a * x + scaled(29) * b + scaled(10) / 64 * b * b);
    sketch.between(b + a, scaled(26), pow2(58), 1 + below(random, 3));
    sketch.in(scaled(26) * a,
              {{-pow2(29), scaled(24)}, {pow2(29), pow2(30)}, {pow2(40), pow2(41)}});
    sketch.abs(scaled(53) * a + scaled(57) * x, 1, 1 + below(random, 2));
    const ModelHandle model = sketch;
    machine += fits_machine_integers(*model);
    IntSearchOpts opts = options(random());
    opts.topk_sols = 1000;
    SearchResult results[2];
    for (const bool is_forced : {false, true}) {
      opts.force_wide_numbers = is_forced;
      RoundLimit limit(opts, 1);
      results[is_forced] = easy_int_search(*model, opts);
    }
    EXPECT_EQ(results[0].energy, results[1].energy);
    EXPECT_EQ(results[0].ints, results[1].ints);
    EXPECT_EQ(info(results[0], "proposals"), info(results[1], "proposals"));
    ASSERT_EQ(results[0].topk.size(), results[1].topk.size());
    for (size_t k = 0; k < results[0].topk.size(); ++k) {
      EXPECT_EQ(results[0].topk[k].energy, results[1].topk[k].energy);
      EXPECT_EQ(results[0].topk[k].ints, results[1].topk[k].ints);
    }
  }
  EXPECT_GE(machine, 10);  // the others are too wide and prove nothing
  EXPECT_LT(machine, 40);
}

}  // namespace
}  // namespace zorv::test
