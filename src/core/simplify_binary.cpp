// The rules of 0/1 variables. Literals are handled as sort keys: x is even, ~x is the odd number
// behind it, and an atom, never negated, is even with the highest bit set.
#include "core/merge_terms.h"
#include "core/simplify.h"

namespace zorv {

namespace {

constexpr uint32_t kNegatedKey = 1;
constexpr uint32_t kNoKey = 0xFFFFFFFF;  // behind all others

bool is_negated_key(uint32_t key) { return (key & kNegatedKey) != 0; }
bool is_atom_key(uint32_t key) { return is_atom(literal_of_key(key)); }
bool same_variable(uint32_t a, uint32_t b) { return (a | kNegatedKey) == (b | kNegatedKey); }
uint32_t variable_of_key(uint32_t key) { return literal_of_key(key & ~kNegatedKey); }

class BinaryRule {
 public:
  static constexpr uint32_t kChanging = kNegationBit;

  bool operator()(const TermImpl& term, NormalTerm& normal, SideEffects* side) {
    normal.is_negated = false;
    switch (term.vars.degree()) {
      case 0:
        normal.set();
        return true;
      case 1:
        return linear(sort_key(term.vars[0]), term.coeff, normal, side);
      case 2: {
        const uint32_t a = sort_key(term.vars[0]);
        const uint32_t b = sort_key(term.vars[1]);
        return quadratic(std::min(a, b), std::max(a, b), term.coeff, normal, side);
      }
      case 3:
      case 4:
        return cubic_or_quartic(term, normal, side);
      default:
        return higher(term, normal, side);
    }
  }

 private:
  // c*~x = c - c*x
  bool linear(uint32_t key, const CompactCoeff& c, NormalTerm& normal, SideEffects* side) {
    normal.set(key & ~kNegatedKey);
    if (is_negated_key(key)) {
      normal.is_negated = true;
      if (side != nullptr) side->delta += c;
    }
    return true;
  }

  // `a` does not follow `b`.
  bool quadratic(uint32_t a, uint32_t b, const CompactCoeff& c, NormalTerm& normal,
                 SideEffects* side) {
    if (same_variable(a, b) && !is_atom_key(a)) {
      return a == b && linear(a, c, normal, side);  // x*x = x, x*~x = 0
    }
    normal.set(a & ~kNegatedKey, b & ~kNegatedKey);
    normal.is_negated = is_negated_key(a) != is_negated_key(b);
    if (side != nullptr && (is_negated_key(a) || is_negated_key(b))) expand(a, b, c, *side);
    return true;
  }

  // What c*a*b with a negation leaves besides its quadratic term.
  static void expand(uint32_t a, uint32_t b, const CompactCoeff& c, SideEffects& side) {
    if (!is_negated_key(a)) {
      side.extras.push_back({c, variable_of_key(a)});  // c*x*~y = c*x - c*x*y
    } else if (!is_negated_key(b)) {
      side.extras.push_back({c, variable_of_key(b)});
    } else {  // c*~x*~y = c - c*x - c*y + c*x*y
      side.delta += c;
      side.extras.push_back({-c, variable_of_key(a)});
      side.extras.push_back({-c, variable_of_key(b)});
    }
  }

  // Most terms of these degrees have different variables, and then only their order changes.
  bool cubic_or_quartic(const TermImpl& term, NormalTerm& normal, SideEffects* side) {
    const uint32_t n = term.vars.degree();
    uint32_t a = sort_key(term.vars[0]), b = sort_key(term.vars[1]), c = sort_key(term.vars[2]);
    uint32_t d = n == 3 ? kNoKey : sort_key(term.vars[3]);
    order_keys(a, b), order_keys(c, d), order_keys(a, c), order_keys(b, d), order_keys(b, c);
    if (!same_variable(a, b) && !same_variable(b, c) && (n == 3 || !same_variable(c, d))) {
      normal.set(n, a, b, c, d);
      return true;
    }
    uint32_t keys[] = {a, b, c, d};
    uint32_t kept = n;
    if (!collapse(keys, kept)) return false;
    if (kept < 3) return low(keys, kept, term.coeff, normal, side);
    normal.set(kept, keys[0], keys[1], keys[2], keys[3]);
    return true;
  }

  bool higher(const TermImpl& term, NormalTerm& normal, SideEffects* side) {
    load_sorted_keys(term.vars, keys_);
    auto kept = static_cast<uint32_t>(keys_.size());
    if (!collapse(keys_.data(), kept)) return false;
    if (kept < 3) return low(keys_.data(), kept, term.coeff, normal, side);
    keys_.resize(kept);
    normal.set(keys_);
    return true;
  }

  // Powers collapse and a variable beside its complement makes the term vanish. What is left of
  // degree 3 and more keeps its negated literals.
  static bool collapse(uint32_t* keys, uint32_t& n) {
    uint32_t kept = 0;
    for (uint32_t i = 0; i < n; ++i) {
      const uint32_t key = keys[i];
      if (kept > 0 && same_variable(keys[kept - 1], key) && !is_atom_key(key)) {
        if (keys[kept - 1] != key) return false;
        continue;
      }
      keys[kept++] = key;
    }
    n = kept;
    return true;
  }

  // What has collapsed to one or two literals.
  bool low(const uint32_t* keys, uint32_t n, const CompactCoeff& c, NormalTerm& normal,
           SideEffects* side) {
    return n == 1 ? linear(keys[0], c, normal, side) : quadratic(keys[0], keys[1], c, normal, side);
  }

  Keys keys_;
};

}  // namespace

ExprImpl expr_simplify_as_binary(const ExprImpl& e) {
  return merge_terms(e.list, e.constant, BinaryRule());
}

}  // namespace zorv
