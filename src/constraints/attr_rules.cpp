#include "core/attr_rules.h"

#include <optional>

#include "constraints/constraint_tables.h"
#include "constraints/declare.h"
#include "core/arithmetic.h"
#include "core/fatal.h"

namespace zorv {

namespace {

bool is_classic(uint32_t attr) { return is_constraint_attr(attr) && !carries_declared(attr); }

// What an operand of a sum brings in. An unconstrained polynomial is a penalty among classic
// constraints; beside declared ones it stays what it is, part of the objective.
SumParts parts_of_operand(uint32_t attr, const ExprImpl* polynomial, bool declared) {
  if (is_constraint_attr(attr) || declared || polynomial == nullptr) return parts_of(attr);
  return penalty_part(plain_copy(*polynomial));
}

SumParts rewritten_parts(const SumParts& parts, const Rewrite& rewrite) {
  SumParts rewritten;
  for (const ConstraintItem& item : items_of(parts)) {
    append_constraint(rewritten, rewrite(*item.constraint->body), *item.constraint, *item.weight);
  }
  if (!has_remainder(parts)) return rewritten;
  return joined(rewritten, penalty_part(rewrite(remainder_of(parts))));
}

uint32_t attr_of_new(const SumParts& parts, bool declared) {
  return kSumTag | add_constraint_sum(parts, declared);
}

}  // namespace

bool carries_declared(uint32_t attr) {
  return is_sum_attr(attr) && constraint_sum(attr_index(attr)).declared;
}

void refuse_declared(uint32_t attr, const char* op) {
  if (carries_declared(attr)) {
    fatal("zorv::cons: '", op, "' is not allowed on an expression with declared constraints");
  }
}

void mark_shared(uint32_t attr) {
  if (is_sum_attr(attr)) mark_sum_shared(attr_index(attr));
}

uint32_t combine(uint32_t a, const ExprImpl* left, uint32_t b, const ExprImpl* right,
                 bool in_place) {
  if (!is_constraint_attr(a) && !is_constraint_attr(b)) return kPlainAttr;
  const bool declared = carries_declared(a) || carries_declared(b);
  if (declared && (is_classic(a) || is_classic(b))) {
    fatal(
        "zorv::cons: cannot mix declared constraints with classic penalty-style constraints in one "
        "expression; wrap the classic part with zorv::cons(...) as well");
  }
  if (in_place && is_sum_attr(a) &&
      append_to_sum(attr_index(a), parts_of_operand(b, right, declared))) {
    return a;
  }
  return attr_of_new(
      joined(parts_of_operand(a, left, declared), parts_of_operand(b, right, declared)), declared);
}

uint32_t sum_attr(uint64_t n, const std::function<const ExprImpl&(uint64_t)>& at) {
  bool declared = false;
  bool classic = false;
  for (uint64_t i = 0; i < n; ++i) {
    declared = declared || carries_declared(at(i).attr);
    classic = classic || is_classic(at(i).attr);
  }
  if (declared && classic) {
    fatal("zorv::cons: cannot sum declared and classic penalty-style constraints in one array");
  }
  if (!declared && !classic) return kPlainAttr;
  SumParts parts;
  std::optional<ExprImpl> penalty;  // as one polynomial, not one for each plain element
  const auto add_penalty = [&](const ExprImpl& polynomial) {
    if (penalty.has_value()) {
      add_poly(*penalty, polynomial);
    } else {
      penalty = plain_copy(polynomial);
    }
  };
  for (uint64_t i = 0; i < n; ++i) {
    const uint32_t attr = at(i).attr;
    const SumParts element = parts_of(attr);
    parts = joined(parts, {element.items, {}});
    if (has_remainder(element)) add_penalty(remainder_of(element));
    if (!is_constraint_attr(attr) && !declared) add_penalty(at(i));
  }
  if (penalty.has_value()) parts = joined(parts, penalty_part(*std::move(penalty)));
  return attr_of_new(parts, declared);
}

uint32_t scale(uint32_t a, const coeff_t& factor) {
  if (!is_constraint_attr(a)) return kPlainAttr;
  const bool declared = carries_declared(a);
  if (declared && is_zero(factor)) {
    if (all_objective_only(a)) return kPlainAttr;
    fatal("zorv::cons: multiplying declared constraints by 0 would silently drop them");
  }
  // Times 0 or a negative factor a classic penalty asks for nothing any more.
  if (!declared && factor <= 0) return kPlainAttr;

  return attr_of_new(scaled(parts_of(a), factor), declared);
}

uint32_t rewritten_attr(uint32_t attr, const Rewrite& rewrite) {
  if (!is_constraint_attr(attr)) return attr;
  const uint32_t index = attr_index(attr);
  if (is_expr_expr_attr(attr)) {
    const ExprExpr& constraint = expr_expr(index);
    return kExprExprTag | add_expr_expr(rewrite(*constraint.body), constraint);
  }
  const ConstraintSum sum = constraint_sum(index);
  return attr_of_new(rewritten_parts(sum, rewrite), sum.declared);
}

}  // namespace zorv
