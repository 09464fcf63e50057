// The energy of an assignment, straight from the tables of the model. Exact, and a full pass each
// time: engines keep their own running sums and are checked against this.
#include "core/coeff_sum.h"
#include "core/fatal.h"
#include "core/literal.h"
#include "model/bit_words.h"
#include "model/sol.h"
#include "zorv/exact_range.h"

namespace zorv {

namespace {

struct Assignment {
  const uint64_t* bits;
  const coeff_t* int_vals;

  bool holds(uint32_t literal) const {
    return bit_at(bits, identity_of(literal)) != is_negated(literal);
  }
};

// Adds coefficient times literals. Bits come first, since most products end at one that is 0, and
// without atoms there is nothing to multiply.
void add_product(const coeff_t& coeff, const uint32_t* literals, uint64_t n, const Assignment& at,
                 CoeffSum& sum) {
  bool has_atoms = false;
  for (uint64_t i = 0; i < n; ++i) {
    if (is_atom(literals[i])) {
      has_atoms = true;
    } else if (!at.holds(literals[i])) {
      return;
    }
  }
  if (!has_atoms) {
    sum += coeff;
    return;
  }
  coeff_t product = coeff;
  for (uint64_t i = 0; i < n && !is_zero(product); ++i) {
    if (is_atom(literals[i])) product *= at.int_vals[index_of(literals[i])];
  }
  sum += product;
}

// The terms of degree 1 or 2 of a model without atoms, whose literals are plain indices.
template <uint64_t degree>
void add_plain_products(const std::vector<coeff_t>& coeffs, const uint32_t* literals,
                        const uint64_t* bits, CoeffSum& sum) {
  for (const coeff_t& coeff : coeffs) {
    bool holds = true;
    for (uint64_t i = 0; i < degree; ++i) holds &= bit_at(bits, literals[i]);
    if (holds) sum += coeff;
    literals += degree;
  }
}

coeff_t terms_value(const ModelImpl& m, const Assignment& at) {
  CoeffSum sum(m.constant);
  for (uint64_t degree = 1; degree <= m.max_degree; ++degree) {
    const std::vector<coeff_t>& coeffs = m.term_coeffs[degree - 1];
    const uint32_t* literals = m.term_vars[degree - 1].data();
    if (degree == 1 && m.int_atoms.empty()) {
      add_plain_products<1>(coeffs, literals, at.bits, sum);
    } else if (degree == 2 && m.int_atoms.empty()) {
      add_plain_products<2>(coeffs, literals, at.bits, sum);
    } else {
      for (const coeff_t& coeff : coeffs) {
        add_product(coeff, literals, degree, at, sum);
        literals += degree;
      }
    }
  }
  return sum.total();
}

}  // namespace

coeff_t polynomial_energy(const ModelImpl& m, const uint64_t* bits) {
  if (!m.int_atoms.empty()) {
    fatal("Model eval: native integer variables (int_var) are not supported yet.");
  }
  return terms_value(m, {bits, nullptr});
}

coeff_t full_energy(const ModelImpl& m, const uint64_t* bits, const coeff_t* int_vals) {
  coeff_t energy = terms_value(m, {bits, int_vals});
  for (const NativeCons& cons : m.native_cons) {
    energy += penalty_of(cons, body_value(cons, bits, int_vals));
  }
  return energy;
}

coeff_t body_value(const NativeCons& cons, const uint64_t* bits, const coeff_t* int_vals) {
  const Assignment at{bits, int_vals};
  CoeffSum value(cons.body_constant);
  for (uint64_t i = 0; i < cons.vars.size(); ++i) {
    add_product(cons.coeffs[i], &cons.vars[i], 1, at, value);
  }
  for (uint64_t t = 0; t < cons.nl_coeffs.size(); ++t) {
    const uint64_t start = cons.nl_head[t];
    add_product(cons.nl_coeffs[t], &cons.nl_vars[start], cons.nl_head[t + 1] - start, at, value);
  }
  return value.total();
}

coeff_t violation_of(const NativeCons& cons, const coeff_t& body) {
  return cons.allowed.empty() ? distance(body, cons.lo, cons.hi)
                              : distance_to_set(body, cons.allowed);
}

coeff_t penalty_of(const NativeCons& cons, const coeff_t& body) {
  return penalty(cons.weight, violation_of(cons, body), cons.shape_k);
}

}  // namespace zorv
