// An integer linear program in the LP format that most solvers read, `glpsol --lp` among them.
#pragma once

#include <iosfwd>

#include "zorv/zorv.h"

void write_lp(const zorv_ilp* ilp, std::ostream& out);
