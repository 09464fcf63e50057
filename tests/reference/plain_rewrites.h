// The rewrites as slowly and plainly as they can be: every product is a product of expressions, and
// every intermediate result is made. For tests only.
#pragma once

#include <set>

#include "core/simplify.h"
#include "core/substitute.h"
#include "reference/plain_poly.h"
#include "support/support.h"

namespace zorv::test {

// Same terms in the same order, not merged, zero coefficients and all.
inline ::testing::AssertionResult same_terms(const ExprImpl& a, const ExprImpl& b) {
  bool same = a.constant == b.constant && a.list.size() == b.list.size() &&
              a.list.has_first() == b.list.has_first();
  for (uint64_t i = 0; same && i < a.list.size(); ++i) {
    same = a.list[i].coeff == b.list[i].coeff && a.list[i].vars == b.list[i].vars;
  }
  if (same) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << text(a).substr(0, 2000) << "\n  is not\n  " << text(b).substr(0, 2000);
}

inline PlainPoly plain_as_binary(const ExprImpl& e) {
  PlainPoly poly = {{{}, coeff_t(e.constant)}};
  e.list.for_each([&](const TermImpl& t) {
    std::vector<uint32_t> literals = literals_of_term(t), kept;
    std::sort(literals.begin(), literals.end(), key_less);
    for (const uint32_t literal : literals) {
      if (kept.empty() || is_atom(literal) || identity_of(kept.back()) != identity_of(literal)) {
        kept.push_back(literal);
      } else if (kept.back() != literal) {
        return;  // x*~x
      }
    }
    PlainPoly expanded = {{{}, coeff_t(t.coeff)}};
    if (kept.size() > 2) expanded = {{kept, coeff_t(t.coeff)}};
    for (size_t i = 0; i < kept.size() && kept.size() <= 2; ++i) {
      PlainPoly longer;
      for (const auto& [vars, c] : expanded) {
        std::vector<uint32_t> with = vars;
        with.push_back(identity_of(kept[i]));
        longer[with] += is_negated(kept[i]) ? coeff_t(-c) : c;
        if (is_negated(kept[i])) longer[vars] += c;
      }
      expanded = longer;
    }
    for (const auto& [vars, c] : expanded) poly[vars] += c;
  });
  std::erase_if(poly, [](const auto& entry) { return entry.second == 0; });
  return poly;
}

inline PlainPoly plain_as_spin(const ExprImpl& e) {
  PlainPoly poly = {{{}, coeff_t(e.constant)}};
  e.list.for_each([&](const TermImpl& t) {
    auto c = coeff_t(t.coeff);
    std::set<uint32_t> odd;  // variables that stand there an odd number of times
    for (const uint32_t literal : literals_of_term(t)) {
      if (is_negated(literal)) c = -c;
      if (!odd.insert(identity_of(literal)).second) odd.erase(identity_of(literal));
    }
    poly[{odd.begin(), odd.end()}] += c;
  });
  std::erase_if(poly, [](const auto& entry) { return entry.second == 0; });
  return poly;
}

inline PlainPoly plain_binary_to_spin(const ExprImpl& e) {
  const uint32_t scale = max_degree(e);
  const auto doubled = [](ExprImpl p, uint32_t times) {
    for (; times > 0; --times) imul_int(p, 2);
    return p;
  };
  ExprImpl sum = doubled(ExprImpl(e.constant), scale);
  e.list.for_each([&](const TermImpl& t) {
    ExprImpl p(t.coeff);
    for (const uint32_t literal : literals_of_term(t)) p = p * (var(literal) + 1);
    add_poly(sum, doubled(p, scale - t.vars.degree()));
  });
  return plain_as_spin(sum);
}

inline PlainPoly plain_spin_to_binary(const ExprImpl& e) {
  ExprImpl sum(e.constant);
  e.list.for_each([&](const TermImpl& t) {
    ExprImpl p(t.coeff);
    for (const uint32_t literal : literals_of_term(t)) p = p * (2 * var(literal) - 1);
    add_poly(sum, p);
  });
  return plain_as_binary(sum);
}

// Raw literals, and what takes their place.
using PlainMap = std::map<uint32_t, ExprImpl>;

inline ExprImpl plain_substitute(const ExprImpl& e, const PlainMap& map, TermsOfDegree0 degree_0) {
  ExprImpl sum(e.constant);
  e.list.for_each([&](const TermImpl& t) {
    if (t.vars.degree() == 0 && degree_0 == TermsOfDegree0::kStay) {
      if (t.coeff != 0) sum.list.append(t);
      return;
    }
    ExprImpl p(t.coeff);
    for (const uint32_t literal : literals_of_term(t)) {
      const auto found = map.find(literal);
      p = p * (found == map.end() ? var(literal) : found->second);
    }
    add_poly(sum, p);
  });
  return sum;
}

// A value of [lo, hi] in steps of 2, over the variables from `next` on, which moves behind them.
inline ExprImpl plain_slack(const coeff_t& lo, const coeff_t& hi, uint32_t& next) {
  ExprImpl slack(lo);
  coeff_t rest = hi - lo;
  for (coeff_t power = 2; rest > 0; rest -= power, power *= 2) {
    slack = slack + std::min(power, rest) * var(next++);
  }
  return slack;
}

inline ExprImpl plain_between(const ExprImpl& f, const coeff_t& lo, const coeff_t& hi,
                              uint32_t& next) {
  if (hi < lo) return ExprImpl();
  if (hi == lo) return sqr(f - lo);
  if (hi == lo + 1) return (f - lo) * (f - hi);
  const ExprImpl distance = f - plain_slack(lo, hi - 1, next);
  return distance * (distance - 1);
}

// With its auxiliary variables from `next` on.
inline PlainPoly plain_reduce(const ExprImpl& e, uint32_t& next) {
  const ExprImpl simplified = expr_simplify_as_binary(e);
  ExprImpl sum(simplified.constant);
  simplified.list.for_each([&](const TermImpl& t) {
    const uint32_t degree = t.vars.degree();
    ExprImpl literals;
    for (const uint32_t literal : literals_of_term(t)) literals = literals + var(literal);
    if (degree <= 2) {
      add_poly(sum, ExprImpl(t));
    } else if (is_negative(t.coeff)) {
      add_poly(sum, coeff_t(t.coeff) * (var(next++) * (literals - (degree - 1))));
    } else {
      const ExprImpl distance = literals - plain_slack(0, degree - 2, next);
      ExprImpl p = expr_simplify_as_binary(coeff_t(t.coeff) * (distance * (distance - 1)));
      idiv_int(p, 2);
      add_poly(sum, p);
    }
  });
  return plain_as_binary(sum);
}

}  // namespace zorv::test
