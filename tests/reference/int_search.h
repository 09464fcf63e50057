// A slow, plain form of the native integer search for tests: one worker on one thread, unbounded
// integers, the standard library's generator, and the whole energy computed anew for every move.
// It shares no code with the engine. The clock does not exist here: a run ends by its target or by
// the external stop.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "solvers/int_search.h"

namespace zorv::test {

class PlainSearch {
 public:
  using State = std::vector<coeff_t>;
  struct Entry {
    coeff_t energy;
    State state;
  };

  PlainSearch(const ModelImpl& m, const IntSearchOpts& o)
      : model_(m), opts_(o), draw_(o.seed ^ 0x9E3779B97F4A7C15u), bits_(m.variables.size()) {
    for (size_t i = 0; i < bits_; ++i) lo_.push_back(0), hi_.push_back(1);
    lo_.insert(lo_.end(), m.int_lo.begin(), m.int_lo.end());
    hi_.insert(hi_.end(), m.int_hi.begin(), m.int_hi.end());
    x_.resize(lo_.size());
    for (size_t i = 0; i < x_.size(); ++i) {
      std::vector<coeff_t>& steps = steps_.emplace_back(1, 1);
      while (steps.back() <= range(i) / 2) steps.push_back(steps.back() * 2);
    }
  }

  Entry best;
  std::vector<Entry> pool;
  uint64_t rounds = 0, proposals = 0;

  void run() {
    while (true) {
      ++rounds;
      if (has_best_) {
        stagnation_ = has_seen_ && best.energy >= seen_ ? stagnation_ + 1 : 0;
        has_seen_ = true;
        seen_ = best.energy;
      }
      choose_start();
      energy_ = energy(x_);
      note();
      if (stopped()) return;
      anneal();
      if (!stopped()) descend();
      if (stopped()) return;
    }
  }

  coeff_t energy(const State& x) const {
    coeff_t sum = model_.constant;
    for (size_t d = 1; d <= model_.max_degree; ++d) {
      for (size_t t = 0; t < model_.term_coeffs[d - 1].size(); ++t) {
        sum += product(model_.term_coeffs[d - 1][t], &model_.term_vars[d - 1][t * d], d, x);
      }
    }
    for (const NativeCons& c : model_.native_cons) {
      const coeff_t v = violation(c, x);
      sum += c.shape_k == 1 ? coeff_t(c.weight * v) : coeff_t(c.weight * v * v);
    }
    return sum;
  }

  // How many constraints that ask for something `x` breaks.
  size_t broken(const State& x) const {
    size_t count = 0;
    for (const NativeCons& c : model_.native_cons) {
      if (c.shape_kind == 0 && violation(c, x) != 0) ++count;
    }
    return count;
  }

 private:
  static coeff_t outside(const coeff_t& b, const coeff_t& lo, const coeff_t& hi) {
    return b < lo ? coeff_t(lo - b) : b > hi ? coeff_t(b - hi) : coeff_t(0);
  }

  coeff_t product(coeff_t value, const uint32_t* literals, size_t n, const State& x) const {
    for (size_t k = 0; k < n; ++k) {
      const uint32_t l = literals[k];
      if ((l >> 30 & 1) != 0) {
        value *= x[bits_ + (l & 0x3FFFFFFF)];
      } else {
        value *= (l >> 31) != 0 ? coeff_t(1 - x[l & 0x7FFFFFFF]) : x[l];
      }
    }
    return value;
  }

  coeff_t violation(const NativeCons& c, const State& x) const {
    coeff_t body = c.body_constant;
    for (size_t k = 0; k < c.vars.size(); ++k) body += product(c.coeffs[k], &c.vars[k], 1, x);
    for (size_t t = 0; t < c.nl_coeffs.size(); ++t) {
      body += product(c.nl_coeffs[t], &c.nl_vars[c.nl_head[t]], c.nl_head[t + 1] - c.nl_head[t], x);
    }
    if (c.allowed.empty()) return outside(body, c.lo, c.hi);
    coeff_t least = outside(body, c.allowed[0].first, c.allowed[0].second);
    for (const auto& [lo, hi] : c.allowed) least = std::min(least, outside(body, lo, hi));
    return least;
  }

