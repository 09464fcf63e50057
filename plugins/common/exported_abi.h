// The contract of solver libraries, with everything in it exported while the rest of a library is
// hidden. Included instead of the header itself.
#pragma once

#pragma GCC visibility push(default)
#include "zorv/solver_abi.h"
#pragma GCC visibility pop
