#include "core/compact_coeff.h"

namespace zorv {

namespace {

// Stores the word of the value if it is small, and tells whether it is.
bool fits_in(int64_t& word, const coeff_t& value) {
  const auto& magnitude = value.backend();
  if (magnitude.size() != 1) return false;
  const uint64_t limb = *magnitude.limbs();
  const bool is_negative = magnitude.sign();
  if (limb > static_cast<uint64_t>(CompactCoeff::kMostSmall) + (is_negative ? 1 : 0)) return false;
  word = 2 * (is_negative ? -static_cast<int64_t>(limb) : static_cast<int64_t>(limb));
  return true;
}

}  // namespace

CompactCoeff::CompactCoeff(const coeff_t& value) {
  if (!fits_in(word_, value)) hold(new Block{value});
}

CompactCoeff::CompactCoeff(coeff_t&& value) {
  if (!fits_in(word_, value)) hold(new Block{std::move(value)});
}

void CompactCoeff::release() {
  // The last user must see what the others did with the block.
  if (block()->users.fetch_sub(1, std::memory_order_acq_rel) == 1) delete block();
}

void CompactCoeff::add_large(const CompactCoeff& other) {
  coeff_t sum(*this);
  sum += other;
  *this = CompactCoeff(std::move(sum));
}

void CompactCoeff::subtract_large(const CompactCoeff& other) {
  coeff_t difference(*this);
  difference -= other;
  *this = CompactCoeff(std::move(difference));
}

CompactCoeff CompactCoeff::multiply_large(const CompactCoeff& a, const CompactCoeff& b) {
  if (!a.is_small() && !b.is_small()) return a.large() * b.large();
  auto product = coeff_t(b);
  product *= a;
  return product;
}

}  // namespace zorv
