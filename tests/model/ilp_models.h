// Expressions for tests of integer linear programs, and the points of their models.
#pragma once

#include <random>

#include "integer/int_var.h"
#include "integer/varint.h"
#include "model/model_handles.h"
#include "support/random.h"

namespace zorv::test {

using Ilp = Owned<zorv_ilp, zorv_ilp_destroy>;

inline Handle declared(const ExprImpl& penalty) { return zorv_cons_mark(borrow(penalty)); }
inline Handle plus(const Handle& a, const zorv_expr* b) { return zorv_expr_clone_add_expr(a, b); }
inline Handle plus(const Handle& a, const ExprImpl& b) { return plus(a, borrow(b)); }
inline Handle times(const coeff_t& c, const Handle& e) {
  return zorv_expr_clone_mul_int(e, Wire(c));
}
inline Model model_of(const zorv_expr* e) {
  return zorv_model_create(Handle(zorv_expr_simplify_as_binary(e)));
}

// A random expression that mostly has a program, over a few variables of each kind.
class RandomExpr {
 public:
  explicit RandomExpr(Random& random) : random_(random) {
    for (int i = 0; i < 3; ++i) parts_.push_back(var(fresh()));
    parts_.push_back(make_varint(nullptr, small(), small()));
    parts_.push_back(make_varint(nullptr, -2, 3));
    const coeff_t lo = small();
    parts_.push_back(var(new_int_var("", lo, lo + 1 + static_cast<int>(below(random, 4)))));
  }

  Handle draw() {
    Handle e = linear();
    for (uint64_t n = below(random_, 3); n > 0; --n) {
      const coeff_t lo = small() - 4;
      e = plus(e, times(1 + below(random_, 3), between(linear(), lo, lo + below(random_, 9))));
    }
    for (uint64_t n = below(random_, 3); n > 0; --n) e = plus(e, declared(penalty()));
    return e;
  }

 private:
  coeff_t small() { return static_cast<int>(below(random_, 7)) - 3; }
  ExprImpl linear() {
    ExprImpl e(small());
    for (const ExprImpl& part : parts_) {
      if (below(random_, 2) == 0) add_poly(e, small() * part);
    }
    // Now and then a bit apart from its VarInt.
    if (below(random_, 3) == 0) add_poly(e, var(a_bit()));
    return e;
  }
  uint32_t a_bit() {
    const std::vector<uint32_t>& bits = varint_record(parts_[4].attr).vars;
    return bits[below(random_, bits.size())];
  }
  ExprImpl penalty() {
    std::vector<uint32_t> literals;
    for (size_t i = 0; i < 3; ++i) {
      if (below(random_, 2) == 0) literals.push_back(parts_[i].list.first.vars[0]);
    }
    if (literals.empty() || below(random_, 4) == 0) literals.push_back(a_bit());
    if (literals.size() > 2) literals[0] |= kNegationBit;
    return sum_of({term(1 + below(random_, 3), literals)});
  }

  Random& random_;
  std::vector<ExprImpl> parts_;
};

// The next assignment of the model in the order of a counter; false after the last.
inline bool advance(zorv_sol* sol, const zorv_model* m) {
  for (const uint32_t v : variables(m)) {
    zorv_sol_flip(sol, v);
    if (zorv_sol_get(sol, v) == 1) return true;
  }
  for (uint64_t i = 0; i < zorv_model_int_var_count(m); ++i) {
    const uint32_t atom = zorv_model_int_var_orig(m, i);
    const auto [lo, hi] = model_atom_bounds(*unwrap(m), i);
    const coeff_t value = written(zorv_sol_get_int, sol, atom);
    zorv_sol_set_int(sol, atom, Wire(value < hi ? coeff_t(value + 1) : lo));
    if (value < hi) return true;
  }
  return false;
}

}  // namespace zorv::test
