#include "arrays/einsum_plan.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "arrays/array.h"
#include "core/fatal.h"
#include "core/sizes.h"

namespace zorv {

namespace {

struct Subscript {
  std::vector<std::string> inputs;
  std::string output;
  bool has_output = false;
};

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n'; }

Subscript parse(const char* text, size_t input_count) {
  Subscript parsed;
  parsed.inputs.resize(1);
  const char* at = text;
  for (; *at != '\0'; ++at) {
    if (at[0] == '-' && at[1] == '>') {
      parsed.has_output = true;
      break;
    }
    if (*at == ',') {
      if (parsed.inputs.size() == input_count) break;
      parsed.inputs.emplace_back();
    } else if (!is_blank(*at)) {
      parsed.inputs.back() += *at;
    }
  }
  if (parsed.inputs.size() < input_count) {
    fatal("einsum: expected ',' separating ", input_count, " inputs in subscript \"", text, "\"");
  }
  // Every other byte was a label, so this cannot happen as long as labels are not limited.
  if (*at != '\0' && *at != ',' && !parsed.has_output) {
    fatal("einsum: unexpected trailing character '", *at, "' in subscript \"", text, "\"");
  }
  if (parsed.has_output) {
    for (at += 2; *at != '\0'; ++at) {
      if (!is_blank(*at)) parsed.output += *at;
    }
  }
  return parsed;
}

using Extents = std::map<signed char, uint64_t>;

const Shape& shape_of(const EinsumInput& input) {
  switch (static_cast<ElementKind>(input.kind)) {
    case ElementKind::kVar:
      return static_cast<const ArrayImpl<uint32_t>*>(input.array)->shape;
    case ElementKind::kInt:
      return static_cast<const ArrayImpl<coeff_t>*>(input.array)->shape;
    case ElementKind::kTerm:
      return static_cast<const ArrayImpl<TermImpl>*>(input.array)->shape;
    case ElementKind::kExpr:
      return static_cast<const ArrayImpl<ExprImpl>*>(input.array)->shape;
  }
  fatal("einsum: unknown input type tag ", input.kind);
}

void enter_extent(Extents& extents, char label, uint64_t extent) {
  const auto [entry, is_new] = extents.try_emplace(static_cast<signed char>(label), extent);
  if (entry->second != extent) {
    fatal("einsum: inconsistent size for label '", label, "': ", entry->second, " vs ", extent);
  }
}

Extents extents_of(const char* text, const Subscript& subscript,
                   const std::vector<EinsumInput>& inputs) {
  Extents extents;
  for (size_t i = 0; i < inputs.size(); ++i) {
    const Shape& shape = shape_of(inputs[i]);
    const std::string& labels = subscript.inputs[i];
    if (shape.size() != labels.size()) {
      fatal("einsum: input ", i, " has ", shape.size(), " dims but subscript has ", labels.size(),
            " labels (subscript=\"", text, "\")");
    }
    for (size_t k = 0; k < shape.size(); ++k) enter_extent(extents, labels[k], shape[k]);
  }
  return extents;
}

// Every label that occurs exactly once, a repetition within one input counted too.
std::string implicit_output(const Subscript& subscript, const Extents& extents) {
  std::string all;
  for (const std::string& labels : subscript.inputs) all += labels;
  std::string output;
  for (const auto& [label, extent] : extents) {
    if (std::count(all.begin(), all.end(), static_cast<char>(label)) == 1) {
      output += static_cast<char>(label);
    }
  }
  return output;
}

LabelledAxes axes_of(const std::string& labels, const Extents& extents, const Subscript& subscript,
                     const std::vector<EinsumInput>& inputs) {
  LabelledAxes axes;
  for (size_t k = 0; k < labels.size(); ++k) {
    axes.extents.push_back(extents.at(static_cast<signed char>(labels[k])));
    axes.strides.emplace_back(inputs.size(), 0);
    // Of an output label that is repeated only the last axis selects anything.
    if (labels.rfind(labels[k]) != k) continue;
    for (size_t i = 0; i < inputs.size(); ++i) {
      const std::vector<uint64_t> strides = row_major_strides(shape_of(inputs[i]));
      for (size_t axis = 0; axis < strides.size(); ++axis) {
        if (subscript.inputs[i][axis] == labels[k]) axes.strides[k][i] += strides[axis];
      }
    }
  }
  return axes;
}

// How many positions the axes have together. Several inputs may be one array under several labels,
// so that the number need not fit in 64 bits.
uint64_t combinations_of(const LabelledAxes& axes) {
  const Shape& extents = axes.extents;
  if (std::count(extents.begin(), extents.end(), 0) > 0) return 0;
  return std::accumulate(extents.begin(), extents.end(), uint64_t{1}, size_product);
}

}  // namespace

EinsumPlan plan_einsum(const char* subscript_text, const std::vector<EinsumInput>& inputs,
                       uint64_t out_dim) {
  if (inputs.empty()) fatal("einsum: requires at least one input");
  const Subscript subscript = parse(subscript_text, inputs.size());
  const Extents extents = extents_of(subscript_text, subscript, inputs);
  const std::string output =
      subscript.has_output ? subscript.output : implicit_output(subscript, extents);
  for (const char label : output) {
    if (extents.count(static_cast<signed char>(label)) == 0) {
      fatal("einsum: output label '", label, "' not in any input");
    }
  }
  std::string summed;
  for (const auto& [label, extent] : extents) {
    if (output.find(static_cast<char>(label)) == std::string::npos) {
      summed += static_cast<char>(label);
    }
  }
  if (output.size() != out_dim) {
    fatal("einsum: OutDim mismatch — subscript \"", subscript_text, "\" produces ", output.size(),
          " output axis(es), but the call was einsum<", out_dim, ">()");
  }
  EinsumPlan plan = {axes_of(output, extents, subscript, inputs),
                     axes_of(summed, extents, subscript, inputs), 1, 1};
  plan.outputs = combinations_of(plan.output);
  plan.products = combinations_of(plan.summed);
  return plan;
}

}  // namespace zorv
