// Contraction of arrays of any kinds along labelled axes.
//
// The whole contraction is one walk over all combinations of summed indices, with no pairwise
// intermediate results: each combination gives one product, of one element of each input, in the
// order of the inputs. Nothing is merged or sorted.
#pragma once

#include "arrays/array.h"
#include "arrays/einsum_plan.h"

namespace zorv {

// Aborts as plan_einsum() does, and unless all inputs hold integers.
ArrayImpl<coeff_t> einsum_int(const char* subscript, const std::vector<EinsumInput>& inputs,
                              uint64_t out_dim);

// Each element is the sum of its products. Without expressions among the inputs a product is one
// term, or part of the constant if it has no variables, and nothing if its coefficient is 0. With
// expressions products are multiplied out in the manner of mul(); tags are left aside.
ArrayImpl<ExprImpl> einsum_expr(const char* subscript, const std::vector<EinsumInput>& inputs,
                                uint64_t out_dim);

}  // namespace zorv
