#include "core/decimal.h"

namespace zorv {

std::string decimal(const coeff_t& value) { return value.str(); }

}  // namespace zorv
