// The two process-wide tables behind the tags of constrained expressions. Both only grow, and their
// entries never move, so a reference to an entry stays good for the life of the process.
//
// Thread rules: appends, and every change of an entry, take the table's mutex; reads take none.
// Different threads may build constraints at the same time; whoever inspects an entry must know
// that nobody changes that very entry meanwhile.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "core/expr.h"

namespace zorv {

using Interval = std::pair<coeff_t, coeff_t>;  // low, high, both inside

// One constraint: what is constrained, and to what.
struct ExprExpr {
  std::unique_ptr<const ExprImpl> body;  // plain tag; never changes
  bool has_bounds = false;
  coeff_t lo, hi;                 // the hull of `allowed` if there is any
  std::vector<Interval> allowed;  // empty: lo and hi alone apply
  uint8_t shape_k = 2;            // exponent of the penalty
  uint8_t shape_kind = 0;         // 0 a requirement, 1 an abs or relu objective term
};

// A constraint of a sum, with its weight.
struct ConstraintItem {
  uint32_t index;  // into ExprExprSet
  coeff_t weight;
};

struct ConstraintSum {
  std::vector<ConstraintItem> items;    // in order of arrival
  std::unique_ptr<ExprImpl> remainder;  // free-form penalty, plain tag; null if there is none
  bool declared = false;
  bool shared = false;  // may no longer be appended to in place; never goes back
};

// What an expression brings into a sum.
struct SumParts {
  std::vector<ConstraintItem> items;
  const ExprImpl* remainder = nullptr;  // null if there is none; otherwise only lent
};

// ExprExprSet -----------------------------------------------------------------------------------

// Stores an entry with this body, its tag reset to plain, and without bounds; returns its index.
uint32_t add_expr_expr(ExprImpl body);
// The entry; aborts with `bad_index` if there is none.
const ExprExpr& expr_expr(uint32_t index, const char* bad_index = "ExprExprSet: meta bad index");
void set_bounds(uint32_t index, const coeff_t& lo, const coeff_t& hi);
// Replaces the allowed values; bounds become their hull. Aborts on an empty set.
void set_allowed(uint32_t index, std::vector<Interval> allowed);
void set_penalty_shape(uint32_t index, uint8_t k, uint8_t kind);
// Everything but the body, from one entry to another; silently nothing for a bad index.
void copy_metadata(uint32_t to, uint32_t from);

// ConstraintSumSet ------------------------------------------------------------------------------

// Stores the sum and returns its index.
uint32_t add_constraint_sum(ConstraintSum sum);
const ConstraintSum& constraint_sum(uint32_t index);
void mark_sum_shared(uint32_t index);
// Appends to the sum itself unless it is shared; tells whether it did. The remainder of `parts` may
// be the sum's own.
bool append_to_sum(uint32_t index, SumParts parts);

// The items and the remainder that a tag names, a single constraint being one item of weight 1.
// Nothing for tags that name no constraint.
SumParts parts_of(uint32_t attr);
// Adds `parts` behind what a sum has; a remainder that was not there starts as a copy.
void append_parts(ConstraintSum& sum, SumParts parts);

}  // namespace zorv
