#include "integer/int_var.h"

#include "capi/handles.h"
#include "integer/series.h"

namespace zorv {

extern "C" {

uint32_t zorv_new_int_var(const char* name, const CoeffWire* lo, const CoeffWire* hi) {
  return new_int_var(name, read_wire(lo), read_wire(hi));
}

uint32_t zorv_new_int_var_array(const char* name, const uint64_t* shape, size_t ndim,
                                const CoeffWire* lo, const CoeffWire* hi) {
  return new_int_var_array(name, shape, ndim, read_wire(lo), read_wire(hi));
}

void zorv_int_var_bounds(uint32_t literal, CoeffWire* lo, CoeffWire* hi) {
  const IntVarGroup& group = int_var_bounds(literal);
  write_wire(group.lo, lo);
  write_wire(group.hi, hi);
}

uint64_t zorv_comp_coeffs_count(const CoeffWire* lo, const CoeffWire* hi) {
  return encoding_series(read_wire(lo), read_wire(hi), 1).size();
}

void zorv_comp_coeffs(const CoeffWire* lo, const CoeffWire* hi, CoeffWire* out) {
  for (const coeff_t& c : encoding_series(read_wire(lo), read_wire(hi), 1)) write_wire(c, out++);
}

}  // extern "C"

}  // namespace zorv
