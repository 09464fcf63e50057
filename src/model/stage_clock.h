// Stage timers, for whoever sets ZORV_MODEL_PROFILE.
#pragma once

#include <chrono>
#include <cstdlib>
#include <iostream>

namespace zorv {

// Runs from its construction. Each lap ends a stage and, if the variable is set to anything at that
// moment, writes one line about it, "  [Model] stage: 0.1s", to the standard error stream.
class StageClock {
 public:
  explicit StageClock(const char* what) : what_(what) {}

  void lap(const char* stage) {
    const auto now = Clock::now();
    if (std::getenv("ZORV_MODEL_PROFILE") != nullptr) {
      const std::chrono::duration<double> elapsed = now - mark_;
      std::cerr << "  [" << what_ << "] " << stage << ": " << elapsed.count() << "s\n";
    }
    mark_ = now;
  }

 private:
  using Clock = std::chrono::steady_clock;
  const char* what_;
  Clock::time_point mark_ = Clock::now();
};

}  // namespace zorv
