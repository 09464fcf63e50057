// abs and relu: bounds are chosen so that the violation of the constraint is the wanted function,
// and the exponent is recorded beside them.
#include <algorithm>

#include "constraints/declare.h"
#include "core/attr_rules.h"
#include "core/fatal.h"
#include "integer/reachable_bounds.h"

namespace zorv {

namespace {

constexpr uint8_t kObjectiveKind = 1;

void check_shape(const ExprImpl& f, uint32_t k, const char* term) {
  refuse_declared(f.attr, "abs/relu body carrying declared constraints");
  if (k != 1 && k != 2) {
    fatal("zorv::", term, ": the exponent k must be 1 or 2 (got ", static_cast<int32_t>(k), ")");
  }
}

ExprImpl shaped_term(const ExprImpl& f, const coeff_t& lo, uint32_t k) {
  return declared_constraint(f, {true, lo, 0, {}, static_cast<uint8_t>(k), kObjectiveKind});
}

}  // namespace

ExprImpl abs_term(const ExprImpl& f, uint32_t k) {
  check_shape(f, k, "abs");
  return shaped_term(f, 0, k);
}

ExprImpl relu_term(const ExprImpl& f, uint32_t k) {
  check_shape(f, k, "relu");
  return shaped_term(f, std::min<coeff_t>(reachable_bounds(f).lo, 0), k);
}

}  // namespace zorv
