/// \file
/// A model as an integer linear program, for another solver, and the way back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "zorv/model.hpp"

namespace zorv {

/// An integer linear program: minimise the objective over columns within bounds and rows with
/// bounds on both sides. It is a copy and does not need the model any more, but for `solution`.
class Ilp {
 public:
  struct Entry {
    uint64_t column;
    Integer coeff;
  };
  /// A binary column is one of the model's binary variables; an integer column one of its integer
  /// variables, or a VarInt, whose bits it stands for.
  struct Column {
    bool is_integer;
    Integer lo, hi;     // both ends inside
    Integer objective;  // coefficient
  };
  /// An end without a value is no restriction.
  struct Row {
    std::vector<Entry> entries;
    std::optional<Integer> lo, hi;
  };

  /// Throws std::domain_error with the reason if the model is no linear program: a negative weight,
  /// an abs or relu term, a product in the objective. Aborts on constraints that are not linear and
  /// on allowed sets.
  explicit Ilp(const Model& model) : model_(model), handle_(zorv_model_ilp_build(model.handle())) {
    if (handle() == nullptr) throw std::domain_error(zorv_ilp_last_error());
  }

  uint64_t column_count() const { return zorv_ilp_ncols(handle()); }
  Column column(uint64_t c) const {
    CoeffWire lo{}, hi{};
    zorv_ilp_col_bounds(handle(), c, &lo, &hi);
    return {zorv_ilp_col_kind(handle(), c) != 0, Integer::adopt(lo), Integer::adopt(hi),
            detail::read_integer([&](CoeffWire* out) { zorv_ilp_obj(handle(), c, out); })};
  }
  uint64_t row_count() const { return zorv_ilp_nrows(handle()); }
  Row row(uint64_t r) const;
  /// What is added to the objective of every point.
  Integer constant() const {
    return detail::read_integer([&](CoeffWire* out) { zorv_ilp_obj_constant(handle(), out); });
  }

  /// The assignment of the model that a point of the program is, its energy computed.
  ///   values  [column_count()], each within the bounds of its column; aborts otherwise
  Sol solution(std::span<const Integer> values) const;

  zorv_ilp* handle() const { return handle_.get(); }

 private:
  struct Destroy {
    void operator()(zorv_ilp* handle) const { zorv_ilp_destroy(handle); }
  };

  void set_column(Sol& sol, uint64_t c, const Integer& value) const;

  Model model_;
  std::unique_ptr<zorv_ilp, Destroy> handle_;
};

inline Ilp::Row Ilp::row(uint64_t r) const {
  Row row;
  const uint64_t count = zorv_ilp_row_nnz(handle(), r);
  for (uint64_t j = 0; j < count; ++j) {
    row.entries.push_back(
        {zorv_ilp_row_col(handle(), r, j),
         detail::read_integer([&](CoeffWire* out) { zorv_ilp_row_coeff(handle(), r, j, out); })});
  }
  CoeffWire lo{}, hi{};
  uint32_t is_lo_free = 0, is_hi_free = 0;
  zorv_ilp_row_bounds(handle(), r, &lo, &hi, &is_lo_free, &is_hi_free);
  Integer low = Integer::adopt(lo), high = Integer::adopt(hi);
  if (is_lo_free == 0) row.lo = std::move(low);
  if (is_hi_free == 0) row.hi = std::move(high);
  return row;
}

inline Sol Ilp::solution(std::span<const Integer> values) const {
  Sol sol(model_);
  for (uint64_t c = 0; c < values.size(); ++c) set_column(sol, c, values[c]);
  sol.comp_energy();
  return sol;
}

inline void Ilp::set_column(Sol& sol, uint64_t c, const Integer& value) const {
  const int32_t number = zorv_ilp_col_model_var(handle(), c);
  if (number >= 0 && zorv_ilp_col_kind(handle(), c) == 0) {
    sol.set(model_.var(static_cast<uint64_t>(number)), value != 0);
  } else if (number >= 0) {
    sol.set(model_.int_var(static_cast<uint64_t>(number)), value);
  } else {
    std::vector<uint8_t> bits(zorv_ilp_col_nbits(handle(), c));
    const CoeffWire wire = value.wire();
    zorv_ilp_col_decode(handle(), c, &wire, bits.data());
    for (uint64_t b = 0; b < bits.size(); ++b) {
      sol.set(model_.var(zorv_ilp_col_bit_var(handle(), c, b)), bits[b] != 0);
    }
  }
}

}  // namespace zorv
