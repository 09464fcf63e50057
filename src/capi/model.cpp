#include "capi/handles.h"

namespace zorv {

extern "C" {

zorv_model* zorv_model_create(const zorv_expr* e) { return wrap(make_model(unwrap(e))); }

// Coefficients are exact integers whatever the scale, so there is nothing to convert.
zorv_model* zorv_model_create_scaled(const zorv_expr* e, double /*scale*/) {
  return wrap(make_model(unwrap(e)));
}

zorv_model* zorv_model_clone(const zorv_model* m) { return wrap(ModelHandle(unwrap(m))); }

void zorv_model_destroy(zorv_model* m) { destroy(m); }

uint64_t zorv_model_var_count(const zorv_model* m) { return unwrap(m)->variables.size(); }

uint32_t zorv_model_var(const zorv_model* m, uint64_t i) { return unwrap(m)->variables[i]; }

int zorv_model_has(const zorv_model* m, uint32_t lit) { return model_has(*unwrap(m), lit); }

uint32_t zorv_model_var_index(const zorv_model* m, uint32_t lit) {
  return model_var_index(*unwrap(m), lit);
}

uint32_t zorv_model_max_degree(const zorv_model* m) { return unwrap(m)->max_degree; }

uint64_t zorv_model_term_count(const zorv_model* m, uint32_t d) {
  return term_count_of_degree(*unwrap(m), d);
}

const uint32_t* zorv_model_term_vars(const zorv_model* m, uint32_t d) {
  return term_vars_of_degree(*unwrap(m), d);
}

const ::coeff_t* zorv_model_coeff_array(const zorv_model* m, uint32_t d) {
  return borrow(term_coeffs_of_degree(*unwrap(m), d));
}

void zorv_model_coeff_at(const zorv_model* m, uint32_t d, uint64_t t, CoeffWire* out) {
  write_wire(unwrap(m)->term_coeffs[d - 1][t], out);
}

void zorv_model_constant(const zorv_model* m, CoeffWire* out) {
  write_wire(unwrap(m)->constant, out);
}

double zorv_model_scale(const zorv_model* m) { return unwrap(m)->scale; }

int zorv_model_has_negated_literals(const zorv_model* m) {
  return has_negated_literals(*unwrap(m));
}

uint64_t zorv_model_int_var_count(const zorv_model* m) { return unwrap(m)->int_atoms.size(); }

uint32_t zorv_model_int_var_orig(const zorv_model* m, uint64_t i) {
  return model_atom(*unwrap(m), i);
}

void zorv_model_int_var_bounds(const zorv_model* m, uint64_t i, CoeffWire* lo, CoeffWire* hi) {
  const AtomBounds bounds = model_atom_bounds(*unwrap(m), i);
  write_wire(bounds.lo, lo);
  write_wire(bounds.hi, hi);
}

uint64_t zorv_model_native_cons_count(const zorv_model* m) { return unwrap(m)->native_cons.size(); }

uint64_t zorv_model_native_cons_nterms(const zorv_model* m, uint64_t i) {
  return linear_native_cons(*unwrap(m), i).vars.size();
}

const uint32_t* zorv_model_native_cons_vars(const zorv_model* m, uint64_t i) {
  return unwrap(m)->native_cons[i].vars.data();
}

const ::coeff_t* zorv_model_native_cons_coeffs(const zorv_model* m, uint64_t i) {
  return borrow(unwrap(m)->native_cons[i].coeffs.data());
}

void zorv_model_native_cons_bounds(const zorv_model* m, uint64_t i, CoeffWire* lo, CoeffWire* hi,
                                   CoeffWire* constant, CoeffWire* weight) {
  const NativeCons& cons = unwrap(m)->native_cons[i];
  write_wire(cons.lo, lo);
  write_wire(cons.hi, hi);
  write_wire(cons.body_constant, constant);
  write_wire(cons.weight, weight);
}

void zorv_model_native_cons_shape(const zorv_model* m, uint64_t i, uint32_t* k, uint32_t* kind) {
  *k = unwrap(m)->native_cons[i].shape_k;
  *kind = unwrap(m)->native_cons[i].shape_kind;
}

int zorv_model_has_penalty_shapes(const zorv_model* m) { return has_penalty_shapes(*unwrap(m)); }

int zorv_model_has_remainder(const zorv_model* m) { return unwrap(m)->has_remainder; }

const uint64_t* zorv_model_remainder_head(const zorv_model* m) {
  return unwrap(m)->remainder_head.data();
}

const uint32_t* zorv_model_remainder_vars(const zorv_model* m) {
  return unwrap(m)->remainder_vars.data();
}

const ::coeff_t* zorv_model_remainder_coeffs(const zorv_model* m) {
  return borrow(unwrap(m)->remainder_coeffs.data());
}

void zorv_model_remainder_info(const zorv_model* m, CoeffWire* constant, uint64_t* nterms) {
  write_wire(unwrap(m)->remainder_constant, constant);
  *nterms = unwrap(m)->remainder_coeffs.size();
}

void zorv_model_eval(const zorv_model* m, const uint64_t* bits, CoeffWire* out) {
  write_wire(polynomial_energy(*unwrap(m), bits), out);
}

}  // extern "C"

}  // namespace zorv
