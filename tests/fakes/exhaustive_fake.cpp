// An exhaustive library that solves nothing and writes down what it is asked.
#define FAKE(name) zorv_exhaustive_##name
#include "fakes/binary_fake.h"

extern "C" {

void* zorv_exhaustive_create(void* ctx, uint64_t nvars, uint32_t max_degree,
                             const coeff_t* constant, const uint64_t* term_count,
                             const uint32_t* const* term_vars, const coeff_t* const* term_coeffs,
                             uint64_t all_ones) {
  fake::Solver* s = fake::make_solver(max_degree, constant, term_count, term_vars, term_coeffs);
  fake::say("create #", s->id, " nvars=", nvars, ctx != nullptr ? " ctx" : "");
  if (all_ones != ~uint64_t{0}) fake::say("all_ones=", all_ones);
  return s;
}

void* zorv_exhaustive_search(void* handle, SolutionOut* out, const ParamPair* params) {
  return fake::search(handle, "search", out, params);
}

}  // extern "C"
