/// \file
/// Expressions: polynomials with exact coefficients, and the operators that build them.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <ostream>
#include <ranges>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "zorv/term.hpp"

namespace zorv {

class Expr;
class Sol;
struct Violation;

namespace detail {

/// Owns a handle of the C interface: moved by pointer, copied by the library.
template <typename Handle, auto kDestroy, auto kClone>
class Owner {
 public:
  Owner() = default;
  explicit Owner(Handle* handle) : handle_(handle) {}
  Owner(const Owner& other) : handle_(other.handle_ ? kClone(other.handle_) : nullptr) {}
  Owner(Owner&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Owner& operator=(Owner other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Owner() { kDestroy(handle_); }

  Handle* get() const { return handle_; }
  Handle* release() { return std::exchange(handle_, nullptr); }

 private:
  Handle* handle_ = nullptr;
};

/// The values get(0) .. get(count - 1), for range-based loops.
template <typename Get>
class Indexed {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using reference = std::invoke_result_t<const Get&, uint64_t>;
    using value_type = std::remove_cvref_t<reference>;
    using difference_type = std::ptrdiff_t;
    using pointer = void;

    Iterator(Get get, uint64_t i) : get_(std::move(get)), i_(i) {}
    reference operator*() const { return get_(i_); }
    Iterator& operator++() {
      ++i_;
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++i_;
      return before;
    }
    bool operator==(const Iterator& other) const { return i_ == other.i_; }

   private:
    Get get_;
    uint64_t i_;
  };

  Indexed(uint64_t count, Get get) : count_(count), get_(std::move(get)) {}
  Iterator begin() const { return {get_, 0}; }
  Iterator end() const { return {get_, count_}; }

 private:
  uint64_t count_;
  Get get_;
};

/// Types that stand for an expression say so by deriving from this, and by a conversion to
/// `const Expr&` or to `Expr`.
struct StandsForExpr {};

/// What the operators below combine: integers, and what contains variables.
template <typename T>
concept IntegerLike = std::same_as<std::remove_cvref_t<T>, Integer> ||
    BuiltIn<std::remove_cvref_t<T>> || Multiprecision<std::remove_cvref_t<T>>;
template <typename T>
concept ExprLike = std::derived_from<std::remove_cvref_t<T>, StandsForExpr>;
template <typename T>
concept Algebraic =
    Literal<std::remove_cvref_t<T>> || std::same_as<std::remove_cvref_t<T>, Term> || ExprLike<T>;
template <typename T>
concept Operand = Algebraic<T> || IntegerLike<T>;
/// What is smaller than an expression: an integer, a variable, a term.
template <typename T>
concept Small = Operand<T> && !ExprLike<T>;
/// An operand in the form that the functions below take it: an integer as Integer, a literal and a
/// term as they are, and what stands for an expression as Expr, by reference where one exists.
template <IntegerLike T>
requires(!std::same_as<T, Integer>) Integer canonical(const T& value) { return Integer(value); }
inline const Integer& canonical(const Integer& value) { return value; }
template <Literal L>
L canonical(L x) {
  return x;
}
inline const Term& canonical(const Term& term) { return term; }

template <typename A, typename B>
concept Operands = Operand<A> && Operand<B> &&(Algebraic<A> || Algebraic<B>);

}  // namespace detail

/// A polynomial: a constant and terms, which stay as they come until they are simplified; and the
/// constraints it carries, see constraints.hpp. A value: copies are deep, and one that was moved
/// from may only be destroyed or assigned to.
class Expr : public detail::StandsForExpr {
 public:
  /// 0.
  Expr() : handle_(zorv_expr_create()) {}
  template <detail::Small T>
  Expr(const T& value) : handle_(create(detail::canonical(value))) {}
  /// Takes over a handle of the C interface.
  explicit Expr(zorv_expr* handle) : handle_(handle) {}
  Expr(const Expr&) = default;
  Expr(Expr&&) noexcept = default;
  Expr& operator=(const Expr&) & = default;  // not to what an array hands out as a copy
  Expr& operator=(Expr&&) & noexcept = default;

