// What must not compile, told by asking whether it would. One line, built for real, is in
// wrong_use.cpp.
#include <gtest/gtest.h>

#include "zorv/zorv.hpp"

namespace {

using namespace zorv;

// Whether `use` compiles with arguments of these types.
template <typename... Args>
constexpr bool compiles(auto use) {
  return requires { use(std::declval<Args>()...); };
}

#define EXPRESSION(...)                                                          \
  [](auto&& a, auto&& b) -> decltype(static_cast<void>(a), static_cast<void>(b), \
                                     static_cast<void>(__VA_ARGS__)) {}

// Each expression in `a` and `b` compiles for the first pair of types and not for the second.
#define ONLY(expression, A, B, WrongA, WrongB)           \
  static_assert(compiles<A, B>(EXPRESSION(expression))); \
  static_assert(!compiles<WrongA, WrongB>(EXPRESSION(expression)))

using Row = Array<Var, 1>;
using Vars = Array<Var, 2>;
using Ints = Array<Integer, 2>;
using Cube = Array<Integer, 3>;
using Exprs = Array<Expr, 1>;

// Coefficients are whole numbers.
ONLY(a* b, int, Var, double, Var);
ONLY(a + b, Var, uint64_t, Var, float);
ONLY(a - b, Expr, Integer, Expr, bool);
ONLY(a* b, Term, long, Term, char);
ONLY(a += b, Expr&, int, Expr&, double);
ONLY(Integer(a) == Integer(b), int, long, double, long);
ONLY(a.set(b, 1), Sol&, Var, const int&, Var);
ONLY(a.set(IntVar(), b), Sol&, int, Sol&, double);
ONLY(int_var("n", a, b), int, int, int, double);
// Only binary variables have complements.
ONLY((~a, ~b), Var, Var, IntVar, Var);
ONLY((~a, ~b), Var, Var, Var, Expr);
ONLY((~a, b), Vars, int, Ints, int);
// Division is exact and by integers.
ONLY(a / b, Expr, int, Expr, Var);
ONLY(a / b, Term, int, Var, int);
// A comparison has one body and each end once, and is no truth value.
ONLY(a <= b, int, Expr, AtMost, int);
ONLY(a <= b, AtLeast, int, Between, int);
ONLY(a >= b, AtMost, int, AtLeast, int);
ONLY(a <= b, AtLeast, int, AtLeast, Expr);
ONLY(a == b, Expr, Var, Between, int);
ONLY((a ? 1 : 0, b), bool, int, Between, int);
ONLY(a <= b, Expr, int, Expr, double);
static_assert(!compiles<Expr, int>(EXPRESSION(a < b)));
static_assert(!compiles<Expr, int>(EXPRESSION(a != b)));
// Ranks are fixed, elements of arrays of variables are values.
ONLY(a + b, Vars, Ints, Vars, Row);
ONLY(a[0][0] * b, Vars, Var, Row, Var);
ONLY(a[0][b][0], Cube, int, Ints, int);
ONLY(a[0] = b, Exprs&, Expr, const Exprs&, Expr);
ONLY(a[0] += b, Exprs&, Expr, const Exprs&, Expr);
ONLY(a[0] = b, Exprs&, int, Row&, Var);
ONLY(einsum<1>("ij->i", a) + b, Vars, int, Expr, int);
ONLY(sum(a, b), Vars, int, Row, int);
// Models and solvers are made on purpose.
static_assert(!std::convertible_to<Expr, Model>);
static_assert(!std::convertible_to<Model, EasySolver>);
static_assert(!std::constructible_from<EasySolver, Expr>);
static_assert(!std::convertible_to<std::string, Integer>);

}  // namespace
