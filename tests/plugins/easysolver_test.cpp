// The heuristic library against a plain loop over all assignments.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <set>

#include "plugins/found.h"

namespace zorv::test {
namespace {

struct Easy {
  static constexpr auto create = zorv_easy_solver_create;
  static constexpr auto destroy = zorv_easy_solver_destroy;
  static constexpr auto add_constraint = zorv_easy_solver_add_constraint;
  static constexpr auto add_constraint_nl = zorv_easy_solver_add_constraint_nl;
  static constexpr auto add_constraint_set = zorv_easy_solver_add_constraint_set;
  static constexpr auto set_cons_shape = zorv_easy_solver_set_cons_shape;
  static constexpr auto set_remainder = zorv_easy_solver_set_remainder;
};
using Solver = Handle<Easy>;

struct Answer {
  Found best;
  std::vector<Found> list;
  std::vector<uint64_t> words = {};  // of the best

  bool is_one(uint64_t i) const { return (words[i / 64] >> i % 64 & 1) != 0; }
};

using Params = std::map<std::string, std::string>;

Answer search(const Solver& solver, uint64_t variables, const Params& params,
              const uint64_t* hint = nullptr) {
  std::vector<ParamPair> pairs;
  for (const auto& [key, value] : params) pairs.push_back({key.c_str(), value.c_str()});
  pairs.push_back({nullptr, nullptr});
  Output out(variables);
  void* list = zorv_easy_solver_search(solver, out.record(), pairs.data(), hint);
  Answer answer{out.found(), {}, out.words()};
  for (uint64_t i = 0; list != nullptr && i < zorv_easy_solver_sol_list_count(list); ++i) {
    Output entry(variables);
    zorv_easy_solver_sol_list_get(list, i, entry.record());
    answer.list.push_back(entry.found());
  }
  if (list != nullptr) zorv_easy_solver_sol_list_destroy(list);
  return answer;
}

std::map<std::string, std::string> facts_of(const Solver& solver) {
  std::map<std::string, std::string> facts;
  InfoPair* info = zorv_easy_solver_get_info(solver);
  for (InfoPair* pair = info; pair->key != nullptr; ++pair) facts[pair->key] = pair->value;
  zorv_easy_solver_free_info(info);
  return facts;
}

// The lowest energy that ends a search: that of the best state if it holds all requirements.
bool is_reachable(const AbiModel& m, const std::vector<Found>& all) {
  return m.violated(all[0].state) == 0;
}

const Coeff kScales[] = {1, Coeff(1) << 34, Coeff(1) << 70};  // for each kind of number

TEST(EasySolver, ReachesTheOptimumOfSmallModelsOfEveryKind) {
  RandomModels models(20260);
  for (int round = 0; round < 360; ++round) {
    const uint64_t variables = models.below(8);
    const AbiModel m = models.make(variables, kScales[round % 3]);
    const std::vector<Found> all = all_states(m);
    const uint64_t hint = models.below(uint64_t{1} << variables);
    const Solver solver(m);
    const Answer answer = search(solver, variables,
                                 {{"seed", std::to_string(round)},
                                  {"threads", round % 5 == 0 ? "3" : "1"},
                                  {"target_energy", all[0].energy.str()},
                                  {"time_limit", is_reachable(m, all) ? "20" : "0.05"}},
                                 round % 2 == 0 && variables > 0 ? &hint : nullptr);
    EXPECT_EQ(answer.best.energy, all[0].energy) << "round " << round;
    EXPECT_EQ(answer.best.energy, m.energy(answer.best.state)) << "round " << round;
    EXPECT_EQ(answer.list.size(), 0u);
  }
}

// Temperatures and weights are doubles, which are infinite there.
TEST(EasySolver, TakesNumbersThatNoDoubleHolds) {
  RandomModels models(5);
  for (int round = 0; round < 12; ++round) {
    const AbiModel m = models.make(6, Coeff(1) << 1100);
    const std::vector<Found> all = all_states(m);
    const Answer answer = search(Solver(m), 6, {{"seed", "1"}, {"time_limit", "0.05"}});
    EXPECT_EQ(answer.best.energy, all[0].energy) << "round " << round;
  }
}

// Larger coefficients than fields of 32 bits hold, sums beyond 64 bits.
TEST(EasySolver, PicksTheNumbers) {
  const std::string numbers[] = {"int32", "int64", "unbounded"};
  for (size_t k = 0; k < 3; ++k) {
    AbiModel m{2};
    m.degrees.resize(2);
    m.degrees[1].add(-3 * kScales[k], {0, 1});
    const Solver solver(m);
    EXPECT_EQ(search(solver, 2, {{"time_limit", "0.01"}}).best, (Found{-3 * kScales[k], 3}));
    EXPECT_EQ(facts_of(solver)["numbers"], numbers[k]);
  }
}

TEST(EasySolver, GathersDistinctStatesByEnergy) {
  RandomModels models(7);
  for (int round = 0; round < 12; ++round) {
    const uint64_t variables = 5;
    const AbiModel m = models.make(variables, kScales[round % 3]);
    const std::vector<Found> all = all_states(m);
    const Solver solver(m);
    const std::vector<Found> top =
        search(solver, variables, {{"topk_sols", "6"}, {"time_limit", "0.05"}}).list;
    ASSERT_EQ(top.size(), 6u) << "round " << round;
    for (size_t k = 0; k < top.size(); ++k) {
      EXPECT_EQ(top[k].energy, all[k].energy) << "round " << round << " entry " << k;
      EXPECT_EQ(top[k].energy, m.energy(top[k].state));
    }
    const uint64_t ties = std::count_if(all.begin(), all.end(),
                                        [&](const Found& f) { return f.energy == all[0].energy; });
    const std::vector<Found> best =
        search(solver, variables,
               {{"best_energy_sols", ""}, {"topk_sols", "1"}, {"time_limit", "0.05"}})
            .list;
    std::set<uint64_t> states;
    for (const Found& f : best) {
      EXPECT_EQ(f.energy, all[0].energy);
      EXPECT_EQ(f.energy, m.energy(f.state));
      states.insert(f.state);
    }
    EXPECT_EQ(states.size(), best.size());
    EXPECT_EQ(best.size(), ties) << "round " << round;
  }
}

// A chain of 60 variables, whose optimum comes of a plain dynamic program.
AbiModel chain() {
  AbiModel m{60};
  m.degrees.resize(2);
  for (int i = 0; i < 60; ++i) m.degrees[0].add(i * 37 % 41 - 25, {static_cast<uint32_t>(i)});
  for (uint32_t i = 0; i + 1 < 60; ++i) m.degrees[1].add(int(i * 29 % 61) - 28, {i, i + 1});
  return m;
}
Coeff best_of_chain(const AbiModel& m) {
  Coeff least[2] = {0, m.degrees[0].coeffs[0]};  // by the last variable
  for (size_t i = 1; i < m.variables; ++i) {
    const Coeff zero = std::min(least[0], least[1]);
    const Coeff one = std::min(least[0], Coeff(least[1] + m.degrees[1].coeffs[i - 1]));
    least[0] = zero;
    least[1] = one + m.degrees[0].coeffs[i];
  }
  return std::min(least[0], least[1]);
}

TEST(EasySolver, RepeatsWithOneThreadAndASeed) {
  const AbiModel m = chain();
  const Solver solver(m);
  const Coeff best = best_of_chain(m);
  const Params params = {{"seed", "5"}, {"threads", "1"}, {"target_energy", best.str()}};
  const Answer first = search(solver, 60, params);
  const auto facts = facts_of(solver);
  const Answer second = search(solver, 60, params);
  EXPECT_EQ(first.best.energy, best);
  EXPECT_EQ(first.best, second.best);
  EXPECT_EQ(facts, facts_of(solver));
}

TEST(EasySolver, StartsFromTheHint) {
  const AbiModel m = chain();
  const Solver solver(m);
  const Found best =
      search(solver, 60, {{"seed", "5"}, {"target_energy", best_of_chain(m).str()}}).best;
  EXPECT_EQ(search(solver, 60, {{"time_limit", "0"}}, &best.state).best, best);
  const uint64_t hint = 0x123456789ABCDEF;
  EXPECT_LE(search(solver, 60, {{"time_limit", "0"}}, &hint).best.energy, m.energy(hint));
}

// The target alone, or with a constraint that the best state violates: then time decides.
TEST(EasySolver, CountsTheTargetOnlyWithoutViolations) {
  for (const uint8_t kind : {0, 1}) {
    AbiModel m{1};
    m.degrees.resize(1);
    m.degrees[0].add(-5, {0});
    Constraint c;  // x = 0 at a weight below what x is worth
    c.linear.add(1, {0});
    c.lows = c.highs = {0};
    c.shape_kind = kind;
    m.constraints = {c};
    const Params params = {{"target_energy", "-4"}, {"time_limit", kind == 0 ? "0.2" : "1000"}};
    const Solver solver(m);
    EXPECT_EQ(search(solver, 1, params).best, (Found{-4, 1}));
    // Once it is met, the constraint is not given up for less energy.
    const uint64_t hint = 0;
    EXPECT_EQ(search(solver, 1, {{"target_energy", "0"}, {"threads", "1"}}, &hint).best,
              kind == 0 ? (Found{0, 0}) : (Found{-4, 1}));
  }
}

// Quadratic assignment of 6 things to 6 places, with declared constraints and with their squares
// multiplied out; the optimum by trying all 720.
struct Assignment {
  static constexpr uint32_t kSize = 6;
  int64_t flow(uint32_t i, uint32_t j) const { return i == j ? 0 : (i * 7 + j * 5 + i * j) % 11; }
  int64_t distance(uint32_t p, uint32_t q) const { return p == q ? 0 : (p * p + 3 * q) % 9; }

