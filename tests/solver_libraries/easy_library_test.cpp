// What is EasySolver's own: where its library is looked for, the time limit, hints, and the
// library's engine for models with integer variables.
#include "solver_libraries/binary_models.h"

namespace zorv::test {
namespace {

using Wrapper = Easy::Wrapper;

class EasyLibrary : public Routes {
 protected:
  void use(const std::string& variant) { set("ZORV_LIB_DIR", fakes("easy/" + variant)); }
};

const std::string kLoaded = "register_callback, gives -1\ncreate #1 nvars=1\ndestroy #1\n";

TEST_F(EasyLibrary, LiesInTheFolderOfTheVariableOrBesideThisLibrary) {
  const auto body = [] { Wrapper(zorv_easy_solver_wrapper_create(one_bit())); };
  load_from("exhaustive/complete");  // nothing of this family lies there
  set("ZORV_LIB_DIR", fakes("easy/complete"));
  expect_log(body, kLoaded);
  set("ZORV_LIB_DIR", fakes("easy/complete/"));
  expect_log(body, kLoaded);
  load_from("easy/complete");
  set("ZORV_LIB_DIR", "");  // counts as none
  expect_log(body, kLoaded);
  for (const char* folder : {"/nowhere", "/nowhere/"}) {
    set("ZORV_LIB_DIR", folder);
    expect_fatal(body, "",
                 "EasySolver: failed to load " + load_failure("/nowhere/easysolver_cppint.so"));
  }
}

TEST_F(EasyLibrary, GetsParametersInTheirOrderAndATimeLimit) {
  const struct {
    std::vector<ParamPair> given;
    const char* received;
  } rows[] = {
      {{}, " time_limit=10.0"},
      {{{"time_limit", "3"}}, " time_limit=3"},
      {{{"threads", "0"}, {"threads", nullptr}, {"Time_Limit", ""}},  // none of them is read
       " threads=0 threads=(null) Time_Limit= time_limit=10.0"},
      {{{"time_limit", "1"}, {"time_limits", "2"}, {"time_limit", "3"}},
       " time_limit=1 time_limits=2 time_limit=3"},
  };
  use("complete");
  for (const auto& row : rows) {
    const auto body = [&row] {
      const Wrapper w(zorv_easy_solver_wrapper_create(one_bit()));
      std::vector<ParamPair> params = row.given;
      params.push_back({nullptr, nullptr});
      Result(zorv_easy_solver_wrapper_search(w, params.data(), nullptr));
      if (row.given.empty()) Result(zorv_easy_solver_wrapper_search(w, nullptr, nullptr));
    };
    const std::string search = std::string("search #1") + row.received + ": 0 1*0\nget_info #1\n";
    expect_log(body, "register_callback, gives -1\ncreate #1 nvars=1\n" + search +
                         (row.given.empty() ? search : "") + "destroy #1\n");
  }
}

TEST_F(EasyLibrary, GetsTheHintAsItIs) {
  constexpr int kBits = 65;
  use("complete");
  const auto body = [] {
    Expr sum = poly(0, {});
    for (int i = 0; i < kBits; ++i) sum = plus(std::move(sum), poly(0, {{1, {zorv_new_var("")}}}));
    const Wrapper w(zorv_easy_solver_wrapper_create(compiled(sum)));
    const uint64_t hint[] = {0xABC, 1};
    Result(zorv_easy_solver_wrapper_search(w, nullptr, hint));
  };
  std::string terms;
  for (int i = 0; i < kBits; ++i) terms += " 1*" + std::to_string(i);
  expect_log(body,
             "register_callback, gives -1\n"
             "create #1 nvars=65\n"
             "hint abc 1\n"
             "search #1 time_limit=10.0: 0" +
                 terms + "\nget_info #1\ndestroy #1\n");
}

// A model with two bits and two integer variables, put together part by part.
class IntModel {
 public:
  IntModel& linear() { return add(times(4, between(poly(3, {{1, {x_}}, {2, {u_}}}), -1, 6))); }
  IntModel& set() { return add(either(poly(0, {{1, {y_}}, {-1, {v_}}}), 1, 3)); }
  IntModel& shape() { return add(zorv_abs_term(poly(0, {{1, {u_}}, {-1, {v_}}}), 1)); }
  IntModel& nonlinear() { return add(between(poly(0, {{1, {x_, v_}}}), 1, 1)); }
  Model model() const { return compiled(e_); }
  Wrapper solver() const { return zorv_easy_solver_wrapper_create(model()); }
  uint32_t v() const { return v_; }

