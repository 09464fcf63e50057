#include "integer/reachable_bounds.h"

#include <algorithm>

#include "core/fatal.h"
#include "core/simplify.h"
#include "integer/int_var.h"

namespace zorv {

namespace {

ReachableBounds product(const ReachableBounds& a, const ReachableBounds& b) {
  const auto [lo, hi] = std::minmax({a.lo * b.lo, a.lo * b.hi, a.hi * b.lo, a.hi * b.hi});
  return {lo, hi};
}

ReachableBounds bounds_of_literal(uint32_t literal) {
  if (!is_atom(literal)) return {0, 1};
  const IntVarGroup* group = IntVarRegistry::instance().find(index_of(literal));
  if (group == nullptr) fatal("reachable bounds: unknown integer variable");
  return {group->lo, group->hi};
}

}  // namespace

ReachableBounds reachable_bounds(const ExprImpl& e) {
  const ExprImpl simplified = expr_simplify_as_binary(e);
  ReachableBounds sum = {coeff_t(simplified.constant), coeff_t(simplified.constant)};
  simplified.list.for_each([&](const TermImpl& term) {
    ReachableBounds bounds = {coeff_t(term.coeff), coeff_t(term.coeff)};
    for (const uint32_t literal : term.vars) bounds = product(bounds, bounds_of_literal(literal));
    sum.lo += bounds.lo;
    sum.hi += bounds.hi;
  });
  return sum;
}

}  // namespace zorv
