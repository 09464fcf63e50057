// From the terms of a model to the tables of one kind of fields.
#pragma once

#include <algorithm>
#include <optional>
#include <type_traits>
#include <vector>

#include "common/literal.h"
#include "easysolver/kernels.h"
#include "easysolver/source.h"
#include "easysolver/tables.h"

namespace zorv::plugin::easy {

namespace build {

template <typename Num, typename E>
Num narrowed(const E& value) {
  return static_cast<Num>(value);
}

// Joins the links of a row to the same variable.
template <typename Link>
Link* joined(Link* begin, Link* end) {
  const auto is_before = [](const Link& a, const Link& b) { return a.variable < b.variable; };
  if (!std::is_sorted(begin, end, is_before)) std::sort(begin, end, is_before);
  Link* last = begin;
  for (Link* link = begin; link != end; ++link) {
    if (last != begin && (last - 1)->variable == link->variable) {
      (last - 1)->coeff += link->coeff;
    } else {
      *last++ = *link;
    }
    if (last != begin && (last - 1)->coeff == 0 &&
        (link + 1 == end || (link + 1)->variable != link->variable)) {
      --last;
    }
  }
  return last;
}

// The use lists of a table of terms: head[i] .. head[i + 1] by variable, filled by a second pass.
inline void to_heads(std::vector<uint64_t>& counts) {
  uint64_t sum = 0;
  for (uint64_t& count : counts) sum += std::exchange(count, sum);
}

}  // namespace build

template <typename Num, typename E>
PairTable<Num> pair_table(const Source<E>& source) {
  using Link = typename PairTable<Num>::Link;
  const uint32_t n = source.size();
  PairTable<Num> table;
  table.linear.reserve(n);
  for (const E& coeff : source.linear) table.linear.push_back(build::narrowed<Num>(coeff));

  std::vector<uint64_t> next(n + 1);
  for (const auto& pair : source.pairs) ++next[pair.i], ++next[pair.j];
  build::to_heads(next);
  table.links.resize(2 * source.pairs.size());
  for (const auto& pair : source.pairs) {
    const Num coeff = build::narrowed<Num>(pair.coeff);
    table.links[next[pair.i]++] = {pair.j, coeff};
    table.links[next[pair.j]++] = {pair.i, coeff};
  }
  // The start of a row is now the end of the one before.
  Link* const links = table.links.data();
  Link* last = links;
  table.head.reserve(n + 1);
  for (uint32_t i = 0; i < n; ++i) {
    Link* const begin = links + (i > 0 ? next[i - 1] : 0);
    Link* const end = build::joined(begin, links + next[i]);
    last = begin == last ? end : std::move(begin, end, last);
    table.head.push_back(static_cast<uint64_t>(last - links));
  }
  table.links.resize(table.head.back());
  for (uint32_t i = 0; i < n; ++i) {
    table.links_on.push_back(std::any_of(
        links + table.head[i], links + table.head[i + 1],
        [&](const Link& l) { return l.variable > i && l.variable / kBlock == i / kBlock; }));
  }
  return table;
}

// The same table with narrow links, if it has room for them.
inline std::optional<PairTable<int32_t, NarrowLink>> narrow_table(const PairTable<int32_t>& pairs) {
  if (pairs.size() > uint32_t{UINT16_MAX} + 1) return std::nullopt;
  PairTable<int32_t, NarrowLink> table;
  table.links.reserve(pairs.links.size());
  for (const auto& link : pairs.links) {
    const NarrowLink narrow = {static_cast<uint16_t>(link.variable),
                               static_cast<int16_t>(link.coeff)};
    if (narrow.coeff != link.coeff) return std::nullopt;
    table.links.push_back(narrow);
  }
  table.linear = pairs.linear;
  table.head = pairs.head;
  table.links_on = pairs.links_on;
  return table;
}

inline DenseTable dense_table(const PairTable<int32_t>& pairs) {
  const uint32_t n = pairs.size();
  DenseTable table;
  table.linear = pairs.linear;
  table.stride = (n + 2 * kLanes - 1) / (2 * kLanes) * (2 * kLanes);
  const bool is_narrow = std::all_of(pairs.links.begin(), pairs.links.end(), [](const auto& link) {
    return link.coeff >= -INT16_MAX && link.coeff <= INT16_MAX;
  });
  const auto fill = [&](auto& rows) {
    rows.resize(n * table.stride);
    for (uint32_t i = 0; i < n; ++i) {
      for (uint64_t k = pairs.head[i]; k < pairs.head[i + 1]; ++k) {
        auto& cell = rows[i * table.stride + pairs.links[k].variable];
        cell = static_cast<std::remove_reference_t<decltype(cell)>>(pairs.links[k].coeff);
      }
    }
  };
  if (is_narrow) {
    fill(table.narrow);
  } else {
    fill(table.wide);
  }
  return table;
}

template <typename Num, typename E>
ProductTable<Num> product_table(const Source<E>& source) {
  ProductTable<Num> table;
  table.pairs = pair_table<Num>(source);
  for (const E& coeff : source.product_coeffs) {
    table.coeffs.push_back(build::narrowed<Num>(coeff));
  }
  table.term_head = source.product_head;
  table.literals = source.product_literals;
  table.use_head.assign(source.size() + 1, 0);
  for (const uint32_t literal : table.literals) ++table.use_head[variable_of(literal)];
  build::to_heads(table.use_head);
  table.uses.resize(table.literals.size());
  std::vector<uint64_t> next = table.use_head;
  for (uint64_t t = 0; t < table.coeffs.size(); ++t) {
    for (uint64_t k = table.term_head[t]; k < table.term_head[t + 1]; ++k) {
      const uint32_t literal = table.literals[k];
      table.uses[next[variable_of(literal)]++] = t << 1 | literal >> 31;
    }
  }
  return table;
}

}  // namespace zorv::plugin::easy
