// An easysolver library that solves nothing and writes down what it is asked.
#define FAKE(name) zorv_easy_solver_##name
#include "fakes/binary_fake.h"

extern "C" {

void* zorv_easy_solver_create(void* ctx, uint64_t nvars, uint32_t max_degree,
                              const coeff_t* constant, const uint64_t* term_count,
                              const uint32_t* const* term_vars, const coeff_t* const* term_coeffs) {
  fake::Solver* s = fake::make_solver(max_degree, constant, term_count, term_vars, term_coeffs);
  fake::say("create #", s->id, " nvars=", nvars, ctx != nullptr ? " ctx" : "");
  return s;
}

void* zorv_easy_solver_search(void* handle, SolutionOut* out, const ParamPair* params,
                              const uint64_t* hint) {
  if (hint != nullptr) fake::say("hint ", fake::words(hint, *out->nwords));
  return fake::search(handle, "search", out, params);
}

void* zorv_easy_solver_create_int(void* ctx, uint32_t nbits, uint32_t nints, const coeff_t* int_lo,
                                  const coeff_t* int_hi, uint32_t max_degree,
                                  const coeff_t* constant, const uint64_t* term_count,
                                  const uint32_t* const* term_vars,
                                  const coeff_t* const* term_coeffs) {
  fake::Solver* s = fake::make_solver(max_degree, constant, term_count, term_vars, term_coeffs);
  s->ints = nints;
  fake::say("create_int #", s->id, " nbits=", nbits, " lo=", fake::numbers(int_lo, nints),
            " hi=", fake::numbers(int_hi, nints), ctx != nullptr ? " ctx" : "");
  return s;
}

// Integer i gets the value 2^70 + i.
void* zorv_easy_solver_search_int(void* handle, SolutionOut* out, const ParamPair* params,
                                  coeff_t* ints) {
  const uint64_t n = fake::solver(handle).ints;
  fake::say("ints ", fake::numbers(ints, n));
  for (uint64_t i = 0; i < n; ++i) fake::values(ints)[i] = (fake::Coeff(1) << 70) + i;
  return fake::search(handle, "search_int", out, params);
}

}  // extern "C"
