#include "solvers/easy_solver.h"

#include <utility>

#include "core/fatal.h"
#include "solvers/int_search.h"

namespace zorv {

EasySolver::EasySolver(ModelHandle model) : model_(std::move(model)) {
  if (!has_int_model()) {
    fatal("EasySolver: this build loads no solver library, which a binary model needs.");
  }
  if (model_->has_remainder) {
    fatal(
        "EasySolver: internal error — a free-form remainder with integer variables should have "
        "been rejected at Model.");
  }
}

SearchResult EasySolver::search(const ParamPair* params, const uint64_t* hint) const {
  if (hint != nullptr) {
    fatal(
        "EasySolver: hint on a native integer model requires the int-aware search path (update "
        "the zorv header).");
  }
  return search_int(params, nullptr, nullptr, 0);
}

SearchResult EasySolver::search_int(const ParamPair* params, const uint64_t* hint_bits,
                                    const coeff_t* hint_ints, uint64_t hint_int_count) const {
  IntSearchOpts opts;
  opts.solver_name = "EasySolver";
  return run_int_search(*model_, opts, params, hint_bits, hint_ints, hint_int_count);
}

}  // namespace zorv
