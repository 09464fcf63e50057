#include <algorithm>
#include <numeric>
#include <utility>

#include "core/fatal.h"
#include "core/literal.h"
#include "integer/varint.h"
#include "model/ilp.h"

namespace zorv {

namespace {

// Where a variable occurs: its coefficient in the objective and those in native records that are
// not 0, by ascending record.
struct LinearUse {
  coeff_t objective;
  std::vector<std::pair<size_t, coeff_t>> rows;
};

class LinearUses {
 public:
  explicit LinearUses(const ModelImpl& m)
      : variables_(m.variables.size()), atoms_(m.int_atoms.size()) {
    if (m.max_degree > 0) add_objective(m.term_vars[0], m.term_coeffs[0]);
    for (size_t row = 0; row < m.native_cons.size(); ++row) add_row(row, m.native_cons[row]);
  }

  const LinearUse& variable(size_t i) const { return variables_[i]; }
  const LinearUse& atom(size_t i) const { return atoms_[i]; }

 private:
  LinearUse& of(uint32_t literal) {
    return is_atom(literal) ? atoms_[index_of(literal)] : variables_[literal];
  }
  // Terms of higher degree are penalty terms, 0 in every feasible point.
  void add_objective(const std::vector<uint32_t>& literals, const std::vector<coeff_t>& coeffs) {
    for (size_t t = 0; t < coeffs.size(); ++t) of(literals[t]).objective += coeffs[t];
  }
  void add_row(size_t row, const NativeCons& cons) {
    for (size_t j = 0; j < cons.vars.size(); ++j) {
      if (!is_zero(cons.coeffs[j])) of(cons.vars[j]).rows.emplace_back(row, cons.coeffs[j]);
    }
  }

