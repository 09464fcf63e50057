// VarInt values: expressions lo + sum of coefficient times fresh bit, with a record of how they
// were made. The expression's tag is the index of the record.
//
// VarIntSet only grows, and its records never move or change. Making values on several threads at
// once is safe, and so is reading a record meanwhile. The table outlives reset_variables(): the
// literals of older records then dangle like all others.
#pragma once

#include <cstdint>
#include <vector>

#include "arrays/array.h"
#include "core/expr.h"

namespace zorv {

struct VarIntRecord {
  uint64_t name_index;  // entry of VarRegistry::int_arrays
  uint64_t element;     // flat position in its array, 0 for a single value
  coeff_t min, max;
  std::vector<coeff_t> coeffs;
  std::vector<uint32_t> vars;  // binary literals, parallel to `coeffs`
};

// A null or empty name draws one generated name. hi below lo gives the constant lo without bits.
ExprImpl make_varint(const char* name, const coeff_t& lo, const coeff_t& hi);
// The same with the caller's coefficients and literals, of equal number.
ExprImpl make_varint_with_vars(const char* name, const coeff_t& lo, const coeff_t& hi,
                               std::vector<coeff_t> coeffs, std::vector<uint32_t> vars);
// An array of values with common bounds. The bits of all of them are one block of variables named
// `name`, of this shape and one axis more.
ArrayImpl<ExprImpl> make_varint_array(const char* name, const Shape& shape, const coeff_t& lo,
                                      const coeff_t& hi);

// The record of a VarInt; aborts with the text of a VarInt accessor for any other tag.
const VarIntRecord& varint_record(uint32_t attr);
// All records, in the order of their making, for whoever walks the table.
uint64_t varint_record_count();

// The bits whose weighted sum is value - min, taken greedily from the last position; what is left
// of a value out of range is dropped. bits[i] belongs to vars[i].
std::vector<bool> decompose(const VarIntRecord& record, const coeff_t& value);

// Gives `element` the polynomial of `e` and leaves its tag, and so its record, as it is.
void replace_polynomial(ExprImpl& element, const ExprImpl& e);

}  // namespace zorv
