// The craft fair in terms of zorv: minimise the cost of trailers and helpers less the profit.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/zorv_handles.h"
#include "fair.h"

// Two items that bring more if both are taken. A product in the objective: no longer an ILP.
struct Bonus {
  std::size_t a, b;
  int64_t value;
};

class FairModel {
 public:
  FairModel(const Fair& fair, const std::optional<Bonus>& bonus);

  const zorv_model* model() const { return model_.get(); }
  // What to do according to a solution, what it costs, and how many constraints it breaks.
  std::string describe(zorv_sol* sol) const;

 private:
  Expr total(int64_t Item::*what) const;
  Expr cost(const std::optional<Bonus>& bonus) const;
  void add_load(zorv_expr* energy) const;
  void add_hours(zorv_expr* energy) const;
  void add_choice(zorv_expr* energy) const;
  void add_conflicts(zorv_expr* energy) const;

  const Fair& fair_;
  std::vector<uint32_t> take_;  // [items] binary variables
  Expr trailers_;               // a VarInt: an integer made of binary variables
  uint32_t change_;             // a native integer variable, in hours
  Expr energy_;
  Model model_;
};
