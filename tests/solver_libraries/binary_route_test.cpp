// What EasySolver and ExhaustiveSolver have in common on models of binary variables alone: which
// calls their libraries receive, in which order, and what comes of the answers.
#include "fakes/received.h"
#include "solver_libraries/binary_models.h"

namespace zorv::test {
namespace {

template <typename Solver>
class BinaryRoute : public Routes {
 protected:
  void use(const std::string& variant) { load_from(Solver::kFolder + variant); }
  static auto create(const Model& m) { return typename Solver::Wrapper(Solver::create(m)); }
  static void search(const typename Solver::Wrapper& w, std::vector<ParamPair> params) {
    params.push_back({nullptr, nullptr});
    say_result(Result(Solver::search(w, params.data())));
  }
};

using Solvers = ::testing::Types<Easy, Exhaustive>;
TYPED_TEST_SUITE(BinaryRoute, Solvers);

const std::string kCreated =
    "register_callback, gives -1\n"
    "create #1 nvars=3\n";
// The constraints of everything(): linear bodies first, each one followed by its shape.
const std::string kLinear =
    "add_constraint #1 4 * (-1 1*0 2*1) in -1..6\n"
    "add_constraint #1 3 * (0 1*0 -1*2) in -1..0\n"
    "set_cons_shape #1 2 1\n";
const std::string kSet = "add_constraint_set #1 1 * (0 3*0 1*2) in 1..4: 1..1 4..4\n";
const std::string kAbs =
    "add_constraint #1 1 * (0 1*0 -1*1) in 0..0\n"
    "set_cons_shape #1 1 1\n";
const std::string kNonlinear = "add_constraint_nl #1 1 * (0 1*2 | 1*0*1) in 1..1\n";
const std::string kDelivered = kCreated + kLinear + kSet + kAbs + kNonlinear;
const std::string kRemainder = "set_remainder #1 18 9*1*2\n";
// Its terms, with the remainder among them.
const std::string kTerms = ": 25 2*0 -3*1 1208925819614629174706176*2 5*0*1 9*1*2 -1*0*1*~2\n";
const std::string kBest = "result -18446744073709551619 after 0.25, bits 5; ";

TYPED_TEST(BinaryRoute, HandsOverTheModelOnceAndSearchesItTwice) {
  this->use("complete");
  const auto body = [] {
    const auto w = TestFixture::create(everything());  // and the model lives on in it
    TestFixture::search(w, {{"time_limit", "1"}, {"seed", nullptr}});
    TestFixture::search(w, {{"sols", "2"}, {"time_limit", "2"}, {"facts", "1"}});
  };
  this->expect_log(body, kDelivered + kRemainder + "search #1 time_limit=1 seed=(null)" + kTerms +
                             "get_info #1\n" + kBest + "info run_time os cpu gpu ram\n" +
                             "search #1 sols=2 time_limit=2 facts=1" + kTerms +
                             "sol_list_count\n"
                             "sol_list_get 0 nbits=3 bits=0\n"
                             "sol_list_get 1 nbits=3 bits=0\n"
                             "sol_list_destroy\n"
                             "get_info #1\n"
                             "free_info moves\n" +
                             kBest +
                             "0 after 0, bits 1; 18446744073709551616 after 1, bits 2; "
                             "info run_time moves=12 engine=fake os cpu gpu ram\n"
                             "destroy #1\n");
}

TYPED_TEST(BinaryRoute, PassesTheModelsOwnArrays) {
  this->use("complete");
  const auto body = [] {
    const Model m = everything();
    const auto w = TestFixture::create(m);
    void* library = dlopen((fakes(TypeParam::kFolder) + "complete/" + TypeParam::kFile).c_str(),
                           RTLD_NOW | RTLD_NOLOAD);
    const auto received =
        reinterpret_cast<decltype(&fake_received)>(dlsym(library, "fake_received"));
    const fake::Received& got = *received();
    bool is_own = true;
    for (uint32_t d = 1; d <= 3; ++d) {
      is_own = is_own && got.term_vars[d - 1] == zorv_model_term_vars(m, d) &&
               got.term_coeffs[d - 1] == zorv_model_coeff_array(m, d);
    }
    fake::say("terms ", is_own);
    const uint64_t abs = 3;  // the last one in the plain form
    fake::say("constraint ", got.cons_vars == zorv_model_native_cons_vars(m, abs),
              got.cons_coeffs == zorv_model_native_cons_coeffs(m, abs));
    fake::say("remainder ", got.remainder_head == zorv_model_remainder_head(m),
              got.remainder_vars == zorv_model_remainder_vars(m),
              got.remainder_coeffs == zorv_model_remainder_coeffs(m));
  };
  this->expect_log(body,
                   kDelivered + kRemainder + "terms 1\nconstraint 11\nremainder 111\ndestroy #1\n");
}

TYPED_TEST(BinaryRoute, RegistersOneCallbackForAllSolvers) {
  this->use("complete");
  const auto body = [] {
    const Model m = one_bit();
    const auto first = TestFixture::create(m), second = TestFixture::create(m);
    TypeParam::destroy(nullptr);
  };
  this->expect_log(body,
                   "register_callback, gives -1\n"
                   "create #1 nvars=1\n"
                   "create #2 nvars=1\n"
                   "destroy #2\n"
                   "destroy #1\n");
}

TYPED_TEST(BinaryRoute, RefusesLibrariesThatCannotBeUsed) {
  const auto body = [] { TestFixture::create(one_bit()); };
  const std::string name = TypeParam::kName;
  for (const std::string& folder : {TypeParam::kOtherFolder + std::string("complete"),
                                    TypeParam::kFolder + std::string("broken")}) {
    this->load_from(folder);
    this->expect_fatal(
        body, "",
        name + ": failed to load " + this->load_failure(fakes(folder) + "/" + TypeParam::kFile));
  }
  // Each of these libraries lacks the later ones too, so the order of the names is told as well.
  for (const char* symbol : {"create", "destroy", "search", "sol_list_count", "sol_list_get",
                             "sol_list_destroy", "register_callback"}) {
    this->use(std::string("without_") + symbol);
    this->expect_fatal(body, "", name + ": symbol not found: " + TypeParam::kPrefix + symbol);
  }
}

TYPED_TEST(BinaryRoute, AsksForOptionalFunctionsWhereTheyAreNeeded) {
  const struct {
    const char* missing;
    std::string log;
    const char* message;
  } rows[] = {
      // Told by a look at the whole model, before the first constraint is delivered.
      {"set_cons_shape", kCreated, TypeParam::kNoShape},
      {"add_constraint", kCreated, TypeParam::kNoConstraints},
      // Told at the constraint.
      {"add_constraint_set", kCreated + kLinear, TypeParam::kNoSet},
      {"add_constraint_nl", kCreated + kLinear + kSet + kAbs, TypeParam::kNoNonlinear},
      {"set_remainder", kDelivered, TypeParam::kNoRemainder},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.missing);
    this->use(std::string("without_") + row.missing);
    this->expect_fatal([] { TestFixture::create(everything()); }, row.log, row.message);
    const auto plain = [] { TestFixture::create(one_bit()); };
    this->expect_log(plain, "register_callback, gives -1\ncreate #1 nvars=1\ndestroy #1\n");
  }
}

TYPED_TEST(BinaryRoute, DoesWithoutFacts) {
  const struct {
    const char* missing;
    const char* asked;
    const char* info;
  } rows[] = {
      {"get_info", "", "info run_time os cpu gpu ram\n"},
      {"free_info", "get_info #1\n", "info run_time moves=12 engine=fake os cpu gpu ram\n"},
  };
  const auto body = [] {
    TestFixture::search(TestFixture::create(everything()), {{"time_limit", "1"}, {"facts", "1"}});
  };
  for (const auto& row : rows) {
    this->use(std::string("without_") + row.missing);
    this->expect_log(body, kDelivered + kRemainder + "search #1 time_limit=1 facts=1" + kTerms +
                               row.asked + kBest + row.info + "destroy #1\n");
  }
}

}  // namespace
}  // namespace zorv::test
