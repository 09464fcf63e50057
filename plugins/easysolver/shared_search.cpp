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
  const std::lock_guard lock(mutex_);
  return !has_best_ || energy < best_.energy || pool_.is_wanted(energy);
}

void SharedSearch::offer(const Coeff& energy, const uint8_t* x) {
  const std::lock_guard lock(mutex_);
  const bool is_best = !has_best_ || energy < best_.energy;
  if (!is_best && !pool_.is_wanted(energy)) return;
  const double tts = seconds();
  const std::vector<uint64_t> bits = words_of(x, model_.nvars);
  pool_.offer(energy, bits.data(), tts);
  if (is_best) become_best(energy, bits, tts);
}

void SharedSearch::become_best(const Coeff& energy, const std::vector<uint64_t>& bits, double tts) {
  has_best_ = true;
  best_ = {energy, bits, tts};
  if (params_.enable_default_callback) print_progress(model_, tts, energy, bits.data());
  if (!params_.target_energy || energy > *params_.target_energy) return;
  if (tally_constraints(model_, bits.data()).violated == 0) stop_.store(true);
}

}  // namespace zorv::plugin::easy
