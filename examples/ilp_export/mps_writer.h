// An integer linear program in free MPS format.
#pragma once

#include <iosfwd>

#include "zorv/zorv.h"

void write_mps(const zorv_ilp* ilp, std::ostream& out);
