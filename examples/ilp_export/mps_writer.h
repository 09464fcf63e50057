// An integer linear program in free MPS format.
#pragma once

#include <iosfwd>
#include <zorv/zorv.hpp>

void write_mps(const zorv::Ilp& ilp, std::ostream& out);
