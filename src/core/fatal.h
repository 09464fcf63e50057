// The one way in which the library reports misuse, and the only place that ends the process.
#pragma once

#include <sstream>
#include <string>

namespace zorv {

// Writes "zorv: ", `message` and a newline to the standard error stream, flushes and aborts.
[[noreturn]] void abort_with(const std::string& message);

// The same for a message built of several pieces.
template <typename... Pieces>
[[noreturn]] void fatal(const Pieces&... pieces) {
  std::ostringstream message;
  (message << ... << pieces);
  abort_with(message.str());
}

}  // namespace zorv
