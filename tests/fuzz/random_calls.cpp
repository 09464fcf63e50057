// Random, legal sequences of calls of the C interface, checked against a plain model of what each
// object is worth, and some illegal ones, which must end in one line and an abort.
//
//   random_calls SECONDS [SEED]   sequences with seeds SEED, SEED + 1, ... until time is up
//   random_calls print SEED       the sequence with this seed as a C program
//
// A sequence that fails is cut down, call by call, and printed as a C program.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "fuzz/call.h"

namespace zorv::fuzz {

void add_expr_calls();
void add_array_calls();
void add_search_calls();

namespace {

constexpr size_t kCalls = 60;
constexpr unsigned kSecondsForOne = 120;  // no sequence takes that long

struct Step {
  size_t op;
  uint64_t seed;
};
using Steps = std::vector<Step>;

Steps steps_of(uint64_t seed) {
  Random random(seed);
  Steps steps(kCalls);
  for (Step& step : steps) step = {below(random, ops().size()), random()};
  return steps;
}

void run(const Steps& steps) {
  alarm(kSecondsForOne);
  World own;
  for (const Step& step : steps) {
    Call call(step.seed);
    ops()[step.op].run(call);
    ops()[step.op].made += call.usable;
  }
  // Nothing but what it was given to has changed.
  for (int kind = 0; kind < kKinds; ++kind) {
    for (Thing& thing : own.things[kind]) compare(thing.handle, static_cast<KindId>(kind), thing);
  }
}

// Runs `work` in a child process and tells whether it fails.
template <typename F>
bool fails(F work, bool quiet) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    if (quiet &&
        (!std::freopen("/dev/null", "w", stdout) || !std::freopen("/dev/null", "w", stderr))) {
      _exit(1);
    }
    work();
    std::exit(0);  // where a leak is found
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status != 0;
}

Steps cut_down(Steps steps) {
  for (size_t piece = steps.size() / 2; piece > 0; piece /= 2) {
    for (size_t at = 0; at < steps.size();) {
      Steps fewer = steps;
      const auto begin = fewer.begin() + static_cast<ptrdiff_t>(at);
      fewer.erase(begin, begin + static_cast<ptrdiff_t>(std::min(piece, fewer.size() - at)));
      if (fails([&] { run(fewer); }, true)) {
        steps = fewer;
      } else {
        at += piece;
      }
    }
  }
  return steps;
}

constexpr const char* kPreamble = R"(#include <stdlib.h>
#include <string.h>

#include "zorv/zorv.h"

#define PUT(kind, i, value) \
  do { \
    void* fresh = value; \
    zorv_##kind##_destroy(kind[i]); \
    kind[i] = fresh; \
  } while (0)
static void *term[3], *expr[3], *array_var[3], *array_int[3], *array_term[3], *array_expr[3];
static void *e, *s, *m, *sol, *copy, *result, *ilp, *easy, *exhaustive, *klb5;
static uint64_t room[256], n;
static const uint64_t* bits;
static const coeff_t* ints;
static WordVec words;
static const ParamPair kPlain[] = {{"time_limit", "0.001"}, {"threads", "1"}, {0, 0}};
static const ParamPair* params;
static const ParamPair kTop[] = {{"time_limit", "0"}, {"topk_sols", "3"}, {0, 0}};
static const ParamPair kBest[] = {{"best_energy_sols", "4"}, {"time_limit", "1e-3"}, {0, 0}};
static const ParamPair kNone[] = {{"best_energy_sols", "5"}, {0, 0}};
static CoeffWire* out(void) { return calloc(1, sizeof(CoeffWire)); }
static uint64_t adopted(const uint32_t* block) {
  size_t n = 1;
  while (block && block[n - 1] != 0xFFFFFFFF) ++n;
  return block ? (uint64_t)memcpy(malloc((n + 2) * sizeof *block), block, n * sizeof *block) : 0;
}
static double on_event(void* context, zorv_sol* found, uint32_t event) {
  zorv_sol_destroy(found);
  return event == 0 ? 0.0005 : -1;
}

int main(void) {
)";

void print(const Steps& steps) {
  std::printf("%s", kPreamble);
  fails(
      [&] {
        printing = true;
        run(steps);
      },
      false);
  std::printf("  return 0;\n}\n");
}

// Runs sequences until time is up, in a child, since a failure ends it.
int run_for(double seconds, uint64_t seed) {
  auto* at = static_cast<volatile uint64_t*>(
      mmap(nullptr, sizeof(uint64_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  const bool failed = fails(
      [&] {
        for (uint64_t next = seed; Clock::now() < end; run(steps_of(next++))) *at = next;
        *at = *at + 1;
        uint64_t made = 0;
        for (const Op& op : ops()) {
          made += op.made;
          if (op.made == 0) std::printf("never made: %s\n", op.name.c_str());
        }
        std::printf("%llu sequences, %llu legal calls\n",
                    static_cast<unsigned long long>(*at - seed),
                    static_cast<unsigned long long>(made));
      },
      false);
  const auto ended = static_cast<unsigned long long>(*at);
  if (!failed) return 0;
  std::printf("\nThe sequence with seed %llu fails. Cut down:\n\n", ended);
  print(cut_down(steps_of(ended)));
  return 1;
}

}  // namespace
}  // namespace zorv::fuzz

int main(int argc, char** argv) {
  using namespace zorv::fuzz;
  add_expr_calls(), add_array_calls(), add_search_calls();
  if (argc == 3 && std::strcmp(argv[1], "print") == 0) {
    print(steps_of(std::strtoull(argv[2], nullptr, 10)));
    return 0;
  }
  const double seconds = argc > 1 ? std::strtod(argv[1], nullptr) : 5;
  return run_for(seconds, argc > 2 ? std::strtoull(argv[2], nullptr, 10) : std::random_device()());
}
