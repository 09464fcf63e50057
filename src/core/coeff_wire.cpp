#include "core/coeff_wire.h"

#include <cstdlib>
#include <new>

namespace zorv {

coeff_t read_wire(const CoeffWire* wire) {
  if (wire->sign == 0 || wire->nlimbs == 0) return 0;
  coeff_t value;
  auto& magnitude = value.backend();
  magnitude.resize(wire->nlimbs, wire->nlimbs);
  std::memcpy(magnitude.limbs(), wire->limbs, wire->nlimbs * sizeof(uint64_t));
  magnitude.normalize();  // drops leading zero limbs
  if (wire->sign < 0) negate(value);
  return value;
}

void write_wire(const coeff_t& value, CoeffWire* out) {
  CoeffWire fresh = {0, 0, nullptr};
  if (!is_zero(value)) {
    const auto& magnitude = value.backend();
    const uint32_t n = magnitude.size();
    fresh.sign = magnitude.sign() ? -1 : 1;
    fresh.nlimbs = n;
    fresh.limbs = static_cast<uint64_t*>(std::malloc(n * sizeof(uint64_t)));
    if (fresh.limbs == nullptr) throw std::bad_alloc();
    std::memcpy(fresh.limbs, magnitude.limbs(), n * sizeof(uint64_t));
  }
  std::free(out->limbs);
  *out = fresh;
}

}  // namespace zorv
