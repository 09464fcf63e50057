// A craft fair: which goods to take, how many trailers to hire and how long the helpers stay.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

struct Item {
  std::string name;
  int64_t profit;
  int64_t kilograms;
  int64_t hours;
};

struct Fair {
  int64_t van_kilograms = 0;
  int64_t trailer_kilograms = 0, trailer_cost = 0, trailer_count = 0;
  int64_t shift_hours = 0, least_change = -1, most_change = 0, hour_cost = 0;
  int64_t fewest = 0, most = 0;  // items to take
  std::vector<Item> items;
  std::vector<std::pair<std::size_t, std::size_t>> conflicts;  // not both
};

// Reads lines of a keyword and its values, in any order; '#' starts a comment. Throws UserError,
// with the line number, on anything else.
Fair read_fair(const std::string& path);

// The place of an item; throws UserError if there is none of that name.
std::size_t find_item(const Fair& fair, const std::string& name);
