// Random, legal sequences of calls of the C interface on a handful of expressions, also as an
// array, each shadowed by a plain map from literals to coefficients.
#include "core/literal.h"
#include "reference/plain_poly.h"
#include "support/random.h"
#include "support/support.h"
#include "zorv/zorv.h"

namespace zorv::test {
namespace {

constexpr uint32_t kVariables = 5;
constexpr size_t kExprs = 4;
constexpr size_t kMostTerms = 300;

void add(PlainPoly& to, std::vector<uint32_t> literals, const coeff_t& c) {
  std::sort(literals.begin(), literals.end(), key_less);
  to[literals] += c;
}

PlainPoly times(const PlainPoly& a, const PlainPoly& b) {
  PlainPoly product;
  for (const auto& [x, c] : a) {
    for (const auto& [y, d] : b) {
      std::vector<uint32_t> literals = x;
      literals.insert(literals.end(), y.begin(), y.end());
      add(product, literals, coeff_t(c * d));
    }
  }
  return product;
}

void add_all(PlainPoly& to, const PlainPoly& from, int sign) {
  for (const auto& [literals, c] : PlainPoly(from)) add(to, literals, coeff_t(sign * c));
}

PlainPoly without_zeros(PlainPoly poly) {
  std::erase_if(poly, [](const auto& entry) { return entry.second == 0; });
  return poly;
}

class RandomCalls {
 public:
  explicit RandomCalls(uint64_t seed) : random_(seed) {
    for (size_t i = 0; i < kExprs; ++i) exprs_[i] = zorv_expr_create();
  }
  ~RandomCalls() {
    for (zorv_expr* e : exprs_) zorv_expr_destroy(e);
  }

  void step() {
    const size_t i = below(random_, kExprs), j = below(random_, kExprs);
    zorv_expr*& e = exprs_[i];
    PlainPoly& s = shadows_[i];
    const coeff_t c = troublesome(random_);
    const std::vector<uint32_t> v = literals();
    const auto n = static_cast<uint32_t>(v.size());
    const Wire wire(c);
    const bool small = shadows_[i].size() * (shadows_[j].size() + 1) < kMostTerms;
    switch (below(random_, 21)) {
      case 0:
        return zorv_expr_iadd_int(e, wire), add(s, {}, c);
      case 1:
        return zorv_expr_isub_int(e, wire), add(s, {}, -c);
      case 2:
        return zorv_expr_iadd_raw_term(e, wire, v.data(), n), add(s, v, c);
      case 3:
        return zorv_expr_isub_raw_term(e, wire, v.data(), n), add(s, v, -c);
      case 4:
        return zorv_expr_iadd_var(e, v[0]), add(s, {v[0]}, 1);
      case 5:
        return zorv_expr_isub_var(e, v[0]), add(s, {v[0]}, -1);
      case 6:
        return zorv_expr_iadd_expr(e, exprs_[j]), add_all(s, shadows_[j], 1);
      case 7:
        return zorv_expr_isub_expr(e, exprs_[j]), add_all(s, shadows_[j], -1);
      case 8:
        return zorv_expr_imul_int(e, wire), void(s = times(s, {{{}, c}}));
      case 9:
        return zorv_expr_negate(e), void(s = times(s, {{{}, -1}}));
      case 10:
        return replace(i, zorv_expr_simplify(e), s);
      case 11:
        return replace(i, zorv_expr_clone(exprs_[j]), shadows_[j]);
      case 12:
        return replace(i, zorv_expr_create_raw_term(wire, v.data(), n, wire),
                       without_zeros(times({{{}, c}}, {{{}, 1}, {sorted(v), 1}})));
      case 13:
        return replace(i, zorv_expr_clone_add_expr(e, exprs_[j]), sum(s, shadows_[j]));
      case 14:
        if (small) zorv_expr_imul_var(e, v[0]), s = times(s, {{{v[0]}, 1}});
        return;
      case 15:
        if (small) zorv_expr_imul_expr(e, exprs_[j]), s = times(s, shadows_[j]);
        return;
      case 16:
        if (small) replace(i, zorv_array_sum(exprs_, kExprs), sum_of_all());
        return;
      case 17:
        return with_array([&](zorv_array_expr* a) {
          zorv_array_expr_sub_eq_var(a, v[0]);
          if (small) replace(i, zorv_array_expr_sum(a), sum(sum_of_all(), {{{v[0]}, -4}}));
        });
      case 18:
        return with_array([&](zorv_array_expr* a) {
          zorv_array_expr* scaled = zorv_array_expr_mul_int(a, wire);
          replace(i, zorv_array_expr_get(scaled, j), times(shadows_[j], {{{}, c}}));
          zorv_array_expr_destroy(scaled);
        });
      case 19:
        return with_array([&](zorv_array_expr* a) {
          if (small) replace(i, contracted(a, v), dot(v));
        });
      default:
        if (small) replace(i, zorv_expr_sqr(exprs_[j]), times(shadows_[j], shadows_[j]));
    }
  }

