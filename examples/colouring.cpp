// Colours a map, so that states with a border in common differ: one integer variable for the colour
// of each state, and the difference of two neighbours must not be 0. Four colours do for any map;
// that three do not for this one is found out by looking at all ways to use them.
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>
#include <zorv/zorv.hpp>

using namespace zorv;

struct Map {
  std::vector<std::string> states;
  std::vector<std::pair<std::string, std::string>> borders;
};

// Lines of a state and neighbours, where each state has some; "#" begins a comment.
Map read_map(std::istream& file) {
  Map map;
  for (std::string line, state, neighbour; std::getline(file, line);) {
    std::istringstream words(line.substr(0, line.find('#')));
    if (words >> state) map.states.push_back(state);
    while (words >> neighbour) map.borders.emplace_back(state, neighbour);
  }
  return map;
}

using Colours = std::map<std::string, IntVar>;

// Colours are numbers from 1 to `count`.
Colours new_colours(const Map& map, int count) {
  Colours colours;
  for (const std::string& state : map.states) colours[state] = int_var(state, 1, count);
  return colours;
}

// The energy is the number of borders between equal colours.
Model borders_between_equals(const Map& map, const Colours& colours, int count) {
  Expr rules;
  for (const auto& [a, b] : map.borders) {
    rules += cons(colours.at(a) - colours.at(b), equal({{1 - count, -1}, {1, count - 1}}));
  }
  return Model(rules);
}

void print(const Map& map, const Colours& colours, const Sol& sol) {
  const std::string names[] = {"red   ", "yellow", "green ", "blue  "};
  for (int colour = 1; colour <= 4; ++colour) {
    std::cout << names[colour - 1];
    for (const std::string& state : map.states) {
      if (sol[colours.at(state)] == colour) std::cout << " " << state;
    }
    std::cout << "\n";
  }
}

int main(int argc, char** argv) {
  std::ifstream file(argc == 2 ? argv[1] : "");
  const Map map = read_map(file);
  if (map.borders.empty()) {
    std::cerr << "usage: colouring MAP_FILE\n";
    return 2;
  }
  const Colours colours = new_colours(map, 4);
  EasySolver solver(borders_between_equals(map, colours, 4));
  const Sol sol =
      solver.search({{"target_energy", 0}, {"time_limit", 20}, {"seed", 1}, {"threads", 1}}).sol;
  print(map, colours, sol);
  std::cout << "borders between equal colours: " << sol.energy() << " of " << map.borders.size();

  ExhaustiveSolver all(borders_between_equals(map, new_colours(map, 3), 3));
  std::cout << "; with three colours at least " << all.search().sol.energy() << "\n";
}
