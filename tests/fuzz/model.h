// What the library's objects should be worth: values at a few fixed assignments, and the
// constraints beside them. Written from the contracts in zorv.h, with nothing of the library in it.
#pragma once

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/coeff.h"

namespace zorv::fuzz {

// Under kFree every literal, complements and atoms included, has a value of its own, so that two
// polynomials of equal value are the same one. The others read variables as -1/+1 and as 0/1, and
// give atoms values within their bounds.
enum Sample : size_t { kFree, kSpin, kBits, kMoreBits, kSamples };

// A value at each sample; none where the contract leaves it open, until it is read.
using Poly = std::array<std::optional<coeff_t>, kSamples>;

template <typename F>
Poly pointwise(const Poly& a, const Poly& b, F f) {
  Poly result;
  for (size_t s = 0; s < kSamples; ++s) {
    if (a[s] && b[s]) result[s] = f(*a[s], *b[s]);
  }
  return result;
}
inline Poly number(const coeff_t& c) { return {c, c, c, c}; }
inline Poly operator+(const Poly& a, const Poly& b) { return pointwise(a, b, std::plus<>()); }
inline Poly operator-(const Poly& a, const Poly& b) { return pointwise(a, b, std::minus<>()); }
inline Poly operator*(const Poly& a, const Poly& b) { return pointwise(a, b, std::multiplies<>()); }
// What is left of a polynomial that was rewritten for one reading of its variables.
inline Poly only_bits(const Poly& p) {
  return Poly{std::nullopt, std::nullopt, p[kBits], p[kMoreBits]};
}
inline Poly only_spin(const Poly& p) {
  return Poly{std::nullopt, p[kSpin], std::nullopt, std::nullopt};
}

using Interval = std::pair<coeff_t, coeff_t>;

// What one constraint asks for. Copies of a constraint share it.
struct Entry {
  Poly body;
  bool bounded = false;
  coeff_t lo, hi;
  std::vector<Interval> allowed;
  uint32_t k = 2, kind = 0;

  static coeff_t outside(const Interval& range, const coeff_t& value) {
    if (value < range.first) return range.first - value;
    return value > range.second ? coeff_t(value - range.second) : coeff_t(0);
  }
  coeff_t violation(const coeff_t& value) const {
    if (allowed.empty()) return bounded ? outside({lo, hi}, value) : 0;
    coeff_t least = outside(allowed[0], value);
    for (const Interval& range : allowed) least = std::min(least, outside(range, value));
    return least;
  }
};
struct Item {
  std::shared_ptr<Entry> entry;
  coeff_t weight = 1;
};

// kSingle and kSum are classic constraints.
enum class Tag { kPlain, kVarInt, kSingle, kSum, kDeclared };

// An element of an array, or an operand alone.
struct Elem {
  Poly p;
  Tag tag = Tag::kPlain;
  std::vector<Item> items;
  std::optional<Poly> rest;  // the free-form penalty
  uint32_t literal = 0;      // of elements that are one

  bool declared() const { return tag == Tag::kDeclared; }
  bool classic() const { return tag == Tag::kSingle || tag == Tag::kSum; }
  bool constrained() const { return declared() || classic(); }
  coeff_t integer() const { return *p[kBits]; }
  bool only_objective() const {
    return declared() && !rest && !items.empty() &&
           std::all_of(items.begin(), items.end(), [](auto& i) { return i.entry->kind != 0; });
  }
};

inline Elem plain(const Poly& p) { return {p, Tag::kPlain, {}, {}, 0}; }
inline Elem with(Elem e, const Poly& p) { return e.p = p, e; }
inline Elem kept(const Elem& e, const Poly& p) { return e.declared() ? with(e, p) : plain(p); }

// The constraints of all parts together; `legal` becomes false where declared meet classic ones.
inline Elem joined(const std::vector<Elem>& parts, const Poly& p, bool& legal) {
  bool declared = false, classic = false;
  for (const Elem& part : parts) declared |= part.declared(), classic |= part.classic();
  if (declared && classic) legal = false;
  if (!declared && !classic) return plain(p);
  Elem sum = {p, declared ? Tag::kDeclared : Tag::kSum, {}, {}, 0};
  for (const Elem& part : parts) {
    sum.items.insert(sum.items.end(), part.items.begin(), part.items.end());
    const std::optional<Poly> rest =
        !part.constrained() && !declared ? std::optional(part.p) : part.rest;
    if (rest) sum.rest = sum.rest ? *sum.rest + *rest : *rest;
  }
  return sum;
}

inline Elem sum_of(const std::vector<Elem>& parts, bool& legal) {
  Poly p = number(0);
  for (const Elem& part : parts) p = p + part.p;
  return joined(parts, p, legal);
}

inline Elem scaled(const Elem& e, const coeff_t& c, const Poly& p, bool& legal) {
  if (!e.constrained() || (e.classic() && c <= 0)) return plain(p);
  if (c == 0) {
    if (!e.only_objective()) legal = false;
    return plain(p);
  }
  Elem result = {p, e.declared() ? Tag::kDeclared : Tag::kSum, e.items, e.rest, 0};
  for (Item& item : result.items) item.weight *= c;
  if (result.rest) result.rest = *result.rest * number(c);
  return result;
}

// Polynomial, bodies and remainder rewritten; constraints become entries that are new.
inline Elem rewritten(Elem e, const std::function<Poly(const Poly&)>& rewrite) {
  e.p = rewrite(e.p);
  if (e.rest) e.rest = rewrite(*e.rest);
  for (Item& item : e.items) {
    item.entry = std::make_shared<Entry>(*item.entry);
    item.entry->body = rewrite(item.entry->body);
  }
  return e;
}

inline Elem single(const Poly& p, Tag tag, Entry entry) {
  return {p, tag, {{std::make_shared<Entry>(std::move(entry))}}, {}, 0};
}

using Shape = std::vector<uint64_t>;
inline uint64_t extent(const Shape& shape, size_t from = 0) {
  uint64_t n = 1;
  for (size_t axis = from; axis < shape.size(); ++axis) n *= shape[axis];
  return n;
}

// An object of the library and what it should hold. Scalars have one element.
struct Thing {
  void* handle = nullptr;
  Shape shape;
  std::vector<Elem> e;
};

}  // namespace zorv::fuzz
