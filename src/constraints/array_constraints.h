// Constraints on every element of an array: an array of classic constraints of the same shape.
//
// Each result element is a penalty polynomial whose tag names a new entry, with the array's element
// as body and with the bounds.
#pragma once

#include "arrays/array.h"
#include "constraints/constraint_tables.h"

namespace zorv {

// The bound of each element: one value for all, or the integers of an array of the same shape, or,
// with neither, the element's own extreme. That is the constant plus the positive, or negative,
// coefficients after simplification as binary, which is no bound for an element with atoms.
struct ElementBound {
  const coeff_t* value = nullptr;
  const ArrayImpl<coeff_t>* values = nullptr;
};

// lo <= element <= hi, with the penalties of between(). A lower bound above the upper one gives no
// penalty at all, though the entry records both. Elements are made in flat order, and their slack
// variables with them. Aborts on a bound array of another shape, the lower one first.
template <typename T>
ArrayImpl<ExprImpl> between_elements(const ArrayImpl<T>& a, ElementBound lo, ElementBound hi);

// element = value, with the penalty (element - value)^2. Spread over threads; entries are numbered
// in no fixed order. Aborts on an array of values of another shape. Takes no own extremes.
template <typename T>
ArrayImpl<ExprImpl> equal_elements(const ArrayImpl<T>& a, ElementBound value);

// Both exist for T = uint32_t, coeff_t, TermImpl and ExprImpl.

}  // namespace zorv
