// The job shop in terms of zorv: integer variables, declared constraints, one objective.
#pragma once

#include <cstdint>
#include <vector>

#include "common/zorv_handles.h"
#include "instance.h"
#include "schedule.h"

class ShopModel {
 public:
  // Schedules of `instance` that end within `horizon`, which is at least `bound`, a makespan that
  // no schedule can beat.
  ShopModel(const Instance& instance, int64_t bound, int64_t horizon, int64_t weight);

  const zorv_model* model() const { return model_.get(); }
  uint64_t constraint_count() const { return zorv_cons_item_count(energy_.get()); }
  uint64_t violation_count(const zorv_sol* sol) const {
    return zorv_cons_violation_count(energy_.get(), sol);
  }
  Schedule read(const zorv_sol* sol) const;
  Sol write(const Schedule& schedule) const;

 private:
  void add_variables(int64_t bound, int64_t horizon);
  void add_job_order(zorv_expr* constraints) const;
  void add_machine_conflicts(zorv_expr* constraints) const;

  const Instance& instance_;
  int64_t horizon_;
  std::vector<std::vector<uint32_t>> starts_;  // [job][operation], integer variables
  uint32_t makespan_;
  Expr energy_;  // the makespan with all constraints
  Model model_;
};
