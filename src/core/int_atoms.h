// What the core has to ask about integer atoms; the answers are defined in integer/int_var.cpp.
#pragma once

#include <cstdint>
#include <string>

namespace zorv {

// Appends the display name of the atom with this index and returns true; false if unknown.
bool append_atom_name(uint32_t index, std::string& text);
void reset_int_variables();

}  // namespace zorv
