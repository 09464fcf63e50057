// SlopeTree: what a walk in Gray order knows of the polynomials of a model, so that a step costs a
// few sums however many terms there are.
//
// A step of the counter from t - 1 to t flips the digit k1 at which t has its lowest 1. Let k2, k3,
// ... be the places of the further ones. When digit k1 flips, the digits below it always stand the
// same way: the one next to it at 1, the rest at 0. So what the flip changes, the slope of k1, is a
// polynomial in the higher digits alone, and between two flips of k1 exactly one of those flips:
// the one at k2. That step of the slope is in turn a polynomial in the digits above k2, and changes
// by the flip of k3 alone, and so on: a polynomial of degree d costs d sums a step (the idea of
// fast exhaustive search over GF(2), Bouillaguet and others, CHES 2010; over the integers the sums
// have signs). A flip goes down if its digit and the next place of t are both 1, that is, if k2 =
// k1 + 1; likewise for the others.
//
// The numbers stand in a tree: slopes of one digit below the root, of (k1, k2) below that of k1,
// and so on, present where terms need them. The node of (k1, .., kj) starts as the j-th difference
// at digits of which those above kj are 0, and those below are 1 only right below one of k1, ..,
// kj: the sum of the terms that consist of those digits and any of these.
//
// Terms of many digits would make the tree large, as every digit that has a neighbour in the term
// can double the nodes which the term takes part in. Those above kTreeDegree are products instead:
// each stands in a list of each of its digits and is looked at when one flips.
//
// The bodies of constraints are polynomials as well, each with a tree of its own.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

#include "exhaustive/mask_model.h"

namespace zorv::plugin {

inline constexpr uint32_t kTreeDegree = 6;
inline constexpr uint32_t kMostLevels = kTreeDegree + 1;

template <typename Lanes>
struct SlopeTree {
  using Number = typename Lanes::Number;

  // A term that is looked at when its digit flips.
  struct Product {
    uint64_t ones, zeros;  // the other digits
    bool is_complement;    // of the digit in the term
    uint32_t node;         // its coefficient, in the lanes that the term allows
  };
  // What one polynomial has of one digit.
  struct Part {
    uint32_t polynomial;
    uint32_t node;
    uint64_t products_begin, products_end;
  };
  // The constraint of the same number as its polynomial.
  struct Body {
    PenaltyRule<Number> rule;
    Lanes value, penalty;
  };

  uint32_t lane_bits;  // as many lowest variables are in the lanes, fewer only in small models
  uint32_t digits;     // the other variables
  uint32_t levels;     // 2, 3, 4 or kMostLevels: the length of the paths that a walk takes

  // What a walk changes; here as at the start, where all digits are 0.
  Lanes energy;

  // By node. Node 0 stands for none, has the value 0, and is its own child. At the last level,
  // where no term has variables to spare for the lanes, there are leaves instead, with one number
  // for all of them: in dense models most of the tree is leaves, and a walk is a fifth faster than
  // one that has nodes there.
  std::vector<Lanes> values;       // a walk changes them
  std::vector<uint32_t> rows;      // where in `children` those of the node begin
  std::vector<uint32_t> children;  // rows of columns(), by digit; the first row is all 0
  std::vector<Number> leaves;      // leaf 0 is 0
  std::vector<uint32_t> roots;     // of the objective, by digit

  // All other polynomials that hold a digit, and the objective where it has products.
  std::vector<Part> parts;
  std::vector<uint64_t> parts_head;  // by digit, and one more
  std::vector<Product> products;
  std::vector<Body> bodies;  // from polynomial 1 on; a walk changes them

  SlopeTree(const MaskModel<Number>& model, const Segment& segment);

  // The column that a path takes which has come to its end: not next to any digit.
  uint32_t end_column() const { return digits + 1; }
  uint32_t columns() const { return digits + 2; }

 private:
  // The bits of the number of a lane that a term is present in.
  struct LaneCondition {
    uint64_t ones, zeros;
  };
  // One polynomial while it is added.
  struct Open {
    std::vector<uint32_t> roots;                 // by digit
    std::vector<std::vector<Product>> products;  // by digit
    Lanes start;                                 // its value where all digits are 0
  };

  static uint32_t levels_for(const MaskModel<Number>& model);
  Open add_polynomial(const MaskTerms<Number>& terms, const Segment& segment);
  // A term of digits.
  void add_to_tree(Open& open, const MaskTerm<Number>& term, const LaneCondition& lanes);
  void add_products(Open& open, const MaskTerm<Number>& term, const LaneCondition& lanes);
  // The same without complements.
  void add_to_nodes(Open& open, uint64_t set, const Number& coeff, const LaneCondition& lanes);
  uint32_t make_node();
  void add_to_node(Open& open, uint64_t path, const Number& coeff, const LaneCondition& lanes);
  uint32_t make_leaf();
  uint32_t* child_place(uint32_t node, uint32_t digit);
  void add_parts(uint32_t polynomial, const Open& open);
  void close_parts();

