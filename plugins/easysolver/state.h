// An assignment with all that is kept beside it, so that the rise of the energy by any flip is at
// hand. Energies here are relative to the model's constant, in the units of the tables.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "easysolver/bodies.h"
#include "easysolver/kernels.h"

namespace zorv::plugin::easy {

template <typename FieldsOf>
class State {
 public:
  using Fields = FieldsOf;
  using Number = typename Fields::Number;
  using Energy = EnergyOf<Number>;

  // `at_zeros` is the energy of the polynomial with all variables 0.
  State(const typename Fields::Table& table, const BodyTable<Energy>& bodies, Energy at_zeros)
      : fields_(table), bodies_(bodies), x_(table.size()), at_zeros_(std::move(at_zeros)) {
    clear();
  }

  uint32_t size() const { return static_cast<uint32_t>(x_.size()); }
  const uint8_t* x() const { return x_.data(); }
  bool is_one(uint32_t i) const { return x_[i] != 0; }
  const Energy& energy() const { return energy_; }
  const Fields& fields() const { return fields_; }
  const Bodies<Energy>& bodies() const { return bodies_; }
  uint64_t flips() const { return flips_; }

  Energy delta(uint32_t i) const {
    Energy rise = fields_.delta(i);
    if (!bodies_.empty()) rise += bodies_.delta(i, is_one(i));
    return rise;
  }

  // Whether the rises by all flips lie in two arrays of 32-bit numbers, as the kernels want them.
  bool has_vectors() const { return std::is_same_v<Number, int32_t> && bodies_.empty(); }
  // What it costs to look at the rises by all flips, in touched numbers.
  uint64_t work_of_look() const {
    return has_vectors() ? size() / kLanes + 1 : size() + 2 * bodies_.uses();
  }

  // The rise by several flips of different variables together.
  template <size_t kCount>
  Energy delta_of(const std::array<uint32_t, kCount>& flips) {
    if constexpr (requires { fields_.link(0, 0); }) {
      if (bodies_.empty()) return delta_of_pairs(flips);
      if (kCount == 2 && !bodies_.has_products()) {
        return delta_of_pairs(flips) +
               bodies_.delta_of_two(flips[0], is_one(flips[0]), flips[1], is_one(flips[1]));
      }
    }
    const Energy before = energy_;
    for (const uint32_t i : flips) flip(i);
    Energy rise = energy_ - before;
    for (const uint32_t i : flips) flip(i);
    return rise;
  }

  void flip(uint32_t i) {
    energy_ += fields_.delta(i);
    fields_.flip(i);
    if (!bodies_.empty()) energy_ += bodies_.flip(i, is_one(i));
    x_[i] ^= 1;
    ++flips_;
  }

  void move_to(const uint8_t* x) {
    for (uint32_t i = 0; i < size(); ++i) {
      if (x_[i] != x[i]) flip(i);
    }
  }

  // Penalties count with these weights from now on.
  void set_weights(const std::vector<Energy>& weights) { energy_ += bodies_.set_weights(weights); }

  void clear() {
    fields_.clear();
    energy_ = at_zeros_ + bodies_.clear();
    std::fill(x_.begin(), x_.end(), 0);
  }

 private:
  template <size_t kCount>
  Energy delta_of_pairs(const std::array<uint32_t, kCount>& flips) const {
    Energy rise = 0;
    for (size_t a = 0; a < kCount; ++a) {
      rise += fields_.delta(flips[a]);
      for (size_t b = 0; b < a; ++b) {
        const Energy both = fields_.link(flips[a], flips[b]);
        rise += is_one(flips[a]) == is_one(flips[b]) ? both : Energy(-both);
      }
    }
    return rise;
  }

  Fields fields_;
  Bodies<Energy> bodies_;
  std::vector<uint8_t> x_;
  Energy at_zeros_;
  Energy energy_ = 0;
  uint64_t flips_ = 0;
};

}  // namespace zorv::plugin::easy
