#include "easysolver/groups.h"

#include <algorithm>
#include <numeric>

#include "common/literal.h"

namespace zorv::plugin::easy {

namespace {

constexpr size_t kLeastSet = 3;  // two variables: their flips do as well
constexpr uint64_t kMostCells = 1u << 26;

// The number of ones that a constraint asks for, or 0 if it asks for something else.
uint64_t asked_count(const BinaryConstraint& c) {
  if (!c.is_linear() || !c.is_required() || c.allowed.size() != 1) return 0;
  if (c.allowed[0].first != c.allowed[0].second || c.linear_count < kLeastSet) return 0;
  const Coeff& unit = c.body.coeffs[0];
  for (uint64_t t = 0; t < c.linear_count; ++t) {
    if (c.body.coeffs[t] != unit || is_complement(c.body.literals[t])) return 0;
  }
  const Coeff rest = c.allowed[0].first - c.body_constant;
  if (unit == 0 || rest % unit != 0) return 0;
  const Coeff count = rest / unit;
  return count > 0 && count < c.linear_count ? static_cast<uint64_t>(count) : 0;
}

// A variable is hopeless when one of its links of the largest coefficient is in no set, or when it
// is in more sets than its linear coefficient allows. No set with it will do, so none is looked for
// from there. Models of equal pairs that are not squares, such as independent sets, are through
// after a few looks that way; for all others there is a budget.
template <typename Num>
class CliqueSearch {
 public:
  explicit CliqueSearch(const PairTable<Num>& pairs)
      : pairs_(pairs),
        largest_(pairs.size()),
        most_squares_(pairs.size()),
        squares_(pairs.size()),
        is_hopeless_(pairs.size()),
        is_used_(pairs.links.size()),
        budget_(kWorkPerLink * (pairs.links.size() + kFreeLinks)) {
    for (uint32_t i = 0; i < pairs.size(); ++i) {
      if (pairs.linear[i] >= 0) continue;  // no set has that
      for (uint64_t k = pairs.head[i]; k < pairs.head[i + 1]; ++k) {
        largest_[i] = std::max(largest_[i], pairs.links[k].coeff);
      }
      if (largest_[i] > 0) most_squares_[i] = most_squares(i);
    }
  }

  Sets run() {
    Sets cliques;
    for (uint32_t i = 0; i < pairs_.size(); ++i) {
      for (uint64_t k = pairs_.head[i]; k < pairs_.head[i + 1] && is_hopeless_[i] == 0; ++k) {
        const uint32_t j = pairs_.links[k].variable;
        if (j < i || is_used_[k] != 0 || !is_strong(i, k)) continue;
        if (squares_[i] >= most_squares_[i]) {
          give_up(i);
          break;
        }
        std::vector<uint32_t> clique = grow(i, j);
        if (budget_ == 0) return with_matching_terms(std::move(cliques));
        if (clique.size() < kLeastSet) {
          is_hopeless_[i] = is_hopeless_[j] = 1;
          break;
        }
        mark(clique);
        cliques.push_back(std::move(clique));
      }
    }
    return with_matching_terms(std::move(cliques));
  }

 private:
  static constexpr uint64_t kWorkPerLink = 32, kFreeLinks = 1 << 12, kWorkOfLookUp = 8;

