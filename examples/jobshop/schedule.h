// Schedules, and what simple rules say about the best one before any search.
#pragma once

#include <cstdint>
#include <vector>

#include "instance.h"

struct Schedule {
  std::vector<std::vector<int64_t>> starts;  // [job][operation]
  int64_t makespan = 0;
};

// Moves every operation to the left as far as its job and its machine allow, without changing the
// order of work on any machine.
Schedule push_left(const Instance& instance, const Schedule& schedule);

// The shortest of the schedules that a handful of priority rules build.
Schedule schedule_by_rules(const Instance& instance);

// No schedule is shorter: the longest job, or a machine with the least work that can come before
// and after it.
int64_t lower_bound(const Instance& instance);
