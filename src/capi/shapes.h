// Extents as callers pass them.
#pragma once

#include "arrays/shape.h"

namespace zorv {

// A null pointer is fine for no axes.
inline Shape read_shape(const uint64_t* shape, size_t ndim) { return Shape(shape, shape + ndim); }

}  // namespace zorv
