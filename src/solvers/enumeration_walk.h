// EnumerationWalk: goes through all assignments of a model, each once, and knows the energy of
// each.
//
// Order. Variables are the digits of a number, the first one lowest, each with a direction that
// points up at the start. A step moves the lowest digit that can still go its way by 1, and turns
// round all those below it, which cannot: a reflected Gray code of mixed radix. No step searches
// for its digit. As soon as a digit reaches an end it hands the place after it on to where the
// next search would begin, so that the answer always stands ready in focus_[0] (Knuth, The Art of
// Computer Programming, 7.2.1.1, algorithm H).
//
// Energy. The lower a digit, the more often it moves: with bits alone, every second step moves the
// first, every fourth the second. So the work of a product is put on its higher variables. Every
// polynomial that holds variable v keeps a slope for v, the sum of the products in which v is the
// lowest variable, without v. A move of v has its change at hand for all those products; only the
// products with a lower variable are left to look at, and what they add to the slope of the latter
// is brought up to date on this occasion. The first variable has none, however many products it is
// in. For bits and pairs with density d, a step looks at d pairs on average.
//
// Tests hold the order, the energies and both number types against a plain nested loop.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "model/bit_words.h"
#include "solvers/search_moves.h"

namespace zorv {

template <typename Number>
class EnumerationWalk {
 public:
  // Stands at the first assignment: all bits 0, all integers at their lower bounds. The tables have
  // no pairs apart: each step moves one variable by 1, and a stored body saves half of the work.
  EnumerationWalk(const ModelImpl& model, const SearchTables<Number>& tables);

  const Number& energy() const { return energy_; }
  // Values of all variables, binary ones first.
  std::vector<coeff_t> state() const { return {x_.begin(), x_.end()}; }

  // Goes to the next assignment; false, and nothing changes any more, if there is none.
  bool advance();

 private:
  // A variable with more than one value, in the order of the variables.
  struct Digit {
    uint32_t variable;
    int direction = 1;
    uint64_t steps;  // from end to end
    uint64_t steps_left;
  };
  // What changes with one variable of one polynomial.
  struct Row {
    Number slope;
    // The products that have a lower variable, or a power of this one. Pairs are apart for speed.
    uint64_t pairs_begin, pairs_end;
    uint64_t products_begin, products_end;
  };
  struct Pair {
    Number coeff;
    uint32_t lower;  // the other variable
    uint32_t row;    // of `lower` in the same polynomial
  };
  struct Product {
    ProductEntry<Number> upper;  // without `lowest`
    uint32_t lowest;             // a factor, kNoLiteral if the moved variable is the lowest
    uint32_t row;                // of `lowest` in the same polynomial
  };

  void add_digits();
  void add_rows();
  // `row_of` gives the row of another variable in the same polynomial.
  template <typename RowOf>
  void add_row(uint32_t variable, const PartRow<Number>& part, const RowOf& row_of);
  template <typename RowOf>
  void add_product(uint32_t variable, const ProductEntry<Number>& entry, const RowOf& row_of,
                   Row& row);
  uint32_t body_row(uint32_t variable, uint32_t cons) const;

  void move(uint32_t variable, int direction);
  // The change of the row's polynomial as its variable moves on from `from`; lower slopes follow.
  Number change(Row& row, const Number& from, int direction);
  Number product_change(const Row& row, const Number& from, int direction);

  const SearchTables<Number>& tables_;
  std::vector<Number> x_;
  Number energy_{0};
  std::vector<ConsState<Number>> constraints_;

  std::vector<Digit> digits_;
  std::vector<uint32_t> focus_;  // one more than digits; [0] is the digit of the next step

