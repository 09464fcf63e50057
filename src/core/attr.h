// The bit layout of an expression's tag word `attr`. No mask of it is written anywhere else.
//
//   0xFFFFFFFF      plain
//   top bits 0x     a VarInt value; the number is its record in VarIntSet
//   top bits 10     one constraint; bits 29-0 index ExprExprSet
//   top bits 11     a sum of constraints; bits 29-0 index ConstraintSumSet
//
// 0xFFFFFFFF has the top bits of a sum, so every question excludes it first.
#pragma once

#include <cstdint>

namespace zorv {

inline constexpr uint32_t kPlainAttr = 0xFFFFFFFFu;
inline constexpr uint32_t kExprExprTag = 0x80000000u;
inline constexpr uint32_t kSumTag = 0xC0000000u;
inline constexpr uint32_t kAttrIndexMask = 0x3FFFFFFFu;
inline constexpr uint32_t kMaxConstraintIndex = 0x3FFFFFFEu;
inline constexpr uint32_t kMaxVarIntIndex = 0x7FFFFFFFu;

inline constexpr bool is_varint_attr(uint32_t attr) { return attr < kExprExprTag; }
inline constexpr bool is_expr_expr_attr(uint32_t attr) {
  return attr >= kExprExprTag && attr < kSumTag;
}
inline constexpr bool is_sum_attr(uint32_t attr) { return attr >= kSumTag && attr != kPlainAttr; }
inline constexpr bool is_constraint_attr(uint32_t attr) {
  return attr >= kExprExprTag && attr != kPlainAttr;
}
inline constexpr uint32_t attr_index(uint32_t attr) { return attr & kAttrIndexMask; }

}  // namespace zorv
