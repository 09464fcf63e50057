/// \file
/// zorv::Integer: an integer of any size, as it crosses the border of the library.
#pragma once

#include <algorithm>
#include <compare>
#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "zorv/zorv.h"

namespace zorv {

namespace detail {

/// The integer types of the language. Truth values and characters are left out: in arithmetic they
/// are mistakes more often than numbers.
template <typename T>
concept BuiltIn = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> &&
                  !std::same_as<T, wchar_t> && !std::same_as<T, char8_t> &&
                  !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

/// Integers of Boost.Multiprecision, above all cpp_int, recognised by what they can do, so that
/// this header needs no other.
template <typename T>
concept Multiprecision = requires(const T& in, T& out, std::vector<uint64_t>& limbs) {
  { in.sign() } -> std::convertible_to<int>;
  export_bits(in, std::back_inserter(limbs), 64u, false);
  import_bits(out, limbs.begin(), limbs.end(), 64u, false);
};

}  // namespace detail

/// An integer of any size: what coefficients, bounds and energies are. It adds, multiplies and
/// compares, and is made from and turned into built-in integers, decimal text and Boost's cpp_int,
/// which does the rest of arithmetic. One limb is stored inside, larger values in a block.
class Integer {
 public:
  Integer() = default;

  template <detail::BuiltIn T>
  Integer(T value) : size_((value > 0) - (value < 0)), limb_(magnitude(value)) {}

  template <detail::Multiprecision T>
  Integer(const T& value) {
    std::vector<uint64_t> limbs;
    export_bits(value, std::back_inserter(limbs), 64u, false);
    set(value.sign(), limbs);
  }

  /// Reads an optional sign and decimal digits; anything else throws std::invalid_argument.
  explicit Integer(std::string_view decimal);

  Integer(const Integer& other) : size_(other.size_), limb_(other.limb_) {
    if (other.block_ != nullptr) hold_copy(other.block_);
  }
  Integer(Integer&& other) noexcept
      : size_(std::exchange(other.size_, 0)),
        limb_(other.limb_),
        block_(std::exchange(other.block_, nullptr)) {}
  Integer& operator=(Integer other) & noexcept {
    std::swap(size_, other.size_);
    std::swap(limb_, other.limb_);
    std::swap(block_, other.block_);
    return *this;
  }
  ~Integer() {
    if (block_ != nullptr) std::free(block_);  // a call less for every small value
  }

  /// -1, 0 or +1.
  int sign() const { return (size_ > 0) - (size_ < 0); }

  /// Whether the value is one of type T.
  template <detail::BuiltIn T>
  bool fits() const {
    if (size_ == 0) return true;
    if (limb_count() > 1) return false;
    return size_ < 0 ? limb_ <= magnitude(std::numeric_limits<T>::min())
                     : limb_ <= static_cast<uint64_t>(std::numeric_limits<T>::max());
  }

  /// The value as a built-in integer; throws std::overflow_error if it does not fit.
  template <detail::BuiltIn T>
  T to() const {
    if (!fits<T>()) throw std::overflow_error("zorv: " + str() + " does not fit the type");
    if (size_ == 0) return 0;
    return static_cast<T>(size_ < 0 ? 0 - limb_ : limb_);
  }
  /// The value as an integer of Boost.Multiprecision.
  template <detail::Multiprecision T>
  T to() const {
    T value(0);
    if (size_ != 0) import_bits(value, limbs(), limbs() + limb_count(), 64u, false);
    return size_ < 0 ? T(-value) : value;
  }
  template <typename T>
  requires detail::BuiltIn<T> || detail::Multiprecision<T>
  explicit operator T() const { return to<T>(); }

  /// Decimal digits, after a "-" if the value is negative.
  std::string str() const;

  Integer operator-() const& { return Integer(*this).negated(); }
  Integer operator-() && { return std::move(negated()); }

