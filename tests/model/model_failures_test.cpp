// Every text with which a compilation or a query of a model ends the process.
#include "integer/int_var.h"
#include "model/model_handles.h"

namespace zorv::test {
namespace {

constexpr char kUnsorted[] =
    "Model: expression not simplified as binary (unsorted/duplicate vars). Call "
    "simplify_as_binary() first.";
constexpr char kNegated[] =
    "Model: expression not simplified as binary (negated literal in degree 1-2 term). Call "
    "simplify_as_binary() first.";
constexpr char kUnknown[] = "Model: unknown variable index.";
constexpr char kUnknownAtom[] = "Model: unknown integer variable index.";
const std::string kBody = "Model: constraint body not simplified as binary (";
const std::string kCall = "). Call simplify_as_binary() on the model expression first.";

class ModelFailures : public ::testing::Test {
 protected:
  const uint32_t x = fresh("x"), y = fresh("y"), z = fresh("z");
  const uint32_t not_x = x | kNegationBit;
  const uint32_t a = new_int_var("a", -1, 3);
  const uint32_t unknown = 0x3FFFFFF0, unknown_atom = unknown | kAtomBit;
};

TEST_F(ModelFailures, TermsThatAreNotInBinaryForm) {
  const struct {
    std::vector<TermImpl> terms;
    const char* text;
  } rows[] = {
      {{term(1, {not_x})}, kNegated},
      {{term(1, {y}), term(1, {x, y | kNegationBit})}, kNegated},
      {{term(1, {x, x})}, kUnsorted},
      {{term(1, {y, x})}, kUnsorted},
      {{term(1, {x, y, y})}, kUnsorted},
      {{term(1, {x, not_x, y})}, kUnsorted},  // the same variable, negated or not
      {{term(1, {a, x})}, kUnsorted},         // atoms follow all binary variables
      {{term(1, {unknown})}, kUnknown},
      {{term(1, {x, unknown | kNegationBit, unknown + 1})}, kUnknown},
      {{term(1, {x, unknown_atom})}, kUnknownAtom},
      {{term(1, {unknown_atom | kNegationBit})}, kUnknownAtom},  // known comes before negated
      {{term(1, {y, x}), term(1, {not_x})}, kUnsorted},  // the first one in order, when in order
      // The last term tells the highest degree; a longer one before it has no table.
      {{term(1, {x, y, z}), term(1, {x})}, kUnsorted},
      {{term(1, {x}), term(1, {x, y}), term(1, {z})}, kUnsorted},
      {{term(1, {x}), term(1, {})}, kUnsorted},
  };
  for (const auto& row : rows) {
    EXPECT_FATAL(compiled(sum_of(row.terms)), row.text) << text(sum_of(row.terms));
  }
}

TEST_F(ModelFailures, OneBadTermAmongManyIsFoundOnAnyNumberOfThreads) {
  // A fork would leave the pool's workers behind.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  ExprImpl e;
  for (int i = 0; i < 20'000; ++i) e.list.append(i == 15'000 ? term(1, {y, x}) : term(1, {x, y}));
  EXPECT_FATAL(compiled(e), kUnsorted);
}

TEST_F(ModelFailures, LiteralsOfBeforeAReset) {
  EXPECT_FATAL((zorv_var_reset(), compiled(var(x))), kUnknown);
  EXPECT_FATAL((zorv_var_reset(), compiled(var(a))), kUnknownAtom);
}

TEST_F(ModelFailures, ConstraintBodies) {
  const struct {
    std::vector<TermImpl> terms;
    std::string text;
  } rows[] = {
      {{term(1, {not_x})}, kBody + "negated literal in degree 1-2 term" + kCall},
      {{term(1, {x, y | kNegationBit})}, kBody + "negated literal in degree 1-2 term" + kCall},
      {{term(1, {x, x})}, kBody + "unsorted/duplicate vars" + kCall},
      {{term(1, {z, y, x})}, kBody + "unsorted/duplicate vars" + kCall},
      {{term(1, {x}), term(2, {y}), term(3, {x})},
       kBody + "duplicate variable across terms" + kCall},
      {{term(1, {x, y | kNegationBit, z})}, "Model: unexpected negated literal in constraint body"},
      {{term(1, {unknown})}, kUnknown},
      {{term(1, {x, unknown_atom})}, kUnknownAtom},
  };
  for (const auto& row : rows) {
    const Handle e = between(sum_of(row.terms), 0, 1);
    EXPECT_FATAL(zorv_model_create(e), row.text);
  }
}

TEST_F(ModelFailures, ConstraintsThatAModelCannotHold) {
  const Handle boundless = zorv_cons_mark(classic(var(x), var(y)));
  EXPECT_FATAL(zorv_model_create(boundless), "Model: constraint carries no bounds");

  const Handle shaped = zorv_abs_term(borrow(var(x) * var(y)), 1);
  EXPECT_FATAL(zorv_model_create(shaped),
               "zorv::abs/relu: nonlinear bodies are not supported yet (the body must be linear)");

  const Handle penalty = zorv_cons_mark(borrow(var(a) - 1));
  EXPECT_FATAL(zorv_model_create(penalty),
               "Model: native integer variables (int_var) in a free-form penalty remainder are not "
               "supported yet.");
}

TEST_F(ModelFailures, Queries) {
  const Model m = compiled(var(x) + var(a));
  EXPECT_FATAL(zorv_model_int_var_orig(m, 1), "zorv_model_int_var_orig: index out of range");
  Wire lo, hi;
  EXPECT_FATAL(zorv_model_int_var_bounds(m, 1, lo.out(), hi.out()),
               "zorv_model_int_var_bounds: index out of range");
  const uint64_t bits = 0;
  EXPECT_FATAL(zorv_model_eval(m, &bits, lo.out()),
               "Model eval: native integer variables (int_var) are not supported yet.");

  const Handle product = between(var(x) * var(y), 0, 1);
  const Model nonlinear = zorv_model_create(product);
  EXPECT_FATAL(
      zorv_model_native_cons_nterms(nonlinear, 0),
      "MIP/ILP solvers do not support nonlinear (degree>=2) constraint bodies inside cons(). Call "
      "expand_cons() on the expression to get the classic penalty form, or use a bundled heuristic "
      "solver (EasySolver/ExhaustiveSolver/KLB5Solver).");
  const Handle set = zorv_cons_equal(borrow(var(x)), Wire(0), Wire(1), 1);
  const Model allowed = zorv_model_create(set);
  EXPECT_FATAL(zorv_model_native_cons_nterms(allowed, 0),
               "MIP/ILP solvers do not support allowed-value set constraints (equal{...}) inside "
               "cons(). Use a bundled heuristic solver (EasySolver/ExhaustiveSolver/KLB5Solver).");
}

}  // namespace
}  // namespace zorv::test
