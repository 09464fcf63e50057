// Addition and subtraction, in place and on a copy.
#include "capi/handles.h"
#include "capi/terms.h"
#include "core/tagged_arithmetic.h"

namespace zorv {

extern "C" {

void zorv_expr_iadd_int(zorv_expr* e, const CoeffWire* c) { iadd_int(unwrap(e), read_wire(c)); }

void zorv_expr_isub_int(zorv_expr* e, const CoeffWire* c) { isub_int(unwrap(e), read_wire(c)); }

void zorv_expr_iadd_var(zorv_expr* e, uint32_t v) { iadd_term(unwrap(e), unit_term(v)); }

void zorv_expr_isub_var(zorv_expr* e, uint32_t v) { isub_term(unwrap(e), unit_term(v)); }

void zorv_expr_iadd_term(zorv_expr* e, const zorv_term* t) { iadd_term(unwrap(e), unwrap(t)); }

void zorv_expr_iadd_term_move(zorv_expr* e, zorv_term* t) { iadd_term(unwrap(e), take(t)); }

void zorv_expr_isub_term(zorv_expr* e, const zorv_term* t) { isub_term(unwrap(e), unwrap(t)); }

void zorv_expr_iadd_raw_term(zorv_expr* e, const CoeffWire* c, const uint32_t* vars, uint32_t n) {
  iadd_term(unwrap(e), raw_term(c, vars, n));
}

void zorv_expr_isub_raw_term(zorv_expr* e, const CoeffWire* c, const uint32_t* vars, uint32_t n) {
  isub_term(unwrap(e), raw_term(c, vars, n));
}

void zorv_expr_iadd_move_term(zorv_expr* e, const CoeffWire* c, uint64_t head_pair,
                              uint64_t overflow) {
  iadd_term_keeping_declared(unwrap(e), moved_term(c, head_pair, overflow));
}

void zorv_expr_isub_move_term(zorv_expr* e, const CoeffWire* c, uint64_t head_pair,
                              uint64_t overflow) {
  isub_term(unwrap(e), moved_term(c, head_pair, overflow));
}

void zorv_expr_iadd_terms_bulk(zorv_expr* e, const CoeffWire* k, uint64_t n,
                               const CoeffWire* coeffs, const uint32_t* degs,
                               const uint32_t* vars) {
  iadd_bulk(unwrap(e), read_wire(k), n, coeffs, degs, vars);
}

void zorv_expr_iadd_expr(zorv_expr* a, const zorv_expr* b) { iadd_expr(unwrap(a), unwrap(b)); }

void zorv_expr_isub_expr(zorv_expr* a, const zorv_expr* b) { isub_expr(unwrap(a), unwrap(b)); }

zorv_expr* zorv_expr_clone_add_int(const zorv_expr* e, const CoeffWire* c) {
  return wrap(clone_add_int(unwrap(e), read_wire(c)));
}

zorv_expr* zorv_expr_clone_sub_int(const zorv_expr* e, const CoeffWire* c) {
  return wrap(clone_sub_int(unwrap(e), read_wire(c)));
}

zorv_expr* zorv_expr_clone_add_var(const zorv_expr* e, uint32_t v) {
  return wrap(clone_add_term_keeping_declared(unwrap(e), unit_term(v)));
}

zorv_expr* zorv_expr_clone_sub_var(const zorv_expr* e, uint32_t v) {
  return wrap(clone_sub_term(unwrap(e), unit_term(v)));
}

zorv_expr* zorv_expr_clone_add_term(const zorv_expr* e, const zorv_term* t) {
  return wrap(clone_add_term(unwrap(e), unwrap(t)));
}

zorv_expr* zorv_expr_clone_sub_term(const zorv_expr* e, const zorv_term* t) {
  return wrap(clone_sub_term(unwrap(e), unwrap(t)));
}

zorv_expr* zorv_expr_clone_add_expr(const zorv_expr* a, const zorv_expr* b) {
  return wrap(clone_add_expr(unwrap(a), unwrap(b)));
}

zorv_expr* zorv_expr_clone_sub_expr(const zorv_expr* a, const zorv_expr* b) {
  return wrap(clone_sub_expr(unwrap(a), unwrap(b)));
}

}  // extern "C"

}  // namespace zorv
