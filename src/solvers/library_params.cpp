#include "solvers/library_params.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "solvers/library_model.h"

namespace zorv {

namespace {

bool asks_for_solution_list(const ParamPair& pair) {
  const std::string_view key = pair.key;
  return key == "topk_sols" || key == "best_energy_sols";
}

}  // namespace

std::vector<ParamPair> copy_params(const ParamPair* params) {
  std::vector<ParamPair> all;
  for (; params != nullptr && params->key != nullptr; ++params) all.push_back(*params);
  all.push_back({nullptr, nullptr});
  return all;
}

bool wants_unified_search(const ModelImpl& model, const ParamPair* params) {
  const char* asked = std::getenv("ZORV_INT_UNIFIED");
  if (asked == nullptr || *asked != '1') return false;
  const std::vector<ParamPair> all = copy_params(params);
  return std::none_of(all.begin(), all.end() - 1, asks_for_solution_list) && !model.has_remainder &&
         !has_nonlinear_bodies(model);
}

}  // namespace zorv
