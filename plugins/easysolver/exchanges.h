// Moves of several flips at once: one variable of a row goes to 0 and another to 1, two rows of a
// permutation exchange their columns, two variables of a constraint exchange their values.
#pragma once

#include <array>
#include <cmath>

#include "easysolver/groups.h"
#include "easysolver/walk.h"

namespace zorv::plugin::easy {

template <typename Fields>
class Exchanges {
 public:
  using Energy = typename Walk<Fields>::Energy;

  explicit Exchanges(const Groups& groups) : groups_(&groups), ones_(groups.rows.size()) {}

  bool has_rows() const { return !groups_->rows.empty(); }
  bool empty() const { return groups_->rows.empty() && groups_->loose.empty(); }

  // Sets one variable in each row, as far as possible no two of a column, all others of rows to 0.
  void assign_randomly(Walk<Fields>& walk) {
    std::vector<uint8_t> is_taken(groups_->columns);
    std::vector<uint32_t> order(ones_.size());
    for (uint32_t r = 0; r < order.size(); ++r) {
      order[r] = r;
      std::swap(order[r], order[walk.random.below(r + 1)]);
    }
    for (const uint32_t r : order) {
      ones_[r] = draw_free(walk, r, is_taken);
      for (const uint32_t i : groups_->rows[r]) {
        if (walk.state.is_one(i) != (i == ones_[r])) walk.state.flip(i);
      }
      const uint32_t column = groups_->column_of[ones_[r]];
      if (column != Groups::kNone) is_taken[column] = 1;
    }
  }

  // As many trials as there are pairs of rows, or variables.
  void sweep(Walk<Fields>& walk, double temperature) {
    if (groups_->is_permutation()) {
      const uint64_t rows = groups_->rows.size();
      repeat(walk, std::min(rows * rows / 2, kMostTrials),
             [&] { return try_columns(walk, temperature); });
    } else if (has_rows()) {
      uint64_t members = 0;
      for (const auto& row : groups_->rows) members += row.size();
      repeat(walk, std::min(members, kMostTrials), [&] { return try_row(walk, temperature); });
    }
    if (!groups_->loose.empty()) {
      repeat(walk, std::min(groups_->loose.size(), kMostTrials),
             [&] { return try_loose(walk, temperature); });
    }
  }

  // The mean size of what the moves of the rows do to the energy.
  double mean_rise(Walk<Fields>& walk) {
    constexpr uint32_t kTrials = 256;
    double sum = 0;
    uint32_t count = 0;
    std::array<uint32_t, 4> four{};
    std::array<uint32_t, 2> two{};
    for (uint32_t k = 0; k < kTrials; ++k) {
      if (groups_->is_permutation() ? draw_columns(walk, four) : draw_row(walk, two)) {
        const Energy rise =
            groups_->is_permutation() ? walk.state.delta_of(four) : walk.state.delta_of(two);
        sum += std::abs(to_double(rise));
        ++count;
      }
    }
    return count == 0 ? 0 : sum / count;
  }

 private:
  static constexpr uint64_t kMostTrials = 1 << 16;

  template <typename Try>
  void repeat(Walk<Fields>& walk, uint64_t trials, const Try& attempt) {
    for (uint64_t k = 0; k < trials; ++k) {
      if (walk.must_stop(attempt())) return;
    }
  }

  uint32_t draw_free(Walk<Fields>& walk, uint32_t r, const std::vector<uint8_t>& is_taken) {
    const std::vector<uint32_t>& row = groups_->rows[r];
    const size_t start = walk.random.below(row.size());
    for (size_t k = 0; k < row.size(); ++k) {
      const uint32_t i = row[(start + k) % row.size()];
      const uint32_t column = groups_->column_of[i];
      if (column == Groups::kNone || is_taken[column] == 0) return i;
    }
    return row[start];
  }

  // A variable of the row that is 1; flips from outside may have moved it. False if there is none.
  bool find_one(const Walk<Fields>& walk, uint32_t r) {
    if (walk.state.is_one(ones_[r])) return true;
    for (const uint32_t i : groups_->rows[r]) {
      if (!walk.state.is_one(i)) continue;
      ones_[r] = i;
      return true;
    }
    return false;
  }

  bool draw_columns(Walk<Fields>& walk, std::array<uint32_t, 4>& flips) {
    const uint64_t rows = groups_->rows.size();
    if (rows < 2) return false;
    const uint32_t r = walk.random.below(rows);
    uint32_t s = walk.random.below(rows - 1);
    s += s >= r;
    if (!find_one(walk, r) || !find_one(walk, s)) return false;
    const uint32_t i = ones_[r], j = ones_[s];
    const uint32_t a = groups_->column_of[i], b = groups_->column_of[j];
    if (a == b || a == Groups::kNone || b == Groups::kNone) return false;
    const uint32_t k = groups_->cell(r, b), l = groups_->cell(s, a);
    if (k == Groups::kNone || l == Groups::kNone) return false;
    if (walk.state.is_one(k) || walk.state.is_one(l)) return false;
    flips = {i, j, k, l};
    return true;
  }
  bool draw_row(Walk<Fields>& walk, std::array<uint32_t, 2>& flips) {
    const uint32_t r = walk.random.below(groups_->rows.size());
    if (!find_one(walk, r)) return false;
    const uint32_t j = groups_->rows[r][walk.random.below(groups_->rows[r].size())];
    flips = {ones_[r], j};
    return !walk.state.is_one(j);
  }

  template <size_t kCount>
  bool accept(Walk<Fields>& walk, double temperature, const std::array<uint32_t, kCount>& flips) {
    const Energy rise = walk.state.delta_of(flips);
    if (to_double(rise) > temperature * walk.draws.draw(walk.random)) return false;
    for (const uint32_t i : flips) walk.state.flip(i);
    return true;
  }

  // Each returns the work that it was.
  uint64_t try_columns(Walk<Fields>& walk, double temperature) {
    std::array<uint32_t, 4> flips{};
    if (!draw_columns(walk, flips) || !accept(walk, temperature, flips)) return 4;
    ones_[groups_->row_of[flips[2]]] = flips[2];
    ones_[groups_->row_of[flips[3]]] = flips[3];
    return 4 * walk.state.fields().work_of_flip(flips[0]);
  }
  uint64_t try_row(Walk<Fields>& walk, double temperature) {
    std::array<uint32_t, 2> flips{};
    if (!draw_row(walk, flips) || !accept(walk, temperature, flips)) return 2;
    ones_[groups_->row_of[flips[1]]] = flips[1];
    return 2 * walk.state.fields().work_of_flip(flips[0]);
  }
  uint64_t try_loose(Walk<Fields>& walk, double temperature) {
    const std::vector<uint32_t>& loose = groups_->loose;
    const std::array<uint32_t, 2> flips = {loose[walk.random.below(loose.size())],
                                           loose[walk.random.below(loose.size())]};
    if (walk.state.is_one(flips[0]) == walk.state.is_one(flips[1])) return 2;
    return accept(walk, temperature, flips) ? 2 * walk.state.fields().work_of_flip(flips[0]) : 4;
  }

  const Groups* groups_;
  std::vector<uint32_t> ones_;  // by row
};

}  // namespace zorv::plugin::easy
