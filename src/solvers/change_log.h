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

  void note(uint32_t variable) {
    if (count_ != changed_.size()) changed_[count_++] = variable;
  }
  void note_all() { count_ = changed_.size(); }

  // Calls f(variable) for every variable that may have changed, one or more times, and forgets it.
  template <typename Function>
  void drain(const Function& f) {
    // As many changes as there are variables: then naming them would cost more than a full pass.
    const bool is_all = count_ == changed_.size();
    for (uint32_t k = 0; k < count_; ++k) f(is_all ? k : changed_[k]);
    count_ = 0;
  }

 private:
  std::vector<uint32_t> changed_;
  size_t count_;
};

}  // namespace zorv
