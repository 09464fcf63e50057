// Extents and strides of dense row-major arrays. Counts are products of unsigned 64-bit extents,
// with no check of overflow; the product over no axes is 1.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zorv {

using Shape = std::vector<uint64_t>;

uint64_t element_count(const Shape& shape);
// Product of the extents [begin, end).
uint64_t element_count(const Shape& shape, size_t begin, size_t end);
// Elements from one position of an axis to the next; 1 for the last axis.
std::vector<uint64_t> row_major_strides(const Shape& shape);
// `shape` without one of its axes.
Shape without_axis(const Shape& shape, size_t axis);
// Aborts unless the two shapes are equal; `sign` is the operator's own.
void require_equal_shapes(const Shape& left, const Shape& right, const char* sign);

// What makes up the offsets of the elements that one index steps over: a stride for each of its
// coordinates. An array seen along some of its axes.
struct Walk {
  Shape extents;
  std::vector<uint64_t> strides;
};
// All axes of an array but one.
Walk walk_around(const Shape& shape, size_t axis);
// The offset of position i of the walk.
uint64_t offset_of(uint64_t i, const Walk& walk);

}  // namespace zorv
