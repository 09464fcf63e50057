#include "capi/handles.h"
#include "capi/word_vec.h"

namespace zorv {

extern "C" {

void zorv_easy_solver_result_energy(const zorv_result* r, CoeffWire* out) {
  write_wire(unwrap(r).energy, out);
}

double zorv_easy_solver_result_tts(const zorv_result* r) { return unwrap(r).tts; }

const uint64_t* zorv_easy_solver_result_bits(const zorv_result* r) { return unwrap(r).bits.data(); }

uint64_t zorv_easy_solver_result_topk_count(const zorv_result* r) { return unwrap(r).topk.size(); }

void zorv_easy_solver_result_topk_energy(const zorv_result* r, uint64_t i, CoeffWire* out) {
  write_wire(unwrap(r).topk[i].energy, out);
}

double zorv_easy_solver_result_topk_tts(const zorv_result* r, uint64_t i) {
  return unwrap(r).topk[i].tts;
}

const uint64_t* zorv_easy_solver_result_topk_bits(const zorv_result* r, uint64_t i) {
  return unwrap(r).topk[i].bits.data();
}

// The two results below trade blocks with the caller's record, where a Sol gives its own away and
// frees what the record held.
void zorv_easy_solver_result_steal_bits(zorv_result* r, WordVec* vec) {
  as_vector(vec).swap(unwrap(r).bits);
}

void zorv_easy_solver_result_steal_topk_bits(zorv_result* r, uint64_t i, WordVec* vec) {
  as_vector(vec).swap(unwrap(r).topk[i].bits);
}

uint64_t zorv_easy_solver_result_info_count(const zorv_result* r) { return unwrap(r).info.size(); }

const char* zorv_easy_solver_result_info_key(const zorv_result* r, uint64_t i) {
  return unwrap(r).info[i].key.c_str();
}

const char* zorv_easy_solver_result_info_value(const zorv_result* r, uint64_t i) {
  return unwrap(r).info[i].value.c_str();
}

zorv_sol* zorv_easy_solver_result_to_sol(zorv_result* r, const zorv_model* m) {
  return wrap(take_sol(unwrap(r), unwrap(m)));
}

zorv_sol* zorv_easy_solver_result_topk_to_sol(zorv_result* r, uint64_t i, const zorv_model* m) {
  return wrap(take_topk_sol(unwrap(r), i, unwrap(m)));
}

void zorv_easy_solver_result_destroy(zorv_result* r) { destroy(r); }

}  // extern "C"

}  // namespace zorv
