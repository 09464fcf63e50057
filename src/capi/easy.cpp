#include "capi/handles.h"

namespace zorv {

extern "C" {

zorv_easy_wrapper* zorv_easy_solver_wrapper_create(const zorv_model* m) {
  return make_handle<EasySolver>(unwrap(m));
}

void zorv_easy_solver_wrapper_destroy(zorv_easy_wrapper* w) { destroy(w); }

zorv_result* zorv_easy_solver_wrapper_search(zorv_easy_wrapper* w, const ParamPair* params,
                                             const uint64_t* hint) {
  return wrap(unwrap(w).search(params, hint));
}

zorv_result* zorv_easy_solver_wrapper_search_int(zorv_easy_wrapper* w, const ParamPair* params,
                                                 const uint64_t* hint_bits,
                                                 const ::coeff_t* hint_ints,
                                                 uint64_t hint_int_count) {
  return wrap(unwrap(w).search_int(params, hint_bits, unwrap(hint_ints), hint_int_count));
}

}  // extern "C"

}  // namespace zorv
