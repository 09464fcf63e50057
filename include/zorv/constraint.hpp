/// \file
/// Constraints: comparisons, declared constraints, classic penalties, and what a solution makes of
/// them.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <ostream>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "zorv/expr.hpp"

namespace zorv {

/// A classic constraint: a penalty polynomial, which is 0 exactly if the constraint holds, with the
/// body and the bounds behind it. As an operand it is the penalty.
class ExprExpr : public detail::StandsForExpr {
 public:
  /// A penalty of one's own for a body, without bounds as yet.
  ExprExpr(const Expr& penalty, const Expr& body)
      : expr_(zorv_exprexprelem_create(penalty.handle(), body.handle())) {}
  /// Takes over a handle of the C interface that is a classic constraint.
  explicit ExprExpr(zorv_expr* handle) : expr_(handle) {}

  Expr body() const { return expr_.body(); }
  /// Both ends inside. Shared by all copies of the constraint.
  void set_bounds(const Integer& lo, const Integer& hi) {
    const CoeffWire low = lo.wire(), high = hi.wire();
    zorv_exprexpr_set_bounds(expr_.handle(), &low, &high);
  }

  const Expr& get() const { return expr_; }
  operator const Expr&() const { return expr_; }

 private:
  Expr expr_;
};

namespace detail {

inline Expr penalty_of_range(const Expr& f, const Integer& lo, const Integer& hi) {
  const CoeffWire low = lo.wire(), high = hi.wire();
  return Expr(zorv_between(f.handle(), &low, &high));
}

inline Expr declared_range(const Expr& f, const Integer& lo, const Integer& hi) {
  const CoeffWire low = lo.wire(), high = hi.wire();
  return Expr(zorv_cons_between(f.handle(), &low, &high));
}

}  // namespace detail

/// What `f == 3`, `1 <= f`, `f <= 4` and `1 <= f <= 4` give: a body and the ends of its range.
/// Nothing is decided yet: `cons` declares it, and as an operand or an Expr it becomes a classic
/// constraint, with slack variables where those are needed.
///
/// An end that is not given is the bound of the body. An end can be given once: `1 <= f <= 4` is a
/// comparison, `f <= 4 <= 5` and `f == 3 == g` do not compile.
template <bool kHasLow, bool kHasHigh>
class Comparison : public detail::StandsForExpr {
 public:
  Comparison(Expr body, Integer lo, Integer hi)
      : body_(std::move(body)), lo_(std::move(lo)), hi_(std::move(hi)) {}

  const Expr& body() const { return body_; }
  Integer lo() const {
    if constexpr (kHasLow) {
      return lo_;
    } else {
      return lower_bound(body_);
    }
  }
  Integer hi() const {
    if constexpr (kHasHigh) {
      return hi_;
    } else {
      return upper_bound(body_);
    }
  }

  ExprExpr classic() const {
    const Integer low = lo(), high = hi();
    ExprExpr constraint(detail::penalty_of_range(body_, low, high), body_);
    constraint.set_bounds(low, high);
    return constraint;
  }
  operator ExprExpr() const { return classic(); }
  operator Expr() const { return classic().get(); }

  friend auto operator<=(Comparison c, const Integer& hi) requires(kHasLow && !kHasHigh) {
    return Comparison<true, true>(std::move(c.body_), std::move(c.lo_), hi);
  }
  friend auto operator>=(Comparison c, const Integer& lo) requires(kHasHigh && !kHasLow) {
    return Comparison<true, true>(std::move(c.body_), lo, std::move(c.hi_));
  }

 private:
  Expr body_;
  Integer lo_, hi_;  // the end that is not given is 0
};

using AtLeast = Comparison<true, false>;
using AtMost = Comparison<false, true>;
using Between = Comparison<true, true>;

namespace detail {

template <typename T>
inline constexpr bool kIsComparison = false;
template <bool kHasLow, bool kHasHigh>
inline constexpr bool kIsComparison<Comparison<kHasLow, kHasHigh>> = true;

/// What can be compared: anything but comparisons.
template <typename A, typename B>
concept Comparable = Operands<A, B> && !kIsComparison<std::remove_cvref_t<A>> &&
                     !kIsComparison<std::remove_cvref_t<B>>;

/// A comparison of f with an integer, or of a difference with 0.
struct Sides {
  Expr body;
  Integer end;
};

template <typename A, typename B>
Sides sides(A&& a, B&& b) {
  if constexpr (IntegerLike<B>) {
    return {take(std::forward<A>(a)), Integer(b)};
  } else {
    return {std::forward<A>(a) - std::forward<B>(b), 0};
  }
}

}  // namespace detail

template <typename A, typename B>
requires detail::Comparable<A, B> Between operator==(A&& a, B&& b) {
  if constexpr (detail::IntegerLike<A>) {
    return std::forward<B>(b) == std::forward<A>(a);
  } else {
    detail::Sides s = detail::sides(std::forward<A>(a), std::forward<B>(b));
    return {std::move(s.body), s.end, s.end};
  }
}

template <typename A, typename B>
requires detail::Comparable<A, B>
auto operator<=(A&& a, B&& b) {
  if constexpr (detail::IntegerLike<A>) {
    return AtLeast(detail::take(std::forward<B>(b)), Integer(a), 0);
  } else {
    detail::Sides s = detail::sides(std::forward<A>(a), std::forward<B>(b));
    return AtMost(std::move(s.body), 0, std::move(s.end));
  }
}

template <typename A, typename B>
requires detail::Comparable<A, B>
auto operator>=(A&& a, B&& b) {
  if constexpr (detail::IntegerLike<A>) {
    return AtMost(detail::take(std::forward<B>(b)), 0, Integer(a));
  } else {
    detail::Sides s = detail::sides(std::forward<A>(a), std::forward<B>(b));
    return AtLeast(std::move(s.body), std::move(s.end), 0);
  }
}

/// The penalty polynomial of lo <= f <= hi alone, without a constraint behind it.
inline Expr between(const Expr& f, const Integer& lo, const Integer& hi) {
  return detail::penalty_of_range(f, lo, hi);
}

// ---- Declared constraints

/// A value, or a range of values with both ends inside: `3`, `{4, 7}`.
struct Interval {
  template <detail::IntegerLike T>
  Interval(const T& value) : lo(value), hi(value) {}
  Interval(Integer low, Integer high) : lo(std::move(low)), hi(std::move(high)) {}