  bool stopped() const {
    return stop_ || (opts_.external_stop != nullptr && opts_.external_stop->load() != 0);
  }
  coeff_t range(size_t i) const { return hi_[i] - lo_[i]; }
  bool is_small(size_t i) const { return range(i) < 16; }
  bool is_inside(size_t i, const coeff_t& v) const { return lo_[i] <= v && v <= hi_[i]; }
  bool is_sampled(size_t i) const { return range(i).convert_to<double>() < 1.8e19; }

  coeff_t any_step(size_t i) { return steps_[i][draw_() % steps_[i].size()]; }

  void choose_start() {
    const bool is_first = rounds == 1;
    if (is_first && opts_.hint_bits != nullptr) return read(opts_.hint_bits, opts_.hint_ints);
    std::vector<uint64_t> words(bits_ / 64 + 1);
    std::vector<coeff_t> ints(x_.size() - bits_);
    if (opts_.next_hint != nullptr &&
        opts_.next_hint(opts_.next_hint_ctx, 0, words.data(), ints.data())) {
      return read(words.data(), ints.data());
    }
    if (is_first) return randomize();
    if (draw_() % 2 == 1 && has_best_) x_ = best.state;
    perturb();
  }

  void read(const uint64_t* words, const coeff_t* ints) {
    for (size_t i = 0; i < x_.size(); ++i) {
      x_[i] = i < bits_ ? coeff_t(words[i / 64] >> i % 64 & 1) : ints[i - bits_];
    }
  }

  void randomize() {
    for (size_t i = 0; i < x_.size(); ++i) {
      const coeff_t draw = draw_();
      if (i < bits_) {
        x_[i] = draw % 2;
      } else if (is_sampled(i) || draw > range(i)) {
        x_[i] = lo_[i] + draw % (range(i) + 1);
      } else {
        x_[i] = lo_[i] + draw;
      }
    }
  }

  void perturb() {
    const double p = static_cast<double>(stagnation_ + 10) / static_cast<double>(x_.size());
    const uint64_t threshold = p < 1 ? static_cast<uint64_t>(p * 0x1p64) : ~uint64_t{0};
    for (size_t i = 0; i < x_.size(); ++i) {
      if (draw_() > threshold) continue;
      if (i < bits_) {
        x_[i] = 1 - x_[i];
      } else if (is_small(i)) {
        x_[i] = lo_[i] + draw_() % (range(i) + 1);
      } else {
        jump(i);
      }
    }
  }

  void jump(size_t i) {
    coeff_t step;
    if (is_sampled(i) && draw_() % 10 != 0) {
      const double m = range(i).convert_to<double>() / 32;
      const double q = m > 1 ? m / (1 + m) : 0.5;
      const double u = (static_cast<double>(draw_() >> 11) + 0.5) * 0x1p-53;
      const double k = std::log(u) / std::log(q);
      if (q == 1 || k > 9e18) return;  // q rounds to 1 for the widest ranges: no length at all
      step = coeff_t(std::floor(k)) + 1;
    } else {
      step = any_step(i);
    }
    const coeff_t moved = draw_() % 2 == 1 ? coeff_t(x_[i] + step) : coeff_t(x_[i] - step);
    if (is_inside(i, moved)) x_[i] = moved;
  }

  bool propose(size_t i, coeff_t& value) {
    if (i < bits_) {
      value = 1 - x_[i];
      return true;
    }
    if (is_small(i)) {
      value = lo_[i] + draw_() % (range(i) + 1);
      return value != x_[i];
    }
    const coeff_t step = any_step(i);
    value = draw_() % 2 == 0 ? coeff_t(x_[i] - step) : coeff_t(x_[i] + step);
    return is_inside(i, value);
  }

  coeff_t delta(size_t i, const coeff_t& value) {
    const coeff_t old = std::exchange(x_[i], value);
    const coeff_t change = energy(x_) - energy_;
    x_[i] = old;
    return change;
  }

  void apply(size_t i, const coeff_t& value, const coeff_t& change) {
    x_[i] = value;
    energy_ += change;
    note();
  }

