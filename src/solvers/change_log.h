// ChangeLog: which variables of a state changed since somebody last looked. One store for each
// change, and no more memory than a copy of the state.
#pragma once

#include <cstdint>
#include <vector>

namespace zorv {

class ChangeLog {
 public:
  // Everything counts as changed at first.
  explicit ChangeLog(uint32_t variable_count) : changed_(variable_count), count_(variable_count) {}

  // As many changes as there are variables count as a change of all: naming them would cost more
  // than a full pass.
  bool is_full() const { return count_ == changed_.size(); }
  void note(uint32_t variable) {
    if (!is_full()) changed_[count_++] = variable;
  }
  void note_all() { count_ = changed_.size(); }
  void clear() { count_ = 0; }

  // Calls f(variable) for every variable that may have changed, one or more times, and forgets it.
  template <typename Function>
  void drain(const Function& f) {
    const bool is_all = is_full();
    for (uint32_t k = 0; k < count_; ++k) f(is_all ? k : changed_[k]);
    clear();
  }

 private:
  std::vector<uint32_t> changed_;
  size_t count_;
};

}  // namespace zorv
