// Solutions and energies, the latter held against the plain definition.
#include "integer/int_var.h"
#include "model/model_handles.h"
#include "reference/plain_energy.h"
#include "support/random.h"

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

TEST_F(Solutions, StartAtZeroAndLowerBounds) {
  EXPECT_EQ(written(zorv_sol_energy, sol), 7 - 200);
  EXPECT_EQ(zorv_sol_energy_valid(sol), 1);
  EXPECT_EQ(zorv_sol_tts(sol), -1.0);
  EXPECT_EQ(zorv_sol_scale(sol), 1.0);
  EXPECT_EQ(zorv_sol_var_count(sol), 3u);
  EXPECT_EQ(zorv_sol_int_count(sol), 1u);
  EXPECT_EQ(*unwrap(zorv_sol_int_vals(sol)), -2);
  EXPECT_EQ(zorv_sol_has(sol, not_x), 1);
  EXPECT_EQ(zorv_sol_has(sol, absent), 0);
  EXPECT_EQ(zorv_sol_model_var(sol, 2), z);

  const Solution empty = zorv_sol_create(compiled(constant(5)));
  EXPECT_EQ(written(zorv_sol_energy_int, empty), 5);
  EXPECT_STREQ(zorv_sol_str(empty), "5:{}");
  zorv_sol_destroy(nullptr);
}

TEST_F(Solutions, SetAndFlipByLiteral) {
  const struct {
    uint32_t literal;
    int value;
    int bit;
  } rows[] = {{x, 1, 1},     {x, 0, 0},     {x, -7, 1},    {x, 256, 1},
              {not_x, 1, 0}, {not_x, 0, 1}, {not_x, 2, 1}, {not_x, 1, 0}};  // 1 - 2 is not 0
  for (const auto& row : rows) {
    zorv_sol_set(sol, row.literal, row.value);
    EXPECT_EQ(zorv_sol_get(sol, x), row.bit) << row.literal << " = " << row.value;
    EXPECT_EQ(zorv_sol_get(sol, not_x), 1 - row.bit);
    EXPECT_EQ(zorv_sol_bits(sol)[0], static_cast<uint64_t>(row.bit));
    EXPECT_EQ(zorv_sol_energy_valid(sol), 0);
  }
  zorv_sol_flip(sol, not_x);
  EXPECT_EQ(zorv_sol_get(sol, x), 1);
}

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

