#include "integer/varint.h"

#include "capi/handles.h"
#include "capi/shapes.h"

namespace zorv {

namespace {

const VarIntRecord& record_of(const zorv_expr* e) { return varint_record(unwrap(e).attr); }

std::vector<coeff_t> read_wires(const CoeffWire* wires, uint64_t n) {
  std::vector<coeff_t> values(n);
  for (uint64_t i = 0; i < n; ++i) values[i] = read_wire(wires + i);
  return values;
}

void write_bits(const std::vector<bool>& bits, CoeffWire* out) {
  for (size_t i = 0; i < bits.size(); ++i) write_wire(CompactCoeff(bits[i]), out + i);
}

}  // namespace

extern "C" {

zorv_expr* zorv_varintelem_create(const char* name, const CoeffWire* lo, const CoeffWire* hi) {
  return wrap(make_varint(name, read_wire(lo), read_wire(hi)));
}

zorv_expr* zorv_varintelem_create_with_vars(const char* name, const CoeffWire* lo,
                                            const CoeffWire* hi, const CoeffWire* coeffs,
                                            const uint32_t* vars, uint64_t n) {
  return wrap(make_varint_with_vars(name, read_wire(lo), read_wire(hi), read_wires(coeffs, n),
                                    {vars, vars + n}));
}

zorv_expr* zorv_varintelem_clone(const zorv_expr* e) { return wrap(ExprImpl(unwrap(e))); }

void zorv_varintelem_destroy(zorv_expr* e) { destroy(e); }

void zorv_varintelem_min(const zorv_expr* e, CoeffWire* out) { write_wire(record_of(e).min, out); }

void zorv_varintelem_max(const zorv_expr* e, CoeffWire* out) { write_wire(record_of(e).max, out); }

uint64_t zorv_varintelem_var_count(const zorv_expr* e) { return record_of(e).vars.size(); }

uint32_t zorv_varintelem_var(const zorv_expr* e, uint64_t i) { return record_of(e).vars[i]; }

void zorv_varintelem_coeff(const zorv_expr* e, uint64_t i, CoeffWire* out) {
  write_wire(record_of(e).coeffs[i], out);
}

uint64_t zorv_varintelem_decompose(const zorv_expr* e, const CoeffWire* value, uint32_t* out_vars,
                                   CoeffWire* out_bits) {
  const VarIntRecord& record = record_of(e);
  std::copy(record.vars.begin(), record.vars.end(), out_vars);
  write_bits(decompose(record, read_wire(value)), out_bits);
  return record.vars.size();
}

void zorv_varintelem_replace_expr(zorv_expr* element, const zorv_expr* e) {
  replace_polynomial(unwrap(element), unwrap(e));
}

zorv_array_expr* zorv_array_varint_create_uniform(const char* name, const uint64_t* shape,
                                                  size_t ndim, const CoeffWire* lo,
                                                  const CoeffWire* hi) {
  return wrap(make_varint_array(name, read_shape(shape, ndim), read_wire(lo), read_wire(hi)));
}

}  // extern "C"

}  // namespace zorv
