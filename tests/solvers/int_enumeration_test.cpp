#include "solvers/int_enumeration.h"

#include <set>

#include "reference/int_search.h"
#include "solvers/search_bounds.h"
#include "solvers/search_core.h"
#include "solvers/search_models.h"
#include "support/random.h"

namespace zorv::test {
namespace {

using State = PlainSearch::State;

// The walk as it is defined, with the whole energy computed anew for every state.
struct PlainWalk {
  uint64_t states = 0;
  coeff_t best_energy;
  std::vector<State> best;  // all of them, in the order of the walk

  explicit PlainWalk(const ModelImpl& m) {
    const IntSearchOpts opts;
    const PlainSearch plain(m, opts);
    State x(m.variables.size(), 0), hi(m.variables.size(), 1);
    x.insert(x.end(), m.int_lo.begin(), m.int_lo.end());
    hi.insert(hi.end(), m.int_hi.begin(), m.int_hi.end());
    const State lo = x;
    std::vector<int> direction(x.size(), 1);
    std::set<State> seen;
    size_t p = 0;
    while (p < x.size()) {
      ++states;
      EXPECT_TRUE(seen.insert(x).second);
      const coeff_t energy = plain.energy(x);
      if (best.empty() || energy < best_energy) {
        best_energy = energy;
        best.clear();
      }
      if (energy == best_energy) best.push_back(x);
      for (p = 0; p < x.size(); ++p) {
        const coeff_t next = x[p] + direction[p];
        if (lo[p] <= next && next <= hi[p]) {
          x[p] = next;
          break;
        }
        direction[p] = -direction[p];
      }
    }
  }
};

void expect_same(const SearchResult& result, const PlainWalk& plain, const ModelImpl& model,
                 uint64_t list_size) {
  EXPECT_EQ(result.energy, plain.best_energy);
  EXPECT_EQ(result.bits, words_of(model, plain.best[0]));
  EXPECT_EQ(result.ints, ints_of(model, plain.best[0]));
  EXPECT_EQ(info(result, "states"), std::to_string(plain.states));
  ASSERT_EQ(result.topk.size(), list_size);
  for (size_t k = 0; k < list_size; ++k) {
    EXPECT_EQ(result.topk[k].energy, plain.best_energy);
    EXPECT_EQ(result.topk[k].bits, words_of(model, plain.best[k])) << "solution " << k;
    EXPECT_EQ(result.topk[k].ints, ints_of(model, plain.best[k])) << "solution " << k;
  }
}

// Both number types against the plain walk, with a list of up to `cap` solutions, 0 for no cap, or
// with null without a list. Says how many optima there are.
size_t compare(const ModelImpl& model, const char* cap) {
  const PlainWalk plain(model);
  const ParamPair params[] = {{cap != nullptr ? "best_energy_sols" : nullptr, cap}, {}};
  const size_t ties = plain.best.size();
  const size_t most = cap == nullptr ? 0 : *cap == '0' ? ties : std::stoul(cap);
  for (const bool is_wide : {false, true}) {
    expect_same(enumerate_states(model, params, is_wide), plain, model, std::min(most, ties));
  }
  return ties;
}

// A model of all that a model can have, with small bounds.
class RandomModel {
 public:
  explicit RandomModel(Random& random) : random_(random) {
    for (uint64_t n = below(random, 5); n > 0; --n) {
      variables_.push_back(fresh());
      if (below(random, 3) == 0) complements_.push_back(variables_.back() | kNegationBit);
    }
    for (uint64_t n = 1 + below(random, 3); n > 0; --n) {
      const int lo = number(4), range = 1 + static_cast<int>(below(random, 4));
      variables_.push_back(new_int_var("", lo, lo + range));
    }
  }

  ModelImpl make() {
    // Beyond 64 bits from time to time.
    unit_ = below(random_, 4) == 0 ? pow2(70) : 1;
    std::vector<uint32_t> literals = variables_;
    literals.insert(literals.end(), complements_.begin(), complements_.end());
    Sketch sketch(sum(5, 4, literals));
    for (uint64_t n = below(random_, 4); n > 0; --n) add_constraint(sketch);
    ModelImpl model = *ModelHandle(sketch);
    // A variable of one value, which no caller can declare.
    if (below(random_, 4) == 0 && !model.int_lo.empty()) model.int_hi[0] = model.int_lo[0];
    return model;
  }