  Integer constant() const {
    return detail::read_integer([&](CoeffWire* out) { zorv_expr_constant(handle(), out); });
  }
  uint64_t term_count() const { return zorv_expr_term_count(handle()); }
  uint64_t term_count(int degree) const { return zorv_expr_term_count_degree(handle(), degree); }
  /// Term i < term_count(), in storage order.
  Term term(uint64_t i) const { return detail::read_term(zorv_expr_term_at(handle(), i)); }
  /// All terms, in storage order, for a range-based loop over an expression that lives on.
  auto terms() const& {
    return detail::Indexed(term_count(), [this](uint64_t i) { return term(i); });
  }
  void terms() && = delete;
  /// The highest degree of a term, 0 without terms.
  uint32_t max_degree() const { return zorv_expr_max_degree(handle()); }
  /// Whether any term holds the variable, or its complement.
  template <detail::Literal L>
  bool has(L x) const {
    return zorv_expr_has(handle(), x.literal()) != 0;
  }
  bool has_int_vars() const { return zorv_expr_has_int_atom(handle()) != 0; }

  /// Constraints: how many there are, a free-form penalty among them; whether they are declared;
  /// the body of the only one; how many do not hold on a solution, and which. The last three abort
  /// where there are none to speak of.
  uint64_t cons_count() const {
    const uint32_t tag = zorv_expr_attr(handle());
    return tag >= kFirstConstraintTag && tag != kPlainTag ? zorv_cons_item_count(handle()) : 0;
  }
  bool is_declared() const { return zorv_expr_is_declared(handle()) != 0; }
  Expr body() const { return Expr(zorv_expr_clone(zorv_exprexprelem_get_body(handle()))); }
  uint64_t violation_count(const Sol& sol) const;
  std::vector<Violation> violations(const Sol& sol) const;

  template <detail::Operand T>
  Expr& operator+=(const T& value) &;
  template <detail::Operand T>
  Expr& operator-=(const T& value) &;
  template <detail::Operand T>
  Expr& operator*=(const T& value) &;
  /// Exact: aborts on 0 and on a remainder.
  template <detail::IntegerLike T>
  Expr& operator/=(const T& divisor) & {
    const Integer value(divisor);
    const CoeffWire wire = value.wire();
    zorv_expr_idiv_int(handle(), &wire);
    return *this;
  }

  zorv_expr* handle() const { return handle_.get(); }

 private:
  friend class ExprRef;

  static constexpr uint32_t kFirstConstraintTag = uint32_t{1} << 31;  // those below are of VarInts
  static constexpr uint32_t kPlainTag = 0xFFFFFFFF;

  static zorv_expr* create(const Integer& value) {
    const CoeffWire wire = value.wire();
    return zorv_expr_create_int(&wire);
  }
  template <detail::Literal L>
  static zorv_expr* create(L x) {
    return zorv_expr_create_var(x.literal());
  }
  static zorv_expr* create(const Term& term) {
    if (term.degree() == 0) return create(term.coeff());
    const CoeffWire coeff = term.coeff().wire(), zero = {0, 0, nullptr};
    return zorv_expr_create_raw_term(&coeff, term.literals(), term.degree(), &zero);
  }

  detail::Owner<zorv_expr, zorv_expr_destroy, zorv_expr_clone> handle_;
};

/// An expression that belongs to an array: reads and changes it in place. Good as long as the
/// array is neither changed in shape nor destroyed; a copy of the value is an Expr.
class ExprRef : public detail::StandsForExpr {
 public:
  ExprRef(zorv_array_expr* array, uint64_t i)
      : array_(array), i_(i), expr_(zorv_array_expr_ref(array, i)) {}
  ExprRef(const ExprRef&) = delete;
  ~ExprRef() { expr_.handle_.release(); }

  /// Assigns to the element of the array.
  template <detail::Operand T>
  ExprRef& operator=(const T& value);
  ExprRef& operator=(const ExprRef& other) { return this == &other ? *this : *this = other.expr_; }

