#include "integer/degree_reduction.h"

#include <atomic>
#include <string>

#include "core/attr_rules.h"
#include "core/fatal.h"
#include "core/simplify.h"
#include "core/var_registry.h"
#include "integer/bit_sum.h"

namespace zorv {

namespace {

std::string auxiliary_name() {
  static std::atomic<uint64_t> counter{0};
  return "{r" + std::to_string(counter++) + "}";
}

// c*w*(S - (d - 1)) for c < 0, S being the sum of the d literals: with w = 1 it is c if all of them
// hold and at least 0 otherwise, with w = 0 it is 0.
void reduce_negative(const TermImpl& term, TermList& to) {
  const uint32_t w = new_var(auxiliary_name());
  for (const uint32_t literal : term.vars) to.append(TermImpl(term.coeff, VarList(w, literal)));
  to.append(TermImpl(term.coeff * (1 - int64_t{term.vars.degree()}), VarList(w)));
}

// c*(S - T)*(S - T - 1)/2 for c > 0, with T a slack that comes to within 1 below S unless S is d,
// which it reaches to within 2: the product is 0 for the former and 2 for the latter. Written out
// with u*u = u, where a factor a*u leaves a*(a - 1)/2*u and two factors leave a*b*u*v.
void reduce_positive(const TermImpl& term, TermList& to) {
  const uint32_t degree = term.vars.degree();
  const BitSum slack = new_slack(auxiliary_name(), 0, degree - 2, 2);
  for (uint32_t i = 0; i < degree; ++i) {
    for (uint32_t j = i + 1; j < degree; ++j) {
      to.append(TermImpl(term.coeff, VarList(term.vars[i], term.vars[j])));
    }
  }
  for (size_t k = 0; k < slack.vars.size(); ++k) {
    const coeff_t scaled = coeff_t(term.coeff) * slack.coeffs[k];
    for (const uint32_t literal : term.vars) {
      to.append(TermImpl(-scaled, VarList(literal, slack.vars[k])));
    }
    to.append(TermImpl(scaled * (slack.coeffs[k] + 1) / 2, VarList(slack.vars[k])));
    for (size_t m = k + 1; m < slack.vars.size(); ++m) {
      to.append(TermImpl(scaled * slack.coeffs[m], VarList(slack.vars[k], slack.vars[m])));
    }
  }
}

}  // namespace

ExprImpl reduce_degree(const ExprImpl& e) {
  const ExprImpl simplified = expr_simplify_as_binary(e);
  ExprImpl reduced(simplified.constant);
  simplified.list.for_each([&](const TermImpl& term) {
    if (term.vars.degree() < 3) {
      reduced.list.append(term);
    } else if (is_negative(term.coeff)) {
      reduce_negative(term, reduced.list);
    } else {
      reduce_positive(term, reduced.list);
    }
  });
  return expr_simplify_as_binary(reduced);
}

ArrayImpl<ExprImpl> reduce_degree(const ArrayImpl<ExprImpl>& a) {
  return make_array<ExprImpl>(
      a.shape, [&](uint64_t i) { return reduce_degree(a[i]); }, kInOrder);
}

ExprImpl checked_reduce_degree(const ExprImpl& e) {
  refuse_declared(e.attr,
                  "reduce (declared constraints would be dropped; reduce the objective before "
                  "adding zorv::cons parts)");
  if (has_int_atom(e)) {
    fatal(
        "reduce: native integer variables (int_var) are not supported (Ishikawa/Freedman "
        "quadratization assumes 0/1 variables).");
  }
  return reduce_degree(e);
}

}  // namespace zorv