  // Of the objective, one for each variable; then of bodies, one for each of tables_.other_bodies.
  std::vector<Row> rows_;
  std::vector<Pair> pairs_;
  std::vector<Product> products_;
};

// sum += coeff * direction
inline void add_directed(int64_t& sum, int64_t coeff, int direction) { sum += coeff * direction; }
inline void add_directed(coeff_t& sum, const coeff_t& coeff, int direction) {
  direction > 0 ? sum += coeff : sum -= coeff;
}

template <typename Number>
EnumerationWalk<Number>::EnumerationWalk(const ModelImpl& model, const SearchTables<Number>& tables)
    : tables_(tables), constraints_(tables.constraints.size()) {
  for (const VariableRow<Number>& row : tables.variables) x_.push_back(row.lo);
  const std::vector<uint64_t> words(words_for(tables.bit_count));
  energy_ = number_from<Number>(full_energy(model, words.data(), model.int_lo.data()));
  evaluate_constraints(model, tables, words.data(), model.int_lo.data(), constraints_);
  add_digits();
  add_rows();
}

template <typename Number>
void EnumerationWalk<Number>::add_digits() {
  for (uint32_t i = 0; i < tables_.variable_count; ++i) {
    // A range too wide to be counted has a count of 0, hence a last step that no walk lives to see.
    const uint64_t steps = tables_.samples[i].value_count - 1;
    if (steps != 0) digits_.push_back({i, 1, steps, steps});
  }
  for (uint32_t p = 0; p <= digits_.size(); ++p) focus_.push_back(p);
}

template <typename Number>
void EnumerationWalk<Number>::add_rows() {
  for (uint32_t i = 0; i < tables_.variable_count; ++i) {
    add_row(i, tables_.objective[i], [](uint32_t other) { return other; });
  }
  for (uint32_t i = 0; i < tables_.variable_count; ++i) {
    for (uint64_t k = tables_.others[i].begin; k < tables_.others[i].end; ++k) {
      const OtherBodyEntry<Number>& body = tables_.other_bodies[k];
      add_row(i, body.part, [&](uint32_t other) { return body_row(other, body.cons); });
    }
  }
}

template <typename Number>
uint32_t EnumerationWalk<Number>::body_row(uint32_t variable, uint32_t cons) const {
  const auto bodies = tables_.other_bodies.begin();
  const OtherRow& row = tables_.others[variable];
  const auto entry = std::lower_bound(
      bodies + static_cast<std::ptrdiff_t>(row.begin),
      bodies + static_cast<std::ptrdiff_t>(row.end), cons,
      [](const OtherBodyEntry<Number>& body, uint32_t c) { return body.cons < c; });
  return tables_.variable_count + static_cast<uint32_t>(entry - bodies);
}

template <typename Number>
template <typename RowOf>
void EnumerationWalk<Number>::add_row(uint32_t variable, const PartRow<Number>& part,
                                      const RowOf& row_of) {
  Row row{part.linear, pairs_.size(), 0, products_.size(), 0};
  for (uint64_t k = part.quadratic_begin; k < part.quadratic_end; ++k) {
    const QuadraticEntry<Number>& entry = tables_.quadratics[k];
    if (entry.other < variable) {
      pairs_.push_back({entry.coeff, entry.other, row_of(entry.other)});
    } else {
      row.slope += entry.coeff * x_[entry.other];
    }
  }
  for (uint64_t k = part.product_begin; k < part.product_end; ++k) {
    add_product(variable, tables_.products[k], row_of, row);
  }
  row.pairs_end = pairs_.size();
  row.products_end = products_.size();
  rows_.push_back(row);
}

template <typename Number>
template <typename RowOf>
void EnumerationWalk<Number>::add_product(uint32_t variable, const ProductEntry<Number>& entry,
                                          const RowOf& row_of, Row& row) {
  // Literals of a term ascend, so the first factor is the lowest.
  const uint32_t* const factors = tables_.factors.data() + entry.factors_begin;
  const uint64_t count = entry.factors_end - entry.factors_begin;
  const bool is_lowest = count == 0 || variable < identity_of(factors[0]);
  if (is_lowest && entry.power == 1) {
    row.slope += cofactor(tables_, entry, x_);
    return;
  }
  Product product{entry, kNoLiteral, 0};
  const bool is_power = count > 1 && identity_of(factors[1]) == identity_of(factors[0]);
  if (!is_lowest && !is_power) {
    product.lowest = factors[0];
    product.row = row_of(identity_of(factors[0]));
    ++product.upper.factors_begin;
  }
  products_.push_back(product);
}

template <typename Number>
inline bool EnumerationWalk<Number>::advance() {
  const uint32_t p = focus_[0];
  if (p == digits_.size()) return false;
  focus_[0] = 0;
  Digit& digit = digits_[p];
  move(digit.variable, digit.direction);
  if (--digit.steps_left == 0) {
    digit.steps_left = digit.steps;
    digit.direction = -digit.direction;
    focus_[p] = focus_[p + 1];
    focus_[p + 1] = p + 1;
  }
  return true;
}

template <typename Number>
inline void EnumerationWalk<Number>::move(uint32_t variable, int direction) {
  Number& x = x_[variable];
  const VariableRow<Number>& row = tables_.variables[variable];
  Number delta = change(rows_[variable], x, direction);
  const auto settle = [&](ConsState<Number>& state, Number penalty) {
    delta += penalty;
    delta -= state.penalty;
    state.penalty = std::move(penalty);
  };
  const SimpleBodyEntry<Number>* const simple = tables_.simple_bodies.data();
  for (uint64_t k = row.bands_begin; k < row.gaps_begin(); ++k) {
    ConsState<Number>& state = constraints_[simple[k].cons];
    const ConsRule<Number>& rule = tables_.rules[simple[k].rule];
    add_directed(state.body, simple[k].coeff, direction);
    settle(state, penalty_for(rule, band_violation(rule, state.body)));
  }
  for (uint64_t k = row.gaps_begin(); k < row.gaps_end(); ++k) {
    ConsState<Number>& state = constraints_[simple[k].cons];
    const ConsRule<Number>& rule = tables_.rules[simple[k].rule];
    add_directed(state.body, simple[k].coeff, direction);
    settle(state, penalty_for(rule, gap_violation(rule, state.body)));
  }
  const OtherRow& others = tables_.others[variable];
  for (uint64_t k = others.begin; k < others.end; ++k) {
    const uint32_t cons = tables_.other_bodies[k].cons;
    ConsState<Number>& state = constraints_[cons];
    state.body += change(rows_[tables_.variable_count + k], x, direction);
    settle(state, penalty_at(tables_, cons, state.body));
  }
  add_directed(x, Number(1), direction);
  energy_ += delta;
}

template <typename Number>
inline Number EnumerationWalk<Number>::change(Row& row, const Number& from, int direction) {
  Number slope = row.slope;
  for (uint64_t k = row.pairs_begin; k < row.pairs_end; ++k) {
    const Pair& pair = pairs_[k];
    slope += pair.coeff * x_[pair.lower];
    add_directed(rows_[pair.row].slope, pair.coeff, direction);
  }
  slope *= direction;
  if (row.products_begin != row.products_end) slope += product_change(row, from, direction);
  return slope;
}

template <typename Number>
Number EnumerationWalk<Number>::product_change(const Row& row, const Number& from, int direction) {
  const Number to = from + direction;
  Number sum(0);
  for (uint64_t k = row.products_begin; k < row.products_end; ++k) {
    const Product& product = products_[k];
    Number upper_change = cofactor(tables_, product.upper, x_);
    if (upper_change == 0) continue;
    upper_change *= power_change(from, to, product.upper.power);
    if (product.lowest != kNoLiteral) {
      const Number& lowest = x_[identity_of(product.lowest)];
      const bool is_complement = is_negated(product.lowest);
      add_directed(rows_[product.row].slope, upper_change, is_complement ? -1 : 1);
      upper_change *= is_complement ? Number(1 - lowest) : lowest;
    }
    sum += upper_change;
  }
  return sum;
}

}  // namespace zorv
