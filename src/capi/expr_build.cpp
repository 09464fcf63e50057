// Sums of one or two terms and a constant, and bulk loading.
#include "capi/handles.h"
#include "capi/terms.h"
#include "core/arithmetic.h"
#include "core/bulk.h"

namespace zorv {

namespace {

zorv_expr* sum(TermImpl a, const CoeffWire* k) {
  ExprImpl e(std::move(a));
  e.constant = read_wire(k);
  return wrap(std::move(e));
}

zorv_expr* sum(TermImpl a, TermImpl b) {
  ExprImpl e(std::move(a));
  e.list.append(std::move(b));
  return wrap(std::move(e));
}

}  // namespace

extern "C" {

zorv_expr* zorv_expr_create_raw_term(const CoeffWire* c, const uint32_t* vars, uint32_t n,
                                     const CoeffWire* k) {
  return sum(raw_term(c, vars, n), k);
}

zorv_expr* zorv_expr_create_move_term(const CoeffWire* c, uint64_t head_pair, uint64_t overflow,
                                      const CoeffWire* k) {
  return sum(moved_term(c, head_pair, overflow), k);
}

zorv_expr* zorv_expr_create_add_raw_terms(const CoeffWire* c1, const uint32_t* vars1, uint32_t n1,
                                          const CoeffWire* c2, const uint32_t* vars2, uint32_t n2) {
  return sum(raw_term(c1, vars1, n1), raw_term(c2, vars2, n2));
}

zorv_expr* zorv_expr_create_add_var_var(uint32_t a, uint32_t b) {
  return sum(unit_term(a), unit_term(b));
}

zorv_expr* zorv_expr_create_add_var_int(uint32_t v, const CoeffWire* k) {
  return sum(unit_term(v), k);
}

zorv_expr* zorv_expr_create_sub_int_var(const CoeffWire* k, uint32_t v) {
  return sum(negated(unit_term(v)), k);
}

zorv_expr* zorv_expr_create_add_term_var(const zorv_term* t, uint32_t v) {
  return sum(unwrap(t), unit_term(v));
}

zorv_expr* zorv_expr_create_add_term_int(const zorv_term* t, const CoeffWire* k) {
  return sum(unwrap(t), k);
}

zorv_expr* zorv_expr_create_sub_int_term(const CoeffWire* k, const zorv_term* t) {
  return sum(negated(unwrap(t)), k);
}

zorv_expr* zorv_expr_create_add_term_term(const zorv_term* a, const zorv_term* b) {
  return sum(unwrap(a), unwrap(b));
}

zorv_expr* zorv_expr_create_add_term_term_ml(zorv_term* a, const zorv_term* b) {
  return sum(take(a), unwrap(b));
}

zorv_expr* zorv_expr_create_add_term_term_mm(zorv_term* a, zorv_term* b) {
  return sum(take(a), take(b));
}

zorv_expr* zorv_expr_create_sub_term_term(const zorv_term* a, const zorv_term* b) {
  return sum(unwrap(a), negated(unwrap(b)));
}

zorv_expr* zorv_expr_create_from_bulk(const CoeffWire* k, uint64_t n, const CoeffWire* coeffs,
                                      const uint32_t* degs, const uint32_t* vars) {
  ExprImpl e(read_wire(k));
  append_bulk(e, n, coeffs, degs, vars);
  return wrap(std::move(e));
}

}  // extern "C"

}  // namespace zorv
