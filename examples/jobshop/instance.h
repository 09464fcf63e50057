// A job shop: every job is a sequence of operations, each on one machine for a fixed time. A
// machine works on one operation at a time and never interrupts it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

struct Operation {
  std::size_t machine;
  int64_t duration;
};

using Job = std::vector<Operation>;  // in the order of work

struct Instance {
  std::string name;
  std::size_t machines;
  std::vector<Job> jobs;
};

std::size_t operation_count(const Instance& instance);
int64_t total_duration(const Job& job);

// What the user has to mend, in one line.
struct UserError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads the usual text format: after '#' comments and blank lines, one line with the number of jobs
// and of machines, then a line for each job with the pairs of machine (from 0) and duration. Throws
// UserError with the line number if the file is anything else.
Instance read_instance(const std::string& path);
