#include "easysolver/shared_search.h"

#include "common/literal.h"
#include "common/progress.h"

namespace zorv::plugin::easy {

namespace {

std::vector<uint64_t> words_of(const uint8_t* x, uint64_t n) {
  std::vector<uint64_t> words(words_for(n));
  for (uint64_t i = 0; i < n; ++i) words[i / 64] |= uint64_t{x[i]} << i % 64;
  return words;
}

}  // namespace

SharedSearch::SharedSearch(const BinaryModel& model, const SearchParams& params)
    : model_(model),
      params_(params),
      time_limit_(params.time_limit.value_or(10.0)),
      pool_(params, model.nvars) {}

bool SharedSearch::is_wanted(const Coeff& energy) {
  const MutexLock lock(mutex_);
  return !has_best_ || energy < best_.energy || pool_.is_wanted(energy);
}

void SharedSearch::offer(const Coeff& energy, const uint8_t* x) {
  const MutexLock lock(mutex_);
  const bool is_best = !has_best_ || energy < best_.energy;
  if (!is_best && !pool_.is_wanted(energy)) return;
  Solution solution = {energy, words_of(x, model_.nvars), seconds()};
  if (is_best && is_target_met_ && !is_allowed(solution.bits)) return;
  pool_.offer(energy, solution.bits.data(), solution.tts);
  if (is_best) become_best(std::move(solution));
}

void SharedSearch::become_best(Solution solution) {
  has_best_ = true;
  best_ = std::move(solution);
  if (params_.enable_default_callback) {
    print_progress(model_, best_.tts, best_.energy, best_.bits.data());
  }
  if (!params_.target_energy || best_.energy > *params_.target_energy) return;
  if (!is_allowed(best_.bits)) return;
  is_target_met_ = true;
  stop_.store(true);
}

bool SharedSearch::is_allowed(const std::vector<uint64_t>& bits) const {
  return tally_constraints(model_, bits.data()).violated == 0;
}

Solution SharedSearch::best() {
  const MutexLock lock(mutex_);
  return best_;
}

SolutionList SharedSearch::take_list() {
  const MutexLock lock(mutex_);
  return pool_.take();
}

}  // namespace zorv::plugin::easy
