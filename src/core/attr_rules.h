// What the core has to ask about the tag of an expression. The answers depend on the constraint
// tables and are defined in constraints/attr_rules.cpp.
#pragma once

#include <cstdint>
#include <functional>

#include "core/coeff.h"

namespace zorv {

struct ExprImpl;

// Whether the tag names a sum of declared constraints.
bool carries_declared(uint32_t attr);

// Aborts with "zorv::cons: '<op>' is not allowed ..." if the tag carries declared constraints.
void refuse_declared(uint32_t attr, const char* op);

// More than one expression names the sum from now on, so it may no longer be appended to in place.
// Does nothing for tags that name no sum.
void mark_shared(uint32_t attr);

// The tag of left + right, where `a` and `b` are their tags. `right` is read only if `b` is not a
// constraint tag, and `left` only if `a` is not; null stands for a polynomial that adds nothing.
// With `in_place` a sum named by `a` is extended itself unless it is shared. Aborts when declared
// and classic constraints meet.
uint32_t combine(uint32_t a, const ExprImpl* left, uint32_t b, const ExprImpl* right,
                 bool in_place);

// The tag of `factor` times an expression with tag `a`. Aborts when the factor 0 would drop
// declared constraints that are requirements.
uint32_t scale(uint32_t a, const coeff_t& factor);

// The tag of the sum of n expressions, at(0), at(1), ...: the constraints of all of them in order.
// Plain polynomials join the penalty among classic constraints. Aborts when declared and classic
// constraints meet.
uint32_t sum_attr(uint64_t n, const std::function<const ExprImpl&(uint64_t)>& at);

// A function from polynomials to polynomials, such as a simplification.
using Rewrite = std::function<ExprImpl(const ExprImpl&)>;

// The tag of a rewritten expression: bodies and remainder of the constraints that `attr` names are
// rewritten into new entries, which keep everything else. Plain and VarInt tags are kept.
uint32_t rewritten_attr(uint32_t attr, const Rewrite& rewrite);

}  // namespace zorv
