/// \file
/// Variables, and terms: products of a coefficient and variables.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "zorv/integer.hpp"
#include "zorv/zorv.h"

namespace zorv {

/// A binary variable, or its complement 1 - x, which `~x` gives. A small number that is copied
/// freely; the name and everything else is the registry's. `var` makes new ones.
class Var {
 public:
  /// Names no variable.
  Var() = default;
  constexpr explicit Var(uint32_t literal) : literal_(literal) {}
  Var(const Var&) = default;
  Var& operator=(const Var&) & = default;  // not to what an array hands out as a copy

  /// The number that the C interface uses.
  constexpr uint32_t literal() const { return literal_; }
  constexpr bool is_complement() const { return (literal_ & kComplement) != 0; }
  constexpr Var operator~() const { return Var(literal_ ^ kComplement); }

  /// Whether both are the same literal. (`x == y` is the constraint that their values are equal.)
  friend constexpr bool same(Var a, Var b) { return a.literal_ == b.literal_; }

 private:
  static constexpr uint32_t kComplement = uint32_t{1} << 31;
  uint32_t literal_ = 0xFFFFFFFF;
};

/// A native integer variable, which models keep whole. It has no complement. `int_var` makes new
/// ones.
class IntVar {
 public:
  /// Names no variable.
  IntVar() = default;
  constexpr explicit IntVar(uint32_t literal) : literal_(literal) {}
  IntVar(const IntVar&) = default;
  IntVar& operator=(const IntVar&) & = default;

  /// The number that the C interface uses.
  constexpr uint32_t literal() const { return literal_; }

  /// The bounds, both ends inside.
  std::pair<Integer, Integer> bounds() const {
    CoeffWire lo = {0, 0, nullptr}, hi = {0, 0, nullptr};
    zorv_int_var_bounds(literal_, &lo, &hi);
    return {Integer::adopt(lo), Integer::adopt(hi)};
  }

  friend constexpr bool same(IntVar a, IntVar b) { return a.literal_ == b.literal_; }

 private:
  uint32_t literal_ = 0xFFFFFFFF;
};

/// Makes a binary variable. Names may repeat; without one the library draws one.
inline Var var(const std::string& name = {}) { return Var(zorv_new_var(name.c_str())); }

/// Makes an integer variable with lo <= value <= hi. Aborts unless lo < hi.
inline IntVar int_var(const std::string& name, const Integer& lo, const Integer& hi) {
  const CoeffWire low = lo.wire(), high = hi.wire();
  return IntVar(zorv_new_int_var(name.c_str(), &low, &high));
}
inline IntVar int_var(const Integer& lo, const Integer& hi) { return int_var({}, lo, hi); }

/// The name: "x[1][2]", "~x" for a complement.
inline std::string str(Var x) { return zorv_var_str(x.literal()); }
inline std::string str(IntVar n) { return zorv_var_str(n.literal()); }
inline std::ostream& operator<<(std::ostream& out, Var x) { return out << str(x); }
inline std::ostream& operator<<(std::ostream& out, IntVar n) { return out << str(n); }

/// How many binary variables and how many integer ones there are.
inline uint64_t var_count() { return zorv_var_count(); }
inline uint64_t int_var_count() { return zorv_int_var_count(); }

/// Forgets all variables. Nothing that holds one may be used afterwards.
inline void reset_vars() { zorv_var_reset(); }

namespace detail {

template <typename T>
concept Literal = std::same_as<T, Var> || std::same_as<T, IntVar>;

/// The literals of a term: up to four inside, more in a block that doubles when its size is a power
/// of two. A filler stands behind the last one, so that the literals from the third on are a block
/// as the C interface reads it.
class LiteralList {
 public:
  LiteralList() { inside_[0] = kFiller; }
  explicit LiteralList(uint32_t literal) : size_(1) {
    inside_[0] = literal;
    inside_[1] = kFiller;
  }
  LiteralList(const LiteralList& other) : size_(other.size_) {
    other.block_ ? hold_copy(other.data(), std::bit_ceil(size_)) : copy_inside(other);
  }
  LiteralList(LiteralList&& other) noexcept
      : size_(std::exchange(other.size_, 0)), block_(std::move(other.block_)) {
    if (!block_) copy_inside(other);
    other.inside_[0] = kFiller;
  }
  LiteralList& operator=(LiteralList other) noexcept {
    size_ = other.size_;
    block_ = std::move(other.block_);
    if (!block_) copy_inside(other);
    return *this;
  }

  uint32_t size() const { return size_; }
  const uint32_t* data() const { return block_ ? block_.get() : inside_.data(); }
  uint32_t operator[](uint32_t i) const { return data()[i]; }

  /// The first two literals in one word, and those from the third on, null if there is no second.
  uint64_t head_pair() const {
    const uint64_t second = size_ > 1 ? data()[1] : kFiller;
    return second << 32 | data()[0];
  }
  const uint32_t* overflow() const { return size_ > 1 ? data() + 2 : nullptr; }

