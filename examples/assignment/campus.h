// A quadratic assignment problem: offices, buildings, and what walking between them costs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Campus {
  uint64_t size = 0;             // offices, and as many buildings
  std::vector<int64_t> visits;   // [size * size] from office to office
  std::vector<int64_t> minutes;  // [size * size] from building to building
};

// Reads the size and the two matrices; "#" begins a comment. Ends the program on bad input.
Campus read_campus(const std::string& path);

// The cost of a layout from the definition: office i stands in building layout[i].
int64_t walking_time(const Campus& campus, const std::vector<uint64_t>& layout);
