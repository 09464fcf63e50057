// SearchState: one worker's assignment with all that makes the next move cheap: the body and the
// penalty of every constraint, and the energy.
//
// A move of one variable costs the terms and constraints that hold it and nothing else. What it
// would do is computed by move_delta, which leaves the new bodies and penalties in scratch rows
// next to the variable's entries; apply_move then only copies them.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <vector>

#include "solvers/change_log.h"
#include "solvers/search_tables.h"
#include "zorv/exact_range.h"

namespace zorv {

// Violations without a branch for machine integers: on which side of an end a body lies is as good
// as random.
inline int64_t band_violation(const ConsRule<int64_t>& c, int64_t body) {
  return std::max(std::max(c.lo - body, body - c.hi), int64_t{0});
}
inline int64_t gap_violation(const ConsRule<int64_t>& c, int64_t body) {
  return std::max(std::min(body - c.lo, c.hi - body), int64_t{0});
}

// Of a band where `side` is 1, of a gap where it is -1.
inline int64_t pair_violation(const PairRule<int64_t>& pair, int64_t body) {
  return std::max(pair.side * std::max(pair.rule.lo - body, body - pair.rule.hi), int64_t{0});
}

inline coeff_t band_violation(const ConsRule<coeff_t>& c, const coeff_t& body) {
  return distance(body, c.lo, c.hi);
}
inline coeff_t gap_violation(const ConsRule<coeff_t>& c, const coeff_t& body) {
  if (body <= c.lo || c.hi <= body) return 0;
  return std::min(coeff_t(body - c.lo), coeff_t(c.hi - body));
}

inline coeff_t pair_violation(const PairRule<coeff_t>& pair, const coeff_t& body) {
  return pair.side > 0 ? band_violation(pair.rule, body) : gap_violation(pair.rule, body);
}

inline int64_t penalty_for(const ConsRule<int64_t>& c, int64_t violation) {
  return violation * (c.once + c.squared * violation);
}
inline coeff_t penalty_for(const ConsRule<coeff_t>& c, coeff_t violation) {
  if (!is_zero(violation)) violation *= c.once + c.squared * violation;
  return violation;
}

// Of constraint `c`, not one of the pairs, where its body is `body`.
template <typename Number>
Number violation(const SearchTables<Number>& tables, size_t c, const Number& body) {
  const ConsKind& kind = tables.constraints[c];
  switch (kind.shape) {
    case ConsShape::kBand:
      return band_violation(tables.rules[kind.rule], body);
    case ConsShape::kGap:
      return gap_violation(tables.rules[kind.rule], body);
    case ConsShape::kSet:
      break;
  }
  return distance_to_set(body, tables.sets[kind.set]);
}

template <typename Number>
Number penalty_at(const SearchTables<Number>& tables, size_t c, const Number& body) {
  return penalty_for(tables.rules[tables.constraints[c].rule], violation(tables, c, body));
}

// Takes bodies and penalties from an assignment, from the definition; pairs have none.
template <typename Number>
void evaluate_constraints(const ModelImpl& model, const SearchTables<Number>& tables,
                          const uint64_t* words, const coeff_t* ints,
                          std::vector<ConsState<Number>>& states) {
  for (size_t c = 0; c < states.size(); ++c) {
    if (tables.constraints[c].is_pair) continue;
    states[c].body = number_from<Number>(body_value(model.native_cons[c], words, ints));
    states[c].penalty = penalty_at(tables, c, states[c].body);
  }
}

// The coefficient of `entry` times its factors, with `x` as the values of all variables.
template <typename Number>
inline Number cofactor(const SearchTables<Number>& tables, const ProductEntry<Number>& entry,
                       const std::vector<Number>& x) {
  Number product = entry.coeff;
  for (uint64_t f = entry.factors_begin; f < entry.factors_end && product != 0; ++f) {
    const uint32_t factor = tables.factors[f];
    const Number& value = x[identity_of(factor)];
    product *= is_negated(factor) ? Number(1 - value) : value;
  }
  return product;
}

// to^power - from^power
template <typename Number>
inline Number power_change(const Number& from, const Number& to, uint32_t power) {
  Number was = from, is = to;
  for (uint32_t p = 1; p < power; ++p) {
    was *= from;
    is *= to;
  }
  return is - was;
}

template <typename Number>
class SearchState {
 public:
  SearchState(const ModelImpl& model, const SearchTables<Number>& tables);

  // Values of all variables, binary ones first. Whoever changes them calls evaluate() before the
  // next move.
  std::vector<Number> x;
  // The variables that moves changed, for the history of the walk.
  ChangeLog changes;

  const Number& energy() const { return energy_; }

  // The penalties of all constraints, and how many of the required ones are violated. From the
  // first call on every move made keeps it up to date, at a price.
  struct Tally {
    Number penalties{0};
    uint64_t violated = 0;
  };
  const Tally& tally() {
    if (!keeps_tally_) take_tally();
    keeps_tally_ = true;
    return tally_;
  }

