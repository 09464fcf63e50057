// How often the library asks for memory. A program of its own: it counts every call of malloc,
// realloc and operator new that the library's code makes, by wrapping them when it is linked.
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
  const coeff_t two_limbs = (coeff_t(1) << 128) - 1;
  const coeff_t three_limbs = coeff_t(1) << 128;
  expect_allocations("terms of degree up to 2, two limbs", 0, [&] {
    TermImpl t(two_limbs, VarList(1, 2));
    TermImpl copy = t;
    TermImpl moved = std::move(t);
    copy = moved;
    negate(copy.coeff);
    std::swap(copy, moved);
  });
  expect_allocations("a third literal", 1, [] { TermImpl(1, VarList(1, 2)).vars.append(3); });
  expect_allocations("a third limb", 1, [&] { TermImpl copy(three_limbs, VarList()); });
  expect_allocations("growing to degree 8", 3, [] {  // at degrees 3, 4 and 6; 8 comes next
    VarList list;
    for (uint32_t i = 0; i < 7; ++i) list.append(i);
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

}  // namespace
}  // namespace zorv

int main() {
  zorv::count_all();
  return zorv::failures == 0 ? 0 : 1;
}
