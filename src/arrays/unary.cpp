#include "arrays/unary.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>

#include "arrays/elementwise.h"
#include "core/arithmetic.h"
#include "core/fatal.h"

namespace zorv {

namespace {

template <typename T>
ArrayImpl<ExprImpl> negated_copies(const ArrayImpl<T>& a) {
  return map_array(a, [](const T& element) {
    ExprImpl e;
    deduct(e, element);
    return e;
  });
}

}  // namespace

ArrayImpl<ExprImpl> negate(const ArrayImpl<uint32_t>& a) { return negated_copies(a); }
ArrayImpl<ExprImpl> negate(const ArrayImpl<coeff_t>& a) { return negated_copies(a); }
ArrayImpl<ExprImpl> negate(const ArrayImpl<TermImpl>& a) { return negated_copies(a); }
ArrayImpl<ExprImpl> negate(const ArrayImpl<ExprImpl>& a) {
  return map_array(a, [](const ExprImpl& e) {
    ExprImpl copy = e;
    negate_tagged(copy);
    return copy;
  });
}

ArrayImpl<uint32_t> invert(const ArrayImpl<uint32_t>& a) {
  return map_array(a, [](uint32_t literal) { return literal + kNegationBit; });
}

ArrayImpl<TermImpl> coefficients_times(const ArrayImpl<coeff_t>& coeffs,
                                       const ArrayImpl<uint32_t>& vars) {
  return make_array<TermImpl>(coeffs.shape,
                              [&](uint64_t i) { return TermImpl(coeffs[i], VarList(vars[i])); });
}

void replace_elements(ArrayImpl<ExprImpl>& a, const Substitution& substitution) {
  // Into a new block, as a replacement may be an element of this very array.
  ArrayImpl<ExprImpl> replaced =
      map_array(a, [&](const ExprImpl& e) { return replace(e, substitution); });
  std::swap(a.data, replaced.data);
  std::swap(a.capacity, replaced.capacity);
}

void divide(ArrayImpl<coeff_t>& a, const coeff_t& divisor) {
  par_for(a.size, [&](uint64_t i) { a[i] /= divisor; });
}

void divide(ArrayImpl<TermImpl>& a, const coeff_t& divisor) {
  if (is_zero(divisor)) fatal("Array<Term> /=: division by zero");
  std::atomic<bool> indivisible{false};
  par_for(a.size, [&](uint64_t i) {
    if (!divide_exactly(a[i].coeff, divisor)) indivisible.store(true, std::memory_order_relaxed);
  });
  if (indivisible) fatal("Array<Term> /=: indivisible coefficient");
}

void divide(ArrayImpl<ExprImpl>& a, const coeff_t& divisor) {
  if (is_zero(divisor)) fatal("Array<Expr> /=: division by zero");
  par_for(a.size, [&](uint64_t i) { idiv_int(a[i], divisor); });
}

void saturate(const ArrayImpl<coeff_t>& a, int32_t* out) {
  const coeff_t lowest = std::numeric_limits<int32_t>::min();
  const coeff_t highest = std::numeric_limits<int32_t>::max();
  for (uint64_t i = 0; i < a.size; ++i) {
    out[i] = static_cast<int32_t>(std::clamp(a[i], lowest, highest));
  }
}

}  // namespace zorv
