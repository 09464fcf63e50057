// Every thread takes segments of the assignments, in ascending order, until there are none left,
// and keeps its own best states; they are put together at the end. The threads have in common a
// counter of segments, a flag that stops them, and, only if somebody wants to know of it while the
// search runs, the best energy of all. A search that was stopped ends with a descent.
#include "exhaustive/search.h"

#include <atomic>
#include <chrono>

#include "common/progress.h"
#include "exhaustive/best_states.h"
#include "exhaustive/gray_walk.h"
#include "zorv/engine/mutex.h"
#include "zorv/engine/thread_team.h"

namespace zorv::plugin {

namespace {

// A walk looks at the clock and the flag after so many places: some ten thousandths of a second.
constexpr uint64_t kPlacesBetweenLooks = 1 << 14;
// Segments for each thread, so that all end at nearly the same time, and the fewest variables that
// are worth a segment.
constexpr uint32_t kSegmentsPerThread = 8;
constexpr uint32_t kFewestWalked = 14;

// 32-bit numbers need the same spare bit as those of kMachineBits.
constexpr unsigned kShortBits = 30;

template <typename Lanes>
class ExhaustiveSearch {
 public:
  using Number = typename Lanes::Number;

  ExhaustiveSearch(const BinaryModel& model, const SearchParams& params, const Coeff& reach)
      : model_(model),
        params_(params),
        masks_(make_mask_model<Number>(model)),
        is_best_shared_(params.enable_default_callback || params.target_energy.has_value()) {
    const auto above_all = static_cast<Number>(reach + 1);
    const uint32_t wanted =
        std::min(params.threads != 0 ? params.threads : default_thread_count(), kMostThreads);
    while (wanted > 1 && segments() < uint64_t{kSegmentsPerThread} * wanted &&
           masks_.variables > kFewestWalked + fixed_) {
      ++fixed_;
    }
    const uint64_t count = std::min<uint64_t>(wanted, segments());
    workers_.reserve(count);
    for (uint64_t i = 0; i < count; ++i) workers_.emplace_back(params, above_all);
  }

  ExhaustiveResult run() {
    ThreadTeam team(static_cast<uint32_t>(workers_.size() - 1),
                    [this](uint32_t i) { work(workers_[i + 1]); });
    work(workers_[0]);
    team.join();
    return put_together(team.size() + 1);
  }

 private:
  using Clock = std::chrono::steady_clock;
  using State = RankedState<Number>;

  struct Worker {
    Worker(const SearchParams& params, const Number& above_all) : kept(params, above_all) {}

    BestStates<Number> kept;
    uint64_t states = 0;
  };

  uint64_t segments() const { return uint64_t{1} << fixed_; }
  double elapsed_seconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
  }

  void work(Worker& worker) {
    for (;;) {
      const uint64_t number = next_segment_.fetch_add(1, std::memory_order_relaxed);
      if (number >= segments()) return;
      // The first segment is begun whatever the time, so that there is a solution.
      if (number != 0 && is_over()) return;
      walk_segment({masks_.variables - fixed_, number}, worker);
    }
  }

  void walk_segment(const Segment& segment, Worker& worker) {
    GrayWalk<Lanes> walk(masks_, segment);
    const uint64_t last = walk.places() - 1;
    take_lanes(walk, segment, worker);
    uint64_t next_look = kPlacesBetweenLooks;
    while (walk.place() < last) {
      if (walk.place() >= next_look) {
        next_look += kPlacesBetweenLooks;
        if (is_over()) break;
      }
      walk.advance(std::min(last, next_look), worker.kept.limit());
      take_lanes(walk, segment, worker);
    }
    worker.states += (walk.place() + 1) * walk.lanes();
  }

  // Offers the states of a place by rank. They follow one another, as the lane variables are the
  // lowest.
  [[gnu::noinline]] void take_lanes(const GrayWalk<Lanes>& walk, const Segment& segment,
                                    Worker& worker) {
    if (!walk.energy().has_below(worker.kept.limit())) return;
    const uint64_t first = segment.number << segment.walked | walk.place() * walk.lanes();
    for (uint64_t rank = first; rank < first + walk.lanes(); ++rank) {
      const uint64_t walked_bits = state_of_rank(rank) ^ segment.turned_bits();
      const Number& energy = walk.energy().lane(static_cast<int>(walked_bits & (walk.lanes() - 1)));
      if (energy >= worker.kept.limit()) continue;
      const double tts = elapsed_seconds();
      const bool is_new_best = worker.kept.take(energy, rank, tts);
      if (is_new_best && is_best_shared_) share({energy, rank, tts});
    }
  }

  bool is_over() {
    if (params_.time_limit && elapsed_seconds() >= *params_.time_limit) is_stopped_ = true;
    return is_stopped_.load(std::memory_order_relaxed);
  }