  Integer lo, hi;
};

/// The set of values that `equal` names.
struct Allowed {
  std::vector<Interval> intervals;
};

/// Values and ranges that a constraint allows: `equal({1, {4, 7}})`. At least one.
inline Allowed equal(std::initializer_list<Interval> intervals) { return {intervals}; }
inline Allowed equal(std::vector<Interval> intervals) { return {std::move(intervals)}; }

/// Declares a constraint: it is kept as data beside the polynomial, weighted by what it is
/// multiplied by, as in `cost + 100 * cons(1 <= f <= 4)`. Each unit of the weight counts the square
/// of the distance to what is allowed.
template <bool kHasLow, bool kHasHigh>
Expr cons(const Comparison<kHasLow, kHasHigh>& c) {
  return detail::declared_range(c.body(), c.lo(), c.hi());
}
/// Declares that the value is in a set.
inline Expr cons(const Expr& f, const Allowed& allowed) {
  std::vector<CoeffWire> lows, highs;
  for (const Interval& interval : allowed.intervals) {
    lows.push_back(interval.lo.wire());
    highs.push_back(interval.hi.wire());
  }
  return Expr(zorv_cons_equal(f.handle(), lows.data(), highs.data(), lows.size()));
}
/// Declares the classic constraints of an expression. A polynomial without constraints becomes a
/// penalty as it stands: it adds its value and is to be 0, so that `cons(x * y)` forbids a pair.
template <detail::ExprLike E>
Expr cons(const E& e) {
  return Expr(zorv_cons_mark(detail::canonical(e).handle()));
}
inline Expr cons(const Term& term) { return cons(Expr(term)); }

/// |f|^k and max(f, 0)^k as terms of the objective, for a linear f and k = 1 or 2. They count as no
/// violation.
inline Expr abs(const Expr& f, uint32_t k = 1) { return Expr(zorv_abs_term(f.handle(), k)); }
inline Expr relu(const Expr& f, uint32_t k = 1) { return Expr(zorv_relu_term(f.handle(), k)); }

// ---- Looking inside

/// A constraint that does not hold on a solution, and by how much.
struct Violation {
  uint64_t item;                  // its number among the constraints of the expression
  Integer value;                  // of the body
  std::vector<Interval> allowed;  // what the value has to lie in, at least one
  Integer violation;              // the distance of the value to the nearest of these
  Integer weight;
};

namespace detail {

/// Whether item i can be violated: a requirement with bounds, or a free-form penalty, which is to
/// be 0; no abs or relu term and nothing without bounds.
inline bool counts_as_constraint(const Expr& e, uint64_t i) {
  uint32_t k = 0, kind = 0;
  if (zorv_cons_item_shape(e.handle(), i, &k, &kind) != 0) return kind == 0;
  zorv_expr* body = nullptr;
  CoeffWire weight{}, lo{}, hi{};
  const bool is_free_form = zorv_cons_item_info(e.handle(), i, &body, &weight, &lo, &hi) == 0;
  zorv_expr_destroy(body);
  for (const CoeffWire& wire : {weight, lo, hi}) std::free(wire.limbs);
  return is_free_form;
}

/// The values that item i allows, whose hull is lo .. hi.
inline std::vector<Interval> allowed_of(const Expr& e, uint64_t i, Integer lo, Integer hi) {
  const uint64_t count = zorv_cons_item_allowed(e.handle(), i, nullptr, nullptr, 0);
  if (count == 0) return {Interval(std::move(lo), std::move(hi))};
  std::vector<CoeffWire> lows(count), highs(count);
  zorv_cons_item_allowed(e.handle(), i, lows.data(), highs.data(), count);
  std::vector<Interval> allowed;
  for (uint64_t k = 0; k < count; ++k) {
    allowed.emplace_back(Integer::adopt(lows[k]), Integer::adopt(highs[k]));
  }
  return allowed;
}

}  // namespace detail

/// "4", or "4..7".
inline std::ostream& operator<<(std::ostream& out, const Interval& interval) {
  out << interval.lo;
  return interval.lo == interval.hi ? out : out << ".." << interval.hi;
}

/// "constraint 2: 3 is not in 1, 5..7, off by 2".
inline std::ostream& operator<<(std::ostream& out, const Violation& v) {
  out << "constraint " << v.item << ": " << v.value << " is not in ";
  for (const Interval& interval : v.allowed) out << interval << ", ";
  return out << "off by " << v.violation;
}

}  // namespace zorv
