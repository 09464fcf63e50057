#include "constraints/array_constraints.h"

#include "arrays/elementwise.h"
#include "constraints/expand_cons.h"
#include "core/arithmetic.h"
#include "core/fatal.h"
#include "core/simplify.h"

namespace zorv {

namespace {

ExprImpl as_expression(const ExprImpl& e) { return plain_copy(e); }
template <typename T>
ExprImpl as_expression(const T& element) {
  ExprImpl e;
  accumulate(e, element);
  return e;
}

coeff_t highest(const ExprImpl& e) {
  const ExprImpl simplified = expr_simplify_as_binary(e);
  auto bound = coeff_t(simplified.constant);
  simplified.list.for_each([&](const TermImpl& t) {
    if (!is_negative(t.coeff)) bound += t.coeff;
  });
  return bound;
}

coeff_t lowest(const ExprImpl& e) {
  const ExprImpl simplified = expr_simplify_as_binary(e);
  auto bound = coeff_t(simplified.constant);
  simplified.list.for_each([&](const TermImpl& t) {
    if (is_negative(t.coeff)) bound += t.coeff;
  });
  return bound;
}

coeff_t bound_at(const ElementBound& bound, uint64_t i, const ExprImpl& e,
                 coeff_t (*own)(const ExprImpl&)) {
  if (bound.value != nullptr) return *bound.value;
  return bound.values != nullptr ? (*bound.values)[i] : own(e);
}

void require_shape(const ElementBound& bound, const Shape& shape, const char* message) {
  if (bound.values != nullptr && bound.values->shape != shape) fatal(message);
}

ExprImpl constraint(ExprImpl penalty, ExprImpl body, const coeff_t& lo, const coeff_t& hi) {
  penalty.attr = kExprExprTag | add_expr_expr(std::move(body), within(lo, hi));
  return penalty;
}

}  // namespace

template <typename T>
ArrayImpl<ExprImpl> between_elements(const ArrayImpl<T>& a, ElementBound lo, ElementBound hi) {
  require_shape(lo, a.shape, "Array range constraint: lower-bound array shape mismatch");
  require_shape(hi, a.shape, "Array range constraint: upper-bound array shape mismatch");
  return make_array<ExprImpl>(
      a.shape,
      [&](uint64_t i) {
        ExprImpl body = as_expression(a[i]);
        const coeff_t low = bound_at(lo, i, body, lowest);
        const coeff_t high = bound_at(hi, i, body, highest);
        ExprImpl penalty = between(body, low, high);
        return constraint(std::move(penalty), std::move(body), low, high);
      },
      kInOrder);
}

template <typename T>
ArrayImpl<ExprImpl> equal_elements(const ArrayImpl<T>& a, ElementBound value) {
  require_shape(value, a.shape, "Array == Array<int>: shape mismatch");
  return make_array<ExprImpl>(a.shape, [&](uint64_t i) {
    ExprImpl body = as_expression(a[i]);
    const coeff_t& target = value.value != nullptr ? *value.value : (*value.values)[i];
    ExprImpl penalty = between(body, target, target);
    return constraint(std::move(penalty), std::move(body), target, target);
  });
}

#define ZORV_FOR_KIND(T)                                                                          \
  template ArrayImpl<ExprImpl> between_elements(const ArrayImpl<T>&, ElementBound, ElementBound); \
  template ArrayImpl<ExprImpl> equal_elements(const ArrayImpl<T>&, ElementBound);
ZORV_FOR_KIND(uint32_t)
ZORV_FOR_KIND(coeff_t)
ZORV_FOR_KIND(TermImpl)
ZORV_FOR_KIND(ExprImpl)
#undef ZORV_FOR_KIND

}  // namespace zorv
