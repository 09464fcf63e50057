// SearchResult: what every search hands back, whichever engine ran. It owns all that it holds and
// may outlive the solver that made it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "model/sol.h"

namespace zorv {

// A further solution of the same search.
struct TopKEntry {
  coeff_t energy;
  double tts;                  // seconds from the start of the search
  std::vector<uint64_t> bits;  // variable i at bit i % 64 of word i / 64, the rest zero
  std::vector<coeff_t> ints;   // in dense integer order; empty for binary models
};

// One fact about a finished search, in the words that callers print.
struct InfoEntry {
  std::string key;
  std::string value;
};

struct SearchResult {
  coeff_t energy;
  double tts = 0.0;    // seconds from the start of the search to the best solution
  double scale = 1.0;  // the model's
  std::vector<uint64_t> bits;
  std::vector<coeff_t> ints;
  std::vector<TopKEntry> topk;
  std::vector<InfoEntry> info;  // in the order in which callers list them
};

void add_info(SearchResult& result, std::string key, std::string value);
// "run_time", the key that opens the info of every search.
void add_run_time(SearchResult& result, double seconds);

// The best solution, or entry `i`, as a Sol with a valid energy. The words move into the Sol, so a
// second one made of the same solution has no bits.
Sol take_sol(SearchResult& result, const ModelHandle& model);
Sol take_topk_sol(SearchResult& result, uint64_t i, const ModelHandle& model);

}  // namespace zorv
