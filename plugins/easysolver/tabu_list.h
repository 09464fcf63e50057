// Which variables may not be flipped for the time being.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "easysolver/kernels.h"

namespace zorv::plugin::easy {

class TabuList {
 public:
  // For n variables, each of which is barred for fewer than `slots` moves.
  TabuList(uint32_t n, uint32_t slots) : size_(n), until_(n), bars_(n + kBlock), due_(slots) {
    clear();
  }

  void clear() {
    now_ = 0;
    std::fill(bars_.begin(), bars_.begin() + size_, kFree);
    std::fill(bars_.begin() + size_, bars_.end(), kBarred);
    for (auto& due : due_) due.clear();
  }

  // Bars the variable during the next `moves` ticks.
  void bar(uint32_t i, uint32_t moves) {
    until_[i] = now_ + moves + 1;
    bars_[i] = kBarred;
    due_[until_[i] % due_.size()].push_back(i);
  }
  // One move later.
  void tick() {
    ++now_;
    auto& due = due_[now_ % due_.size()];
    for (const uint32_t i : due) {
      if (until_[i] == now_) bars_[i] = kFree;  // unless it has been barred anew
    }
    due.clear();
  }

  bool is_barred(uint32_t i) const { return bars_[i] == kBarred; }
  // kFree or kBarred for each variable, and kBarred for what lies behind them.
  const int32_t* bars() const { return bars_.data(); }

 private:
  uint32_t size_, now_ = 0;
  std::vector<uint32_t> until_;
  std::vector<int32_t> bars_;
  std::vector<std::vector<uint32_t>> due_;  // by the time at which they may be free again
};

}  // namespace zorv::plugin::easy
