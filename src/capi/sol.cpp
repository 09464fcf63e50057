#include <string>

#include "capi/handles.h"
#include "capi/word_vec.h"

namespace zorv {

extern "C" {

zorv_sol* zorv_sol_create(const zorv_model* m) { return wrap(Sol(unwrap(m))); }

zorv_sol* zorv_sol_create_from_expr(const zorv_expr* e) { return wrap(make_sol(unwrap(e))); }

zorv_sol* zorv_sol_clone(const zorv_sol* sol) { return wrap(Sol(unwrap(sol))); }

void zorv_sol_destroy(zorv_sol* sol) { destroy(sol); }

const zorv_model* zorv_sol_model(const zorv_sol* sol) { return borrow(unwrap(sol).model); }

uint64_t zorv_sol_var_count(const zorv_sol* sol) { return unwrap(sol).model->variables.size(); }

int zorv_sol_has(const zorv_sol* sol, uint32_t lit) { return model_has(*unwrap(sol).model, lit); }

uint32_t zorv_sol_model_var(const zorv_sol* sol, uint64_t i) {
  return unwrap(sol).model->variables[i];
}

int zorv_sol_get(const zorv_sol* sol, uint32_t lit) { return sol_get(unwrap(sol), lit); }

void zorv_sol_set(zorv_sol* sol, uint32_t lit, int value) { sol_set(unwrap(sol), lit, value); }

void zorv_sol_flip(zorv_sol* sol, uint32_t lit) { sol_flip(unwrap(sol), lit); }

void zorv_sol_get_int(const zorv_sol* sol, uint32_t atom, CoeffWire* out) {
  write_wire(sol_get_int(unwrap(sol), atom), out);
}

void zorv_sol_set_int(zorv_sol* sol, uint32_t atom, const CoeffWire* value) {
  sol_set_int(unwrap(sol), atom, read_wire(value));
}

const ::coeff_t* zorv_sol_int_vals(const zorv_sol* sol) {
  return borrow(unwrap(sol).int_vals.data());
}

uint64_t zorv_sol_int_count(const zorv_sol* sol) { return unwrap(sol).int_vals.size(); }

const uint64_t* zorv_sol_bits(const zorv_sol* sol) { return unwrap(sol).bits.data(); }

void zorv_sol_steal_bits(zorv_sol* sol, WordVec* vec) { steal_words(unwrap(sol).bits, vec); }

void zorv_sol_energy(const zorv_sol* sol, CoeffWire* out) {
  write_wire(sol_energy(unwrap(sol)), out);
}

void zorv_sol_energy_int(const zorv_sol* sol, CoeffWire* out) {
  write_wire(sol_energy_int(unwrap(sol)), out);
}

int zorv_sol_energy_valid(const zorv_sol* sol) { return unwrap(sol).energy_valid; }

void zorv_sol_compute_energy(zorv_sol* sol, CoeffWire* out) {
  write_wire(compute_energy(unwrap(sol)), out);
}

void zorv_sol_set_energy(zorv_sol* sol, const CoeffWire* value) {
  set_energy(unwrap(sol), read_wire(value));
}

double zorv_sol_tts(const zorv_sol* sol) { return unwrap(sol).tts; }

void zorv_sol_set_tts(zorv_sol* sol, double seconds) { unwrap(sol).tts = seconds; }

double zorv_sol_scale(const zorv_sol* sol) { return unwrap(sol).scale; }

void zorv_sol_set_from_sol(zorv_sol* dst, const zorv_sol* src) {
  sol_set_from(unwrap(dst), unwrap(src));
}

const char* zorv_sol_str(const zorv_sol* sol) {
  thread_local std::string text;
  text = sol_text(unwrap(sol));
  return text.c_str();
}

void zorv_sol_eval_expr(const zorv_sol* sol, const zorv_expr* e, CoeffWire* out) {
  write_wire(sol_eval(unwrap(sol), unwrap(e)), out);
}

zorv_array_int* zorv_array_int_from_sol(const zorv_sol* sol, const zorv_array_var* array) {
  return wrap(sol_values(unwrap(sol), unwrap(array)));
}

}  // extern "C"

}  // namespace zorv
