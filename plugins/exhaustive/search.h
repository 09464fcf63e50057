// The search that looks at every assignment of a model.
#pragma once

#include <string>

#include "common/binary_model.h"
#include "common/solution_list.h"

namespace zorv::plugin {

// As many as a walk can count.
inline constexpr uint64_t kMostVariables = 62;

struct ExhaustiveResult {
  Solution best;
  // By the parameters, the best states by energy, or those of the best energy; among equals by
  // rank in Gray order.
  SolutionList listed;
  bool is_list_wanted = false;
  bool is_complete = false;  // every assignment was looked at
  uint64_t states = 0;       // that were
  uint32_t threads = 0;
  std::string numbers;  // the number type: "int32", "int64" or "unbounded"
};

// At most kMostVariables. A complete search has the same result whatever the number of threads, but
// for times. One that was stopped gives a state that no flip of a single variable improves, except
// by violating a requirement where the target is met.
ExhaustiveResult search_all(const BinaryModel& model, const SearchParams& params);

}  // namespace zorv::plugin
