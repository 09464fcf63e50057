// Every element-wise export against the scalar operation that it stands for.
#include "support/arrays.h"

namespace zorv::test {
namespace {

// The scalar operations, by kinds --------------------------------------------------------------

Value plain_product(const Value& a, const Value& b) {
  const auto *e = std::get_if<ExprImpl>(&a), *f = std::get_if<ExprImpl>(&b);
  if (e != nullptr && f != nullptr) return mul(*e, *f);
  if (e == nullptr && f == nullptr) {
    if (a.index() == 1 && b.index() == 1) return std::get<coeff_t>(a) * std::get<coeff_t>(b);
    if (a.index() == 0 && b.index() == 2) return plain_product(b, a);
    TermImpl product = term_of(1, {});
    for (const Value* factor : {&a, &b}) {
      if (const auto* v = std::get_if<uint32_t>(factor)) product.vars.append(*v);
      if (const auto* c = std::get_if<coeff_t>(factor)) product.coeff *= *c;
      if (const auto* t = std::get_if<TermImpl>(factor)) product = mul(product, *t);
    }
    return product;
  }
  if (e == nullptr) return plain_product(b, a);
  if (const auto* v = std::get_if<uint32_t>(&b)) return mul_var(*e, *v);
  if (const auto* t = std::get_if<TermImpl>(&b)) return mul_term(*e, *t);
  ExprImpl copy = *e;
  imul_int(copy, std::get<coeff_t>(b));
  return copy;
}

Value plain_operation(const std::string& op, const Value& a, const Value& b) {
  if (op == "mul") return plain_product(a, b);
  const int sign = op == "add" ? 1 : -1;
  if (a.index() == 1 && b.index() == 1) return std::get<coeff_t>(a) + sign * std::get<coeff_t>(b);
  ExprImpl e;
  if (a.index() != 3 && b.index() == 3 && sign > 0) {
    e = std::get<ExprImpl>(b);
    add_to(e, a);
    return e;
  }
  if (a.index() == 3) {
    e = std::get<ExprImpl>(a);
  } else {
    add_to(e, a);
  }
  add_to(e, b, sign);
  return e;
}

// What the exports are called with ---------------------------------------------------------------

// The element that stands for an argument, of an array or as a scalar.
template <typename Argument>
struct Operand {
  using Element =
      std::decay_t<decltype(std::declval<typename RecordOf<
                                std::remove_const_t<std::remove_pointer_t<Argument>>>::Type>()[0])>;
  static constexpr bool kIsArray = true;
};
template <typename T>
struct Scalar {
  using Element = T;
  static constexpr bool kIsArray = false;
};
template <>
struct Operand<uint32_t> : Scalar<uint32_t> {};
template <>
struct Operand<const CoeffWire*> : Scalar<coeff_t> {};
template <>
struct Operand<const zorv_term*> : Scalar<TermImpl> {};
template <>
struct Operand<const zorv_expr*> : Scalar<ExprImpl> {};

uint32_t pass(uint32_t v) { return v; }
Wire pass(const coeff_t& c) { return Wire(c); }
template <typename T>
auto pass(const T& element) {
  return borrow(element);
}

// Expressions with tags of all kinds that let themselves be multiplied by 0.
Pools tagged_pools() {
  Pools pools = plain_pools();
  const ExprImpl g = var(fresh("g"));
  const Handle sum = classic(var(pools.vars[0]) + 2, g);
  zorv_expr_iadd_var(sum, pools.vars[1]);
  pools.exprs = {var(pools.vars[0]) - 1, unwrap(classic(3 * g, g)), unwrap(sum),
                 unwrap(Handle(zorv_varintelem_create("n", Wire(-1), Wire(5))))};
  return pools;
}

Pools declared_pools() {
  Pools pools = plain_pools();
  const Handle rest = between(var(fresh("g")), 0, 1);
  zorv_expr_iadd_expr(rest, Handle(zorv_cons_mark(Handle(var(pools.vars[0])))));
  zorv_expr_iadd_int(rest, Wire(4));
  pools.ints = {2, -3, coeff_t(1) << 100};
  pools.exprs = {unwrap(between(var(pools.vars[2]), 1, 2)), unwrap(rest)};
  return pools;
}

class Checker {
 public:
  explicit Checker(Pools pools) : pools_(std::move(pools)) {}

