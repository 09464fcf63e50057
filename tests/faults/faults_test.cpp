// What the library does when the system lets it down: every job either gives the right answer or
// ends with one clear line. No hang, no silent end, no wrong answer.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "zorv/zorv.h"

namespace {
// How many threads the system still gives to this process.
std::atomic<int> threads_left = 1 << 30;
}  // namespace

// Stands before the system's own for the library and its solver libraries too.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) {
  if (threads_left.fetch_sub(1) <= 0) return EAGAIN;
  static const auto create =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return create(thread, attributes, start, argument);
}

namespace {

// ---- Jobs: each tells whether its answer is right. ----------------------------------------------

struct Number {
  explicit Number(int n) : limb(static_cast<uint64_t>(std::abs(n))) {
    wire = {n < 0 ? -1 : 1, 1, &limb};
  }
  operator const CoeffWire*() const { return &wire; }
  uint64_t limb;
  CoeffWire wire;
};

int64_t take(CoeffWire& wire) {
  const int64_t magnitude = wire.nlimbs == 0 ? 0 : static_cast<int64_t>(wire.limbs[0]);
  std::free(wire.limbs);
  return wire.sign < 0 ? -magnitude : magnitude;
}

zorv_expr* sum_of_variables(uint64_t n) {
  zorv_expr* sum = zorv_expr_create();
  for (uint64_t i = 0; i < n; ++i) zorv_expr_iadd_var(sum, zorv_new_var(nullptr));
  return sum;
}

// (x_1 + ... + x_n)^2 has n (n + 1) / 2 terms: enough for several threads.
bool square() {
  constexpr uint64_t n = 400;
  zorv_expr* sum = sum_of_variables(n);
  zorv_expr* squared = zorv_expr_mul_expr(sum, sum);
  zorv_expr* merged = zorv_expr_simplify_as_binary(squared);
  zorv_model* model = zorv_model_create(merged);
  const bool right = zorv_expr_term_count(squared) == n * n &&
                     zorv_expr_term_count(merged) == n * (n + 1) / 2 &&
                     zorv_model_term_count(model, 2) == n * (n - 1) / 2;
  zorv_model_destroy(model);
  for (zorv_expr* e : {sum, squared, merged}) zorv_expr_destroy(e);
  return right;
}

// The sum of 20,000 expressions, which threads of its own add up.
bool array_sum() {
  const uint64_t n = 20'000;
  zorv_array_expr* array = zorv_array_expr_create_constant_var(&n, 1, zorv_new_var(nullptr));
  zorv_expr* sum = zorv_array_expr_sum(array);
  zorv_expr* merged = zorv_expr_simplify(sum);
  CoeffWire coeff = {0, 0, nullptr};
  zorv_term_coeff(zorv_expr_term_at(merged, 0), &coeff);
  const bool right = zorv_expr_term_count(sum) == n && take(coeff) == static_cast<int64_t>(n);
  zorv_array_expr_destroy(array);
  for (zorv_expr* e : {sum, merged}) zorv_expr_destroy(e);
  return right;
}

const ParamPair kSearch[] = {
    {"time_limit", "0.3"}, {"threads", "4"}, {"target_energy", "-3"}, {nullptr, nullptr}};

int64_t energy_and_destroy(zorv_result* result) {
  CoeffWire energy = {0, 0, nullptr};
  zorv_easy_solver_result_energy(result, &energy);
  zorv_easy_solver_result_destroy(result);
  return take(energy);
}

// The least value of -(sum of all but the first) + 8 * first is -3.
zorv_model* small_model(bool with_atom) {
  const Number seven(7), zero(0), one(1), minus(-1);
  const uint32_t first = with_atom ? zorv_new_int_var(nullptr, zero, seven) : zorv_new_var(nullptr);
  zorv_expr* e = sum_of_variables(3);
  zorv_expr_imul_int(e, minus);
  zorv_expr_iadd_raw_term(e, seven, &first, 1);
  zorv_expr* merged = zorv_expr_simplify_as_binary(e);
  zorv_model* model = zorv_model_create(merged);
  for (zorv_expr* old : {e, merged}) zorv_expr_destroy(old);
  return model;
}

bool easy_search(bool native) {
  zorv_model* model = small_model(native);
  zorv_easy_wrapper* solver = zorv_easy_solver_wrapper_create(model);
  const int64_t energy =
      energy_and_destroy(zorv_easy_solver_wrapper_search(solver, kSearch, nullptr));
  zorv_easy_solver_wrapper_destroy(solver);
  zorv_model_destroy(model);
  return energy == -3;
}
bool native_search() { return easy_search(true); }
bool binary_search() { return easy_search(false); }

bool enumeration() {
  zorv_model* model = small_model(false);
  zorv_exhaustive_wrapper* solver = zorv_exhaustive_wrapper_create(model);
  const int64_t energy = energy_and_destroy(zorv_exhaustive_wrapper_search(solver, nullptr));
  zorv_exhaustive_wrapper_destroy(solver);
  zorv_model_destroy(model);
  return energy == -3;
}

struct Job {
  const char* name;
  bool (*is_right)();
};
constexpr Job kJobs[] = {{"square", square},
                         {"array_sum", array_sum},
                         {"native_search", native_search},
                         {"binary_search", binary_search},
                         {"enumeration", enumeration}};

// ---- Outcomes -----------------------------------------------------------------------------------

constexpr int kPatience = 20'000;  // milliseconds, for what takes a fraction of a second

// How a child process that runs the job ends: "right", or what it wrote before it aborted.
std::string outcome(const std::function<void()>& fault, const std::function<bool()>& is_right) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    const rlimit no_core = {0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    [&]() noexcept {  // no exception comes back into the test
      fault();
      _exit(is_right() ? 0 : 1);
    }();
  }
  close(ends[1]);
  std::string text;
  char buffer[512];
  pollfd end = {ends[0], POLLIN, 0};
  for (ssize_t n = 1; n > 0;) {
    if (poll(&end, 1, kPatience) == 0) kill(child, SIGKILL), text += "hang";
    n = read(ends[0], buffer, sizeof buffer);
    if (n > 0) text.append(buffer, static_cast<size_t>(n));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status)) return WEXITSTATUS(status) == 0 ? "right" : "wrong: " + text;
  if (WTERMSIG(status) != SIGABRT) return std::string(strsignal(WTERMSIG(status))) + ": " + text;
  return text.empty() ? "silent abort" : text;
}

