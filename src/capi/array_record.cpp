// Making arrays, taking them apart, and their elements.
#include "arrays/array_text.h"
#include "arrays/slices.h"
#include "arrays/unary.h"
#include "capi/handles.h"
#include "capi/shapes.h"
#include "capi/terms.h"
#include "core/var_registry.h"

namespace zorv {

namespace {

template <typename T>
auto filled(const uint64_t* shape, size_t ndim, const T& value) {
  return wrap(make_array<T>(read_shape(shape, ndim), [&](uint64_t) -> const T& { return value; }));
}

// Elements from a run of records that `read` turns into elements, one at a time.
template <typename T, typename Run, typename Read>
auto filled_from(Run run, const uint64_t* shape, size_t ndim, Read read) {
  return wrap(make_array<T>(read_shape(shape, ndim),
                            [=](uint64_t i) -> decltype(auto) { return read(run, i); }));
}

ArrayImpl<uint32_t> new_variables(const char* name, Shape shape) {
  const uint32_t first = new_var_array(resolve_name(name), shape.data(), shape.size());
  return make_array<uint32_t>(std::move(shape),
                              [=](uint64_t i) { return first + static_cast<uint32_t>(i); });
}

}  // namespace

extern "C" {

// What every kind has.
#define ZORV_ARRAY_EXPORTS(K)                                                                \
  zorv_array_##K* zorv_array_##K##_clone(const zorv_array_##K* a) {                          \
    using Record = RecordOf<zorv_array_##K>::Type;                                           \
    return wrap(Record(unwrap(a)));                                                          \
  }                                                                                          \
  void zorv_array_##K##_destroy(zorv_array_##K* a) { destroy(a); }                           \
  uint64_t zorv_array_##K##_size(const zorv_array_##K* a) { return unwrap(a).size; }         \
  size_t zorv_array_##K##_ndim(const zorv_array_##K* a) { return unwrap(a).shape.size(); }   \
  const uint64_t* zorv_array_##K##_shape(const zorv_array_##K* a) {                          \
    return unwrap(a).shape.data();                                                           \
  }                                                                                          \
  uint64_t zorv_array_##K##_shape_at(const zorv_array_##K* a, int axis) {                    \
    return unwrap(a).shape[static_cast<size_t>(axis)];                                       \
  }                                                                                          \
  zorv_array_##K* zorv_array_##K##_subarray(const zorv_array_##K* a, uint64_t i) {           \
    return wrap(subarray(unwrap(a), i));                                                     \
  }                                                                                          \
  zorv_array_##K* zorv_array_##K##_view(const zorv_array_##K* a, const uint64_t* lo,         \
                                        const uint64_t* hi, const uint8_t* drop, size_t n) { \
    return wrap(view(unwrap(a), lo, hi, drop, n));                                           \
  }                                                                                          \
  zorv_array_##K* zorv_array_##K##_concat(const zorv_array_##K* a, const zorv_array_##K* b,  \
                                          int axis) {                                        \
    return wrap(concat(unwrap(a), unwrap(b), static_cast<size_t>(axis)));                    \
  }                                                                                          \
  const char* zorv_array_##K##_str(const zorv_array_##K* a) {                                \
    thread_local std::string text;                                                           \
    text = array_text(unwrap(a));                                                            \
    return text.c_str();                                                                     \
  }
ZORV_ARRAY_EXPORTS(var)
ZORV_ARRAY_EXPORTS(int)
ZORV_ARRAY_EXPORTS(term)
ZORV_ARRAY_EXPORTS(expr)
#undef ZORV_ARRAY_EXPORTS

zorv_array_var* zorv_array_var_create(const uint64_t* shape, size_t ndim) {
  return filled(shape, ndim, uint32_t{0});
}

zorv_array_int* zorv_array_int_create(const uint64_t* shape, size_t ndim) {
  return filled(shape, ndim, coeff_t());
}

zorv_array_int* zorv_array_int_create_zero(const uint64_t* shape, size_t ndim) {
  return filled(shape, ndim, coeff_t());
}

zorv_array_term* zorv_array_term_create(const uint64_t* shape, size_t ndim) {
  return filled(shape, ndim, TermImpl());
}

zorv_array_expr* zorv_array_expr_create(const uint64_t* shape, size_t ndim) {
  return filled(shape, ndim, ExprImpl());
}

zorv_array_expr* zorv_array_expr_create_zero(const uint64_t* shape, size_t ndim) {
  return filled(shape, ndim, ExprImpl());
}

