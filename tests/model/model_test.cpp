// What a compiled model holds, through the exports.
#include "integer/int_var.h"
#include "model/model_handles.h"

namespace zorv::test {
namespace {

using Ids = std::vector<uint32_t>;

class ModelTables : public ::testing::Test {
 protected:
  const uint32_t u = fresh("u"), x = fresh("x"), y = fresh("y"), z = fresh("z"), w = fresh("w");
  const uint32_t a = new_int_var("a", -1, 3), b = new_int_var("b", 0, 9);
  const coeff_t huge = (coeff_t(1) << 200) + 1;
};

TEST_F(ModelTables, KeepsTermsAsTheyAreByDegree) {
  const uint32_t not_y = y | kNegationBit;
  // Degrees may fall and terms repeat, as long as the last one is the longest.
  const Model m = compiled(
      sum_of({term(3, {x, y}), term(huge, {y}), term(-2, {x, not_y, z}), term(5, {}), term(0, {z}),
              term(1, {x, z}), term(3, {x, y}), term(-huge, {u, x, y, z, a})}));
  ASSERT_EQ(zorv_model_max_degree(m), 5u);
  const uint32_t i_u = 0, i_x = 1, i_y = 2, i_z = 3;
  EXPECT_EQ(literals(m, 1), (Ids{i_y, i_z}));
  EXPECT_EQ(literals(m, 2), (Ids{i_x, i_y, i_x, i_z, i_x, i_y}));
  EXPECT_EQ(literals(m, 3), (Ids{i_x, i_y | kNegationBit, i_z}));
  EXPECT_EQ(literals(m, 4), Ids());
  EXPECT_EQ(literals(m, 5), (Ids{i_u, i_x, i_y, i_z, kAtomBit}));
  EXPECT_EQ(coefficients(m, 1), (std::vector<coeff_t>{huge, 0}));
  EXPECT_EQ(coefficients(m, 2), (std::vector<coeff_t>{3, 1, 3}));
  EXPECT_EQ(written(zorv_model_coeff_at, m, 5u, uint64_t{0}), -huge);
  EXPECT_EQ(zorv_model_has_negated_literals(m), 1);
  EXPECT_EQ(zorv_model_has_negated_literals(compiled(var(x) * var(y) * var(z))), 0);
  EXPECT_EQ(zorv_model_term_count(m, 0), 0u);
  EXPECT_EQ(zorv_model_term_vars(m, 0), nullptr);
  EXPECT_EQ(zorv_model_coeff_array(m, 0), nullptr);
}

TEST_F(ModelTables, AConstantHasNoTables) {
  for (const ExprImpl& e : {ExprImpl(), constant(huge), sum_of({term(7, {})})}) {
    const Model m = compiled(e);
    EXPECT_EQ(written(zorv_model_constant, m), e.constant);
    EXPECT_EQ(zorv_model_max_degree(m), 0u);
    EXPECT_EQ(zorv_model_var_count(m), 0u);
    EXPECT_EQ(zorv_model_has(m, x), 0);
    EXPECT_TRUE(unwrap(m)->index_map.empty());
  }
  // A penalty that is only a constant goes into the constant and leaves no remainder behind.
  const Handle marked = zorv_cons_mark(borrow(constant(6)));
  const Model m = zorv_model_create(marked);
  EXPECT_EQ(written(zorv_model_constant, m), 6);
  EXPECT_EQ(zorv_model_has_remainder(m), 0);
}

TEST_F(ModelTables, OrderOfTermsAroundTheParallelThreshold) {
  for (const uint64_t n : {9'999u, 10'000u, 10'001u, 25'000u}) {
    const uint64_t dims[] = {n};
    const uint32_t v = new_var_array("v", dims, 1);
    ExprImpl e;
    Ids order[3];
    // Degrees in turn, with variables of falling id, so that chunks and ids run against each other.
    for (uint32_t i = 0; i <= n; ++i) {
      const uint32_t degree = i == n ? 3 : i % 3 + 1;
      const uint32_t top = static_cast<uint32_t>(v + n - 1 - i % (n - 2));
      const Ids all = {top - 2 < v ? v : top - 2, top - 1 < v ? v + 1 : top - 1, top};
      const Ids vars(all.end() - degree, all.end());
      if (!std::is_sorted(vars.begin(), vars.end()) ||
          std::adjacent_find(vars.begin(), vars.end()) != vars.end()) {
        continue;
      }
      e.list.append(term(i + 1, vars));
      order[degree - 1].push_back(i + 1);
    }
    const Model m = compiled(e);
    const Ids ids = variables(m);
    EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
    for (uint32_t degree = 1; degree <= 3; ++degree) {
      const std::vector<coeff_t> coeffs = coefficients(m, degree);
      ASSERT_TRUE(std::equal(coeffs.begin(), coeffs.end(), order[degree - 1].begin(),
                             order[degree - 1].end()))
          << n << " terms, degree " << degree;
    }
    // Literals belong to their coefficients: each term again, by its number.
    const TermView terms(e.list);
    uint64_t seen[3] = {};
    for (uint64_t t = 0; t < e.list.size(); ++t) {
      const uint32_t degree = terms[t].vars.degree();
      for (uint32_t i = 0; i < degree; ++i) {
        const uint64_t at = seen[degree - 1] * degree + i;
        ASSERT_EQ(zorv_model_var(m, zorv_model_term_vars(m, degree)[at]), terms[t].vars[i]);
      }
      ++seen[degree - 1];
    }
  }
}

TEST_F(ModelTables, NativeRecordsStandLinearFirst) {
  Handle e(var(u));
  zorv_expr_iadd_expr(e, between(var(x) * var(y) + 2 * var(b) + 1, 1, 2));
  const Wire lows[] = {Wire(1), Wire(5)}, highs[] = {Wire(2), Wire(5)};
  const CoeffWire low[] = {*static_cast<const CoeffWire*>(lows[0]),
                           *static_cast<const CoeffWire*>(lows[1])};
  const CoeffWire high[] = {*static_cast<const CoeffWire*>(highs[0]),
                            *static_cast<const CoeffWire*>(highs[1])};
  const Handle set = zorv_cons_equal(borrow(3 * var(z) + 7), low, high, 2);
  zorv_expr_imul_int(set, Wire(-4));
  zorv_expr_iadd_expr(e, set);
  zorv_expr_iadd_expr(e, Handle(zorv_cons_equal(borrow(var(x) * var(z)), low, high, 2)));
  zorv_expr_iadd_expr(e, Handle(zorv_relu_term(borrow(var(a) - var(w)), 1)));

  const Model m = zorv_model_create(e);
  const std::vector<NativeCons>& table = unwrap(m)->native_cons;
  ASSERT_EQ(zorv_model_native_cons_count(m), 4u);
  EXPECT_EQ(variables(m), (Ids{u, x, y, z, w}));  // also those of bodies alone

  Wire lo, hi, offset, weight;
  zorv_model_native_cons_bounds(m, 0, lo.out(), hi.out(), offset.out(), weight.out());
  EXPECT_EQ(lo.value(), 1);
  EXPECT_EQ(hi.value(), 5);
  EXPECT_EQ(offset.value(), 7);
  EXPECT_EQ(weight.value(), -4);
  EXPECT_EQ(table[0].allowed, (std::vector<Interval>{{1, 2}, {5, 5}}));
  EXPECT_EQ(table[0].vars, (Ids{3}));
  EXPECT_TRUE(table[0].nl_head.empty());

  EXPECT_EQ(zorv_model_native_cons_nterms(m, 1), 2u);
  const uint32_t* vars = zorv_model_native_cons_vars(m, 1);
  const coeff_t* coeffs = unwrap(zorv_model_native_cons_coeffs(m, 1));
  EXPECT_EQ(Ids(vars, vars + 2), (Ids{atom_literal(0), 4}));
  EXPECT_EQ(std::vector<coeff_t>(coeffs, coeffs + 2), (std::vector<coeff_t>{1, -1}));

  EXPECT_EQ(table[2].vars, (Ids{atom_literal(1)}));
  EXPECT_EQ(table[2].coeffs, (std::vector<coeff_t>{2}));
  EXPECT_EQ(table[2].nl_head, (std::vector<uint64_t>{0, 2}));
  EXPECT_EQ(table[2].nl_vars, (Ids{1, 2}));
  EXPECT_EQ(table[2].nl_coeffs, (std::vector<coeff_t>{1}));
  EXPECT_EQ(table[2].body_constant, 1);
  EXPECT_TRUE(table[3].allowed.empty());  // a nonlinear body keeps the hull alone
  EXPECT_EQ(table[3].hi, 5);

  uint32_t k = 0, kind = 9;
  zorv_model_native_cons_shape(m, 1, &k, &kind);
  EXPECT_EQ(k, 1u);
  EXPECT_EQ(kind, 1u);
  zorv_model_native_cons_shape(m, 2, &k, &kind);
  EXPECT_EQ(k, 2u);
  EXPECT_EQ(kind, 0u);
}

TEST_F(ModelTables, LaterChangesDoNotReachAModel) {
  const Handle one = classic(var(y), var(x));
  zorv_exprexpr_set_bounds(one, Wire(0), Wire(1));
  const Model m = zorv_model_create(Handle(zorv_cons_mark(one)));
  zorv_exprexpr_set_bounds(one, Wire(8), Wire(9));
  EXPECT_EQ(unwrap(m)->native_cons[0].hi, 1);

  // A classic constraint itself is the polynomial that it is.
  const Model as_penalty = zorv_model_create(one);
  EXPECT_EQ(zorv_model_native_cons_count(as_penalty), 0u);
  EXPECT_EQ(variables(as_penalty), (Ids{y}));
}

TEST_F(ModelTables, ClonesShareAndOutliveTheOriginal) {
  zorv_model* original = zorv_model_create(borrow(huge * var(x)));
  const Model copy = zorv_model_clone(original);
  EXPECT_EQ(unwrap(copy).get(), unwrap(original).get());
  zorv_model_destroy(original);
  zorv_model_destroy(nullptr);
  EXPECT_EQ(coefficients(copy, 1), (std::vector<coeff_t>{huge}));
  EXPECT_EQ(unwrap(copy).use_count(), 1);
}

// Compiles with the variable set and ends, so that what it wrote can be looked at.
[[noreturn]] void compile_profiled(const zorv_expr* e, const char* value) {
  setenv("ZORV_MODEL_PROFILE", value, 1);
  const Model m = zorv_model_create(e);
  std::_Exit(0);
}

TEST_F(ModelTables, ProfileLinesNameTheStagesThatRan) {
  const auto lines = [](std::initializer_list<const char*> stages) {
    std::string pattern;
    for (const char* stage : stages) {
      pattern += std::string("  \\[Model\\] ") + stage + ": [0-9.e+-]+s\n";
    }
    return ::testing::MatchesRegex(pattern);
  };
  const char* const p1a = "Phase 1a \\(parallel count \\+ validate \\+ var_flags\\)";
  const char* const p1b = "Phase 1b \\(merge counts \\+ allocate flat arrays\\)";
  const char* const p1c = "Phase 1c \\(parallel fill flat arrays\\)";
  const char* const p2 = "Phase 2 \\(parallel prefix-sum var_flags scan \\+ dense index_map\\)";
  const char* const p2i = "Phase 2i \\(integer-atom mapping\\)";
  const char* const native = "Native constraints \\(remap\\)";
  const char* const rest = "Remainder \\(remap\\)";
  const char* const p3 = "Phase 3 \\(parallel remap\\)";
  const auto exits = ::testing::ExitedWithCode(0);

  EXPECT_EXIT(compile_profiled(borrow(constant(1)), ""), exits, lines({p1a, p1b}));
  EXPECT_EXIT(compile_profiled(borrow(var(x)), "0"), exits, lines({p1a, p1b, p1c, p2, p3}));
  Handle e(var(a));
  zorv_expr_iadd_expr(e, between(var(x), 0, 0));
  zorv_expr_iadd_expr(e, Handle(zorv_cons_mark(borrow(var(y)))));
  EXPECT_EXIT(compile_profiled(e, "1"), exits, lines({p1a, p1b, p1c, p2, p2i, native, rest, p3}));
}

}  // namespace
}  // namespace zorv::test
