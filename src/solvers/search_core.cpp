#include "solvers/search_core.h"

#include <utility>

#include "solvers/progress.h"

namespace zorv {

namespace {

// What a search without an external stop reads.
const std::atomic<uint8_t> kNeverStops{0};

}  // namespace

IntSearchCore::IntSearchCore(const ModelImpl& m, const IntSearchOpts& o)
    : model(m),
      opts(o),
      start_(std::chrono::steady_clock::now()),
      external_stop_(o.external_stop != nullptr ? *o.external_stop : kNeverStops) {}

double IntSearchCore::elapsed_seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void IntSearchCore::submit(StateKeeper& keeper, const coeff_t& energy) {
  const bool is_new_best = !has_best || energy < best_energy;
  const bool is_wanted = opts.has_best_energy_sols
                             ? energy == best_energy && pool.has_room_for_tie(opts.best_energy_cap)
                             : pool.has_room_among(opts.topk_sols, energy);
  if (!is_new_best && !is_wanted) return;
  const double tts = elapsed_seconds();
  // First, so that nobody keeps the way back to a state that is not read any more.
  if (is_new_best) {
    best_.release();
    if (opts.has_best_energy_sols) pool.clear();
  }
  keeper.catch_up();
  if (opts.has_best_energy_sols || opts.topk_sols != 0) {
    pool.offer(keeper, energy, tts, opts.has_best_energy_sols ? 0 : opts.topk_sols);
  }
  if (!is_new_best) return;

  has_best = true;
  best_ = KeptState::of(keeper);
  best_energy = energy;
  best_tts = tts;
  if (opts.enable_default_callback) print_progress(model, tts, energy, keeper.tally());
  if (opts.callback != nullptr) {
    const std::vector<coeff_t> state = best_.read();
    fire_event(kEventNewBest, energy, &state, tts);
  }
  // A target that only a violated requirement makes possible is no answer: the search goes on.
  if (opts.has_target && energy <= opts.target_energy && keeper.tally().violated == 0) {
    stop.store(1, std::memory_order_relaxed);
  }
}

StateKeeper& IntSearchCore::add_keeper(std::unique_ptr<StateKeeper> keeper) {
  const MutexLock lock(mutex);
  return *keepers_.emplace_back(std::move(keeper));
}

void IntSearchCore::fire_event(uint32_t event, const coeff_t& energy,
                               const std::vector<coeff_t>* state, double tts) {
  Sol* sol = state == nullptr ? new Sol(opts.model, {}, model.int_lo, energy, tts)
                              : new Sol(opts.model, words_of(model, *state), ints_of(model, *state),
                                        energy, tts);
  const double interval = opts.callback(opts.callback_ctx, sol, event);
  if (interval >= 0.0) timer_interval_.store(interval, std::memory_order_relaxed);
}

void IntSearchCore::fire_start_event() {
  if (opts.callback == nullptr) return;
  std::vector<coeff_t> state(model.variables.size());
  state.insert(state.end(), model.int_lo.begin(), model.int_lo.end());
  fire_event(kEventStart, full_energy(model, words_of(model, state).data(), model.int_lo.data()),
             &state, 0.0);
}

void IntSearchCore::serve_timer() {
  if (opts.callback == nullptr) return;
  const double now = elapsed_seconds();
  const double interval = timer_interval_.load(std::memory_order_relaxed);
  if (interval > 0.0 && now - last_tick_ < interval) return;
  last_tick_ = now;
  if (interval <= 0.0) return;

  mutex.lock();
  const bool has_state = has_best;
  const std::vector<coeff_t> state = has_best ? read_best() : std::vector<coeff_t>();
  const coeff_t energy = best_energy;
  const double tts = best_tts;
  mutex.unlock();
  fire_event(kEventTimer, energy, has_state ? &state : nullptr, tts);
}

std::vector<uint64_t> words_of(const ModelImpl& model, const std::vector<coeff_t>& state) {
  const size_t bits = model.variables.size();
  std::vector<uint64_t> words((bits + 63) / 64);
  for (size_t i = 0; i < bits; ++i) {
    if (!is_zero(state[i])) words[i / 64] |= uint64_t{1} << (i % 64);
  }
  return words;
}

std::vector<coeff_t> ints_of(const ModelImpl& model, const std::vector<coeff_t>& state) {
  return {state.begin() + static_cast<std::ptrdiff_t>(model.variables.size()), state.end()};
}

}  // namespace zorv