  // The most squares that the linear coefficient allows, by the condition below.
  uint32_t most_squares(uint32_t i) const {
    const EnergyOf<Num> largest = largest_[i];
    const EnergyOf<Num> most = (largest - 1 - 2 * EnergyOf<Num>(pairs_.linear[i])) / largest;
    return static_cast<uint32_t>(std::min<EnergyOf<Num>>(most, UINT32_MAX));
  }
  void spend(uint64_t work) const { budget_ -= std::min(budget_, work); }
  bool is_strong(uint32_t i, uint64_t k) const {
    const Num& coeff = pairs_.links[k].coeff;
    return coeff > 0 && coeff == largest_[i] && coeff == largest_[pairs_.links[k].variable];
  }
  // The place of the link from i to j, or the end of the links.
  uint64_t link(uint32_t i, uint32_t j) const {
    spend(kWorkOfLookUp);
    const auto begin = pairs_.links.begin() + static_cast<int64_t>(pairs_.head[i]);
    const auto end = pairs_.links.begin() + static_cast<int64_t>(pairs_.head[i + 1]);
    const auto at = std::lower_bound(begin, end, j, [](const auto& link, uint32_t variable) {
      return link.variable < variable;
    });
    return at != end && at->variable == j ? static_cast<uint64_t>(at - pairs_.links.begin())
                                          : pairs_.links.size();
  }
  bool is_free(uint32_t i, uint32_t j) const {
    const uint64_t k = link(i, j);
    return k < pairs_.links.size() && is_used_[k] == 0 && is_strong(i, k);
  }
  std::vector<uint32_t> grow(uint32_t i, uint32_t j) const {
    std::vector<uint32_t> clique = {i, j};
    spend(pairs_.head[i + 1] - pairs_.head[i]);
    for (uint64_t k = pairs_.head[i]; k < pairs_.head[i + 1] && budget_ != 0; ++k) {
      const uint32_t candidate = pairs_.links[k].variable;
      if (candidate == j || is_used_[k] != 0 || !is_strong(i, k)) continue;
      if (std::all_of(clique.begin() + 1, clique.end(),
                      [&](uint32_t member) { return is_free(member, candidate); })) {
        clique.push_back(candidate);
      }
    }
    return clique;
  }
  void mark(const std::vector<uint32_t>& clique) {
    for (const uint32_t i : clique) {
      ++squares_[i];
      for (const uint32_t j : clique) {
        if (i != j) is_used_[link(i, j)] = 1;
      }
    }
  }
  // What is left of the links of i will be in no set, nor so for the variables at their other ends.
  void give_up(uint32_t i) {
    for (uint64_t k = pairs_.head[i]; k < pairs_.head[i + 1]; ++k) {
      if (is_used_[k] == 0 && is_strong(i, k)) is_hopeless_[pairs_.links[k].variable] = 1;
    }
  }
  // In g squares of weight w, which give pairs of 2w, a variable has the linear coefficient -gw;
  // what the objective adds must be less than one of them, and no pair outside may weigh as much.
  // Without this, chance triangles of largest coefficients in dense models counted as sets.
  Sets with_matching_terms(Sets cliques) const {
    std::vector<uint32_t> partners(pairs_.size());
    for (const auto& clique : cliques) {
      for (const uint32_t i : clique) partners[i] += static_cast<uint32_t>(clique.size() - 1);
    }
    std::vector<uint8_t> is_plain(pairs_.size());
    for (uint32_t i = 0; i < pairs_.size(); ++i) {
      if (partners[i] == 0) continue;
      const EnergyOf<Num> rest = 2 * EnergyOf<Num>(pairs_.linear[i]) +
                                 EnergyOf<Num>(squares_[i]) * EnergyOf<Num>(largest_[i]);
      is_plain[i] = magnitude(rest) < largest_[i] && heavy_links(i) == partners[i];
    }
    std::erase_if(cliques, [&](const auto& clique) {
      return std::any_of(clique.begin(), clique.end(), [&](uint32_t i) { return !is_plain[i]; });
    });
    return cliques;
  }
  uint64_t heavy_links(uint32_t i) const {
    const auto begin = pairs_.links.begin();
    return static_cast<uint64_t>(std::count_if(
        begin + static_cast<int64_t>(pairs_.head[i]),
        begin + static_cast<int64_t>(pairs_.head[i + 1]),
        [&](const auto& link) { return link.coeff >= largest_[i] || -link.coeff >= largest_[i]; }));
  }

