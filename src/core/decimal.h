// A coefficient in decimal digits, with a leading "-" if it is negative.
#pragma once

#include <string>

#include "core/coeff.h"

namespace zorv {

std::string decimal(const coeff_t& value);

}  // namespace zorv
