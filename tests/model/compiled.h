// Models and solutions as owned handles, and the tables of a model as one line of text.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "capi/handles.h"
#include "constraints/declare.h"
#include "core/literal.h"
#include "core/simplify.h"
#include "core/tagged_arithmetic.h"
#include "support/support.h"

namespace zorv::test {

class Model {
 public:
  explicit Model(const ExprImpl& e) : m_(zorv_model_create(borrow(e))) {}
  explicit Model(zorv_model* m) : m_(m) {}
  Model(const Model&) = delete;
  Model& operator=(const Model&) = delete;
  ~Model() { zorv_model_destroy(m_); }

  operator const zorv_model*() const { return m_; }
  const ModelImpl* operator->() const { return unwrap(static_cast<const zorv_model*>(m_)).get(); }
  const ModelImpl& operator*() const { return *operator->(); }

 private:
  zorv_model* m_;
};

class Solution {
 public:
  explicit Solution(const zorv_model* m) : s_(zorv_sol_create(m)) {}
  explicit Solution(zorv_sol* s) : s_(s) {}
  Solution(const Solution&) = delete;
  Solution& operator=(const Solution&) = delete;
  ~Solution() { zorv_sol_destroy(s_); }

  operator zorv_sol*() const { return s_; }
  Sol* operator->() const { return &unwrap(s_); }
  coeff_t compute() const {
    Wire out;
    zorv_sol_compute_energy(s_, out.out());
    return out.value();
  }
  coeff_t eval(const ExprImpl& e) const {
    Wire out;
    zorv_sol_eval_expr(s_, borrow(e), out.out());
    return out.value();
  }

 private:
  zorv_sol* s_;
};

// The objective and all of the constraints, each with its sign and weight.
inline ExprImpl with(ExprImpl objective, const std::vector<ExprImpl>& constraints) {
  for (const ExprImpl& constraint : constraints) iadd_expr(objective, constraint);
  return objective;
}

// Simplified as binary, bodies and remainder of its constraints included.
inline ExprImpl binary(const ExprImpl& e) { return simplify_with_attr(e, expr_simplify_as_binary); }

// "x2" and "~x2" for dense binary literals, "a0" for dense atoms.
inline std::string dense_text(uint32_t literal) {
  const std::string sign = is_negated(literal) ? "~" : "";
  return sign + (is_atom(literal) ? "a" : "x") + std::to_string(index_of(literal));
}

inline std::string product_text(const coeff_t& coeff, const uint32_t* literals, uint64_t n) {
  std::string text = coeff.str();
  for (uint64_t i = 0; i < n; ++i) text += "*" + dense_text(literals[i]);
  return text;
}

// "constant | terms of degree 1 | terms of degree 2 ...", in the order of the tables.
inline std::string term_tables(const zorv_model* m) {
  Wire constant;
  zorv_model_constant(m, constant.out());
  std::string text = constant.value().str();
  for (uint32_t d = 1; d <= zorv_model_max_degree(m); ++d) {
    text += " |";
    for (uint64_t t = 0; t < zorv_model_term_count(m, d); ++t) {
      const coeff_t& coeff = unwrap(zorv_model_coeff_array(m, d))[t];
      text += " " + product_text(coeff, zorv_model_term_vars(m, d) + t * d, d);
    }
  }
  return text;
}

}  // namespace zorv::test
