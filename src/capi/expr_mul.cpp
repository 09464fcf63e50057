// Products, division and negation.
#include "capi/handles.h"
#include "core/tagged_arithmetic.h"

namespace zorv {

extern "C" {

void zorv_expr_imul_int(zorv_expr* e, const CoeffWire* c) {
  imul_int_tagged(unwrap(e), read_wire(c));
}

zorv_expr* zorv_expr_clone_mul_int(const zorv_expr* e, const CoeffWire* c) {
  return wrap(clone_mul_int(unwrap(e), read_wire(c)));
}

void zorv_expr_imul_var(zorv_expr* e, uint32_t v) { imul_var(unwrap(e), v); }

void zorv_expr_imul_term_direct(zorv_expr* e, const CoeffWire* c, uint64_t head_pair,
                                const uint32_t* overflow) {
  imul_term(unwrap(e), TermImpl(read_wire(c), VarList::copy_of(head_pair, overflow)));
}

void zorv_expr_imul_expr(zorv_expr* a, const zorv_expr* b) { imul_expr(unwrap(a), unwrap(b)); }

zorv_expr* zorv_expr_mul_expr(const zorv_expr* a, const zorv_expr* b) {
  return wrap(mul_expr(unwrap(a), unwrap(b)));
}

zorv_expr* zorv_expr_sqr(const zorv_expr* e) { return wrap(sqr_expr(unwrap(e))); }

void zorv_expr_idiv_int(zorv_expr* e, const CoeffWire* c) {
  idiv_int_tagged(unwrap(e), read_wire(c));
}

void zorv_expr_negate(zorv_expr* e) { negate_tagged(unwrap(e)); }

}  // extern "C"

}  // namespace zorv
