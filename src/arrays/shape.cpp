#include "arrays/shape.h"

#include "core/fatal.h"

namespace zorv {

namespace {

std::string text_of(const Shape& shape) {
  std::string text;
  for (size_t k = 0; k < shape.size(); ++k) {
    if (k > 0) text += ",";
    text += std::to_string(shape[k]);
  }
  return text;
}

}  // namespace

uint64_t element_count(const Shape& shape) { return element_count(shape, 0, shape.size()); }

uint64_t element_count(const Shape& shape, size_t begin, size_t end) {
  uint64_t count = 1;
  for (size_t k = begin; k < end; ++k) count *= shape[k];
  return count;
}

std::vector<uint64_t> row_major_strides(const Shape& shape) {
  std::vector<uint64_t> strides(shape.size());
  uint64_t stride = 1;
  for (size_t k = shape.size(); k-- > 0;) {
    strides[k] = stride;
    stride *= shape[k];
  }
  return strides;
}

Shape without_axis(const Shape& shape, size_t axis) {
  Shape rest = shape;
  rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(axis));
  return rest;
}

void require_equal_shapes(const Shape& left, const Shape& right, const char* sign) {
  if (left == right) return;
  fatal("Array ", sign, ": shape mismatch (", text_of(left), ") vs (", text_of(right), ")");
}

Walk walk_around(const Shape& shape, size_t axis) {
  return {without_axis(shape, axis), without_axis(row_major_strides(shape), axis)};
}

uint64_t offset_of(uint64_t i, const Walk& walk) {
  uint64_t offset = 0;
  for (size_t k = walk.extents.size(); k-- > 0;) {
    offset += i % walk.extents[k] * walk.strides[k];
    i /= walk.extents[k];
  }
  return offset;
}

}  // namespace zorv