  template <detail::Operand T>
  ExprRef& operator+=(const T& value) {
    expr_ += value;
    return *this;
  }
  template <detail::Operand T>
  ExprRef& operator-=(const T& value) {
    expr_ -= value;
    return *this;
  }
  template <detail::Operand T>
  ExprRef& operator*=(const T& value) {
    expr_ *= value;
    return *this;
  }
  template <detail::IntegerLike T>
  ExprRef& operator/=(const T& divisor) {
    expr_ /= divisor;
    return *this;
  }

  const Expr& get() const { return expr_; }
  operator const Expr&() const { return expr_; }
  const Expr* operator->() const { return &expr_; }

 private:
  zorv_array_expr* array_;
  uint64_t i_;
  Expr expr_;  // with a handle that the array owns
};

namespace detail {

inline const Expr& canonical(const Expr& expr) { return expr; }
template <ExprLike T>
requires(!std::derived_from<T, Expr> && std::convertible_to<const T&, const Expr&> &&
         requires(const T& value) {
           value.operator const Expr&();
         }) const Expr& canonical(const T& value) {
  return value;
}
template <ExprLike T>
requires(!std::derived_from<T, Expr> && requires(const T& value) { value.operator Expr(); }) Expr
    canonical(const T& value) {
  return value;
}

inline void add_to(zorv_expr* e, const Integer& value) {
  const CoeffWire wire = value.wire();
  zorv_expr_iadd_int(e, &wire);
}
template <Literal L>
void add_to(zorv_expr* e, L x) {
  zorv_expr_iadd_var(e, x.literal());
}
inline void add_to(zorv_expr* e, const Term& term) {
  if (term.degree() == 0) return add_to(e, term.coeff());
  const CoeffWire coeff = term.coeff().wire();
  zorv_expr_iadd_raw_term(e, &coeff, term.literals(), term.degree());
}
inline void add_to(zorv_expr* e, const Expr& other) { zorv_expr_iadd_expr(e, other.handle()); }

inline void subtract_from(zorv_expr* e, const Integer& value) {
  const CoeffWire wire = value.wire();
  zorv_expr_isub_int(e, &wire);
}
template <Literal L>
void subtract_from(zorv_expr* e, L x) {
  zorv_expr_isub_var(e, x.literal());
}
inline void subtract_from(zorv_expr* e, const Term& term) {
  if (term.degree() == 0) return subtract_from(e, term.coeff());
  const CoeffWire coeff = term.coeff().wire();
  zorv_expr_isub_raw_term(e, &coeff, term.literals(), term.degree());
}
inline void subtract_from(zorv_expr* e, const Expr& other) {
  zorv_expr_isub_expr(e, other.handle());
}

inline void multiply_into(zorv_expr* e, const Integer& factor) {
  const CoeffWire wire = factor.wire();
  zorv_expr_imul_int(e, &wire);
}
template <Literal L>
void multiply_into(zorv_expr* e, L x) {
  zorv_expr_imul_var(e, x.literal());
}
inline void multiply_into(zorv_expr* e, const Term& term) {
  const CoeffWire coeff = term.coeff().wire();
  zorv_expr_imul_term_direct(e, &coeff, term.head_pair(), term.overflow());
}
inline void multiply_into(zorv_expr* e, const Expr& other) {
  zorv_expr_imul_expr(e, other.handle());
}

/// A new expression from an operand, without a copy if it is one that nobody else needs.
template <typename T>
Expr take(T&& value) {
  if constexpr (std::derived_from<std::remove_cvref_t<T>, Expr> || Small<T>) {
    return Expr(std::forward<T>(value));
  } else {
    return Expr(canonical(value));
  }
}

}  // namespace detail

template <detail::Operand T>
Expr& Expr::operator+=(const T& value) & {
  detail::add_to(handle(), detail::canonical(value));
  return *this;
}

template <detail::Operand T>
Expr& Expr::operator-=(const T& value) & {
  detail::subtract_from(handle(), detail::canonical(value));
  return *this;
}

template <detail::Operand T>
Expr& Expr::operator*=(const T& value) & {
  detail::multiply_into(handle(), detail::canonical(value));
  return *this;
}

template <detail::Operand T>
ExprRef& ExprRef::operator=(const T& value) {
  const Expr& whole = value;
  zorv_array_expr_set(array_, i_, whole.handle());
  return *this;
}

// ---- Operators
//
// Integers, variables, terms and expressions combine freely. A product without an expression is a
// Term; every sum is an Expr. An expression that nobody else needs lends its storage to the result.

template <typename A, typename B>
requires detail::Operands<A, B> Expr operator+(A&& a, B&& b) {
  if constexpr (detail::Small<A> && detail::ExprLike<B>) {
    Expr sum = detail::take(std::forward<B>(b));
    sum += a;
    return sum;
  } else {
    Expr sum = detail::take(std::forward<A>(a));
    sum += b;
    return sum;
  }
}

template <typename A, typename B>
requires detail::Operands<A, B> Expr operator-(A&& a, B&& b) {
  if constexpr (detail::Small<A> && detail::ExprLike<B>) {
    Expr difference = -detail::take(std::forward<B>(b));
    difference += a;
    return difference;
  } else {
    Expr difference = detail::take(std::forward<A>(a));
    difference -= b;
    return difference;
  }
}

template <typename A, typename B>
requires detail::Operands<A, B>
auto operator*(A&& a, B&& b) {
  if constexpr (detail::Small<A> && detail::Small<B>) {
    if constexpr (std::same_as<std::remove_cvref_t<A>, Term>) {
      Term product = std::forward<A>(a);
      product *= detail::canonical(b);
      return product;
    } else if constexpr (detail::IntegerLike<B>) {
      Term product{Integer(b)};
      product *= a;
      return product;
    } else {
      Term product(a);
      product *= b;
      return product;
    }
  } else if constexpr (detail::ExprLike<A> && detail::ExprLike<B>) {
    return Expr(zorv_expr_mul_expr(detail::canonical(a).handle(), detail::canonical(b).handle()));
  } else if constexpr (detail::ExprLike<A>) {
    Expr product = detail::take(std::forward<A>(a));
    product *= b;
    return product;
  } else {
    Expr product = detail::take(std::forward<B>(b));
    product *= a;
    return product;
  }
}

/// Exact: aborts on 0 and on a remainder.
template <typename A, detail::IntegerLike B>
requires(detail::ExprLike<A> || std::same_as<std::remove_cvref_t<A>, Term>) auto operator/(
    A&& a, const B& divisor) {
  auto quotient = [&] {
    if constexpr (detail::ExprLike<A>) {
      return detail::take(std::forward<A>(a));
    } else {
      return Term(std::forward<A>(a));
    }
  }();
  quotient /= Integer(divisor);
  return quotient;
}

template <detail::Literal L>
Term operator-(L x) {
  return Term(Integer(-1), x);
}
template <typename E>
requires detail::ExprLike<E> Expr operator-(E&& e) {
  Expr negated = detail::take(std::forward<E>(e));
  zorv_expr_negate(negated.handle());
  return negated;
}
template <typename T>
requires detail::Algebraic<T>
auto operator+(T&& value) {
  if constexpr (detail::ExprLike<T>) {
    return detail::take(std::forward<T>(value));
  } else {
    return std::remove_cvref_t<T>(std::forward<T>(value));
  }
}

/// "2 +x -3*y"; "0" for zero. Constraints have no effect on it.
inline std::string str(const Expr& e) { return zorv_expr_str(e.handle()); }
inline std::ostream& operator<<(std::ostream& out, const Expr& e) { return out << str(e); }

// ---- Sums and products

namespace detail {

/// Arrays, which have a sum of their own.
template <typename T>
inline constexpr bool kHasRank = requires {
  std::remove_cvref_t<T>::kRank;
};

/// Terms in flat arrays, which become an expression in one call.
class Bulk {
 public:
  void add(const Integer& value) { constants_.push_back(value); }
  template <Literal L>
  void add(L x) {
    coeffs_.emplace_back(1);
    degrees_.push_back(1);
    literals_.push_back(x.literal());
  }
  void add(const Term& term) {
    if (term.degree() == 0) return add(term.coeff());
    coeffs_.push_back(term.coeff());
    degrees_.push_back(term.degree());
    literals_.insert(literals_.end(), term.literals(), term.literals() + term.degree());
  }
  Expr expr() const {
    const CoeffWire zero = {0, 0, nullptr};
    const std::vector<CoeffWire> wires = wires_of(coeffs_);
    Expr sum(zorv_expr_create_from_bulk(&zero, wires.size(), wires.data(), degrees_.data(),
                                        literals_.data()));
    for (const Integer& constant : constants_) sum += constant;
    return sum;
  }

