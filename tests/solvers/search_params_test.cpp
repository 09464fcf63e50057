#include "solvers/search_params.h"

#include <gtest/gtest.h>

#include <limits>

#include "solvers/search_models.h"
#include "zorv/engine/thread_team.h"

namespace zorv {
namespace {

using namespace test;

TEST(SearchParams, TimeLimitsAreNumbersOfSeconds) {
  const struct {
    const char* text;
    double seconds;
  } rows[] = {
      {" 2.5s", 2.5}, {"1e-3", 1e-3}, {"-1", -1.0},
      {"", 0.0},      {"soon", 0.0},  {"inf", std::numeric_limits<double>::infinity()},
      {"nan", 0.0},   {"-NaN", 0.0},  {"nan(7)", 0.0},
  };
  for (const auto& row : rows) {
    const ParamPair params[] = {{"time_limit", row.text}, {nullptr, nullptr}};
    IntSearchOpts opts;
    read_search_params(params, opts);
    EXPECT_EQ(opts.time_limit, row.seconds) << row.text;
  }
}

TEST(SearchParams, ACountOfThreadsBeyondReasonIsCapped) {
  const ExprImpl x = integer(0, 9);
  const ModelHandle model = Sketch(sqr_of(x) - coeff_t(6) * x);
  const ParamPair params[] = {{"threads", "-1"}, {"target_energy", "-9"}, {nullptr, nullptr}};
  const SearchResult result = run_int_search(*model, {}, params, nullptr, nullptr, 0);
  EXPECT_EQ(result.energy, -9);
  EXPECT_LE(std::stoul(info(result, "threads")), kMostThreads);
}

}  // namespace
}  // namespace zorv
