// Expressions as owned handles, and what their tag names as one line of text.
#pragma once

#include <string>
#include <utility>

#include "capi/handles.h"
#include "constraints/constraint_tables.h"
#include "support/support.h"

namespace zorv::test {

// An expression handle that is destroyed at the end of its scope.
class Handle {
 public:
  Handle(zorv_expr* e) : e_(e) {}
  Handle(ExprImpl e) : e_(wrap(std::move(e))) {}
  Handle(Handle&& other) noexcept : e_(std::exchange(other.e_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(e_, other.e_);
    return *this;
  }
  ~Handle() { zorv_expr_destroy(e_); }

  operator zorv_expr*() const { return e_; }
  uint32_t attr() const { return unwrap(e_).attr; }
  std::string polynomial() const { return text(unwrap(e_)); }

 private:
  zorv_expr* e_;
};

using zorv::unwrap;
inline ExprImpl& unwrap(const Handle& e) { return unwrap(static_cast<zorv_expr*>(e)); }

// "one [body]", "declared 1[body] -2[body] rest [polynomial]", "classic ...", "varint", "plain".
inline std::string describe(uint32_t attr) {
  if (attr == kPlainAttr) return "plain";
  if (is_varint_attr(attr)) return "varint";
  const auto body = [](const ExprExpr& constraint) { return "[" + text(*constraint.body) + "]"; };
  if (is_expr_expr_attr(attr)) return "one " + body(expr_expr(attr_index(attr)));
  const ConstraintSum sum = constraint_sum(attr_index(attr));
  std::string line = sum.declared ? "declared" : "classic";
  for (const auto& [constraint, weight] : items_of(sum)) {
    line += " " + weight->str() + body(*constraint);
  }
  if (has_remainder(sum)) line += " rest [" + text(remainder_of(sum)) + "]";
  return line;
}

inline std::string describe(const Handle& e) { return describe(e.attr()); }

inline Handle clone(const zorv_expr* e) { return zorv_expr_clone(e); }
inline Handle between(const ExprImpl& body, const coeff_t& lo, const coeff_t& hi) {
  return zorv_cons_between(borrow(body), Wire(lo), Wire(hi));
}
inline Handle classic(const ExprImpl& penalty, const ExprImpl& body) {
  return zorv_exprexprelem_create(borrow(penalty), borrow(body));
}

inline const char* const kMixText =
    "zorv::cons: cannot mix declared constraints with classic penalty-style constraints in one "
    "expression; wrap the classic part with zorv::cons(...) as well";
inline const char* const kZeroText =
    "zorv::cons: multiplying declared constraints by 0 would silently drop them";
inline std::string guard_text(const std::string& op) {
  return "zorv::cons: '" + op + "' is not allowed on an expression with declared constraints";
}

}  // namespace zorv::test
