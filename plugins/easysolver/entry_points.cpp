// The functions that the main library calls, by include/zorv/solver_abi.h.
#include <random>

#include "common/literal.h"
#include "easysolver/engine.h"
#include "easysolver/integer_bits.h"
#include "zorv/solver_abi.h"

namespace zorv::plugin::easy {

namespace {

const coeff_t* as_abi(const Coeff* coeffs) { return reinterpret_cast<const coeff_t*>(coeffs); }

constexpr ParamReader<SearchParams> kParams[] = {
    {"best_energy_sols", read_best_energy_sols},
    {"enable_default_callback", read_enable_default_callback},
    {"seed", read_seed},
    {"target_energy", read_target_energy},
    {"thread_count", read_threads},
    {"threads", read_threads},
    {"time_limit", read_time_limit},
    {"topk_sols", read_topk_sols},
};

SearchParams params_of(const ParamPair* pairs) {
  SearchParams params{};
  params.solver_name = "EasySolver";
  read_params(pairs, kParams, params);
  if (params.threads == 0) params.threads = default_thread_count();
  if (!params.seed) params.seed = std::random_device("default")();
  return params;
}

struct Solver {
  std::unique_ptr<IntegerBits> integers;  // of a model with integer variables, else null
  BinaryModel model;
  std::unique_ptr<Engine> engine;  // made by a search, when all constraints are there
  Facts facts;

