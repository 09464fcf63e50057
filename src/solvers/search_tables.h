// SearchTables: a model as the search reads it, in flat arrays of one number type. Built once, then
// only read.
//
// What a move of variable i touches stands together under i. Of each polynomial that holds i it is
// the part that changes, split by what it costs to evaluate:
//
//   (linear + sum of coeff * x[other]) * (new - old)  +  sum of coeff * (new^p - old^p) * factors
//
// Arithmetic is exact, so this equals the difference of the whole polynomial.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "solvers/fast_modulo.h"
#include "solvers/search_bounds.h"
#include "solvers/search_core.h"
#include "solvers/search_numbers.h"

namespace zorv {

enum class VariableKind : uint8_t {
  kBinary,   // moves by flipping
  kSmall,    // integer, moves to any value of its range
  kStepped,  // integer, moves by a power of two
};

// Ranges below this are small.
inline constexpr uint32_t kSmallRange = 16;
// Ranges above this, as a double, have no geometric jumps and are not sampled by a remainder.
inline constexpr double kLargestSampledRange = 1.8e19;
// A geometric jump has a 32nd of the range as its mean.
inline constexpr double kJumpDivisor = 32.0;

// What proposing and evaluating a move needs to know of a variable, for machine integers in one
// cache line: with many variables, every line that a proposal touches is a miss.
template <typename Number>
struct alignas(kCacheLine) VariableRow {
  VariableKind kind;
  bool is_in_objective = false;
  bool has_others = false;  // see `others`
  // The constraints that hold it: into `pairs` and `simple_bodies`, bands before gaps.
  uint32_t pair_count = 0, band_count = 0, gap_count = 0;
  uint64_t pairs_begin = 0, bands_begin = 0;

  FastModulo choices;  // small: among its values; stepped: among its steps 1, 2, 4, ...
  Number lo, hi;

  uint64_t pairs_end() const { return pairs_begin + pair_count; }
  uint64_t gaps_begin() const { return bands_begin + band_count; }
  uint64_t gaps_end() const { return gaps_begin() + gap_count; }
};
static_assert(sizeof(VariableRow<int64_t>) == kCacheLine);

// Its constraints of all other forms: into `other_bodies`.
struct OtherRow {
  uint64_t begin = 0, end = 0;
};

// What only the start of a round needs.
struct SampleRow {
  uint64_t value_count = 0;  // range + 1, or 0 for ranges above kLargestSampledRange
  double log_q = 0.0;        // of the geometric jumps; meaningful if stepped and value_count != 0
};

template <typename Number>
struct QuadraticEntry {
  Number coeff;
  uint32_t other;  // flat index of another variable
};

template <typename Number>
struct ProductEntry {
  Number coeff;    // negated where the moved variable stands negated in the term
  uint32_t power;  // of the moved variable
  uint64_t factors_begin, factors_end;  // into `factors`
};

// What of one polynomial changes with one variable.
template <typename Number>
struct PartRow {
  Number linear{0};
  uint64_t quadratic_begin = 0, quadratic_end = 0;
  uint64_t product_begin = 0, product_end = 0;

  bool is_linear() const {
    return quadratic_begin == quadratic_end && product_begin == product_end;
  }
  bool is_zero() const { return linear == 0 && is_linear(); }
};

// A linear body and the coefficient that the variable has in it.
template <typename Number>
struct SimpleBodyEntry {
  Number coeff;
  uint32_t cons;
  uint32_t rule;  // of that constraint
};

template <typename Number>
struct OtherBodyEntry {
  PartRow<Number> part;
  uint32_t cons;
};

// Where a body is free of penalty. Nearly all constraints are bands and gaps, whose violation is
// two differences and two choices; anything else is a list of intervals.
enum class ConsShape : uint8_t {
  kBand,  // from lo to hi
  kGap,   // up to lo and from hi on
  kSet,   // in the intervals of `sets`
};

// What the penalty of a band or a gap depends on. Constraints that ask for the same share one rule:
// models have many constraints of few kinds, and the rules stay in the nearest cache.
template <typename Number>
struct ConsRule {
  Number lo, hi;
  // The weight stands in one of the two: penalty = violation * (once + squared * violation).
  Number once, squared;
  bool is_required;  // asks for something: no abs or relu term
};

// A band or a gap whose body is coeff * x + other_coeff * y, the constant being part of the rule.
template <typename Number>
struct PairRule {
  ConsRule<Number> rule;
  Number coeff, other_coeff;
  Number side;  // 1: a band, -1: a gap
};

// A constraint on two variables, in the row of one of them. Its body is not stored but worked out
// from both: one value is less to read than a body and a penalty, and nothing is left to write.
struct PairEntry {
  uint32_t other;  // flat index
  uint32_t rule;   // into `pair_rules`
};

struct ConsKind {
  ConsShape shape;
  bool is_pair = false;
  uint32_t rule;  // into `rules`, or into `pair_rules` as the first variable has it
  uint32_t set;   // of kSet; of a pair, into `pair_ends`
};

// What changes of a constraint. Every worker has its own, and nothing else of them is scattered.
template <typename Number>
struct ConsState {
  Number body{0}, penalty{0};
};

template <typename Number>
struct SearchTables {
  using NumberInterval = std::pair<Number, Number>;

