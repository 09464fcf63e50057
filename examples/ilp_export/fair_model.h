// The craft fair in terms of zorv: minimise the cost of trailers and helpers less the profit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>
#include <zorv/zorv.hpp>

#include "fair.h"

// Two items that bring more if both are taken. A product in the objective: no longer an ILP.
struct Bonus {
  std::size_t a, b;
  int64_t value;
};

class FairModel {
 public:
  FairModel(const Fair& fair, const std::optional<Bonus>& bonus);

  const zorv::Model& model() const { return model_; }
  // What to do according to a solution, what it costs, and how many constraints it breaks.
  std::string describe(const zorv::Sol& sol) const;

 private:
  std::vector<zorv::Var> new_choices() const;
  zorv::Expr total(int64_t Item::*what) const;
  zorv::Expr cost(const std::optional<Bonus>& bonus) const;
  zorv::Expr rules() const;

  const Fair& fair_;
  std::vector<zorv::Var> take_;  // [items]
  zorv::VarInt trailers_;        // made of binary variables
  zorv::IntVar change_;          // of the hours
  zorv::Expr rules_;
  zorv::Model model_;
};
