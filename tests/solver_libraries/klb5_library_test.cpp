// KLB5Solver's calls of its library: loading, the two engines for binary models, and the integer
// engine.
#include "solver_libraries/klb5_support.h"

namespace zorv::test {
namespace {

using fake::Klb5Fake;
using fake::say;

const char* const kNoInt =
    "KLB5Solver: GPU mode requested but the integer GPU engine is unavailable (no CUDA device, or "
    "this klb5 .so has no integer kernels).";
const char* const kNoIntShape =
    "KLB5Solver: this klb5 .so predates zorv::abs/relu on the integer GPU engine (missing "
    "zorv_klb5_int_set_cons_shape) — update the solver .so.";

std::string missing(const std::string& symbol) { return "KLB5Solver: symbol not found: " + symbol; }

void declare(ExprImpl& e, const ExprImpl& declared, const coeff_t& weight = 1) {
  iadd_expr(e, clone_mul_int(declared, weight));
}

// What an engine is told as its solver for the plain model below is made, with mode 0 or 1.
std::string made(const std::string& engine) {
  return engine + " create 2: 0 1*0 2*1" + (engine == "gpu" ? ", mode 1\n" : "\n") + engine +
         " stop 0\n";
}

class Klb5Library : public ::testing::Test {
 protected:
  const uint32_t x = fresh(), y = fresh(), z = fresh(), not_x = x | kNegationBit;
  const uint32_t a = new_int_var("a", -2, 5), b = new_int_var("b", 0, pow2(70));
  const FakeFolder folder;

