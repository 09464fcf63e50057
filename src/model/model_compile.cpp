#include "core/arithmetic.h"
#include "core/fatal.h"
#include "core/simplify.h"
#include "model/dense_index.h"
#include "model/model.h"
#include "model/native_records.h"
#include "model/stage_clock.h"
#include "model/term_layout.h"

namespace zorv {

namespace {

ExprImpl objective_with_penalty(const ExprImpl& objective, const ExprImpl& penalty) {
  ExprImpl sum = plain_copy(objective);
  add_poly(sum, penalty);
  return expr_simplify_as_binary(sum);
}

void mark_variables(const ExprImpl& penalty, UsedVariables& used) {
  penalty.list.for_each([&](const TermImpl& term) {
    for (const uint32_t literal : term.vars) {
      if (is_atom(literal)) {
        fatal(
            "Model: native integer variables (int_var) in a free-form penalty remainder are not "
            "supported yet.");
      }
      used.check_and_mark(literal);
    }
  });
}

void store_remainder(const ExprImpl& penalty, ModelImpl& m) {
  m.has_remainder = true;
  m.remainder_constant = coeff_t(penalty.constant);
  m.remainder_head.push_back(0);
  penalty.list.for_each([&](const TermImpl& term) {
    if (is_zero(term.coeff)) return;
    for (const uint32_t literal : term.vars) m.remainder_vars.push_back(dense_literal(m, literal));
    m.remainder_coeffs.emplace_back(term.coeff);
    m.remainder_head.push_back(m.remainder_vars.size());
  });
}

}  // namespace

ModelImpl::ModelImpl(const ExprImpl& e, double /*scale*/, const ConstraintListImpl* constraints) {
  const SplitConstraints split = split_constraints(constraints);

  const bool with_penalty = constraints != nullptr && constraints->has_remainder;
  ExprImpl sum;
  if (with_penalty) sum = objective_with_penalty(e, constraints->remainder);
  const ExprImpl& compiled = with_penalty ? sum : e;

  StageClock clock("Model");
  constant = coeff_t(compiled.constant);
  ExprImpl penalty;
  if (with_penalty) penalty = expr_simplify_as_binary(constraints->remainder);
  std::vector<NativeCons> records = native_records(split);

  UsedVariables used;
  TermLayout layout(compiled.list);
  layout.count_and_check(used);
  mark_variables(records, used);
  mark_variables(penalty, used);
  clock.lap("Phase 1a (parallel count + validate + var_flags)");

  max_degree = layout.max_degree();
  layout.allocate(*this);
  clock.lap("Phase 1b (merge counts + allocate flat arrays)");

  // Nothing has a variable. This drops a remainder that is only a constant, on which callers rely:
  // such a model has no remainder to treat as hard.
  if (max_degree == 0 && records.empty()) return;

  layout.fill(*this);
  clock.lap("Phase 1c (parallel fill flat arrays)");

  number_variables(used, layout.threads(), *this);
  clock.lap("Phase 2 (parallel prefix-sum var_flags scan + dense index_map)");

  number_atoms(used, *this);
  if (!int_atoms.empty()) clock.lap("Phase 2i (integer-atom mapping)");

  if (!records.empty()) {
    adopt_records(std::move(records), *this);
    clock.lap("Native constraints (remap)");
  }
  if (with_penalty) {
    store_remainder(penalty, *this);
    clock.lap("Remainder (remap)");
  }
  renumber_terms(*this);
  clock.lap("Phase 3 (parallel remap)");
}

}  // namespace zorv
