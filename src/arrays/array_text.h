// Arrays as nested text: {{a,b},{c,d}}, "{}" for rank 0 and for an axis without positions.
#pragma once

#include <string>

#include "arrays/array.h"

namespace zorv {

std::string array_text(const ArrayImpl<uint32_t>& a);
std::string array_text(const ArrayImpl<coeff_t>& a);
std::string array_text(const ArrayImpl<TermImpl>& a);
std::string array_text(const ArrayImpl<ExprImpl>& a);

}  // namespace zorv
