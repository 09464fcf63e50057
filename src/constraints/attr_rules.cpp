#include "core/attr_rules.h"

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
  SumParts parts = parts_of(attr);
  if (!is_constraint_attr(attr) && !declared) parts.remainder = polynomial;
  return parts;
}

// A new entry with the rewritten body and everything else as in the old one.
uint32_t rewritten_entry(uint32_t index, const Rewrite& rewrite) {
  const uint32_t rewritten = add_expr_expr(rewrite(*expr_expr(index).body));
  copy_metadata(rewritten, index);
  return rewritten;
}

ConstraintSum rewritten_sum(const ConstraintSum& sum, const Rewrite& rewrite) {
  ConstraintSum rewritten;
  rewritten.declared = sum.declared;
  rewritten.items.reserve(sum.items.size());
  for (const ConstraintItem& item : sum.items) {
    rewritten.items.push_back({rewritten_entry(item.index, rewrite), item.weight});
  }
  if (sum.remainder != nullptr) {
    rewritten.remainder = std::make_unique<ExprImpl>(rewrite(*sum.remainder));
  }
  return rewritten;
}

uint32_t attr_of_new(ConstraintSum sum) { return kSumTag | add_constraint_sum(std::move(sum)); }

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
  ConstraintSum sum;
  sum.declared = declared;
  append_parts(sum, parts_of_operand(a, left, declared));
  append_parts(sum, parts_of_operand(b, right, declared));
  return attr_of_new(std::move(sum));
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
  ConstraintSum sum;
  sum.declared = declared;
  for (uint64_t i = 0; i < n; ++i)
    append_parts(sum, parts_of_operand(at(i).attr, &at(i), declared));
  return attr_of_new(std::move(sum));
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

  ConstraintSum scaled;
  scaled.declared = declared;
  append_parts(scaled, parts_of(a));
  for (ConstraintItem& item : scaled.items) item.weight *= factor;
  if (scaled.remainder != nullptr) imul_int(*scaled.remainder, factor);
  return attr_of_new(std::move(scaled));
}

uint32_t rewritten_attr(uint32_t attr, const Rewrite& rewrite) {
  if (!is_constraint_attr(attr)) return attr;
  const uint32_t index = attr_index(attr);
  if (is_expr_expr_attr(attr)) return kExprExprTag | rewritten_entry(index, rewrite);
  return attr_of_new(rewritten_sum(constraint_sum(index), rewrite));
}

}  // namespace zorv
