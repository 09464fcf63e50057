#include "common/solution_list.h"

#include <algorithm>

#include "common/literal.h"

namespace zorv::plugin {

void write_solution(const Solution& solution, SolutionOut* out) {
  write_wire(solution.energy, out->energy);
  std::copy(solution.bits.begin(), solution.bits.end(), out->bits);
  *out->tts = solution.tts;
}

SolutionPool::SolutionPool(const SearchParams& params, uint64_t nvars)
    : words_(words_for(nvars)),
      is_kept_(params.has_best_energy_sols || params.topk_sols != 0),
      are_ties_kept_(params.has_best_energy_sols),
      room_(are_ties_kept_ ? params.best_energy_cap : params.topk_sols) {}

bool SolutionPool::is_wanted(const Coeff& energy) const {
  if (!is_kept_) return false;
  if (entries_.empty()) return true;
  if (are_ties_kept_ && energy > entries_.back().energy) return false;
  return !is_full() || energy < entries_.back().energy;
}

void SolutionPool::offer(const Coeff& energy, const uint64_t* bits, double tts) {
  if (!is_wanted(energy)) return;
  std::vector<uint64_t> state(bits, bits + words_);
  if (are_ties_kept_ && !entries_.empty() && energy < entries_.back().energy) {
    entries_.clear();
    states_.clear();
  }
  if (!states_.insert(state).second) return;
  const auto place =
      std::upper_bound(entries_.begin(), entries_.end(), energy,
                       [](const Coeff& e, const Solution& s) { return e < s.energy; });
  entries_.insert(place, {energy, std::move(state), tts});
  if (room_ != 0 && entries_.size() > room_) {
    states_.erase(entries_.back().bits);
    entries_.pop_back();
  }
}

size_t SolutionPool::Hash::operator()(const std::vector<uint64_t>& words) const {
  uint64_t hash = 0;
  for (const uint64_t word : words) {
    hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 32;
  }
  return hash;
}

}  // namespace zorv::plugin