TEST_F(Solutions, StealBitsMovesTheBlock) {
  zorv_sol_set(sol, y, 1);
  const uint64_t* block = zorv_sol_bits(sol);
  auto* old = static_cast<uint64_t*>(::operator new(16));
  WordVec words = {old, old + 2, old + 2};
  zorv_sol_steal_bits(sol, &words);  // frees the old block
  EXPECT_EQ(words.begin, block);
  EXPECT_EQ(words.end - words.begin, 1);
  EXPECT_EQ(words.begin[0], 2u);
  EXPECT_TRUE(unwrap(sol).bits.empty());
  EXPECT_EQ(zorv_sol_energy_valid(sol), 0);
  ::operator delete(words.begin);
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

TEST_F(Solutions, CreateFromExprSimplifiesAndLeavesConstraintsOut) {
  Handle e(var(y) * var(x) * var(y) + var(not_x));
  zorv_expr_iadd_expr(e, between(var(z), 5, 5));
  const Solution made = zorv_sol_create_from_expr(e);
  EXPECT_EQ(energy_of(made), 1);
  EXPECT_EQ(zorv_sol_var_count(made), 2u);
  EXPECT_EQ(zorv_model_native_cons_count(zorv_sol_model(made)), 0u);
}

TEST_F(Solutions, ModelEvalLeavesConstraintsOut) {
  Handle e(3 * var(x) + var(x) * var(y) + 1);
  zorv_expr_iadd_expr(e, between(var(x), 5, 6));
  zorv_expr_iadd_expr(e, Handle(zorv_cons_mark(borrow(10 * var(y)))));
  const Model model = zorv_model_create(e);
  const Solution at = zorv_sol_create(model);
  const int polynomial[] = {1, 4, 11, 15}, constraint[] = {25, 16, 25, 16};
  for (uint64_t bits = 0; bits < 4; ++bits) {
    zorv_sol_set(at, x, bits & 1);
    zorv_sol_set(at, y, bits >> 1);
    EXPECT_EQ(written(zorv_model_eval, model, &bits), polynomial[bits]);
    EXPECT_EQ(energy_of(at), polynomial[bits] + constraint[bits]);
  }
}

TEST_F(Solutions, ViolationsByExponent) {
  Handle squared = between(var(a), -2, -1);
  zorv_expr_imul_int(squared, Wire(3));
  Handle plain = zorv_relu_term(borrow(var(a) + 1), 1);
  zorv_expr_imul_int(plain, Wire(3));
  const Solution with_squared = zorv_sol_create(Model(zorv_model_create(squared)));
  const Solution with_plain = zorv_sol_create(Model(zorv_model_create(plain)));
  zorv_sol_set_int(with_squared, a, Wire(3));
  zorv_sol_set_int(with_plain, a, Wire(3));
  EXPECT_EQ(energy_of(with_squared), 48);
  EXPECT_EQ(energy_of(with_plain), 12);
}

// Random expressions with every kind of constraint, on random assignments.
TEST_F(Solutions, EnergiesAgreeWithTheDefinition) {
  const uint64_t seed = 20240229;
  SCOPED_TRACE("seed " + std::to_string(seed));
  Random random(seed);
  const uint32_t atoms[] = {a, b};
  // Bodies have up to 3 literals in a term and then none negated, which models refuse.
  const auto polynomial = [&](uint64_t terms, uint32_t longest, bool with_atoms) {
    ExprImpl e(troublesome(random));
    for (uint64_t t = 0; t < terms; ++t) {
      TermImpl made(troublesome(random), VarList());
      for (uint64_t n = below(random, longest + 1); n > 0; --n) {
        uint32_t literal = x + static_cast<uint32_t>(below(random, 3));
        if (longest != 3 && below(random, 3) == 0) literal |= kNegationBit;
        if (with_atoms && below(random, 3) == 0) literal = atoms[below(random, 2)];
        made = mul(made, TermImpl(1, VarList(literal)));
      }
      e.list.append(made);
    }
    return e;
  };
  for (int round = 0; round < 300; ++round) {
    Handle e(polynomial(below(random, 6), 4, true));
    for (uint64_t n = below(random, 5); n > 0; --n) {
      const uint64_t kind = below(random, 5);
      const ExprImpl body = polynomial(1 + below(random, 3), kind == 0 ? 3 : 1, kind != 4);
      const coeff_t low = troublesome(random), high = low + below(random, 50);
      const Wire l0(low), h0(high), l1(high + 100), h1(high + 200);
      const CoeffWire lows[] = {*static_cast<const CoeffWire*>(l1),
                                *static_cast<const CoeffWire*>(l0)};
      const CoeffWire highs[] = {*static_cast<const CoeffWire*>(h1),
                                 *static_cast<const CoeffWire*>(h0)};
      Handle part = kind <= 1   ? between(body, low, high)
                    : kind == 2 ? Handle(zorv_cons_equal(borrow(body), lows, highs, 2))
                    : kind == 3 ? Handle(zorv_abs_term(borrow(body), 1 + n % 2))
                                : Handle(zorv_cons_mark(borrow(body)));
      zorv_expr_imul_int(
          part, Wire((below(random, 2) == 0 ? 1 : -1) * static_cast<int>(1 + below(random, 4))));
      zorv_expr_iadd_expr(e, part);
    }
    const Handle simple = zorv_expr_simplify_as_binary(e);
    const Model model = zorv_model_create(simple);
    const Solution at = zorv_sol_create(model);
    Assignment values = {{x, 0}, {y, 0}, {z, 0}, {a, -2}, {b, -(coeff_t(1) << 130)}};
    ASSERT_EQ(energy_of(at), plain_energy(unwrap(e), values)) << "at the start, round " << round;
    for (auto& [id, value] : values) {
      if (is_atom(id)) {
        const std::vector<uint32_t>& map = unwrap(model)->int_index_map;
        value = 5 - coeff_t(below(random, 4)) - 2;
        if (map.size() > index_of(id) && map[index_of(id)] != kNoLiteral) {
          zorv_sol_set_int(at, id, Wire(value));
        }
      } else {
        value = below(random, 2);
        if (zorv_sol_has(at, id)) zorv_sol_set(at, id, value == 1);
      }
    }
    ASSERT_EQ(energy_of(at), plain_energy(unwrap(e), values)) << "round " << round;
  }
}

}  // namespace
}  // namespace zorv::test
