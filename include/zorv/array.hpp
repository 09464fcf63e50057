/// \file
/// Arrays of variables, integers, terms and expressions: N-dimensional blocks, their slices and
/// their elements.
#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <numeric>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "zorv/constraint.hpp"

namespace zorv {

template <typename T, size_t N>
class Array;

/// The extents of an array, outermost first. Braces with integers of any type: `{3, n}`.
template <size_t N>
using Shape = std::array<uint64_t, N>;

/// All positions of an axis, and those from `first` to before `last`, in the place of an index.
struct All {};
inline constexpr All all;
struct IndexRange {
  uint64_t first, last;
};
inline constexpr IndexRange range(uint64_t first, uint64_t last) { return {first, last}; }

namespace detail {

/// An extent, of whatever integer type.
struct Extent {
  template <BuiltIn T>
  constexpr Extent(T n) : value(static_cast<uint64_t>(n)) {}

  uint64_t value;
};

template <size_t N>
Shape<N> shape_of(const Extent (&extents)[N]) {
  Shape<N> shape;
  std::transform(extents, extents + N, shape.begin(), [](Extent e) { return e.value; });
  return shape;
}

template <size_t N>
uint64_t size_of(const Shape<N>& shape) {
  return std::accumulate(shape.begin(), shape.end(), uint64_t{1}, std::multiplies<>());
}

// The functions of the C interface for each kind of array, by one name.
#define ZORV_ARRAY_KIND(kind)                                                             \
  inline auto* clone(const zorv_array_##kind* a) { return zorv_array_##kind##_clone(a); } \
  inline void destroy(zorv_array_##kind* a) { zorv_array_##kind##_destroy(a); }           \
  inline const uint64_t* shape(const zorv_array_##kind* a) {                              \
    return zorv_array_##kind##_shape(a);                                                  \
  }                                                                                       \
  inline auto* view(const zorv_array_##kind* a, const uint64_t* lo, const uint64_t* hi,   \
                    const uint8_t* drop, size_t n) {                                      \
    return zorv_array_##kind##_view(a, lo, hi, drop, n);                                  \
  }                                                                                       \
  inline auto* concat(const zorv_array_##kind* a, const zorv_array_##kind* b, int axis) { \
    return zorv_array_##kind##_concat(a, b, axis);                                        \
  }                                                                                       \
  inline const char* text(const zorv_array_##kind* a) { return zorv_array_##kind##_str(a); }
ZORV_ARRAY_KIND(var)
ZORV_ARRAY_KIND(int)
ZORV_ARRAY_KIND(term)
ZORV_ARRAY_KIND(expr)
#undef ZORV_ARRAY_KIND

inline zorv_array_var* make_zeros(zorv_array_var*, const uint64_t* shape, size_t n) {
  return zorv_array_var_create(shape, n);
}
inline zorv_array_int* make_zeros(zorv_array_int*, const uint64_t* shape, size_t n) {
  return zorv_array_int_create_zero(shape, n);
}
inline zorv_array_term* make_zeros(zorv_array_term*, const uint64_t* shape, size_t n) {
  return zorv_array_term_create(shape, n);
}
inline zorv_array_expr* make_zeros(zorv_array_expr*, const uint64_t* shape, size_t n) {
  return zorv_array_expr_create_zero(shape, n);
}

/// Elements of one kind of array: how they are read and written.
template <typename T>
struct Element;

template <Literal L>
struct Element<L> {
  using Handle = zorv_array_var;
  static void set(Handle* a, uint64_t i, L x) { zorv_array_var_set(a, i, x.literal()); }
};

template <>
struct Element<Integer> {
  using Handle = zorv_array_int;
  static Integer get(const Handle* a, uint64_t i) {
    return read_integer([&](CoeffWire* out) { zorv_array_int_get(a, i, out); });
  }
  static void set(Handle* a, uint64_t i, const Integer& value) {
    const CoeffWire wire = value.wire();
    zorv_array_int_set(a, i, &wire);
  }
};

template <>
struct Element<Term> {
  using Handle = zorv_array_term;
  static Term get(const Handle* a, uint64_t i) {
    return read_term(TermHandle(zorv_array_term_get(a, i)).get());
  }
  static void set(Handle* a, uint64_t i, const Term& term) {
    zorv_array_term_set(a, i, TermHandle(term).get());
  }
};

/// Expressions, and what stands for them by a tag.
template <ExprLike E>
struct Element<E> {
  using Handle = zorv_array_expr;
  static E get(const Handle* a, uint64_t i) { return E(zorv_array_expr_get(a, i)); }
  static void set(Handle* a, uint64_t i, const Expr& e) { zorv_array_expr_set(a, i, e.handle()); }
};

/// The type of an element as users see it, from the handle of an array.
Var element_of(const zorv_array_var*);
Integer element_of(const zorv_array_int*);
Term element_of(const zorv_array_term*);
Expr element_of(const zorv_array_expr*);

/// An array from a handle that the C interface gave away.
template <size_t N, typename Handle>
auto adopt_array(Handle* handle) {
  return Array<decltype(element_of(handle)), N>(handle);
}

/// Braces within braces, N deep.
template <typename T, size_t N>
struct Nested {
  using Type = std::initializer_list<typename Nested<T, N - 1>::Type>;
};
template <typename T>
struct Nested<T, 0> {
  using Type = T;
};

/// The extent of an axis on which no row has been seen yet.
inline constexpr uint64_t kUnknownExtent = std::numeric_limits<uint64_t>::max();

template <typename T, size_t N, typename List>
void flatten(const List& list, Shape<N>& shape, size_t axis, std::vector<T>& out) {
  if (shape[axis] != kUnknownExtent && shape[axis] != std::size(list)) {
    throw std::invalid_argument("zorv: the rows of an array have different lengths");
  }
  shape[axis] = std::size(list);
  for (const auto& item : list) {
    if constexpr (std::convertible_to<decltype(item), T>) {
      out.push_back(item);
    } else {
      flatten<T, N>(item, shape, axis + 1, out);
    }
  }
}

/// An axis of a function that takes one: a negative axis counts from the end.
template <size_t N>
int checked_axis(int axis) {
  constexpr int rank = static_cast<int>(N);
  if (axis < -rank || axis >= rank) {
    throw std::out_of_range("zorv: an array with " + std::to_string(rank) + " axes has no axis " +
                            std::to_string(axis));
  }
  return axis < 0 ? axis + rank : axis;
}

}  // namespace detail

/// Some axes of an array with their indices chosen: `x[i]` of a matrix, `x[all][2]` of a cube
/// before its last index. It refers to the array, which must live on, and is copied out of it when
/// it is used as an array; that throws std::out_of_range if an index or a range is not in the
/// array.
template <typename A, size_t kGiven, size_t kKept>
class Slice {
 public:
  using Value = typename A::Value;
  static constexpr size_t kRank = kKept + A::kRank - kGiven;

  Slice(A& array, const Shape<A::kRank>& lo, const Shape<A::kRank>& hi,
        const std::array<uint8_t, A::kRank>& drop)
      : array_(array), lo_(lo), hi_(hi), drop_(drop) {}

  /// The next axis: an index, `all`, or `range(first, last)`.
  auto operator[](uint64_t i) const { return next<kKept>(i, i + 1, true); }
  auto operator[](All) const { return next<kKept + 1>(0, array_.shape()[kGiven], false); }
  auto operator[](IndexRange r) const { return next<kKept + 1>(r.first, r.last, false); }

  /// The first axis that no index has been chosen for, as a range.
  uint64_t length() const { return array_.shape()[kGiven]; }
  auto begin() const { return each().begin(); }
  auto end() const { return each().end(); }

  Array<Value, kRank> array() const {
    Shape<A::kRank> hi = array_.shape();  // axes that no index was chosen for stay whole
    for (size_t axis = 0; axis < kGiven; ++axis) {
      if (lo_[axis] > hi_[axis] || hi_[axis] > hi[axis]) {
        throw std::out_of_range("zorv: a slice reaches beyond its array");
      }
      hi[axis] = hi_[axis];
    }
    return Array<Value, kRank>(
        detail::view(array_.handle(), lo_.data(), hi.data(), drop_.data(), A::kRank));
  }
  operator Array<Value, kRank>() const { return array(); }

 private:
  template <size_t kNowKept>
  auto next(uint64_t lo, uint64_t hi, bool drop) const {
    Slice<A, kGiven + 1, kNowKept> slice(array_, lo_, hi_, drop_);
    slice.choose(lo, hi, drop);
    if constexpr (kGiven + 1 < A::kRank) {
      return slice;
    } else if constexpr (kNowKept != 0) {
      return slice.array();
    } else {
      return array_.flat(slice.flat_index());
    }
  }
  void choose(uint64_t lo, uint64_t hi, bool drop) {
    lo_[kGiven - 1] = lo;
    hi_[kGiven - 1] = hi;
    drop_[kGiven - 1] = drop;
  }
  uint64_t flat_index() const {
    uint64_t index = 0;
    for (size_t axis = 0; axis < A::kRank; ++axis) {
      assert(lo_[axis] < array_.shape()[axis]);
      index = index * array_.shape()[axis] + lo_[axis];
    }
    return index;
  }
  auto each() const {
    return detail::Indexed(length(), [this](uint64_t i) { return (*this)[i]; });
  }

  template <typename, size_t, size_t>
  friend class Slice;

  A& array_;
  Shape<A::kRank> lo_, hi_;
  std::array<uint8_t, A::kRank> drop_;
};

/// A dense block of elements with N axes, in row-major order. A value: copies are deep.
///
/// T is Var, IntVar, Integer, Term, Expr, VarInt or ExprExpr. `x[i][j]` is an element: a value, or
/// for an Expr of an array that is not const a reference that can be changed. `x[i]` is a row of a
/// matrix and `x[all][j]` a column, `x[range(1, 3)]` some rows. The indices of elements are not
/// checked, those of slices are.
template <typename T, size_t N>
class Array {
  static_assert(N >= 1, "an array has at least one axis");

 public:
  using Value = T;
  using Handle = typename detail::Element<T>::Handle;
  static constexpr size_t kRank = N;

  /// Takes over a handle of the C interface of this rank.
  explicit Array(Handle* handle) : handle_(handle) {
    std::copy_n(detail::shape(handle), N, shape_.begin());
    if constexpr (detail::Literal<T>) literals_ = zorv_array_var_data(handle);
  }
  /// Nested braces: `Array<Integer, 2> distance = {{0, 3}, {3, 0}}`.
  Array(typename detail::Nested<T, N>::Type elements) : Array(from(elements)) {}
  Array(const Array& other) : Array(detail::clone(other.handle_)) {}
  Array(Array&& other) noexcept
      : handle_(std::exchange(other.handle_, nullptr)),
        shape_(other.shape_),
        literals_(other.literals_) {}
  Array& operator=(Array other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(shape_, other.shape_);
    std::swap(literals_, other.literals_);
    return *this;
  }
  ~Array() { detail::destroy(handle_); }

  /// All elements 0: `zeros({rows, columns})`, and with the shape of another array.
  static Array zeros(const detail::Extent (&extents)[N]) requires(!detail::Literal<T>) {
    return of_shape(detail::shape_of(extents));
  }
  static Array of_shape(const Shape<N>& shape) requires(!detail::Literal<T>) {
    return Array(detail::make_zeros(static_cast<Handle*>(nullptr), shape.data(), N));
  }
  /// Nested containers, a vector of vectors for a matrix. Throws std::invalid_argument if the
  /// lengths of rows differ.
  template <typename Container>
  static Array from(const Container& elements) {
    Shape<N> shape;
    shape.fill(detail::kUnknownExtent);
    std::vector<T> values;
    detail::flatten<T, N>(elements, shape, 0, values);
    std::replace(shape.begin(), shape.end(), detail::kUnknownExtent, uint64_t{0});
    Array array(detail::make_zeros(static_cast<Handle*>(nullptr), shape.data(), N));
    for (uint64_t i = 0; i < values.size(); ++i) {
      detail::Element<T>::set(array.handle_, i, values[i]);
    }
    return array;
  }

  const Shape<N>& shape() const { return shape_; }
  /// The number of elements.
  uint64_t size() const { return detail::size_of(shape_); }

  auto operator[](uint64_t i) & { return start(*this)[i]; }
  auto operator[](uint64_t i) const& { return start(*this)[i]; }
  auto operator[](uint64_t i) && { return materialised(start(std::as_const(*this))[i]); }
  auto operator[](All) const& { return start(*this)[all]; }
  auto operator[](All) && { return materialised(start(std::as_const(*this))[all]); }
  auto operator[](IndexRange r) const& { return start(*this)[r]; }
  auto operator[](IndexRange r) && { return materialised(start(std::as_const(*this))[r]); }

  /// Element i < size() in row-major order.
  auto flat(uint64_t i) & {
    if constexpr (std::same_as<T, Expr>) {
      return ExprRef(handle_, i);
    } else {
      return std::as_const(*this).flat(i);
    }
  }
  T flat(uint64_t i) const& {
    assert(i < size());
    if constexpr (detail::Literal<T>) {
      return T(literals_[i]);
    } else {
      return detail::Element<T>::get(handle_, i);
    }
  }
  T flat(uint64_t i) && { return std::as_const(*this).flat(i); }
  /// Replaces element i in row-major order.
  void set_flat(uint64_t i, const T& value) {
    assert(i < size());
    detail::Element<T>::set(handle_, i, value);
  }

  /// Replaces one element: `a.set({i, j}, value)`.
  void set(const detail::Extent (&index)[N], const T& value) {
    uint64_t i = 0;
    for (size_t axis = 0; axis < N; ++axis) i = i * shape_[axis] + index[axis].value;
    set_flat(i, value);
  }

  /// The first axis as a range: rows of a matrix, elements of a vector.
  auto begin() { return each(*this).begin(); }
  auto end() { return each(*this).end(); }
  auto begin() const { return each(*this).begin(); }
  auto end() const { return each(*this).end(); }

  Handle* handle() const { return handle_; }

 private:
  template <typename A>
  static Slice<A, 0, 0> start(A& array) {
    return {array, Shape<N>{}, Shape<N>{}, std::array<uint8_t, N>{}};
  }
  template <typename S>
  static auto materialised(const S& slice) {
    if constexpr (N == 1) {
      return slice;
    } else {
      return slice.array();
    }
  }
  template <typename A>
  static auto each(A& array) {
    return detail::Indexed(array.shape_[0], [&array](uint64_t i) { return array[i]; });
  }

  Handle* handle_;
  Shape<N> shape_{};
  const uint32_t* literals_ = nullptr;  // of variables, so that reading one takes no call
};

namespace detail {

template <typename T>
inline constexpr bool kIsArray = false;
template <typename T, size_t N>
inline constexpr bool kIsArray<Array<T, N>> = true;
template <typename T>
inline constexpr bool kIsSlice = false;
template <typename A, size_t kGiven, size_t kKept>
inline constexpr bool kIsSlice<Slice<A, kGiven, kKept>> = true;

/// Arrays and slices of them.
template <typename T>
concept ArrayLike = kIsArray<std::remove_cvref_t<T>> || kIsSlice<std::remove_cvref_t<T>>;

template <typename T, size_t N>
const Array<T, N>& to_array(const Array<T, N>& array) {
  return array;
}
template <typename A, size_t kGiven, size_t kKept>
auto to_array(const Slice<A, kGiven, kKept>& slice) {
  return slice.array();
}

template <typename T>
inline constexpr size_t kRankOf = std::remove_cvref_t<T>::kRank;

}  // namespace detail

/// Makes a block of binary variables named "name[i][j]": `var_array("x", {rows, columns})`, or with
/// the shape of another array.
template <size_t N>
Array<Var, N> var_array(const std::string& name, const Shape<N>& shape) {
  return Array<Var, N>(zorv_array_var_create_named(name.c_str(), shape.data(), N));
}
template <size_t N>
Array<Var, N> var_array(const std::string& name, const detail::Extent (&extents)[N]) {
  return var_array(name, detail::shape_of(extents));
}

/// Makes a block of integer variables with common bounds, named "name[i][j]". Aborts unless
/// lo < hi.
template <size_t N>
Array<IntVar, N> int_var_array(const std::string& name, const Shape<N>& shape, const Integer& lo,
                               const Integer& hi) {
  const CoeffWire low = lo.wire(), high = hi.wire();
  const uint32_t first = zorv_new_int_var_array(name.c_str(), shape.data(), N, &low, &high);
  std::vector<uint32_t> literals(detail::size_of(shape));
  std::iota(literals.begin(), literals.end(), first);
  return Array<IntVar, N>(zorv_array_var_create_data(literals.data(), shape.data(), N));
}
template <size_t N>
Array<IntVar, N> int_var_array(const std::string& name, const detail::Extent (&extents)[N],
                               const Integer& lo, const Integer& hi) {
  return int_var_array(name, detail::shape_of(extents), lo, hi);
}

/// Makes a block of VarInt values with common bounds.
template <size_t N>
Array<VarInt, N> var_int_array(const std::string& name, const Shape<N>& shape, const Integer& lo,
                               const Integer& hi) {
  const CoeffWire low = lo.wire(), high = hi.wire();
  return Array<VarInt, N>(
      zorv_array_varint_create_uniform(name.c_str(), shape.data(), N, &low, &high));
}
template <size_t N>
Array<VarInt, N> var_int_array(const std::string& name, const detail::Extent (&extents)[N],
                               const Integer& lo, const Integer& hi) {
  return var_int_array(name, detail::shape_of(extents), lo, hi);
}

/// `a` and behind it, along `axis`, `b`. A negative axis counts from the end. Throws
/// std::out_of_range if there is no such axis, std::invalid_argument if another one differs.
template <typename T, size_t N>
Array<T, N> concat(const Array<T, N>& a, const Array<T, N>& b, int axis) {
  axis = detail::checked_axis<N>(axis);
  for (size_t other = 0; other < N; ++other) {
    if (other != static_cast<size_t>(axis) && a.shape()[other] != b.shape()[other]) {
      throw std::invalid_argument("zorv: arrays to concatenate differ along another axis");
    }
  }
  return Array<T, N>(detail::concat(a.handle(), b.handle(), axis));
}

/// "{{a,b},{c,d}}".
template <typename A>
requires detail::ArrayLike<A> std::string str(const A& array) {
  return detail::text(detail::to_array(array).handle());
}
template <typename A>
requires detail::ArrayLike<A> std::ostream& operator<<(std::ostream& out, const A& array) {
  return out << str(array);
}

}  // namespace zorv
