#include "capi/handles.h"
#include "solvers/exhaustive_solver.h"

namespace zorv {

extern "C" {

zorv_exhaustive_wrapper* zorv_exhaustive_wrapper_create(const zorv_model* m) {
  return make_handle<ExhaustiveSolver>(unwrap(m));
}

void zorv_exhaustive_wrapper_destroy(zorv_exhaustive_wrapper* w) { destroy(w); }

zorv_result* zorv_exhaustive_wrapper_search(zorv_exhaustive_wrapper* w, const ParamPair* params) {
  return wrap(unwrap(w).search(params));
}

}  // extern "C"

}  // namespace zorv