 private:
  static uint32_t int_var(int64_t lo, int64_t hi) {
    Int low(lo), high(hi);
    const CoeffWire wires[] = {low.wire(), high.wire()};
    return zorv_new_int_var("", &wires[0], &wires[1]);
  }
  IntModel& add(Expr constraint) { return e_ = plus(std::move(e_), constraint), *this; }

  uint32_t x_ = zorv_new_var("x"), y_ = zorv_new_var("y");
  uint32_t u_ = int_var(-2, 5), v_ = int_var(0, 3);
  Expr e_ = poly(1, {{2, {x_}}, {-1, {y_}}, {3, {x_, u_}}, {1, {u_, u_}}, {1, {v_}}});
};

const std::string kRegistered = "register_callback, gives -1\n";
const std::string kCreated = "create_int #1 nbits=2 lo=[-2 0] hi=[5 3]\n";
// The integer variables count on after the bits here, and keep their mark in the terms.
const std::string kLinear = "add_constraint #1 4 * (3 1*0 2*2) in -1..6\n";
const std::string kSet = "add_constraint_set #1 1 * (0 1*1 -1*3) in 1..3: 1..1 3..3\n";
const std::string kAbs = "add_constraint #1 1 * (0 1*2 -1*3) in 0..0\n";
const std::string kAllDelivered = kCreated + kLinear + kSet + kAbs + "set_cons_shape #1 1 1\n";
const std::string kTerms = ": 1 2*0 -1*1 1*i1 3*0*i0 1*i0*i0\n";

// The same calls for the second solver of a process.
std::string second(std::string log) {
  for (size_t at; (at = log.find("#1")) != std::string::npos;) log[at + 1] = '2';
  return log;
}

// One search through each of the two exports. The solver holds nothing in between.
TEST_F(EasyLibrary, SearchesInIntegersOnRequest) {
  use("complete");
  set("ZORV_INT_UNIFIED", "1");
  const auto body = [] {
    IntModel parts;
    const Wrapper w = parts.linear().set().shape().solver();
    const ParamPair params[] = {{"threads", "2"}, {"facts", ""}, {"sols", "2"}, {nullptr, nullptr}};
    const Result r(zorv_easy_solver_wrapper_search(w, params, nullptr));
    say_result(r);
    zorv_sol* sol = zorv_easy_solver_result_to_sol(r, parts.model());
    fake::say("v = 2^70 + ", written(zorv_sol_get_int, sol, parts.v()) - (fake::Coeff(1) << 70));
    zorv_sol_destroy(sol);
    Result(zorv_easy_solver_wrapper_search_int(w, nullptr, nullptr, nullptr, 7));
  };
  const std::string best = "result -18446744073709551618 after 0.25, bits 5; info run_time";
  expect_log(body, kRegistered + kAllDelivered + "ints [0 0]\n" +
                       "search_int #1 thread_count=2 facts= sols=2 time_limit=10.0" + kTerms +
                       "sol_list_destroy\n"
                       "get_info #1\n"
                       "free_info moves\n"
                       "destroy #1\n" +
                       best + " moves=12 engine=fake engine=integer-unified os cpu gpu ram\n" +
                       "v = 2^70 + 1\n" + second(kAllDelivered + "ints [0 0]\n") +
                       "search_int #2 time_limit=10.0" + kTerms + "get_info #2\ndestroy #2\n");
}

TEST_F(EasyLibrary, RegistersACallbackForEitherKindOfModel) {
  use("complete");
  set("ZORV_INT_UNIFIED", "1");
  const auto body = [] {
    Wrapper(zorv_easy_solver_wrapper_create(one_bit()));
    Result(zorv_easy_solver_wrapper_search(IntModel().solver(), nullptr, nullptr));
  };
  expect_log(body, kLoaded + kRegistered + second(kCreated) +
                       "ints [0 0]\nsearch_int #2 time_limit=10.0" + kTerms +
                       "get_info #2\ndestroy #2\n");
}

// Where the library's engine is not asked for or cannot do what is asked, this library's own takes
// over, and there need not be another one.
TEST_F(EasyLibrary, LeavesOtherSearchesToTheNativeEngine) {
  const auto plain = [] { return IntModel().solver(); };
  const auto nonlinear = [] { return IntModel().nonlinear().solver(); };
  const struct {
    const char* asked;
    Wrapper (*solver)();
    ParamPair param;
    bool has_hint;
  } rows[] = {
      {nullptr, plain, {"seed", "1"}, false},  {"", plain, {"seed", "1"}, false},
      {"0", plain, {"seed", "1"}, false},      {"01", plain, {"seed", "1"}, false},
      {"1", plain, {"topk_sols", "2"}, false}, {"1", plain, {"best_energy_sols", nullptr}, false},
      {"1", nonlinear, {"seed", "1"}, false},  {"1", plain, {"seed", "1"}, true},
  };
  set("ZORV_LIB_DIR", "/nowhere");
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    row.asked != nullptr ? set("ZORV_INT_UNIFIED", row.asked) : void();
    const auto body = [&row] {
      const ParamPair params[] = {row.param, {"time_limit", "0"}, {"threads", "1"}, {}};
      const uint64_t bits[] = {1};
      const fake::Coeff ints[] = {5, 3};
      const uint64_t* hint = row.has_hint ? bits : nullptr;
      const Result r(zorv_easy_solver_wrapper_search_int(
          row.solver(), params, hint, reinterpret_cast<const coeff_t*>(ints), 2));
      fake::say(fact(r, "engine"));
    };
    expect_log(body, "integer-cpu\n");
  }
  // The counterparts, with values that mean the same as "1".
  for (const char* asked : {"1", "1x", "10"}) {
    set("ZORV_INT_UNIFIED", asked);
    const auto body = [] {
      Result(zorv_easy_solver_wrapper_search(IntModel().solver(), nullptr, nullptr));
    };
    expect_fatal(body, "",
                 "EasySolver: failed to load " + load_failure("/nowhere/easysolver_cppint.so"));
  }
}

TEST_F(EasyLibrary, AsksForWhatItsIntegerEngineNeeds) {
  const char* const no_engine =
      "EasySolver: ZORV_INT_UNIFIED=1 but easysolver_cppint.so lacks the unified integer engine "
      "(rebuild the solver .so)";
  const struct {
    const char* variant;
    ParamPair param;
    std::string log;
    const char* message;
  } rows[] = {
      {"without_create_int", {}, "", no_engine},
      {"without_search_int", {}, "", no_engine},
      {"without_add_constraint", {}, kCreated, Easy::kNoConstraints},
      {"without_add_constraint_set",
       {},
       kCreated + kLinear,
       "EasySolver: this solver .so does not support allowed-set constraints (rebuild it)"},
      {"without_set_cons_shape",
       {},
       kCreated + kLinear + kSet + kAbs,
       "EasySolver: this solver .so predates zorv::abs/relu (missing "
       "zorv_easy_solver_set_cons_shape)"},
      {"complete", {"threads", "0"}, kAllDelivered, "EasySolver: threads must be >= 1."},
      {"complete", {"threads", nullptr}, kAllDelivered, "EasySolver: threads must be >= 1."},
      {"complete", {"threads", "4294967296"}, kAllDelivered, "EasySolver: threads must be >= 1."},
  };
  set("ZORV_INT_UNIFIED", "1");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.variant);
    use(row.variant);
    const auto body = [&row] {
      const ParamPair params[] = {row.param, {}};
      const Wrapper w = IntModel().linear().set().shape().solver();
      Result(zorv_easy_solver_wrapper_search(w, params, nullptr));
    };
    expect_fatal(body, (row.log.empty() ? "" : kRegistered) + row.log, row.message);
  }
}

TEST_F(EasyLibrary, RefusesTheSearchOfTheOtherKindOfModel) {
  use("complete");
  const auto binary = [] {
    const Wrapper w(zorv_easy_solver_wrapper_create(one_bit()));
    zorv_easy_solver_wrapper_search_int(w, nullptr, nullptr, nullptr, 0);
  };
  expect_fatal(binary, "register_callback, gives -1\ncreate #1 nvars=1\n",
               "EasySolver: search_int called on a binary model.");
  const auto hinted = [] {
    const uint64_t bits[] = {0};
    zorv_easy_solver_wrapper_search(IntModel().solver(), nullptr, bits);
  };
  for (const char* asked : {"0", "1"}) {
    set("ZORV_INT_UNIFIED", asked);
    expect_fatal(hinted, "",
                 "EasySolver: hint on a native integer model requires the int-aware search path "
                 "(update the zorv header).");
  }
}

TEST_F(EasyLibrary, IsLeftAloneByAnIntegerModelThatIsNotSearched) {
  set("ZORV_LIB_DIR", "/nowhere");
  expect_log([] { IntModel().solver(); }, "");
}

}  // namespace
}  // namespace zorv::test
