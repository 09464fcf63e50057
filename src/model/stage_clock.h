// Stage timers of a compilation, for whoever sets ZORV_MODEL_PROFILE.
#pragma once

#include <chrono>
#include <cstdlib>
#include <iostream>

namespace zorv {

// Runs from its construction. Each lap ends a stage and, if the variable is set to anything at that
// moment, writes one line about it to the standard error stream.
class StageClock {
 public:
  void lap(const char* stage) {
    const auto now = Clock::now();
    if (std::getenv("ZORV_MODEL_PROFILE") != nullptr) {
      const std::chrono::duration<double> elapsed = now - mark_;
      std::cerr << "  [Model] " << stage << ": " << elapsed.count() << "s\n";
    }
    mark_ = now;
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point mark_ = Clock::now();
};

}  // namespace zorv
