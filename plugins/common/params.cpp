#include "common/params.h"

#include <sched.h>

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <string>
#include <thread>

namespace zorv::plugin {

namespace {

bool is_digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// Leading blanks, a sign, decimal digits up to the first other character; 0 without digits.
Coeff parse_decimal(const char* text) {
  while (std::isspace(static_cast<unsigned char>(*text)) != 0) ++text;
  const bool is_minus = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  Coeff value = 0;
  for (; is_digit(*text); ++text) {
    value *= 10;
    value += *text - '0';
  }
  return is_minus ? Coeff(-value) : value;
}

}  // namespace

void read_best_energy_sols(const char* value, SearchParams& params) {
  params.has_best_energy_sols = true;
  params.best_energy_cap = is_digit(*value) ? std::strtoull(value, nullptr, 10) : 0;
}

void read_enable_default_callback(const char* value, SearchParams& params) {
  const std::string text = value;
  params.enable_default_callback = text == "1" || text == "true" || text == "True";
}

void read_seed(const char* value, SearchParams& params) {
  params.seed = std::strtoull(value, nullptr, 10);
}

void read_target_energy(const char* value, SearchParams& params) {
  params.target_energy = parse_decimal(value);
}

void read_threads(const char* value, SearchParams& params) {
  params.threads = static_cast<uint32_t>(std::strtoul(value, nullptr, 10));
  if (params.threads == 0) fatal(params.solver_name, ": threads must be >= 1.");
}

void read_time_limit(const char* value, SearchParams& params) {
  const double seconds = std::strtod(value, nullptr);
  params.time_limit = std::isnan(seconds) ? 0.0 : seconds;  // no clock comes to a NaN
}

void read_topk_sols(const char* value, SearchParams& params) {
  params.topk_sols = std::strtoull(value, nullptr, 10);
  if (params.topk_sols == 0) fatal(params.solver_name, ": topk_sols must be >= 1.");
}

uint32_t default_thread_count() {
  cpu_set_t cpus;
  if (sched_getaffinity(0, sizeof(cpus), &cpus) == 0 && CPU_COUNT(&cpus) >= 1) {
    return static_cast<uint32_t>(CPU_COUNT(&cpus));
  }
  return std::max(1u, std::thread::hardware_concurrency());
}

}  // namespace zorv::plugin
