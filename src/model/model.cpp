#include "model/model.h"

#include <algorithm>

#include "core/attr_rules.h"
#include "core/fatal.h"
#include "core/literal.h"

namespace zorv {

namespace {

ConstraintListImpl list_of(const ConstraintSum& sum) {
  return {items_of(sum), remainder_of(sum), has_remainder(sum)};
}

}  // namespace

ModelHandle make_model(const ExprImpl& e) {
  if (!carries_declared(e.attr)) return std::make_shared<const ModelImpl>(e, 1.0, nullptr);
  const ConstraintListImpl constraints = list_of(constraint_sum(attr_index(e.attr)));
  return std::make_shared<const ModelImpl>(e, 1.0, &constraints);
}

bool model_has(const ModelImpl& m, uint32_t literal) {
  return model_var_index(m, literal) != kNoLiteral;
}

uint32_t model_var_index(const ModelImpl& m, uint32_t literal) {
  const uint32_t id = identity_of(literal);
  return id < m.index_map.size() ? m.index_map[id] : kNoLiteral;
}

uint64_t term_count_of_degree(const ModelImpl& m, uint32_t degree) {
  return degree == 0 ? 0 : m.term_count[degree - 1];
}

const uint32_t* term_vars_of_degree(const ModelImpl& m, uint32_t degree) {
  return degree == 0 ? nullptr : m.term_vars[degree - 1].data();
}

const coeff_t* term_coeffs_of_degree(const ModelImpl& m, uint32_t degree) {
  return degree == 0 ? nullptr : m.term_coeffs[degree - 1].data();
}

bool has_negated_literals(const ModelImpl& m) {
  return std::any_of(m.term_vars.begin(), m.term_vars.end(), [](const auto& literals) {
    return std::any_of(literals.begin(), literals.end(), is_negated);
  });
}

bool has_penalty_shapes(const ModelImpl& m) {
  return !std::all_of(m.native_cons.begin(), m.native_cons.end(),
                      [](const NativeCons& cons) { return cons.has_default_shape(); });
}

uint32_t model_atom(const ModelImpl& m, uint64_t i) {
  if (i >= m.int_atoms.size()) fatal("zorv_model_int_var_orig: index out of range");
  return atom_literal(m.int_atoms[i]);
}

AtomBounds model_atom_bounds(const ModelImpl& m, uint64_t i) {
  if (i >= m.int_atoms.size()) fatal("zorv_model_int_var_bounds: index out of range");
  return {m.int_lo[i], m.int_hi[i]};
}

const NativeCons& linear_native_cons(const ModelImpl& m, uint64_t i) {
  const NativeCons& cons = m.native_cons[i];
  if (!cons.nl_coeffs.empty()) {
    fatal(
        "MIP/ILP solvers do not support nonlinear (degree>=2) constraint bodies inside cons(). "
        "Call expand_cons() on the expression to get the classic penalty form, or use a bundled "
        "heuristic solver (EasySolver/ExhaustiveSolver/KLB5Solver).");
  }
  if (!cons.allowed.empty()) {
    fatal(
        "MIP/ILP solvers do not support allowed-value set constraints (equal{...}) inside cons(). "
        "Use a bundled heuristic solver (EasySolver/ExhaustiveSolver/KLB5Solver).");
  }
  return cons;
}

}  // namespace zorv
