#include <string>

#include "capi/handles.h"

namespace zorv {

namespace {

thread_local std::string last_refusal;

}  // namespace

extern "C" {

zorv_ilp* zorv_model_ilp_build(const zorv_model* m) {
  return wrap(build_ilp(*unwrap(m), last_refusal));
}

const char* zorv_ilp_last_error(void) { return last_refusal.c_str(); }

void zorv_ilp_destroy(zorv_ilp* ilp) { destroy(ilp); }

uint64_t zorv_ilp_ncols(const zorv_ilp* ilp) { return unwrap(ilp).cols.size(); }

uint64_t zorv_ilp_nrows(const zorv_ilp* ilp) { return unwrap(ilp).rows.size(); }

uint32_t zorv_ilp_col_kind(const zorv_ilp* ilp, uint64_t c) { return unwrap(ilp).cols[c].kind; }

int32_t zorv_ilp_col_model_var(const zorv_ilp* ilp, uint64_t c) {
  return unwrap(ilp).cols[c].model_var;
}

void zorv_ilp_col_bounds(const zorv_ilp* ilp, uint64_t c, CoeffWire* lo, CoeffWire* hi) {
  const IlpColumn& column = unwrap(ilp).cols[c];
  write_wire(column.lo, lo);
  write_wire(column.hi, hi);
}

uint64_t zorv_ilp_col_nbits(const zorv_ilp* ilp, uint64_t c) {
  return unwrap(ilp).cols[c].bit_vars.size();
}

uint32_t zorv_ilp_col_bit_var(const zorv_ilp* ilp, uint64_t c, uint64_t b) {
  return unwrap(ilp).cols[c].bit_vars[b];
}

void zorv_ilp_col_bit_coeff(const zorv_ilp* ilp, uint64_t c, uint64_t b, CoeffWire* out) {
  write_wire(unwrap(ilp).cols[c].bit_coeffs[b], out);
}

void zorv_ilp_col_decode(const zorv_ilp* ilp, uint64_t c, const CoeffWire* value, uint8_t* bits) {
  decode_column(unwrap(ilp).cols[c], read_wire(value), bits);
}

void zorv_ilp_obj(const zorv_ilp* ilp, uint64_t c, CoeffWire* out) {
  write_wire(unwrap(ilp).obj[c], out);
}

void zorv_ilp_obj_constant(const zorv_ilp* ilp, CoeffWire* out) {
  write_wire(unwrap(ilp).obj_constant, out);
}

uint64_t zorv_ilp_row_nnz(const zorv_ilp* ilp, uint64_t r) {
  return unwrap(ilp).rows[r].cols.size();
}

uint32_t zorv_ilp_row_col(const zorv_ilp* ilp, uint64_t r, uint64_t j) {
  return unwrap(ilp).rows[r].cols[j];
}

void zorv_ilp_row_coeff(const zorv_ilp* ilp, uint64_t r, uint64_t j, CoeffWire* out) {
  write_wire(unwrap(ilp).rows[r].coeffs[j], out);
}

void zorv_ilp_row_bounds(const zorv_ilp* ilp, uint64_t r, CoeffWire* lo, CoeffWire* hi,
                         uint32_t* lo_free, uint32_t* hi_free) {
  const IlpRow& row = unwrap(ilp).rows[r];
  write_wire(row.lo, lo);
  write_wire(row.hi, hi);
  *lo_free = row.lo_free;
  *hi_free = row.hi_free;
}

}  // extern "C"

}  // namespace zorv
