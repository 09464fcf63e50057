// The two families that solve models of binary variables alone, and models for them.
#pragma once

#include "solver_libraries/routes.h"

namespace zorv::test {

inline zorv_result* search_easy(zorv_easy_wrapper* w, const ParamPair* params) {
  return zorv_easy_solver_wrapper_search(w, params, nullptr);
}

struct Easy {
  using Wrapper = Owned<zorv_easy_wrapper, zorv_easy_solver_wrapper_destroy>;
  static constexpr auto create = zorv_easy_solver_wrapper_create;
  static constexpr auto destroy = zorv_easy_solver_wrapper_destroy;
  static constexpr auto search = search_easy;
  static constexpr const char* kName = "EasySolver";
  static constexpr const char* kFolder = "easy/";
  static constexpr const char* kOtherFolder = "exhaustive/";
  static constexpr const char* kPrefix = "zorv_easy_solver_";
  static constexpr const char* kFile = "easysolver_cppint.so";
  static constexpr const char* kNoShape =
      "EasySolver: this solver .so predates zorv::abs/relu (missing "
      "zorv_easy_solver_set_cons_shape) — update the solver .so.";
  static constexpr const char* kNoConstraints =
      "EasySolver: easysolver_cppint.so does not support native constraints (rebuild it)";
  static constexpr const char* kNoNonlinear =
      "EasySolver: this solver .so does not support nonlinear native constraint bodies (rebuild "
      "it, "
      "or use a linear constraint body)";
  static constexpr const char* kNoSet =
      "EasySolver: this solver .so does not support allowed-value set constraints (equal{...}); "
      "rebuild it";
  static constexpr const char* kNoRemainder =
      "EasySolver: this solver .so does not support free-form penalty constraints (rebuild it)";
};

struct Exhaustive {
  using Wrapper = Owned<zorv_exhaustive_wrapper, zorv_exhaustive_wrapper_destroy>;
  static constexpr auto create = zorv_exhaustive_wrapper_create;
  static constexpr auto destroy = zorv_exhaustive_wrapper_destroy;
  static constexpr auto search = zorv_exhaustive_wrapper_search;
  static constexpr const char* kName = "ExhaustiveSolver";
  static constexpr const char* kFolder = "exhaustive/";
  static constexpr const char* kOtherFolder = "easy/";
  static constexpr const char* kPrefix = "zorv_exhaustive_";
  static constexpr const char* kFile = "exhaustive_cppint.so";
  static constexpr const char* kNoShape =
      "ExhaustiveSolver: this solver .so predates zorv::abs/relu (missing "
      "zorv_exhaustive_set_cons_shape) — update the solver .so.";
  static constexpr const char* kNoConstraints =
      "ExhaustiveSolver: the exhaustive solver .so does not support native constraints (rebuild "
      "it)";
  static constexpr const char* kNoNonlinear =
      "ExhaustiveSolver: this solver .so does not support nonlinear native constraint bodies "
      "(rebuild it)";
  static constexpr const char* kNoSet =
      "ExhaustiveSolver: this solver .so does not support allowed-value set constraints "
      "(equal{...}); rebuild it";
  static constexpr const char* kNoRemainder =
      "ExhaustiveSolver: this solver .so does not support free-form penalty constraints (rebuild "
      "it)";
};

// All that a model of binary variables can have: terms of degrees 1 to 3 with a complement and a
// coefficient beyond 64 bits, constraints of the three forms, shapes, and a remainder.
inline Model everything() {
  const uint32_t a = zorv_new_var("a"), b = zorv_new_var("b"), c = zorv_new_var("c");
  constexpr int64_t kLarge = int64_t{1} << 40;
  Expr e = poly(7, {{2, {a}}, {-3, {b}}, {5, {a, b}}, {-1, {a, b, c | 0x80000000}}});
  e = plus(std::move(e), times(kLarge, times(kLarge, poly(0, {{1, {c}}}))));
  e = plus(std::move(e), times(4, between(poly(-1, {{1, {a}}, {2, {b}}}), -1, 6)));
  e = plus(std::move(e), times(3, zorv_relu_term(poly(0, {{1, {a}}, {-1, {c}}}), 2)));
  e = plus(std::move(e), between(poly(0, {{1, {c}}, {1, {a, b}}}), 1, 1));
  e = plus(std::move(e), either(poly(0, {{3, {a}}, {1, {c}}}), 1, 4));
  e = plus(std::move(e), zorv_abs_term(poly(0, {{1, {a}}, {-1, {b}}}), 1));
  return compiled(plus(std::move(e), times(9, zorv_cons_mark(poly(2, {{1, {b, c}}})))));
}
inline Model one_bit() { return compiled(poly(0, {{1, {zorv_new_var("a")}}})); }

}  // namespace zorv::test