  // A model of x and y with one part of a kind.
  enum Part { kPlain, kLinear, kShape, kNonlinear, kAllowed, kRemainder };
  Model binary(Part part) const {
    ExprImpl e = var(x) + 2 * var(y);
    if (part == kLinear) declare(e, cons_between(var(x), 0, 0));
    if (part == kShape) declare(e, abs_term(var(x) - var(y), 1));
    if (part == kNonlinear) declare(e, cons_between(var(x) * var(y), 0, 0));
    if (part == kAllowed) declare(e, cons_equal(var(x) + var(y), {{0, 0}, {2, 2}}));
    if (part == kRemainder) declare(e, cons_mark(3 * (var(x) * var(y))));
    return compiled(e);
  }
  Model integer(Part part) const {
    ExprImpl e = expr_simplify_as_binary(var(a) * var(a) + var(x));
    if (part == kLinear) declare(e, cons_between(var(a), 0, 0));
    if (part == kShape) declare(e, abs_term(var(a), 1));
    if (part == kAllowed) declare(e, cons_equal(var(a), {{0, 0}, {2, 2}}));
    return compiled(e);
  }
};

// Loading -----------------------------------------------------------------------------------------

TEST_F(Klb5Library, IsLookedForWhereItIsSaidToBe) {
  const Model m = binary(kPlain);
  const std::string why = ": cannot open shared object file: No such file or directory";
  for (const std::string dir : {"/no/such", "/no/such/"}) {
    const std::string path = "/no/such/klb5_cppint.so";
    EXPECT_FATAL((setenv("ZORV_LIB_DIR", dir.c_str(), 1), klb5(m, 0)),
                 "KLB5Solver: failed to load " + path + ": " + path + why);
  }
  FakeFolder broken;
  broken.write("no library");
  EXPECT_FATAL(
      (setenv("ZORV_LIB_DIR", broken.path().c_str(), 1), klb5(m, 0)),
      "KLB5Solver: failed to load " + broken.file() + ": " + broken.file() + ": file too short");
  // An integer model asks for it unless the mode is 0.
  const Model with_integers = integer(kPlain);
  EXPECT_FATAL((setenv("ZORV_LIB_DIR", "/no/such", 1), klb5(with_integers, -1)),
               "KLB5Solver: failed to load /no/such/klb5_cppint.so: /no/such/klb5_cppint.so" + why);
  EXPECT_LINES((setenv("ZORV_LIB_DIR", "/no/such", 1), klb5(with_integers, 0)), "");
}

TEST_F(Klb5Library, NamesTheFirstRequiredSymbolThatIsMissing) {
  std::vector<std::string> required = {
      "zorv_klb5_gpu_device_count",      "zorv_klb5_cpu_solver_create",
      "zorv_klb5_cpu_solver_destroy",    "zorv_klb5_cpu_solver_search",
      "zorv_klb5_cpu_register_callback", "zorv_klb5_cpu_sol_list_count",
      "zorv_klb5_cpu_sol_list_get",      "zorv_klb5_cpu_sol_list_destroy"};
  const Model m = binary(kPlain);
  for (; !required.empty(); required.erase(required.begin())) {
    const FakeFolder poor(required);
    EXPECT_FATAL((poor.use(), klb5(m, 0)), missing(required.front()));
  }
}

// Binary models -----------------------------------------------------------------------------------

TEST_F(Klb5Library, HandsTheWholeModelToTheCpuEngine) {
  ExprImpl e = expr_simplify_as_binary(2 * (var(x) * var(y)) - var(z) +
                                       5 * (var(not_x) * var(y) * var(z)) + pow2(70));
  declare(e, cons_between(var(x) + var(y) - 1, 0, 1), -2);
  declare(e, cons_between(var(x) * var(y) + 3 * var(z), -1, 0), 4);
  declare(e, cons_equal(var(x) + 2 * var(z), {{0, 0}, {2, 3}}));
  declare(e, abs_term(var(x) - var(y), 1), 3);
  declare(e, cons_mark(6 * (var(x) * var(z)) + 7));
  const Model m = compiled(e);
  EXPECT_LINES((folder.use(), klb5(m, 0)),
               "cpu register\n"
               "cpu create 3: 1180591620717411303431 -1*2 2*0*1 6*0*2 5*~0*1*2\n"
               "cpu stop 0\n"
               "cpu cons -2 * (-1 1*0 1*1) in 0..1\n"
               "cpu cons 1 * (0 1*0 2*2) in 0..3 set 0..0 2..3\n"
               "cpu cons 3 * (0 1*0 -1*1) in 0..0\n"
               "cpu shape 1 1\n"
               "cpu cons 4 * (0 3*2 nl 1*0*1) in -1..0\n"
               "cpu remainder 7 6*0*2\n"
               "cpu destroy\n");
}

TEST_F(Klb5Library, HandsTheWholeModelToTheGpuEngine) {
  ExprImpl e = expr_simplify_as_binary(2 * (var(x) * var(y)) - var(z));
  declare(e, cons_between(var(x) + var(y), 0, 1), -2);
  declare(e, relu_term(var(x) - var(y), 2), 3);
  declare(e, cons_mark(var(y)));
  const Model m = compiled(e);
  EXPECT_LINES((folder.use(), klb5(m, 7)),
               "gpu register\n"
               "gpu create 3: 0 1*1 -1*2 2*0*1, mode 7\n"
               "gpu cons -2 * (0 1*0 1*1) in 0..1\n"
               "gpu cons 3 * (0 1*0 -1*1) in -1..0\n"
               "gpu shape 2 1\n"
               "gpu remainder 0 1*1\n"
               "gpu stop 0\n"
               "gpu destroy\n");
}

TEST_F(Klb5Library, ChoosesTheEngineByModeAndDevices) {
  const Model m = binary(kPlain);
  const struct {
    int32_t mode, devices;
    std::vector<std::string> lacking;
    const char* engine;  // null: there is none
  } rows[] = {
      {0, 2, {}, "cpu"},
      {-1, 2, {}, "cpu"},
      {1, 2, {}, "gpu"},
      {1, 1, {}, "gpu"},
      {1, 0, {}, nullptr},
      {1, -1, {}, nullptr},
      {0, 0, {}, "cpu"},
      {-1, 0, {}, "cpu"},
      {1, 1, {"zorv_klb5_solver_create"}, nullptr},
      {-1, 1, {"zorv_klb5_solver_create"}, "cpu"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE("mode " + std::to_string(row.mode) + ", devices " + std::to_string(row.devices));
    const FakeFolder own(row.lacking);
    const auto make = [&] {
      own.use().devices = row.devices;
      klb5(m, row.mode);
    };
    if (row.engine == nullptr) {
      EXPECT_FATAL(make(), "KLB5Solver: GPU mode requested but no GPU available");
      continue;
    }
    const std::string engine = row.engine;
    EXPECT_LINES(make(), engine + " register\n" + made(engine) + engine + " destroy\n");
  }
}

TEST_F(Klb5Library, SearchesRegisterOnceAndReadTheWholeAnswer) {
  const Model m = binary(kPlain);
  const auto run = [&] {
    Klb5Fake& fake = folder.use();
    fake.has_facts = true;
    fake.answers = {{-pow2(70), {1}, 0.5}, {3, {2}, 0.25}, {0, {3}, 2.5}};
    const Klb5 cpu = klb5(m, 0), again = klb5(m, 0), gpu = klb5(m, 1), other = klb5(m, 2);
    const uint64_t hint = 2;
    for (const Klb5* solver : {&cpu, &gpu}) {
      const Result r = zorv_klb5_wrapper_search(*solver, Params{{"threads", "0"}, {"any", "thing"}},
                                                solver == &cpu ? &hint : nullptr);
      const SearchResult& result = unwrap(r);
      say("= ", result.energy, " ", result.bits[0], " ", result.tts, " ", result.scale);
      for (const TopKEntry& entry : result.topk) {
        say("+ ", entry.energy, " ", entry.bits[0], " ", entry.tts, " ", entry.ints.size());
      }
      std::string facts;
      for (const InfoEntry& entry : result.info) facts += " " + entry.key;
      say("keys", facts, " moves=", info(r, "moves"));
    }
    fake.answers.resize(1);
    fake.has_facts = false;
    const Result r = zorv_klb5_wrapper_search(again, nullptr, nullptr);
    say(unwrap(r).info.size(), " facts, ", unwrap(r).topk.size(), " more");
  };
  const auto answer = [](const std::string& engine) {
    return engine + " list count\n" + engine + " list get 0 of 2 bits, 1 words\n" + engine +
           " list get 1 of 2 bits, 1 words\n" + engine +
           " list destroy\n"
           "= -1180591620717411303424 1 0.5 1\n+ 3 2 0.25 0\n+ 0 3 2.5 0\n"
           "keys run_time moves device os cpu gpu ram moves=12\n";
  };
  EXPECT_LINES(run(),
               "cpu register\n" + made("cpu") + made("cpu") + "gpu register\n" + made("gpu") +
                   "gpu create 2: 0 1*0 2*1, mode 2\ngpu stop 0\n"
                   "cpu search 2: threads=0 any=thing hint 2\n" +
                   answer("cpu") + "gpu search 2: threads=0 any=thing hint none\n" + answer("gpu") +
                   "cpu search 2: hint none\n5 facts, 0 more\n"
                   "gpu destroy\ngpu destroy\ncpu destroy\ncpu destroy\n");
}

TEST_F(Klb5Library, PassesEventsOnToTheCallback) {
  const Model m = binary(kPlain);
  const auto fire = [](const fake::Klb5Search& search) {
    uint64_t limbs[] = {7};
    const CoeffWire energy = {-1, 1, limbs};
    const uint64_t bits = 2;
    say("= ", search.callback(search.wrapper, &energy, &bits, 1, 0.5));
    say("= ", search.callback(search.wrapper, &energy, nullptr, 2, 0.5));
    say("= ", search.callback(nullptr, nullptr, nullptr, 0, 0.0));
  };
  for (const int32_t mode : {0, 1}) {
    const auto run = [&] {
      Klb5Fake& fake = folder.use();
      fake.is_quiet = true;
      const Klb5 solver = klb5(m, mode);
      fake.during_search = [](const fake::Klb5Search& search) {
        say("= ", search.callback(search.wrapper, nullptr, nullptr, 1, 0.5));
      };
      Result(zorv_klb5_wrapper_search(solver, nullptr, nullptr));
      int seen = 0;
      zorv_klb5_wrapper_set_callback(
          solver,
          [](void* ctx, zorv_sol* sol, uint32_t event) {
            say(++*static_cast<int*>(ctx), ": ", take(sol, event));
            return event == 1 ? 0.25 : -3.0;
          },
          &seen);
      fake.during_search = fire;
      Result(zorv_klb5_wrapper_search(solver, nullptr, nullptr));
      zorv_klb5_wrapper_set_callback(solver, nullptr, nullptr);
      fake.during_search = [](const fake::Klb5Search& search) {
        say("= ", search.callback(search.wrapper, nullptr, nullptr, 1, 0.5));
      };
      Result(zorv_klb5_wrapper_search(solver, nullptr, nullptr));
    };
    EXPECT_LINES(run(),
                 "= -1\n"
                 "1: event 1 energy -7 bits 2 ints at 0.5\n= 0.25\n"
                 "2: event 2 energy -7 bits none ints at 0.5\n= -3\n"
                 "= -1\n"
                 "= -1\n");
  }
}

TEST_F(Klb5Library, StopsAndHintsReachARunningEngine) {
  const Model m = binary(kPlain), empty = compiled(constant(1));
  for (const int32_t mode : {0, 1}) {
    const std::string engine = mode == 0 ? "cpu" : "gpu";
    const auto run = [&] {
      Klb5Fake& fake = folder.use();
      const Klb5 solver = klb5(m, mode);
      const Solution fits = zorv_sol_create(m), too_short = zorv_sol_create(empty);
      zorv_sol_set(fits, y, 1);
      zorv_klb5_wrapper_terminate(solver);  // without effect
      fake.during_search = [&](const fake::Klb5Search& search) {
        say("stop ", int{*search.stop});
        zorv_klb5_wrapper_terminate(solver);
        say("stop ", int{*search.stop});
        zorv_klb5_wrapper_hint(solver, too_short);
        zorv_klb5_wrapper_hint(solver, nullptr);
        zorv_klb5_wrapper_hint(solver, fits);
      };
      Result(zorv_klb5_wrapper_search(solver, nullptr, nullptr));
    };
    EXPECT_LINES(run(), engine + " register\n" + made(engine) + engine +
                            " search 2: hint none\nstop 0\nstop 1\n" + engine + " hint 2\n" +
                            engine + " destroy\n");
  }
}

TEST_F(Klb5Library, DoesWithoutWhatIsOptional) {
  const FakeFolder poor({"zorv_klb5_cpu_hint_solution", "zorv_klb5_cpu_solver_set_external_stop",
                         "zorv_klb5_cpu_add_constraint", "zorv_klb5_cpu_set_remainder",
                         "zorv_klb5_hint_solution", "zorv_klb5_solver_set_external_stop",
                         "zorv_klb5_int_create", "zorv_klb5_init"});
  const Model m = binary(kPlain);
  const auto run = [&] {
    poor.use();
    const Klb5 cpu = klb5(m, 0), gpu = klb5(m, 1);
    const Solution sol = zorv_sol_create(m);
    for (const Klb5* solver : {&cpu, &gpu}) {
      zorv_klb5_wrapper_hint(*solver, sol);
      Result(zorv_klb5_wrapper_search(*solver, nullptr, nullptr));
    }
  };
  EXPECT_LINES(
      run(),
      "cpu register\ncpu create 2: 0 1*0 2*1\ngpu register\ngpu create 2: 0 1*0 2*1, mode 1\n"
      "cpu search 2: hint none\ngpu search 2: hint none\ngpu destroy\ncpu destroy\n");
}

TEST_F(Klb5Library, RefusesModelsThatAnEngineCannotTake) {
  const struct {
    Part part;
    int32_t mode;
    const char* lacking;  // null: nothing
    bool is_made;         // the engine's solver, before the refusal
    const char* text;
  } rows[] = {
      {kNonlinear, 1, nullptr, false,
       "this klb5 .so does not support nonlinear native constraint bodies on the GPU (rebuild it)"},
      {kAllowed, 1, nullptr, false,
       "this klb5 .so does not support allowed-value set constraints (equal{...}) on the GPU "
       "(rebuild it)"},
      {kNonlinear, -1, "zorv_klb5_cpu_add_constraint_nl", false,
       "this solver .so does not support nonlinear native constraint bodies (rebuild it)"},
      {kAllowed, 0, "zorv_klb5_cpu_add_constraint_set", false,
       "this solver .so does not support allowed-value set constraints (equal{...}); rebuild it"},
      {kShape, 1, "zorv_klb5_set_cons_shape", true,
       "this klb5 .so predates zorv::abs/relu (missing zorv_klb5_set_cons_shape) — update the "
       "solver .so."},
      {kShape, 0, "zorv_klb5_cpu_set_cons_shape", true,
       "this klb5 .so predates zorv::abs/relu (missing zorv_klb5_cpu_set_cons_shape) — update the "
       "solver .so."},
      {kLinear, 1, "zorv_klb5_add_constraint", true,
       "this klb5 .so does not support native constraints on the GPU path (rebuild it)"},
      {kLinear, 0, "zorv_klb5_cpu_add_constraint", true,
       "this klb5 .so does not support native constraints (rebuild it)"},
      {kRemainder, 1, "zorv_klb5_set_remainder", true,
       "this solver .so does not support free-form penalty constraints (rebuild it)"},
      {kRemainder, 0, "zorv_klb5_cpu_set_remainder", true,
       "this solver .so does not support free-form penalty constraints (rebuild it)"},
  };
  for (const auto& row : rows) {
    const Model m = binary(row.part);
    const FakeFolder own(row.lacking == nullptr ? std::vector<std::string>{}
                                                : std::vector<std::string>{row.lacking});
    EXPECT_FATAL((own.use().is_quiet = row.is_made, klb5(m, row.mode)),
                 std::string("KLB5Solver: ") + row.text);
  }
}

TEST_F(Klb5Library, NamesWhatAGpuEngineLacksWhereItIsCalled) {
  const Model m = binary(kPlain);
  for (const char* symbol :
       {"zorv_klb5_register_callback", "zorv_klb5_solver_search", "zorv_klb5_sol_list_count",
        "zorv_klb5_sol_list_get", "zorv_klb5_sol_list_destroy", "zorv_klb5_solver_destroy"}) {
    const FakeFolder poor({symbol});
    const auto run = [&] {
      Klb5Fake& fake = poor.use();
      fake.is_quiet = true;
      fake.answers.resize(2);
      const Klb5 solver = klb5(m, 1);
      Result(zorv_klb5_wrapper_search(solver, nullptr, nullptr));
    };
    EXPECT_FATAL(run(), missing(symbol));
    EXPECT_LINES((poor.use().is_quiet = true, klb5(m, 0)), "");
  }
}

TEST_F(Klb5Library, TimesTheStagesOfConstruction) {
  const Model m = binary(kPlain);
  std::string pattern = "^";
  for (const char* label :
       {"enter \\(after model copy\\)", "klb5_dispatch\\(\\)",
        "gpu_count \\+ has_gpu \\(CUDA init\\)", "set tv_ptrs \\+ ca_ptrs \\(no copy\\)",
        "gpu/cpu_create \\(DeltaModel \\+ DeviceDeltaModel\\)"}) {
    pattern += std::string("  \\[Wrap\\] ") + label + ": [-+.e0-9]+s\n";
  }
  const auto profiled = [&](const Model& model) {
    folder.use().is_quiet = true;
    setenv("ZORV_MODEL_PROFILE", "", 1);
    klb5(model, 0);
  };
  EXPECT_TO_WRITE(profiled(m), ::testing::MatchesRegex(pattern + "$"));
  const Model with_integers = integer(kPlain);
  EXPECT_LINES(profiled(with_integers), "");
}

// Integer models ----------------------------------------------------------------------------------

TEST_F(Klb5Library, ChoosesTheRoundsOfIntegerModels) {
  const std::vector<std::string> none, no_shape = {"zorv_klb5_int_set_cons_shape"},
                                       no_hint = {"zorv_klb5_int_hint"};
  struct Row {
    Part part;
    int32_t mode, devices;
    std::vector<std::string> lacking;
    std::string expected;  // an engine or a text
  };
  std::vector<Row> rows = {
      {kPlain, 0, 1, none, "cpu"},           {kPlain, -1, 1, none, "cpu+gpu"},
      {kPlain, 1, 1, none, "cpu+gpu"},       {kPlain, -1, 0, none, "cpu"},
      {kPlain, 1, 0, none, kNoInt},          {kPlain, -5, 3, no_shape, "cpu+gpu"},
      {kPlain, 1, 1, no_shape, "cpu+gpu"},   {kShape, -1, 1, none, "cpu+gpu"},
      {kShape, 0, 1, no_shape, "cpu"},       {kShape, -1, 1, no_shape, "cpu"},
      {kShape, 1, 1, no_shape, kNoIntShape}, {kShape, 1, 0, no_shape, kNoIntShape},
      {kShape, 1, 1, no_hint, kNoInt},       {kShape, -1, 1, no_hint, "cpu"},
  };
  for (const char* symbol :
       {"zorv_klb5_int_create", "zorv_klb5_int_add_cons", "zorv_klb5_int_round2",
        "zorv_klb5_int_hint", "zorv_klb5_int_destroy"}) {
    rows.push_back({kPlain, -1, 1, {symbol}, "cpu"});
    rows.push_back({kPlain, 1, 1, {symbol}, kNoInt});
  }
  for (const Row& row : rows) {
    SCOPED_TRACE(row.expected + ", mode " + std::to_string(row.mode) + ", devices " +
                 std::to_string(row.devices));
    const Model m = integer(row.part);
    const FakeFolder own(row.lacking);
    const auto search = [&] {
      Klb5Fake& fake = own.use();
      fake.is_quiet = true;
      fake.devices = row.devices;
      const Klb5 solver = klb5(m, row.mode);
      const Result r = zorv_klb5_wrapper_search(
          solver, Params{{"threads", "1"}, {"target_energy", "0"}}, nullptr);
      say(info(r, "engine"));
    };
    if (row.expected[0] == 'K') {
      EXPECT_FATAL(search(), row.expected);
    } else {
      EXPECT_LINES(search(), "integer-" + row.expected + "\n");
    }
  }
}

TEST_F(Klb5Library, HandsTheWholeModelToTheRoundsOfEachSearch) {
  ExprImpl e = expr_simplify_as_binary(var(x) * var(a) * var(a) - 3 * var(b) + pow2(70));
  declare(e, cons_between(var(x) + 2 * var(a) + 5, 0, 1), -2);
  declare(e, cons_between(var(x) * var(a) - var(b), 0, 4), 9);
  declare(e, cons_equal(var(y) + var(b), {{3, 3}, {7, 9}}));
  declare(e, relu_term(var(a), 1));
  const Model m = compiled(e);
  for (const auto& [replicas, expected] : {std::pair<const char*, const char*>{nullptr, "2048"},
                                           {"0", "2048"},
                                           {"many", "2048"},
                                           {"7", "7"}}) {
    const auto run = [&, replicas = replicas] {
      folder.use();
      if (replicas != nullptr) setenv("ZORV_KLB5_INT_REPLICAS", replicas, 1);
      const Klb5 solver = klb5(m, 1);
      say("search");
      const Result r =
          zorv_klb5_wrapper_search(solver, Params{{"threads", "1"}, {"time_limit", "0"}}, nullptr);
      say("end");
    };
    EXPECT_LINES(run(), std::string("search\n"
                                    "int create 2, 2 ints -2..5 0..1180591620717411303424: "
                                    "1180591620717411303424 -3*i1 1*0*i0*i0, 0 ") +
                            expected +
                            "\nint cons -2 * (5 1*0 2*2 nl) in 0..1 set\n"
                            "int cons 1 * (0 1*1 1*3 nl) in 3..9 set 3..3 7..9\n"
                            "int cons 1 * (0 1*2 nl) in -2..0 set\n"
                            "int shape 1 1\n"
                            "int cons 9 * (0 -1*3 nl 1*0*2) in 0..4 set\n"
                            "int destroy\nend\n");
  }
}

// The library's own engine for integers -----------------------------------------------------------

TEST_F(Klb5Library, SearchesInIntegersWhereThatIsAskedFor) {
  ExprImpl e = expr_simplify_as_binary(var(x) * var(a) * var(a) - 3 * var(b));
  declare(e, cons_between(var(x) + 2 * var(a) + 5, 0, 1), -2);
  declare(e, cons_equal(var(y) + var(b), {{3, 3}, {7, 9}}));
  declare(e, abs_term(var(a), 1));
  const Model m = compiled(e);
  for (const auto& [mode, passed] : {std::pair{0, 0}, {-5, -1}, {7, 7}}) {
    const auto run = [&, mode = mode] {
      Klb5Fake& fake = folder.use();
      setenv("ZORV_INT_UNIFIED", "1x", 1);
      fake.answers = {{-pow2(70), {2}, 0.5}, {0, {}, 0.0}};
      fake.ints = {-2, pow2(70)};
      fake.has_facts = true;
      const Klb5 solver = klb5(m, mode);
      const Result r = zorv_klb5_wrapper_search(solver, Params{{"threads", "0"}}, nullptr);
      const SearchResult& result = unwrap(r);
      say("= ", result.energy, " ", result.bits[0], " ", result.tts, " ", result.ints[0], " ",
          result.ints[1], " ", result.topk.size());
      std::string facts;
      for (const InfoEntry& entry : result.info) facts += " " + entry.key;
      say("keys", facts, " ", info(r, "engine"));
      fake.is_quiet = true;
      Result(zorv_klb5_wrapper_search_int(solver, nullptr, nullptr, nullptr, 0));
    };
    EXPECT_LINES(run(),
                 "cpu register_iv\n"
                 "cpu create_int 2, 2 ints -2..5 0..1180591620717411303424: 0 -3*i1 "
                 "1*0*i0*i0, mode " +
                     std::to_string(passed) +
                     "\n"
                     "cpu stop 0\n"
                     "cpu cons -2 * (5 1*0 2*2) in 0..1\n"
                     "cpu cons 1 * (0 1*1 1*3) in 3..9 set 3..3 7..9\n"
                     "cpu cons 1 * (0 1*2) in 0..0\n"
                     "cpu shape 1 1\n"
                     "cpu search_int 2: threads=0 ints [0 0]\n"
                     "cpu list destroy\n"
                     "cpu destroy\n"
                     "= -1180591620717411303424 2 0.5 -2 1180591620717411303424 0\n"
                     "keys run_time moves device engine os cpu gpu ram integer-unified\n");
  }
}

TEST_F(Klb5Library, KeepsToItsOwnEngineOtherwise) {
  const Model linear = integer(kLinear);
  ExprImpl e = var(a);
  declare(e, cons_between(var(x) * var(a), -2, 5));
  const Model nonlinear = compiled(e);
  const uint64_t bits = 0;
  const struct {
    const Model* model;
    const char *asked, *key;
    const uint64_t* hint;
  } rows[] = {{&linear, "0", "seed", nullptr},
              {&linear, "", "seed", nullptr},
              {&linear, "yes", "seed", nullptr},
              {&linear, "1", "topk_sols", nullptr},
              {&linear, "1", "best_energy_sols", nullptr},
              {&nonlinear, "1", "seed", nullptr},
              {&linear, "1", "seed", &bits}};
  for (const auto& row : rows) {
    const auto run = [&] {
      folder.use();
      setenv("ZORV_INT_UNIFIED", row.asked, 1);
      const Klb5 solver = klb5(*row.model, 0);
      const coeff_t value = 1;
      const Result r = zorv_klb5_wrapper_search_int(
          solver, Params{{"time_limit", "0"}, {"threads", "1"}, {row.key, "3"}}, row.hint,
          borrow(&value), 1);
      say(info(r, "engine"));
    };
    EXPECT_LINES(run(), "integer-cpu\n");
  }
}

TEST_F(Klb5Library, PassesEventsHintsAndStopsOnInIntegers) {
  const Model m = integer(kPlain), binary_model = binary(kPlain);
  const auto run = [&] {
    Klb5Fake& fake = folder.use();
    setenv("ZORV_INT_UNIFIED", "1", 1);
    fake.ints = {4};
    const Klb5 solver = klb5(m, 0);
    const Solution fits = zorv_sol_create(m), no_ints = zorv_sol_create(binary_model),
                   out_of_bounds = zorv_sol_create(m);
    zorv_sol_set(fits, x, 1);
    zorv_sol_set_int(fits, a, Wire(-1));
    unwrap(static_cast<zorv_sol*>(out_of_bounds)).int_vals[0] = 6;
    zorv_klb5_wrapper_hint(solver, fits);  // no engine to pass it to
    fake.during_search = [&](const fake::Klb5Search& search) {
      for (const zorv_sol* sol :
           {static_cast<zorv_sol*>(no_ints), static_cast<zorv_sol*>(out_of_bounds),
            static_cast<zorv_sol*>(fits)}) {
        zorv_klb5_wrapper_hint(solver, sol);
      }
      zorv_klb5_wrapper_terminate(solver);
      say("stop ", int{*search.stop});
      uint64_t limbs[] = {7};
      const CoeffWire energy = {-1, 1, limbs};
      const uint64_t word = 1;
      const fake::Coeff ints[] = {3};
      const auto fire = [&](void* wrapper, const uint64_t* words) {
        say("= ", search.callback_iv(wrapper, &energy, words, borrow(ints), 1, 1, 0.5));
      };
      say("= ", search.callback_iv(nullptr, nullptr, nullptr, nullptr, 1, 0, 0.0));
      say("= ", search.callback_iv(search.wrapper, nullptr, nullptr, nullptr, 1, 0, 0.0));
      zorv_klb5_wrapper_set_callback(
          solver,
          [](void*, zorv_sol* sol, uint32_t event) {
            say(take(sol, event));
            return 0.125;
          },
          nullptr);
      fire(search.wrapper, &word);
      fire(search.wrapper, nullptr);
    };
    Result(zorv_klb5_wrapper_search(solver, nullptr, nullptr));
    zorv_klb5_wrapper_hint(solver, fits);  // the engine's solver is gone
  };
  EXPECT_LINES(run(),
               "cpu register_iv\ncpu create_int 1, 1 ints -2..5: 0 1*0 1*i0*i0, mode 0\n"
               "cpu stop 0\ncpu search_int 1: ints [0]\n"
               "cpu hint_iv 1 [-1]\nstop 1\n= -1\n= -1\n"
               "event 1 energy -7 bits 1 ints 3 at 0.5\n= 0.125\n"
               "event 1 energy -7 bits none ints 3 at 0.5\n= 0.125\n"
               "cpu destroy\n");
}

TEST_F(Klb5Library, RefusesSearchesInIntegersThatItCannotRun) {
  const char* const no_engine =
      "KLB5Solver: ZORV_INT_UNIFIED=1 but the klb5 solver .so lacks the unified integer engine "
      "(rebuild the solver .so)";
  const struct {
    Part part;
    const char *lacking, *text;
  } rows[] = {
      {kPlain, "zorv_klb5_cpu_solver_create_int", no_engine},
      {kPlain, "zorv_klb5_cpu_solver_search_int", no_engine},
      {kPlain, "zorv_klb5_cpu_register_callback_iv", no_engine},
      {kLinear, "zorv_klb5_cpu_add_constraint",
       "KLB5Solver: this klb5 .so does not support native constraints (rebuild it)"},
      {kAllowed, "zorv_klb5_cpu_add_constraint_set",
       "KLB5Solver: this klb5 .so does not support allowed-value set constraints (rebuild it)"},
      {kShape, "zorv_klb5_cpu_set_cons_shape",
       "KLB5Solver: this klb5 .so predates zorv::abs/relu (missing zorv_klb5_cpu_set_cons_shape)"},
  };
  setenv("ZORV_INT_UNIFIED", "1", 1);
  for (const auto& row : rows) {
    const Model m = integer(row.part);
    const FakeFolder poor({row.lacking});
    const auto run = [&] {
      poor.use().is_quiet = true;
      Result(zorv_klb5_wrapper_search(klb5(m, 0), nullptr, nullptr));
    };
    EXPECT_FATAL(run(), row.text);
  }
  const Model m = integer(kPlain);
  const FakeFolder without_hints(
      {"zorv_klb5_cpu_hint_iv", "zorv_klb5_cpu_solver_set_external_stop"});
  const auto run = [&] {
    Klb5Fake& fake = without_hints.use();
    const Klb5 solver = klb5(m, 0);
    const Solution sol = zorv_sol_create(m);
    fake.during_search = [&](const fake::Klb5Search&) { zorv_klb5_wrapper_hint(solver, sol); };
    Result(zorv_klb5_wrapper_search(solver, nullptr, nullptr));
  };
  EXPECT_LINES(run(),
               "cpu register_iv\ncpu create_int 1, 1 ints -2..5: 0 1*0 1*i0*i0, mode 0\n"
               "cpu search_int 1: ints []\ncpu destroy\n");
  unsetenv("ZORV_INT_UNIFIED");

  const uint64_t hint = 0;
  EXPECT_FATAL(zorv_klb5_wrapper_search(klb5(m, 0), nullptr, &hint),
               "KLB5Solver: hint on a native integer model requires the int-aware search path "
               "(update the zorv header).");
  const Model binary_model = binary(kPlain);
  const auto search_int = [&] {
    folder.use().is_quiet = true;
    zorv_klb5_wrapper_search_int(klb5(binary_model, 0), nullptr, nullptr, nullptr, 0);
  };
  EXPECT_FATAL(search_int(), "KLB5Solver: search_int called on a binary model.");
}

}  // namespace
}  // namespace zorv::test
