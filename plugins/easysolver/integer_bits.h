// Models with integer variables, written in bits and multiplied out into binary models. An integer
// from lo to hi is lo plus its bits times 1, 2, 4, .. and a rest, so that every pattern of bits is
// a value in its range and every value has one.
#pragma once

#include <map>
#include <vector>

#include "common/binary_model.h"

namespace zorv::plugin::easy {

class IntegerBits {
 public:
  IntegerBits(uint32_t nbits, uint32_t nints, const Coeff* lo, const Coeff* hi);

  // The terms of an integer model, in which bit 30 of a literal marks an integer variable. The
  // result refers to tables of this object.
  BinaryModel model(uint32_t max_degree, const Coeff& constant, const uint64_t* term_count,
                    const uint32_t* const* term_vars, const ::coeff_t* const* term_coeffs);

  // A linear body, its literals numbered with the integers behind the binary variables.
  struct Body {
    Coeff constant;
    std::vector<uint32_t> vars;
    std::vector<Coeff> coeffs;
  };
  Body body(const Coeff& constant, uint64_t count, const uint32_t* vars, const Coeff* coeffs) const;

  // The values of the integers in an assignment of the binary model.
  void decode(const uint64_t* words, Coeff* ints) const;
  uint32_t nbits() const { return nbits_; }

 private:
  // By the variables of a term, ascending, which are plain ones.
  using Polynomial = std::map<std::vector<uint32_t>, Coeff>;
  struct Integer {
    Coeff lo;
    uint32_t first_bit;
    std::vector<Coeff> weights;
  };

  Polynomial factor(uint32_t literal) const;
  static Polynomial product(const Polynomial& a, const Polynomial& b);
  void lay_out(const Polynomial& polynomial);

  const uint32_t nbits_;
  uint32_t variables_;
  std::vector<Integer> integers_;
  // The tables of the binary model, by degree from 1.
  Coeff constant_;
  std::vector<uint64_t> counts_;
  std::vector<std::vector<uint32_t>> literals_;
  std::vector<std::vector<Coeff>> coeffs_;
};

}  // namespace zorv::plugin::easy
