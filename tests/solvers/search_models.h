// Models for tests of the search, and a way to end a search after a number of rounds.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "constraints/declare.h"
#include "core/simplify.h"
#include "core/tagged_arithmetic.h"
#include "integer/int_var.h"
#include "solvers/int_search.h"
#include "support/support.h"

namespace zorv::test {

inline ExprImpl integer(const coeff_t& lo, const coeff_t& hi) {
  return var(new_int_var("", lo, hi));
}
inline ExprImpl bit() { return var(fresh()); }
inline ExprImpl sqr_of(const ExprImpl& e) { return mul(e, e); }
inline coeff_t pow2(unsigned exponent) { return coeff_t(1) << exponent; }

// A model put together part by part.
class Sketch {
 public:
  Sketch(const ExprImpl& objective) : e_(expr_simplify_as_binary(objective)) {}

  Sketch& between(const ExprImpl& body, const coeff_t& lo, const coeff_t& hi,
                  const coeff_t& weight = 1) {
    return add(cons_between(expr_simplify_as_binary(body), lo, hi), weight);
  }
  Sketch& in(const ExprImpl& body, const std::vector<Interval>& allowed,
             const coeff_t& weight = 1) {
    return add(cons_equal(expr_simplify_as_binary(body), allowed), weight);
  }
  Sketch& abs(const ExprImpl& body, uint32_t k, const coeff_t& weight = 1) {
    return add(abs_term(expr_simplify_as_binary(body), k), weight);
  }
  Sketch& relu(const ExprImpl& body, uint32_t k, const coeff_t& weight = 1) {
    return add(relu_term(expr_simplify_as_binary(body), k), weight);
  }
  operator ModelHandle() const { return make_model(e_); }

 private:
  Sketch& add(const ExprImpl& declared, const coeff_t& weight) {
    iadd_expr(e_, clone_mul_int(declared, weight));
    return *this;
  }

  ExprImpl e_;
};

// Lets a search begin `rounds` more rounds and stops it as the next one begins. Reproducible, as
// no clock is: the search ends after the start state of that last round.
class RoundLimit {
 public:
  RoundLimit(IntSearchOpts& opts, int rounds) : rounds_left_(rounds) {
    opts.external_stop = &stop_;
    opts.next_hint = [](void* ctx, uint32_t, uint64_t*, coeff_t*) {
      RoundLimit& self = *static_cast<RoundLimit*>(ctx);
      if (self.rounds_left_.fetch_sub(1) <= 0) self.stop_ = 1;
      return false;
    };
    opts.next_hint_ctx = this;
    opts.time_limit = 1e9;
  }

 private:
  std::atomic<int> rounds_left_;
  std::atomic<uint8_t> stop_{0};
};

inline std::string info(const SearchResult& result, const std::string& key) {
  for (const InfoEntry& entry : result.info) {
    if (entry.key == key) return entry.value;
  }
  return "no " + key;
}

}  // namespace zorv::test
