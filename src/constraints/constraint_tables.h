// The two process-wide tables behind the tags of constrained expressions, ExprExprSet and
// ConstraintSumSet. Both only grow: every constraint and every sum gets a number of its own, which
// is never used again. What a number stands for is stored once, however many numbers stand for the
// same, and never moves:
//
//   body          a polynomial
//   constraint    a body and what is required of it
//   item          a constraint with a weight, behind the other items of its sum
//   sum           items, penalty and kind
//
// A number in ExprExprSet stands for another constraint after its bounds are set; an item that came
// from a tag names the number, so it sees that. Items of declared constraints name the constraint:
// no tag leads to them.
//
// Thread rules: whatever adds something takes the tables' one mutex; reads take none. Different
// threads may build constraints at the same time, also on a sum that both of them took over.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "constraints/weighted_sequence.h"
#include "core/expr.h"

namespace zorv {

using Interval = std::pair<coeff_t, coeff_t>;  // low, high, both inside

// What is asked of a body.
struct Requirement {
  bool has_bounds = false;
  coeff_t lo, hi;                 // the hull of `allowed` if there is any
  std::vector<Interval> allowed;  // empty: lo and hi alone apply
  uint8_t shape_k = 2;            // exponent of the penalty
  uint8_t shape_kind = 0;         // 0 a requirement, 1 an abs or relu objective term

  bool operator==(const Requirement&) const = default;
};
Requirement within(const coeff_t& lo, const coeff_t& hi);
// Aborts on an empty set.
Requirement one_of(std::vector<Interval> allowed);

// A constraint, as it is stored.
struct ExprExpr : Requirement {
  const ExprImpl* body = nullptr;  // stored too; plain tag
};
uint64_t hash_of(const ExprExpr& constraint);
bool same(const ExprExpr& a, const ExprExpr& b);

// What an expression brings into a sum: constraints, and polynomials that must come to zero.
struct SumParts {
  Sequence items;
  Sequence penalty;

  bool operator==(const SumParts&) const = default;
};

struct ConstraintSum : SumParts {
  bool declared = false;
  bool shared = false;  // may no longer be appended to in place; never goes back
};

// ExprExprSet -----------------------------------------------------------------------------------

// A new number for the constraint; the body's tag is reset to plain.
uint32_t add_expr_expr(ExprImpl body, Requirement requirement = {});
// The constraint; aborts with `bad_index` if there is none.
const ExprExpr& expr_expr(uint32_t index, const char* bad_index = "ExprExprSet: meta bad index");
void set_bounds(uint32_t index, const coeff_t& lo, const coeff_t& hi);
// Replaces the allowed values; bounds become their hull. Aborts on an empty set.
void set_allowed(uint32_t index, std::vector<Interval> allowed);

// ConstraintSumSet ------------------------------------------------------------------------------

// A new number for the sum.
uint32_t add_constraint_sum(const SumParts& parts, bool declared);
ConstraintSum constraint_sum(uint32_t index);
void mark_sum_shared(uint32_t index);
// Appends to the sum itself unless it is shared; tells whether it did.
bool append_to_sum(uint32_t index, const SumParts& parts);

// Parts -----------------------------------------------------------------------------------------

// The parts that a tag names, a single constraint being one item of weight 1. Nothing for tags that
// name no constraint.
SumParts parts_of(uint32_t attr);
// A polynomial that must come to zero.
SumParts penalty_part(ExprImpl polynomial);
// Adds a constraint that no tag names. It takes a number in ExprExprSet all the same.
void append_constraint(SumParts& parts, ExprImpl body, Requirement requirement,
                       const coeff_t& weight);
SumParts joined(const SumParts& a, const SumParts& b);
SumParts scaled(const SumParts& parts, const coeff_t& factor);

// Reading parts ---------------------------------------------------------------------------------

struct ConstraintItem {
  const ExprExpr* constraint;
  const coeff_t* weight;
};
uint64_t item_count(const SumParts& parts);
ConstraintItem item_at(const SumParts& parts, uint64_t i);  // in O(log n); unchecked
std::vector<ConstraintItem> items_of(const SumParts& parts);

inline bool has_remainder(const SumParts& parts) { return !parts.penalty.is_empty(); }
// The sum of the polynomials that must come to zero, as one; plain tag.
ExprImpl remainder_of(const SumParts& parts);
// The sum of their values.
using Evaluation = std::function<coeff_t(const ExprImpl&)>;
coeff_t remainder_value(const SumParts& parts, const Evaluation& value_of);

// What is stored --------------------------------------------------------------------------------

struct ConstraintTableSizes {
  uint64_t expr_exprs, sums;  // numbers given out
  uint64_t bodies, constraints, items, sum_contents;

  bool operator==(const ConstraintTableSizes&) const = default;
};
ConstraintTableSizes constraint_table_sizes();

}  // namespace zorv
