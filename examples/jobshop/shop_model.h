// The job shop in terms of zorv: integer variables, declared constraints, one objective.
#pragma once

#include <cstdint>
#include <vector>
#include <zorv/zorv.hpp>

#include "instance.h"
#include "schedule.h"

class ShopModel {
 public:
  // Schedules of `instance` that end within `horizon`, which is at least `bound`, a makespan that
  // no schedule can beat.
  ShopModel(const Instance& instance, int64_t bound, int64_t horizon, int64_t weight);

  const zorv::Model& model() const { return model_; }
  uint64_t violation_count(const zorv::Sol& sol) const { return rules_.violation_count(sol); }
  Schedule read(const zorv::Sol& sol) const;
  zorv::Sol write(const Schedule& schedule) const;

 private:
  std::vector<std::vector<zorv::IntVar>> new_starts() const;
  zorv::Expr job_order() const;
  zorv::Expr machine_conflicts() const;

  const Instance& instance_;
  int64_t horizon_;
  std::vector<std::vector<zorv::IntVar>> starts_;  // [job][operation]
  zorv::IntVar makespan_;
  zorv::Expr rules_;
  zorv::Model model_;
};
