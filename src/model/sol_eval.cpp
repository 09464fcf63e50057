// The value of an expression on a solution. Unlike the questions about a single variable it does
// not abort on one that the model does not have: a term with such a variable or atom counts as 0.
#include "constraints/inspection.h"
#include "constraints/sol_value.h"
#include "core/attr_rules.h"
#include "core/coeff_sum.h"
#include "core/fatal.h"
#include "core/literal.h"
#include "model/bit_words.h"
#include "model/sol.h"
#include "zorv/exact_range.h"

namespace zorv {

namespace {

// Values by model index; `int_vals` may be null where no atom is asked for.
struct ModelValues {
  const ModelImpl& model;
  const uint64_t* bits;
  const coeff_t* int_vals;

  // Null if the model does not have the atom.
  const coeff_t* value_of_atom(uint32_t literal) const {
    const std::vector<uint32_t>& map = model.int_index_map;
    const uint32_t index = index_of(literal);
    if (index >= map.size() || map[index] == kNoLiteral) return nullptr;
    return &int_vals[map[index]];
  }
  // Not if the model does not have the variable, negated or not.
  bool holds(uint32_t literal) const {
    const uint32_t i = model_var_index(model, literal);
    return i != kNoLiteral && bit_at(bits, i) != is_negated(literal);
  }
};

void add_term(const TermImpl& term, const ModelValues& at, CoeffSum& sum) {
  bool has_atoms = false;
  for (const uint32_t literal : term.vars) {
    if (is_atom(literal)) {
      if (at.value_of_atom(literal) == nullptr) return;
      has_atoms = true;
    } else if (!at.holds(literal)) {
      return;
    }
  }
  if (!has_atoms) {
    sum += term.coeff;
    return;
  }
  auto product = coeff_t(term.coeff);
  for (const uint32_t literal : term.vars) {
    if (is_atom(literal)) product *= *at.value_of_atom(literal);
  }
  sum += product;
}

coeff_t polynomial_value(const ExprImpl& e, const ModelValues& at) {
  CoeffSum sum(e.constant);
  e.list.for_each([&](const TermImpl& term) { add_term(term, at, sum); });
  return sum.total();
}

}  // namespace

coeff_t polynomial_value(const ExprImpl& e, const Sol& sol) {
  return polynomial_value(e, {*sol.model, sol.bits.data(), sol.int_vals.data()});
}

coeff_t value_on_bits(const ExprImpl& e, const ModelImpl& m, const uint64_t* bits) {
  refuse_declared(e.attr, "eval_with_model (evaluate against a Sol instead)");
  if (has_int_atom(e)) {
    fatal(
        "eval_with_model: native integer variables (int_var) are not supported yet (bit "
        "assignments cannot value integer atoms).");
  }
  return polynomial_value(e, {m, bits, nullptr});
}

coeff_t sol_eval(const Sol& sol, const ExprImpl& e) {
  coeff_t value = polynomial_value(e, sol);
  if (!carries_declared(e.attr)) return value;
  const ConstraintSum constraints = constraint_sum(attr_index(e.attr));
  for (const ConstraintItem& item : items_of(constraints)) {
    const ExprExpr& entry = *item.constraint;
    const coeff_t violation = violation_of(entry, polynomial_value(*entry.body, sol));
    value += penalty(*item.weight, violation, entry.shape_k);
  }
  return value + remainder_value(constraints,
                                 [&](const ExprImpl& part) { return polynomial_value(part, sol); });
}

}  // namespace zorv