  void push_back(uint32_t literal) {
    if (size_ >= kInside && std::has_single_bit(size_)) hold_copy(data(), size_ * 2);
    uint32_t* const end = (block_ ? block_.get() : inside_.data()) + size_++;
    end[0] = literal;
    end[1] = kFiller;
  }
  /// `other` may be this list.
  void append(const LiteralList& other) {
    const uint32_t count = other.size_;
    for (uint32_t i = 0; i < count; ++i) push_back(other[i]);
  }

 private:
  static constexpr uint32_t kFiller = 0xFFFFFFFF;
  static constexpr uint32_t kInside = 4;

  // Literal by literal, as they were written: a wider read of them, or a call, takes longer.
  void copy_inside(const LiteralList& other) {
    if (size_ > 0) inside_[0] = other.inside_[0];
    if (size_ > 1) inside_[1] = other.inside_[1];
    if (size_ > 2) inside_[2] = other.inside_[2];
    if (size_ > 3) inside_[3] = other.inside_[3];
    inside_[size_] = kFiller;
  }
  [[gnu::noinline]] void hold_copy(const uint32_t* literals, uint32_t capacity) {
    auto copy = std::make_unique_for_overwrite<uint32_t[]>(size_t{capacity} + 1);
    std::copy_n(literals, size_t{size_} + 1, copy.get());
    block_ = std::move(copy);
  }

  uint32_t size_ = 0;
  std::array<uint32_t, kInside + 1> inside_;
  std::unique_ptr<uint32_t[]> block_;
};

}  // namespace detail

/// A coefficient times literals, as in 3*x*~y. Literals keep their order and may repeat. A value
/// of this header alone: the library sees it when it is put into an expression or an array.
class Term {
 public:
  /// 0, without literals.
  Term() = default;
  Term(Integer coeff) : coeff_(std::move(coeff)) {}
  template <detail::BuiltIn T>
  Term(T coeff) : coeff_(coeff) {}
  Term(Var x) : coeff_(1), literals_(x.literal()) {}
  Term(IntVar n) : coeff_(1), literals_(n.literal()) {}
  template <detail::Literal L>
  Term(Integer coeff, L x) : coeff_(std::move(coeff)), literals_(x.literal()) {}
  Term(const Term&) = default;
  Term(Term&&) noexcept = default;
  Term& operator=(const Term&) & = default;
  Term& operator=(Term&&) & noexcept = default;

  const Integer& coeff() const { return coeff_; }
  uint32_t degree() const { return literals_.size(); }
  /// Literal i < degree() as the C interface numbers it, and all of them.
  uint32_t literal(uint32_t i) const { return literals_[i]; }
  const uint32_t* literals() const { return literals_.data(); }
  /// The same in the two parts that the C interface stores, see zorv.h.
  uint64_t head_pair() const { return literals_.head_pair(); }
  const uint32_t* overflow() const { return literals_.overflow(); }

  template <detail::Literal L>
  Term& operator*=(L x) & {
    literals_.push_back(x.literal());
    return *this;
  }
  Term& operator*=(const Term& other) &;
  Term& operator*=(const Integer& factor) & {
    coeff_ *= factor;
    return *this;
  }
  /// Exact: aborts on 0 and on a remainder.
  Term& operator/=(const Integer& divisor) &;

  Term operator-() const& { return Term(*this).negated(); }
  Term operator-() && { return std::move(negated()); }

 private:
  Term& negated() {
    coeff_ = -std::move(coeff_);
    return *this;
  }

  Integer coeff_;
  detail::LiteralList literals_;
};

namespace detail {

/// A term as the library holds it.
class TermHandle {
 public:
  explicit TermHandle(zorv_term* handle) : handle_(handle) {}
  explicit TermHandle(const Term& term) {
    const CoeffWire coeff = term.coeff().wire();
    handle_.reset(zorv_term_create_vararray(&coeff, term.head_pair(), term.overflow()));
  }

  zorv_term* get() const { return handle_.get(); }

 private:
  struct Destroy {
    void operator()(zorv_term* handle) const { zorv_term_destroy(handle); }
  };
  std::unique_ptr<zorv_term, Destroy> handle_;
};

inline Term read_term(const zorv_term* handle) {
  Term term(read_integer([&](CoeffWire* out) { zorv_term_coeff(handle, out); }));
  for (uint32_t i = 0; i < zorv_term_degree(handle); ++i) {
    term *= Var(zorv_term_var_at(handle, i));
  }
  return term;
}

}  // namespace detail

inline Term& Term::operator/=(const Integer& divisor) & {
  const detail::TermHandle constant{Term(coeff_)};
  const CoeffWire wire = divisor.wire();
  zorv_term_div_coeff(constant.get(), &wire);
  coeff_ = detail::read_integer([&](CoeffWire* out) { zorv_term_coeff(constant.get(), out); });
  return *this;
}

inline Term& Term::operator*=(const Term& other) & {
  literals_.append(other.literals_);
  return *this *= other.coeff_;
}

/// "-2*x*~y".
inline std::string str(const Term& term) { return zorv_term_str(detail::TermHandle(term).get()); }
inline std::ostream& operator<<(std::ostream& out, const Term& term) { return out << str(term); }

}  // namespace zorv
