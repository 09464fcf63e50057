// An integer linear program in the LP format that most solvers read, `glpsol --lp` among them.
#pragma once

#include <iosfwd>
#include <zorv/zorv.hpp>

void write_lp(const zorv::Ilp& ilp, std::ostream& out);
