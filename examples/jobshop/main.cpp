// Solves a job shop with zorv: reads it, searches, prints the schedule and draws it.
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>

#include "gantt.h"
#include "instance.h"
#include "options.h"
#include "schedule.h"
#include "search.h"

namespace {

enum ExitCode { kDone = 0, kNotReached = 1, kMistake = 2 };

std::size_t terminal_columns() {
  winsize size = {};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : 80;
}

bool wants_colour() { return isatty(STDOUT_FILENO) && std::getenv("NO_COLOR") == nullptr; }

std::string describe(const Instance& instance) {
  return instance.name + ": " + std::to_string(instance.jobs.size()) + " jobs on " +
         std::to_string(instance.machines) + " machines, " +
         std::to_string(operation_count(instance)) + " operations\n";
}

std::string describe(const Outcome& outcome) {
  std::ostringstream text;  // not std::cout, whose number format the progress lines change
  switch (outcome.verdict) {
    case Verdict::kOptimal:
      text << "no schedule is shorter";
      break;
    case Verdict::kTargetReached:
      text << "target reached";
      break;
    case Verdict::kOutOfTime:
      text << "time is up";
      break;
  }
  text.precision(3);
  if (outcome.schedule) text << ", best found after " << std::fixed << outcome.seconds << " s";
  return text.str() + "\n";
}

std::string list(const Instance& instance, const Schedule& schedule) {
  std::ostringstream text;
  text << "schedule, as machine:start-end\n";
  for (std::size_t job = 0; job < instance.jobs.size(); ++job) {
    text << "  job " << job << " (" << job_mark(job) << ")";
    for (std::size_t k = 0; k < instance.jobs[job].size(); ++k) {
      const auto& [machine, duration] = instance.jobs[job][k];
      const int64_t start = schedule.starts[job][k];
      text << "  " << machine << ":" << start << "-" << start + duration;
    }
    text << "\n";
  }
  return text.str();
}

std::string describe(const Schedule& schedule, const Verification& verification) {
  return "makespan " + std::to_string(schedule.makespan) + ", energy " +
         std::to_string(verification.energy) + ", violations " +
         std::to_string(verification.violations) + " of " +
         std::to_string(verification.constraints) + " constraints\n";
}

void write_file(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  file.close();
  if (!file) throw UserError("cannot write '" + path + "'");
}

ExitCode solve(const Options& options) {
  const Instance instance = read_instance(options.file);
  const Schedule by_rules = schedule_by_rules(instance);
  const int64_t bound = lower_bound(instance);
  const int64_t horizon = options.search.horizon.value_or(by_rules.makespan);
  if (horizon < bound) {
    throw UserError("horizon " + std::to_string(horizon) + " is too short: every schedule takes " +
                    std::to_string(bound) + " or more");
  }
  std::cout << describe(instance)
            << "best priority rule " + std::to_string(by_rules.makespan) + ", lower bound " +
                   std::to_string(bound) + ", seed " + std::to_string(options.search.seed) + "\n";

  const Outcome outcome = search(instance, horizon, bound, options.search);
  std::cout << describe(outcome);
  if (!outcome.schedule && by_rules.makespan > horizon) {
    std::cout << "no schedule within the horizon was found\n";
    return kNotReached;
  }
  const Schedule& best = outcome.schedule ? *outcome.schedule : by_rules;
  std::cout << "\n"
            << list(instance, best) << "\n"
            << gantt_text(instance, best, terminal_columns(), wants_colour()) << "\n"
            << describe(best, verify(instance, best));
  if (!options.svg_file.empty()) write_file(options.svg_file, gantt_svg(instance, best));
  return best.makespan <= options.search.target.value_or(best.makespan) ? kDone : kNotReached;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = parse_options({argv + 1, argv + argc});
    if (!options.help) return solve(options);
    std::cout << kHelp;
    return kDone;
  } catch (const UserError& error) {
    std::cerr << "jobshop: " << error.what() << std::endl;
    return kMistake;
  }
}
