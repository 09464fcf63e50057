#include "shop_model.h"

#include <algorithm>
#include <sstream>
#include <string>

namespace {

// An integer variable needs a choice. Where there is none it gets one value more, which the
// constraints rule out.
uint32_t new_variable(const std::string& name, int64_t lo, int64_t hi) {
  return zorv_new_int_var(name.c_str(), Coeff(lo), Coeff(std::max(hi, lo + 1)));
}

std::string start_name(std::size_t job, std::size_t k) {
  std::ostringstream name;
  name << "start[" << job << "][" << k << "]";
  return name.str();
}

Expr difference(uint32_t a, uint32_t b) {
  Expr expr(zorv_expr_create_var(a));
  zorv_expr_isub_var(expr.get(), b);
  return expr;
}

}  // namespace

ShopModel::ShopModel(const Instance& instance, int64_t bound, int64_t horizon, int64_t weight)
    : instance_(instance), horizon_(horizon) {
  add_variables(bound, horizon);

  const Expr constraints(zorv_expr_create());
  add_job_order(constraints.get());
  add_machine_conflicts(constraints.get());
  zorv_expr_imul_int(constraints.get(), Coeff(weight));

  const Expr energy(zorv_expr_create_var(makespan_));
  zorv_expr_iadd_expr(energy.get(), constraints.get());
  energy_.reset(zorv_expr_simplify_as_binary(energy.get()));
  model_.reset(zorv_model_create(energy_.get()));
}

// A start has to leave room for the operations of its job before it and after it.
void ShopModel::add_variables(int64_t bound, int64_t horizon) {
  for (std::size_t job = 0; job < instance_.jobs.size(); ++job) {
    int64_t earliest = 0;
    int64_t latest = horizon - total_duration(instance_.jobs[job]);
    std::vector<uint32_t>& starts = starts_.emplace_back();
    for (const Operation& operation : instance_.jobs[job]) {
      const std::string name = start_name(job, starts.size());
      starts.push_back(new_variable(name, earliest, latest));
      earliest += operation.duration;
      latest += operation.duration;
    }
  }
  makespan_ = new_variable("makespan", std::min(bound, horizon - 1), horizon);
}

// start of the next operation - start >= duration, and the makespan follows the last one.
void ShopModel::add_job_order(zorv_expr* constraints) const {
  for (std::size_t job = 0; job < instance_.jobs.size(); ++job) {
    for (std::size_t k = 0; k < starts_[job].size(); ++k) {
      const bool last = k + 1 == starts_[job].size();
      const Expr wait = difference(last ? makespan_ : starts_[job][k + 1], starts_[job][k]);
      const Expr rule(
          zorv_cons_between(wait.get(), Coeff(instance_.jobs[job][k].duration), Coeff(horizon_)));
      zorv_expr_iadd_expr(constraints, rule.get());
    }
  }
}

// Of two operations on one machine, one goes first: the difference of their starts is either at
// most minus the duration of the one, or at least the duration of the other. The two intervals are
// one constraint, without a 0/1 variable for the order.
void ShopModel::add_machine_conflicts(zorv_expr* constraints) const {
  struct Task {
    std::size_t job;
    uint32_t start;
    int64_t duration;
  };
  std::vector<std::vector<Task>> tasks(instance_.machines);
  for (std::size_t job = 0; job < instance_.jobs.size(); ++job) {
    for (std::size_t k = 0; k < starts_[job].size(); ++k) {
      const Operation& operation = instance_.jobs[job][k];
      tasks[operation.machine].push_back({job, starts_[job][k], operation.duration});
    }
  }
  for (const std::vector<Task>& machine : tasks) {
    for (std::size_t i = 0; i < machine.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        const Task& a = machine[i];
        const Task& b = machine[j];
        if (a.job == b.job) continue;  // ordered already
        const Coeff a_first(-a.duration), b_first(b.duration), least(-horizon_), most(horizon_);
        const CoeffWire lows[] = {*least, *b_first};
        const CoeffWire highs[] = {*a_first, *most};
        const Expr gap = difference(a.start, b.start);
        const Expr rule(zorv_cons_equal(gap.get(), lows, highs, 2));
        zorv_expr_iadd_expr(constraints, rule.get());
      }
    }
  }
}

Schedule ShopModel::read(const zorv_sol* sol) const {
  const auto value = [&](uint32_t variable) {
    CoeffOut value;
    zorv_sol_get_int(sol, variable, value);
    return value.value();
  };
  Schedule schedule = {{}, value(makespan_)};
  for (const std::vector<uint32_t>& job : starts_) {
    std::vector<int64_t>& starts = schedule.starts.emplace_back();
    for (uint32_t variable : job) starts.push_back(value(variable));
  }
  return schedule;
}

Sol ShopModel::write(const Schedule& schedule) const {
  Sol sol(zorv_sol_create(model_.get()));
  for (std::size_t job = 0; job < starts_.size(); ++job) {
    for (std::size_t k = 0; k < starts_[job].size(); ++k) {
      zorv_sol_set_int(sol.get(), starts_[job][k], Coeff(schedule.starts[job][k]));
    }
  }
  zorv_sol_set_int(sol.get(), makespan_, Coeff(schedule.makespan));
  return sol;
}