  uint32_t bit_count;       // the first variables are binary
  uint32_t variable_count;  // all of them
  FastModulo any_variable;
  uint64_t sweep_moves = 0;  // how many different moves there are, about

  std::vector<VariableRow<Number>> variables;
  std::vector<SampleRow> samples;
  std::vector<Number> steps;  // 1, 2, 4, ...; a variable uses the first choices.divisor() of them

  std::vector<OtherRow> others;            // one for each variable
  std::vector<PartRow<Number>> objective;  // one for each variable
  std::vector<PairEntry> pairs;
  std::vector<SimpleBodyEntry<Number>> simple_bodies;  // linear bodies of bands and gaps
  std::vector<OtherBodyEntry<Number>> other_bodies;
  std::vector<QuadraticEntry<Number>> quadratics;
  std::vector<ProductEntry<Number>> products;
  std::vector<uint32_t> factors;  // flat index, bit 31 if negated

  std::vector<ConsKind> constraints;
  std::vector<ConsRule<Number>> rules;
  std::vector<PairRule<Number>> pair_rules;
  std::vector<std::pair<uint32_t, uint32_t>> pair_ends;  // the two variables
  std::vector<std::vector<NumberInterval>> sets;

  // With `pairs_apart` false constraints on two variables are simple bodies too.
  explicit SearchTables(const ModelImpl& model, bool pairs_apart = true);

 private:
  // The parts of one polynomial while it is taken apart, by variable.
  struct OpenPart {
    Number linear{0};
    std::vector<QuadraticEntry<Number>> quadratics;
    std::vector<ProductEntry<Number>> products;
    bool is_touched = false;
  };

  void add_bits();
  void add_integer(const coeff_t& lo, const coeff_t& hi);
  void add_objective(const ModelImpl& model);
  void add_constraints(const ModelImpl& model, bool pairs_apart);
  ConsKind make_kind(const NativeCons& cons, const Interval& range, ConsRule<Number>& rule);
  uint32_t rule_number(const ConsRule<Number>& rule);
  uint32_t rule_number(const PairRule<Number>& pair);

  void take_apart(const coeff_t& coeff, const uint32_t* literals, uint64_t degree);
  OpenPart& open_part(uint32_t variable);
  PartRow<Number> close_part(uint32_t variable);

