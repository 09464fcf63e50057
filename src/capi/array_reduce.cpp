// Sums of arrays, and one-hot rows.
#include "arrays/reductions.h"
#include "capi/elements.h"
#include "capi/handles.h"
#include "capi/shapes.h"

namespace zorv {

namespace {

// Sums along an axis of elements that `at` gives by flat position.
template <typename At>
void write_vector_sum(const Shape& shape, int axis, At at, zorv_expr** out) {
  vector_sum(shape, static_cast<size_t>(axis), at,
             [=](uint64_t i, ExprImpl sum) { out[i] = wrap(std::move(sum)); });
}

}  // namespace

extern "C" {

zorv_expr* zorv_array_var_sum(const zorv_array_var* a) { return wrap(sum(unwrap(a))); }

zorv_expr* zorv_array_term_sum(const zorv_array_term* a) { return wrap(sum(unwrap(a))); }

zorv_expr* zorv_array_int_sum(const zorv_array_int* a) { return wrap(sum(unwrap(a))); }

zorv_expr* zorv_array_expr_sum(const zorv_array_expr* a) { return wrap(sum(unwrap(a))); }

zorv_expr* zorv_array_sum(zorv_expr* const* exprs, uint64_t n) {
  const auto run = unwrap(exprs);
  return wrap(sum_of(n, [=](uint64_t i) -> const ExprImpl& { return *run[i]; }));
}

zorv_array_expr* zorv_array_var_vector_sum(const zorv_array_var* a, int axis) {
  return wrap(vector_sum(unwrap(a), static_cast<size_t>(axis)));
}

zorv_array_expr* zorv_array_int_vector_sum(const zorv_array_int* a, int axis) {
  return wrap(vector_sum(unwrap(a), static_cast<size_t>(axis)));
}

zorv_array_expr* zorv_array_term_vector_sum(const zorv_array_term* a, int axis) {
  return wrap(vector_sum(unwrap(a), static_cast<size_t>(axis)));
}

zorv_array_expr* zorv_array_expr_vector_sum(const zorv_array_expr* a, int axis) {
  return wrap(vector_sum(unwrap(a), static_cast<size_t>(axis)));
}

void zorv_array_vector_sum(const void* data, int kind, const uint64_t* shape, size_t ndim, int axis,
                           zorv_expr** out) {
  const Shape extents = read_shape(shape, ndim);
  visit_elements(data, kind, [&](auto at) { write_vector_sum(extents, axis, at, out); });
}

zorv_array_int* zorv_array_int_onehot_to_int(const zorv_array_int* a, int axis) {
  return wrap(onehot_to_int(unwrap(a), axis));
}

void zorv_onehot_to_int(const int32_t* bits, const uint64_t* shape, size_t ndim, int32_t* out) {
  onehot_to_int(bits, read_shape(shape, ndim), out);
}

}  // extern "C"

}  // namespace zorv
