// Constraints on whole arrays.
#include "arrays/elementwise.h"
#include "capi/elements.h"
#include "capi/handles.h"
#include "constraints/array_constraints.h"
#include "constraints/expand_cons.h"

namespace zorv {

namespace {

template <typename T>
zorv_expr* penalty_of(const T& element, const coeff_t& lo, const coeff_t& hi) {
  ExprImpl e;
  accumulate(e, element);
  return wrap(between(e, lo, hi));
}
// Stands for an element of a kind that does not exist.
zorv_expr* penalty_of(const coeff_t&, const coeff_t&, const coeff_t&) { return wrap(ExprImpl()); }

}  // namespace

extern "C" {

#define ZORV_ARRAY_CONSTRAINTS(K)                                                         \
  zorv_array_expr* zorv_array_##K##_between(const zorv_array_##K* a, const CoeffWire* lo, \
                                            const CoeffWire* hi) {                        \
    const coeff_t low = read_wire(lo), high = read_wire(hi);                              \
    return wrap(between_elements(unwrap(a), {.value = &low}, {.value = &high}));          \
  }                                                                                       \
  zorv_array_expr* zorv_array_##K##_ge_int(const zorv_array_##K* a, const CoeffWire* v) { \
    const coeff_t low = read_wire(v);                                                     \
    return wrap(between_elements(unwrap(a), {.value = &low}, {}));                        \
  }                                                                                       \
  zorv_array_expr* zorv_array_##K##_le_int(const zorv_array_##K* a, const CoeffWire* v) { \
    const coeff_t high = read_wire(v);                                                    \
    return wrap(between_elements(unwrap(a), {}, {.value = &high}));                       \
  }                                                                                       \
  zorv_array_expr* zorv_array_##K##_eq_int(const zorv_array_##K* a, const CoeffWire* v) { \
    const coeff_t target = read_wire(v);                                                  \
    return wrap(equal_elements(unwrap(a), {.value = &target}));                           \
  }                                                                                       \
  zorv_array_expr* zorv_array_##K##_between_array_int(                                    \
      const zorv_array_##K* a, const zorv_array_int* lo, const zorv_array_int* hi) {      \
    return wrap(between_elements(unwrap(a), {.values = unwrap_or_null(lo)},               \
                                 {.values = unwrap_or_null(hi)}));                        \
  }                                                                                       \
  zorv_array_expr* zorv_array_##K##_ge_array_int(const zorv_array_##K* a,                 \
                                                 const zorv_array_int* lo) {              \
    return wrap(between_elements(unwrap(a), {.values = unwrap_or_null(lo)}, {}));         \
  }                                                                                       \
  zorv_array_expr* zorv_array_##K##_le_array_int(const zorv_array_##K* a,                 \
                                                 const zorv_array_int* hi) {              \
    return wrap(between_elements(unwrap(a), {}, {.values = unwrap_or_null(hi)}));         \
  }
// Arrays of integers have no such form.
#define ZORV_ARRAY_EQUALS_ARRAY(K)                                          \
  zorv_array_expr* zorv_array_##K##_eq_array_int(const zorv_array_##K* a,   \
                                                 const zorv_array_int* b) { \
    return wrap(equal_elements(unwrap(a), {.values = &unwrap(b)}));         \
  }
ZORV_ARRAY_CONSTRAINTS(int)
ZORV_ARRAY_CONSTRAINTS(var)
ZORV_ARRAY_CONSTRAINTS(term)
ZORV_ARRAY_CONSTRAINTS(expr)
ZORV_ARRAY_EQUALS_ARRAY(var)
ZORV_ARRAY_EQUALS_ARRAY(term)
ZORV_ARRAY_EQUALS_ARRAY(expr)

void zorv_array_between(const void* elements, int kind, const CoeffWire* lo, const CoeffWire* hi,
                        zorv_expr** out, uint64_t n) {
  const coeff_t low = read_wire(lo), high = read_wire(hi);
  visit_elements(elements, kind, [&](auto at) {
    for (uint64_t i = 0; i < n; ++i) out[i] = penalty_of(at(i), low, high);
  });
}

}  // extern "C"

}  // namespace zorv
