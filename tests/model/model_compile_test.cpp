#include <cstdlib>
#include <regex>

#include "model/compiled.h"
#include "support/random.h"

namespace zorv::test {
namespace {

const char* const kUnsorted =
    "Model: expression not simplified as binary (unsorted/duplicate vars). Call "
    "simplify_as_binary() first.";
const char* const kNegated =
    "Model: expression not simplified as binary (negated literal in degree 1-2 term). Call "
    "simplify_as_binary() first.";

ExprImpl term(const coeff_t& c, const std::vector<uint32_t>& literals) {
  return ExprImpl(TermImpl(c, VarList(literals.data(), static_cast<uint32_t>(literals.size()))));
}

// Terms in the block alone, the first slot left free.
ExprImpl bulk(const std::vector<TermImpl>& terms) {
  ExprImpl e;
  e.list.reserve(terms.size());
  TermList list;
  list.reserve(terms.size());
  list.append(TermImpl(1, VarList()));
  for (const TermImpl& t : terms) list.append(t);
  e.list.append_entries(list);
  return e;
}

// Five binary variables and two atoms. Every second variable stays unused, so that ids and dense
// numbers differ.
class ModelCompile : public ::testing::Test {
 protected:
  static uint32_t spaced() { return fresh("unused"), fresh("x"); }
  const uint32_t x0 = spaced(), x1 = spaced(), x2 = spaced(), x3 = spaced(), x4 = spaced();
  const uint32_t a0 = zorv_new_int_var("a", Wire(-2), Wire(3));
  const uint32_t unused_atom = zorv_new_int_var("u", Wire(0), Wire(1));
  const uint32_t a1 = zorv_new_int_var("b", Wire(0), Wire(coeff_t(1) << 130));
  // Every binary variable once, so that x2 is dense number 2 whatever else a term holds.
  const ExprImpl all = var(x0) + var(x1) + var(x2) + var(x3) + var(x4);
  const std::string all_text = " 1*x0 1*x1 1*x2 1*x3 1*x4";
};

TEST_F(ModelCompile, LaysTermsOutByDegree) {
  const coeff_t huge = (coeff_t(1) << 200) + 1;
  const uint32_t not_x0 = x0 | kNegationBit, not_x4 = x4 | kNegationBit;
  const struct {
    ExprImpl e;
    std::string out;
  } rows[] = {
      {constant(-7), "-7"},
      {all + 3, "3 |" + all_text},
      {var(x3) - var(x1), "0 | 1*x1 -1*x0"},  // numbered by id, in the order given
      {binary(all + 2 * var(x0) * var(x1) - 5 * var(x1) * var(x4)),
       "0 |" + all_text + " | 2*x0*x1 -5*x1*x4"},
      {all + term(4, {x1, x3}) + term(-1, {x0, x2}), "0 |" + all_text + " | 4*x1*x3 -1*x0*x2"},
      {all + term(2, {not_x0, x1, x2}) + term(3, {x0, x1, x2, x3, not_x4}),
       "0 |" + all_text + " | | 2*~x0*x1*x2 | | 3*x0*x1*x2*x3*~x4"},
      {all + term(huge, {x0, x1}) + term(-huge, {x0, x2, x3}),
       "0 |" + all_text + " | " + huge.str() + "*x0*x1 | -" + huge.str() + "*x0*x2*x3"},
      {term(5, {a0, a0, a0}), "0 | | | 5*a0*a0*a0"},
      {var(a1) + term(2, {x2, a0}) + term(3, {x2, a0, a1, a1}),
       "0 | 1*a1 | 2*x0*a0 | | 3*x0*a0*a1*a1"},
      {bulk({TermImpl(1, VarList(x1)), TermImpl(0, VarList(x2)), TermImpl(2, VarList(x1, x2))}),
       "0 | 1*x0 0*x1 | 2*x0*x1"},  // a coefficient of 0 is a term like any other
      {bulk({TermImpl(9, VarList()), TermImpl(2, VarList(x1))}), "0 | 2*x0"},  // no degree, no term
      {term(9, {}), "0"},
  };
  for (const auto& row : rows) EXPECT_EQ(term_tables(Model(row.e)), row.out);
}

TEST_F(ModelCompile, NumbersVariablesByIdAndAtomsByIndex) {
  const Model m(term(1, {a1, a1}) + term(1, {x3, a0}) + term(1, {x1, x4}));
  EXPECT_EQ(m->variables, (std::vector<uint32_t>{x1, x3, x4}));
  EXPECT_EQ(m->int_atoms, (std::vector<uint32_t>{index_of(a0), index_of(a1)}));
  EXPECT_EQ(m->int_lo, (std::vector<coeff_t>{-2, 0}));
  EXPECT_EQ(m->int_hi, (std::vector<coeff_t>{3, coeff_t(1) << 130}));
  EXPECT_EQ(m->index_map.size(), zorv_var_count());
  EXPECT_EQ(m->int_index_map.size(), zorv_int_var_count());
  EXPECT_EQ(m->index_map[x3], 1u);
  EXPECT_EQ(m->index_map[x0], kNoLiteral);
  EXPECT_EQ(m->int_index_map[index_of(unused_atom)], kNoLiteral);

  const Model none(constant(5));
  EXPECT_TRUE(none->variables.empty() && none->index_map.empty() && none->term_count.empty());
}

// More variables than a serial loop takes, most of them unused.
TEST(ModelCompileLarge, NumbersManyVariables) {
  Random random(3);
  const uint64_t count = 30'000;
  const uint32_t base = new_var_array("x", &count, 1);
  std::vector<uint32_t> ids;
  ExprImpl e;
  for (uint32_t i = 0; i < count; ++i) {
    if (below(random, 3) != 0) continue;
    ids.push_back(base + i);
    e.list.append(TermImpl(1, VarList(base + i)));
  }
  const Model m(e);
  ASSERT_EQ(m->variables, ids);
  for (uint32_t i = 0; i < ids.size(); ++i) ASSERT_EQ(m->index_map[ids[i]], i);
}

// Within a degree terms need no order of their own, so any order must come out as it went in, on
// both sides of the size where threads join and for every place where chunks may meet.
TEST(ModelCompileLarge, KeepsTheOrderOfTerms) {
  const uint64_t seed = 11;
  SCOPED_TRACE(seed);
  Random random(seed);
  const uint64_t count = 60;
  const uint32_t base = new_var_array("x", &count, 1);
  for (const uint64_t n : {1, 2, 33, 9'998, 9'999, 10'000, 10'001, 25'000}) {
    for (const bool use_first : {false, true}) {
      std::vector<TermImpl> terms;
      const uint64_t linear = below(random, n + 1), quadratic = below(random, n + 1 - linear);
      for (uint64_t i = 0; i < n; ++i) {
        const uint32_t v = base + static_cast<uint32_t>(below(random, count - 2));
        std::vector<uint32_t> literals{v, v + 1, v + 2};
        literals.resize(i < linear ? 1 : i < linear + quadratic ? 2 : 3);
        terms.emplace_back(troublesome(random) * 2 + 1,
                           VarList(literals.data(), static_cast<uint32_t>(literals.size())));
      }
      ExprImpl e = bulk({terms.begin() + (use_first ? 1 : 0), terms.end()});
      if (use_first) e.list.first = terms[0];

      const Model m(e);
      std::vector<uint64_t> next(4, 0);
      for (const TermImpl& t : terms) {
        const uint32_t d = t.vars.degree();
        const uint64_t at = next[d]++;
        ASSERT_EQ(m->term_coeffs[d - 1][at], t.coeff);
        for (uint32_t k = 0; k < d; ++k) {
          ASSERT_EQ(m->variables[m->term_vars[d - 1][at * d + k]], t.vars[k]);
        }
      }
      for (uint32_t d = 1; d <= m->max_degree; ++d) EXPECT_EQ(m->term_count[d - 1], next[d]);
    }
  }
}

TEST_F(ModelCompile, AnyScaleMakesTheSameModel) {
  const ExprImpl e = 3 * var(x0) + 1;
  for (const double scale : {0.0, -2.5, 1e300}) {
    const Model m(zorv_model_create_scaled(borrow(e), scale));
    EXPECT_EQ(term_tables(m), "1 | 3*x0");
    EXPECT_EQ(zorv_model_scale(m), 1.0);
  }
}

TEST_F(ModelCompile, RefusesWhatIsNotSimplified) {
  const uint32_t not_x0 = x0 | kNegationBit, not_x1 = x1 | kNegationBit;
  const uint32_t no_var = static_cast<uint32_t>(zorv_var_count());
  const uint32_t no_atom = atom_literal(static_cast<uint32_t>(zorv_int_var_count()));
  const struct {
    ExprImpl e;
    const char* text;
  } rows[] = {
      {var(not_x0), kNegated},
      {all + term(1, {x0, not_x1}), kNegated},
      {term(1, {x1, not_x0}), kNegated},  // also unsorted: the first test of a literal decides
      {term(1, {x1, x0}), kUnsorted},
      {term(1, {x0, x0}), kUnsorted},
      {term(1, {x0, x1, x1}), kUnsorted},
      {term(1, {x0, not_x0, x1}), kUnsorted},
      {term(1, {a0, x0}), kUnsorted},
      {term(1, {a1, a0}), kUnsorted},
      {term(1, {x0, x1, x2}) + var(x0), kUnsorted},  // degrees fall
      {bulk({TermImpl(1, VarList(x0, x1)), TermImpl(1, VarList(x0))}), kUnsorted},
      {var(no_var), "Model: unknown variable index."},
      {var(kIndexMask), "Model: unknown variable index."},
      {var(no_var | kNegationBit), "Model: unknown variable index."},
      {term(1, {x0, no_atom}), "Model: unknown integer variable index."},
      {term(1, {x0, x0}) + term(1, {x0, no_atom}), kUnsorted},  // the first term that fails
      {bulk({TermImpl(0, VarList(not_x0))}), kNegated},         // whatever its coefficient
  };
  for (const auto& row : rows) EXPECT_FATAL(zorv_model_create(borrow(row.e)), row.text);
}

// In a process of its own, since the threads that share the walk do not survive a fork.
TEST_F(ModelCompile, RefusesOneBadTermAmongMany) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const uint64_t bad : {0, 10'000, 19'999}) {
    std::vector<TermImpl> terms(20'000, TermImpl(1, VarList(x0, x1)));
    terms[bad] = TermImpl(1, VarList(x1, x0));
    const ExprImpl e = bulk(terms);
    EXPECT_FATAL(zorv_model_create(borrow(e)), kUnsorted);
  }
}

// Stage lines, with the seconds left out.
std::string profile(const ExprImpl& e) {
  ::testing::internal::CaptureStderr();
  const Model m(e);
  const std::string lines = ::testing::internal::GetCapturedStderr();
  return std::regex_replace(lines, std::regex(": [0-9.e+-]+s\n"), "\n");
}

TEST_F(ModelCompile, ProfilesItsStages) {
  const std::string counted =
      "  [Model] Phase 1a (parallel count + validate + var_flags)\n"
      "  [Model] Phase 1b (merge counts + allocate flat arrays)\n";
  const std::string filled =
      "  [Model] Phase 1c (parallel fill flat arrays)\n"
      "  [Model] Phase 2 (parallel prefix-sum var_flags scan + dense index_map)\n";
  const std::string atoms = "  [Model] Phase 2i (integer-atom mapping)\n";
  const std::string native = "  [Model] Native constraints (remap)\n";
  const std::string remainder = "  [Model] Remainder (remap)\n";
  const std::string last = "  [Model] Phase 3 (parallel remap)\n";
  const ExprImpl penalty = cons_mark(var(x0) * var(x1));
  const ExprImpl range = cons_between(var(x0) + var(x1), 0, 1);

  EXPECT_EQ(profile(var(x0)), "");
  for (const char* value : {"1", ""}) {
    setenv("ZORV_MODEL_PROFILE", value, 1);
    EXPECT_EQ(profile(constant(3)), counted);
    EXPECT_EQ(profile(var(x0)), counted + filled + last);
    EXPECT_EQ(profile(var(a0)), counted + filled + atoms + last);
    EXPECT_EQ(profile(range), counted + filled + native + last);
    EXPECT_EQ(profile(penalty), counted + filled + remainder + last);
    EXPECT_EQ(profile(with(var(a0), {range, penalty})),
              counted + filled + atoms + native + remainder + last);
  }
  unsetenv("ZORV_MODEL_PROFILE");
}

}  // namespace
}  // namespace zorv::test