  int64_t best() const {
    std::vector<uint32_t> places(kSize);
    for (uint32_t i = 0; i < kSize; ++i) places[i] = i;
    int64_t least = INT64_MAX;
    do {
      int64_t cost = 0;
      for (uint32_t i = 0; i < kSize; ++i) {
        for (uint32_t j = 0; j < kSize; ++j) cost += flow(i, j) * distance(places[i], places[j]);
      }
      least = std::min(least, cost);
    } while (std::next_permutation(places.begin(), places.end()));
    return least;
  }

  AbiModel model(bool as_squares) const {
    AbiModel m{kSize * kSize};
    m.degrees.resize(2);
    const auto x = [](uint32_t i, uint32_t p) { return i * kSize + p; };
    for (uint32_t a = 0; a < kSize * kSize; ++a) {
      for (uint32_t b = 0; b < kSize * kSize; ++b) {
        const int64_t cost = flow(a / kSize, b / kSize) * distance(a % kSize, b % kSize);
        if (cost != 0) m.degrees[1].add(cost, {a, b});
      }
    }
    constexpr int64_t kWeight = 500;
    for (uint32_t i = 0; i < kSize; ++i) {
      Constraint row, column;
      for (uint32_t p = 0; p < kSize; ++p) {
        row.linear.add(1, {x(i, p)});
        column.linear.add(1, {x(p, i)});
      }
      for (Constraint* c : {&row, &column}) {
        c->weight = kWeight;
        c->lows = c->highs = {1};
        if (!as_squares) {
          m.constraints.push_back(*c);
          continue;
        }
        m.constant += kWeight;
        for (uint32_t p = 0; p < kSize; ++p) {
          const uint32_t a = c->linear.literals[p];
          m.degrees[0].add(-kWeight, {a});
          for (uint32_t q = 0; q < p; ++q) {
            m.degrees[1].add(2 * kWeight, {c->linear.literals[q], a});
          }
        }
      }
    }
    return m;
  }
};

TEST(EasySolver, SolvesAssignments) {
  const Assignment assignment;
  const Coeff best = assignment.best();
  for (const bool as_squares : {false, true}) {
    const AbiModel m = assignment.model(as_squares);
    const Answer answer = search(Solver(m), m.variables,
                                 {{"seed", "1"}, {"threads", "1"}, {"target_energy", best.str()}});
    EXPECT_EQ(answer.best.energy, best);
    EXPECT_EQ(answer.best.energy, m.energy(answer.best.state));
  }
}

// Products of three spins, which have fewer terms in spins than in variables; now and then with
// linear terms that are beyond 32 bits all together, though no field is.
AbiModel spin_model(RandomModels& random, uint64_t variables, const Coeff& scale) {
  AbiModel m{variables, 0, {{}, {}, {}}};
  for (uint32_t t = 0; t < 2 * variables; ++t) {
    const Coeff coeff = (int64_t(random.below(9)) - 4) * scale;
    const uint32_t i = t % uint32_t(variables - 2), spins[] = {i, i + 1, i + 2};
    for (uint32_t subset = 1; subset < 8; ++subset) {
      std::vector<uint32_t> term;
      for (uint32_t k = 0; k < 3; ++k) {
        if ((subset >> k & 1) != 0) term.push_back(spins[k]);
      }
      const int factors[] = {-2, 4, -8};
      m.degrees[term.size() - 1].add(factors[term.size() - 1] * coeff, term);
    }
  }
  const Coeff field = random.below(2) == 0 ? 0 : 20'000'000;
  for (uint32_t i = 0; i < variables; ++i) m.degrees[0].add(field, {i});
  return m;
}

TEST(EasySolver, ReportsWhatNoFlipImprovesHoweverShortTheTime) {
  RandomModels models(31);
  const char* const limits[] = {"0", "1e-9", "nan", "-NaN(1)", "0.002", "0.0005"};
  const Params lists[] = {{}, {{"topk_sols", "4"}}, {{"best_energy_sols", ""}}};
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE("seed 31, round " + std::to_string(round));
    const Coeff& scale = kScales[round % 3];
    const AbiModel m = round % 10 == 0   ? spin_model(models, 20, scale)
                       : round % 10 == 1 ? Assignment().model(round % 20 == 1)
                                         : models.make(1 + models.below(40), scale);
    Params params = lists[round % 4 % 3];
    params["seed"] = std::to_string(round);
    params["threads"] = round % 5 == 0 ? "4" : "1";
    params["time_limit"] = limits[round % 6];
    const Answer answer = search(Solver(m), m.variables, params);
    expect_local_minimum(m, answer.best);
    for (const Found& entry : answer.list) EXPECT_EQ(entry.energy, m.energy(entry.state));
    EXPECT_EQ(answer.list.empty() ? answer.best : answer.list[0], answer.best);
    if (!m.constraints.empty()) continue;
    params["time_limit"] = "20";  // and where a target stops it
    params["target_energy"] = Coeff(answer.best.energy + abs(answer.best.energy) / 3).str();
    expect_local_minimum(m, search(Solver(m), m.variables, params).best);
  }
}

// Half of all edges, each as two times x y; what is wanted is -1 for each vertex.
TEST(EasySolver, FindsAnIndependentSetOfALargeGraphWithinItsTime) {
  constexpr uint32_t kSize = 1500;
  RandomModels random(3);
  AbiModel m{kSize, 0, {{}, {}}};
  std::vector<std::vector<uint32_t>> neighbours(kSize);
  for (uint32_t i = 0; i < kSize; ++i) {
    m.degrees[0].add(-1, {i});
    for (uint32_t j = 0; j < i; ++j) {
      if (random.below(2) == 0) continue;
      m.degrees[1].add(2, {j, i});
      neighbours[i].push_back(j);
      neighbours[j].push_back(i);
    }
  }
  const Answer answer = search(Solver(m), kSize, {{"seed", "1"}, {"time_limit", "1"}});
  int64_t size = 0;
  for (uint32_t i = 0; i < kSize; ++i) {
    const auto chosen = std::count_if(neighbours[i].begin(), neighbours[i].end(),
                                      [&](uint32_t j) { return answer.is_one(j); });
    EXPECT_EQ(chosen == 0, answer.is_one(i)) << i;
    size += answer.is_one(i);
  }
  EXPECT_EQ(answer.best.energy, -size);
}

TEST(EasySolver, DoesWithTheThreadsThatItGets) {
  const AbiModel m = chain();
  const auto threads = [&] {
    const Solver solver(m);
    search(solver, 60, {{"threads", "-1"}, {"time_limit", "0.01"}});
    return facts_of(solver)["threads"];
  };
  EXPECT_TRUE_WITHOUT_THREADS(threads() == "1");
}

TEST(EasySolver, RefusesBadParameters) {
  const AbiModel m{1};
  const struct {
    const char *key, *value, *message;
  } rows[] = {
      {"thread", "2", "zorv: EasySolver: unknown parameter 'thread'.\n"},
      {"threads", "0", "zorv: EasySolver: threads must be >= 1.\n"},
      {"thread_count", "x", "zorv: EasySolver: threads must be >= 1.\n"},
      {"topk_sols", "0", "zorv: EasySolver: topk_sols must be >= 1.\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EXIT(search(Solver(m), 1, {{row.key, row.value}}), ::testing::KilledBySignal(SIGABRT),
                ::testing::Eq(row.message));
  }
}

// Integers y in [-2, 4] and z in [0, 5], bits a and b:
//   3 a y + y y - 2 y z + z z z - 5 b z, and the constraint 1 <= y + z + a <= 3.
TEST(EasySolver, WritesIntegersInBits) {
  constexpr uint32_t a = 0, b = 1, y = 1u << 30, z = 1u << 30 | 1;
  Terms degrees[3];
  degrees[1].add(3, {a, y});
  degrees[1].add(1, {y, y});
  degrees[1].add(-2, {y, z});
  degrees[1].add(-5, {b, z});
  degrees[2].add(1, {z, z, z});
  const std::vector<Coeff> low = {-2, 0}, high = {4, 5};
  const Coeff constant = 7, weight = 2, zero = 0, one = 1, three = 3;
  uint64_t counts[3];
  const uint32_t* literals[3];
  const coeff_t* coeffs[3];
  for (size_t d = 0; d < 3; ++d) {
    counts[d] = degrees[d].coeffs.size();
    literals[d] = degrees[d].literals.data();
    coeffs[d] = abi(degrees[d].coeffs);
  }
  void* solver = zorv_easy_solver_create_int(nullptr, 2, 2, abi(low), abi(high), 3, abi(constant),
                                             counts, literals, coeffs);
  const std::vector<Coeff> units = {1, 1, 1};
  const uint32_t flat[] = {2, 3, 0};
  zorv_easy_solver_add_constraint(solver, abi(weight), abi(one), abi(three), abi(zero), 3, flat,
                                  abi(units));
  const auto energy = [](int64_t p, int64_t q, int64_t v, int64_t w) {
    const int64_t body = v + w + p, off = body < 1 ? 1 - body : body > 3 ? body - 3 : 0;
    return 7 + 3 * p * v + v * v - 2 * v * w + w * w * w - 5 * q * w + 2 * off * off;
  };
  int64_t least = INT64_MAX;
  for (int64_t v = -2; v <= 4; ++v) {
    for (int64_t w = 0; w <= 5; ++w) {
      for (const int64_t bits : {0, 1, 2, 3}) {
        least = std::min(least, energy(bits & 1, bits >> 1, v, w));
      }
    }
  }
  for (int seed = 0; seed < 10; ++seed) {
    const std::string text = std::to_string(seed);
    const ParamPair params[] = {{"thread_count", "1"},
                                {"seed", text.c_str()},
                                {"time_limit", seed == 0 ? "0.1" : "0"},
                                {nullptr, nullptr}};
    Output out(2);
    std::vector<Coeff> ints(2);
    EXPECT_EQ(zorv_easy_solver_search_int(solver, out.record(), params,
                                          reinterpret_cast<coeff_t*>(ints.data())),
              nullptr);
    const Found found = out.found();
    const auto with_bits = [&](uint64_t bits) {
      return energy(bits & 1, bits >> 1, static_cast<int64_t>(ints[0]),
                    static_cast<int64_t>(ints[1]));
    };
    EXPECT_EQ(found.energy, with_bits(found.state));
    EXPECT_LE(found.energy, with_bits(found.state ^ 1));
    EXPECT_LE(found.energy, with_bits(found.state ^ 2));
    EXPECT_LE(least, found.energy);
    EXPECT_TRUE(seed > 0 || found.energy == least);
  }
  zorv_easy_solver_destroy(solver);
}

}  // namespace
}  // namespace zorv::test
