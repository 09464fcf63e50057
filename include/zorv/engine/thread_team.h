// Threads that share one task. Nobody may count on getting all of them: a system that has no more
// threads to give leaves a smaller team, down to an empty one, so the work must be such that fewer
// threads, or the caller alone, get it done.
#pragma once

#include <algorithm>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace zorv {

// No team is larger, whatever was asked for: a count such as 4,294,967,295, which is how "-1" reads
// in 32 bits, must not use up the threads of the whole machine.
inline constexpr uint32_t kMostThreads = 1024;

// Ends the process because of the exception that is being handled, with the standard line about it.
// Where several threads come here the first one reports, and the others wait for the end.
[[noreturn]] inline void end_by_exception() noexcept {
  static std::mutex first;
  first.lock();
  std::terminate();
}

// Calls work(), and ends the process if an exception leaves it: other threads are still at work on
// what the exception would unwind.
template <typename Work>
void run_or_end(const Work& work) noexcept {
  try {
    work();
  } catch (...) {
    end_by_exception();
  }
}

class ThreadTeam {
 public:
  // Starts up to `count` threads; thread i of them calls work(i) and keeps its own copy of `work`.
  // An exception that leaves `work` ends the process, see run_or_end.
  template <typename Work>
  ThreadTeam(uint32_t count, const Work& work);
  ThreadTeam(const ThreadTeam&) = delete;
  ThreadTeam& operator=(const ThreadTeam&) = delete;
  ~ThreadTeam() { join(); }

  // How many threads could be started.
  uint32_t size() const { return static_cast<uint32_t>(threads_.size()); }
  // Waits for all of them. The destructor does the same.
  void join();

 private:
  std::vector<std::thread> threads_;
};

template <typename Work>
ThreadTeam::ThreadTeam(uint32_t count, const Work& work) {
  count = std::min(count, kMostThreads);
  threads_.reserve(count);
  try {
    for (uint32_t i = 0; i < count; ++i) {
      threads_.emplace_back([work, i] { run_or_end([&] { work(i); }); });
    }
  } catch (const std::exception&) {
    // Out of threads or of memory for them: those that run are the team.
  }
}

inline void ThreadTeam::join() {
  for (std::thread& thread : threads_) {
    if (thread.joinable()) thread.join();
  }
}

}  // namespace zorv
