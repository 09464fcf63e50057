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

template <typename Num>
class CliqueSearch {
 public:
  explicit CliqueSearch(const PairTable<Num>& pairs)
      : pairs_(pairs), largest_(pairs.size()), is_used_(pairs.links.size()) {
    for (uint32_t i = 0; i < pairs.size(); ++i) {
      for (uint64_t k = pairs.head[i]; k < pairs.head[i + 1]; ++k) {
        if (k == pairs.head[i] || pairs.links[k].coeff > largest_[i]) {
          largest_[i] = pairs.links[k].coeff;
        }
      }
    }
    for (uint32_t i = 0; i < pairs.size(); ++i) {  // where no linear coefficient can match
      if (pairs.linear[i] >= 0) largest_[i] = 0;
    }
  }

  Sets run() {
    Sets cliques;
    for (uint32_t i = 0; i < pairs_.size(); ++i) {
      for (uint64_t k = pairs_.head[i]; k < pairs_.head[i + 1]; ++k) {
        if (pairs_.links[k].variable < i || is_used_[k] != 0 || !is_strong(i, k)) continue;
        std::vector<uint32_t> clique = grow(i, pairs_.links[k].variable);
        mark(clique);
        if (clique.size() >= kLeastSet) cliques.push_back(std::move(clique));
      }
    }
    return with_matching_terms(std::move(cliques));
  }

 private:
  bool is_strong(uint32_t i, uint64_t k) const {
    const Num& coeff = pairs_.links[k].coeff;
    return coeff > 0 && coeff == largest_[i] && coeff == largest_[pairs_.links[k].variable];
  }
  // The place of the link from i to j, or the end of the links.
  uint64_t link(uint32_t i, uint32_t j) const {
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
    for (uint64_t k = pairs_.head[i]; k < pairs_.head[i + 1]; ++k) {
      const uint32_t candidate = pairs_.links[k].variable;
      if (candidate == j || is_used_[k] != 0 || !is_strong(i, k)) continue;
      if (std::all_of(clique.begin(), clique.end(),
                      [&](uint32_t member) { return is_free(member, candidate); })) {
        clique.push_back(candidate);
      }
    }
    return clique;
  }
  void mark(const std::vector<uint32_t>& clique) {
    for (const uint32_t i : clique) {
      for (const uint32_t j : clique) {
        if (i != j) is_used_[link(i, j)] = 1;
      }
    }
  }
  // In g squares of weight w, which give pairs of 2w, a variable has the linear coefficient -gw;
  // what the objective adds must be less than one of them, and no pair outside may weigh as much.
  // Without this, chance triangles of largest coefficients in dense models counted as sets.
  Sets with_matching_terms(Sets cliques) const {
    std::vector<uint32_t> squares(pairs_.size()), partners(pairs_.size());
    for (const auto& clique : cliques) {
      for (const uint32_t i : clique) {
        ++squares[i];
        partners[i] += static_cast<uint32_t>(clique.size()) - 1;
      }
    }
    const auto is_plain = [&](uint32_t i) {
      const Coeff rest = 2 * Coeff(pairs_.linear[i]) + squares[i] * Coeff(largest_[i]);
      return magnitude(rest) < Coeff(largest_[i]) && heavy_links(i) == partners[i];
    };
    std::erase_if(cliques, [&](const auto& clique) {
      return !std::all_of(clique.begin(), clique.end(), is_plain);
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
  std::vector<Num> largest_;      // by variable
  std::vector<uint8_t> is_used_;  // by link
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
