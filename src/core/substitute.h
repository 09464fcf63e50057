// Expressions in place of literals.
#pragma once

#include "core/expr.h"
#include "core/literal_map.h"

namespace zorv {

// What stands in place of which literal. Keys are raw literals: an expression for x leaves ~x
// alone. The expressions stay with the caller; their tags are left aside.
class Substitution {
 public:
  // exprs[i] takes the place of literals[i], for i below n; of two equal literals the later counts.
  Substitution(const uint32_t* literals, const ExprImpl* const* exprs, uint64_t n);

  const ExprImpl* find(uint32_t literal) const { return map_.find(literal); }
  // Whether an expression holds terms with a coefficient of 0.
  bool has_zero_terms() const { return has_zero_terms_; }

 private:
  LiteralMap<ExprImpl> map_;
  bool has_zero_terms_ = false;
};

// What becomes of a term without literals.
enum class TermsOfDegree0 { kJoinConstant, kStay };

// The polynomial of `e` with each term in turn multiplied out, factor by factor from the left in
// the manner of mul(), and not merged. Terms with a coefficient of 0 are dropped.
ExprImpl substitute(const ExprImpl& e, const Substitution& substitution, TermsOfDegree0 degree_0);

// The same for an expression with what it carries: in declared constraints the bodies and the
// remainder are rewritten too, into new entries. Any other tag is cleared.
ExprImpl replace(const ExprImpl& e, const Substitution& substitution);

}  // namespace zorv
