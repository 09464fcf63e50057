// Contraction as plain nested loops over labels. For tests only.
#pragma once

#include <map>
#include <string>

#include "support/arrays.h"

namespace zorv::test {

struct PlainInput {
  std::string labels;
  Shape shape;
  std::vector<Value> elements;  // all of one kind, in flat order
};

using LabelValues = std::map<char, uint64_t>;

inline LabelValues label_extents(const std::vector<PlainInput>& inputs) {
  LabelValues extents;
  for (const PlainInput& input : inputs) {
    for (size_t k = 0; k < input.labels.size(); ++k) extents[input.labels[k]] = input.shape[k];
  }
  return extents;
}

// Distinct labels by signed byte value.
inline std::string sorted_labels(const std::vector<PlainInput>& inputs) {
  std::string labels;
  for (int c = -128; c < 128; ++c) {
    if (label_extents(inputs).count(static_cast<char>(c)) != 0) labels += static_cast<char>(c);
  }
  return labels;
}

// The labels that occur once in all inputs together.
inline std::string implicit_labels(const std::vector<PlainInput>& inputs) {
  std::string all, once;
  for (const PlainInput& input : inputs) all += input.labels;
  for (const char c : sorted_labels(inputs)) {
    if (all.find(c) == all.rfind(c)) once += c;
  }
  return once;
}

// Calls body() for all values of labels[k] and those behind it, the last one moving fastest. Of a
// label that is repeated the last axis has the say.
template <typename Body>
void for_all(const std::string& labels, const LabelValues& extents, LabelValues& at, Body body,
             size_t k = 0) {
  if (k == labels.size()) return body();
  for (uint64_t i = 0; i < extents.at(labels[k]); ++i) {
    at[labels[k]] = i;
    for_all(labels, extents, at, body, k + 1);
  }
}

inline const Value& element_at(const PlainInput& input, const LabelValues& at) {
  uint64_t flat = 0;
  for (size_t k = 0; k < input.labels.size(); ++k) {
    flat = flat * input.shape[k] + at.at(input.labels[k]);
  }
  return input.elements[flat];
}

inline Shape output_shape(const std::vector<PlainInput>& inputs, const std::string& output) {
  Shape shape;
  for (const char c : output) shape.push_back(label_extents(inputs).at(c));
  return shape;
}

// The elements of the result, each summed up by add_product(sum, factors) over its products.
template <typename T, typename AddProduct>
std::vector<T> plain_contraction(const std::vector<PlainInput>& inputs, const std::string& output,
                                 AddProduct add_product) {
  const LabelValues extents = label_extents(inputs);
  std::string summed = sorted_labels(inputs);
  std::erase_if(summed, [&](char c) { return output.find(c) != std::string::npos; });
  std::vector<T> result;
  LabelValues at;
  for_all(output, extents, at, [&] {
    T& sum = result.emplace_back();
    for_all(summed, extents, at, [&] {
      std::vector<const Value*> factors;
      for (const PlainInput& input : inputs) factors.push_back(&element_at(input, at));
      add_product(sum, factors);
    });
  });
  return result;
}

inline std::vector<coeff_t> plain_einsum_int(const std::vector<PlainInput>& inputs,
                                             const std::string& output) {
  return plain_contraction<coeff_t>(inputs, output, [](coeff_t& sum, const auto& factors) {
    coeff_t product = 1;
    for (const Value* factor : factors) product *= std::get<coeff_t>(*factor);
    sum += product;
  });
}

// Without expressions: one term, nothing if it is 0, part of the constant without literals.
inline void add_term_product(ExprImpl& sum, const std::vector<const Value*>& factors) {
  TermImpl product = term_of(1, {});
  for (const Value* factor : factors) {
    if (const auto* v = std::get_if<uint32_t>(factor)) product.vars.append(*v);
    if (const auto* c = std::get_if<coeff_t>(factor)) product.coeff *= *c;
    if (const auto* t = std::get_if<TermImpl>(factor)) product = mul(product, *t);
  }
  if (product.coeff == 0) return;
  if (product.vars.degree() == 0) {
    sum.constant += product.coeff;
  } else {
    sum.list.append(product);
  }
}

inline void add_expr_product(ExprImpl& sum, const std::vector<const Value*>& factors) {
  ExprImpl product = constant(1);
  for (const Value* factor : factors) {
    if (const auto* v = std::get_if<uint32_t>(factor)) product = mul_var(product, *v);
    if (const auto* c = std::get_if<coeff_t>(factor)) imul_int(product, *c);
    if (const auto* t = std::get_if<TermImpl>(factor)) product = mul_term(product, *t);
    if (const auto* e = std::get_if<ExprImpl>(factor)) product = mul(product, *e);
  }
  add_poly(sum, product);
}

inline std::vector<ExprImpl> plain_einsum(const std::vector<PlainInput>& inputs,
                                          const std::string& output,
                                          const std::vector<uint32_t>& kinds) {
  const bool has_exprs = std::find(kinds.begin(), kinds.end(), 3u) != kinds.end();
  return plain_contraction<ExprImpl>(inputs, output,
                                     has_exprs ? add_expr_product : add_term_product);
}

}  // namespace zorv::test
