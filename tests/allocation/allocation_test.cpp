// How often the library asks for memory, and how much of it stays in use. A program of its own: it
// counts every call of malloc, realloc and operator new that the library's code makes, by wrapping
// them when it is linked.
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

#include "core/arithmetic.h"
#include "core/simplify.h"
#include "zorv/zorv.h"

namespace {
long allocations = 0;
}

extern "C" {
void* __real_malloc(size_t bytes);
void* __real_realloc(void* block, size_t bytes);
void* __wrap_malloc(size_t bytes) {
  ++allocations;
  return __real_malloc(bytes);
}
void* __wrap_realloc(void* block, size_t bytes) {
  ++allocations;
  return __real_realloc(block, bytes);
}
}

void* operator new(size_t bytes) {
  ++allocations;
  if (void* block = __real_malloc(bytes)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }

namespace zorv {
namespace {

int failures = 0;

template <typename Work>
void expect_allocations(const char* what, long expected, Work work) {
  const long before = allocations;
  work();
  const long made = allocations - before;
  if (made == expected) return;
  std::printf("%s: %ld allocations, expected %ld\n", what, made, expected);
  ++failures;
}

void count_all() {
  expect_allocations("terms of degree up to 2, small coefficients", 0, [&] {
    TermImpl t((int64_t{1} << 62) - 1, VarList(1, 2));
    TermImpl copy = t;
    TermImpl moved = std::move(t);
    copy = moved;
    negate(copy.coeff);
    copy.coeff -= 1;  // the least small one
    std::swap(copy, moved);
  });
  expect_allocations("a large coefficient and its copies", 1, [] {
    const TermImpl t(int64_t{1} << 62, VarList());
    TermImpl copy = t;
    const TermImpl moved = std::move(copy);
    copy = moved;
  });
  constexpr uint32_t far = 1 << 15;  // its key has more than 16 bits
  expect_allocations("three and four literals of near variables", 0, [] {
    TermImpl t(1, VarList(1, 2));
    t.vars.append(far - 1);
    const TermImpl copy = t;
    VarList list = VarList::concat(VarList(1, 2), VarList(3, 2047));
  });
  expect_allocations("three and four literals with a far one", 2, [] {
    VarList(1, 2).append(far);
    VarList(1, 2).append(VarList(3, 2048));
  });
  expect_allocations("growing to degree 8", 1, [] {  // at degree 5; 9 comes next
    VarList list;
    for (uint32_t i = 0; i < 8; ++i) list.append(i);
  });
  expect_allocations("one-term expressions", 2, [] {
    zorv_expr* e = zorv_expr_create_var(1);
    zorv_expr* f = zorv_expr_clone(e);
    zorv_expr_destroy(e);
    zorv_expr_destroy(f);
  });
  ExprImpl sum(1);
  for (uint32_t i = 0; i < 50; ++i) sum.list.append(TermImpl(1, VarList(i)));
  expect_allocations("a square", 1, [&] { sqr(sum); });
  expect_allocations("a product", 1, [&] { mul(sum, sum); });
  expect_allocations("a copy", 1, [&] { ExprImpl copy = sum; });
  expect_allocations("a product with zero", 0, [&] { mul(sum, ExprImpl()); });
}

template <typename Work>
void expect_kept(const char* what, size_t limit, Work work) {
  const auto in_use = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
  const size_t before = in_use();
  work();
  const size_t after = in_use();
  if (after <= before + limit) return;
  std::printf("%s: %zu bytes kept, expected at most %zu\n", what, after - before, limit);
  ++failures;
}

zorv_expr* rule(uint32_t x, uint32_t y) {
  static uint64_t one = 1;
  const CoeffWire lo{0, 0, nullptr}, hi{1, 1, &one};
  zorv_expr* body = zorv_expr_create_add_var_var(x, y);
  zorv_expr* rule = zorv_cons_between(body, &lo, &hi);
  zorv_expr_destroy(body);
  return rule;
}

enum class Side { kLeft, kRight };
zorv_expr* rules(const uint32_t* vars, uint32_t n, Side new_side) {
  zorv_expr* sum = rule(vars[0], vars[1]);
  for (uint32_t i = 1; i + 1 < n; ++i) {
    zorv_expr* next = rule(vars[i], vars[i + 1]);
    zorv_expr* longer = new_side == Side::kRight ? zorv_expr_clone_add_expr(sum, next)
                                                 : zorv_expr_clone_add_expr(next, sum);
    zorv_expr_destroy(sum);
    zorv_expr_destroy(next);
    sum = longer;
  }
  return sum;
}

void model_and_sol(const zorv_expr* simplified) {
  zorv_model* model = zorv_model_create(simplified);
  zorv_sol_destroy(zorv_sol_create(model));
  zorv_model_destroy(model);
}

// What is built once more, and what shares all but its last constraint, costs next to nothing.
void measure_constraints() {
  constexpr uint32_t n = 2000;
  uint32_t vars[n];
  for (uint32_t& x : vars) x = zorv_new_var(nullptr);
  for (const Side side : {Side::kRight, Side::kLeft}) {
    expect_kept("constraints added one by one", 2 << 20,
                [&] { zorv_expr_destroy(rules(vars, n, side)); });
    expect_kept("the same once more", 100 << 10, [&] { zorv_expr_destroy(rules(vars, n, side)); });
  }
  zorv_expr* sum = rules(vars, n, Side::kRight);
  zorv_expr* simplified = zorv_expr_simplify_as_binary(sum);
  model_and_sol(simplified);
  expect_kept("models", 4 << 10, [&] {  // the allocator counts what it keeps for the next call
    for (int i = 0; i < 20; ++i) model_and_sol(simplified);
  });
  expect_kept("simplifications", 16 << 10, [&] {
    for (int i = 0; i < 20; ++i) zorv_expr_destroy(zorv_expr_simplify_as_binary(sum));
  });
  zorv_expr_destroy(sum);
  zorv_expr_destroy(simplified);
}

}  // namespace
}  // namespace zorv

int main() {
  zorv::count_all();
  zorv::measure_constraints();
  return zorv::failures == 0 ? 0 : 1;
}