 private:
  int number(int magnitude) {
    return static_cast<int>(below(random_, 2 * magnitude + 1)) - magnitude;
  }

  ExprImpl sum(uint64_t terms, uint64_t max_degree, const std::vector<uint32_t>& literals) {
    ExprImpl e = constant(unit_ * number(9));
    for (; terms > 0; --terms) {
      ExprImpl product = constant(unit_ * number(9));
      for (uint64_t d = 1 + below(random_, max_degree); d > 0; --d) {
        product = product * var(literals[below(random_, literals.size())]);
      }
      e = e + product;
    }
    return e;
  }

  ExprImpl body(uint64_t max_degree) { return sum(3, max_degree, variables_); }

  void add_constraint(Sketch& sketch) {
    const coeff_t weight = unit_ * (2 * number(3) + 1);
    const coeff_t at = unit_ * number(9), off = unit_ * number(9);
    const uint32_t k = 1 + static_cast<uint32_t>(below(random_, 2));
    switch (below(random_, 6)) {
      case 0:
        sketch.between(body(1), at, at + abs(off), weight);
        break;
      case 1:  // now and then with the upper end below the lower one
        sketch.between(body(4), at, off, weight);
        break;
      case 2:
        sketch.in(body(1), {{unit_ * -999, at}, {at + abs(off), unit_ * 999}}, weight);
        break;
      case 3:
        sketch.in(body(3), {{at, at}, {off, off}, {9 * unit_, 9 * unit_}}, weight);
        break;
      case 4:
        sketch.abs(body(1), k, weight);
        break;
      default:
        sketch.relu(body(1), k, weight);
    }
  }