  // Tells of a state that may be the best of all threads.
  void share(const State& state) {
    const MutexLock lock(best_mutex_);
    if (best_of_all_ && state.energy >= *best_of_all_) return;
    best_of_all_ = state.energy;
    const Solution solution = solution_of(state);
    if (params_.enable_default_callback) {
      print_progress(model_, solution.tts, solution.energy, solution.bits.data());
    }
    if (meets_target(solution)) is_stopped_ = true;
  }
  bool meets_target(const Solution& solution) const {
    return params_.target_energy && solution.energy <= *params_.target_energy &&
           tally_constraints(model_, solution.bits.data()).violated == 0;
  }

  Solution solution_of(const State& state) const {
    std::vector<uint64_t> bits(words_for(model_.nvars));
    if (!bits.empty()) bits[0] = state_of_rank(state.rank);
    return {Coeff(state.energy) + *model_.constant, std::move(bits), state.tts};
  }

  // Flips single variables as long as that lowers the energy, but not from a state that meets the
  // target to one that does not.
  State descended(const State& from) const {
    uint64_t state = state_of_rank(from.rank);
    Number energy = from.energy;
    for (bool has_moved = true; has_moved;) {
      has_moved = false;
      for (uint32_t i = 0; i < masks_.variables; ++i) {
        const uint64_t neighbour = state ^ uint64_t { 1 } << i;
        Number lower = energy_of(masks_, neighbour);
        if (!(lower < energy)) continue;
        state = neighbour;
        energy = std::move(lower);
        has_moved = true;
      }
    }
    State to = {std::move(energy), rank_of_state(state), elapsed_seconds()};
    if (meets_target(solution_of(from)) && !meets_target(solution_of(to))) return from;
    return to;
  }

  ExhaustiveResult put_together(uint32_t threads) const {
    ExhaustiveResult result;
    std::optional<State> best;
    std::vector<State> listed;
    for (const Worker& worker : workers_) {
      const BestStates<Number>& kept = worker.kept;
      if (kept.best() && (!best || *kept.best() < *best)) best = kept.best();
      listed.insert(listed.end(), kept.listed().begin(), kept.listed().end());
      result.states += worker.states;
    }
    result.is_complete = result.states == uint64_t{1} << masks_.variables;
    if (!result.is_complete) {
      State lower = descended(*best);
      if (lower.energy < best->energy) {
        listed.push_back(lower);
        best = std::move(lower);
      }
    }
    result.best = solution_of(*best);
    result.listed = list_of(std::move(listed), best->energy);
    result.is_list_wanted = params_.has_best_energy_sols || params_.topk_sols != 0;
    result.threads = threads;
    return result;
  }

  SolutionList list_of(std::vector<State> states, const Number& best) const {
    std::sort(states.begin(), states.end());
    size_t count = params_.topk_sols;
    if (params_.has_best_energy_sols) {
      const auto is_best = [&](const State& state) { return state.energy == best; };
      states.erase(std::partition_point(states.begin(), states.end(), is_best), states.end());
      count = params_.best_energy_cap != 0 ? params_.best_energy_cap : states.size();
    }
    SolutionList list;
    for (size_t i = 0; i < std::min(count, states.size()); ++i) {
      list.push_back(solution_of(states[i]));
    }
    return list;
  }

  const Clock::time_point start_ = Clock::now();
  const BinaryModel& model_;
  const SearchParams& params_;
  const MaskModel<Number> masks_;
  const bool is_best_shared_;
  uint32_t fixed_ = 0;  // leading variables, which tell the segments apart
  std::vector<Worker> workers_;

  std::atomic<uint64_t> next_segment_ = 0;
  std::atomic<bool> is_stopped_ = false;
  Mutex best_mutex_;
  std::optional<Number> best_of_all_ ZORV_GUARDED_BY(best_mutex_);
};

template <typename Lanes>
ExhaustiveResult search_with(const BinaryModel& model, const SearchParams& params,
                             const Coeff& reach, const char* numbers) {
  ExhaustiveResult result = ExhaustiveSearch<Lanes>(model, params, reach).run();
  result.numbers = numbers;
  return result;
}

template <typename Number>
auto machine_search() {
  return have_avx2() ? search_with<MachineLanes<Number, 32>>
                     : search_with<MachineLanes<Number, 16>>;
}

}  // namespace

ExhaustiveResult search_all(const BinaryModel& model, const SearchParams& params) {
  const SearchBound<Coeff> bound = search_bound(model);
  const Coeff& reach = bound.energy();
  if (bound.fits(kShortBits)) return machine_search<int32_t>()(model, params, reach, "int32");
  if (bound.fits(kMachineBits)) return machine_search<int64_t>()(model, params, reach, "int64");
  return search_with<WideLanes>(model, params, reach, "unbounded");
}

}  // namespace zorv::plugin
