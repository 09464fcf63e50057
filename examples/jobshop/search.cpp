#include "search.h"

#include <algorithm>
#include <chrono>
#include <iostream>

#include "shop_model.h"

namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// One pass: any schedule within the horizon will do, so the search may stop at the first.
std::optional<Schedule> search_within(const Instance& instance, int64_t bound, int64_t horizon,
                                      double seconds, const SearchOptions& options) {
  const ShopModel shop(instance, bound, horizon, options.weight);
  zorv::Params params = {{"time_limit", seconds},
                         {"target_energy", horizon},
                         {"seed", options.seed},
                         {"enable_default_callback", options.show_progress}};
  if (options.threads != 0) params.emplace_back("threads", options.threads);
  const zorv::Sol sol = zorv::EasySolver(shop.model()).search(params).sol;
  if (shop.violation_count(sol) != 0) return std::nullopt;
  return push_left(instance, shop.read(sol));
}

}  // namespace

Outcome search(const Instance& instance, int64_t horizon, int64_t bound,
               const SearchOptions& options) {
  const Clock::time_point start = Clock::now();
  const int64_t goal = std::max(bound, options.target.value_or(bound));
  Outcome outcome;
  while (true) {
    const double seconds_left = options.time_limit_seconds - seconds_since(start);
    if (seconds_left <= 0) return outcome;
    std::cout << "searching for a makespan of at most " << horizon << std::endl;
    std::optional<Schedule> found = search_within(instance, bound, horizon, seconds_left, options);
    if (!found) return outcome;
    outcome.seconds = seconds_since(start);
    outcome.schedule = std::move(found);
    std::cout << "found " << outcome.schedule->makespan << std::endl;
    if (outcome.schedule->makespan <= goal) {
      outcome.verdict =
          outcome.schedule->makespan == bound ? Verdict::kOptimal : Verdict::kTargetReached;
      return outcome;
    }
    horizon = outcome.schedule->makespan - 1;
  }
}

Verification verify(const Instance& instance, const Schedule& schedule) {
  const ShopModel shop(instance, schedule.makespan, schedule.makespan, 1);
  zorv::Sol sol = shop.write(schedule);
  return {sol.comp_energy().to<int64_t>(), shop.violation_count(sol), shop.model().cons_count()};
}