  void anneal() {
    double big = 1.0;
    for (int probe = 0; probe < 64; ++probe) {
      const size_t i = draw_() % x_.size();
      coeff_t value;
      if (propose(i, value)) {
        big = std::max(big, std::fabs(delta(i, value).convert_to<double>()));
      }
    }
    uint64_t moves = 0;
    for (size_t i = 0; i < x_.size(); ++i) {
      moves += i < bits_ ? 1 : is_small(i) ? static_cast<uint64_t>(range(i)) : 2 * steps_[i].size();
    }
    const uint64_t length = std::max<uint64_t>(400 * moves, 4000);
    double t = 2 * big;
    const double alpha = std::pow(0.02 / t, 1.0 / static_cast<double>(length));
    for (uint64_t step = 0; step < length && !stopped(); ++step, t *= alpha) {
      ++proposals;
      const size_t i = draw_() % x_.size();
      coeff_t value;
      if (!propose(i, value)) continue;
      const coeff_t change = delta(i, value);
      if (change <= 0 || uniform() < std::exp(-change.convert_to<double>() / t)) {
        apply(i, value, change);
      }
    }
  }

  double uniform() {
    const double u = static_cast<double>(draw_()) * 0x1p-64;
    return u >= 1.0 ? std::nextafter(1.0, 0.0) : u;
  }

  void descend() {
    bool improved = true;
    while (improved && !stopped()) {
      improved = false;
      const auto attempt = [&](size_t i, const coeff_t& value) {
        ++proposals;
        const coeff_t change = delta(i, value);
        if (change < 0) {
          apply(i, value, change);
          improved = true;
        }
      };
      for (size_t i = 0; i < x_.size() && !stopped(); ++i) {
        if (i < bits_) {
          attempt(i, 1 - x_[i]);
        } else if (is_small(i)) {
          for (coeff_t v = lo_[i]; v <= hi_[i]; v += 1) {
            if (v != x_[i]) attempt(i, v);
          }
        } else {
          for (const coeff_t& step : steps_[i]) {
            if (is_inside(i, x_[i] + step)) attempt(i, x_[i] + step);
            if (is_inside(i, x_[i] - step)) attempt(i, x_[i] - step);
          }
        }
      }
    }
  }

  void note() {
    const bool is_record = !has_record_ || energy_ < record_;
    if (!is_record && !(opts_.has_best_energy_sols && energy_ == record_)) return;
    has_record_ = true;
    record_ = energy_;
    submit();
  }

  void submit() {
    const bool is_best = !has_best_ || energy_ < best.energy;
    bool is_known = false;
    for (const Entry& entry : pool) is_known |= entry.state == x_;
    if (opts_.has_best_energy_sols) {
      if (is_best) pool.clear();
      const bool has_room = opts_.best_energy_cap == 0 || pool.size() < opts_.best_energy_cap;
      if (is_best || (energy_ == best.energy && has_room && !is_known)) {
        pool.push_back({energy_, x_});
      }
    } else if (opts_.topk_sols != 0 && !is_known) {
      size_t place = 0;
      while (place < pool.size() && pool[place].energy <= energy_) ++place;
      pool.insert(pool.begin() + static_cast<std::ptrdiff_t>(place), {energy_, x_});
      if (pool.size() > opts_.topk_sols) pool.pop_back();
    }
    if (!is_best) return;
    has_best_ = true;
    best = {energy_, x_};
    if (opts_.has_target && energy_ <= opts_.target_energy && broken(x_) == 0) stop_ = true;
  }

  const ModelImpl& model_;
  const IntSearchOpts& opts_;
  std::mt19937_64 draw_;
  const size_t bits_;
  std::vector<coeff_t> lo_, hi_;
  std::vector<std::vector<coeff_t>> steps_;  // 1, 2, 4, ..., the last the first above range / 2
  State x_;
  coeff_t energy_, record_, seen_;
  bool has_record_ = false, has_best_ = false, has_seen_ = false, stop_ = false;
  uint64_t stagnation_ = 0;
};

}  // namespace zorv::test
