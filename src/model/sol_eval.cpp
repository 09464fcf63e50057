// The value of an expression on a solution. Unlike the questions about a single variable it never
// aborts: a term with a variable or an atom that the model does not have counts as 0.
#include "constraints/inspection.h"
#include "constraints/sol_value.h"
#include "constraints/violation.h"
#include "core/attr_rules.h"
#include "core/literal.h"
#include "model/bit_words.h"
#include "model/sol.h"

namespace zorv {

namespace {

// The value of the atom; null if the model does not have it.
const coeff_t* value_of_atom(const Sol& sol, uint32_t literal) {
  const std::vector<uint32_t>& map = sol.model->int_index_map;
  const uint32_t index = index_of(literal);
  if (index >= map.size() || map[index] == kNoLiteral) return nullptr;
  return &sol.int_vals[map[index]];
}

bool holds(const Sol& sol, uint32_t literal) {
  const uint32_t i = model_var_index(*sol.model, literal);
  return i != kNoLiteral && bit_at(sol.bits.data(), i) != is_negated(literal);
}

void add_term(const TermImpl& term, const Sol& sol, coeff_t& sum) {
  bool has_atoms = false;
  for (const uint32_t literal : term.vars) {
    if (is_atom(literal)) {
      if (value_of_atom(sol, literal) == nullptr) return;
      has_atoms = true;
    } else if (!holds(sol, literal)) {
      return;
    }
  }
  if (!has_atoms) {
    sum += term.coeff;
    return;
  }
  coeff_t product = term.coeff;
  for (const uint32_t literal : term.vars) {
    if (is_atom(literal)) product *= *value_of_atom(sol, literal);
  }
  sum += product;
}

}  // namespace

coeff_t polynomial_value(const ExprImpl& e, const Sol& sol) {
  coeff_t sum = e.constant;
  e.list.for_each([&](const TermImpl& term) { add_term(term, sol, sum); });
  return sum;
}

coeff_t sol_eval(const Sol& sol, const ExprImpl& e) {
  coeff_t value = polynomial_value(e, sol);
  if (!carries_declared(e.attr)) return value;
  const ConstraintSum& constraints = constraint_sum(attr_index(e.attr));
  for (const ConstraintItem& item : constraints.items) {
    const ExprExpr& entry = expr_expr(item.index);
    const coeff_t violation = violation_of(entry, polynomial_value(*entry.body, sol));
    value += penalty(item.weight, violation, entry.shape_k);
  }
  if (constraints.remainder != nullptr) value += polynomial_value(*constraints.remainder, sol);
  return value;
}

}  // namespace zorv