 private:
  std::vector<Integer> constants_;
  std::vector<Integer> coeffs_;
  std::vector<uint32_t> degrees_;
  std::vector<uint32_t> literals_;
};

}  // namespace detail

/// The sum of a range of variables, terms, integers or expressions: `sum(std::vector<Term>...)`.
/// The fastest way to a long expression.
template <std::ranges::input_range Range>
requires detail::Operand<std::ranges::range_value_t<Range>> Expr sum(Range&& values) {
  if constexpr (std::derived_from<std::ranges::range_value_t<Range>, Expr> &&
                std::is_lvalue_reference_v<std::ranges::range_reference_t<Range>>) {
    std::vector<zorv_expr*> handles;
    for (const Expr& value : values) handles.push_back(value.handle());
    return Expr(zorv_array_sum(handles.data(), handles.size()));
  } else if constexpr (detail::ExprLike<std::ranges::range_value_t<Range>>) {
    Expr total;
    for (auto&& value : values) total += value;
    return total;
  } else {
    detail::Bulk terms;
    for (auto&& value : values) terms.add(detail::canonical(value));
    return terms.expr();
  }
}

/// The square.
inline Expr sqr(const Expr& e) { return Expr(zorv_expr_sqr(e.handle())); }

// ---- Rewriting

/// The canonical form: equal terms added up, zeros dropped, everything sorted. The binary form also
/// reads variables as 0/1, the spin form as -1/+1. Bodies of constraints are rewritten likewise.
inline Expr simplify(const Expr& e) { return Expr(zorv_expr_simplify(e.handle())); }
inline Expr simplify_as_binary(const Expr& e) {
  return Expr(zorv_expr_simplify_as_binary(e.handle()));
}
inline Expr simplify_as_spin(const Expr& e) { return Expr(zorv_expr_simplify_as_spin(e.handle())); }

/// The same polynomial over -1/+1 instead of 0/1, by x = (s + 1) / 2, and back, by s = 2*x - 1. To
/// stay among integers the first returns 2^D times the value, D being e.max_degree().
inline Expr binary_to_spin(const Expr& e) { return Expr(zorv_expr_binary_to_spin(e.handle())); }
inline Expr spin_to_binary(const Expr& e) { return Expr(zorv_expr_spin_to_binary(e.handle())); }

/// Every native integer variable written in bits "n#0", "n#1", ...
inline Expr binarize(const Expr& e) { return Expr(zorv_expr_binarize(e.handle())); }

/// A polynomial of degree 2 at most with the same minimum over new auxiliary variables.
inline Expr reduce(const Expr& e) { return Expr(zorv_expr_reduce(e.handle())); }

/// Declared constraints turned into weighted penalties, with new slack variables, for solvers that
/// know no constraints.
inline Expr expand_cons(const Expr& e) { return Expr(zorv_expr_expand_cons(e.handle())); }

/// A literal and what stands in its place.
struct Replacement {
  template <detail::Literal L>
  Replacement(L x, Expr by) : literal(x.literal()), expr(std::move(by)) {}

