#include "common/fatal.h"

#include <cstdlib>
#include <iostream>

namespace zorv::plugin {

void abort_with(const std::string& message) {
  std::cerr << "zorv: " << message << std::endl;
  std::abort();
}

}  // namespace zorv::plugin