  std::vector<std::vector<Part>> open_parts_;  // by digit
};

template <typename Lanes>
SlopeTree<Lanes>::SlopeTree(const MaskModel<Number>& model, const Segment& segment)
    : lane_bits(std::min<uint32_t>(Lanes::kLaneBits, segment.walked)),
      digits(segment.walked - lane_bits),
      levels(levels_for(model)),
      children(columns()),
      leaves(1),
      open_parts_(digits) {
  make_node();
  Open objective = add_polynomial(model.objective, segment);
  energy = std::move(objective.start);
  roots = std::move(objective.roots);
  objective.roots.assign(digits, 0);
  add_parts(0, objective);
  for (const MaskConstraint<Number>& constraint : model.constraints) {
    const Open open = add_polynomial(constraint.body, segment);
    bodies.push_back({constraint.rule, open.start, {}});
    bodies.back().penalty.take_penalty(constraint.rule, open.start, energy);
    add_parts(static_cast<uint32_t>(bodies.size()), open);
  }
  close_parts();
}

template <typename Lanes>
uint32_t SlopeTree<Lanes>::levels_for(const MaskModel<Number>& model) {
  uint32_t degree = 2;
  const auto count = [&](const MaskTerms<Number>& terms) {
    for (const MaskTerm<Number>& term : terms) degree = std::max(degree, term.degree());
  };
  count(model.objective);
  for (const MaskConstraint<Number>& constraint : model.constraints) count(constraint.body);
  return degree <= 4 ? degree : kMostLevels;
}

template <typename Lanes>
typename SlopeTree<Lanes>::Open SlopeTree<Lanes>::add_polynomial(const MaskTerms<Number>& terms,
                                                                 const Segment& segment) {
  Open open{std::vector<uint32_t>(digits), std::vector<std::vector<Product>>(digits), {}};
  const uint64_t lane_mask = (uint64_t{1} << lane_bits) - 1;
  for (MaskTerm<Number> term : terms) {
    if (!restrict_term(segment, term)) continue;
    const LaneCondition lanes{term.ones & lane_mask, term.zeros & lane_mask};
    term.ones >>= lane_bits;
    term.zeros >>= lane_bits;
    if (term.degree() <= kTreeDegree) {
      add_to_tree(open, term, lanes);
    } else {
      add_products(open, term, lanes);
    }
  }
  return open;
}

template <typename Lanes>
void SlopeTree<Lanes>::add_to_tree(Open& open, const MaskTerm<Number>& term,
                                   const LaneCondition& lanes) {
  // The product of all 1 - x is the sum over the sets of those x, with signs.
  for (uint64_t set = term.zeros;; set = (set - 1) & term.zeros) {
    const bool is_minus = std::popcount(set) % 2 != 0;
    add_to_nodes(open, term.ones | set, is_minus ? Number(-term.coeff) : term.coeff, lanes);
    if (set == 0) break;
  }
}

template <typename Lanes>
void SlopeTree<Lanes>::add_to_nodes(Open& open, uint64_t set, const Number& coeff,
                                    const LaneCondition& lanes) {
  if (set == 0) return open.start.add_where(lanes.ones, lanes.zeros, coeff);
  const uint64_t can_be_left_out = set & (set >> 1);
  for (uint64_t left_out = can_be_left_out;; left_out = (left_out - 1) & can_be_left_out) {
    // A digit below one that is left out is not right below one of the path.
    if ((left_out & (left_out >> 1)) == 0) {
      add_to_node(open, set & ~left_out, coeff, lanes);
    }
    if (left_out == 0) break;
  }
}

template <typename Lanes>
void SlopeTree<Lanes>::add_products(Open& open, const MaskTerm<Number>& term,
                                    const LaneCondition& lanes) {
  const uint32_t node = make_node();
  values[node].add_where(lanes.ones, lanes.zeros, term.coeff);
  if (term.ones == 0) open.start.add(values[node], false);
  for (uint32_t digit = 0; digit < digits; ++digit) {
    const uint64_t bit = uint64_t{1} << digit;
    if (((term.ones | term.zeros) & bit) == 0) continue;
    const bool is_complement = (term.zeros & bit) != 0;
    open.products[digit].push_back({term.ones & ~bit, term.zeros & ~bit, is_complement, node});
  }
}

template <typename Lanes>
uint32_t SlopeTree<Lanes>::make_node() {
  values.emplace_back();
  rows.push_back(0);
  return static_cast<uint32_t>(values.size() - 1);
}

template <typename Lanes>
void SlopeTree<Lanes>::add_to_node(Open& open, uint64_t path, const Number& coeff,
                                   const LaneCondition& lanes) {
  uint32_t* place = &open.roots[std::countr_zero(path)];
  for (uint32_t level = 1;; ++level) {
    if (level == levels) {
      if (*place == 0) *place = make_leaf();
      leaves[*place] += coeff;
      return;
    }
    if (*place == 0) *place = make_node();
    path &= path - 1;
    if (path == 0) return values[*place].add_where(lanes.ones, lanes.zeros, coeff);
    place = child_place(*place, static_cast<uint32_t>(std::countr_zero(path)));
  }
}

template <typename Lanes>
uint32_t SlopeTree<Lanes>::make_leaf() {
  leaves.emplace_back(0);
  return static_cast<uint32_t>(leaves.size() - 1);
}

// Good until the next row is made.
template <typename Lanes>
uint32_t* SlopeTree<Lanes>::child_place(uint32_t node, uint32_t digit) {
  if (rows[node] == 0) {
    rows[node] = static_cast<uint32_t>(children.size());
    children.resize(children.size() + columns());
  }
  return &children[rows[node] + digit];
}

template <typename Lanes>
void SlopeTree<Lanes>::add_parts(uint32_t polynomial, const Open& open) {
  for (uint32_t digit = 0; digit < digits; ++digit) {
    const std::vector<Product>& own = open.products[digit];
    if (open.roots[digit] == 0 && own.empty()) continue;
    const uint64_t begin = products.size();
    products.insert(products.end(), own.begin(), own.end());
    open_parts_[digit].push_back({polynomial, open.roots[digit], begin, products.size()});
  }
}

template <typename Lanes>
void SlopeTree<Lanes>::close_parts() {
  parts_head.push_back(0);
  for (const std::vector<Part>& of_digit : open_parts_) {
    parts.insert(parts.end(), of_digit.begin(), of_digit.end());
    parts_head.push_back(parts.size());
  }
  open_parts_.clear();
}

}  // namespace zorv::plugin
