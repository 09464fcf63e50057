#include "solvers/search_result.h"

#include <utility>

namespace zorv {

namespace {

Sol make_reported_sol(const ModelHandle& model, const coeff_t& energy, double tts,
                      std::vector<uint64_t>& bits, const std::vector<coeff_t>& ints) {
  return Sol(model, std::exchange(bits, {}), ints.empty() ? model->int_lo : ints, energy, tts);
}

}  // namespace

void add_info(SearchResult& result, std::string key, std::string value) {
  result.info.push_back({std::move(key), std::move(value)});
}

void add_run_time(SearchResult& result, double seconds) {
  add_info(result, "run_time", std::to_string(seconds));
}

Sol take_sol(SearchResult& result, const ModelHandle& model) {
  return make_reported_sol(model, result.energy, result.tts, result.bits, result.ints);
}

Sol take_topk_sol(SearchResult& result, uint64_t i, const ModelHandle& model) {
  TopKEntry& entry = result.topk[i];
  return make_reported_sol(model, entry.energy, entry.tts, entry.bits, entry.ints);
}

}  // namespace zorv
