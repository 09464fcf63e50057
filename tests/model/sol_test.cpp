// Solutions: texts of aborts, other models, absent variables. Random calls hold energies against
// the definition.
#include "integer/int_var.h"
#include "model/model_handles.h"

namespace zorv::test {
namespace {

coeff_t energy_of(zorv_sol* sol) { return written(zorv_sol_compute_energy, sol); }
coeff_t value_on(const zorv_sol* sol, const zorv_expr* e) {
  return written(zorv_sol_eval_expr, sol, e);
}

class Solutions : public ::testing::Test {
 protected:
  const uint32_t x = fresh("x"), y = fresh("y"), z = fresh("z"), absent = fresh("absent");
  const uint32_t a = new_int_var("a", -2, 3), b = new_int_var("b", -(coeff_t(1) << 130), 5);
  const uint32_t absent_atom = new_int_var("c", 0, 1);
  const uint32_t not_x = x | kNegationBit;
  const Model m = compiled(var(x) + 2 * var(y) + 100 * var(a) + 10 * (var(y) * var(z)) + 7);
  const Solution sol = zorv_sol_create(m);
};

TEST_F(Solutions, TheEnergyIsComputedOnDemandAndTakenOnTrust) {
  zorv_sol_flip(sol, y);
  zorv_sol_set_tts(sol, 2.5);
  EXPECT_EQ(zorv_sol_energy_valid(sol), 0);
  EXPECT_EQ(energy_of(sol), 7 - 200 + 2);
  EXPECT_EQ(zorv_sol_energy_valid(sol), 1);
  zorv_sol_set_energy(sol, Wire(-99));
  EXPECT_EQ(energy_of(sol), -99);  // valid, so not computed again
  zorv_sol_set(sol, y, 1);         // also a change that changes nothing
  const Solution copy = zorv_sol_clone(sol);
  EXPECT_EQ(zorv_sol_tts(copy), 2.5);
  EXPECT_EQ(zorv_sol_energy_valid(copy), 0);
  zorv_sol_flip(copy, x);
  EXPECT_EQ(energy_of(sol), 7 - 200 + 2);
  EXPECT_EQ(energy_of(copy), 7 - 200 + 3);
}

TEST_F(Solutions, IntegersKeepTheirBounds) {
  const struct {
    coeff_t value;
    bool is_legal;
  } rows[] = {{-2, true}, {3, true}, {0, true}, {-3, false}, {4, false}, {coeff_t(1) << 70, false}};
  for (const auto& row : rows) {
    if (row.is_legal) {
      zorv_sol_set_int(sol, a, Wire(row.value));
      EXPECT_EQ(written(zorv_sol_get_int, sol, a), row.value);
      EXPECT_EQ(zorv_sol_energy_valid(sol), 0);
    } else {
      EXPECT_FATAL(
          zorv_sol_set_int(sol, a, Wire(row.value)),
          "Sol::set: value " + row.value.str() + " outside the integer variable's bounds [-2,3]");
    }
  }
}

TEST_F(Solutions, Misuse) {
  const std::string missing = ": variable not in model (index=";
  EXPECT_FATAL(zorv_sol_get(sol, absent | kNegationBit),
               "Sol::get" + missing + std::to_string(absent) + ")");
  EXPECT_FATAL(zorv_sol_get(sol, a), "Sol::get" + missing + std::to_string(a) + ")");
  EXPECT_FATAL(zorv_sol_set(sol, absent, 1), "Sol::set" + missing + std::to_string(absent) + ")");
  EXPECT_FATAL(zorv_sol_flip(sol, kNoLiteral), "Sol::flip" + missing + "2147483647)");
  Wire out;
  EXPECT_FATAL(zorv_sol_get_int(sol, x, out.out()), "Sol::get: not an integer variable index");
  EXPECT_FATAL(zorv_sol_set_int(sol, a | kNegationBit, Wire(0)),
               "Sol::set: not an integer variable index");
  EXPECT_FATAL(zorv_sol_get_int(sol, absent_atom, out.out()),
               "Sol::get: integer variable not in model");
  EXPECT_FATAL(zorv_sol_set_int(sol, 0x7FFFFFFE, Wire(0)),
               "Sol::set: integer variable not in model");
  zorv_sol_flip(sol, x);
  EXPECT_FATAL(zorv_sol_energy(sol, out.out()),
               "Sol::energy(): energy is invalid (variable changed after last computation). Call "
               "comp_energy() first.");
  EXPECT_FATAL(zorv_sol_energy_int(sol, out.out()),
               "Sol::energy_int(): energy is invalid. Call comp_energy() first.");
  EXPECT_FATAL(zorv_sol_str(sol),
               "Sol::str(): energy is invalid (variable changed after last computation). Call "
               "comp_energy() first.");
}

TEST_F(Solutions, ServeAsModelHandles) {
  zorv_model* model = zorv_model_create(borrow(var(x) + 3));
  zorv_sol* lender = zorv_sol_create(model);
  zorv_model_destroy(model);
  EXPECT_EQ(zorv_model_var(zorv_sol_model(lender), 0), x);
  EXPECT_EQ(static_cast<const void*>(zorv_sol_model(lender)), static_cast<const void*>(lender));
  const Model kept = zorv_model_clone(zorv_sol_model(lender));
  const Solution second = zorv_sol_create(zorv_sol_model(lender));
  zorv_sol_destroy(lender);
  EXPECT_EQ(written(zorv_model_constant, kept), 3);
  EXPECT_EQ(written(zorv_sol_energy, second), 3);
}

TEST_F(Solutions, SetFromSolCopiesAcrossModels) {
  const Model wider = compiled(var(absent) + var(x) + var(y) + var(z) + var(a) + var(b));
  const Solution to = zorv_sol_create(wider);
  zorv_sol_set(sol, z, 1);
  zorv_sol_set_int(sol, a, Wire(2));
  zorv_sol_set(to, absent, 1);
  zorv_sol_set_from_sol(to, sol);
  EXPECT_EQ(zorv_sol_energy_valid(to), 0);
  EXPECT_EQ(energy_of(to), 1 + 1 + 2 - (coeff_t(1) << 130));
  zorv_sol_set_from_sol(to, to);
  EXPECT_EQ(zorv_sol_energy_valid(to), 0);
  EXPECT_FATAL(zorv_sol_set_from_sol(sol, to),
               "Sol::set: variable not in model (index=" + std::to_string(absent) + ")");
}

// Writes the text of x + ... over some of the variables x, y, z with the ids 0, 1, 2. Those ids
// take a reset, so only a child process may call it.
void print_text(const std::vector<uint32_t>& ids) {
  zorv_var_reset();
  for (const char* name : {"x", "y", "z"}) fresh(name);
  ExprImpl e;
  for (const uint32_t id : ids) e = e + var(id);
  const Solution sol = zorv_sol_create_from_expr(borrow(e));
  zorv_sol_set(sol, ids.back(), 1);
  energy_of(sol);
  std::cerr << zorv_sol_str(sol) << '\n';
  std::_Exit(0);
}

// Whoever reads the text relies on this pairing: it must not be repaired to look the value up by
// the variable that the name belongs to.
TEST(SolText, TakesTheNameOfTheIthVariableAndTheValueOfIdI) {
  EXPECT_EXIT(print_text({0, 1, 2}), ::testing::ExitedWithCode(0),
              ::testing::Eq("1:{{x,0},{y,0},{z,1}}\n"));
  EXPECT_FATAL(print_text({0, 2}), "Sol::get: variable not in model (index=1)");
  EXPECT_FATAL(print_text({1, 2}), "Sol::get: variable not in model (index=0)");
}

TEST_F(Solutions, EvalKnowsEveryPartOfAnExpression) {
  zorv_sol_set(sol, x, 1);
  zorv_sol_set_int(sol, a, Wire(3));
  Handle declared(var(x) + 2);
  zorv_expr_iadd_expr(declared, between(4 * var(a), 0, 9));  // violated by 3
  zorv_expr_iadd_expr(declared, Handle(zorv_abs_term(borrow(var(a) - 7), 1)));
  zorv_expr_iadd_expr(declared, Handle(zorv_cons_mark(borrow(var(y) - 30))));
  const Handle scaled = clone(declared);
  zorv_expr_imul_int(scaled, Wire(-2));
  const Handle one = classic(var(x), var(absent) + 50);
  const Handle boundless = zorv_cons_mark(classic(var(y), var(x)));
  const uint32_t not_absent = absent | kNegationBit;

  EXPECT_EQ(value_on(sol, declared), 3 + 9 + 4 - 30);
  EXPECT_EQ(value_on(sol, scaled), -6 - 18 - 8 + 60);
  EXPECT_EQ(value_on(sol, one), 1);        // the penalty alone
  EXPECT_EQ(value_on(sol, boundless), 0);  // nothing to violate
  const struct {
    ExprImpl e;
    coeff_t expected;
  } rows[] = {{var(not_x) + 4, 4},
              {var(a) * var(a) * var(x), 9},
              {var(absent) + var(not_absent), 0},  // absent is 0 either way
              {7 * (var(absent_atom) * var(x)), 0},
              {var(x) * var(y | kNegationBit) * var(a), 3},
              {sum_of({term(1, {x}), term(0, {x}), term(3, {})}), 4}};
  for (const auto& row : rows) EXPECT_EQ(value_on(sol, borrow(row.e)), row.expected) << text(row.e);
}

}  // namespace
}  // namespace zorv::test
