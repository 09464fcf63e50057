// The integer linear program of a model, for solvers that take nothing else: columns with bounds, a
// linear objective, and rows with two-sided bounds.
//
// Constraints are hard there, so weights play no part. A declared linear constraint is a row. A
// term of the free-form penalty is a row as well, one that its literals cannot all satisfy: the
// term is 0 in every feasible point, and so may be missing from the objective whatever its degree.
// The energy of a feasible point is therefore its objective.
//
// A VarInt is collapsed to one integer column if objective and rows see its bits only in the
// proportions of its coefficients, that is, as the value base + sum of bit_coeffs * bits.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "model/model.h"

namespace zorv {

inline constexpr uint8_t kBinaryColumn = 0;
inline constexpr uint8_t kIntegerColumn = 1;

struct IlpColumn {
  uint8_t kind;
  int32_t model_var;  // number of the variable or of the atom in the model, -1 if collapsed
  coeff_t lo, hi;
  std::vector<uint32_t> bit_vars;   // numbers of the collapsed bits in the model
  std::vector<coeff_t> bit_coeffs;  // parallel to `bit_vars`
  coeff_t base;                     // value when all bits are 0
};

struct IlpRow {
  std::vector<uint32_t> cols;   // ascending, unless the row stands for a penalty term
  std::vector<coeff_t> coeffs;  // parallel to `cols`, none of them 0
  coeff_t lo, hi;
  uint8_t lo_free = 0;  // no point within the column bounds falls below `lo`
  uint8_t hi_free = 0;
};

// Columns: the binary variables that are not collapsed, the collapsed VarInts, the atoms. Rows: the
// native records, the penalty terms.
struct IlpModel {
  std::vector<IlpColumn> cols;
  std::vector<coeff_t> obj;  // [cols]
  coeff_t obj_constant;
  std::vector<IlpRow> rows;
};

// The program, or nothing and the reason in `refusal`, which is otherwise left empty. Aborts on a
// native record with a nonlinear body or a set of allowed values.
std::optional<IlpModel> build_ilp(const ModelImpl& m, std::string& refusal);

// The two halves of it: why the model has no program (the aborts are here), or an empty text; and
// the program of a model that has one.
std::string ilp_refusal(const ModelImpl& m);
IlpModel make_ilp(const ModelImpl& m);

// The bits with which a column has `value`, taken greedily by descending coefficient. Aborts if
// something is left; a column without bits has its base only, 0.
//   bits  [column.bit_vars] each 0 or 1
void decode_column(const IlpColumn& column, const coeff_t& value, uint8_t* bits);

// The literals of one term of the free-form penalty.
inline std::span<const uint32_t> remainder_term(const ModelImpl& m, uint64_t t) {
  const uint32_t* literals = m.remainder_vars.data();
  return {literals + m.remainder_head[t], literals + m.remainder_head[t + 1]};
}

}  // namespace zorv
