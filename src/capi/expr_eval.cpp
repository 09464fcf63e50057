// Values of expressions, and bounds of them.
#include "capi/handles.h"
#include "core/attr_rules.h"
#include "core/evaluate.h"
#include "integer/reachable_bounds.h"

namespace zorv {

namespace {

std::vector<coeff_t> read_wires(const CoeffWire* const* wires, uint64_t n) {
  std::vector<coeff_t> values(n);
  for (uint64_t i = 0; i < n; ++i) values[i] = read_wire(wires[i]);
  return values;
}

}  // namespace

extern "C" {

void zorv_expr_eval_map(const zorv_expr* e, const uint32_t* vars, const CoeffWire* const* values,
                        uint64_t n, CoeffWire* out) {
  refuse_declared(unwrap(e).attr, "eval with a variable map (evaluate against a Sol instead)");
  write_wire(evaluate(unwrap(e), vars, read_wires(values, n).data(), n), out);
}

void zorv_expr_eval_with_model(const zorv_expr* e, const zorv_model* m, const uint64_t* bits,
                               CoeffWire* out) {
  write_wire(value_on_bits(unwrap(e), *unwrap(m), bits), out);
}

void zorv_expr_gcd(const zorv_expr* e, CoeffWire* out) {
  write_wire(coefficient_gcd(unwrap(e)), out);
}

void zorv_expr_pos_sum(const zorv_expr* e, CoeffWire* out) {
  write_wire(reachable_bounds(unwrap(e)).hi, out);
}

void zorv_expr_neg_sum(const zorv_expr* e, CoeffWire* out) {
  write_wire(reachable_bounds(unwrap(e)).lo, out);
}

}  // extern "C"

}  // namespace zorv
