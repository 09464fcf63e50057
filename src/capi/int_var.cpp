#include "integer/int_var.h"

#include "capi/handles.h"

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

}  // extern "C"

}  // namespace zorv
