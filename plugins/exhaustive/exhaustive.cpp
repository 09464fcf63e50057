// The functions of the library, as the contract has them.
#include <string>

#include "common/fatal.h"
#include "common/info_list.h"
#include "exhaustive/search.h"

namespace zorv::plugin {

namespace {

constexpr char kName[] = "ExhaustiveSolver";

constexpr ParamReader<SearchParams> kParams[] = {
    {"best_energy_sols", read_best_energy_sols},
    {"enable_default_callback", read_enable_default_callback},
    {"target_energy", read_target_energy},
    {"threads", read_threads},
    {"time_limit", read_time_limit},
    {"topk_sols", read_topk_sols},
};

// What a handle points to.
struct Solver {
  BinaryModel model;
  Facts facts;  // of the last search
};

Solver& solver_of(void* handle) { return *static_cast<Solver*>(handle); }
BinaryModel& model_of(void* handle) { return solver_of(handle).model; }
SolutionList& list_of(void* list) { return *static_cast<SolutionList*>(list); }

void refuse_large_space(uint64_t variables) {
  if (variables <= kMostVariables) return;
  fatal(kName, ": a model of ", variables, " binary variables has too many assignments to look at ",
        "them all (at most ", kMostVariables, " variables).");
}

Facts facts_of(const ExhaustiveResult& result) {
  return {{"states", std::to_string(result.states)},
          {"complete", result.is_complete ? "1" : "0"},
          {"numbers", result.numbers},
          {"threads", std::to_string(result.threads)}};
}

}  // namespace

// Everything else in the library is hidden.
#pragma GCC visibility push(default)
extern "C" {

void* zorv_exhaustive_create(void*, uint64_t nvars, uint32_t max_degree, const coeff_t* constant,
                             const uint64_t* term_count, const uint32_t* const* term_vars,
                             const coeff_t* const* term_coeffs, uint64_t) {
  refuse_large_space(nvars);
  return new Solver{{nvars, max_degree, constant, term_count, term_vars, term_coeffs}, {}};
}

void zorv_exhaustive_destroy(void* handle) { delete static_cast<Solver*>(handle); }

void* zorv_exhaustive_search(void* handle, SolutionOut* out, const ParamPair* pairs) {
  SearchParams params;
  params.solver_name = kName;
  read_params(pairs, kParams, params);
  ExhaustiveResult result = search_all(model_of(handle), params);
  write_solution(result.best, out);
  solver_of(handle).facts = facts_of(result);
  return result.is_list_wanted ? new SolutionList(std::move(result.listed)) : nullptr;
}

uint64_t zorv_exhaustive_sol_list_count(void* list) { return list_of(list).size(); }
void zorv_exhaustive_sol_list_get(void* list, uint64_t i, SolutionOut* out) {
  write_solution(list_of(list)[i], out);
}
void zorv_exhaustive_sol_list_destroy(void* list) { delete static_cast<SolutionList*>(list); }

void zorv_exhaustive_register_callback(SolverCallback) {}

InfoPair* zorv_exhaustive_get_info(void* handle) { return make_info_list(solver_of(handle).facts); }
void zorv_exhaustive_free_info(InfoPair* list) { free_info_list(list); }

void zorv_exhaustive_add_constraint(void* handle, const coeff_t* weight, const coeff_t* lo,
                                    const coeff_t* hi, const coeff_t* body_constant, uint64_t nvars,
                                    const uint32_t* vars, const coeff_t* coeffs) {
  model_of(handle).add_constraint(weight, lo, hi, body_constant, nvars, vars, coeffs);
}

void zorv_exhaustive_add_constraint_nl(void* handle, const coeff_t* weight, const coeff_t* lo,
                                       const coeff_t* hi, const coeff_t* body_constant,
                                       uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs,
                                       uint64_t nl_count, const uint64_t* nl_head,
                                       const uint32_t* nl_vars, const coeff_t* nl_coeffs) {
  model_of(handle).add_constraint_nl(weight, lo, hi, body_constant, nvars, vars, coeffs, nl_count,
                                     nl_head, nl_vars, nl_coeffs);
}

void zorv_exhaustive_add_constraint_set(void* handle, const coeff_t* weight, const coeff_t* lo,
                                        const coeff_t* hi, const coeff_t* body_constant,
                                        uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs,
                                        uint64_t n_allowed, const coeff_t* allowed_lo,
                                        const coeff_t* allowed_hi) {
  model_of(handle).add_constraint_set(weight, lo, hi, body_constant, nvars, vars, coeffs, n_allowed,
                                      allowed_lo, allowed_hi);
}

void zorv_exhaustive_set_cons_shape(void* handle, uint8_t shape_k, uint8_t shape_kind) {
  model_of(handle).set_cons_shape(shape_k, shape_kind);
}

void zorv_exhaustive_set_remainder(void* handle, const coeff_t* remainder_constant,
                                   uint64_t n_coeffs, const uint64_t* remainder_head,
                                   const uint32_t* remainder_vars,
                                   const coeff_t* remainder_coeffs) {
  model_of(handle).set_remainder(remainder_constant, n_coeffs, remainder_head, remainder_vars,
                                 remainder_coeffs);
}

}  // extern "C"
#pragma GCC visibility pop

}  // namespace zorv::plugin
