#include "common/coeff.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace zorv::plugin {

void write_wire(const Coeff& value, CoeffWire* out) {
  static_assert(sizeof(boost::multiprecision::limb_type) == sizeof(uint64_t));
  CoeffWire fresh = {value.sign(), 0, nullptr};
  if (fresh.sign != 0) {
    const auto& magnitude = value.backend();
    const size_t bytes = magnitude.size() * sizeof(uint64_t);
    fresh.nlimbs = magnitude.size();
    fresh.limbs = static_cast<uint64_t*>(std::malloc(bytes));
    if (fresh.limbs == nullptr) throw std::bad_alloc();
    std::memcpy(fresh.limbs, magnitude.limbs(), bytes);
  }
  std::free(out->limbs);
  *out = fresh;
}

}  // namespace zorv::plugin
