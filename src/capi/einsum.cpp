#include "arrays/einsum.h"

#include <algorithm>

#include "capi/handles.h"

namespace zorv {

namespace {

constexpr int kIntOutput = 0;

// Array handles of kinds that their tags name; all of them are pointers to the record itself.
std::vector<EinsumInput> read_inputs(int32_t n, const uint32_t* tags, void* const* arrays) {
  std::vector<EinsumInput> inputs;
  inputs.reserve(static_cast<size_t>(std::max(n, 0)));
  for (int32_t i = 0; i < n; ++i) inputs.push_back({tags[i], arrays[i]});
  return inputs;
}

}  // namespace

extern "C" {

void* zorv_einsum(const char* subscript, int32_t input_count, const uint32_t* type_tags,
                  void* const* inputs, int output_kind, uint64_t out_dim) {
  const std::vector<EinsumInput> arrays = read_inputs(input_count, type_tags, inputs);
  if (output_kind == kIntOutput) return wrap(einsum_int(subscript, arrays, out_dim));
  return wrap(einsum_expr(subscript, arrays, out_dim));
}

}  // extern "C"

}  // namespace zorv
