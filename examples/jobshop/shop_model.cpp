#include "shop_model.h"

#include <algorithm>
#include <string>

namespace {

// An integer variable needs a choice. Where there is none it gets one value more, which the
// constraints rule out.
zorv::IntVar new_variable(const std::string& name, int64_t lo, int64_t hi) {
  return zorv::int_var(name, lo, std::max(hi, lo + 1));
}

std::string start_name(std::size_t job, std::size_t k) {
  return "start[" + std::to_string(job) + "][" + std::to_string(k) + "]";
}

}  // namespace

ShopModel::ShopModel(const Instance& instance, int64_t bound, int64_t horizon, int64_t weight)
    : instance_(instance),
      horizon_(horizon),
      starts_(new_starts()),
      makespan_(new_variable("makespan", std::min(bound, horizon - 1), horizon)),
      rules_(job_order() + machine_conflicts()),
      model_(makespan_ + weight * rules_) {}

// A start has to leave room for the operations of its job before it and after it.
std::vector<std::vector<zorv::IntVar>> ShopModel::new_starts() const {
  std::vector<std::vector<zorv::IntVar>> starts(instance_.jobs.size());
  for (std::size_t job = 0; job < starts.size(); ++job) {
    int64_t earliest = 0;
    int64_t latest = horizon_ - total_duration(instance_.jobs[job]);
    for (const Operation& operation : instance_.jobs[job]) {
      starts[job].push_back(new_variable(start_name(job, starts[job].size()), earliest, latest));
      earliest += operation.duration;
      latest += operation.duration;
    }
  }
  return starts;
}

// The next operation starts when this one is done, and the makespan follows the last one.
zorv::Expr ShopModel::job_order() const {
  zorv::Expr rules;
  for (std::size_t job = 0; job < starts_.size(); ++job) {
    for (std::size_t k = 0; k < starts_[job].size(); ++k) {
      const bool last = k + 1 == starts_[job].size();
      const zorv::IntVar next = last ? makespan_ : starts_[job][k + 1];
      const int64_t duration = instance_.jobs[job][k].duration;
      rules += zorv::cons(duration <= next - starts_[job][k] <= horizon_);
    }
  }
  return rules;
}

// Of two operations on one machine, one goes first: the difference of their starts is either at
// most minus the duration of the one, or at least the duration of the other. The two intervals are
// one constraint, without a 0/1 variable for the order.
zorv::Expr ShopModel::machine_conflicts() const {
  struct Task {
    std::size_t job;
    zorv::IntVar start;
    int64_t duration;
  };
  std::vector<std::vector<Task>> tasks(instance_.machines);
  for (std::size_t job = 0; job < instance_.jobs.size(); ++job) {
    for (std::size_t k = 0; k < starts_[job].size(); ++k) {
      const Operation& operation = instance_.jobs[job][k];
      tasks[operation.machine].push_back({job, starts_[job][k], operation.duration});
    }
  }
  zorv::Expr rules;
  for (const std::vector<Task>& machine : tasks) {
    for (std::size_t i = 0; i < machine.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        const Task& a = machine[i];
        const Task& b = machine[j];
        if (a.job == b.job) continue;  // ordered already
        rules += zorv::cons(a.start - b.start,
                            zorv::equal({{-horizon_, -a.duration}, {b.duration, horizon_}}));
      }
    }
  }
  return rules;
}

Schedule ShopModel::read(const zorv::Sol& sol) const {
  Schedule schedule = {{}, sol[makespan_].to<int64_t>()};
  for (const std::vector<zorv::IntVar>& job : starts_) {
    std::vector<int64_t>& starts = schedule.starts.emplace_back();
    for (const zorv::IntVar start : job) starts.push_back(sol[start].to<int64_t>());
  }
  return schedule;
}

zorv::Sol ShopModel::write(const Schedule& schedule) const {
  zorv::Sol sol(model_);
  for (std::size_t job = 0; job < starts_.size(); ++job) {
    for (std::size_t k = 0; k < starts_[job].size(); ++k) {
      sol.set(starts_[job][k], schedule.starts[job][k]);
    }
  }
  sol.set(makespan_, schedule.makespan);
  return sol;
}
