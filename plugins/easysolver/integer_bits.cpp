#include "easysolver/integer_bits.h"

#include <algorithm>
#include <iterator>

#include "common/literal.h"

namespace zorv::plugin::easy {

namespace {

constexpr uint32_t kIntegerMark = 1u << 30;

std::vector<Coeff> weights_of(Coeff range) {
  std::vector<Coeff> weights;
  for (Coeff power = 1; range > 0; power *= 2) {
    weights.push_back(std::min(power, range));
    range -= weights.back();
  }
  return weights;
}

}  // namespace

IntegerBits::IntegerBits(uint32_t nbits, uint32_t nints, const Coeff* lo, const Coeff* hi)
    : nbits_(nbits), variables_(nbits) {
  for (uint32_t i = 0; i < nints; ++i) {
    integers_.push_back({lo[i], variables_, weights_of(hi[i] - lo[i])});
    variables_ += static_cast<uint32_t>(integers_.back().weights.size());
  }
}

IntegerBits::Polynomial IntegerBits::factor(uint32_t literal) const {
  if ((literal & kIntegerMark) == 0) {
    const std::vector<uint32_t> variable = {variable_of(literal)};
    if (is_complement(literal)) return {{{}, 1}, {variable, -1}};
    return {{variable, 1}};
  }
  const Integer& integer = integers_[literal & (kIntegerMark - 1)];
  Polynomial sum = {{{}, integer.lo}};
  for (uint32_t k = 0; k < integer.weights.size(); ++k) {
    sum[{integer.first_bit + k}] = integer.weights[k];
  }
  return sum;
}

IntegerBits::Polynomial IntegerBits::product(const Polynomial& a, const Polynomial& b) {
  Polynomial sum;
  for (const auto& [left, left_coeff] : a) {
    for (const auto& [right, right_coeff] : b) {
      std::vector<uint32_t> both;
      std::set_union(left.begin(), left.end(), right.begin(), right.end(),
                     std::back_inserter(both));
      sum[std::move(both)] += left_coeff * right_coeff;
    }
  }
  return sum;
}

void IntegerBits::lay_out(const Polynomial& polynomial) {
  for (const auto& [variables, coeff] : polynomial) {
    const size_t degree = variables.size();
    if (degree == 0) {
      constant_ += coeff;
    } else if (coeff != 0) {
      if (degree > counts_.size()) {
        counts_.resize(degree);
        literals_.resize(degree);
        coeffs_.resize(degree);
      }
      ++counts_[degree - 1];
      literals_[degree - 1].insert(literals_[degree - 1].end(), variables.begin(), variables.end());
      coeffs_[degree - 1].push_back(coeff);
    }
  }
}

BinaryModel IntegerBits::model(uint32_t max_degree, const Coeff& constant,
                               const uint64_t* term_count, const uint32_t* const* term_vars,
                               const ::coeff_t* const* term_coeffs) {
  Polynomial sum;
  for (uint32_t d = 1; d <= max_degree; ++d) {
    for (uint64_t t = 0; t < term_count[d - 1]; ++t) {
      Polynomial term = {{{}, as_coeffs(term_coeffs[d - 1])[t]}};
      for (uint32_t k = 0; k < d; ++k) term = product(term, factor(term_vars[d - 1][t * d + k]));
      for (const auto& [variables, coeff] : term) sum[variables] += coeff;
    }
  }
  constant_ = constant;
  lay_out(sum);
  std::vector<const uint32_t*> vars;
  std::vector<const ::coeff_t*> coeffs;
  for (size_t d = 0; d < counts_.size(); ++d) {
    vars.push_back(literals_[d].data());
    coeffs.push_back(reinterpret_cast<const ::coeff_t*>(coeffs_[d].data()));
  }
  return BinaryModel(variables_, static_cast<uint32_t>(counts_.size()),
                     reinterpret_cast<const ::coeff_t*>(&constant_), counts_.data(), vars.data(),
                     coeffs.data());
}

IntegerBits::Body IntegerBits::body(const Coeff& constant, uint64_t count, const uint32_t* vars,
                                    const Coeff* coeffs) const {
  Body body = {constant, {}, {}};
  for (uint64_t i = 0; i < count; ++i) {
    if (variable_of(vars[i]) < nbits_) {
      body.vars.push_back(vars[i]);
      body.coeffs.push_back(coeffs[i]);
      continue;
    }
    const Integer& integer = integers_[vars[i] - nbits_];
    body.constant += coeffs[i] * integer.lo;
    for (uint32_t k = 0; k < integer.weights.size(); ++k) {
      body.vars.push_back(integer.first_bit + k);
      body.coeffs.push_back(coeffs[i] * integer.weights[k]);
    }
  }
  return body;
}

void IntegerBits::decode(const uint64_t* words, Coeff* ints) const {
  for (const Integer& integer : integers_) {
    *ints = integer.lo;
    for (uint32_t k = 0; k < integer.weights.size(); ++k) {
      if (bit_at(words, integer.first_bit + k)) *ints += integer.weights[k];
    }
    ++ints;
  }
}

}  // namespace zorv::plugin::easy
