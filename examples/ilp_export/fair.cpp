#include "fair.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "user_error.h"

namespace {

constexpr int64_t kMost = 1'000'000;  // of any number in a file; no sum of them leaves 64 bits

using Words = std::vector<std::string>;

int64_t number(const std::string& word) {
  int64_t value = 0;
  const char* end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, value);
  if (error != std::errc() || stop != end || value < -kMost || value > kMost) {
    throw UserError("'" + word + "' is not a whole number in range");
  }
  return value;
}

void expect_count(const Words& words, std::size_t values) {
  if (words.size() == values + 1) return;
  throw UserError("'" + words[0] + "' needs " + std::to_string(values) + " values");
}

void read_line(const Words& words, Fair& fair) {
  const std::string& keyword = words[0];
  const auto read = [&](const std::vector<int64_t*>& values) {
    expect_count(words, values.size());
    for (std::size_t i = 0; i < values.size(); ++i) *values[i] = number(words[i + 1]);
  };
  if (keyword == "van") {
    read({&fair.van_kilograms});
  } else if (keyword == "trailer") {
    read({&fair.trailer_kilograms, &fair.trailer_cost, &fair.trailer_count});
  } else if (keyword == "shift") {
    read({&fair.shift_hours, &fair.least_change, &fair.most_change, &fair.hour_cost});
    if (fair.least_change >= fair.most_change) throw UserError("the change of a shift has no room");
  } else if (keyword == "choose") {
    read({&fair.fewest, &fair.most});
  } else if (keyword == "item") {
    expect_count(words, 4);
    fair.items.push_back({words[1], number(words[2]), number(words[3]), number(words[4])});
  } else if (keyword == "conflict") {
    expect_count(words, 2);
    fair.conflicts.emplace_back(find_item(fair, words[1]), find_item(fair, words[2]));
  } else {
    throw UserError("unknown keyword '" + keyword + "'");
  }
}

}  // namespace

Fair read_fair(const std::string& path) {
  std::ifstream file(path);
  if (!file || std::filesystem::is_directory(path)) throw UserError("cannot read '" + path + "'");
  Fair fair;
  int line_number = 0;
  for (std::string line; std::getline(file, line);) {
    ++line_number;
    std::istringstream text(line.substr(0, line.find('#')));
    Words words;
    for (std::string word; text >> word;) words.push_back(word);
    try {
      if (!words.empty()) read_line(words, fair);
    } catch (const UserError& error) {
      throw UserError(path + ":" + std::to_string(line_number) + ": " + error.what());
    }
  }
  if (fair.items.empty()) throw UserError(path + ": there are no items");
  return fair;
}

std::size_t find_item(const Fair& fair, const std::string& name) {
  const auto item = std::find_if(fair.items.begin(), fair.items.end(),
                                 [&](const Item& candidate) { return candidate.name == name; });
  if (item == fair.items.end()) throw UserError("there is no item '" + name + "'");
  return static_cast<std::size_t>(item - fair.items.begin());
}
