// A model made ready for searches: which fields, which numbers.
#pragma once

#include <memory>

#include "common/info_list.h"
#include "easysolver/shared_search.h"

namespace zorv::plugin::easy {

class Engine {
 public:
  virtual ~Engine() = default;
  // Searches until `shared` says to stop. However soon that is, no flip of a single variable makes
  // the best state better that `shared` then holds, except by violating a requirement where a
  // target is met.
  //   hint  words to start from, or null
  virtual void search(SharedSearch& shared, const SearchParams& params, const uint64_t* hint) = 0;
  // What the last search did: flips, sweeps, restarts, kind of number, threads.
  virtual Facts facts() const = 0;
};

// Without what only makes searches better if the time of this one is up before that is made;
// must_stop() then tells that the engine is not for later ones.
std::unique_ptr<Engine> make_engine(const BinaryModel& model, SharedSearch& shared);

}  // namespace zorv::plugin::easy
