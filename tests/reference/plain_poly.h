// A polynomial as slowly and plainly as it can be: a map from sorted literals to coefficients, and
// evaluation straight from the definition. For tests only.
#pragma once

#include <algorithm>
#include <map>
#include <vector>

#include "core/expr.h"

namespace zorv::test {

// Literals in the order of their sort keys; the empty list is the constant.
using PlainPoly = std::map<std::vector<uint32_t>, coeff_t>;

inline bool key_less(uint32_t a, uint32_t b) { return sort_key(a) < sort_key(b); }

inline std::vector<uint32_t> literals_of_term(const TermImpl& t) {
  std::vector<uint32_t> literals;
  for (uint32_t i = 0; i < t.vars.degree(); ++i) literals.push_back(t.vars[i]);
  return literals;
}

// Equal terms added up, zeros left out; nothing else is rewritten.
inline PlainPoly plain_poly(const ExprImpl& e) {
  PlainPoly poly;
  poly[{}] += e.constant;
  e.list.for_each([&](const TermImpl& t) {
    std::vector<uint32_t> literals = literals_of_term(t);
    std::sort(literals.begin(), literals.end(), key_less);
    poly[literals] += t.coeff;
  });
  std::erase_if(poly, [](const auto& entry) { return entry.second == 0; });
  return poly;
}

// Values of variables by identity (a literal without its negation). A variable that is missing is
// an error of the test and throws.
using Assignment = std::map<uint32_t, coeff_t>;

// What a negated literal means: 1 - x over 0/1, -s over -1/+1.
enum class Reading { kBinary, kSpin };

// value_of(literal) for every literal as it stands.
template <typename ValueOf>
coeff_t plain_value_by(const ExprImpl& e, ValueOf value_of) {
  auto sum = coeff_t(e.constant);
  e.list.for_each([&](const TermImpl& t) {
    auto product = coeff_t(t.coeff);
    for (const uint32_t literal : t.vars) product *= value_of(literal);
    sum += product;
  });
  return sum;
}

inline coeff_t plain_value(const ExprImpl& e, const Assignment& values,
                           Reading reading = Reading::kBinary) {
  return plain_value_by(e, [&](uint32_t literal) {
    const coeff_t& value = values.at(identity_of(literal));
    if (!is_negated(literal)) return value;
    return reading == Reading::kBinary ? coeff_t(1 - value) : coeff_t(-value);
  });
}

}  // namespace zorv::test
