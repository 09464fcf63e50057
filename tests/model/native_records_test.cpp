#include "model/compiled.h"

namespace zorv::test {
namespace {

// "weight: lo..hi constant, linear terms; nonlinear terms {allowed} k/kind"
std::string record_text(const NativeCons& cons) {
  std::string text = cons.weight.str() + ": " + cons.lo.str() + ".." + cons.hi.str() + " " +
                     cons.body_constant.str() + ",";
  for (size_t i = 0; i < cons.vars.size(); ++i) {
    text += " " + product_text(cons.coeffs[i], &cons.vars[i], 1);
  }
  if (!cons.nl_head.empty()) text += ";";
  for (size_t t = 0; t + 1 < cons.nl_head.size(); ++t) {
    const uint64_t start = cons.nl_head[t];
    text +=
        " " + product_text(cons.nl_coeffs[t], &cons.nl_vars[start], cons.nl_head[t + 1] - start);
  }
  for (const auto& [low, high] : cons.allowed) text += " {" + low.str() + "," + high.str() + "}";
  return text + " " + std::to_string(cons.shape_k) + "/" + std::to_string(cons.shape_kind);
}

std::vector<std::string> records(const zorv_model* m) {
  std::vector<std::string> lines;
  for (const NativeCons& cons : unwrap(m)->native_cons) lines.push_back(record_text(cons));
  return lines;
}

// "constant | terms" of the remainder table, empty if there is none.
std::string remainder_text(const zorv_model* m) {
  if (!zorv_model_has_remainder(m)) return "";
  Wire constant;
  uint64_t nterms;
  zorv_model_remainder_info(m, constant.out(), &nterms);
  const uint64_t* head = zorv_model_remainder_head(m);
  std::string text = constant.value().str() + " |";
  for (uint64_t t = 0; t < nterms; ++t) {
    text += " " + product_text(unwrap(zorv_model_remainder_coeffs(m))[t],
                               zorv_model_remainder_vars(m) + head[t], head[t + 1] - head[t]);
  }
  return text;
}

class NativeRecords : public ::testing::Test {
 protected:
  const uint32_t skipped = fresh(), x0 = fresh(), skipped_too = fresh(), x1 = fresh(), x2 = fresh();
  const uint32_t a0 = zorv_new_int_var("a", Wire(0), Wire(9));
  const ExprImpl x = var(x0), y = var(x1), z = var(x2), a = var(a0);
};

using Lines = std::vector<std::string>;

TEST_F(NativeRecords, KeepTheConstraintsAsData) {
  const ExprImpl classic = classic_constraint(2 * x, y);
  set_expr_expr_bounds(classic, -1, 1);
  const struct {
    ExprImpl e;
    Lines records;
  } rows[] = {
      {cons_between(x + 2 * y + 5, 0, 1), {"1: 0..1 5, 1*x0 2*x1 2/0"}},
      {clone_mul_int(cons_between(x, 3, 3), -4), {"-4: 3..3 0, 1*x0 2/0"}},
      {cons_between(constant(8), 0, 1), {"1: 0..1 8, 2/0"}},
      {cons_between(a - x, -1, 1), {"1: -1..1 0, -1*x0 1*a0 2/0"}},
      {cons_equal(x + y, {{4, 5}, {-1, 0}}), {"1: -1..5 0, 1*x0 1*x1 {4,5} {-1,0} 2/0"}},
      {abs_term(x - y, 1), {"1: 0..0 0, 1*x0 -1*x1 1/1"}},
      {abs_term(x, 2), {"1: 0..0 0, 1*x0 2/1"}},
      {relu_term(x - 3, 1), {"1: -3..0 -3, 1*x0 1/1"}},
      {cons_mark(classic), {"1: -1..1 0, 1*x0 2/0"}},
      {cons_between(2 * (x * y) + z, 0, 7), {"1: 0..7 0, 1*x2; 2*x0*x1 2/0"}},
      {cons_between(x * y * z + a * a - 1, 0, 7), {"1: 0..7 -1,; 1*a0*a0 1*x0*x1*x2 2/0"}},
      // Linear bodies come first, each kind in the order of the sum.
      {with(x, {cons_between(x * y, 0, 0), cons_between(y, 1, 1), cons_between(x * z, 2, 2),
                cons_between(z, 3, 3)}),
       {"1: 1..1 0, 1*x1 2/0", "1: 3..3 0, 1*x2 2/0", "1: 0..0 0,; 1*x0*x1 2/0",
        "1: 2..2 0,; 1*x0*x2 2/0"}},
      // A nonlinear record knows the hull alone, deliberately.
      {cons_equal(x * y, {{1, 1}, {5, 5}}), {"1: 1..5 0,; 1*x0*x1 2/0"}},
      {classic, {}},  // compiles as the polynomial that it is
  };
  for (const auto& row : rows) EXPECT_EQ(records(Model(binary(row.e))), row.records);
}

TEST_F(NativeRecords, TakeNumbersForVariablesOfTheirOwn) {
  const Model m(binary(with(z, {cons_between(x + a, 0, 1)})));
  EXPECT_EQ(term_tables(m), "0 | 1*x1");
  EXPECT_EQ(records(m), Lines{"1: 0..1 0, 1*x0 1*a0 2/0"});

  const Model without_terms(binary(with(constant(6), {cons_between(y, 0, 0)})));
  EXPECT_EQ(term_tables(without_terms), "6");
  EXPECT_EQ(without_terms->variables, std::vector<uint32_t>{x1});
}

TEST_F(NativeRecords, DoNotFollowTheTables) {
  const ExprImpl classic = classic_constraint(x, x);
  set_expr_expr_bounds(classic, 0, 1);
  const Model m(cons_mark(classic));
  set_expr_expr_bounds(classic, 5, 6);
  EXPECT_EQ(records(m), Lines{"1: 0..1 0, 1*x0 2/0"});
}

TEST_F(NativeRecords, RemainderJoinsTheTermsAndStandsApart) {
  const ExprImpl negated = var(x0 | kNegationBit);
  const struct {
    ExprImpl e;
    const char* terms;
    const char* remainder;
  } rows[] = {
      {cons_mark(x * y - 2), "-2 | | 1*x0*x1", "-2 | 1*x0*x1"},
      {with(3 * x * y + x, {cons_mark(x * y - 2)}), "-2 | 1*x0 | 4*x0*x1", "-2 | 1*x0*x1"},
      {with(x * y, {cons_mark(x * y)}), "0 | | 2*x0*x1", "0 | 1*x0*x1"},
      // Cancelled terms leave the tables, their variables stay numbered.
      {with(x - y, {cons_mark(y + 4)}), "4 | 1*x0", "4 | 1*x1"},
      {cons_mark(negated * y * z), "0 | | | 1*~x0*x1*x2", "0 | 1*~x0*x1*x2"},
      // Neither sum nor remainder has to be simplified by the caller.
      {with(y * x, {cons_mark(x * x + negated)}), "1 | | 1*x0*x1", "1 |"},
      {with(x, {cons_mark(x), cons_mark(y)}), "0 | 2*x0 1*x1", "0 | 1*x0 1*x1"},
      {with(x, {cons_mark(constant(3))}), "3 | 1*x0", "3 |"},
      // Without any variable the remainder is dropped, deliberately.
      {cons_mark(constant(3)), "3", ""},
  };
  for (const auto& row : rows) {
    const Model m(row.e);
    EXPECT_EQ(term_tables(m), row.terms);
    EXPECT_EQ(remainder_text(m), row.remainder);
  }
}

TEST_F(NativeRecords, RefuseBodiesThatAreNotSimplified) {
  const char* const negated =
      "Model: constraint body not simplified as binary (negated literal in degree 1-2 term). Call "
      "simplify_as_binary() on the model expression first.";
  const char* const unsorted =
      "Model: constraint body not simplified as binary (unsorted/duplicate vars). Call "
      "simplify_as_binary() on the model expression first.";
  const ExprImpl not_x = var(x0 | kNegationBit);
  const struct {
    ExprImpl body;
    const char* text;
  } rows[] = {
      {not_x, negated},
      {x + y * not_x, negated},
      {y * x, unsorted},
      {x * x, unsorted},
      {x * y * y, unsorted},
      {not_x * y * z, "Model: unexpected negated literal in constraint body"},
      {x + y + x,
       "Model: constraint body not simplified as binary (duplicate variable across terms). Call "
       "simplify_as_binary() on the model expression first."},
      {var(static_cast<uint32_t>(zorv_var_count())), "Model: unknown variable index."},
      {x * var(static_cast<uint32_t>(zorv_var_count())), "Model: unknown variable index."},
      {var(atom_literal(kIndexMask - 1)), "Model: unknown integer variable index."},
  };
  for (const auto& row : rows) {
    const ExprImpl e = cons_between(row.body, 0, 1);
    EXPECT_FATAL(zorv_model_create(borrow(e)), row.text);
  }
}

TEST_F(NativeRecords, RefuseWhatNoModelCanHold) {
  const char* const shaped =
      "zorv::abs/relu: nonlinear bodies are not supported yet (the body must be linear)";
  const struct {
    ExprImpl e;
    const char* text;
  } rows[] = {
      {cons_mark(classic_constraint(x, y)), "Model: constraint carries no bounds"},
      {abs_term(x * y, 1), shaped},
      {abs_term(x * y, 2), shaped},
      {relu_term(a * a, 1), shaped},
      // Items are looked at in order, and before the polynomial.
      {with(x * x, {abs_term(x * y, 2), cons_mark(classic_constraint(x, y))}), shaped},
      {cons_mark(x * a),
       "Model: native integer variables (int_var) in a free-form penalty remainder are not "
       "supported yet."},
      {cons_mark(var(kIndexMask)), "Model: unknown variable index."},
  };
  for (const auto& row : rows) EXPECT_FATAL(zorv_model_create(borrow(row.e)), row.text);
}

TEST_F(NativeRecords, LinearConsumersRefuseTheRest) {
  const Model m(binary(
      with(x, {cons_between(x - y, 0, 1), cons_equal(x, {{1, 1}}), cons_between(x * y, 0, 1)})));
  EXPECT_EQ(zorv_model_native_cons_count(m), 3u);
  EXPECT_EQ(zorv_model_native_cons_nterms(m, 0), 2u);
  EXPECT_EQ(zorv_model_native_cons_vars(m, 0)[1], 1u);
  EXPECT_EQ(unwrap(zorv_model_native_cons_coeffs(m, 0))[1], -1);
  EXPECT_FATAL(
      zorv_model_native_cons_nterms(m, 1),
      "MIP/ILP solvers do not support allowed-value set constraints (equal{...}) inside cons(). "
      "Use a bundled heuristic solver (EasySolver/ExhaustiveSolver/KLB5Solver).");
  EXPECT_FATAL(
      zorv_model_native_cons_nterms(m, 2),
      "MIP/ILP solvers do not support nonlinear (degree>=2) constraint bodies inside cons(). Call "
      "expand_cons() on the expression to get the classic penalty form, or use a bundled "
      "heuristic solver (EasySolver/ExhaustiveSolver/KLB5Solver).");
}

TEST_F(NativeRecords, ExportsGiveTheRecord) {
  const ExprImpl e = with(clone_mul_int(cons_between(2 * x - 7, -3, 4), 5), {abs_term(y, 1)});
  const Model m(e);
  Wire lo, hi, constant, weight;
  zorv_model_native_cons_bounds(m, 0, lo.out(), hi.out(), constant.out(), weight.out());
  EXPECT_EQ(lo.value(), -3);
  EXPECT_EQ(hi.value(), 4);
  EXPECT_EQ(constant.value(), -7);
  EXPECT_EQ(weight.value(), 5);
  uint32_t k, kind;
  zorv_model_native_cons_shape(m, 1, &k, &kind);
  EXPECT_EQ(k, 1u);
  EXPECT_EQ(kind, 1u);
}

TEST_F(NativeRecords, ShapesAreToldByExponentOrKind) {
  const struct {
    ExprImpl e;
    int shaped;
  } rows[] = {{x, 0},
              {cons_between(x, 0, 1), 0},
              {abs_term(x, 2), 1},
              {relu_term(x, 1), 1},
              {with(x, {cons_between(x, 0, 1), abs_term(x, 1)}), 1}};
  for (const auto& row : rows) {
    EXPECT_EQ(zorv_model_has_penalty_shapes(Model(row.e)), row.shaped);
  }
}

}  // namespace
}  // namespace zorv::test