  Random& random_;
  std::vector<uint32_t> variables_, complements_;
  coeff_t unit_ = 1;
};

TEST(IntEnumeration, AgreesWithThePlainWalk) {
  const char* const kCaps[] = {nullptr, "0", "1", "3"};
  int machine = 0, wide = 0, tied = 0;
  for (uint64_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    const ModelImpl model = RandomModel(random).make();
    if (model.int_lo.empty()) continue;
    if (compare(model, kCaps[seed % std::size(kCaps)]) > 1) ++tied;
    ++(fits_machine_integers(model) ? machine : wide);
  }
  EXPECT_GE(std::min({machine, wide, tied}), 30);
}

TEST(IntEnumeration, WalksInGrayOrder) {
  // Where all states tie, the list is the walk.
  const ExprImpl x = bit(), y = bit(), a = integer(-1, 1), b = integer(0, 4);
  const auto level = [](const ExprImpl& body) {
    return ModelHandle(Sketch(ExprImpl()).between(body, -99, 99));
  };
  for (const ExprImpl& used : {a, a + b, x + a, x + y + a, x + y + a + b}) {
    compare(*level(used), "0");
  }
  const ParamPair params[] = {{"best_energy_sols", nullptr}, {nullptr, nullptr}};
  std::string walk;
  for (const TopKEntry& entry : enumerate_states(*level(x + a), params).topk) {
    walk += std::to_string(entry.bits[0]) + " " + entry.ints[0].str() + ", ";
  }
  EXPECT_EQ(walk, "0 -1, 1 -1, 1 0, 0 0, 0 1, 1 1, ");

  // Bounds so far out that in doubles they are one number.
  const ModelHandle far = Sketch(x * integer(pow2(80), pow2(80) + 3));
  refuse_large_space(*far);
  compare(*far, "2");
}

TEST(IntEnumeration, TellsTiesFromNeighboursAtEveryLimbBorder) {
  const ExprImpl x = bit(), a = integer(0, 3);
  for (const unsigned exponent : {63u, 64u, 65u, 90u, 127u, 128u, 192u}) {
    for (int offset = -2; offset <= 2; ++offset) {
      for (const coeff_t& least : {pow2(exponent) + offset, -pow2(exponent) + offset}) {
        EXPECT_EQ(compare(*ModelHandle(Sketch(a * a - a + x + least)), "0"), 2u) << least;
      }
    }
  }
}

TEST(IntEnumeration, ReadsTheCapOfTheList) {
  const ModelHandle model = Sketch(ExprImpl()).between(bit() + integer(0, 2), 0, 3);
  const struct {
    std::vector<ParamPair> params;
    size_t listed;
  } rows[] = {
      {{}, 0},
      {{{"best_energy_sols", nullptr}}, 6},
      {{{"best_energy_sols", ""}}, 6},
      {{{"best_energy_sols", "0"}}, 6},
      {{{"best_energy_sols", "-4"}}, 6},
      {{{"best_energy_sols", " 4"}}, 6},
      {{{"best_energy_sols", "4x"}}, 4},
      {{{"best_energy_sols", "7"}}, 6},
      {{{"best_energy_sols", "2"}, {"best_energy_sols", "5"}}, 5},
      {{{"best_energy_sols", "2"}, {"best_energy_sols", nullptr}}, 6},
  };
  for (const auto& row : rows) {
    std::vector<ParamPair> params = row.params;
    params.push_back({nullptr, nullptr});
    EXPECT_EQ(enumerate_states(*model, params.data()).topk.size(), row.listed);
  }
  for (const char* key : {"time_limit", "topk_sols", "best_energy_sols ", ""}) {
    const ParamPair params[] = {{"best_energy_sols", "1"}, {key, "1"}, {nullptr, nullptr}};
    EXPECT_FATAL(enumerate_states(*model, params),
                 std::string("ExhaustiveSolver: search parameter '") + key +
                     "' is not supported for native integer models yet.");
  }
}

TEST(IntEnumeration, RefusesMoreStatesThanItsLimit) {
  const struct {
    int bits;
    std::vector<Interval> ranges;
    const char* exponent;  // null: accepted
  } rows[] = {
      {0, {{0, pow2(32) - 1}}, nullptr},
      {0, {{0, pow2(32)}}, "32"},
      {1, {{-pow2(31), pow2(31) - 1}}, "33"},
      {16, {{-pow2(15), pow2(15) - 1}}, nullptr},
      {30, {{1, 4}}, nullptr},
      {30, {{1, 5}}, "32"},
      {30, {{1, 2}, {1, 2}, {1, 2}}, "33"},
      {29, {{0, 2}, {0, 2}}, "32"},
      {28, {{0, 2}, {0, 2}}, nullptr},
      {0, {{-pow2(200), pow2(200)}, {0, pow2(300)}}, "501"},
  };
  for (const auto& row : rows) {
    ExprImpl sum;
    for (int i = 0; i < row.bits; ++i) sum = sum + bit();
    for (const auto& [lo, hi] : row.ranges) sum = sum + integer(lo, hi);
    const ModelHandle model = Sketch(sum);
    if (row.exponent == nullptr) {
      refuse_large_space(*model);
    } else {
      EXPECT_FATAL(refuse_large_space(*model),
                   std::string("ExhaustiveSolver: integer search space (~2^") + row.exponent +
                       " states) exceeds the 2^32 enumeration limit.");
    }
  }
}

TEST(IntEnumeration, ChecksItsOwnEnergies) {
  // No compiled model has a complement in a term of degree 1: the walk is not made for it.
  ModelImpl model = *ModelHandle(Sketch(bit() + integer(0, 2)));
  model.term_vars[0][0] |= kNegationBit;
  for (const bool is_wide : {false, true}) {
    EXPECT_FATAL(
        enumerate_states(model, nullptr, is_wide),
        "ExhaustiveSolver: internal error \u2014 incremental energy drift in integer enumeration.");
  }
}

TEST(IntEnumeration, ReportsHowItWent) {
  const ExprImpl a = integer(0, 9);
  const ParamPair params[] = {{"best_energy_sols", nullptr}, {nullptr, nullptr}};
  const SearchResult first = enumerate_states(*ModelHandle(Sketch(a)), params);
  EXPECT_EQ(first.tts, 0.0);
  EXPECT_EQ(first.topk.at(0).tts, 0.0);
  EXPECT_EQ(first.scale, 1.0);

  const ModelHandle model = Sketch(bit() + coeff_t(-1) * a).abs(a - 8, 1);
  const SearchResult result = enumerate_states(*model, params);
  EXPECT_EQ(result.energy, -8);
  ASSERT_EQ(result.topk.size(), 2u);
  EXPECT_GT(result.tts, 0.0);
  EXPECT_EQ(result.topk[0].tts, result.tts);
  EXPECT_GE(result.topk[1].tts, result.tts);
  EXPECT_GE(std::stod(info(result, "run_time")), 0.0);
  EXPECT_EQ(info(result, "engine"), "integer-cpu");
  std::string keys;
  for (const InfoEntry& entry : result.info) keys += entry.key + " ";
  EXPECT_EQ(keys, "run_time states engine os cpu gpu ram ");
}

}  // namespace
}  // namespace zorv::test
