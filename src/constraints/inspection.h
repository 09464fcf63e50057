// The constraints of an expression as a list of numbered items, and what they come to on a Sol.
//
//   plain, VarInt    one item: the expression itself, free-form
//   one constraint   one item, weight 1
//   a sum            its items in order, then its remainder, if any, as a free-form item
//
// A free-form item has weight 1 and bounds 0 and 0, and asks that its polynomial comes to zero.
#pragma once

#include "constraints/constraint_tables.h"

namespace zorv {

struct Sol;

uint64_t item_count(const ExprImpl& e);

struct ItemInfo {
  ExprImpl body;  // plain tag
  coeff_t weight, lo, hi;
  bool is_bounded;
};
// Aborts on a bad item number. A single constraint without bounds reads as if it were free-form.
ItemInfo item_info(const ExprImpl& e, uint64_t i);

struct ItemValue {
  coeff_t value, lo, hi, violation, weight;
};
// For a free-form item `violation` is the value, sign included; a penalty exponent plays no part.
// Aborts on a bad item number, and on a constraint without bounds.
ItemValue item_eval(const ExprImpl& e, uint64_t i, const Sol& sol);

// The two below know no bad item number. A single constraint answers to every one.
struct ItemShape {
  uint32_t k = 2;
  uint32_t kind = 0;
  bool is_recorded = false;  // whether item i is a constraint with bounds
};
ItemShape item_shape(const ExprImpl& e, uint64_t i);
const std::vector<Interval>& item_allowed(const ExprImpl& e, uint64_t i);  // empty if none

// Items that do not hold; abs and relu terms never count. Aborts without constraints.
uint64_t violation_count(const ExprImpl& e, const Sol& sol);
// The stored body of the only constraint of `e`; aborts if there is not exactly one.
const ExprImpl& only_body(const ExprImpl& e);

// Violation of an entry at a body value: 0 without bounds.
coeff_t violation_of(const ExprExpr& entry, const coeff_t& value);

}  // namespace zorv