  uint32_t literal;
  Expr expr;
};

/// The expression with literals replaced, multiplied out. A key x leaves ~x alone.
inline Expr replace(const Expr& e, std::span<const Replacement> replacements) {
  std::vector<uint32_t> literals;
  std::vector<zorv_expr*> exprs;
  for (const Replacement& r : replacements) {
    literals.push_back(r.literal);
    exprs.push_back(r.expr.handle());
  }
  return Expr(zorv_expr_replace(e.handle(), literals.data(), exprs.data(), literals.size()));
}
inline Expr replace(const Expr& e, std::initializer_list<Replacement> replacements) {
  return replace(e, std::span(replacements.begin(), replacements.size()));
}

// ---- Values

/// A variable and its value.
struct Assignment {
  template <detail::Literal L>
  Assignment(L x, Integer v) : literal(x.literal()), value(std::move(v)) {}

  uint32_t literal;
  Integer value;
};

/// The value of a polynomial where each of its variables has a given one. Aborts on declared
/// constraints, and on a variable without a value.
inline Integer eval(const Expr& e, std::span<const Assignment> assignments) {
  std::vector<uint32_t> literals;
  std::vector<CoeffWire> wires;
  for (const Assignment& a : assignments) {
    literals.push_back(a.literal);
    wires.push_back(a.value.wire());
  }
  std::vector<const CoeffWire*> values;
  values.reserve(wires.size());
  for (const CoeffWire& wire : wires) values.push_back(&wire);
  return detail::read_integer([&](CoeffWire* out) {
    zorv_expr_eval_map(e.handle(), literals.data(), values.data(), values.size(), out);
  });
}
inline Integer eval(const Expr& e, std::initializer_list<Assignment> assignments) {
  return eval(e, std::span(assignments.begin(), assignments.size()));
}

/// The greatest common divisor of the constant and all coefficients, 0 if all are 0.
inline Integer gcd(const Expr& e) {
  return detail::read_integer([&](CoeffWire* out) { zorv_expr_gcd(e.handle(), out); });
}

/// Bounds of the values that `e` can take; they need not be reached.
inline Integer lower_bound(const Expr& e) {
  return detail::read_integer([&](CoeffWire* out) { zorv_expr_neg_sum(e.handle(), out); });
}
inline Integer upper_bound(const Expr& e) {
  return detail::read_integer([&](CoeffWire* out) { zorv_expr_pos_sum(e.handle(), out); });
}

// ---- Integers in bits

/// An integer variable that is an expression from the start: lo plus a sum of coefficients times
/// fresh binary variables. For solvers that know bits alone; native ones (`int_var`) are kept
/// whole.
class VarInt : public detail::StandsForExpr {
 public:
  /// The values are exactly lo .. hi. Without a name the library draws one.
  VarInt(const std::string& name, const Integer& lo, const Integer& hi) : expr_(nullptr) {
    const CoeffWire low = lo.wire(), high = hi.wire();
    expr_ = Expr(zorv_varintelem_create(name.c_str(), &low, &high));
  }
  VarInt(const Integer& lo, const Integer& hi) : VarInt({}, lo, hi) {}
  /// Takes over a handle of the C interface that is a VarInt.
  explicit VarInt(zorv_expr* handle) : expr_(handle) {}

  Integer min() const { return read(zorv_varintelem_min); }
  Integer max() const { return read(zorv_varintelem_max); }
  /// How many bits there are; the variable of bit i, and what it adds to the value.
  uint64_t bit_count() const { return zorv_varintelem_var_count(expr_.handle()); }
  Var bit(uint64_t i) const { return Var(zorv_varintelem_var(expr_.handle(), i)); }
  Integer coeff(uint64_t i) const {
    return detail::read_integer(
        [&](CoeffWire* out) { zorv_varintelem_coeff(expr_.handle(), i, out); });
  }

  const Expr& get() const { return expr_; }
  operator const Expr&() const { return expr_; }

 private:
  Integer read(void (*getter)(const zorv_expr*, CoeffWire*)) const {
    return detail::read_integer([&](CoeffWire* out) { getter(expr_.handle(), out); });
  }

  Expr expr_;
};

inline std::string str(const VarInt& n) { return str(n.get()); }
inline std::ostream& operator<<(std::ostream& out, const VarInt& n) { return out << str(n); }

}  // namespace zorv