  friend Integer operator+(const Integer& a, const Integer& b) {
    int64_t sum;
    return both_fit(a, b) && !__builtin_add_overflow(a.to<int64_t>(), b.to<int64_t>(), &sum)
               ? Integer(sum)
               : computed(a, zorv_expr_iadd_int, b);
  }
  friend Integer operator-(const Integer& a, const Integer& b) {
    int64_t difference;
    return both_fit(a, b) && !__builtin_sub_overflow(a.to<int64_t>(), b.to<int64_t>(), &difference)
               ? Integer(difference)
               : computed(a, zorv_expr_isub_int, b);
  }
  friend Integer operator*(const Integer& a, const Integer& b) {
    int64_t product;
    return both_fit(a, b) && !__builtin_mul_overflow(a.to<int64_t>(), b.to<int64_t>(), &product)
               ? Integer(product)
               : computed(a, zorv_expr_imul_int, b);
  }
  Integer& operator+=(const Integer& other) & { return *this = *this + other; }
  Integer& operator-=(const Integer& other) & { return *this = *this - other; }
  Integer& operator*=(const Integer& other) & { return *this = *this * other; }

  friend bool operator==(const Integer& a, const Integer& b) { return compare(a, b) == 0; }
  friend std::strong_ordering operator<=>(const Integer& a, const Integer& b) {
    return compare(a, b) <=> 0;
  }
  friend std::ostream& operator<<(std::ostream& out, const Integer& value) {
    return out << value.str();
  }

  /// The value as the C interface reads it; good as long as this object lives unchanged.
  CoeffWire wire() const { return {sign(), limb_count(), const_cast<uint64_t*>(limbs())}; }

  /// Takes over a record that the C interface has written, its block included.
  static Integer adopt(const CoeffWire& wire) {
    Integer value;
    value.size_ = wire.sign * int64_t{wire.nlimbs};
    if (wire.nlimbs > 1) {
      value.block_ = wire.limbs;
    } else if (wire.nlimbs == 1) {
      value.limb_ = wire.limbs[0];
      std::free(wire.limbs);
    }
    return value;
  }

 private:
  template <detail::BuiltIn T>
  static constexpr uint64_t magnitude(T value) {
    const auto word = static_cast<uint64_t>(value);
    return value < 0 ? 0 - word : word;
  }
  static int compare(const Integer& a, const Integer& b);
  static bool both_fit(const Integer& a, const Integer& b) {
    return a.fits<int64_t>() && b.fits<int64_t>();
  }
  /// Large numbers are computed by the library, as the constant of an expression.
  static Integer computed(const Integer& a, void (*operation)(zorv_expr*, const CoeffWire*),
                          const Integer& b);

  uint32_t limb_count() const { return static_cast<uint32_t>(size_ < 0 ? -size_ : size_); }
  const uint64_t* limbs() const { return block_ != nullptr ? block_ : &limb_; }
  [[gnu::noinline]] void hold_copy(const uint64_t* limbs) {
    void* copy = std::malloc(limb_count() * sizeof(uint64_t));
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, limbs, limb_count() * sizeof(uint64_t));
    block_ = static_cast<uint64_t*>(copy);
  }
  Integer& negated() {
    size_ = -size_;
    return *this;
  }
  /// \param limbs magnitude, low limbs first; leading zeros are dropped
  void set(int sign, const std::vector<uint64_t>& limbs);

  int64_t size_ = 0;           // the number of limbs times the sign: one word is moved faster
  uint64_t limb_ = 0;          // the magnitude, if it fits
  uint64_t* block_ = nullptr;  // a block of malloc with the magnitude from two limbs on
};

inline std::string str(const Integer& value) { return value.str(); }
inline Integer abs(const Integer& value) { return value.sign() < 0 ? -value : value; }

namespace detail {

/// The integer that `write` puts into the record it is given.
template <typename Write>
Integer read_integer(Write&& write) {
  CoeffWire wire = {0, 0, nullptr};
  write(&wire);
  return Integer::adopt(wire);
}

/// Records of many integers, which have to stay alive.
template <typename Integers>
std::vector<CoeffWire> wires_of(const Integers& values) {
  std::vector<CoeffWire> wires;
  wires.reserve(std::size(values));
  for (const Integer& value : values) wires.push_back(value.wire());
  return wires;
}

/// Decimal text is made nine digits at a time, the most that half a limb has room for.
inline constexpr uint32_t kDigitsPerStep = 9;
inline constexpr uint64_t kStep = 1'000'000'000;

}  // namespace detail

