#include "capi/handles.h"
#include "core/arithmetic.h"
#include "core/text.h"

namespace zorv {

extern "C" {

zorv_term* zorv_term_create(const CoeffWire* c) {
  return wrap(TermImpl(read_compact(c), VarList()));
}

zorv_term* zorv_term_create_var(const CoeffWire* c, uint32_t v) {
  return wrap(TermImpl(read_compact(c), VarList(v)));
}

zorv_term* zorv_term_create_var_var(const CoeffWire* c, uint32_t a, uint32_t b) {
  return wrap(TermImpl(read_compact(c), VarList(a, b)));
}

zorv_term* zorv_term_create_vararray(const CoeffWire* c, uint64_t head_pair,
                                     const uint32_t* overflow) {
  return wrap(TermImpl(read_compact(c), VarList::copy_of(head_pair, overflow)));
}

zorv_term* zorv_term_clone(const zorv_term* t) { return wrap(TermImpl(unwrap(t))); }

void zorv_term_destroy(zorv_term* t) { destroy(t); }

void zorv_term_coeff(const zorv_term* t, CoeffWire* out) { write_wire(unwrap(t).coeff, out); }

uint32_t zorv_term_degree(const zorv_term* t) { return unwrap(t).vars.degree(); }

uint32_t zorv_term_var_at(const zorv_term* t, uint32_t i) { return unwrap(t).vars[i]; }

void zorv_term_mul_var(zorv_term* t, uint32_t v) { unwrap(t).vars.append(v); }

void zorv_term_mul_coeff(zorv_term* t, const CoeffWire* c) { unwrap(t).coeff *= read_compact(c); }

void zorv_term_div_coeff(zorv_term* t, const CoeffWire* c) { idiv(unwrap(t), read_compact(c)); }

void zorv_term_negate(zorv_term* t) { negate(unwrap(t).coeff); }

zorv_term* zorv_term_mul_term(const zorv_term* a, const zorv_term* b) {
  return wrap(mul(unwrap(a), unwrap(b)));
}

zorv_term* zorv_term_mul_term_move(zorv_term* a, const zorv_term* b) {
  imul(unwrap(a), unwrap(b));
  return a;
}

const char* zorv_term_str(const zorv_term* t) {
  thread_local std::string text;
  text.clear();
  append_text(text, unwrap(t));
  return text.c_str();
}

}  // extern "C"

}  // namespace zorv
