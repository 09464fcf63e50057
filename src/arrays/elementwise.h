// Operations on every element of an array: the scalar operations by kinds of operands, and the
// three schemes that apply them. There is no broadcasting: two arrays have equal shapes, and a
// scalar is passed as a scalar.
//
// The tag of an element follows from how it is built: a copy of an expression keeps its tag, what
// is built anew is plain. An expression times an integer on its right is the exception, as tags
// are then scaled, and the in-place form with an array of integers is the exception to that.
// Callers rely on this.
#pragma once

#include "arrays/array.h"
#include "core/arithmetic.h"
#include "core/tagged_arithmetic.h"

namespace zorv {

// e + x and e - x in place, by the kind of x; the tag is left alone.
inline void accumulate(ExprImpl& e, uint32_t v) { e.list.append(TermImpl(1, VarList(v))); }
inline void accumulate(ExprImpl& e, const coeff_t& c) { e.constant += c; }
inline void accumulate(ExprImpl& e, const TermImpl& t) { e.list.append(t); }
inline void accumulate(ExprImpl& e, const ExprImpl& other) { add_poly(e, other); }

inline void deduct(ExprImpl& e, uint32_t v) { e.list.append(TermImpl(-1, VarList(v))); }
inline void deduct(ExprImpl& e, const coeff_t& c) { e.constant -= c; }
inline void deduct(ExprImpl& e, const TermImpl& t) { e.list.append(negated(t)); }
inline void deduct(ExprImpl& e, const ExprImpl& other) { sub_poly(e, other); }

// e times x; an integer leaves the tag of `e`.
inline ExprImpl product(const ExprImpl& e, uint32_t v) { return mul_var(e, v); }
inline ExprImpl product(const ExprImpl& e, const TermImpl& t) { return mul_term(e, t); }
inline ExprImpl product(const ExprImpl& e, const ExprImpl& other) { return mul(e, other); }
inline ExprImpl product(const ExprImpl& e, const coeff_t& c) {
  ExprImpl copy = e;
  imul_int(copy, c);
  return copy;
}

inline uint64_t entries_of(uint32_t) { return 1; }
inline uint64_t entries_of(const coeff_t&) { return 0; }
inline uint64_t entries_of(const TermImpl&) { return 1; }
inline uint64_t entries_of(const ExprImpl& e) { return e.list.size(); }

// A copy of `e`, tag included, that has room for what `x` will bring.
template <typename X>
ExprImpl copy_with_room_for(const X& x, const ExprImpl& e) {
  ExprImpl copy;
  copy.list.reserve(e.list.count + entries_of(x));
  copy = e;
  return copy;
}

template <typename T>
inline constexpr bool kIsExpr = std::is_same_v<T, ExprImpl>;
template <typename T>
inline constexpr bool kIsInt = std::is_same_v<T, coeff_t>;

// The binary operations. `sign` stands in messages. Between integers the result is an integer, a
// product without expressions is a term, anything else an expression.
struct Add {
  static constexpr const char* kSign = "+";

  template <typename A, typename B>
  auto operator()(const A& a, const B& b) const {
    if constexpr (kIsInt<A> && kIsInt<B>) {
      return coeff_t(a + b);
    } else if constexpr (kIsExpr<B> && !kIsExpr<A>) {
      return (*this)(b, a);
    } else if constexpr (kIsExpr<A>) {
      ExprImpl sum = copy_with_room_for(b, a);
      accumulate(sum, b);
      return sum;
    } else {
      ExprImpl sum;
      accumulate(sum, a);
      accumulate(sum, b);
      return sum;
    }
  }
};

struct Sub {
  static constexpr const char* kSign = "-";

  template <typename A, typename B>
  auto operator()(const A& a, const B& b) const {
    if constexpr (kIsInt<A> && kIsInt<B>) {
      return coeff_t(a - b);
    } else if constexpr (kIsExpr<A>) {
      ExprImpl difference = copy_with_room_for(b, a);
      deduct(difference, b);
      return difference;
    } else {
      ExprImpl difference;
      if constexpr (kIsExpr<B>) difference.list.reserve(b.list.size());
      accumulate(difference, a);
      deduct(difference, b);
      return difference;
    }
  }
};

struct Mul {
  static constexpr const char* kSign = "*";

