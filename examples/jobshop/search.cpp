#include "search.h"

#include <algorithm>
#include <chrono>
#include <iostream>

#include "common/zorv_handles.h"
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
  const Solver solver(zorv_easy_solver_wrapper_create(shop.model()));
  const std::string limit = std::to_string(seconds);
  const std::string target = std::to_string(horizon);
  const std::string seed = std::to_string(options.seed);
  const std::string threads = std::to_string(options.threads);
  const ParamPair params[] = {
      {"time_limit", limit.c_str()},
      {"target_energy", target.c_str()},
      {"seed", seed.c_str()},
      {"enable_default_callback", options.show_progress ? "1" : "0"},
      {options.threads == 0 ? nullptr : "threads", threads.c_str()},  // a null key ends the list
      {nullptr, nullptr},
  };
  const Result result(zorv_easy_solver_wrapper_search(solver.get(), params, nullptr));
  const Sol sol(zorv_easy_solver_result_to_sol(result.get(), shop.model()));
  if (shop.violation_count(sol.get()) != 0) return std::nullopt;
  return push_left(instance, shop.read(sol.get()));
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
  const Sol sol = shop.write(schedule);
  CoeffOut energy;
  zorv_sol_compute_energy(sol.get(), energy);
  return {energy.value(), shop.violation_count(sol.get()), shop.constraint_count()};
}
