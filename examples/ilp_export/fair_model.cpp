#include "fair_model.h"

#include <sstream>

FairModel::FairModel(const Fair& fair, const std::optional<Bonus>& bonus)
    : fair_(fair),
      take_(new_choices()),
      trailers_("trailers", 0, fair.trailer_count),
      change_(zorv::int_var("change", fair.least_change, fair.most_change)),
      rules_(rules()),
      model_(cost(bonus) + rules_) {}

std::vector<zorv::Var> FairModel::new_choices() const {
  std::vector<zorv::Var> choices;
  for (const Item& item : fair_.items) choices.push_back(zorv::var(item.name));
  return choices;
}

zorv::Expr FairModel::total(int64_t Item::*what) const {
  zorv::Expr sum;
  for (std::size_t i = 0; i < take_.size(); ++i) sum += fair_.items[i].*what * take_[i];
  return sum;
}

zorv::Expr FairModel::cost(const std::optional<Bonus>& bonus) const {
  zorv::Expr cost = fair_.trailer_cost * trailers_ + fair_.hour_cost * change_;
  cost -= total(&Item::profit);
  if (bonus) cost -= bonus->value * take_[bonus->a] * take_[bonus->b];
  return cost;
}

zorv::Expr FairModel::rules() const {
  const zorv::Expr load = total(&Item::kilograms) - fair_.trailer_kilograms * trailers_;
  const zorv::Expr hours = total(&Item::hours) - change_;
  zorv::Expr rules = zorv::cons(load <= fair_.van_kilograms);
  rules += zorv::cons(hours <= fair_.shift_hours);
  rules += zorv::cons(fair_.fewest <= zorv::sum(take_) <= fair_.most);
  // A product that has to be 0 needs no bounds: it is a penalty of free form.
  for (const auto& [a, b] : fair_.conflicts) rules += zorv::cons(take_[a] * take_[b]);
  return rules;
}

std::string FairModel::describe(const zorv::Sol& sol) const {
  std::ostringstream text;
  text << "take";
  for (std::size_t i = 0; i < take_.size(); ++i) {
    if (model_.has(take_[i]) && sol[take_[i]] == 1) text << " " << fair_.items[i].name;
  }
  text << "\ntrailers " << sol[trailers_] << "\nchange of hours " << sol[change_] << "\nenergy "
       << sol.energy() << ", violations " << rules_.violation_count(sol) << " of "
       << rules_.cons_count() << " constraints\n";
  return text.str();
}
