// Integer linear programs of models, read through the exports: their tables, what is refused, and
// on random models that their points are the model's.
#include <sstream>
#include <thread>

#include "model/ilp_models.h"

namespace zorv::test {
namespace {

Ilp ilp_of(const zorv_expr* e) { return zorv_model_ilp_build(model_of(e)); }

struct Bounds {
  explicit Bounds(const zorv_ilp* ilp, uint64_t r) {
    Wire lo_out, hi_out;
    zorv_ilp_row_bounds(ilp, r, lo_out.out(), hi_out.out(), &lo_free, &hi_free);
    lo = lo_out.value();
    hi = hi_out.value();
  }
  coeff_t lo, hi;
  uint32_t lo_free, hi_free;
};

Interval column_bounds(const zorv_ilp* ilp, uint64_t c) {
  Wire lo, hi;
  zorv_ilp_col_bounds(ilp, c, lo.out(), hi.out());
  return {lo.value(), hi.value()};
}

// "x0 v[lo,hi]=2*x1+4*x3 i0[lo,hi] | constant coefficients | 2*c0 -1*c2 in [lo,hi)", with a round
// bracket on a free side.
std::string describe(const zorv_ilp* ilp) {
  std::ostringstream line;
  for (uint64_t c = 0; c < zorv_ilp_ncols(ilp); ++c) {
    const int32_t number = zorv_ilp_col_model_var(ilp, c);
    const auto [lo, hi] = column_bounds(ilp, c);
    line << (number < 0 ? "v" : (zorv_ilp_col_kind(ilp, c) == 0 ? "x" : "i"));
    if (number >= 0) line << number;
    if (zorv_ilp_col_kind(ilp, c) != 0 || lo != 0 || hi != 1) line << "[" << lo << "," << hi << "]";
    for (uint64_t b = 0; b < zorv_ilp_col_nbits(ilp, c); ++b) {
      line << (b == 0 ? "=" : "+") << written(zorv_ilp_col_bit_coeff, ilp, c, b) << "*x"
           << zorv_ilp_col_bit_var(ilp, c, b);
    }
    line << " ";
  }
  line << "| " << written(zorv_ilp_obj_constant, ilp);
  for (uint64_t c = 0; c < zorv_ilp_ncols(ilp); ++c) line << " " << written(zorv_ilp_obj, ilp, c);
  for (uint64_t r = 0; r < zorv_ilp_nrows(ilp); ++r) {
    line << " |";
    for (uint64_t j = 0; j < zorv_ilp_row_nnz(ilp, r); ++j) {
      line << " " << written(zorv_ilp_row_coeff, ilp, r, j) << "*c" << zorv_ilp_row_col(ilp, r, j);
    }
    const Bounds bounds(ilp, r);
    line << " in " << (bounds.lo_free ? "(" : "[") << bounds.lo << "," << bounds.hi
         << (bounds.hi_free ? ")" : "]");
  }
  return line.str();
}

std::string describe(const Ilp& ilp) {
  return ilp == nullptr ? zorv_ilp_last_error() : describe(static_cast<const zorv_ilp*>(ilp));
}

class IlpExport : public ::testing::Test {
 protected:
  // Records of other tests may have outlived their variables; the new ones have higher ids.
  static void SetUpTestSuite() {
    uint64_t past = 1;
    for (uint32_t i = 0; i < varint_record_count(); ++i) {
      for (const uint32_t literal : varint_record(i).vars) {
        if (!is_atom(literal)) past = std::max<uint64_t>(past, identity_of(literal) + 1);
      }
    }
    new_var_array("past", &past, 1);
  }

