#include "core/decimal.h"

// g++ 12 sees an overlapping copy in the library's own string code where there is none.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wrestrict"
#endif

namespace zorv {

std::string decimal(const coeff_t& value) { return value.str(); }

}  // namespace zorv
