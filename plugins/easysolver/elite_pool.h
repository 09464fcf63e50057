// The best assignments that the threads have come to, all different: where path relinking starts.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "easysolver/random.h"
#include "zorv/engine/mutex.h"

namespace zorv::plugin::easy {

template <typename Energy>
class ElitePool {
 public:
  struct Elite {
    std::vector<uint8_t> x;
    Energy energy;
  };

  explicit ElitePool(size_t room) : room_(room) {}

  // Takes an assignment that is better than the worst and not there yet.
  bool offer(const uint8_t* x, size_t n, const Energy& energy) {
    const MutexLock lock(mutex_);
    if (elites_.size() == room_ && !(energy < elites_.back().energy)) return false;
    for (const Elite& elite : elites_) {
      if (elite.energy == energy && std::equal(x, x + n, elite.x.begin())) return false;
    }
    if (elites_.size() == room_) elites_.pop_back();
    const auto place =
        std::upper_bound(elites_.begin(), elites_.end(), energy,
                         [](const Energy& e, const Elite& elite) { return e < elite.energy; });
    elites_.insert(place, {std::vector<uint8_t>(x, x + n), energy});
    return true;
  }

  size_t size() const {
    const MutexLock lock(mutex_);
    return elites_.size();
  }
  // Two different ones, copied; there must be two.
  void draw_two(Random& random, Elite& a, Elite& b) const {
    const MutexLock lock(mutex_);
    const uint32_t first = random.below(elites_.size());
    const uint32_t second = random.below(elites_.size() - 1);
    a = elites_[first];
    b = elites_[second + (second >= first)];
  }
  void draw(Random& random, Elite& a) const {
    const MutexLock lock(mutex_);
    a = elites_[random.below(elites_.size())];
  }
  void clear() {
    const MutexLock lock(mutex_);
    elites_.clear();
  }

 private:
  const size_t room_;
  mutable Mutex mutex_;
  std::vector<Elite> elites_ ZORV_GUARDED_BY(mutex_);  // ascending
};

}  // namespace zorv::plugin::easy