bool is_clear(const std::string& outcome) {
  static const std::string kNoMemory =
      "terminate called after throwing an instance of 'std::bad_alloc'\n"
      "  what():  std::bad_alloc\n";
  const bool one_line = outcome.starts_with("zorv: ") && outcome.find('\n') == outcome.size() - 1;
  return outcome == "right" || outcome == kNoMemory || one_line;
}

void expect_clear(const std::function<void()>& fault) {
  for (const Job& job : kJobs) {
    const std::string got = outcome(fault, job.is_right);
    EXPECT_TRUE(is_clear(got)) << job.name << ": " << got;
  }
}
void expect_right(const std::function<void()>& fault) {
  for (const Job& job : kJobs) EXPECT_EQ(outcome(fault, job.is_right), "right") << job.name;
}

class Faults : public ::testing::Test {
 protected:
  // For the library in the children; this process never uses it.
  Faults() { setenv("ZORV_NUM_THREADS", "4", 1); }
};

TEST_F(Faults, JobsAreRightWithoutAny) {
  expect_right([] {});
}

TEST_F(Faults, NoThreadToBeHad) {
  for (const int threads : {0, 1, 2, 5}) {
    SCOPED_TRACE(threads);
    expect_clear([threads] { threads_left = threads; });
  }
}

TEST_F(Faults, NoMoreMemory) {
  for (const rlim_t mebibytes : {1, 4, 16, 48, 100}) {
    SCOPED_TRACE(mebibytes);
    expect_clear([mebibytes] {
      uint64_t pages = 0;
      std::ifstream("/proc/self/statm") >> pages;
      const rlim_t bytes = pages * static_cast<uint64_t>(sysconf(_SC_PAGESIZE)) + (mebibytes << 20);
      const rlimit limit = {bytes, bytes};
      setrlimit(RLIMIT_AS, &limit);
    });
  }
}

// A child has the memory of its parent but none of its threads.
TEST_F(Faults, AfterForkOfAProcessThatUsedTheLibrary) {
  for (const Job& before : kJobs) {
    for (const Job& after : kJobs) {
      const auto both = [&] {
        if (!before.is_right()) return false;
        const pid_t child = fork();
        if (child == 0) _exit(after.is_right() ? 0 : 1);
        int status = 0;
        waitpid(child, &status, 0);
        return status == 0 && after.is_right();
      };
      EXPECT_EQ(outcome([] {}, both), "right") << before.name << ", then " << after.name;
    }
  }
}

TEST_F(Faults, SignalsAllTheTime) {
  expect_right([] {
    struct sigaction action = {};
    action.sa_handler = [](int) {};  // and without SA_RESTART
    sigaction(SIGALRM, &action, nullptr);
    const itimerval every = {{0, 500}, {0, 500}};
    setitimer(ITIMER_REAL, &every, nullptr);
  });
}

// A solver library that is gone, cut off, or something else.
TEST_F(Faults, DamagedSolverLibrary) {
  namespace fs = std::filesystem;
  const fs::path folder =
      fs::path(::testing::TempDir()) / ("zorv_faults_" + std::to_string(getpid()));
  fs::create_directory(folder);
  const fs::path copy = folder / "easysolver_cppint.so";
  setenv("ZORV_LIB_DIR", folder.c_str(), 1);
  const auto expect_refusal = [&](const std::string& what) {
    const std::string got = outcome([] {}, binary_search);
    EXPECT_TRUE(is_clear(got) &&
                got.starts_with("zorv: EasySolver: failed to load " + copy.string()))
        << what << ": " << got;
  };
  expect_refusal("missing");
  const uintmax_t size = fs::file_size(ZORV_EASY_LIBRARY);
  for (uintmax_t left = 0; left < size * 3 / 4; left = 2 * left + 63) {
    fs::copy_file(ZORV_EASY_LIBRARY, copy, fs::copy_options::overwrite_existing);
    fs::resize_file(copy, left);
    expect_refusal(std::to_string(left) + " bytes of " + std::to_string(size));
  }
  std::ofstream(copy) << std::string(10'000, 'x');
  expect_refusal("text");
  fs::remove(copy), fs::create_directory(copy);
  expect_refusal("a folder");
  // One that disappears after it was opened is still there for the process.
  fs::remove(copy), fs::copy_file(ZORV_EASY_LIBRARY, copy);
  EXPECT_EQ(outcome([] {}, [&] { return binary_search() && fs::remove(copy) && binary_search(); }),
            "right");
  fs::remove_all(folder);
  unsetenv("ZORV_LIB_DIR");
}

}  // namespace
