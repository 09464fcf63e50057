// A small integer model, from variables to the records of its search, through the exports alone.
#include <vector>

#include "support/support.h"
#include "zorv/zorv.h"

namespace zorv::test {
namespace {

// Minimise (a - 3)^2 + x*a with x binary and a in 0..10; the best is a = 3, x = 0, energy 0.
class EasySolverExports : public ::testing::Test {
 protected:
  EasySolverExports() {
    zorv_expr* e = zorv_expr_create_add_var_int(a_, Wire(-3));
    zorv_expr* square = zorv_expr_sqr(e);
    const uint32_t pair[] = {x_, a_};
    zorv_expr_iadd_raw_term(square, Wire(1), pair, 2);
    zorv_expr* simplified = zorv_expr_simplify_as_binary(square);
    model_ = zorv_model_create(simplified);
    solver_ = zorv_easy_solver_wrapper_create(model_);
    for (zorv_expr* each : {e, square, simplified}) zorv_expr_destroy(each);
  }
  ~EasySolverExports() override {
    zorv_easy_solver_result_destroy(result_);
    zorv_easy_solver_wrapper_destroy(solver_);
    zorv_model_destroy(model_);
  }
  void search(std::vector<ParamPair> params) {
    params.push_back({"target_energy", "0"});
    params.push_back({"threads", "1"});
    params.push_back({nullptr, nullptr});
    result_ = zorv_easy_solver_wrapper_search(solver_, params.data(), nullptr);
  }

  const uint32_t x_ = zorv_new_var("x");
  const uint32_t a_ = zorv_new_int_var("a", Wire(0), Wire(10));
  zorv_model* model_;
  zorv_easy_wrapper* solver_;
  zorv_result* result_ = nullptr;
};

TEST_F(EasySolverExports, ReadTheResultOfASearch) {
  search({{"seed", "5"}, {"topk_sols", "3"}});
  Wire energy;
  zorv_easy_solver_result_energy(result_, energy.out());
  EXPECT_EQ(energy.value(), 0);
  EXPECT_EQ(zorv_easy_solver_result_bits(result_)[0], 0u);
  const uint64_t n = zorv_easy_solver_result_topk_count(result_);
  ASSERT_GE(n, 1u);
  ASSERT_LE(n, 3u);
  coeff_t previous = -1;
  for (uint64_t i = 0; i < n; ++i) {  // the best first
    zorv_easy_solver_result_topk_energy(result_, i, energy.out());
    EXPECT_GE(energy.value(), previous);
    previous = energy.value();
    EXPECT_GE(zorv_easy_solver_result_topk_tts(result_, i), 0.0);
  }
  EXPECT_EQ(zorv_easy_solver_result_tts(result_), zorv_easy_solver_result_topk_tts(result_, 0));

  const char* keys[] = {"run_time", "threads", "rounds", "proposals", "engine",
                        "os",       "cpu",     "gpu",    "ram"};
  ASSERT_EQ(zorv_easy_solver_result_info_count(result_), std::size(keys));
  for (size_t i = 0; i < std::size(keys); ++i) {
    EXPECT_STREQ(zorv_easy_solver_result_info_key(result_, i), keys[i]);
  }
  EXPECT_STREQ(zorv_easy_solver_result_info_value(result_, 4), "integer-cpu");
}

TEST_F(EasySolverExports, RefuseWhatTheRouteCannotTake) {
  const uint64_t hint = 0;
  const coeff_t value = 11;
  const auto* ints = reinterpret_cast<const ::coeff_t*>(&value);
  EXPECT_FATAL(zorv_easy_solver_wrapper_search(solver_, nullptr, &hint),
               "EasySolver: hint on a native integer model requires the int-aware search path "
               "(update the zorv header).");
  EXPECT_FATAL(zorv_easy_solver_wrapper_search_int(solver_, nullptr, &hint, ints, 2),
               "EasySolver: hint integer-variable count mismatch.");
  EXPECT_FATAL(zorv_easy_solver_wrapper_search_int(solver_, nullptr, &hint, ints, 1),
               "EasySolver: hint value outside the integer variable's bounds.");
  zorv_easy_solver_wrapper_destroy(nullptr);
  zorv_easy_solver_result_destroy(nullptr);
}

}  // namespace
}  // namespace zorv::test
