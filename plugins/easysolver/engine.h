// A model made ready for searches: which fields, which numbers.
#pragma once

#include <memory>

#include "common/info_list.h"
#include "easysolver/shared_search.h"

namespace zorv::plugin::easy {

class Engine {
 public:
  virtual ~Engine() = default;
  // Searches until `shared` says to stop; every thread has then offered at least one state.
  //   hint  words to start from, or null
  virtual void search(SharedSearch& shared, const SearchParams& params, const uint64_t* hint) = 0;
  // What the last search did: kind of number, flips, sweeps, restarts.
  virtual Facts facts() const = 0;
};

std::unique_ptr<Engine> make_engine(const BinaryModel& model);

}  // namespace zorv::plugin::easy
