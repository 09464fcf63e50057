// The assignments that annealing breeds from, of all threads: first some from nowhere, then always
// a child of two of them, which takes the place of the worse parent. When no child has been better
// than what it replaced for a while, all look alike, and a new era begins with none of them.
// Annealing takes few sweeps at first, so that there is an answer soon, and more in later eras.
// (Memetic search; for quadratic models Lu, Glover, Hao, "A hybrid metaheuristic approach to
// solving the UBQP problem".)
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "easysolver/random.h"
#include "zorv/engine/mutex.h"

namespace zorv::plugin::easy {

template <typename Energy>
class Population {
 public:
  using Assignment = std::vector<uint8_t>;
  struct Order {
    uint64_t era, sweeps;
    bool has_parents;
    uint32_t mother, father;
  };

  // What a thread is to anneal next, and copies of the parents if it is a child.
  Order next(Random& random, Assignment& mother, Assignment& father) {
    const MutexLock lock(mutex_);
    Order order = {era_, sweeps_, members_.size() >= kRoom, 0, 0};
    if (!order.has_parents) return order;
    order.mother = random.below(kRoom);
    order.father = random.below(kRoom - 1);
    order.father += order.father >= order.mother;
    mother = members_[order.mother].x;
    father = members_[order.father].x;
    return order;
  }

  void report(const Order& order, const uint8_t* x, size_t n, const Energy& energy) {
    const MutexLock lock(mutex_);
    if (order.era != era_) return;
    if (members_.size() < kRoom) {
      members_.push_back({Assignment(x, x + n), energy});
      return;
    }
    if (!order.has_parents) return;  // too late
    ++failures_;
    const uint32_t worse =
        members_[order.mother].energy < members_[order.father].energy ? order.father : order.mother;
    Member& place = members_[worse];
    if (!(place.energy < energy) && !is_known(x, n, energy, worse)) {
      if (energy < place.energy) failures_ = 0;
      place = {Assignment(x, x + n), energy};
    }
    if (failures_ >= patience()) begin_era();
  }

 private:
  struct Member {
    Assignment x;
    Energy energy;
  };
  // 12 and 30 members were no better.
  static constexpr uint32_t kRoom = 20;
  static constexpr uint64_t kFirstSweeps = 200, kMostSweeps = 1800, kGrowth = 3;

  // Children without an improvement that end an era. Those with few sweeps are but to begin with.
  uint32_t patience() const ZORV_REQUIRES(mutex_) {
    return sweeps_ < kMostSweeps ? kRoom : 3 * kRoom;
  }

  // Whether another one than `except` is nearly the same, or its complement.
  bool is_known(const uint8_t* x, size_t n, const Energy& energy, uint32_t except) const
      ZORV_REQUIRES(mutex_) {
    for (uint32_t k = 0; k < members_.size(); ++k) {
      if (k == except || members_[k].energy != energy) continue;
      const size_t d = distance(x, members_[k].x);
      if (std::min(d, n - d) <= n / 100) return true;
    }
    return false;
  }
  static size_t distance(const uint8_t* x, const Assignment& y) {
    size_t count = 0;
    for (size_t i = 0; i < y.size(); ++i) count += x[i] != y[i];
    return count;
  }

  void begin_era() ZORV_REQUIRES(mutex_) {
    members_.clear();
    ++era_;
    failures_ = 0;
    sweeps_ = std::min(kMostSweeps, sweeps_ * kGrowth);
  }

  Mutex mutex_;
  std::vector<Member> members_ ZORV_GUARDED_BY(mutex_);
  uint64_t era_ ZORV_GUARDED_BY(mutex_) = 0;
  uint64_t sweeps_ ZORV_GUARDED_BY(mutex_) = kFirstSweeps;
  uint32_t failures_ ZORV_GUARDED_BY(mutex_) = 0;
};

}  // namespace zorv::plugin::easy
