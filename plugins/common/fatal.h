// The one way in which a solver library refuses what it is given.
#pragma once

#include <sstream>
#include <string>

namespace zorv::plugin {

// Writes "zorv: ", the message and a newline to the standard error stream and aborts.
[[noreturn]] void abort_with(const std::string& message);

template <typename... Pieces>
[[noreturn]] void fatal(const Pieces&... pieces) {
  std::ostringstream message;
  (message << ... << pieces);
  abort_with(message.str());
}

}  // namespace zorv::plugin
