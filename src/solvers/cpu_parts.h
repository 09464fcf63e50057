// Names of processors that identify themselves by number only.
#pragma once

#include <string_view>

namespace zorv {

// The marketing name behind the implementer code and the part number of a processor's main ID
// register, or an empty text for a pair that is not in the table.
std::string_view cpu_part_name(unsigned long implementer, unsigned long part);

}  // namespace zorv