inline void Integer::set(int sign, const std::vector<uint64_t>& limbs) {
  size_t count = limbs.size();
  while (count != 0 && limbs[count - 1] == 0) --count;
  size_ = sign * static_cast<int64_t>(count);
  if (count > 1) {
    hold_copy(limbs.data());
  } else if (count == 1) {
    limb_ = limbs[0];
  }
}

inline Integer::Integer(std::string_view decimal) {
  const bool is_minus = decimal.starts_with('-');
  const std::string_view digits = decimal.substr(is_minus || decimal.starts_with('+') ? 1 : 0);
  const auto is_digit = [](char c) { return '0' <= c && c <= '9'; };
  if (digits.empty() || !std::all_of(digits.begin(), digits.end(), is_digit)) {
    throw std::invalid_argument("zorv: \"" + std::string(decimal) + "\" is no decimal integer");
  }
  // Half limbs, so that a product and a carry fit in a word.
  std::vector<uint32_t> halves;
  for (const char digit : digits) {
    uint64_t carry = static_cast<uint64_t>(digit - '0');
    for (uint32_t& half : halves) {
      carry += uint64_t{half} * 10;
      half = static_cast<uint32_t>(carry);
      carry >>= 32;
    }
    if (carry != 0) halves.push_back(static_cast<uint32_t>(carry));
  }
  if (halves.size() % 2 != 0) halves.push_back(0);
  std::vector<uint64_t> limbs;
  for (size_t i = 0; i < halves.size(); i += 2) {
    limbs.push_back(uint64_t{halves[i + 1]} << 32 | halves[i]);
  }
  set(is_minus ? -1 : 1, limbs);
}

inline std::string Integer::str() const {
  if (size_ == 0) return "0";
  std::vector<uint32_t> halves;
  for (const uint64_t* limb = limbs(); limb != limbs() + limb_count(); ++limb) {
    halves.push_back(static_cast<uint32_t>(*limb));
    halves.push_back(static_cast<uint32_t>(*limb >> 32));
  }
  std::string reversed;
  while (!halves.empty()) {
    uint64_t rest = 0;
    for (size_t i = halves.size(); i-- != 0;) {
      rest = rest << 32 | halves[i];
      halves[i] = static_cast<uint32_t>(rest / detail::kStep);
      rest %= detail::kStep;
    }
    while (!halves.empty() && halves.back() == 0) halves.pop_back();
    for (uint32_t k = 0; k < detail::kDigitsPerStep; ++k, rest /= 10) {
      reversed.push_back(static_cast<char>('0' + rest % 10));
    }
  }
  reversed.erase(reversed.find_last_not_of('0') + 1);
  if (size_ < 0) reversed.push_back('-');
  return {reversed.rbegin(), reversed.rend()};
}

inline Integer Integer::computed(const Integer& a, void (*operation)(zorv_expr*, const CoeffWire*),
                                 const Integer& b) {
  const CoeffWire left = a.wire(), right = b.wire();
  zorv_expr* const e = zorv_expr_create_int(&left);
  operation(e, &right);
  Integer result = detail::read_integer([&](CoeffWire* out) { zorv_expr_constant(e, out); });
  zorv_expr_destroy(e);
  return result;
}

inline int Integer::compare(const Integer& a, const Integer& b) {
  if (a.size_ != b.size_) return a.size_ < b.size_ ? -1 : 1;
  for (size_t i = a.limb_count(); i-- != 0;) {
    const uint64_t x = a.limbs()[i], y = b.limbs()[i];
    if (x != y) return (x < y) == (a.size_ > 0) ? -1 : 1;
  }
  return 0;
}

}  // namespace zorv