  const PairTable<Num>& pairs_;
  // By variable.
  std::vector<Num> largest_;
  std::vector<uint32_t> most_squares_, squares_;  // that may hold it, and that do
  std::vector<uint8_t> is_hopeless_;
  std::vector<uint8_t> is_used_;  // by link
  mutable uint64_t budget_;       // of work: links looked at
};

// Two colours for the sets, so that sets which share a variable differ; fails where a variable is
// in three sets or a cycle of sets is odd.
bool colour(const Sets& sets, const std::vector<std::vector<uint32_t>>& sets_of,
            std::vector<uint8_t>& colours) {
  constexpr uint8_t kUncoloured = 2;
  colours.assign(sets.size(), kUncoloured);
  std::vector<uint32_t> open;
  for (uint32_t first = 0; first < sets.size(); ++first) {
    if (colours[first] != kUncoloured) continue;
    colours[first] = 0;
    open.push_back(first);
    while (!open.empty()) {
      const uint32_t s = open.back();
      open.pop_back();
      for (const uint32_t i : sets[s]) {
        if (sets_of[i].size() > 2) return false;
        for (const uint32_t other : sets_of[i]) {
          if (other == s) continue;
          if (colours[other] == colours[s]) return false;
          if (colours[other] != kUncoloured) continue;
          colours[other] = colours[s] ^ 1;
          open.push_back(other);
        }
      }
    }
  }
  return true;
}

void add_row(Groups& groups, const std::vector<uint32_t>& set) {
  const bool is_disjoint = std::all_of(
      set.begin(), set.end(), [&](uint32_t i) { return groups.row_of[i] == Groups::kNone; });
  if (!is_disjoint) return;
  for (const uint32_t i : set) groups.row_of[i] = static_cast<uint32_t>(groups.rows.size());
  groups.rows.push_back(set);
}

void add_columns(Groups& groups, const Sets& sets, const std::vector<uint8_t>& colours) {
  const auto columns = static_cast<uint64_t>(std::count(colours.begin(), colours.end(), 1));
  if (columns == 0 || groups.rows.size() * columns > kMostCells) return;
  groups.columns = static_cast<uint32_t>(columns);
  groups.cells.assign(groups.rows.size() * columns, Groups::kNone);
  uint32_t column = 0;
  for (size_t s = 0; s < sets.size(); ++s) {
    if (colours[s] == 0) continue;
    for (const uint32_t i : sets[s]) {
      groups.column_of[i] = column;
      if (groups.row_of[i] != Groups::kNone) {
        groups.cells[groups.row_of[i] * columns + column] = i;
      }
    }
    ++column;
  }
}

}  // namespace

Sets declared_one_hots(const BinaryModel& model, std::vector<uint32_t>& counts) {
  Sets sets;
  for (const BinaryConstraint& c : model.constraints) {
    const uint64_t count = asked_count(c);
    if (count == 1) sets.push_back(c.body.literals);
    if (count > 1) counts.insert(counts.end(), c.body.literals.begin(), c.body.literals.end());
  }
  return sets;
}

template <typename Num>
Sets recognised_one_hots(const PairTable<Num>& pairs) {
  return CliqueSearch<Num>(pairs).run();
}
template Sets recognised_one_hots(const PairTable<int32_t>&);
template Sets recognised_one_hots(const PairTable<int64_t>&);
template Sets recognised_one_hots(const PairTable<Coeff>&);

Groups groups_of(const Sets& sets, uint32_t variables) {
  Groups groups;
  groups.row_of.assign(variables, Groups::kNone);
  groups.column_of.assign(variables, Groups::kNone);
  if (sets.empty()) return groups;
  std::vector<std::vector<uint32_t>> sets_of(variables);
  for (uint32_t s = 0; s < sets.size(); ++s) {
    for (const uint32_t i : sets[s]) sets_of[i].push_back(s);
  }
  std::vector<uint8_t> colours;
  const bool are_two_families = colour(sets, sets_of, colours);
  for (size_t s = 0; s < sets.size(); ++s) {
    if (!are_two_families || colours[s] == 0) add_row(groups, sets[s]);
  }
  if (are_two_families) add_columns(groups, sets, colours);
  return groups;
}

}  // namespace zorv::plugin::easy
