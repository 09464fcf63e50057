// All small polynomials, and larger ones at random, for tests that hold a rewrite against its
// definition.
#pragma once

#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "reference/plain_poly.h"
#include "support/random.h"
#include "support/support.h"

namespace zorv::test {

// n fresh variables in a row.
inline std::vector<uint32_t> fresh_block(uint64_t n) {
  std::vector<uint32_t> block(n);
  const uint32_t first = new_var_array("v", &n, 1);
  for (uint32_t i = 0; i < n; ++i) block[i] = first + i;
  return block;
}

inline std::vector<uint32_t> with_complements(const std::vector<uint32_t>& variables) {
  std::vector<uint32_t> literals = variables;
  for (const uint32_t v : variables) literals.push_back(v | kNegationBit);
  return literals;
}

// All products of up to `max_degree` literals, repeated ones too, none in two orders.
inline std::vector<VarList> products_of(const std::vector<uint32_t>& literals,
                                        uint32_t max_degree) {
  std::vector<VarList> products;
  const std::function<void(VarList, size_t)> extend = [&](const VarList& product, size_t from) {
    products.push_back(product);
    if (product.degree() == max_degree) return;
    for (size_t i = from; i < literals.size(); ++i) {
      VarList longer = product;
      longer.append(literals[i]);
      extend(longer, i);
    }
  };
  extend(VarList(), 0);
  return products;
}

// Whether no variable stands there twice, negated or not.
inline bool all_different(const VarList& product) {
  for (uint32_t i = 0; i < product.degree(); ++i) {
    for (uint32_t j = 0; j < i; ++j) {
      if (identity_of(product[i]) == identity_of(product[j])) return false;
    }
  }
  return true;
}

// Troublesome coefficients, in which one value and its opposite come together often enough for
// terms to cancel.
class TroublesomePairs {
 public:
  explicit TroublesomePairs(Random& random) : random_(random) {}
  coeff_t operator()() {
    last_ = below(random_, 3) == 0 ? coeff_t(-last_) : troublesome(random_);
    return last_;
  }

 private:
  Random& random_;
  coeff_t last_;
};

// check(e) for every sum of up to `max_terms` of the products, a product twice too, until a check
// fails. Returns how many there were.
template <typename Coefficient, typename Check>
uint64_t for_every_sum(const std::vector<VarList>& products, size_t max_terms,
                       Coefficient coefficient, Check check) {
  uint64_t n = 0;
  std::vector<size_t> at;
  const std::function<void(size_t)> extend = [&](size_t from) {
    if (::testing::Test::HasFatalFailure()) return;
    ExprImpl e(coefficient());
    for (const size_t i : at) e.list.append(TermImpl(coefficient(), products[i]));
    check(e);
    ++n;
    for (size_t i = from; i < products.size() && at.size() < max_terms; ++i) {
      at.push_back(i);
      extend(i);
      at.pop_back();
    }
  };
  extend(0);
  return n;
}

// A sum of `terms` random products of up to `max_degree` of the literals.
inline ExprImpl random_sum(Random& random, const std::vector<uint32_t>& literals, uint64_t terms,
                           uint64_t max_degree) {
  TroublesomePairs coefficient(random);
  ExprImpl e(coefficient());
  for (uint64_t i = 0; i < terms; ++i) {
    VarList vars;
    for (uint64_t d = below(random, max_degree + 1); d > 0; --d) {
      vars.append(literals[below(random, literals.size())]);
    }
    e.list.append(TermImpl(coefficient(), std::move(vars)));
  }
  return e;
}

// variables[i] has the value that bit i stands for.
inline Assignment values_of(const std::vector<uint32_t>& variables, uint64_t bits,
                            Reading reading = Reading::kBinary) {
  Assignment values;
  for (size_t i = 0; i < variables.size(); ++i) {
    const bool is_set = (bits >> i & 1) != 0;
    values[variables[i]] = is_set ? 1 : reading == Reading::kBinary ? 0 : -1;
  }
  return values;
}

// `pattern` with `name` for each "%".
inline std::string filled(std::string pattern, const std::string& name) {
  for (size_t at; (at = pattern.find('%')) != std::string::npos;) pattern.replace(at, 1, name);
  return pattern;
}

// One line for the log of a proof, so that its size is no secret.
inline void report_proof(const std::string& what, uint64_t cases, uint64_t seed) {
  std::cout << "[   proof  ] " << what << ": " << cases << " polynomials, seed " << seed << '\n';
}

}  // namespace zorv::test