  template <typename Result, typename Left, typename Right>
  void check(const std::string& name, Result (*call)(Left, Right)) {
    SCOPED_TRACE(name);
    op_ = name.substr(name.find('_') + 1, 3);
    // Tags are scaled where an integer stands on the right, but not in place by an array.
    scales_tags_ =
        name == "expr_mul_int" || name == "expr_mul_array_int" || name == "expr_mul_eq_int";
    using A = typename Operand<Left>::Element;
    using B = typename Operand<Right>::Element;
    const std::vector<A>& as = pools_.of<A>();
    const std::vector<B>& bs = pools_.of<B>();
    std::vector<Shape> shapes = kShapes;
    shapes.push_back({as.size(), bs.size()});  // all pairs
    // One of each scheme with enough elements for several threads.
    for (const char* is_long :
         {"var_add_array_int", "int_mul_expr", "expr_sub_eq_array_expr", "term_mul_eq_int"}) {
      if (name == is_long) shapes.push_back({9'999}), shapes.push_back({10'000});
    }
    for (const Shape& shape : shapes) {
      const auto make_left = [&] {
        return Array<A>(shape, [&](uint64_t i) { return as[i / bs.size() % as.size()]; });
      };
      if constexpr (Operand<Right>::kIsArray) {
        const Array<B> right(shape, [&](uint64_t i) { return bs[i % bs.size()]; });
        expect(make_left(), call, static_cast<Right>(right), [&](uint64_t i) { return right[i]; });
        if (::testing::Test::HasFatalFailure()) return;
      } else {
        for (const B& scalar : bs) {
          const auto& passed = pass(scalar);
          expect(make_left(), call, static_cast<Right>(passed), [&](uint64_t) { return scalar; });
          if (::testing::Test::HasFatalFailure()) return;
        }
      }
    }
  }

 private:
  template <typename A, typename Result, typename Left, typename Right, typename B>
  void expect(const Array<A>& left, Result (*call)(Left, Right), Right right, B right_at) const {
    std::vector<A> before;
    for (uint64_t i = 0; i < left.size(); ++i) before.push_back(left[i]);
    const auto expect_elements = [&](const auto& result) {
      ASSERT_EQ(result.shape(), left.shape());
      ASSERT_EQ(result.size(), before.size());
      for (uint64_t i = 0; i < before.size(); ++i)
        expect_element(result[i], before[i], right_at(i));
    };
    if constexpr (std::is_void_v<Result>) {
      call(left, right);
      expect_elements(left);
    } else {
      expect_elements(Array(call(left, right)));
    }
  }

  void expect_element(const Value& got, const Value& a, const Value& b) const {
    const Value want = plain_operation(op_, a, b);
    ASSERT_TRUE(same_value(got, want)) << text(as_expr(a)) << " " << op_ << " " << text(as_expr(b));
    if (scales_tags_) {
      ASSERT_EQ(describe(tag_of(got)), describe(scale(tag_of(a), std::get<coeff_t>(b))));
    } else {
      ASSERT_EQ(tag_of(got), tag_of(want)) << describe(tag_of(got));
    }
  }

