// Sorting by all threads: boost's block_indirect_sort, made to do with the threads that there are.
#pragma once

#include <boost/sort/sort.hpp>
#include <system_error>

#include "core/parallel.h"

namespace zorv {

// Not stable. Out of memory in the middle, the range would hold some elements twice and others not
// at all, so that ends the process.
template <typename Iterator, typename Precedes>
void parallel_sort(Iterator begin, Iterator end, Precedes precedes) noexcept {
  try {
    boost::sort::block_indirect_sort(begin, end, precedes, num_threads());
  } catch (const std::system_error&) {
    // A thread could not be started. Those that were have sorted everything by now, and without any
    // the range is as it was. What boost loses on this way is a buffer of some KB for each thread.
    boost::sort::block_indirect_sort(begin, end, precedes, 1);
  }
}

}  // namespace zorv
