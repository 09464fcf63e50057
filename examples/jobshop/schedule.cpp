#include "schedule.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <queue>
#include <tuple>
#include <utility>

namespace {

// Builds a schedule operation by operation and remembers when each job and machine is free.
class Builder {
 public:
  explicit Builder(const Instance& instance)
      : instance_(instance),
        job_free_(instance.jobs.size()),
        machine_free_(instance.machines),
        work_left_(instance.jobs.size()) {
    schedule_.starts.resize(instance.jobs.size());
    std::transform(instance.jobs.begin(), instance.jobs.end(), work_left_.begin(), total_duration);
  }

  bool done(std::size_t job) const { return next_index(job) == instance_.jobs[job].size(); }
  const Operation& next(std::size_t job) const { return instance_.jobs[job][next_index(job)]; }
  int64_t work_left(std::size_t job) const { return work_left_[job]; }
  int64_t earliest_start(std::size_t job) const {
    return std::max(job_free_[job], machine_free_[next(job).machine]);
  }
  int64_t earliest_end(std::size_t job) const { return earliest_start(job) + next(job).duration; }

  void append_next_of(std::size_t job) {
    const Operation& operation = next(job);
    const int64_t start = earliest_start(job);
    job_free_[job] = machine_free_[operation.machine] = start + operation.duration;
    schedule_.makespan = std::max(schedule_.makespan, job_free_[job]);
    work_left_[job] -= operation.duration;
    schedule_.starts[job].push_back(start);
  }

  Schedule take() { return std::move(schedule_); }

 private:
  std::size_t next_index(std::size_t job) const { return schedule_.starts[job].size(); }

  const Instance& instance_;
  Schedule schedule_;
  std::vector<int64_t> job_free_;
  std::vector<int64_t> machine_free_;
  std::vector<int64_t> work_left_;
};

using Rank = int64_t (*)(const Builder&, std::size_t job);  // the smallest goes first

constexpr Rank kRules[] = {
    [](const Builder& b, std::size_t job) { return -b.work_left(job); },
    [](const Builder& b, std::size_t job) { return b.next(job).duration; },
    [](const Builder& b, std::size_t job) { return b.next(job).duration - b.work_left(job); },
    [](const Builder& b, std::size_t job) { return b.earliest_start(job) - b.work_left(job); },
    [](const Builder& b, std::size_t job) { return b.earliest_end(job); },
};

// How long a machine may wait for a better operation, in quarters of the time until the first one
// could be finished: 0 never leaves a machine idle that has work.
constexpr int64_t kPatience[] = {0, 1, 2, 3, 4};

Schedule schedule_by_rule(const Instance& instance, Rank rank, int64_t patience) {
  Builder builder(instance);
  for (std::size_t placed = 0; placed < operation_count(instance); ++placed) {
    std::vector<std::size_t> open;
    for (std::size_t job = 0; job < instance.jobs.size(); ++job) {
      if (!builder.done(job)) open.push_back(job);
    }
    const auto soonest = [&](std::size_t a, std::size_t b) {
      return builder.earliest_end(a) < builder.earliest_end(b);
    };
    const std::size_t first = *std::min_element(open.begin(), open.end(), soonest);
    const std::size_t machine = builder.next(first).machine;

    int64_t earliest = builder.earliest_start(first);
    for (std::size_t job : open) {
      if (builder.next(job).machine == machine) {
        earliest = std::min(earliest, builder.earliest_start(job));
      }
    }
    const int64_t latest = earliest + (builder.earliest_end(first) - earliest) * patience / 4;
    std::size_t chosen = first;
    int64_t best_rank = std::numeric_limits<int64_t>::max();
    for (std::size_t job : open) {
      const bool rivals =
          builder.next(job).machine == machine && builder.earliest_start(job) <= latest;
      if (rivals && rank(builder, job) < best_rank) {
        best_rank = rank(builder, job);
        chosen = job;
      }
    }
    builder.append_next_of(chosen);
  }
  return builder.take();
}

// An operation as its machine sees it: it cannot start before `head` has passed, and `tail` must
// still follow it.
struct MachineTask {
  int64_t head;
  int64_t duration;
  int64_t tail;
};

// The makespan of one machine that may interrupt its work: at every moment the task with the
// longest tail among those that are ready. Interruption only makes it shorter.
int64_t one_machine_bound(std::vector<MachineTask> tasks) {
  std::sort(tasks.begin(), tasks.end(),
            [](const MachineTask& a, const MachineTask& b) { return a.head < b.head; });
  std::priority_queue<std::pair<int64_t, int64_t>> ready;  // tail, duration left
  int64_t now = 0;
  int64_t bound = 0;
  std::size_t i = 0;
  while (i < tasks.size() || !ready.empty()) {
    if (ready.empty()) now = std::max(now, tasks[i].head);
    for (; i < tasks.size() && tasks[i].head <= now; ++i) {
      ready.emplace(tasks[i].tail, tasks[i].duration);
    }
    const auto [tail, left] = ready.top();
    ready.pop();
    const int64_t run = i < tasks.size() ? std::min(left, tasks[i].head - now) : left;
    now += run;
    if (run < left) {
      ready.emplace(tail, left - run);
    } else {
      bound = std::max(bound, now + tail);
    }
  }
  return bound;
}

}  // namespace

Schedule push_left(const Instance& instance, const Schedule& schedule) {
  // By start; operations that take no time go before the one that starts at the same moment.
  std::vector<std::tuple<int64_t, int64_t, std::size_t, std::size_t>> order;  // start, end, k, job
  for (std::size_t job = 0; job < instance.jobs.size(); ++job) {
    for (std::size_t k = 0; k < instance.jobs[job].size(); ++k) {
      const int64_t start = schedule.starts[job][k];
      order.emplace_back(start, start + instance.jobs[job][k].duration, k, job);
    }
  }
  std::sort(order.begin(), order.end());
  Builder builder(instance);
  for (const auto& [start, end, k, job] : order) builder.append_next_of(job);
  return builder.take();
}

Schedule schedule_by_rules(const Instance& instance) {
  Schedule best;
  for (Rank rule : kRules) {
    for (int64_t patience : kPatience) {
      Schedule schedule = schedule_by_rule(instance, rule, patience);
      if (best.starts.empty() || schedule.makespan < best.makespan) best = std::move(schedule);
    }
  }
  return best;
}

int64_t lower_bound(const Instance& instance) {
  std::vector<std::vector<MachineTask>> tasks(instance.machines);
  int64_t bound = 0;
  for (const Job& job : instance.jobs) {
    const int64_t total = total_duration(job);
    int64_t head = 0;
    for (const Operation& operation : job) {
      const int64_t tail = total - head - operation.duration;
      tasks[operation.machine].push_back({head, operation.duration, tail});
      head += operation.duration;
    }
    bound = std::max(bound, total);
  }
  for (std::vector<MachineTask>& machine : tasks) {
    bound = std::max(bound, one_machine_bound(std::move(machine)));
  }
  return bound;
}