  SolutionList search(const ParamPair* pairs, const uint64_t* hint, Solution& best) {
    const SearchParams params = params_of(pairs);
    SharedSearch shared(model, params);
    bool is_made_in_a_hurry = false;
    if (!engine) {
      engine = make_engine(model, shared);
      is_made_in_a_hurry = shared.must_stop();
    }
    engine->search(shared, params, hint);
    best = shared.best();
    facts = engine->facts();
    if (is_made_in_a_hurry) engine.reset();
    return shared.take_list();
  }
};

void add_constraint(void* handle, const coeff_t* weight, const coeff_t* lo, const coeff_t* hi,
                    const coeff_t* body_constant, uint64_t nvars, const uint32_t* vars,
                    const coeff_t* coeffs, uint64_t n_allowed, const coeff_t* allowed_lo,
                    const coeff_t* allowed_hi) {
  auto& solver = *static_cast<Solver*>(handle);
  const auto add = [&](const Coeff& constant, uint64_t count, const uint32_t* literals,
                       const Coeff* factors) {
    solver.model.add_constraint_set(weight, lo, hi, as_abi(&constant), count, literals,
                                    as_abi(factors), n_allowed, allowed_lo, allowed_hi);
  };
  if (solver.integers == nullptr) {
    return add(*as_coeffs(body_constant), nvars, vars, as_coeffs(coeffs));
  }
  const IntegerBits::Body body =
      solver.integers->body(*as_coeffs(body_constant), nvars, vars, as_coeffs(coeffs));
  add(body.constant, body.vars.size(), body.vars.data(), body.coeffs.data());
}

Solver& solver_of(void* handle) { return *static_cast<Solver*>(handle); }

}  // namespace

// Declared as exported, which a definition inside a namespace does not take over.
#pragma GCC visibility push(default)
extern "C" {

void* zorv_easy_solver_create(void*, uint64_t nvars, uint32_t max_degree, const coeff_t* constant,
                              const uint64_t* term_count, const uint32_t* const* term_vars,
                              const coeff_t* const* term_coeffs) {
  return new Solver{
      {}, BinaryModel(nvars, max_degree, constant, term_count, term_vars, term_coeffs), {}, {}};
}

void zorv_easy_solver_destroy(void* handle) { delete &solver_of(handle); }

void* zorv_easy_solver_search(void* handle, SolutionOut* out, const ParamPair* params,
                              const uint64_t* hint) {
  Solution best;
  SolutionList list = solver_of(handle).search(params, hint, best);
  write_solution(best, out);
  return list.empty() ? nullptr : new SolutionList(std::move(list));
}

uint64_t zorv_easy_solver_sol_list_count(void* list) {
  return static_cast<SolutionList*>(list)->size();
}
void zorv_easy_solver_sol_list_get(void* list, uint64_t i, SolutionOut* out) {
  write_solution((*static_cast<SolutionList*>(list))[i], out);
}
void zorv_easy_solver_sol_list_destroy(void* list) { delete static_cast<SolutionList*>(list); }

void zorv_easy_solver_register_callback(SolverCallback) {}

InfoPair* zorv_easy_solver_get_info(void* handle) {
  return make_info_list(solver_of(handle).facts);
}
void zorv_easy_solver_free_info(InfoPair* list) { free_info_list(list); }

void zorv_easy_solver_add_constraint(void* handle, const coeff_t* weight, const coeff_t* lo,
                                     const coeff_t* hi, const coeff_t* body_constant,
                                     uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs) {
  add_constraint(handle, weight, lo, hi, body_constant, nvars, vars, coeffs, 0, nullptr, nullptr);
}
void zorv_easy_solver_add_constraint_nl(void* handle, const coeff_t* weight, const coeff_t* lo,
                                        const coeff_t* hi, const coeff_t* body_constant,
                                        uint64_t nvars, const uint32_t* vars, const coeff_t* coeffs,
                                        uint64_t nl_count, const uint64_t* nl_head,
                                        const uint32_t* nl_vars, const coeff_t* nl_coeffs) {
  solver_of(handle).model.add_constraint_nl(weight, lo, hi, body_constant, nvars, vars, coeffs,
                                            nl_count, nl_head, nl_vars, nl_coeffs);
}
void zorv_easy_solver_add_constraint_set(void* handle, const coeff_t* weight, const coeff_t* lo,
                                         const coeff_t* hi, const coeff_t* body_constant,
                                         uint64_t nvars, const uint32_t* vars,
                                         const coeff_t* coeffs, uint64_t n_allowed,
                                         const coeff_t* allowed_lo, const coeff_t* allowed_hi) {
  add_constraint(handle, weight, lo, hi, body_constant, nvars, vars, coeffs, n_allowed, allowed_lo,
                 allowed_hi);
}
void zorv_easy_solver_set_cons_shape(void* handle, uint8_t shape_k, uint8_t shape_kind) {
  solver_of(handle).model.set_cons_shape(shape_k, shape_kind);
}
void zorv_easy_solver_set_remainder(void* handle, const coeff_t* remainder_constant,
                                    uint64_t n_coeffs, const uint64_t* remainder_head,
                                    const uint32_t* remainder_vars,
                                    const coeff_t* remainder_coeffs) {
  solver_of(handle).model.set_remainder(remainder_constant, n_coeffs, remainder_head,
                                        remainder_vars, remainder_coeffs);
}

void* zorv_easy_solver_create_int(void*, uint32_t nbits, uint32_t nints, const coeff_t* int_lo,
                                  const coeff_t* int_hi, uint32_t max_degree,
                                  const coeff_t* constant, const uint64_t* term_count,
                                  const uint32_t* const* term_vars,
                                  const coeff_t* const* term_coeffs) {
  auto integers = std::make_unique<IntegerBits>(nbits, nints, as_coeffs(int_lo), as_coeffs(int_hi));
  BinaryModel model =
      integers->model(max_degree, *as_coeffs(constant), term_count, term_vars, term_coeffs);
  return new Solver{std::move(integers), std::move(model), {}, {}};
}

// Gives no list: its entries have no room for integers.
void* zorv_easy_solver_search_int(void* handle, SolutionOut* out, const ParamPair* params,
                                  coeff_t* ints) {
  Solver& solver = solver_of(handle);
  Solution best;
  solver.search(params, nullptr, best);
  solver.integers->decode(best.bits.data(), reinterpret_cast<Coeff*>(ints));
  best.bits.resize(words_for(solver.integers->nbits()));
  if (const uint32_t rest = solver.integers->nbits() % 64) {
    best.bits.back() &= (uint64_t{1} << rest) - 1;
  }
  write_solution(best, out);
  return nullptr;
}

}  // extern "C"
#pragma GCC visibility pop

}  // namespace zorv::plugin::easy
