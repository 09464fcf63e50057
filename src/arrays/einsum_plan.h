// What an einsum subscript asks of given arrays: which axes are kept, which are summed over, and
// how far each input moves along each of them.
#pragma once

#include <string>
#include <vector>

#include "arrays/shape.h"

namespace zorv {

// The kinds of elements, by the numbers that callers use.
enum class ElementKind : uint32_t { kVar = 0, kInt = 1, kTerm = 2, kExpr = 3 };

// An array of any kind, by its kind. Only read.
struct EinsumInput {
  uint32_t kind;
  const void* array;
};

// Labelled axes, and for each of them how far it moves each input. A label that an input has twice
// moves it by both strides, along the diagonal.
struct LabelledAxes {
  Shape extents;
  std::vector<std::vector<uint64_t>> strides;  // [axis][input]
};

struct EinsumPlan {
  LabelledAxes output;
  LabelledAxes summed;
  uint64_t outputs;   // elements of the result
  uint64_t products;  // products that each of them is the sum of
};

// Grammar of a subscript: labels of the inputs, separated by ",", then optionally "->" and labels
// of the output. A label is any byte; tab, newline and blank mean nothing. Without "->" the output
// has every label that occurs exactly once, in the order of signed bytes. A "," behind the last
// input ends the reading, and what follows is ignored; callers rely on that.
//
// Aborts on a subscript or a number of output axes that does not fit the inputs, and on extents
// that differ under one label.
EinsumPlan plan_einsum(const char* subscript, const std::vector<EinsumInput>& inputs,
                       uint64_t out_dim);

}  // namespace zorv
