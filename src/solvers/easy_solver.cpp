#include "solvers/easy_solver.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <utility>

#include "core/fatal.h"
#include "core/solver_type.h"
#include "solvers/int_search.h"
#include "solvers/library_params.h"
#include "solvers/library_result.h"

namespace zorv {

namespace {

constexpr ParamPair kDefaultTimeLimit = {"time_limit", "10.0"};

constexpr ConstraintTexts kTexts = {
    "EasySolver: this solver .so predates zorv::abs/relu (missing zorv_easy_solver_set_cons_shape) "
    "— update the solver .so.",
    "EasySolver: easysolver_cppint.so does not support native constraints (rebuild it)",
    "EasySolver: this solver .so does not support nonlinear native constraint bodies (rebuild it, "
    "or use a linear constraint body)",
    "EasySolver: this solver .so does not support allowed-value set constraints (equal{...}); "
    "rebuild it",
    "EasySolver: this solver .so does not support free-form penalty constraints (rebuild it)",
};

constexpr ConstraintTexts kUnifiedTexts = {
    "EasySolver: this solver .so predates zorv::abs/relu (missing zorv_easy_solver_set_cons_shape)",
    kTexts.no_constraints,
    nullptr,  // nonlinear bodies keep a model off this path
    "EasySolver: this solver .so does not support allowed-set constraints (rebuild it)",
    nullptr,
};

// EasySolver has no callback of its own; libraries are given one that leaves their timer alone.
double ignore_event(void*, const CoeffWire*, const uint64_t*, uint32_t, double) { return -1.0; }

// The parameters, and a time limit if there is none among them.
std::vector<ParamPair> with_time_limit(const ParamPair* params) {
  std::vector<ParamPair> all = copy_params(params);
  const bool has_time_limit = std::any_of(all.begin(), all.end() - 1, [](const ParamPair& pair) {
    return std::strcmp(pair.key, kDefaultTimeLimit.key) == 0;
  });
  if (!has_time_limit) all.insert(all.end() - 1, kDefaultTimeLimit);
  return all;
}

// The same in the names of the libraries' integer engine.
std::vector<ParamPair> unified_params(const ParamPair* params) {
  std::vector<ParamPair> all = with_time_limit(params);
  for (ParamPair& pair : all) {
    if (pair.key == nullptr || std::strcmp(pair.key, "threads") != 0) continue;
    const char* value = pair.value != nullptr ? pair.value : "";
    if (static_cast<uint32_t>(std::strtoul(value, nullptr, 10)) == 0) {
      fatal("EasySolver: threads must be >= 1.");
    }
    pair.key = "thread_count";
  }
  return all;
}

}  // namespace

EasySolver::EasySolver(ModelHandle model) : model_(std::move(model)), terms_(*model_) {
  if (!has_int_model()) {
    create_solver();
  } else if (model_->has_remainder) {
    fatal(
        "EasySolver: internal error — a free-form remainder with integer variables should have "
        "been rejected at Model.");
  }
}

EasySolver::~EasySolver() {
  if (solver_ != nullptr) easy_dispatch().destroy(solver_);
}

void EasySolver::create_solver() {
  const EasySolverTable& library = easy_dispatch();
  static std::once_flag registered;
  std::call_once(registered, library.register_callback, ignore_event);
  solver_ = library.create(nullptr, model_->variables.size(), model_->max_degree,
                           as_abi(&model_->constant), model_->term_count.data(), terms_.vars.data(),
                           terms_.coeffs.data());
  deliver_constraints(*model_, solver_, library.constraints, kTexts);
}

SearchResult EasySolver::search(const ParamPair* params, const uint64_t* hint) {
  if (!has_int_model()) return search_binary(params, hint);
  if (hint != nullptr) {
    fatal(
        "EasySolver: hint on a native integer model requires the int-aware search path (update "
        "the zorv header).");
  }
  return search_int(params, nullptr, nullptr, 0);
}

SearchResult EasySolver::search_int(const ParamPair* params, const uint64_t* hint_bits,
                                    const coeff_t* hint_ints, uint64_t hint_int_count) {
  if (!has_int_model()) fatal("EasySolver: search_int called on a binary model.");
  if (hint_bits == nullptr && wants_unified_search(*model_, params)) return search_unified(params);
  return search_native(params, hint_bits, hint_ints, hint_int_count);
}

SearchResult EasySolver::search_native(const ParamPair* params, const uint64_t* hint_bits,
                                       const coeff_t* hint_ints, uint64_t hint_int_count) const {
  IntSearchOpts opts;
  opts.solver_name = "EasySolver";
  return run_int_search(*model_, opts, params, hint_bits, hint_ints, hint_int_count);
}

SearchResult EasySolver::search_binary(const ParamPair* params, const uint64_t* hint) {
  const EasySolverTable& library = easy_dispatch();
  const std::vector<ParamPair> pairs = with_time_limit(params);
  SolutionBuffer best(model_->variables.size());
  const Stopwatch watch;
  void* list = library.search(solver_, best.record(), pairs.data(), hint);
  const double seconds = watch.seconds();
  return binary_result(library, *model_, solver_, best, list, seconds);
}

SearchResult EasySolver::search_unified(const ParamPair* params) const {
  const EasySolverTable& library = easy_dispatch();
  if (library.create_int == nullptr || library.search_int == nullptr) {
    fatal("EasySolver: ZORV_INT_UNIFIED=1 but easysolver_", kSolverType,
          ".so lacks the unified integer engine (rebuild the solver .so)");
  }
  static std::once_flag registered;
  std::call_once(registered, library.register_callback, ignore_event);
  void* solver = library.create_int(
      nullptr, static_cast<uint32_t>(model_->variables.size()),
      static_cast<uint32_t>(model_->int_lo.size()), as_abi(model_->int_lo.data()),
      as_abi(model_->int_hi.data()), model_->max_degree, as_abi(&model_->constant),
      model_->term_count.data(), terms_.vars.data(), terms_.coeffs.data());
  deliver_integer_constraints(*model_, solver, library.constraints, kUnifiedTexts);

  const std::vector<ParamPair> pairs = unified_params(params);
  SolutionBuffer best(model_->variables.size());
  std::vector<coeff_t> ints(model_->int_lo.size());
  const Stopwatch watch;
  void* list = library.search_int(solver, best.record(), pairs.data(), as_abi(ints.data()));
  const double seconds = watch.seconds();
  if (list != nullptr) library.sol_list_destroy(list);

  SearchResult result = result_of(best, *model_);
  result.ints = std::move(ints);
  add_run_time(result, seconds);
  add_reported_info(result, solver, library.get_info, library.free_info);
  add_info(result, "engine", "integer-unified");
  add_host_info(result);
  library.destroy(solver);
  return result;
}

}  // namespace zorv
