#include <algorithm>

#include "core/literal.h"
#include "model/ilp.h"

namespace zorv {

namespace {

using Literals = std::span<const uint32_t>;

const char* const kShapeText =
    "zorv::abs/relu terms are not supported in ILP mode yet; use the QUBO mode (drop the ilp "
    "option) or a bundled heuristic solver.";

std::string record_refusal(const NativeCons& cons) {
  if (cons.shape_kind != 0) return kShapeText;
  if (is_negative(cons.weight)) {
    return "a cons() constraint carries a NEGATIVE weight; ILP mode enforces constraints as hard "
           "rows and ignores weights, so a negative weight (rewarding violation) cannot be "
           "expressed. Use a bundled heuristic solver (EasySolver/ExhaustiveSolver/KLB5Solver).";
  }
  if (cons.shape_k != 2) return kShapeText;
  return "";
}

std::string records_refusal(const ModelImpl& m) {
  for (uint64_t i = 0; i < m.native_cons.size(); ++i) {
    std::string refusal = record_refusal(linear_native_cons(m, i));
    if (!refusal.empty()) return refusal;
  }
  return "";
}

// Models refuse such a penalty already; the test stands for tables that come to allow it.
std::string atom_refusal(const ModelImpl& m) {
  if (std::none_of(m.remainder_vars.begin(), m.remainder_vars.end(), is_atom)) return "";
  return "not an ILP: a free-form penalty term contains a native integer variable; it cannot be "
         "enforced as a hard linear row. Use a bundled solver, or zorv::binarize() first.";
}

bool list_less(Literals a, Literals b) {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

std::vector<Literals> sorted_penalty_terms(const ModelImpl& m) {
  std::vector<Literals> terms;
  for (uint64_t t = 0; t < m.remainder_coeffs.size(); ++t) terms.push_back(remainder_term(m, t));
  std::sort(terms.begin(), terms.end(), list_less);
  return terms;
}

// A product passes if the penalty has it too, whatever share of the coefficient is the objective's
// own: the row makes all of it 0.
std::string objective_refusal(const ModelImpl& m) {
  const std::vector<Literals> penalty = sorted_penalty_terms(m);
  for (uint32_t degree = 2; degree <= m.max_degree; ++degree) {
    const std::vector<uint32_t>& vars = m.term_vars[degree - 1];
    for (size_t at = 0; at < vars.size(); at += degree) {
      const Literals term(&vars[at], degree);
      if (std::binary_search(penalty.begin(), penalty.end(), term, list_less)) continue;
      return "not an ILP: the objective has a degree-" + std::to_string(degree) +
             " term (only free-form penalty terms enforced to 0 by their hard rows are allowed). "
             "Keep the objective linear, or solve without the ILP option.";
    }
  }
  return "";
}

std::string penalty_refusal(const ModelImpl& m) {
  if (m.has_remainder && !is_zero(m.remainder_constant)) {
    return "not an ILP: the free-form penalty carries a constant term, so 'penalty == 0' cannot be "
           "enforced; remove the constant.";
  }
  for (const coeff_t& coeff : m.remainder_coeffs) {
    if (coeff > 0) continue;
    return "not an ILP: free-form penalty terms must have positive coefficients to be enforced as "
           "hard constraints.";
  }
  return "";
}

}  // namespace

std::string ilp_refusal(const ModelImpl& m) {
  for (const auto& check : {records_refusal, atom_refusal, objective_refusal, penalty_refusal}) {
    std::string refusal = check(m);
    if (!refusal.empty()) return refusal;
  }
  return "";
}

}  // namespace zorv
