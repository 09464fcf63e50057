// The same value in another form: simplification, spin and binary, substitution, encodings,
// reduction of degree, expansion of constraints.
#include "capi/handles.h"
#include "constraints/expand_cons.h"
#include "core/simplify.h"
#include "core/spin_forms.h"
#include "core/substitute.h"
#include "integer/binarize.h"
#include "integer/degree_reduction.h"

namespace zorv {

extern "C" {

zorv_expr* zorv_expr_simplify(const zorv_expr* e) {
  return wrap(simplify_with_attr(unwrap(e), expr_simplify));
}

zorv_expr* zorv_expr_simplify_as_binary(const zorv_expr* e) {
  return wrap(simplify_with_attr(unwrap(e), expr_simplify_as_binary));
}

zorv_expr* zorv_expr_simplify_as_spin(const zorv_expr* e) {
  return wrap(simplify_with_attr(unwrap(e), expr_simplify_as_spin));
}

zorv_expr* zorv_expr_binary_to_spin(const zorv_expr* e) { return wrap(binary_to_spin(unwrap(e))); }

zorv_expr* zorv_expr_spin_to_binary(const zorv_expr* e) { return wrap(spin_to_binary(unwrap(e))); }

zorv_expr* zorv_expr_replace(const zorv_expr* e, const uint32_t* vars, zorv_expr* const* exprs,
                             uint64_t n) {
  return wrap(replace(unwrap(e), Substitution(vars, unwrap(exprs), n)));
}

zorv_expr* zorv_expr_binarize(const zorv_expr* e) { return wrap(binarize(unwrap(e))); }

zorv_expr* zorv_expr_reduce(const zorv_expr* e) { return wrap(checked_reduce_degree(unwrap(e))); }

zorv_array_expr* zorv_array_expr_reduce(const zorv_array_expr* a) {
  return wrap(reduce_degree(unwrap(a)));
}

zorv_expr* zorv_expr_expand_cons(const zorv_expr* e) { return wrap(expand_cons(unwrap(e))); }

zorv_expr* zorv_between(const zorv_expr* f, const CoeffWire* lo, const CoeffWire* hi) {
  return wrap(between(unwrap(f), read_wire(lo), read_wire(hi)));
}

}  // extern "C"

}  // namespace zorv