  void check() const {
    for (size_t i = 0; i < kExprs; ++i) {
      const auto& e = *reinterpret_cast<const ExprImpl*>(exprs_[i]);
      ASSERT_TRUE(plain_poly(e) == without_zeros(shadows_[i])) << zorv_expr_str(exprs_[i]);
      ASSERT_EQ(e.attr, kPlainAttr);
    }
  }

  // Keeps sequences from growing beyond what the map can follow.
  void prune() {
    for (size_t i = 0; i < kExprs; ++i) {
      if (zorv_expr_term_count(exprs_[i]) < 10 * kMostTerms) continue;
      replace(i, zorv_expr_create_var(0), {{{0}, 1}});
    }
  }

 private:
  std::vector<uint32_t> literals() {
    std::vector<uint32_t> v(1 + below(random_, 4));
    for (uint32_t& literal : v) {
      literal = static_cast<uint32_t>(below(random_, kVariables));
      if (below(random_, 4) == 0) literal |= kNegationBit;
    }
    return v;
  }
  static std::vector<uint32_t> sorted(std::vector<uint32_t> v) {
    std::sort(v.begin(), v.end(), key_less);
    return v;
  }
  static PlainPoly sum(PlainPoly a, const PlainPoly& b) { return add_all(a, b, 1), a; }
  PlainPoly sum_of_all() const {
    PlainPoly all;
    for (const PlainPoly& shadow : shadows_) add_all(all, shadow, 1);
    return all;
  }
  // The expressions as an array of shape (2, 2).
  template <typename F>
  void with_array(F f) {
    static_assert(kExprs == 4);
    const uint64_t shape[] = {2, 2};
    zorv_array_expr* a = zorv_array_expr_create_data(exprs_, shape, 2);
    f(a);
    zorv_array_expr_destroy(a);
  }
  // The sum of v[k] times the expressions in row k, and what that comes to.
  static zorv_expr* contracted(zorv_array_expr* a, const std::vector<uint32_t>& v) {
    const uint32_t factors[] = {v[0], v.back()}, kinds[] = {3, 0};
    const uint64_t two = 2;
    zorv_array_var* vars = zorv_array_var_create_data(factors, &two, 1);
    void* const inputs[] = {a, vars};
    auto* result = static_cast<zorv_array_expr*>(zorv_einsum("kj,k->", 2, kinds, inputs, 1, 0));
    zorv_expr* e = zorv_array_expr_get(result, 0);
    zorv_array_expr_destroy(result), zorv_array_var_destroy(vars);
    return e;
  }
  PlainPoly dot(const std::vector<uint32_t>& v) const {
    const PlainPoly top = sum(shadows_[0], shadows_[1]), bottom = sum(shadows_[2], shadows_[3]);
    return sum(times(top, {{{v[0]}, 1}}), times(bottom, {{{v.back()}, 1}}));
  }
  void replace(size_t i, zorv_expr* fresh, PlainPoly shadow) {
    zorv_expr_destroy(exprs_[i]);
    exprs_[i] = fresh;
    shadows_[i] = std::move(shadow);
  }

  Random random_;
  zorv_expr* exprs_[kExprs];
  PlainPoly shadows_[kExprs];
};

TEST(RandomCalls, AgreeWithThePlainMap) {
  for (uint64_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomCalls calls(seed);
    for (int i = 0; i < 40; ++i) {
      calls.step();
      calls.prune();
      calls.check();
      if (::testing::Test::HasFatalFailure()) return;
    }
  }
}

}  // namespace
}  // namespace zorv::test
