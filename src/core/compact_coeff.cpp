#include "core/compact_coeff.h"

namespace zorv {

namespace {

// Stores the value in a word if it is small, and tells whether it is.
bool fits_in(int64_t& word, const coeff_t& value) {
  const auto& magnitude = value.backend();
  if (magnitude.size() != 1) return false;
  const uint64_t limb = *magnitude.limbs();
  const bool is_negative = magnitude.sign();
  if (limb > static_cast<uint64_t>(CompactCoeff::kMostSmall) + (is_negative ? 1 : 0)) return false;
  word = is_negative ? -static_cast<int64_t>(limb) : static_cast<int64_t>(limb);
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

coeff_t CompactCoeff::take() {
  const CompactCoeff taken = std::move(*this);
  if (taken.is_small()) return taken.small();
  const bool is_shared = taken.block()->users.load(std::memory_order_acquire) != 1;
  return is_shared ? taken.large() : std::move(taken.block()->value);
}

void CompactCoeff::add_large(const CompactCoeff& other) {
  const CompactCoeff summand = other;  // `other` may be this one
  coeff_t sum = take();
  sum += summand;
  *this = CompactCoeff(std::move(sum));
}

void CompactCoeff::subtract_large(const CompactCoeff& other) {
  const CompactCoeff subtrahend = other;
  coeff_t difference = take();
  difference -= subtrahend;
  *this = CompactCoeff(std::move(difference));
}

CompactCoeff CompactCoeff::multiply_large(const CompactCoeff& a, const CompactCoeff& b) {
  if (!a.is_small() && !b.is_small()) return a.large() * b.large();
  auto product = coeff_t(b);
  product *= a;
  return product;
}

}  // namespace zorv
