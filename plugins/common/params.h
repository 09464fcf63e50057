// Search parameters: each library has a table of the keys that it takes, most of which stand here
// with what reads them. Numbers are read as strtoul and strtod do, so text without digits is 0;
// that goes for "nan" too.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <optional>

#include "common/coeff.h"
#include "common/fatal.h"

namespace zorv::plugin {

// What the common keys fill in; a library that has keys of its own derives from it.
struct SearchParams {
  const char* solver_name = "";      // for messages
  std::optional<double> time_limit;  // seconds
  std::optional<Coeff> target_energy;
  std::optional<uint64_t> seed;
  uint32_t threads = 0;               // 0: not given
  uint64_t topk_sols = 0;             // 0: no list
  bool has_best_energy_sols = false;  // all states of the best energy; topk_sols then says nothing
  uint64_t best_energy_cap = 0;       // how many of them; 0: all
  bool enable_default_callback = false;
};

template <typename Params>
struct ParamReader {
  const char* key;
  void (*read)(const char* value, Params& params);
};

void read_best_energy_sols(const char* value, SearchParams& params);
void read_enable_default_callback(const char* value, SearchParams& params);
void read_seed(const char* value, SearchParams& params);
void read_target_energy(const char* value, SearchParams& params);
void read_threads(const char* value, SearchParams& params);  // aborts on 0
void read_time_limit(const char* value, SearchParams& params);
void read_topk_sols(const char* value, SearchParams& params);  // aborts on 0

// Reads all pairs by the library's table; of equal keys the last one counts. `pairs` is null or
// ends with a null key; a null value reads as "". Aborts on an unknown key.
template <typename Params, size_t kCount>
void read_params(const ParamPair* pairs, const ParamReader<Params> (&table)[kCount],
                 Params& params) {
  for (; pairs != nullptr && pairs->key != nullptr; ++pairs) {
    const auto* reader = std::find_if(std::begin(table), std::end(table), [&](const auto& known) {
      return std::strcmp(known.key, pairs->key) == 0;
    });
    if (reader == std::end(table)) {
      fatal(params.solver_name, ": unknown parameter '", pairs->key, "'.");
    }
    reader->read(pairs->value != nullptr ? pairs->value : "", params);
  }
}

// The processors that this process may run on, at least 1.
uint32_t default_thread_count();

}  // namespace zorv::plugin
