#include "solvers/exhaustive_solver.h"

#include <mutex>
#include <utility>

#include "core/fatal.h"
#include "solvers/int_enumeration.h"
#include "solvers/library_params.h"
#include "solvers/library_result.h"

namespace zorv {

namespace {

constexpr ConstraintTexts kTexts = {
    "ExhaustiveSolver: this solver .so predates zorv::abs/relu (missing "
    "zorv_exhaustive_set_cons_shape) — update the solver .so.",
    "ExhaustiveSolver: the exhaustive solver .so does not support native constraints (rebuild it)",
    "ExhaustiveSolver: this solver .so does not support nonlinear native constraint bodies "
    "(rebuild it)",
    "ExhaustiveSolver: this solver .so does not support allowed-value set constraints "
    "(equal{...}); rebuild it",
    "ExhaustiveSolver: this solver .so does not support free-form penalty constraints (rebuild it)",
};

constexpr uint64_t kAllOnes = ~uint64_t{0};

// The solver has no callback; the library is given one that leaves its timer alone.
double ignore_event(void*, const CoeffWire*, const uint64_t*, uint32_t, double) { return -1.0; }

}  // namespace

ExhaustiveSolver::ExhaustiveSolver(ModelHandle model) : model_(std::move(model)), terms_(*model_) {
  if (!has_int_model()) {
    create_solver();
    return;
  }
  if (model_->has_remainder) {
    fatal(
        "ExhaustiveSolver: internal error — a free-form remainder with integer variables should "
        "have been rejected at Model.");
  }
  refuse_large_space(*model_);
}

ExhaustiveSolver::~ExhaustiveSolver() {
  if (solver_ != nullptr) exhaustive_dispatch().destroy(solver_);
}

void ExhaustiveSolver::create_solver() {
  const ExhaustiveTable& library = exhaustive_dispatch();
  static std::once_flag registered;
  std::call_once(registered, library.register_callback, ignore_event);
  solver_ = library.create(nullptr, model_->variables.size(), model_->max_degree,
                           as_abi(&model_->constant), model_->term_count.data(), terms_.vars.data(),
                           terms_.coeffs.data(), kAllOnes);
  deliver_constraints(*model_, solver_, library.constraints, kTexts);
}

SearchResult ExhaustiveSolver::search(const ParamPair* params) {
  return has_int_model() ? enumerate_states(*model_, params) : search_binary(params);
}

SearchResult ExhaustiveSolver::search_binary(const ParamPair* params) {
  const ExhaustiveTable& library = exhaustive_dispatch();
  const std::vector<ParamPair> pairs = copy_params(params);
  SolutionBuffer best(model_->variables.size());
  const Stopwatch watch;
  void* list = library.search(solver_, best.record(), pairs.data());
  const double seconds = watch.seconds();
  return binary_result(library, *model_, solver_, best, list, seconds);
}

}  // namespace zorv
