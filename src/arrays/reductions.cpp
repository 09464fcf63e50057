#include "arrays/reductions.h"

namespace zorv {

namespace {

int64_t only_one(const ArrayImpl<coeff_t>& a, uint64_t base, size_t axis) {
  int64_t position = -1;
  for (uint64_t j = 0; j < a.shape[axis]; ++j) {
    const coeff_t& element = a[base + j * a.strides[axis]];
    if (is_zero(element)) continue;
    if (!is_one(element) || position >= 0) return -1;
    position = static_cast<int64_t>(j);
  }
  return position;
}

}  // namespace

std::optional<ArrayImpl<coeff_t>> onehot_to_int(const ArrayImpl<coeff_t>& a, int axis) {
  const auto rank = static_cast<int64_t>(a.shape.size());
  const int64_t from_front = axis < 0 ? axis + rank : axis;
  if (from_front < 0 || from_front >= rank) return std::nullopt;
  const auto k = static_cast<size_t>(from_front);
  const Walk walk = walk_around(a.shape, k);
  return make_array<coeff_t>(walk.extents.empty() ? Shape{1} : walk.extents, [&](uint64_t i) {
    return coeff_t(only_one(a, offset_of(i, walk), k));
  });
}

void onehot_to_int(const int32_t* bits, const Shape& shape, int32_t* out) {
  if (shape.empty()) return;
  const uint64_t length = shape.back();
  const uint64_t rows = element_count(shape, 0, shape.size() - 1);
  for (uint64_t row = 0; row < rows; ++row, bits += length) {
    int64_t sum = 0;
    int32_t last = -1;
    for (uint64_t j = 0; j < length; ++j) {
      sum += bits[j];
      if (bits[j] == 1) last = static_cast<int32_t>(j);
    }
    out[row] = sum == 1 ? last : -1;
  }
}

}  // namespace zorv
