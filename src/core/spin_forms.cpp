// A product of factors a + b*l, one for each literal l, is a sum over the subsets of the literals.
// Those sums are made directly, with no product of expressions in between; constants and terms of
// degree 1, which nearly every term contributes to, are added up as they arise.
#include "core/spin_forms.h"

#include <bit>
#include <new>

#include "core/attr_rules.h"
#include "core/coeff_sum.h"
#include "core/fatal.h"
#include "core/normal_term.h"
#include "core/simplify.h"

namespace zorv {

namespace {

// A term of more different variables than this would fill any memory with its 2^d terms.
constexpr uint32_t kMaxExpandedDegree = 40;

// Sums of terms c*l, one for each literal l.
class LinearSums {
 public:
  // A table by literal, unless the variables of `e` lie too scattered for it.
  explicit LinearSums(const ExprImpl& e) {
    uint64_t literals = 0;
    uint32_t highest = 0;
    e.list.for_each([&](const TermImpl& term) {
      for (const uint32_t literal : term.vars) {
        ++literals;
        highest = std::max(highest, sort_key(literal) | 1);
      }
    });
    if (highest < kEntriesPerLiteral * literals) by_key_.resize(uint64_t{highest} + 1);
  }

  void add(uint32_t key, const coeff_t& c) {
    if (key < by_key_.size()) {
      by_key_[key] += c;
    } else {
      scattered_.append(TermImpl(c, VarList(literal_of_key(key))));
    }
  }

  void move_to(TermList& list) {
    scattered_.for_each([&](const TermImpl& term) { list.append(term); });
    for (uint32_t key = 0; key < by_key_.size(); ++key) {
      coeff_t sum = by_key_[key].total();
      if (!is_zero(sum)) list.append(TermImpl(std::move(sum), VarList(literal_of_key(key))));
    }
  }

 private:
  static constexpr uint64_t kEntriesPerLiteral = 8;

  std::vector<CoeffSum> by_key_;
  TermList scattered_;
};

// Gathers sums over the subsets of literals.
class SubsetSums {
 public:
  SubsetSums(const ExprImpl& e, const coeff_t& constant) : constant_(constant), linear_(e) {
    if (e.list.size() > 0) sum_.list.reserve(e.list.size());
  }

  // Adds by_size(k) times the product of S for each subset S of the keys with k members.
  template <typename BySize>
  void add(const Keys& keys, BySize by_size) {
    if (keys.size() > kMaxExpandedDegree) throw std::bad_alloc();
    constant_ += by_size(0);
    for (const uint32_t key : keys) linear_.add(key, by_size(1));
    if (keys.size() == 2) {
      const VarList both(literal_of_key(keys[0]), literal_of_key(keys[1]));
      sum_.list.append(TermImpl(by_size(2), both));
    } else if (keys.size() > 2) {
      add_products(keys, by_size);
    }
  }

  ExprImpl take() {
    sum_.constant = constant_.total();
    linear_.move_to(sum_.list);
    return std::move(sum_);
  }

 private:
  template <typename BySize>
  void add_products(const Keys& keys, BySize by_size) {
    const uint64_t subsets = uint64_t{1} << keys.size();
    for (uint64_t subset = 0; subset < subsets; ++subset) {
      const auto size = static_cast<size_t>(std::popcount(subset));
      if (size >= 2) sum_.list.append(TermImpl(by_size(size), product_of(keys, subset)));
    }
  }

  static VarList product_of(const Keys& keys, uint64_t subset) {
    uint32_t literals[kMaxExpandedDegree];
    uint32_t n = 0;
    for (; subset != 0; subset &= subset - 1) {
      literals[n++] = literal_of_key(keys[static_cast<size_t>(std::countr_zero(subset))]);
    }
    return VarList(literals, n);
  }

  CoeffSum constant_;
  LinearSums linear_;
  ExprImpl sum_;
};

// The different keys of `sorted_keys`; false if a variable stands beside its complement.
bool make_unique(Keys& sorted_keys) {
  sorted_keys.erase(std::unique(sorted_keys.begin(), sorted_keys.end()), sorted_keys.end());
  return std::adjacent_find(sorted_keys.begin(), sorted_keys.end(), [](uint32_t a, uint32_t b) {
           return (a | 1) == (b | 1);
         }) == sorted_keys.end();
}

// c times powers of -2, in the order in which (-1 + 2 l1)(-1 + 2 l2)... asks for them.
void fill_spin_coefficients(const coeff_t& c, size_t degree, std::vector<coeff_t>& by_size) {
  by_size.resize(degree + 1);
  by_size[0] = c;
  if (degree % 2 == 1) negate(by_size[0]);
  for (size_t k = 1; k <= degree; ++k) {
    by_size[k] = by_size[k - 1];
    by_size[k] += by_size[k - 1];
    negate(by_size[k]);
  }
}

}  // namespace

ExprImpl binary_to_spin(const ExprImpl& e) {
  refuse_declared(e.attr, "binary_to_spin");
  if (has_int_atom(e)) {
    fatal(
        "binary_to_spin: native integer variables (int_var) are not supported (spin semantics do "
        "not apply to integer atoms).");
  }
  const uint32_t scale = max_degree(e);
  SubsetSums sums(e, coeff_t(e.constant) << scale);
  Keys keys;
  coeff_t scaled;
  e.list.for_each([&](const TermImpl& term) {
    load_sorted_keys(term.vars, keys);
    // (1 + s)(1 - s) = 0, and (1 + s)^2 = 2 (1 + s): a repeated literal leaves a factor 2, just as
    // a missing one does that is made up for.
    if (is_zero(term.coeff) || !make_unique(keys)) return;
    scaled = coeff_t(term.coeff);
    if (keys.size() < scale) scaled <<= scale - keys.size();
    sums.add(keys, [&](size_t) -> const coeff_t& { return scaled; });
  });
  return expr_simplify_as_spin(sums.take());
}

ExprImpl spin_to_binary(const ExprImpl& e) {
  refuse_declared(e.attr, "spin_to_binary");
  if (has_int_atom(e)) {
    fatal(
        "spin_to_binary: native integer variables (int_var) are not supported (spin semantics do "
        "not apply to integer atoms).");
  }
  SubsetSums sums(e, coeff_t(e.constant));
  Keys keys;
  std::vector<coeff_t> by_size;
  e.list.for_each([&](const TermImpl& term) {
    if (is_zero(term.coeff)) return;
    load_sorted_keys(term.vars, keys);
    cancel_pairs(keys);  // s*s = 1; a literal and its complement stay, as both may be kept apart
    fill_spin_coefficients(coeff_t(term.coeff), keys.size(), by_size);
    sums.add(keys, [&](size_t size) -> const coeff_t& { return by_size[size]; });
  });
  return expr_simplify_as_binary(sums.take());
}

}  // namespace zorv
