#include "fair_model.h"

#include <algorithm>

namespace {

void add_product(zorv_expr* sum, int64_t factor, const std::vector<uint32_t>& variables) {
  zorv_expr_iadd_raw_term(sum, Coeff(factor), variables.data(),
                          static_cast<uint32_t>(variables.size()));
}

void add_multiple(zorv_expr* sum, int64_t factor, const zorv_expr* e) {
  const Expr multiple(zorv_expr_clone_mul_int(e, Coeff(factor)));
  zorv_expr_iadd_expr(sum, multiple.get());
}

void declare_between(zorv_expr* energy, const zorv_expr* body, int64_t lo, int64_t hi) {
  const Expr constraint(zorv_cons_between(body, Coeff(lo), Coeff(hi)));
  zorv_expr_iadd_expr(energy, constraint.get());
}

int64_t value_of(const zorv_sol* sol, const zorv_expr* e) {
  CoeffOut value;
  zorv_sol_eval_expr(sol, e, value);
  return value.value();
}

// Below every sum of numbers from a file, for a constraint with one side.
constexpr int64_t kNoLowerBound = -1'000'000'000'000'000;

}  // namespace

FairModel::FairModel(const Fair& fair, const std::optional<Bonus>& bonus)
    : fair_(fair),
      trailers_(zorv_varintelem_create("trailers", Coeff(0), Coeff(fair.trailer_count))),
      change_(zorv_new_int_var("change", Coeff(fair.least_change), Coeff(fair.most_change))) {
  for (const Item& item : fair.items) take_.push_back(zorv_new_var(item.name.c_str()));

  const Expr energy = cost(bonus);
  add_load(energy.get());
  add_hours(energy.get());
  add_choice(energy.get());
  add_conflicts(energy.get());
  energy_.reset(zorv_expr_simplify_as_binary(energy.get()));
  model_.reset(zorv_model_create(energy_.get()));
}

Expr FairModel::total(int64_t Item::*what) const {
  Expr sum(zorv_expr_create());
  for (std::size_t i = 0; i < take_.size(); ++i) {
    add_product(sum.get(), fair_.items[i].*what, {take_[i]});
  }
  return sum;
}

Expr FairModel::cost(const std::optional<Bonus>& bonus) const {
  Expr cost = total(&Item::profit);
  zorv_expr_imul_int(cost.get(), Coeff(-1));
  add_multiple(cost.get(), fair_.trailer_cost, trailers_.get());
  add_product(cost.get(), fair_.hour_cost, {change_});
  if (bonus) add_product(cost.get(), -bonus->value, {take_[bonus->a], take_[bonus->b]});
  return cost;
}

void FairModel::add_load(zorv_expr* energy) const {
  const Expr load = total(&Item::kilograms);
  add_multiple(load.get(), -fair_.trailer_kilograms, trailers_.get());
  declare_between(energy, load.get(), kNoLowerBound, fair_.van_kilograms);
}

void FairModel::add_hours(zorv_expr* energy) const {
  const Expr hours = total(&Item::hours);
  add_product(hours.get(), -1, {change_});
  declare_between(energy, hours.get(), kNoLowerBound, fair_.shift_hours);
}

void FairModel::add_choice(zorv_expr* energy) const {
  const Expr taken(zorv_expr_create());
  for (const uint32_t variable : take_) zorv_expr_iadd_var(taken.get(), variable);
  declare_between(energy, taken.get(), fair_.fewest, fair_.most);
}

// A product that has to be 0 needs no bounds: it is a penalty of free form.
void FairModel::add_conflicts(zorv_expr* energy) const {
  for (const auto& [a, b] : fair_.conflicts) {
    const Expr both(zorv_expr_create());
    add_product(both.get(), 1, {take_[a], take_[b]});
    const Expr penalty(zorv_cons_mark(both.get()));
    zorv_expr_iadd_expr(energy, penalty.get());
  }
}

std::string FairModel::describe(zorv_sol* sol) const {
  std::string text = "take";
  for (std::size_t i = 0; i < take_.size(); ++i) {
    const bool is_taken = zorv_sol_has(sol, take_[i]) != 0 && zorv_sol_get(sol, take_[i]) != 0;
    if (is_taken) text += " " + fair_.items[i].name;
  }
  CoeffOut change, energy;
  zorv_sol_get_int(sol, change_, change);
  zorv_sol_compute_energy(sol, energy);
  return text + "\ntrailers " + std::to_string(value_of(sol, trailers_.get())) +
         "\nchange of hours " + std::to_string(change.value()) + "\nenergy " +
         std::to_string(energy.value()) + ", violations " +
         std::to_string(zorv_cons_violation_count(energy_.get(), sol)) + " of " +
         std::to_string(zorv_cons_item_count(energy_.get())) + " constraints\n";
}
