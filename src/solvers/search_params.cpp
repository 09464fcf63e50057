#include "solvers/search_params.h"

#include <sched.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <thread>

#include "core/fatal.h"

namespace zorv {

namespace {

void read_best_energy_sols(const char* value, IntSearchOpts& opts) {
  opts.has_best_energy_sols = true;
  opts.best_energy_cap = parse_solution_cap(value);
}

void read_enable_default_callback(const char* value, IntSearchOpts& opts) {
  const std::string text = value;
  opts.enable_default_callback = text == "1" || text == "true" || text == "True";
}

void read_seed(const char* value, IntSearchOpts& opts) {
  opts.seed = std::strtoull(value, nullptr, 10);
}

void read_target_energy(const char* value, IntSearchOpts& opts) {
  opts.has_target = true;
  opts.target_energy = parse_decimal(value);
}

void read_threads(const char* value, IntSearchOpts& opts) {
  opts.threads = static_cast<uint32_t>(std::strtoul(value, nullptr, 10));
  if (opts.threads == 0) fatal(opts.solver_name, ": threads must be >= 1.");
}

void read_time_limit(const char* value, IntSearchOpts& opts) {
  const double seconds = std::strtod(value, nullptr);
  // "nan" is text without digits, which reads as 0; no time would ever be beyond it.
  opts.time_limit = std::isnan(seconds) ? 0.0 : seconds;
}

void read_topk_sols(const char* value, IntSearchOpts& opts) {
  opts.topk_sols = std::strtoul(value, nullptr, 10);
  if (opts.topk_sols == 0) fatal(opts.solver_name, ": topk_sols must be >= 1.");
}

struct SearchParam {
  const char* key;
  void (*read)(const char* value, IntSearchOpts& opts);
};

constexpr SearchParam kSearchParams[] = {
    {kBestEnergySols, read_best_energy_sols},
    {"enable_default_callback", read_enable_default_callback},
    {"seed", read_seed},
    {"target_energy", read_target_energy},
    {"threads", read_threads},
    {"time_limit", read_time_limit},
    {"topk_sols", read_topk_sols},
};

}  // namespace

void read_search_params(const ParamPair* params, IntSearchOpts& opts) {
  if (params == nullptr) return;
  for (; params->key != nullptr; ++params) {
    const auto* param = std::find_if(
        std::begin(kSearchParams), std::end(kSearchParams),
        [&](const SearchParam& known) { return std::strcmp(known.key, params->key) == 0; });
    if (param == std::end(kSearchParams)) {
      fatal(opts.solver_name, ": parameter '", params->key,
            "' is not supported for native integer models yet.");
    }
    param->read(params->value != nullptr ? params->value : "", opts);
  }
}

uint64_t parse_solution_cap(const char* text) {
  const bool is_count = std::isdigit(static_cast<unsigned char>(*text)) != 0;
  return is_count ? std::strtoul(text, nullptr, 10) : 0;
}

uint64_t default_seed() { return std::random_device("default")(); }

uint32_t default_thread_count() {
  cpu_set_t cpus;
  if (sched_getaffinity(0, sizeof(cpus), &cpus) == 0 && CPU_COUNT(&cpus) >= 1) {
    return static_cast<uint32_t>(CPU_COUNT(&cpus));
  }
  return std::max(1u, std::thread::hardware_concurrency());
}

coeff_t parse_decimal(const char* text) {
  while (std::isspace(static_cast<unsigned char>(*text))) ++text;
  const bool is_minus = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  coeff_t value;
  for (; std::isdigit(static_cast<unsigned char>(*text)); ++text) {
    value *= 10;
    value += *text - '0';
  }
  return is_minus ? coeff_t(-value) : value;
}

}  // namespace zorv
