// The parameters that callers give a search as pairs of strings.
#pragma once

#include <string>

#include "solvers/int_search.h"

namespace zorv {

// Reads all pairs into `opts`; of equal keys the last one counts. `params` is null or ends with a
// null key; a null value reads as "". Aborts on an unknown key and on counts that read as 0.
void read_search_params(const ParamPair* params, IntSearchOpts& opts);

// The key that asks for all states of the best energy. Its value is a cap on their number if it
// begins with a digit; 0, as from any other text, is none.
inline constexpr char kBestEnergySols[] = "best_energy_sols";
uint64_t parse_solution_cap(const char* text);

uint64_t default_seed();          // a fresh 32-bit value
uint32_t default_thread_count();  // the processors that this process may run on

// Leading blanks, a sign, decimal digits up to the first other character; 0 without digits.
coeff_t parse_decimal(const char* text);

}  // namespace zorv