  std::vector<LinearUse> variables_, atoms_;
};

bool is_multiple(const LinearUse& use, const coeff_t& factor, const LinearUse& unit) {
  if (use.objective != factor * unit.objective) return false;
  if (is_zero(factor)) return use.rows.empty();
  return std::equal(use.rows.begin(), use.rows.end(), unit.rows.begin(), unit.rows.end(),
                    [&](const auto& entry, const auto& unit_entry) {
                      return entry.first == unit_entry.first &&
                             entry.second == factor * unit_entry.second;
                    });
}

enum class Role : uint8_t { kFree, kInPenalty, kCollapsed };

// Every product of the model is a penalty term, so these are all variables that occur in one.
std::vector<Role> initial_roles(const ModelImpl& m) {
  std::vector<Role> roles(m.variables.size(), Role::kFree);
  for (const uint32_t literal : m.remainder_vars) roles[identity_of(literal)] = Role::kInPenalty;
  return roles;
}

bool is_collapsible(const VarIntRecord& record, const std::vector<uint32_t>& bits,
                    const LinearUses& uses, const std::vector<Role>& roles) {
  const auto is_free = [&](uint32_t bit) { return bit != kNoLiteral && roles[bit] == Role::kFree; };
  if (bits.empty() || !std::all_of(bits.begin(), bits.end(), is_free)) return false;
  // The use of the first bit is the use of the column, so its own coefficient has to be 1 unless
  // it is used nowhere: it is tested like the others.
  const LinearUse& unit = uses.variable(bits[0]);
  for (size_t k = 0; k < bits.size(); ++k) {
    if (!is_multiple(uses.variable(bits[k]), record.coeffs[k], unit)) return false;
  }
  return true;
}

std::vector<IlpColumn> collapse_varints(const ModelImpl& m, const LinearUses& uses,
                                        std::vector<Role>& roles) {
  std::vector<IlpColumn> columns;
  const auto record_count = static_cast<uint32_t>(varint_record_count());
  for (uint32_t i = 0; i < record_count; ++i) {
    const VarIntRecord& record = varint_record(i);
    std::vector<uint32_t> bits;
    for (const uint32_t literal : record.vars) bits.push_back(model_var_index(m, literal));
    if (!is_collapsible(record, bits, uses, roles)) continue;
    for (const uint32_t bit : bits) roles[bit] = Role::kCollapsed;
    columns.push_back(
        {kIntegerColumn, -1, record.min, record.max, std::move(bits), record.coeffs, record.min});
  }
  return columns;
}

// The rows of the native records, as yet without entries.
std::vector<IlpRow> empty_rows(const ModelImpl& m) {
  std::vector<IlpRow> rows(m.native_cons.size());
  for (size_t r = 0; r < rows.size(); ++r) {
    const NativeCons& cons = m.native_cons[r];
    rows[r].lo = cons.lo - cons.body_constant;
    rows[r].hi = cons.hi - cons.body_constant;
  }
  return rows;
}

// Bits times coefficients are the column less its base, which goes to the constants.
void append_column(IlpColumn column, const LinearUse& use, IlpModel& ilp) {
  const auto number = static_cast<uint32_t>(ilp.cols.size());
  for (const auto& [r, coeff] : use.rows) {
    IlpRow& row = ilp.rows[r];
    row.cols.push_back(number);
    row.coeffs.push_back(coeff);
    row.lo += coeff * column.base;
    row.hi += coeff * column.base;
  }
  ilp.obj_constant -= use.objective * column.base;
  ilp.obj.push_back(use.objective);
  ilp.cols.push_back(std::move(column));
}

void set_free_flags(const std::vector<IlpColumn>& columns, IlpRow& row) {
  coeff_t least, most;
  for (size_t j = 0; j < row.cols.size(); ++j) {
    const coeff_t at_lo = row.coeffs[j] * columns[row.cols[j]].lo;
    const coeff_t at_hi = row.coeffs[j] * columns[row.cols[j]].hi;
    least += std::min(at_lo, at_hi);
    most += std::max(at_lo, at_hi);
  }
  row.lo_free = row.lo <= least;
  row.hi_free = row.hi >= most;
}

// At most all literals but one are true, where a negated one counts as 1 - x.
IlpRow penalty_row(std::span<const uint32_t> literals, const std::vector<uint32_t>& column_of) {
  IlpRow row;
  row.hi = static_cast<int64_t>(literals.size()) - 1;
  row.lo_free = 1;
  for (const uint32_t literal : literals) {
    row.cols.push_back(column_of[identity_of(literal)]);
    row.coeffs.emplace_back(is_negated(literal) ? -1 : 1);
    row.hi -= is_negated(literal) ? 1 : 0;
  }
  return row;
}

}  // namespace

std::optional<IlpModel> build_ilp(const ModelImpl& m, std::string& refusal) {
  refusal = ilp_refusal(m);
  if (!refusal.empty()) return std::nullopt;
  return make_ilp(m);
}

IlpModel make_ilp(const ModelImpl& m) {
  const LinearUses uses(m);
  std::vector<Role> roles = initial_roles(m);
  std::vector<IlpColumn> collapsed = collapse_varints(m, uses, roles);

  IlpModel ilp = {{}, {}, m.constant, empty_rows(m)};
  std::vector<uint32_t> column_of(m.variables.size(), kNoLiteral);
  for (uint32_t i = 0; i < m.variables.size(); ++i) {
    if (roles[i] == Role::kCollapsed) continue;
    column_of[i] = static_cast<uint32_t>(ilp.cols.size());
    append_column({kBinaryColumn, static_cast<int32_t>(i), 0, 1, {}, {}, 0}, uses.variable(i), ilp);
  }
  for (IlpColumn& column : collapsed) {
    const LinearUse& use = uses.variable(column.bit_vars[0]);
    append_column(std::move(column), use, ilp);
  }
  for (size_t i = 0; i < m.int_atoms.size(); ++i) {
    append_column({kIntegerColumn, static_cast<int32_t>(i), m.int_lo[i], m.int_hi[i], {}, {}, 0},
                  uses.atom(i), ilp);
  }
  for (IlpRow& row : ilp.rows) set_free_flags(ilp.cols, row);
  for (uint64_t t = 0; t < m.remainder_coeffs.size(); ++t) {
    ilp.rows.push_back(penalty_row(remainder_term(m, t), column_of));
  }
  return ilp;
}

void decode_column(const IlpColumn& column, const coeff_t& value, uint8_t* bits) {
  const std::vector<coeff_t>& coeffs = column.bit_coeffs;
  // Among equal coefficients the last goes first, as in decompose().
  std::vector<size_t> order(coeffs.size());
  std::iota(order.rbegin(), order.rend(), size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return coeffs[a] > coeffs[b]; });
  coeff_t rest = value - column.base;
  for (const size_t k : order) {
    bits[k] = coeffs[k] <= rest;
    if (bits[k] != 0) rest -= coeffs[k];
  }
  if (!is_zero(rest)) fatal("zorv_ilp_col_decode: integer value out of the encoded range");
}

}  // namespace zorv
