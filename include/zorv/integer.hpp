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

#include "zorv/wire.h"

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

/// An integer of any size: what coefficients, bounds and energies are. It stores and compares, and
/// is made from and turned into built-in integers, decimal text and Boost's cpp_int; for arithmetic
/// use one of those. One word is stored inside, larger values in a block of their own.
class Integer {
 public:
  Integer() = default;

  template <detail::BuiltIn T>
  Integer(T value)
      : sign_((value > 0) - (value < 0)), limb_count_(value != 0), word_(magnitude(value)) {}

  template <detail::Multiprecision T>
  Integer(const T& value) {
    std::vector<uint64_t> limbs;
    export_bits(value, std::back_inserter(limbs), 64u, false);
    set(value.sign(), limbs);
  }

  /// Reads an optional sign and decimal digits; anything else throws std::invalid_argument.
  explicit Integer(std::string_view decimal);

  Integer(const Integer& other)
      : sign_(other.sign_), limb_count_(other.limb_count_), word_(other.word_) {
    if (!is_inline()) hold_copy(other.limbs());
  }
  Integer(Integer&& other) noexcept
      : sign_(std::exchange(other.sign_, 0)),
        limb_count_(std::exchange(other.limb_count_, 0)),
        word_(other.word_) {}
  Integer& operator=(Integer other) noexcept {
    std::swap(sign_, other.sign_);
    std::swap(limb_count_, other.limb_count_);
    std::swap(word_, other.word_);
    return *this;
  }
  ~Integer() {
    if (!is_inline()) std::free(block());
  }

  /// -1, 0 or +1.
  int sign() const { return sign_; }

  /// Whether the value is one of type T.
  template <detail::BuiltIn T>
  bool fits() const {
    if (limb_count_ > 1) return false;
    if (sign_ < 0) return word_ <= magnitude(std::numeric_limits<T>::min());
    return limb_count_ == 0 || word_ <= static_cast<uint64_t>(std::numeric_limits<T>::max());
  }

  /// The value as a built-in integer; throws std::overflow_error if it does not fit.
  template <detail::BuiltIn T>
  T to() const {
    if (!fits<T>()) throw std::overflow_error("zorv: " + str() + " does not fit the type");
    if (limb_count_ == 0) return 0;
    return static_cast<T>(sign_ < 0 ? 0 - word_ : word_);
  }
  /// The value as an integer of Boost.Multiprecision.
  template <detail::Multiprecision T>
  T to() const {
    T value(0);
    if (limb_count_ != 0) import_bits(value, limbs(), limbs() + limb_count_, 64u, false);
    return sign_ < 0 ? T(-value) : value;
  }
  template <typename T>
  requires detail::BuiltIn<T> || detail::Multiprecision<T>
  explicit operator T() const { return to<T>(); }

  /// Decimal digits, after a "-" if the value is negative.
  std::string str() const;

  Integer operator-() const& { return Integer(*this).negated(); }
  Integer operator-() && { return std::move(negated()); }

  friend bool operator==(const Integer& a, const Integer& b) { return compare(a, b) == 0; }
  friend std::strong_ordering operator<=>(const Integer& a, const Integer& b) {
    return compare(a, b) <=> 0;
  }
  friend std::ostream& operator<<(std::ostream& out, const Integer& value) {
    return out << value.str();
  }

  /// The value as the C interface reads it; good as long as this object lives unchanged.
  CoeffWire wire() const { return {sign_, limb_count_, const_cast<uint64_t*>(limbs())}; }

  /// Takes over a record that the C interface has written, its block included.
  static Integer adopt(const CoeffWire& wire) {
    Integer value;
    value.sign_ = wire.sign;
    value.limb_count_ = wire.nlimbs;
    if (wire.nlimbs > 1) {
      value.word_ = reinterpret_cast<uintptr_t>(wire.limbs);
    } else if (wire.nlimbs == 1) {
      value.word_ = wire.limbs[0];
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

  bool is_inline() const { return limb_count_ <= 1; }
  uint64_t* block() const { return reinterpret_cast<uint64_t*>(word_); }
  const uint64_t* limbs() const { return is_inline() ? &word_ : block(); }
  void hold_copy(const uint64_t* limbs) {
    void* copy = std::malloc(limb_count_ * sizeof(uint64_t));
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, limbs, limb_count_ * sizeof(uint64_t));
    word_ = reinterpret_cast<uintptr_t>(copy);
  }
  Integer& negated() {
    sign_ = -sign_;
    return *this;
  }
  /// \param limbs magnitude, low limbs first; leading zeros are dropped
  void set(int sign, const std::vector<uint64_t>& limbs);

  int32_t sign_ = 0;
  uint32_t limb_count_ = 0;
  uint64_t word_ = 0;  // the magnitude, or from two limbs on the address of a block of malloc
};

inline std::string str(const Integer& value) { return value.str(); }

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
  sign_ = count == 0 ? 0 : sign;
  limb_count_ = static_cast<uint32_t>(count);
  if (is_inline()) {
    word_ = count == 0 ? 0 : limbs[0];
  } else {
    hold_copy(limbs.data());
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
  if (sign_ == 0) return "0";
  std::vector<uint32_t> halves;
  for (const uint64_t* limb = limbs(); limb != limbs() + limb_count_; ++limb) {
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
  if (sign_ < 0) reversed.push_back('-');
  return {reversed.rbegin(), reversed.rend()};
}

inline int Integer::compare(const Integer& a, const Integer& b) {
  if (a.sign_ != b.sign_) return a.sign_ < b.sign_ ? -1 : 1;
  if (a.limb_count_ != b.limb_count_) return a.limb_count_ < b.limb_count_ ? -a.sign_ : a.sign_;
  for (size_t i = a.limb_count_; i-- != 0;) {
    if (a.limbs()[i] != b.limbs()[i]) return a.limbs()[i] < b.limbs()[i] ? -a.sign_ : a.sign_;
  }
  return 0;
}

}  // namespace zorv
