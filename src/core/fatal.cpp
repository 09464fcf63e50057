#include "core/fatal.h"

#include <cstdlib>
#include <iostream>

#include "zorv/engine/mutex.h"

namespace zorv {

void abort_with(const std::string& message) {
  // Several threads of one loop may find the same fault: the first reports it, the others wait for
  // the end.
  static Mutex first;
  first.lock();
  std::cerr << "zorv: " << message << std::endl;
  std::abort();
}

}  // namespace zorv
