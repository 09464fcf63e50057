// Operations on every element. The macros paste names; the operations and the schemes that apply
// them stand in arrays/elementwise.h.
#include "arrays/elementwise.h"
#include "arrays/unary.h"
#include "capi/handles.h"
#include "core/arithmetic.h"
#include "core/simplify.h"

namespace zorv {

namespace {

using scalar_var = uint32_t;
using scalar_int = const CoeffWire*;
using scalar_term = const zorv_term*;
using scalar_expr = const zorv_expr*;

uint32_t read_scalar(uint32_t v) { return v; }
coeff_t read_scalar(const CoeffWire* c) { return read_wire(c); }
// Copied, as it may belong to an expression that is about to change.
TermImpl read_scalar(const zorv_term* t) { return unwrap(t); }
const ExprImpl& read_scalar(const zorv_expr* e) { return unwrap(e); }

}  // namespace

extern "C" {

// A op B and A op s as new arrays. The result types are those of the header.
#define ZORV_BINARY(A, op, Op, B)                                                          \
  auto zorv_array_##A##_##op##_array_##B(const zorv_array_##A* a, const zorv_array_##B* b) \
      ->decltype(zorv_array_##A##_##op##_array_##B(a, b)) {                                \
    return wrap(elementwise<Op>(unwrap(a), unwrap(b)));                                    \
  }                                                                                        \
  auto zorv_array_##A##_##op##_##B(const zorv_array_##A* a, scalar_##B s)                  \
      ->decltype(zorv_array_##A##_##op##_##B(a, s)) {                                      \
    return wrap(elementwise<Op>(unwrap(a), read_scalar(s)));                               \
  }
#define ZORV_BINARY_FOR_RIGHT(A, op, Op) \
  ZORV_BINARY(A, op, Op, var)            \
  ZORV_BINARY(A, op, Op, int)            \
  ZORV_BINARY(A, op, Op, term)           \
  ZORV_BINARY(A, op, Op, expr)
#define ZORV_BINARY_FOR_LEFT(op, Op)  \
  ZORV_BINARY_FOR_RIGHT(var, op, Op)  \
  ZORV_BINARY_FOR_RIGHT(int, op, Op)  \
  ZORV_BINARY_FOR_RIGHT(term, op, Op) \
  ZORV_BINARY_FOR_RIGHT(expr, op, Op)
ZORV_BINARY_FOR_LEFT(add, Add)
ZORV_BINARY_FOR_LEFT(sub, Sub)
ZORV_BINARY_FOR_LEFT(mul, Mul)

// A op= B and A op= s.
#define ZORV_IN_PLACE_ARRAY(A, op, Op, B)                                              \
  void zorv_array_##A##_##op##_array_##B(zorv_array_##A* a, const zorv_array_##B* b) { \
    elementwise_in_place<Op>(unwrap(a), unwrap(b));                                    \
  }
#define ZORV_IN_PLACE_SCALAR(A, op, Op, B)                            \
  void zorv_array_##A##_##op##_##B(zorv_array_##A* a, scalar_##B s) { \
    elementwise_in_place<Op>(unwrap(a), read_scalar(s));              \
  }
#define ZORV_IN_PLACE(A, op, Op, B) \
  ZORV_IN_PLACE_ARRAY(A, op, Op, B) \
  ZORV_IN_PLACE_SCALAR(A, op, Op, B)
ZORV_IN_PLACE(expr, add_eq, AddEq, var)
ZORV_IN_PLACE(expr, add_eq, AddEq, int)
ZORV_IN_PLACE(expr, add_eq, AddEq, term)
ZORV_IN_PLACE(expr, add_eq, AddEq, expr)
ZORV_IN_PLACE(expr, sub_eq, SubEq, var)
ZORV_IN_PLACE(expr, sub_eq, SubEq, int)
ZORV_IN_PLACE(expr, sub_eq, SubEq, term)
ZORV_IN_PLACE(expr, sub_eq, SubEq, expr)
ZORV_IN_PLACE(expr, mul_eq, MulEq, var)
ZORV_IN_PLACE_ARRAY(expr, mul_eq, MulEq, int)
ZORV_IN_PLACE_SCALAR(expr, mul_eq, ScaleEq, int)
ZORV_IN_PLACE(expr, mul_eq, MulEq, term)
ZORV_IN_PLACE(expr, mul_eq, MulEq, expr)
ZORV_IN_PLACE(int, add_eq, AddEq, int)
ZORV_IN_PLACE(int, sub_eq, SubEq, int)
ZORV_IN_PLACE(int, mul_eq, MulEq, int)
ZORV_IN_PLACE_SCALAR(term, mul_eq, MulEq, int)

zorv_array_expr* zorv_array_var_negate(const zorv_array_var* a) { return wrap(negate(unwrap(a))); }

zorv_array_expr* zorv_array_int_negate(const zorv_array_int* a) { return wrap(negate(unwrap(a))); }

zorv_array_expr* zorv_array_term_negate(const zorv_array_term* a) {
  return wrap(negate(unwrap(a)));
}

zorv_array_expr* zorv_array_expr_negate(const zorv_array_expr* a) {
  return wrap(negate(unwrap(a)));
}

zorv_array_var* zorv_array_var_invert(const zorv_array_var* a) { return wrap(invert(unwrap(a))); }

zorv_array_expr* zorv_array_expr_sqr(const zorv_array_expr* a) {
  return wrap(map_array(unwrap(a), sqr));
}

zorv_array_expr* zorv_array_expr_simplify(const zorv_array_expr* a) {
  return wrap(map_array(unwrap(a), expr_simplify));
}

zorv_array_expr* zorv_array_expr_simplify_as_binary(const zorv_array_expr* a) {
  return wrap(map_array(unwrap(a), expr_simplify_as_binary));
}

zorv_array_expr* zorv_array_expr_simplify_as_spin(const zorv_array_expr* a) {
  return wrap(map_array(unwrap(a), expr_simplify_as_spin));
}

void zorv_array_expr_replace(zorv_array_expr* a, const uint32_t* vars, zorv_expr* const* exprs,
                             uint64_t n) {
  replace_elements(unwrap(a), Substitution(vars, unwrap(exprs), n));
}

zorv_array_term* zorv_array_int_coeffvec_mul_var(const zorv_array_int* coeffs,
                                                 const zorv_array_var* vars) {
  return wrap(coefficients_times(unwrap(coeffs), unwrap(vars)));
}

void zorv_array_int_div_eq_int(zorv_array_int* a, const CoeffWire* s) {
  divide(unwrap(a), read_wire(s));
}

void zorv_array_term_div_eq_int(zorv_array_term* a, const CoeffWire* s) {
  divide(unwrap(a), read_wire(s));
}

zorv_array_term* zorv_array_term_div_int(const zorv_array_term* a, const CoeffWire* s) {
  zorv_array_term* quotient = zorv_array_term_clone(a);
  zorv_array_term_div_eq_int(quotient, s);
  return quotient;
}

void zorv_array_expr_div_eq_int(zorv_array_expr* a, const CoeffWire* s) {
  divide(unwrap(a), read_wire(s));
}

zorv_array_expr* zorv_array_expr_div_int(const zorv_array_expr* a, const CoeffWire* s) {
  zorv_array_expr* quotient = zorv_array_expr_clone(a);
  zorv_array_expr_div_eq_int(quotient, s);
  return quotient;
}

}  // extern "C"

}  // namespace zorv