  const Pools pools_;
  std::string op_;
  bool scales_tags_ = false;
};

// Calls check(name, export) for all of them.
#define CHECK(name) check(#name, &zorv_array_##name);
#define CHECK_BINARY(a, op, b) CHECK(a##_##op##_array_##b) CHECK(a##_##op##_##b)
#define FOR_RIGHT(X, a, op) X(a, op, var) X(a, op, int) X(a, op, term) X(a, op, expr)
#define FOR_OPS(X, a) FOR_RIGHT(X, a, add) FOR_RIGHT(X, a, sub) FOR_RIGHT(X, a, mul)

template <typename Check>
void for_every_export(Check check){
    FOR_OPS(CHECK_BINARY, var) FOR_OPS(CHECK_BINARY, int) FOR_OPS(CHECK_BINARY, term)
        FOR_OPS(CHECK_BINARY, expr) FOR_RIGHT(CHECK_BINARY, expr, add_eq)
            FOR_RIGHT(CHECK_BINARY, expr, sub_eq) FOR_RIGHT(CHECK_BINARY, expr, mul_eq)
                CHECK_BINARY(int, add_eq, int) CHECK_BINARY(int, sub_eq, int)
                    CHECK_BINARY(int, mul_eq, int) CHECK(term_mul_eq_int)}

TEST(Elementwise, IsTheScalarOperation) {
  for (const Pools& pools : {plain_pools(), tagged_pools(), declared_pools()}) {
    Checker checker(pools);
    int checked = 0;
    for_every_export([&](const std::string& name, auto call) {
      checker.check(name, call);
      ++checked;
    });
    EXPECT_EQ(checked, 127);
  }
}

template <typename Result, typename Left, typename Right>
void expect_mismatch(const std::string& name, Result (*call)(Left, Right)) {
  if constexpr (Operand<Right>::kIsArray) {
    using A = typename Operand<Left>::Element;
    using B = typename Operand<Right>::Element;
    const auto has = [&](const char* part) { return name.find(part) != std::string::npos; };
    const std::string sign = has("add") ? "+" : has("sub") ? "-" : "*";
    const Array<A> a({2, 3}, [](uint64_t) { return A(); });
    const Array<B> b({3, 2}, [](uint64_t) { return B(); });
    EXPECT_FATAL(call(a, b),
                 "Array " + sign + (has("_eq_") ? "=" : "") + ": shape mismatch (2,3) vs (3,2)");
  }
}

TEST(Elementwise, TakesEqualShapesOnly) {
  for_every_export([](const std::string& name, auto call) { expect_mismatch(name, call); });
  const struct {
    Shape a, b;
    const char* text;
  } rows[] = {{{}, {1}, "() vs (1)"},
              {{3, 1}, {3, 4}, "(3,1) vs (3,4)"},
              {{0}, {2, 0}, "(0) vs (2,0)"},
              {{6}, {2, 3}, "(6) vs (2,3)"}};
  for (const auto& row : rows) {
    const auto one = [](uint64_t) { return 1; };
    EXPECT_FATAL(
        zorv_array_int_add_array_int(Array<coeff_t>(row.a, one), Array<coeff_t>(row.b, one)),
        std::string("Array +: shape mismatch ") + row.text);
  }
}

TEST(Elementwise, DeclaredConstraintsAreNotDroppedByAFactorOf0) {
  const Array<ExprImpl> a({1}, [](uint64_t) { return unwrap(between(var(fresh()), 0, 1)); });
  const Array<coeff_t> zeros({1}, [](uint64_t) { return 0; });
  EXPECT_FATAL(zorv_array_expr_mul_int(a, Wire(0)), kZeroText);
  EXPECT_FATAL(zorv_array_expr_mul_array_int(a, zeros), kZeroText);
  EXPECT_FATAL(zorv_array_expr_mul_eq_int(a, Wire(0)), kZeroText);
  // The others leave the tag as it is.
  EXPECT_EQ(Array(zorv_array_int_mul_array_expr(zeros, a))[0].attr, a[0].attr);
  EXPECT_EQ(Array(zorv_array_int_mul_expr(zeros, borrow(a[0])))[0].attr, a[0].attr);
  const uint32_t tag = a[0].attr;
  zorv_array_expr_mul_eq_array_int(a, zeros);
  EXPECT_EQ(a[0].attr, tag);
}

TEST(Division, OfIntegersTruncates) {
  const struct {
    coeff_t dividend, divisor, quotient;
  } rows[] = {{7, 2, 3},   {-7, 2, -3},
              {7, -2, -3}, {-7, -2, 3},
              {-1, 2, 0},  {coeff_t(1) << 130, -(coeff_t(1) << 65), -(coeff_t(1) << 65)}};
  for (const auto& row : rows) {
    const Array<coeff_t> a({2}, [&](uint64_t) { return row.dividend; });
    zorv_array_int_div_eq_int(a, Wire(row.divisor));
    for (uint64_t i = 0; i < 2; ++i) EXPECT_EQ(a[i], row.quotient);
    EXPECT_EQ(is_negative(a[0]), row.quotient < 0);
  }
  const Array<coeff_t> empty(Shape{0}, [](uint64_t) { return 0; });
  zorv_array_int_div_eq_int(empty, Wire(0));
  EXPECT_THROW(zorv_array_int_div_eq_int(Array<coeff_t>({1}, [](auto) { return 5; }), Wire(0)),
               std::overflow_error);
}

TEST(Division, OfTermsAndExpressionsIsExact) {
  const uint32_t x = fresh("x");
  const Array<TermImpl> t({term_of(4, {x}), term_of(-6, {}), term_of(0, {x})});
  const Array half = zorv_array_term_div_int(t, Wire(-2));
  const std::vector<TermImpl> halves = {term_of(-2, {x}), term_of(3, {}), term_of(0, {x})};
  for (uint64_t i = 0; i < 3; ++i) EXPECT_TRUE(same_value(half[i], halves[i]));
  EXPECT_EQ(t[0].coeff, 4);
  zorv_array_term_div_eq_int(t, Wire(-2));
  for (uint64_t i = 0; i < 3; ++i) EXPECT_TRUE(same_value(t[i], halves[i]));

  // The tag stays what it was.
  const uint32_t tag = between(var(x), 0, 1).attr();
  const Array<ExprImpl> e({6 * var(x) - 3, constant(9)});
  e[0].attr = tag;
  const Array third = zorv_array_expr_div_int(e, Wire(3));
  EXPECT_EQ(text(e[0]), "-3 +6*x");
  zorv_array_expr_div_eq_int(e, Wire(3));
  for (const Array<ExprImpl>* a : {&e, &third}) {
    EXPECT_EQ(text((*a)[0]), "-1 +2*x");
    EXPECT_EQ((*a)[0].attr, tag);
    EXPECT_EQ(text((*a)[1]), "3");
  }

  const Array<TermImpl> no_terms(Shape{0}, [](uint64_t) { return TermImpl(); });
  const Array<ExprImpl> no_exprs(Shape{0}, [](uint64_t) { return ExprImpl(); });
  const char* const by_zero[] = {"Array<Term> /=: division by zero",
                                 "Array<Expr> /=: division by zero"};
  EXPECT_FATAL(zorv_array_term_div_eq_int(no_terms, Wire(0)), by_zero[0]);
  EXPECT_FATAL(zorv_array_term_div_int(t, Wire(0)), by_zero[0]);
  EXPECT_FATAL(zorv_array_expr_div_eq_int(e, Wire(0)), by_zero[1]);
  EXPECT_FATAL(zorv_array_expr_div_int(no_exprs, Wire(0)), by_zero[1]);
  EXPECT_FATAL(zorv_array_term_div_eq_int(half, Wire(2)),
               "Array<Term> /=: indivisible coefficient");
  EXPECT_FATAL(zorv_array_expr_div_int(e, Wire(2)), "Indivisible division in Expr constant");
}

}  // namespace
}  // namespace zorv::test
