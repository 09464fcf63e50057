#include "capi/handles.h"
#include "solvers/klb5_solver.h"

namespace zorv {

extern "C" {

zorv_klb5_wrapper* zorv_klb5_wrapper_create(const zorv_model* m, int32_t mode) {
  return make_handle<Klb5Solver>(unwrap(m), mode);
}

void zorv_klb5_wrapper_destroy(zorv_klb5_wrapper* w) { destroy(w); }

zorv_result* zorv_klb5_wrapper_search(zorv_klb5_wrapper* w, const ParamPair* params,
                                      const uint64_t* hint) {
  return wrap(unwrap(w).search(params, hint));
}

zorv_result* zorv_klb5_wrapper_search_int(zorv_klb5_wrapper* w, const ParamPair* params,
                                          const uint64_t* hint_bits, const ::coeff_t* hint_ints,
                                          uint64_t hint_int_count) {
  return wrap(unwrap(w).search_int(params, hint_bits, unwrap(hint_ints), hint_int_count));
}

void zorv_klb5_wrapper_set_callback(zorv_klb5_wrapper* w, ::UserCallback fn, void* ctx) {
  unwrap(w).set_callback(unwrap(fn), ctx);
}

void zorv_klb5_wrapper_terminate(zorv_klb5_wrapper* w) { unwrap(w).terminate(); }

void zorv_klb5_wrapper_hint(zorv_klb5_wrapper* w, const zorv_sol* sol) {
  unwrap(w).hint(sol == nullptr ? nullptr : &unwrap(sol));
}

}  // extern "C"

}  // namespace zorv
