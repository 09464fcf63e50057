// Making, inspecting and rendering expressions.
#include "capi/handles.h"
#include "capi/terms.h"
#include "core/solver_type.h"
#include "core/text.h"

namespace zorv {

extern "C" {

zorv_expr* zorv_expr_create(void) { return wrap(ExprImpl()); }

zorv_expr* zorv_expr_create_int(const CoeffWire* c) { return wrap(ExprImpl(read_wire(c))); }

zorv_expr* zorv_expr_create_var(uint32_t v) { return wrap(ExprImpl(unit_term(v))); }

zorv_expr* zorv_expr_create_term(zorv_term* t, int steal) {
  return wrap(ExprImpl(steal != 0 ? take(t) : TermImpl(unwrap(t))));
}

zorv_expr* zorv_expr_clone(const zorv_expr* e) { return wrap(ExprImpl(unwrap(e))); }

void zorv_expr_destroy(zorv_expr* e) { destroy(e); }

void zorv_expr_constant(const zorv_expr* e, CoeffWire* out) { write_wire(unwrap(e).constant, out); }

uint32_t zorv_expr_attr(const zorv_expr* e) { return unwrap(e).attr; }

uint64_t zorv_expr_term_count(const zorv_expr* e) { return unwrap(e).list.size(); }

const zorv_term* zorv_expr_term_at(const zorv_expr* e, uint64_t i) {
  return borrow(unwrap(e).list[i]);
}

void zorv_expr_term_at_data(const zorv_expr* e, uint64_t i, CoeffWire* out, uint64_t* head_pair,
                            uint64_t* overflow) {
  const TermImpl& term = unwrap(e).list[i];
  write_wire(term.coeff, out);
  *head_pair = term.vars.head_pair();
  *overflow = reinterpret_cast<uintptr_t>(term.vars.overflow());
}

uint64_t zorv_expr_term_count_degree(const zorv_expr* e, int d) {
  return term_count_of_degree(unwrap(e), static_cast<uint32_t>(d));
}

uint32_t zorv_expr_max_degree(const zorv_expr* e) { return max_degree(unwrap(e)); }

int zorv_expr_has(const zorv_expr* e, uint32_t v) { return has_variable(unwrap(e), v); }

int zorv_expr_has_int_atom(const zorv_expr* e) { return has_int_atom(unwrap(e)); }

const char* zorv_expr_str(const zorv_expr* e) {
  thread_local std::string text;
  text.clear();
  append_text(text, unwrap(e));
  return text.c_str();
}

const char* zorv_expr_solver_type(const zorv_expr*) { return kSolverType; }

}  // extern "C"

}  // namespace zorv