  const uint32_t x = fresh("x"), y = fresh("y"), z = fresh("z"), not_z = z | kNegationBit;
  const uint32_t a = new_int_var("a", -2, 3);
  const ExprImpl six = make_varint("six", 0, 5);   // 1, 2, 2
  const ExprImpl odd = make_varint("odd", -7, 3);  // 1, 2, 4, 3
  const coeff_t big = coeff_t(1) << 130;
};

TEST_F(IlpExport, Programs) {
  const auto bit = [](const ExprImpl& v, uint32_t k) { return var(varint_record(v.attr).vars[k]); };
  const ExprImpl sum = var(x) + var(y);
  const uint32_t p = fresh("p"), q = fresh("q");
  const ExprImpl gap = make_varint_with_vars("gap", 1, 9, {3, 5}, {p, q});
  const ExprImpl pair = make_varint("pair", 0, 3);
  const ExprImpl point = make_varint("point", 4, 4);
  // A record that shares bits with an older one, which comes first.
  const ExprImpl older = make_varint("older", 0, 5);
  const std::vector<uint32_t> shared = varint_record(older.attr).vars;
  make_varint_with_vars("younger", 0, 3, {1, 2}, {shared[0], shared[1]});

  const struct {
    const char* what;
    Handle e;
    const char* program;
  } rows[] = {
      {"nothing", constant(5), "| 5"},
      {"objective alone", 2 * var(x) + 3 * var(y) - 1, "x0 x1 | -1 2 3"},
      {"classic constraints are polynomials", classic(var(x), var(y)), "x0 | 0 1"},

      {"row", plus(between(sum, 1, 1), var(x)), "x0 x1 | 0 1 0 | 1*c0 1*c1 in [1,1]"},
      {"weights", times(7, between(sum, 1, 1)), "x0 x1 | 0 0 0 | 1*c0 1*c1 in [1,1]"},
      {"body constant", between(3 * var(x) + 10, 0, 12), "x0 | 0 0 | 3*c0 in (-10,2]"},
      {"sides that cannot bind", between(var(x) - var(y), -1, 1),
       "x0 x1 | 0 0 0 | 1*c0 -1*c1 in (-1,1)"},
      {"nearly the same", between(var(x) - 2 * var(y), -1, 0),
       "x0 x1 | 0 0 0 | 1*c0 -2*c1 in [-1,0]"},
      {"no entries", plus(between(constant(3), 4, 9), var(x)), "x0 | 0 1 | in [1,6)"},
      {"empty interval", between(var(x), 2, -1), "x0 | 0 0 | 1*c0 in [2,-1]"},

      {"atoms", plus(between(var(a) - var(y), 0, big), 4 * var(a) + 2),
       "x0 i0[-2,3] | 2 0 4 | -1*c0 1*c1 in [0,1361129467683753853853498429727072845824)"},
      {"penalty", plus(declared(var(x) * var(y)), var(x)), "x0 x1 | 0 1 0 | 1*c0 1*c1 in (0,1]"},
      {"complement", declared(sum_of({term(9, {x, y, not_z})})),
       "x0 x1 x2 | 0 0 0 0 | 1*c0 1*c1 -1*c2 in (0,1]"},
      {"three complements",
       declared(sum_of({term(1, {x | kNegationBit, y | kNegationBit, not_z})})),
       "x0 x1 x2 | 0 0 0 0 | -1*c0 -1*c1 -1*c2 in (0,-1]"},
      {"one literal", declared(2 * var(x)), "x0 | 0 2 | 1*c0 in (0,0]"},
      {"rows before penalties", plus(declared(var(x)), between(var(y), 0, 0)),
       "x0 x1 | 0 1 0 | 1*c1 in (0,0] | 1*c0 in (0,0]"},
      {"the objective's share of a penalty",
       plus(declared(var(x) * var(y)), -5 * (var(x) * var(y))),
       "x0 x1 | 0 0 0 | 1*c0 1*c1 in (0,1]"},
      {"cancelled by the objective", plus(declared(var(x) * var(y)), var(z) - var(x) * var(y)),
       "x0 x1 x2 | 0 0 0 1 | 1*c0 1*c1 in (0,1]"},

      {"VarInt", plus(between(six + var(x), 0, 4), 3 * six),
       "x0 v[0,5]=1*x1+2*x2+2*x3 | 0 0 3 | 1*c0 1*c1 in (0,4]"},
      {"VarInt with a base", plus(between(2 * odd, 0, 4), big * odd),
       "v[-7,3]=1*x0+2*x1+4*x2+3*x3 | 0 1361129467683753853853498429727072845824 | 2*c0 in [0,4]"},
      {"base left to the constant", odd, "v[-7,3]=1*x0+2*x1+4*x2+3*x3 | 0 1"},
      {"two rows, one without it", plus(plus(between(odd, 0, 1), between(var(x), 0, 0)), 2 * six),
       "x0 v[0,5]=1*x1+2*x2+2*x3 v[-7,3]=1*x4+2*x5+4*x6+3*x7 | 0 0 2 0 | 1*c2 in [0,1] | "
       "1*c0 in (0,0]"},
      {"not in the objective's proportion", six + bit(six, 1), "x0 x1 x2 | 0 1 3 2"},
      {"not in a row's proportion", plus(between(bit(six, 2), 0, 0), six),
       "x0 x1 x2 | 0 1 2 2 | 1*c2 in (0,0]"},
      {"first bit alone in a row", plus(between(bit(six, 0), 0, 0), six),
       "x0 x1 x2 | 0 1 2 2 | 1*c0 in (0,0]"},
      {"in proportion, but each in its own row",
       plus(between(bit(pair, 0), 0, 0), between(2 * bit(pair, 1), 0, 0)),
       "x0 x1 | 0 0 0 | 1*c0 in (0,0] | 2*c1 in (0,0]"},
      {"a bit in a penalty", plus(declared(bit(six, 0) * var(x)), six),
       "x0 x1 x2 x3 | 0 0 1 2 2 | 1*c0 1*c1 in (0,1]"},
      {"a bit is missing", bit(odd, 0) + 2 * bit(odd, 1) + 4 * bit(odd, 2), "x0 x1 x2 | 0 1 2 4"},
      {"the older of two records", older, "v[0,5]=1*x0+2*x1+2*x2 | 0 1"},
      {"only the younger is complete", bit(older, 0) + 2 * bit(older, 1), "v[0,3]=1*x0+2*x1 | 0 1"},
      {"first coefficient is not 1", gap, "x0 x1 | 1 3 5"},
      {"no bits", point, "| 4"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(describe(ilp_of(row.e)), row.program) << row.what;
    EXPECT_STREQ(zorv_ilp_last_error(), "") << row.what;
  }

  // Coefficients of 0, which simplification would have dropped.
  const ExprImpl zeros = sum_of({term(1, {x}), term(0, {p}), term(0, {q})});
  EXPECT_EQ(describe(Ilp(zorv_model_ilp_build(compiled(zeros)))), "x0 v[1,9]=3*x1+5*x2 | 0 1 0");
  make_varint_with_vars("one", 0, 1, {1, 0}, {p, q});
  const Handle row = plus(between(sum_of({term(1, {p}), term(0, {q})}), 0, 0), zeros);
  EXPECT_EQ(describe(Ilp(zorv_model_ilp_build(compiled(unwrap(row))))),
            "x0 v[0,1]=1*x1+0*x2 | 0 1 0 | 1*c1 in (0,0]");
}

const char* const kShape =
    "zorv::abs/relu terms are not supported in ILP mode yet; use the QUBO mode (drop the ilp "
    "option) or a bundled heuristic solver.";
const char* const kNegativeWeight =
    "a cons() constraint carries a NEGATIVE weight; ILP mode enforces constraints as hard rows and "
    "ignores weights, so a negative weight (rewarding violation) cannot be expressed. Use a "
    "bundled heuristic solver (EasySolver/ExhaustiveSolver/KLB5Solver).";
const char* const kNonlinear =
    "MIP/ILP solvers do not support nonlinear (degree>=2) constraint bodies inside cons(). Call "
    "expand_cons() on the expression to get the classic penalty form, or use a bundled heuristic "
    "solver (EasySolver/ExhaustiveSolver/KLB5Solver).";
const char* const kAllowed =
    "MIP/ILP solvers do not support allowed-value set constraints (equal{...}) inside cons(). Use "
    "a bundled heuristic solver (EasySolver/ExhaustiveSolver/KLB5Solver).";
const char* const kConstant =
    "not an ILP: the free-form penalty carries a constant term, so 'penalty == 0' cannot be "
    "enforced; remove the constant.";
const char* const kNegativeTerm =
    "not an ILP: free-form penalty terms must have positive coefficients to be enforced as hard "
    "constraints.";
std::string product_text(int degree) {
  return "not an ILP: the objective has a degree-" + std::to_string(degree) +
         " term (only free-form penalty terms enforced to 0 by their hard rows are allowed). Keep "
         "the objective linear, or solve without the ILP option.";
}

TEST_F(IlpExport, RefusalsAndTheirOrder) {
  const ExprImpl product = var(x) * var(y);
  const auto allowed = [](const ExprImpl& body) -> Handle {
    const Wire zero(0);
    return zorv_cons_equal(borrow(body), zero, zero, 1);
  };
  const auto abs_term = [this](uint32_t k) -> Handle { return zorv_abs_term(borrow(var(x)), k); };
  const Handle fine = between(var(x), 0, 0);
  const Handle rewarding = times(-1, fine);
  const struct {
    Handle e;
    std::string text;
    bool is_fatal;
  } rows[] = {
      {between(product, 0, 0), kNonlinear, true},
      {allowed(var(x)), kAllowed, true},
      {abs_term(1), kShape, false},
      {abs_term(2), kShape, false},
      {zorv_relu_term(borrow(var(x)), 2), kShape, false},
      {times(-3, abs_term(1)), kShape, false},
      {clone(rewarding), kNegativeWeight, false},
      {plus(fine, rewarding), kNegativeWeight, false},

      // Record by record, and linear bodies come first.
      {plus(allowed(var(x)), rewarding), kAllowed, true},
      {plus(rewarding, allowed(var(x))), kNegativeWeight, false},
      {plus(between(product, 0, 0), rewarding), kNegativeWeight, false},
      {plus(between(product, 0, 0), allowed(var(x))), kAllowed, true},
      {plus(rewarding, product), kNegativeWeight, false},

      {product, product_text(2), false},
      {var(a) * var(a), product_text(2), false},
      {product * var(z) + var(y) * var(z), product_text(2), false},
      {plus(declared(product), product * var(z)), product_text(3), false},
      {plus(declared(sum_of({term(1, {x, y, not_z})})), product * var(z)), product_text(3), false},
      {plus(declared(var(z) - 3), product), product_text(2), false},

      {declared(var(z) - product + 1), kConstant, false},
      {declared(var(x) * var(not_z)), kNegativeTerm, false},  // x - x*z
      {plus(declared(-2 * var(x)), 5 * var(x)), kNegativeTerm, false},
  };
  for (const auto& row : rows) {
    const Model m = model_of(row.e);
    if (row.is_fatal) {
      EXPECT_FATAL(zorv_model_ilp_build(m), row.text);
    } else {
      EXPECT_EQ(zorv_model_ilp_build(m), nullptr) << row.text;
      EXPECT_EQ(zorv_ilp_last_error(), row.text);
    }
  }

  // What models do not contain today.
  ModelImpl tables = *unwrap(model_of(plus(fine, declared(var(y)))));
  tables.native_cons[0].shape_k = 1;
  EXPECT_EQ(ilp_refusal(tables), kShape);
  tables.native_cons[0].weight = -1;
  EXPECT_EQ(ilp_refusal(tables), kNegativeWeight);
  tables.native_cons.clear();
  tables.remainder_vars[0] |= kAtomBit;
  tables.remainder_constant = 1;
  EXPECT_EQ(ilp_refusal(tables),
            "not an ILP: a free-form penalty term contains a native integer variable; it cannot be "
            "enforced as a hard linear row. Use a bundled solver, or zorv::binarize() first.");
}

TEST_F(IlpExport, EachThreadHasItsLastError) {
  EXPECT_EQ(ilp_of(Handle(var(x) * var(y))), nullptr);
  std::thread([this] {
    EXPECT_STREQ(zorv_ilp_last_error(), "");
    EXPECT_EQ(ilp_of(declared(-1 * var(x))), nullptr);
    EXPECT_EQ(zorv_ilp_last_error(), std::string(kNegativeTerm));
  }).join();
  EXPECT_EQ(zorv_ilp_last_error(), product_text(2));
  EXPECT_NE(ilp_of(Handle(var(x))), nullptr);
  EXPECT_STREQ(zorv_ilp_last_error(), "");
  zorv_ilp_destroy(nullptr);
}

TEST_F(IlpExport, Decode) {
  const ExprImpl holes = make_varint_with_vars("holes", 0, 6, {1, 5}, {x, y});
  const struct {
    ExprImpl e;
    coeff_t value;
    std::vector<uint8_t> bits;  // none: out of range
  } rows[] = {
      {six, 0, {0, 0, 0}},     {six, 2, {0, 0, 1}},
      {six, 5, {1, 1, 1}},     {six, 6, {}},
      {six, -1, {}},           {six, big, {}},
      {odd, -7, {0, 0, 0, 0}}, {odd, 1, {1, 0, 1, 1}},
      {odd, 3, {1, 1, 1, 1}},  {odd, 4, {}},
      {holes, 6, {1, 1}},      {holes, 3, {}},
      {var(z), 1, {}},         {2 * var(a) + 1, 3, {}},
  };
  for (const auto& row : rows) {
    const Ilp ilp = ilp_of(borrow(row.e));
    std::vector<uint8_t> bits(8, 7);
    if (row.bits.empty()) {
      EXPECT_FATAL(zorv_ilp_col_decode(ilp, 0, Wire(row.value), bits.data()),
                   "zorv_ilp_col_decode: integer value out of the encoded range");
      continue;
    }
    zorv_ilp_col_decode(ilp, 0, Wire(row.value), bits.data());
    bits.resize(row.bits.size());
    EXPECT_EQ(bits, row.bits) << row.value;
  }
  uint8_t untouched = 7;
  zorv_ilp_col_decode(ilp_of(borrow(var(z))), 0, Wire(0), &untouched);
  EXPECT_EQ(untouched, 7);
}

coeff_t column_value(const zorv_ilp* ilp, uint64_t c, const zorv_sol* sol) {
  const zorv_model* m = zorv_sol_model(sol);
  const int32_t number = zorv_ilp_col_model_var(ilp, c);
  if (zorv_ilp_col_kind(ilp, c) == 0) return zorv_sol_get(sol, zorv_model_var(m, number));
  if (number >= 0) return written(zorv_sol_get_int, sol, zorv_model_int_var_orig(m, number));
  coeff_t value = column_bounds(ilp, c).first;
  for (uint64_t b = 0; b < zorv_ilp_col_nbits(ilp, c); ++b) {
    const uint32_t bit = zorv_model_var(m, zorv_ilp_col_bit_var(ilp, c, b));
    if (zorv_sol_get(sol, bit) == 1) value += written(zorv_ilp_col_bit_coeff, ilp, c, b);
  }
  std::vector<uint8_t> bits(zorv_ilp_col_nbits(ilp, c));
  zorv_ilp_col_decode(ilp, c, Wire(value), bits.data());
  coeff_t decoded = column_bounds(ilp, c).first;
  for (size_t b = 0; b < bits.size(); ++b) {
    decoded += bits[b] * written(zorv_ilp_col_bit_coeff, ilp, c, b);
  }
  EXPECT_EQ(decoded, value);
  return value;
}

// Expects of every point: it is feasible if nothing of `e` is violated, and then its objective is
// its energy.
void expect_same_points(const zorv_expr* e, const zorv_model* m, const zorv_ilp* ilp) {
  const Solution sol = zorv_sol_create(m);
  do {
    std::vector<coeff_t> values;
    coeff_t objective = written(zorv_ilp_obj_constant, ilp);
    for (uint64_t c = 0; c < zorv_ilp_ncols(ilp); ++c) {
      values.push_back(column_value(ilp, c, sol));
      objective += written(zorv_ilp_obj, ilp, c) * values[c];
      const auto [lo, hi] = column_bounds(ilp, c);
      ASSERT_TRUE(lo <= values[c] && values[c] <= hi);
    }
    bool is_feasible = true;
    for (uint64_t r = 0; r < zorv_ilp_nrows(ilp); ++r) {
      coeff_t activity;
      for (uint64_t j = 0; j < zorv_ilp_row_nnz(ilp, r); ++j) {
        activity += written(zorv_ilp_row_coeff, ilp, r, j) * values[zorv_ilp_row_col(ilp, r, j)];
      }
      const Bounds row(ilp, r);
      is_feasible &= (row.lo_free || row.lo <= activity) && (row.hi_free || activity <= row.hi);
    }
    const bool has_constraints = unwrap(e).attr != kPlainAttr;
    ASSERT_EQ(is_feasible, !has_constraints || zorv_cons_violation_count(e, sol) == 0);
    if (is_feasible) {
      ASSERT_EQ(objective, written(zorv_sol_compute_energy, sol));
    }
  } while (advance(sol, m));
}

TEST_F(IlpExport, PointsAreThoseOfTheModel) {
  const uint64_t seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  Random random(seed);
  int programs = 0;
  for (int round = 0; round < 60; ++round) {
    const Handle e = zorv_expr_simplify_as_binary(RandomExpr(random).draw());
    const Model m = zorv_model_create(e);
    const Ilp ilp = zorv_model_ilp_build(m);
    if (ilp == nullptr) continue;  // penalties that cancel to something else
    ++programs;
    SCOPED_TRACE(describe(ilp));
    ASSERT_NO_FATAL_FAILURE(expect_same_points(e, m, ilp));
  }
  EXPECT_GT(programs, 30);
}

}  // namespace
}  // namespace zorv::test
