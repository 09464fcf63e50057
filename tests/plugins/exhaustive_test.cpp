// The library that looks at every assignment, against a plain loop that does.
#include <gtest/gtest.h>

#include <csignal>
#include <map>

#include "exhaustive/best_states.h"
#include "plugins/found.h"

namespace zorv::test {
namespace {

struct Exhaustive {
  static constexpr auto create = zorv_exhaustive_create;
  static constexpr auto destroy = zorv_exhaustive_destroy;
  static constexpr auto add_constraint = zorv_exhaustive_add_constraint;
  static constexpr auto add_constraint_nl = zorv_exhaustive_add_constraint_nl;
  static constexpr auto add_constraint_set = zorv_exhaustive_add_constraint_set;
  static constexpr auto set_cons_shape = zorv_exhaustive_set_cons_shape;
  static constexpr auto set_remainder = zorv_exhaustive_set_remainder;
};

class Solver : public Handle<Exhaustive> {
 public:
  explicit Solver(const AbiModel& m) : Handle(m, ~uint64_t{0}) {}
};

struct Answer {
  Found best;
  bool has_list;
  std::vector<Found> list;
  std::map<std::string, std::string> facts;
};

Answer search(const Solver& solver, uint64_t variables, std::vector<ParamPair> params) {
  params.push_back({nullptr, nullptr});
  Output out(variables);
  void* list = zorv_exhaustive_search(solver, out.record(), params.data());
  Answer answer{out.found(), list != nullptr, {}, {}};
  for (uint64_t i = 0; list != nullptr && i < zorv_exhaustive_sol_list_count(list); ++i) {
    Output entry(variables);
    zorv_exhaustive_sol_list_get(list, i, entry.record());
    answer.list.push_back(entry.found());
  }
  if (list != nullptr) zorv_exhaustive_sol_list_destroy(list);
  InfoPair* info = zorv_exhaustive_get_info(solver);
  for (InfoPair* pair = info; pair->key != nullptr; ++pair) answer.facts[pair->key] = pair->value;
  zorv_exhaustive_free_info(info);
  return answer;
}

Answer search(const AbiModel& m, const std::vector<ParamPair>& params = {}) {
  return search(Solver(m), m.variables, params);
}

std::vector<Found> first(const std::vector<Found>& states, size_t count) {
  return {states.begin(), states.begin() + static_cast<int64_t>(std::min(count, states.size()))};
}

// One search of each kind, on the same handle.
void compare_with_loop(const AbiModel& m, const char* threads) {
  const std::vector<Found> states = all_states(m);
  const auto is_best = [&](const Found& f) { return f.energy == states[0].energy; };
  const size_t ties = std::count_if(states.begin(), states.end(), is_best);
  const Solver solver(m);
  const auto list = [&](const char* key, const char* value) {
    const Answer answer = search(solver, m.variables, {{"threads", threads}, {key, value}});
    EXPECT_EQ(answer.best, states[0]);
    EXPECT_TRUE(answer.has_list);
    return answer.list;
  };
  const Answer plain = search(solver, m.variables, {{"threads", threads}});
  EXPECT_EQ(plain.best, states[0]);
  EXPECT_FALSE(plain.has_list);
  EXPECT_EQ(plain.facts.at("states"), std::to_string(states.size()));
  EXPECT_EQ(plain.facts.at("complete"), "1");
  for (const size_t k : {1, 7, 100}) {
    EXPECT_EQ(list("topk_sols", std::to_string(k).c_str()), first(states, k));
    EXPECT_EQ(list("best_energy_sols", std::to_string(k).c_str()),
              first(states, std::min(k, ties)));
  }
  EXPECT_EQ(list("best_energy_sols", nullptr), first(states, ties));
}

const Coeff kScales[] = {1, Coeff(1) << 24, Coeff(1) << 50, Coeff(1) << 100};

TEST(ExhaustiveLibrary, FindsWhatALoopOverAllAssignmentsFinds) {
  RandomModels models(1);
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE("seed 1, round " + std::to_string(round));
    const AbiModel m = models.make(models.below(12), kScales[round % 4]);
    compare_with_loop(m, "1");
    if (HasFailure()) return;
  }
}

TEST(ExhaustiveLibrary, GivesTheSameWhateverTheThreads) {
  RandomModels models(2);
  for (int round = 0; round < 6; ++round) {
    SCOPED_TRACE("seed 2, round " + std::to_string(round));
    AbiModel m = models.make(11, kScales[round % 4]);
    m.variables = 17;  // from 15 on the assignments are cut into segments
    m.degrees.resize(std::max<size_t>(m.degrees.size(), 3));
    m.degrees[0].add(2, {12});
    m.degrees[1].add(-1, {14, 16});
    m.degrees[2].add(2, {1, 15, 16 | 0x80000000u});
    m.degrees[2].add(-3, {11, 13 | 0x80000000u, 15 | 0x80000000u});
    if (round == 0) compare_with_loop(m, "2");
    for (const char* key : {"topk_sols", "best_energy_sols", "threads"}) {
      const Answer one = search(m, {{key, "40"}, {"threads", "1"}});
      for (const char* threads : {"2", "3"}) {
        const Answer more = search(m, {{key, "40"}, {"threads", threads}});
        EXPECT_EQ(more.facts.at("threads"), threads);
        EXPECT_EQ(more.facts.at("states"), one.facts.at("states"));
        EXPECT_EQ(more.best, one.best);
        EXPECT_EQ(more.list, one.list);
      }
    }
  }
}

TEST(ExhaustiveLibrary, BreaksTiesByRankWhicheverThreadIsFaster) {
  for (int i = 0; i < 30; ++i) {
    const Answer answer = search(AbiModel{17}, {{"threads", "3"}, {"topk_sols", "3"}});
    EXPECT_EQ(answer.best.state, 0u);
    EXPECT_EQ(answer.list, (std::vector<Found>{{0, 0}, {0, 1}, {0, 3}}));
  }
}

TEST(ExhaustiveLibrary, TakesTheSmallestNumbersThatHold) {
  const auto numbers = [](const Coeff& coeff) {
    AbiModel m{2, Coeff(1) << 200, {{}}};
    m.degrees[0].add(coeff, {1});
    const Answer answer = search(m);
    EXPECT_EQ(answer.best.energy, m.constant + std::min<Coeff>(coeff, 0));
    return answer.facts.at("numbers");
  };
  const std::pair<int, const char*> rows[] = {{29, "int32"}, {61, "int64"}};
  for (const auto& [bits, name] : rows) {
    EXPECT_EQ(numbers(Coeff(1) << bits), name);
    EXPECT_EQ(numbers(-(Coeff(1) << bits)), name);
    EXPECT_NE(numbers(-(Coeff(1) << bits) - 1), name);
  }
  EXPECT_EQ(numbers(Coeff(1) << 100), "unbounded");
}

TEST(ExhaustiveLibrary, SolvesModelsWithoutVariablesOrTerms) {
  EXPECT_EQ(search(AbiModel{0, -7}, {{"topk_sols", "3"}}).list, (std::vector<Found>{{-7, 0}}));
  EXPECT_EQ(search(AbiModel{3, 5}, {{"best_energy_sols", "all"}}).list.size(), 8u);
}

// 40 variables, of which the search reaches the best state only at the very end.
AbiModel large_model() {
  AbiModel m{40, 0, {{}}};
  for (uint32_t v = 0; v < 40; ++v) m.degrees[0].add(v == 39 ? -1000 : 1, {v});
  m.constraints.push_back({Form::kLinear, 3});
  m.constraints[0].linear.add(1, {0});
  m.constraints[0].lows = m.constraints[0].highs = {1};
  return m;
}

TEST(ExhaustiveLibrary, StopsWhenTheTimeIsUpOrTheTargetIsReached) {
  const AbiModel m = large_model();
  for (const ParamPair& end : {ParamPair{"time_limit", "0.01"}, ParamPair{"time_limit", "0"},
                               ParamPair{"target_energy", "+1"}}) {
    const Answer answer = search(m, {end, {"threads", "2"}});
    EXPECT_EQ(answer.facts.at("complete"), "0");
    EXPECT_LT(std::stoull(answer.facts.at("states")), uint64_t{1} << 40);
    expect_local_minimum(m, answer.best);
  }
  RandomModels models(4);
  for (int round = 0; round < 20; ++round) {
    const AbiModel any = models.make(40, kScales[round % 4]);
    const char* const key = round % 2 == 0 ? "topk_sols" : "best_energy_sols";
    const Answer answer = search(any, {{key, "3"}, {"time_limit", "nan"}, {"threads", "1"}});
    expect_local_minimum(any, answer.best);
    EXPECT_EQ(answer.list.at(0), answer.best);
  }
  // A state as good as the target that violates a requirement is not what was asked for.
  AbiModel easy{24, 0, {{}}, {m.constraints[0]}};
  easy.degrees[0].add(-1, {1});
  easy.constraints[0].weight = 0;
  easy.constraints[0].lows = easy.constraints[0].highs = {0};
  for (const char* complete : {"1", "0"}) {
    const Answer answer = search(easy, {{"target_energy", "-1"}, {"threads", "1"}});
    EXPECT_EQ(answer.facts.at("complete"), complete);
    EXPECT_EQ(answer.best, (Found{-1, 3}));
    easy.constraints[0].shape_kind = 1;
  }
}

// Energies up to a limit just above the best are of interest, also where a limb of it is all zeros
// or all ones.
TEST(BestStates, TakesTiesAndNothingAbove) {
  plugin::SearchParams params;
  params.has_best_energy_sols = true;
  params.best_energy_cap = 2;
  for (const unsigned bits : {1, 63, 64, 65, 90, 128, 192}) {
    for (int offset = -2; offset <= 2; ++offset) {
      for (const int sign : {-1, 1}) {
        const Coeff best = sign * (Coeff(1) << bits) + offset;
        plugin::BestStates<Coeff> kept(params, Coeff(1) << 200);
        EXPECT_TRUE(kept.take(best, 0, 0));
        EXPECT_EQ(kept.limit(), best + 1);
        EXPECT_FALSE(kept.take(best, 1, 0));
        EXPECT_EQ(kept.limit(), best);
      }
    }
  }
}

TEST(ExhaustiveLibrary, DoesWithTheThreadsThatItGets) {
  const std::vector<ParamPair> params = {{"threads", "-1"}, {"time_limit", "0.01"}};
  EXPECT_TRUE_WITHOUT_THREADS(search(large_model(), params).facts.at("threads") == "1");
}

TEST(ExhaustiveLibrary, PrintsALineForEachNewBest) {
  AbiModel m{2, 10, {{}}};
  m.degrees[0].add(-2, {1});
  m.constraints.push_back({Form::kLinear, 3});
  m.constraints[0].linear.add(1, {0});
  m.constraints[0].lows = m.constraints[0].highs = {1};
  const auto printed = [&](const char* value) {
    testing::internal::CaptureStdout();
    search(m, {{"enable_default_callback", value}});
    std::string text = testing::internal::GetCapturedStdout();
    for (size_t at = 0; (at = text.find("TTS = ", at)) != std::string::npos;) {
      text.replace(at, text.find('s', at + 6) - at, "T");
    }
    return text;
  };
  EXPECT_EQ(printed("True"),
            "Ts Energy = 13 Obj = 10 Viol = 1/1\n"
            "Ts Energy = 10 Obj = 10 Viol = 0/1\n"
            "Ts Energy = 8 Obj = 8 Viol = 0/1\n");
  EXPECT_EQ(printed("TRUE"), "");
  m.constraints[0].shape_kind = 1;
  EXPECT_EQ(printed("1").substr(0, 25), "Ts Energy = 13 Obj = 10\nT");
  m.constraints.clear();
  EXPECT_EQ(printed("true"), "Ts Energy = 10\nTs Energy = 8\n");
}

TEST(ExhaustiveLibrary, RefusesWhatItCannotDo) {
  const auto expect_refusal = [](const AbiModel& m, const ParamPair& param, const char* text) {
    EXPECT_EXIT(search(m, {param}), testing::KilledBySignal(SIGABRT),
                testing::Eq("zorv: ExhaustiveSolver: " + std::string(text) + "\n"));
  };
  const AbiModel one{1};
  expect_refusal(one, {"seed", "1"}, "unknown parameter 'seed'.");
  expect_refusal(one, {"threads", "none"}, "threads must be >= 1.");
  expect_refusal(one, {"topk_sols", nullptr}, "topk_sols must be >= 1.");
  expect_refusal(AbiModel{63}, {"threads", "1"},
                 "a model of 63 binary variables has too many assignments to look at them all "
                 "(at most 62 variables).");
  EXPECT_EQ(search(AbiModel{62}, {{"time_limit", "0"}}).facts.at("complete"), "0");
}

}  // namespace
}  // namespace zorv::test