  // Takes bodies, penalties, the tally and the energy from x, from the definition.
  void evaluate();
  // The change of the energy if variable i took `value`; changes nothing but the scratch rows.
  Number move_delta(uint32_t i, const Number& value);
  // Makes the move that the last call of move_delta looked at, with its result.
  void apply_move(uint32_t i, const Number& value, const Number& delta);

 private:
  Number change(const PartRow<Number>& part, const Number& from, const Number& to) const;
  Number product_change(const PartRow<Number>& part, const Number& from, const Number& to) const;
  void take_tally();
  void update_tally(uint32_t i, const Number& value);

  const ModelImpl& model_;
  const SearchTables<Number>& tables_;
  std::vector<ConsState<Number>> constraints_;
  // For each constraint of the variable, simple ones first. Two arrays, so that what is stored as
  // one word is loaded as one word.
  std::vector<Number> pending_bodies_, pending_penalties_;
  Number energy_{0};
  Tally tally_;
  bool keeps_tally_ = false;
};

template <typename Number>
SearchState<Number>::SearchState(const ModelImpl& model, const SearchTables<Number>& tables)
    : x(tables.variable_count, Number(0)),
      changes(tables.variable_count),
      model_(model),
      tables_(tables),
      constraints_(tables.constraints.size()) {
  uint64_t longest = 0;
  for (uint32_t i = 0; i < tables.variable_count; ++i) {
    const VariableRow<Number>& row = tables.variables[i];
    const OtherRow& other = tables.others[i];
    longest = std::max(longest, row.gaps_end() - row.bands_begin + other.end - other.begin);
  }
  pending_bodies_.resize(longest);
  pending_penalties_.resize(longest);
}

template <typename Number>
void SearchState<Number>::evaluate() {
  const std::vector<coeff_t> state(x.begin(), x.end());
  const std::vector<uint64_t> words = words_of(model_, state);
  const std::vector<coeff_t> ints = ints_of(model_, state);
  evaluate_constraints(model_, tables_, words.data(), ints.data(), constraints_);
  energy_ = number_from<Number>(full_energy(model_, words.data(), ints.data()));
  if (keeps_tally_) take_tally();
  changes.note_all();
}

template <typename Number>
void SearchState<Number>::take_tally() {
  tally_ = {};
  for (size_t c = 0; c < constraints_.size(); ++c) {
    const ConsKind& kind = tables_.constraints[c];
    if (kind.is_pair) {
      const PairRule<Number>& pair = tables_.pair_rules[kind.rule];
      const auto& [one, two] = tables_.pair_ends[kind.set];
      const Number body = pair.coeff * x[one] + pair.other_coeff * x[two];
      const Number missing = pair_violation(pair, body);
      tally_.penalties += penalty_for(pair.rule, missing);
      tally_.violated += pair.rule.is_required && missing != 0;
    } else {
      const ConsState<Number>& state = constraints_[c];
      tally_.penalties += state.penalty;
      tally_.violated +=
          tables_.rules[kind.rule].is_required && violation(tables_, c, state.body) != 0;
    }
  }
}

// Before the move that the last call of move_delta looked at: what of it has just been read.
template <typename Number>
[[gnu::noinline]] void SearchState<Number>::update_tally(uint32_t i, const Number& value) {
  const VariableRow<Number>& row = tables_.variables[i];
  const Number from = x[i];
  Number rise(0);
  uint64_t more = 0;  // violated ones, as a difference
  const auto count = [&](const ConsRule<Number>& rule, bool was, bool is) {
    more += static_cast<uint64_t>(rule.is_required & is);
    more -= static_cast<uint64_t>(rule.is_required & was);
  };
  for (uint64_t k = row.pairs_begin, end = row.pairs_end(); k < end; ++k) {
    const PairRule<Number>& pair = tables_.pair_rules[tables_.pairs[k].rule];
    const Number rest = pair.other_coeff * x[tables_.pairs[k].other];
    const Number was = pair_violation(pair, Number(rest + pair.coeff * from));
    const Number is = pair_violation(pair, Number(rest + pair.coeff * value));
    rise += penalty_for(pair.rule, is);
    rise -= penalty_for(pair.rule, was);
    count(pair.rule, was != 0, is != 0);
  }
  uint64_t p = 0;
  const auto count_body = [&](uint32_t c) {
    const ConsState<Number>& state = constraints_[c];
    rise += pending_penalties_[p] - state.penalty;
    count(tables_.rules[tables_.constraints[c].rule], violation(tables_, c, state.body) != 0,
          violation(tables_, c, pending_bodies_[p]) != 0);
    ++p;
  };
  for (uint64_t k = row.bands_begin, end = row.gaps_end(); k < end; ++k) {
    count_body(tables_.simple_bodies[k].cons);
  }
  const OtherRow& others = tables_.others[i];
  for (uint64_t k = others.begin; k < others.end; ++k) count_body(tables_.other_bodies[k].cons);
  tally_.penalties += rise;
  tally_.violated += more;
}

template <typename Number>
inline Number SearchState<Number>::change(const PartRow<Number>& part, const Number& from,
                                          const Number& to) const {
  Number slope = part.linear;
  for (uint64_t k = part.quadratic_begin; k < part.quadratic_end; ++k) {
    const QuadraticEntry<Number>& entry = tables_.quadratics[k];
    slope += entry.coeff * x[entry.other];
  }
  slope *= to - from;
  if (part.product_begin != part.product_end) slope += product_change(part, from, to);
  return slope;
}

template <typename Number>
Number SearchState<Number>::product_change(const PartRow<Number>& part, const Number& from,
                                           const Number& to) const {
  Number sum(0);
  for (uint64_t k = part.product_begin; k < part.product_end; ++k) {
    const ProductEntry<Number>& entry = tables_.products[k];
    const Number product = cofactor(tables_, entry, x);
    if (product != 0) sum += product * power_change(from, to, entry.power);
  }
  return sum;
}

template <typename Number>
inline Number SearchState<Number>::move_delta(uint32_t i, const Number& value) {
  const VariableRow<Number>& row = tables_.variables[i];
  const Number from = x[i];
  const Number step = value - from;
  Number delta(0);
  if (row.is_in_objective) delta = change(tables_.objective[i], from, value);
  const PairEntry* const pairs = tables_.pairs.data();
  for (uint64_t k = row.pairs_begin, end = row.pairs_end(); k < end; ++k) {
    const PairRule<Number>& pair = tables_.pair_rules[pairs[k].rule];
    const Number rest = pair.other_coeff * x[pairs[k].other];
    const Number was = rest + pair.coeff * from, is = rest + pair.coeff * value;
    delta += penalty_for(pair.rule, pair_violation(pair, is));
    delta -= penalty_for(pair.rule, pair_violation(pair, was));
  }
  uint64_t p = 0;
  const auto enter = [&](const ConsState<Number>& state, Number body, Number penalty) {
    delta += penalty - state.penalty;
    pending_bodies_[p] = std::move(body);
    pending_penalties_[p] = std::move(penalty);
    ++p;
  };
  const SimpleBodyEntry<Number>* const simple = tables_.simple_bodies.data();
  const ConsRule<Number>* const rules = tables_.rules.data();
  const uint64_t gaps_begin = row.gaps_begin(), gaps_end = row.gaps_end();
  for (uint64_t k = row.bands_begin; k < gaps_begin; ++k) {
    const ConsState<Number>& state = constraints_[simple[k].cons];
    const ConsRule<Number>& rule = rules[simple[k].rule];
    Number body = state.body + simple[k].coeff * step;
    Number penalty = penalty_for(rule, band_violation(rule, body));
    enter(state, std::move(body), std::move(penalty));
  }
  for (uint64_t k = gaps_begin; k < gaps_end; ++k) {
    const ConsState<Number>& state = constraints_[simple[k].cons];
    const ConsRule<Number>& rule = rules[simple[k].rule];
    Number body = state.body + simple[k].coeff * step;
    Number penalty = penalty_for(rule, gap_violation(rule, body));
    enter(state, std::move(body), std::move(penalty));
  }
  if (!row.has_others) return delta;
  for (uint64_t k = tables_.others[i].begin, end = tables_.others[i].end; k < end; ++k) {
    const OtherBodyEntry<Number>& entry = tables_.other_bodies[k];
    const ConsState<Number>& state = constraints_[entry.cons];
    Number body = state.body + change(entry.part, from, value);
    Number penalty = penalty_at(tables_, entry.cons, body);
    enter(state, std::move(body), std::move(penalty));
  }
  return delta;
}

template <typename Number>
inline void SearchState<Number>::apply_move(uint32_t i, const Number& value, const Number& delta) {
  const VariableRow<Number>& row = tables_.variables[i];
  if (keeps_tally_) update_tally(i, value);
  uint64_t p = 0;
  const auto settle = [&](ConsState<Number>& state) {
    state.body = pending_bodies_[p];
    state.penalty = pending_penalties_[p];
    ++p;
  };
  for (uint64_t k = row.bands_begin, end = row.gaps_end(); k < end; ++k) {
    settle(constraints_[tables_.simple_bodies[k].cons]);
  }
  if (row.has_others) {
    for (uint64_t k = tables_.others[i].begin, end = tables_.others[i].end; k < end; ++k) {
      settle(constraints_[tables_.other_bodies[k].cons]);
    }
  }
  x[i] = value;
  energy_ += delta;
  changes.note(i);
}

}  // namespace zorv