zorv_array_var* zorv_array_var_create_data(const uint32_t* literals, const uint64_t* shape,
                                           size_t ndim) {
  return filled_from<uint32_t>(literals, shape, ndim, [](auto run, uint64_t i) { return run[i]; });
}

zorv_array_int* zorv_array_int_create_data(const CoeffWire* coeffs, const uint64_t* shape,
                                           size_t ndim) {
  return filled_from<coeff_t>(coeffs, shape, ndim,
                              [](auto run, uint64_t i) { return read_wire(run + i); });
}

zorv_array_term* zorv_array_term_create_data(zorv_term* const* terms, const uint64_t* shape,
                                             size_t ndim) {
  return filled_from<TermImpl>(unwrap(terms), shape, ndim,
                               [](auto run, uint64_t i) -> const TermImpl& { return *run[i]; });
}

zorv_array_expr* zorv_array_expr_create_data(zorv_expr* const* exprs, const uint64_t* shape,
                                             size_t ndim) {
  return filled_from<ExprImpl>(unwrap(exprs), shape, ndim,
                               [](auto run, uint64_t i) -> const ExprImpl& { return *run[i]; });
}

zorv_array_var* zorv_array_var_create_named(const char* name, const uint64_t* shape, size_t ndim) {
  return wrap(new_variables(name, read_shape(shape, ndim)));
}

zorv_array_var* zorv_array_var_create_unnamed(const uint64_t* shape, size_t ndim) {
  return wrap(new_variables(nullptr, read_shape(shape, ndim)));
}

zorv_array_expr* zorv_array_expr_create_constant_int(const uint64_t* shape, size_t ndim,
                                                     const CoeffWire* value) {
  return filled(shape, ndim, ExprImpl(read_wire(value)));
}

zorv_array_expr* zorv_array_expr_create_constant_var(const uint64_t* shape, size_t ndim,
                                                     uint32_t v) {
  return filled(shape, ndim, ExprImpl(unit_term(v)));
}

zorv_array_expr* zorv_array_expr_from_expr(const zorv_array_expr* a) {
  return zorv_array_expr_clone(a);
}

zorv_array_int* zorv_array_int_clone_subview(const zorv_array_int* a, uint64_t offset,
                                             uint64_t tail) {
  return wrap(tail_block(unwrap(a), offset, tail));
}

zorv_array_expr* zorv_array_expr_clone_subview(const zorv_array_expr* a, uint64_t offset,
                                               uint64_t tail) {
  return wrap(tail_block(unwrap(a), offset, tail));
}

uint32_t zorv_array_var_get(const zorv_array_var* a, uint64_t i) { return unwrap(a)[i]; }

void zorv_array_var_set(zorv_array_var* a, uint64_t i, uint32_t v) { unwrap(a)[i] = v; }

const uint32_t* zorv_array_var_data(const zorv_array_var* a) { return unwrap(a).data; }

void zorv_array_int_get(const zorv_array_int* a, uint64_t i, CoeffWire* out) {
  write_wire(unwrap(a)[i], out);
}

void zorv_array_int_set(zorv_array_int* a, uint64_t i, const CoeffWire* c) {
  unwrap(a)[i] = read_wire(c);
}

zorv_term* zorv_array_term_get(const zorv_array_term* a, uint64_t i) { return wrap(unwrap(a)[i]); }

void zorv_array_term_set(zorv_array_term* a, uint64_t i, const zorv_term* t) {
  unwrap(a)[i] = unwrap(t);
}

zorv_expr* zorv_array_expr_get(const zorv_array_expr* a, uint64_t i) { return wrap(unwrap(a)[i]); }

zorv_expr* zorv_array_expr_ref(zorv_array_expr* a, uint64_t i) { return borrow(unwrap(a)[i]); }

void zorv_array_expr_set(zorv_array_expr* a, uint64_t i, const zorv_expr* e) {
  unwrap(a)[i] = unwrap(e);
}

zorv_expr* zorv_array_varint_get_expr(const zorv_array_expr* a, uint64_t i) {
  return wrap(plain_copy(unwrap(a)[i]));
}

zorv_expr* zorv_array_exprexpr_get_penalty(const zorv_array_expr* a, uint64_t i) {
  return wrap(plain_copy(unwrap(a)[i]));
}

void zorv_array_int_to_ints(const zorv_array_int* a, int32_t* out) { saturate(unwrap(a), out); }

}  // extern "C"

}  // namespace zorv
