// soak [SECONDS]: threads build, solve and destroy models and ask questions for as long as is said,
// an hour if nothing is. Reports the memory of the process as it goes: tables of constraints grow
// by contract, anything else should not.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <thread>

#include "zorv/zorv.hpp"

namespace {

using Clock = std::chrono::steady_clock;
std::atomic<uint64_t> cycles = 0;

double resident_mebibytes() {
  uint64_t all = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return static_cast<double>(resident * static_cast<uint64_t>(sysconf(_SC_PAGESIZE))) / (1 << 20);
}

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "soak: %s\n", what);
  std::exit(1);
}

struct Variables {
  std::vector<zorv::Var> bits;
  std::vector<zorv::IntVar> integers;
};

// One model from nothing to its solution.
void cycle(const Variables& v, std::mt19937_64& random) {
  const auto some = [&](uint64_t n) { return static_cast<int64_t>(random() % n); };
  zorv::Expr objective = 0;
  for (int i = 0; i < 40; ++i) {
    objective +=
        (some(21) - 10) * v.bits[random() % v.bits.size()] * v.bits[random() % v.bits.size()];
  }
  const bool native = some(2) == 0;
  if (native) {
    for (const auto& x : v.integers) objective += some(7) * (x - 3) * (x - 3);
  }
  if (some(4) == 0) {
    zorv::Expr sum = 0;
    for (const auto& x : v.bits) sum += x;
    objective += 5 * zorv::cons(sum <= 6);
  }
  const zorv::Model model(objective);
  const auto found = zorv::EasySolver(model).search(
      {{"time_limit", some(3) == 0 ? 0.0 : 0.002}, {"threads", 2}, {"topk_sols", 3}});
  require(found.sol[objective] == found.sol.energy(), "an energy is wrong");
  cycles += 1;
}

}  // namespace

int main(int argc, char** argv) {
  const double seconds = argc > 1 ? std::strtod(argv[1], nullptr) : 3600;
  constexpr int kThreads = 4;
  std::vector<Variables> variables(kThreads);  // before the threads: names are drawn alone
  for (Variables& v : variables) {
    for (int i = 0; i < 12; ++i) v.bits.push_back(zorv::var());
    for (int i = 0; i < 3; ++i) v.integers.push_back(zorv::int_var("", -5, 20));
  }
  const auto start = Clock::now();
  const auto elapsed = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
  std::vector<std::thread> threads;
  for (const Variables& v : variables) {
    threads.emplace_back([&] {
      std::mt19937_64 random(&v - variables.data());
      while (elapsed() < seconds) cycle(v, random);
    });
  }
  // The first tenth warms caches up.
  double first = 0;
  uint64_t cycles_before = 0;
  for (int tenth = 1; tenth <= 10; ++tenth) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds * tenth / 10 - elapsed()));
    const double now = resident_mebibytes();
    if (tenth == 1) first = now, cycles_before = cycles;
    std::printf("%8.0f s  %10llu cycles  %8.1f MiB\n", elapsed(),
                static_cast<unsigned long long>(cycles), now);
    std::fflush(stdout);
  }
  for (std::thread& thread : threads) thread.join();
  std::printf(
      "growth after the first tenth: %.1f bytes per cycle\n",
      (resident_mebibytes() - first) * (1 << 20) / static_cast<double>(cycles - cycles_before));
  return 0;
}
