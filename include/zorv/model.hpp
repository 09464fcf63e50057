/// \file
/// Compiled models and their solutions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "zorv/array.hpp"

namespace zorv {

/// An expression compiled to flat tables that never change: what solvers and solutions read.
/// Copies share the tables, and any number of threads may use one model.
///
/// The energy of a state is the polynomial, plus for each declared constraint its weight times the
/// violation to the power k. Solvers look for the least one.
class Model {
 public:
  /// Compiles `e`, simplified as binary first.
  explicit Model(const Expr& e) : Model(from_simplified(simplify_as_binary(e))) {}
  /// Compiles an expression that is simplified as binary already. Aborts if it is not.
  static Model from_simplified(const Expr& e) { return Model(zorv_model_create(e.handle())); }
  /// Takes over a handle of the C interface.
  explicit Model(zorv_model* handle) : handle_(handle) {}

  /// The binary variables: how many, and number i, by ascending age.
  uint64_t var_count() const { return zorv_model_var_count(handle()); }
  Var var(uint64_t i) const { return Var(zorv_model_var(handle(), i)); }
  bool has(Var x) const { return zorv_model_has(handle(), x.literal()) != 0; }
  /// The native integer variables likewise.
  uint64_t int_var_count() const { return zorv_model_int_var_count(handle()); }
  IntVar int_var(uint64_t i) const { return IntVar(zorv_model_int_var_orig(handle(), i)); }
  bool has(IntVar n) const {
    uint64_t first = 0, last = int_var_count();
    while (first < last) {
      const uint64_t middle = first + (last - first) / 2;
      const uint32_t literal = int_var(middle).literal();
      if (literal == n.literal()) return true;
      literal < n.literal() ? first = middle + 1 : last = middle;
    }
    return false;
  }

  uint32_t max_degree() const { return zorv_model_max_degree(handle()); }
  /// The number of terms of one degree from 1 to max_degree().
  uint64_t term_count(uint32_t degree) const { return zorv_model_term_count(handle(), degree); }
  Integer constant() const {
    return detail::read_integer([&](CoeffWire* out) { zorv_model_constant(handle(), out); });
  }
  /// The number of declared constraints.
  uint64_t cons_count() const { return zorv_model_native_cons_count(handle()); }

  zorv_model* handle() const { return handle_.get(); }

 private:
  detail::Owner<zorv_model, zorv_model_destroy, zorv_model_clone> handle_;
};

/// An assignment of a model's variables, with its energy and the time at which a solver found it.
class Sol {
 public:
  /// Binary variables 0, integer ones at their lower bounds.
  explicit Sol(const Model& model) : handle_(zorv_sol_create(model.handle())) {}
  /// Takes over a handle of the C interface.
  explicit Sol(zorv_sol* handle) : handle_(handle) {}

  Model model() const { return Model(zorv_model_clone(zorv_sol_model(handle()))); }

  /// The value of a variable: 0 or 1, an integer. Aborts if the model does not have it.
  int operator[](Var x) const { return zorv_sol_get(handle(), x.literal()); }
  Integer operator[](IntVar n) const {
    return detail::read_integer(
        [&](CoeffWire* out) { zorv_sol_get_int(handle(), n.literal(), out); });
  }
  /// The values of an array of variables. A binary variable that the model does not have counts
  /// as 0.
  template <typename A>
  requires(detail::ArrayLike<A>&& std::same_as<typename A::Value, Var>) Array<Integer, A::kRank>
  operator[](const A& x) const {
    return Array<Integer, A::kRank>(
        zorv_array_int_from_sol(handle(), detail::to_array(x).handle()));
  }
  template <typename A>
  requires(detail::ArrayLike<A>&& std::same_as<typename A::Value, IntVar>) Array<Integer, A::kRank>
  operator[](const A& n) const {
    const auto& array = detail::to_array(n);
    auto values = Array<Integer, A::kRank>::of_shape(array.shape());
    for (uint64_t i = 0; i < array.size(); ++i) values.set_flat(i, (*this)[array.flat(i)]);
    return values;
  }
  /// The value of an expression: its polynomial, plus the penalties of declared constraints.
  /// Terms with a variable that the model does not have add nothing.
  Integer operator[](const Expr& e) const {
    return detail::read_integer(
        [&](CoeffWire* out) { zorv_sol_eval_expr(handle(), e.handle(), out); });
  }

  /// Changes a variable; the energy is not valid any more. Aborts on an integer out of its bounds.
  template <std::integral T>
  void set(Var x, T value) {
    zorv_sol_set(handle(), x.literal(), value != 0);
  }
  void set(IntVar n, const Integer& value) {
    const CoeffWire wire = value.wire();
    zorv_sol_set_int(handle(), n.literal(), &wire);
  }
  void flip(Var x) { zorv_sol_flip(handle(), x.literal()); }
  /// Takes over all values of a solution of another model. Aborts if this one lacks a variable.
  void set(const Sol& other) { zorv_sol_set_from_sol(handle(), other.handle()); }

  /// The energy. The first aborts unless it is valid, the second computes it if it is not.
  Integer energy() const {
    return detail::read_integer([&](CoeffWire* out) { zorv_sol_energy(handle(), out); });
  }
  Integer comp_energy() {
    return detail::read_integer([&](CoeffWire* out) { zorv_sol_compute_energy(handle(), out); });
  }
  bool is_energy_valid() const { return zorv_sol_energy_valid(handle()) != 0; }

  /// Seconds until a solver found the solution, -1.0 if none did.
  double tts() const { return zorv_sol_tts(handle()); }

  zorv_sol* handle() const { return handle_.get(); }

 private:
  detail::Owner<zorv_sol, zorv_sol_destroy, zorv_sol_clone> handle_;
};

inline uint64_t Expr::violation_count(const Sol& sol) const {
  return zorv_cons_violation_count(handle(), sol.handle());
}

inline std::vector<Violation> Expr::violations(const Sol& sol) const {
  std::vector<Violation> violations;
  if (violation_count(sol) == 0) return violations;
  for (uint64_t i = 0; i < zorv_cons_item_count(handle()); ++i) {
    if (!detail::counts_as_constraint(*this, i)) continue;
    CoeffWire value{}, lo{}, hi{}, violation{}, weight{};
    zorv_cons_item_eval(handle(), i, sol.handle(), &value, &lo, &hi, &violation, &weight);
    Violation v{i, Integer::adopt(value),
                detail::allowed_of(*this, i, Integer::adopt(lo), Integer::adopt(hi)),
                Integer::adopt(violation), Integer::adopt(weight)};
    if (v.violation != 0) violations.push_back(std::move(v));
  }
  return violations;
}

}  // namespace zorv