  std::vector<OpenPart> open_;
  std::vector<uint32_t> touched_;
  std::map<std::array<Number, 5>, uint32_t> rule_numbers_;
  std::map<std::array<Number, 8>, uint32_t> pair_rule_numbers_;
};

template <typename Number>
SearchTables<Number>::SearchTables(const ModelImpl& model, bool pairs_apart)
    : bit_count(static_cast<uint32_t>(model.variables.size())),
      variable_count(static_cast<uint32_t>(model.variables.size() + model.int_lo.size())),
      any_variable(variable_count) {
  add_bits();
  for (size_t j = 0; j < model.int_lo.size(); ++j) add_integer(model.int_lo[j], model.int_hi[j]);
  open_.resize(variable_count);
  add_objective(model);
  add_constraints(model, pairs_apart);
  open_ = std::vector<OpenPart>();
  rule_numbers_.clear();
  pair_rule_numbers_.clear();
}

template <typename Number>
void SearchTables<Number>::add_bits() {
  VariableRow<Number> row{};
  row.kind = VariableKind::kBinary;
  row.hi = 1;
  variables.resize(bit_count, row);
  samples.resize(bit_count, {2, 0.0});
  sweep_moves += bit_count;
}

template <typename Number>
void SearchTables<Number>::add_integer(const coeff_t& lo, const coeff_t& hi) {
  const coeff_t range = hi - lo;
  const double width = to_double(range);
  SampleRow sample;
  if (width < kLargestSampledRange) {
    sample.value_count = static_cast<uint64_t>(range) + 1;
    const double mean = width / kJumpDivisor;
    sample.log_q = std::log(mean > 1.0 ? mean / (1.0 + mean) : 0.5);
  }
  samples.push_back(sample);

  VariableRow<Number> row{};
  row.kind = VariableKind::kSmall;
  row.lo = number_from<Number>(lo);
  row.hi = number_from<Number>(hi);
  if (range < kSmallRange) {
    row.choices = FastModulo(sample.value_count);
    sweep_moves += sample.value_count - 1;
  } else {
    // Up to and including the first power of two above half of the range.
    const uint64_t step_count = msb(coeff_t(range / 2)) + 2;
    while (steps.size() < step_count) {
      steps.push_back(number_from<Number>(coeff_t(1) << steps.size()));
    }
    row.kind = VariableKind::kStepped;
    row.choices = FastModulo(step_count);
    sweep_moves += 2 * step_count;
  }
  variables.push_back(row);
}

template <typename Number>
void SearchTables<Number>::add_objective(const ModelImpl& model) {
  for (uint32_t degree = 1; degree <= model.max_degree; ++degree) {
    const auto& coeffs = model.term_coeffs[degree - 1];
    const uint32_t* literals = model.term_vars[degree - 1].data();
    for (size_t t = 0; t < coeffs.size(); ++t) take_apart(coeffs[t], literals + t * degree, degree);
  }
  for (uint32_t i = 0; i < variable_count; ++i) {
    objective.push_back(close_part(i));
    variables[i].is_in_objective = !objective.back().is_zero();
  }
  touched_.clear();
}

template <typename Number>
void SearchTables<Number>::add_constraints(const ModelImpl& model, bool pairs_apart) {
  struct Lists {
    std::vector<PairEntry> pairs;
    std::vector<SimpleBodyEntry<Number>> bands, gaps;
    std::vector<OtherBodyEntry<Number>> others;
  };
  std::vector<Lists> lists(variable_count);
  constraints.reserve(model.native_cons.size());
  for (uint32_t c = 0; c < model.native_cons.size(); ++c) {
    const NativeCons& cons = model.native_cons[c];
    for (size_t k = 0; k < cons.vars.size(); ++k) take_apart(cons.coeffs[k], &cons.vars[k], 1);
    for (size_t t = 0; t < cons.nl_coeffs.size(); ++t) {
      take_apart(cons.nl_coeffs[t], cons.nl_vars.data() + cons.nl_head[t],
                 cons.nl_head[t + 1] - cons.nl_head[t]);
    }
    ConsRule<Number> rule{};
    ConsKind kind = make_kind(cons, body_range(model, cons), rule);
    kind.is_pair = pairs_apart && kind.shape != ConsShape::kSet && touched_.size() == 2 &&
                   cons.nl_coeffs.empty();
    if (kind.is_pair) {
      const uint32_t one = touched_[0], two = touched_[1];
      const Number constant = number_from<Number>(cons.body_constant);
      rule.lo -= constant;
      rule.hi -= constant;
      const Number coeff = close_part(one).linear, other_coeff = close_part(two).linear;
      const Number side(kind.shape == ConsShape::kBand ? 1 : -1);
      kind.rule = rule_number(PairRule<Number>{rule, coeff, other_coeff, side});
      kind.set = static_cast<uint32_t>(pair_ends.size());
      pair_ends.emplace_back(one, two);
      const uint32_t reverse = rule_number(PairRule<Number>{rule, other_coeff, coeff, side});
      lists[one].pairs.push_back({two, kind.rule});
      lists[two].pairs.push_back({one, reverse});
    } else {
      kind.rule = rule_number(rule);
      for (const uint32_t i : touched_) {
        const PartRow<Number> part = close_part(i);
        if (!part.is_linear() || kind.shape == ConsShape::kSet) {
          lists[i].others.push_back({part, c});
        } else {
          auto& simple = kind.shape == ConsShape::kBand ? lists[i].bands : lists[i].gaps;
          simple.push_back({part.linear, c, kind.rule});
        }
      }
    }
    constraints.push_back(kind);
    touched_.clear();
  }
  const auto move_behind = [](auto& entries, const auto& more) {
    entries.insert(entries.end(), more.begin(), more.end());
    return static_cast<uint32_t>(more.size());
  };
  for (uint32_t i = 0; i < variable_count; ++i) {
    VariableRow<Number>& row = variables[i];
    row.pairs_begin = pairs.size();
    row.pair_count = move_behind(pairs, lists[i].pairs);
    row.bands_begin = simple_bodies.size();
    row.band_count = move_behind(simple_bodies, lists[i].bands);
    row.gap_count = move_behind(simple_bodies, lists[i].gaps);
    OtherRow other{other_bodies.size(), 0};
    row.has_others = move_behind(other_bodies, lists[i].others) != 0;
    other.end = other_bodies.size();
    others.push_back(other);
  }
}

template <typename Number>
ConsKind SearchTables<Number>::make_kind(const NativeCons& cons, const Interval& range,
                                         ConsRule<Number>& rule) {
  ConsKind kind{};
  (cons.shape_k == 1 ? rule.once : rule.squared) = number_from<Number>(cons.weight);
  rule.is_required = cons.shape_kind == 0;
  const std::vector<Interval> intervals = penalty_intervals(cons, range);
  const Interval& first = intervals.front();
  const Interval& last = intervals.back();
  const bool is_crossed = has_crossed_ends(intervals);
  if (intervals.size() == 1 && !is_crossed) {
    kind.shape = ConsShape::kBand;
    rule.lo = number_from<Number>(first.first);
    rule.hi = number_from<Number>(first.second);
  } else if (intervals.size() == 2 && !is_crossed && first.first <= range.first &&
             last.second >= range.second) {
    kind.shape = ConsShape::kGap;
    rule.lo = number_from<Number>(first.second);
    rule.hi = number_from<Number>(last.first);
  } else {
    kind.shape = ConsShape::kSet;
    kind.set = static_cast<uint32_t>(sets.size());
    std::vector<NumberInterval>& set = sets.emplace_back();
    for (const auto& [low, high] : intervals) {
      set.emplace_back(number_from<Number>(low), number_from<Number>(high));
    }
  }
  return kind;
}

template <typename Number>
uint32_t SearchTables<Number>::rule_number(const ConsRule<Number>& rule) {
  const auto next = static_cast<uint32_t>(rules.size());
  const auto [known, is_new] = rule_numbers_.try_emplace(
      {rule.lo, rule.hi, rule.once, rule.squared, Number(rule.is_required)}, next);
  if (is_new) rules.push_back(rule);
  return known->second;
}

template <typename Number>
uint32_t SearchTables<Number>::rule_number(const PairRule<Number>& pair) {
  const auto next = static_cast<uint32_t>(pair_rules.size());
  const ConsRule<Number>& rule = pair.rule;
  const auto [known, is_new] = pair_rule_numbers_.try_emplace(
      {rule.lo, rule.hi, rule.once, rule.squared, Number(rule.is_required), pair.coeff,
       pair.other_coeff, pair.side},
      next);
  if (is_new) pair_rules.push_back(pair);
  return known->second;
}

// Enters the term with each of its variables as the one that moves.
template <typename Number>
void SearchTables<Number>::take_apart(const coeff_t& coeff, const uint32_t* literals,
                                      uint64_t degree) {
  if (is_zero(coeff)) return;
  const Number value = number_from<Number>(coeff);
  for (uint64_t k = 0; k < degree;) {
    uint64_t power = 1;
    while (k + power < degree && literals[k + power] == literals[k]) ++power;
    const uint32_t moved = flat_index(literals[k], bit_count);
    OpenPart& part = open_part(moved);
    if (degree == 1) {
      part.linear += value;
    } else if (degree == 2 && power == 1) {
      part.quadratics.push_back({value, flat_index(literals[1 - k], bit_count)});
    } else {
      ProductEntry<Number> product{value, static_cast<uint32_t>(power), factors.size(), 0};
      if (is_negated(literals[k])) product.coeff = -value;
      for (uint64_t other = 0; other < degree; ++other) {
        if (other >= k && other < k + power) continue;
        factors.push_back(flat_index(literals[other], bit_count) |
                          (literals[other] & kNegationBit));
      }
      product.factors_end = factors.size();
      part.products.push_back(std::move(product));
    }
    k += power;
  }
}

template <typename Number>
auto SearchTables<Number>::open_part(uint32_t variable) -> OpenPart& {
  OpenPart& part = open_[variable];
  if (!part.is_touched) touched_.push_back(variable);
  part.is_touched = true;
  return part;
}

template <typename Number>
PartRow<Number> SearchTables<Number>::close_part(uint32_t variable) {
  OpenPart& part = open_[variable];
  PartRow<Number> row;
  row.linear = part.linear;
  row.quadratic_begin = quadratics.size();
  quadratics.insert(quadratics.end(), part.quadratics.begin(), part.quadratics.end());
  row.quadratic_end = quadratics.size();
  row.product_begin = products.size();
  products.insert(products.end(), part.products.begin(), part.products.end());
  row.product_end = products.size();
  part.linear = 0;
  part.quadratics.clear();
  part.products.clear();
  part.is_touched = false;
  return row;
}

}  // namespace zorv
