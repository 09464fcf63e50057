// The job shop as a zorv model, and its search.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "instance.h"
#include "schedule.h"

struct SearchOptions {
  double time_limit_seconds = 10;
  std::optional<int64_t> horizon;  // of the first pass; by default the makespan of the rules
  std::optional<int64_t> target;   // a makespan that is good enough
  // Of every constraint. Work that overlaps by v in all saves at most v, so from 2 on no broken
  // schedule has as little energy as the best sound one; with 1 it can draw level and get stuck.
  int64_t weight = 2;
  uint64_t seed = 0;
  unsigned threads = 0;  // 0 leaves the choice to the library
  bool show_progress = true;
};

enum class Verdict { kOptimal, kTargetReached, kOutOfTime };

struct Outcome {
  std::optional<Schedule> schedule;  // none if no pass found one
  Verdict verdict = Verdict::kOutOfTime;
  double seconds = 0;  // until the schedule was found
};

// Searches in passes. Each looks for any schedule within a horizon; the one that it finds is pushed
// left and the next pass asks for a shorter one, until `bound`, the target or the time limit is
// reached. A tight horizon is the whole point: it turns the slow work of shaving time off a
// finished schedule into a search for one without conflicts, which is what annealing does best.
Outcome search(const Instance& instance, int64_t horizon, int64_t bound,
               const SearchOptions& options);

// What the library itself says about a schedule.
struct Verification {
  int64_t energy;  // the makespan, if nothing is violated
  uint64_t violations;
  uint64_t constraints;
};
Verification verify(const Instance& instance, const Schedule& schedule);
