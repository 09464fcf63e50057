#include "solvers/int_enumeration.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <cmath>
#include <cstring>
#include <string>

#include "core/fatal.h"
#include "model/bit_words.h"
#include "solvers/enumeration_walk.h"
#include "solvers/host_info.h"
#include "solvers/search_bounds.h"
#include "solvers/search_params.h"

namespace zorv {

namespace {

constexpr double kLargestSpace = 32.0;  // as a power of two

// Which of several best states to keep apart from the first.
struct TieOptions {
  bool are_wanted = false;
  uint64_t cap = 0;  // 0: no cap
};

TieOptions read_params(const ParamPair* params) {
  TieOptions ties;
  for (; params != nullptr && params->key != nullptr; ++params) {
    if (std::strcmp(params->key, kBestEnergySols) != 0) {
      fatal("ExhaustiveSolver: search parameter '", params->key,
            "' is not supported for native integer models yet.");
    }
    ties = {true, parse_solution_cap(params->value != nullptr ? params->value : "")};
  }
  return ties;
}

// A state by its place in the walk, from which state_at makes the whole state again.
struct Visit {
  uint64_t number;
  double tts;
};

// The best states of a walk. What does not lie below threshold() is of no interest, which leaves
// the walk one comparison for each state.
template <typename Number>
class BestStates {
 public:
  // Starts the clock.
  BestStates(const TieOptions& ties, const Number& first_energy)
      : ties_(ties), start_(std::chrono::steady_clock::now()) {
    keep_best(first_energy, {0, 0.0});
  }

  const Number& threshold() const { return threshold_; }
  const Number& energy() const { return energy_; }
  const Visit& first() const { return first_; }
  const std::vector<Visit>& all() const { return all_; }
  double elapsed_seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

  // Takes a state below the threshold.
  [[gnu::noinline]] void note(const Number& energy, uint64_t number) {
    const Visit visit{number, elapsed_seconds()};
    energy < energy_ ? keep_best(energy, visit) : keep_tie(visit);
  }

 private:
  void keep_best(const Number& energy, const Visit& visit) {
    threshold_ = energy_ = energy;
    first_ = visit;
    all_.clear();
    if (!ties_.are_wanted) return;
    threshold_ += 1;
    keep_tie(visit);
  }

  void keep_tie(const Visit& visit) {
    all_.push_back(visit);
    if (all_.size() == ties_.cap) threshold_ = energy_;
  }

  const TieOptions ties_;
  const std::chrono::steady_clock::time_point start_;
  Number energy_{0}, threshold_{0};
  Visit first_{0, 0.0};
  std::vector<Visit> all_;  // if ties are wanted
};

// The state that the walk visits as number `number`, the first being 0. A digit runs backwards
// whenever the digits above it have made an odd number of steps.
template <typename Number>
void state_at(uint64_t number, const ModelImpl& model, const SearchTables<Number>& tables,
              std::vector<uint64_t>& bits, std::vector<coeff_t>& ints) {
  bits.assign(words_for(tables.bit_count), 0);
  ints = model.int_lo;
  for (uint32_t i = 0; i < tables.variable_count; ++i) {
    const uint64_t values = tables.samples[i].value_count;
    assert(values != 0);  // 0 is more than can be counted, and no walk comes to the end of that
    const uint64_t passes = number / values;
    const uint64_t rest = number % values;
    const uint64_t digit = passes % 2 == 0 ? rest : values - 1 - rest;
    if (i >= tables.bit_count) {
      ints[i - tables.bit_count] += digit;
    } else if (digit != 0) {
      flip_bit(bits.data(), i);
    }
    number = passes;
  }
}

template <typename Number>
void refuse_drift(const ModelImpl& model, const EnumerationWalk<Number>& walk) {
  const std::vector<coeff_t> state = walk.state();
  const std::vector<uint64_t> words = words_of(model, state);
  if (full_energy(model, words.data(), ints_of(model, state).data()) != walk.energy()) {
    fatal("ExhaustiveSolver: internal error — incremental energy drift in integer enumeration.");
  }
}

template <typename Number>
SearchResult make_result(const ModelImpl& model, const SearchTables<Number>& tables,
                         const BestStates<Number>& best, uint64_t states) {
  SearchResult result;
  result.energy = best.energy();
  result.tts = best.first().tts;
  result.scale = model.scale;
  state_at(best.first().number, model, tables, result.bits, result.ints);
  for (const Visit& visit : best.all()) {
    TopKEntry& entry = result.topk.emplace_back();
    entry.energy = best.energy();
    entry.tts = visit.tts;
    state_at(visit.number, model, tables, entry.bits, entry.ints);
  }
  add_run_time(result, best.elapsed_seconds());
  add_info(result, "states", std::to_string(states));
  add_info(result, "engine", "integer-cpu");
  add_host_info(result);
  return result;
}

template <typename Number>
SearchResult enumerate_with(const ModelImpl& model, const TieOptions& ties) {
  const SearchTables<Number> tables(model, false);
  EnumerationWalk<Number> walk(model, tables);
  BestStates<Number> best(ties, walk.energy());
  uint64_t states = 1;
  while (walk.advance()) {
    if (walk.energy() < best.threshold()) best.note(walk.energy(), states);
    ++states;
  }
  refuse_drift(model, walk);
  return make_result(model, tables, best, states);
}

}  // namespace

void refuse_large_space(const ModelImpl& model) {
  double exponent = static_cast<double>(model.variables.size());
  for (size_t j = 0; j < model.int_lo.size(); ++j) {
    exponent += std::log2(to_double(model.int_hi[j]) - to_double(model.int_lo[j]) + 1.0);
  }
  if (exponent > kLargestSpace) {
    const auto whole = static_cast<int64_t>(std::min(exponent, 0x1p62));  // may be infinite
    fatal("ExhaustiveSolver: integer search space (~2^", whole,
          " states) exceeds the 2^32 enumeration limit.");
  }
}

SearchResult enumerate_states(const ModelImpl& model, const ParamPair* params,
                              bool force_wide_numbers) {
  const TieOptions ties = read_params(params);
  const bool is_wide = force_wide_numbers || !fits_machine_integers(model);
  return is_wide ? enumerate_with<coeff_t>(model, ties) : enumerate_with<int64_t>(model, ties);
}

}  // namespace zorv
