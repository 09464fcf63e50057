// Constraints on arrays, against the plain penalties.
#include "integer/int_var.h"
#include "support/arrays.h"

namespace zorv::test {
namespace {

// The exports of each kind.
template <typename T>
struct Exports;
#define ZORV_EXPORTS(K, T, eq_array)                                           \
  template <>                                                                  \
  struct Exports<T> {                                                          \
    static constexpr auto between = zorv_array_##K##_between;                  \
    static constexpr auto ge = zorv_array_##K##_ge_int;                        \
    static constexpr auto le = zorv_array_##K##_le_int;                        \
    static constexpr auto eq = zorv_array_##K##_eq_int;                        \
    static constexpr auto between_arrays = zorv_array_##K##_between_array_int; \
    static constexpr auto ge_array = zorv_array_##K##_ge_array_int;            \
    static constexpr auto le_array = zorv_array_##K##_le_array_int;            \
    [[maybe_unused]] static constexpr auto equals_array = eq_array;            \
  };
ZORV_EXPORTS(var, uint32_t, zorv_array_var_eq_array_int)
ZORV_EXPORTS(int, coeff_t, nullptr)  // has no such form
ZORV_EXPORTS(term, TermImpl, zorv_array_term_eq_array_int)
ZORV_EXPORTS(expr, ExprImpl, zorv_array_expr_eq_array_int)
#undef ZORV_EXPORTS

// The constant and the coefficients of one sign, after simplification.
coeff_t extreme(const ExprImpl& e, int sign) {
  coeff_t bound;
  for (const auto& [literals, c] : plain_as_binary(e)) {
    if (literals.empty() || c * sign > 0) bound += c;
  }
  return bound;
}

constexpr auto kNone = [](uint64_t) { return std::optional<coeff_t>(); };

// Each element is the penalty of between() on the element of `a`, with slack variables from `next`
// on in the order of the elements, and names a constraint with these bounds, or its own extremes.
template <typename T, typename Lo, typename Hi>
void expect_constraints(const Array<ExprImpl>& got, const Array<T>& a, uint64_t next, Lo lo_at,
                        Hi hi_at) {
  ASSERT_EQ(got.shape(), a.shape());
  auto slack = static_cast<uint32_t>(next);
  for (uint64_t i = 0; i < a.size(); ++i) {
    const ExprImpl body = as_expr(a[i]);
    const std::optional<coeff_t> given_lo = lo_at(i), given_hi = hi_at(i);
    const coeff_t lo = given_lo ? *given_lo : extreme(body, -1);
    const coeff_t hi = given_hi ? *given_hi : extreme(body, 1);
    ASSERT_TRUE(same_terms(got[i], plain_between(body, lo, hi, slack)));
    ASSERT_TRUE(is_expr_expr_attr(got[i].attr));
    zorv_expr* written_body = nullptr;
    Wire weight, written_lo, written_hi;
    ASSERT_EQ(zorv_cons_item_info(borrow(got[i]), 0, &written_body, weight.out(), written_lo.out(),
                                  written_hi.out()),
              1);
    const Handle owned = written_body;
    ASSERT_TRUE(same_terms(unwrap(owned), body));
    ASSERT_EQ(owned.attr(), kPlainAttr);
    ASSERT_EQ(weight.value(), 1);
    ASSERT_EQ(written_lo.value(), lo);
    ASSERT_EQ(written_hi.value(), hi);
  }
  ASSERT_EQ(slack, var_count());
}

template <typename T>
void check_family(const Array<T>& a) {
  using X = Exports<T>;
  const std::pair<int, int> bounds[] = {{0, 0}, {0, 1}, {-2, 3}, {5, 1}, {7, 8}};
  for (const auto& [lo, hi] : bounds) {
    const Wire low(lo), high(hi);
    const auto at_lo = [lo = lo](uint64_t) { return std::optional<coeff_t>(lo); };
    const auto at_hi = [hi = hi](uint64_t) { return std::optional<coeff_t>(hi); };
    uint64_t next = var_count();
    expect_constraints(X::between(a, low, high), a, next, at_lo, at_hi);
    next = var_count();
    expect_constraints(X::ge(a, low), a, next, at_lo, kNone);
    next = var_count();
    expect_constraints(X::le(a, high), a, next, kNone, at_hi);
    expect_constraints(X::eq(a, low), a, var_count(), at_lo, at_lo);
  }
  const Array<coeff_t> lows(a.shape(), [](uint64_t i) { return coeff_t(i) - 2; });
  const Array<coeff_t> highs(a.shape(), [](uint64_t i) { return 3 - coeff_t(i); });
  const auto at_low = [&](uint64_t i) { return std::optional(lows[i]); };
  const auto at_high = [&](uint64_t i) { return std::optional(highs[i]); };
  uint64_t next = var_count();
  expect_constraints(X::between_arrays(a, lows, highs), a, next, at_low, at_high);
  next = var_count();
  expect_constraints(X::between_arrays(a, lows, nullptr), a, next, at_low, kNone);
  next = var_count();
  expect_constraints(X::between_arrays(a, nullptr, highs), a, next, kNone, at_high);
  next = var_count();
  expect_constraints(X::ge_array(a, lows), a, next, at_low, kNone);
  next = var_count();
  expect_constraints(X::le_array(a, highs), a, next, kNone, at_high);

  if constexpr (!std::is_same_v<T, coeff_t>) {
    expect_constraints(X::equals_array(a, lows), a, var_count(), at_low, at_low);
  }
}

template <typename T>
void check_texts(const Array<T>& a) {
  using X = Exports<T>;
  const Array<coeff_t> fits(a.shape(), [](uint64_t) { return 0; });
  const Array<coeff_t> odd({a.size()}, [](uint64_t) { return 0; });
  const std::string lower = "Array range constraint: lower-bound array shape mismatch";
  const std::string upper = "Array range constraint: upper-bound array shape mismatch";
  EXPECT_FATAL(X::between_arrays(a, odd, odd), lower);
  EXPECT_FATAL(X::between_arrays(a, fits, odd), upper);
  EXPECT_FATAL(X::ge_array(a, odd), lower);
  EXPECT_FATAL(X::le_array(a, odd), upper);
  if constexpr (!std::is_same_v<T, coeff_t>) {
    EXPECT_FATAL(X::equals_array(a, odd), "Array == Array<int>: shape mismatch");
  }
}

TEST(ArrayConstraints, AreThePenaltiesOfTheirElements) {
  Pools pools = plain_pools();
  // Constraints that an element carries are left aside.
  pools.exprs.push_back(unwrap(between(var(pools.vars[0]), 0, 1)));
  pools.exprs.push_back(unwrap(classic(var(pools.vars[0]) - 1, var(pools.vars[2]))));
  const auto check = [&](const auto& pool) {
    using T = std::decay_t<decltype(pool[0])>;
    for (const Shape& shape : {Shape{}, Shape{4, 2}, Shape{1, 3, 1}, Shape{2, 0}}) {
      check_family(Array<T>(shape, [&](uint64_t i) { return pool[i % pool.size()]; }));
    }
    check_texts(Array<T>({1, 2}, [&](uint64_t i) { return pool[i]; }));
  };
  check(pools.vars);
  check(pools.ints);
  check(pools.terms);
  check(pools.exprs);
}

TEST(ArrayConstraints, WorkOutAsWritten) {
  const uint32_t x = fresh("x"), y = fresh("y"), a = new_int_var("a", -5, 9);
  const Array<ExprImpl> e({var(x), var(x) + var(y), constant(3), 3 * var(a) - 1});
  const struct {
    Handle constraint;
    const char *penalty, *lo, *hi;
  } rows[] = {
      {zorv_array_expr_get(Array(zorv_array_expr_ge_int(e, Wire(1))), 0), "1 +x*x -2*x", "1", "1"},
      {zorv_array_expr_get(Array(zorv_array_expr_le_int(e, Wire(1))), 1),
       "-x -y +x*x +x*y +y*x +y*y", "0", "1"},
      {zorv_array_expr_get(Array(zorv_array_expr_ge_int(e, Wire(5))), 0), "0", "5", "1"},
      {zorv_array_expr_get(Array(zorv_array_expr_ge_int(e, Wire(4))), 2), "0", "4", "3"},
      // An atom counts as if it were binary, which is not the bound that it has.
      {zorv_array_expr_get(Array(zorv_array_expr_ge_int(e, Wire(3))), 3), "0", "3", "2"},
      {zorv_array_expr_get(Array(zorv_array_expr_le_int(e, Wire(-2))), 3), "0", "-1", "-2"},
  };
  for (const auto& row : rows) {
    const ExprExpr& entry = expr_expr(attr_index(row.constraint.attr()));
    EXPECT_EQ(row.constraint.polynomial(), row.penalty);
    EXPECT_EQ(entry.lo.str(), row.lo);
    EXPECT_EQ(entry.hi.str(), row.hi);
  }
}

// Only these are spread over threads.
TEST(ArrayConstraints, LongEqualitiesKeepTheirPositions) {
  for (const uint64_t n : {9'999, 10'000}) {
    const Array<uint32_t> a({n}, [](uint64_t i) { return i; });
    const Array<coeff_t> values({n}, [](uint64_t i) { return i % 7; });
    const auto two = [](uint64_t) { return std::optional<coeff_t>(2); };
    const auto value_at = [&](uint64_t i) { return std::optional(values[i]); };
    expect_constraints(zorv_array_var_eq_int(a, Wire(2)), a, var_count(), two, two);
    expect_constraints(zorv_array_var_eq_array_int(a, values), a, var_count(), value_at, value_at);
  }
}

TEST(ArrayConstraints, OfARunAreBarePenalties) {
  const Pools pools = plain_pools();
  const Array<ExprImpl> exprs(pools.exprs);
  std::vector<zorv_expr*> pointers;
  for (uint64_t i = 0; i < exprs.size(); ++i) pointers.push_back(zorv_array_expr_ref(exprs, i));
  const auto check = [](const void* run, int kind, uint64_t n, auto element) {
    auto slack = static_cast<uint32_t>(var_count());
    std::vector<zorv_expr*> out(n + 1);  // and one behind, left alone
    zorv_array_between(run, kind, Wire(-1), Wire(3), out.data(), n);
    for (uint64_t i = 0; i < n; ++i) {
      const Handle penalty = out[i];
      ASSERT_TRUE(same_terms(unwrap(penalty), element(i, slack))) << "kind " << kind;
      ASSERT_EQ(penalty.attr(), kPlainAttr);
    }
    ASSERT_EQ(slack, var_count());
    EXPECT_EQ(out[n], nullptr);
  };
  const auto of = [](const auto& pool) {
    return
        [&](uint64_t i, uint32_t& slack) { return plain_between(as_expr(pool[i]), -1, 3, slack); };
  };
  check(pointers.data(), 0, pointers.size(), of(pools.exprs));
  check(pools.vars.data(), 1, pools.vars.size(), of(pools.vars));
  check(pools.terms.data(), 2, pools.terms.size(), of(pools.terms));
  check(nullptr, 3, 2, [](uint64_t, uint32_t&) { return ExprImpl(); });
  check(nullptr, 0, 0, [](uint64_t, uint32_t&) { return ExprImpl(); });
}

}  // namespace
}  // namespace zorv::test
