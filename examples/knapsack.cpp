// Packs provisions: how much of each to take, so that it is worth most within two capacities. One
// integer variable for the number of each, the capacities as declared constraints, and a search
// that looks at every way to pack.
#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>
#include <zorv/zorv.hpp>

using namespace zorv;

struct Item {
  std::string name;
  int worth, kilograms, litres, at_most;
};

struct Provisions {
  int kilograms = 0, litres = 0;  // that can be carried
  std::vector<Item> items;
};

// "capacity KILOGRAMS LITRES" and lines of items; "#" begins a comment.
Provisions read_provisions(std::istream& file) {
  Provisions all;
  for (std::string line, name; std::getline(file, line);) {
    std::istringstream words(line.substr(0, line.find('#')));
    if (!(words >> name)) continue;
    Item item{name, 0, 0, 0, 0};
    if (name == "capacity") {
      words >> all.kilograms >> all.litres;
    } else if (words >> item.worth >> item.kilograms >> item.litres >> item.at_most) {
      all.items.push_back(item);
    }
  }
  return all;
}

std::vector<IntVar> new_counts(const std::vector<Item>& items) {
  std::vector<IntVar> counts;
  counts.reserve(items.size());
  for (const Item& item : items) counts.push_back(int_var(item.name, 0, item.at_most));
  return counts;
}

// What all that is taken comes to: worth, kilograms or litres.
Expr total(const std::vector<Item>& items, const std::vector<IntVar>& counts, int Item::*what) {
  Expr total;
  for (size_t i = 0; i < items.size(); ++i) total += items[i].*what * counts[i];
  return total;
}

int main(int argc, char** argv) {
  std::ifstream file(argc == 2 ? argv[1] : "");
  const Provisions hut = read_provisions(file);
  if (hut.items.empty()) {
    std::cerr << "usage: knapsack PROVISIONS_FILE\n";
    return 2;
  }
  const std::vector<IntVar> counts = new_counts(hut.items);
  const Expr worth = total(hut.items, counts, &Item::worth);
  const Expr kilograms = total(hut.items, counts, &Item::kilograms);
  const Expr litres = total(hut.items, counts, &Item::litres);

  // To leave one thing behind saves a kilogram and a litre at least, so a rule that weighs more
  // than anything is worth is never broken with profit.
  const Expr rules = cons(kilograms <= hut.kilograms) + cons(litres <= hut.litres);
  const int weight = std::ranges::max(hut.items, {}, &Item::worth).worth + 1;
  const Result result = ExhaustiveSolver(Model(weight * rules - worth)).search();
  const Sol& best = result.sol;

  for (size_t i = 0; i < counts.size(); ++i) {
    std::cout << std::setw(4) << best[counts[i]] << " of " << std::setw(2) << hut.items[i].at_most
              << "  " << hut.items[i].name << "\n";
  }
  std::cout << "worth " << best[worth] << ", " << best[kilograms] << " of " << hut.kilograms
            << " kilograms, " << best[litres] << " of " << hut.litres << " litres\n"
            << "None of " << result.info("states") << " ways to pack is worth more.\n";
}