  coeff_t operator()(const coeff_t& a, const coeff_t& b) const { return a * b; }
  TermImpl operator()(uint32_t a, uint32_t b) const { return TermImpl(1, VarList(a, b)); }
  TermImpl operator()(uint32_t v, const coeff_t& c) const { return TermImpl(c, VarList(v)); }
  TermImpl operator()(const coeff_t& c, uint32_t v) const { return TermImpl(c, VarList(v)); }
  TermImpl operator()(const TermImpl& t, uint32_t v) const {
    return TermImpl(t.coeff, VarList::concat(t.vars, VarList(v)));
  }
  TermImpl operator()(uint32_t v, const TermImpl& t) const { return (*this)(t, v); }
  TermImpl operator()(const TermImpl& t, const coeff_t& c) const {
    return TermImpl(t.coeff * c, t.vars);
  }
  TermImpl operator()(const coeff_t& c, const TermImpl& t) const { return (*this)(t, c); }
  TermImpl operator()(const TermImpl& a, const TermImpl& b) const { return mul(a, b); }
  ExprImpl operator()(const ExprImpl& e, const coeff_t& c) const { return clone_mul_int(e, c); }
  template <typename B>
  ExprImpl operator()(const ExprImpl& e, const B& b) const {
    return product(e, b);
  }
  template <typename A>
  ExprImpl operator()(const A& a, const ExprImpl& e) const {
    return product(e, a);
  }
  ExprImpl operator()(const ExprImpl& a, const ExprImpl& b) const { return mul(a, b); }
};

// The same in place: a op= b.
struct AddEq {
  static constexpr const char* kSign = "+=";

  void operator()(coeff_t& a, const coeff_t& b) const { a += b; }
  template <typename B>
  void operator()(ExprImpl& e, const B& b) const {
    accumulate(e, b);
  }
};

struct SubEq {
  static constexpr const char* kSign = "-=";

  void operator()(coeff_t& a, const coeff_t& b) const { a -= b; }
  template <typename B>
  void operator()(ExprImpl& e, const B& b) const {
    deduct(e, b);
  }
};

struct MulEq {
  static constexpr const char* kSign = "*=";

  void operator()(coeff_t& a, const coeff_t& b) const { a *= b; }
  void operator()(TermImpl& t, const coeff_t& c) const { t.coeff *= c; }
  void operator()(ExprImpl& e, const coeff_t& c) const { imul_int(e, c); }
  template <typename B>
  void operator()(ExprImpl& e, const B& b) const {
    e = product(e, b);
  }
};

// An expression times one integer for all elements scales the tags.
struct ScaleEq {
  void operator()(ExprImpl& e, const coeff_t& c) const { imul_int_tagged(e, c); }
};

// The schemes ------------------------------------------------------------------------------------

template <typename Op, typename A, typename B>
auto elementwise(const ArrayImpl<A>& a, const ArrayImpl<B>& b) {
  require_equal_shapes(a.shape, b.shape, Op::kSign);
  using Result = decltype(Op()(a[0], b[0]));
  return make_array<Result>(a.shape, [&](uint64_t i) { return Op()(a[i], b[i]); });
}

template <typename Op, typename A, typename B>
auto elementwise(const ArrayImpl<A>& a, const B& scalar) {
  return map_array(a, [&](const A& element) { return Op()(element, scalar); });
}

template <typename Op, typename A, typename B>
void elementwise_in_place(ArrayImpl<A>& a, const ArrayImpl<B>& b) {
  require_equal_shapes(a.shape, b.shape, Op::kSign);
  par_for(a.size, [&](uint64_t i) { Op()(a[i], b[i]); });
}

// The scalar may be an element of `a`: it is copied, so that all elements see the same value.
template <typename Op, typename A, typename B>
void elementwise_in_place(ArrayImpl<A>& a, const B& scalar) {
  const auto* address = reinterpret_cast<const char*>(&scalar);
  const auto* block = reinterpret_cast<const char*>(a.data);
  if (address >= block && address < block + a.size * sizeof(A)) {
    const B copy = scalar;
    par_for(a.size, [&](uint64_t i) { Op()(a[i], copy); });
  } else {
    par_for(a.size, [&](uint64_t i) { Op()(a[i], scalar); });
  }
}

}  // namespace zorv
