// LiteralMap: what belongs to a literal, for loops that ask for every literal of every term.
//
// A table indexed by the literal where the keys lie close enough together, as variables made in
// blocks do, and a hash map for what lies scattered. The values stay with the caller.
#pragma once

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace zorv {

template <typename T>
class LiteralMap {
 public:
  // Maps literals[i] to value_at(i), a pointer that is not null, for i below n. Keys are taken as
  // they stand, negation and all; of two equal ones the later counts.
  template <typename ValueAt>
  LiteralMap(const uint32_t* literals, uint64_t n, ValueAt value_at) {
    lay_out(literals, n);
    for (uint64_t i = 0; i < n; ++i) {
      Table& table = tables_[kind(literals[i])];
      if (table.values.empty()) {
        scattered_[literals[i]] = value_at(i);
      } else {
        table.values[literals[i] - table.lowest] = value_at(i);
      }
    }
  }

  // Null if the literal is no key.
  const T* find(uint32_t literal) const {
    const Table& table = tables_[kind(literal)];
    const uint32_t at = literal - table.lowest;
    if (at < table.values.size()) return table.values[at];
    if (scattered_.empty()) return nullptr;
    const auto found = scattered_.find(literal);
    return found == scattered_.end() ? nullptr : found->second;
  }

 private:
  // Plain and negated, variables and atoms: four runs of numbers that start anew.
  static constexpr uint32_t kKinds = 4;
  static uint32_t kind(uint32_t literal) { return literal >> 30; }
  // A table may have this many entries for each key, and some more, before a hash map is smaller.
  static constexpr uint64_t kEntriesPerKey = 8;
  static constexpr uint64_t kSpareEntries = 1024;

  struct Table {
    uint32_t lowest = 0;
    std::vector<const T*> values;
  };

  void lay_out(const uint32_t* literals, uint64_t n) {
    struct Range {
      uint32_t lowest = UINT32_MAX;
      uint32_t highest = 0;
      uint64_t keys = 0;
    } ranges[kKinds];
    for (uint64_t i = 0; i < n; ++i) {
      Range& range = ranges[kind(literals[i])];
      range.lowest = std::min(range.lowest, literals[i]);
      range.highest = std::max(range.highest, literals[i]);
      ++range.keys;
    }
    for (uint32_t k = 0; k < kKinds; ++k) {
      const Range& range = ranges[k];
      if (range.keys == 0) continue;
      const uint64_t entries = uint64_t{range.highest} - range.lowest + 1;
      if (entries > kEntriesPerKey * range.keys + kSpareEntries) continue;
      tables_[k].lowest = range.lowest;
      tables_[k].values.assign(entries, nullptr);
    }
  }

  Table tables_[kKinds];
  std::unordered_map<uint32_t, const T*> scattered_;
};

}  // namespace zorv
