// What is ExhaustiveSolver's own: the place of its library, and parameters that stay as they are.
#include "solver_libraries/binary_models.h"

namespace zorv::test {
namespace {

using Wrapper = Exhaustive::Wrapper;

class ExhaustiveLibrary : public Routes {};

TEST_F(ExhaustiveLibrary, LiesBesideThisLibraryWhateverTheVariableSays) {
  const auto body = [] { Wrapper(zorv_exhaustive_wrapper_create(one_bit())); };
  load_from("exhaustive/complete");
  for (const char* folder : {"/nowhere", ""}) {
    set("ZORV_LIB_DIR", folder);
    expect_log(body, "register_callback, gives -1\ncreate #1 nvars=1\ndestroy #1\n");
  }
  load_from("easy/complete");
  set("ZORV_LIB_DIR", fakes("exhaustive/complete"));
  expect_fatal(body, "",
               "ExhaustiveSolver: failed to load " +
                   load_failure(fakes("easy/complete/exhaustive_cppint.so")));
}

TEST_F(ExhaustiveLibrary, GetsTheParametersAsTheyAre) {
  load_from("exhaustive/complete");
  const auto body = [] {
    const Wrapper w(zorv_exhaustive_wrapper_create(one_bit()));
    const ParamPair params[] = {{"threads", "0"}, {"best_energy_sols", nullptr}, {}};
    for (const ParamPair* each : {params, params + 2, static_cast<const ParamPair*>(nullptr)}) {
      Result(zorv_exhaustive_wrapper_search(w, each));
    }
  };
  expect_log(body,
             "register_callback, gives -1\n"
             "create #1 nvars=1\n"
             "search #1 threads=0 best_energy_sols=(null): 0 1*0\nget_info #1\n"
             "search #1: 0 1*0\nget_info #1\n"
             "search #1: 0 1*0\nget_info #1\n"
             "destroy #1\n");
}

TEST_F(ExhaustiveLibrary, IsNotNeededForIntegerModels) {
  load_from("easy/complete");
  const auto body = [] {
    Int lo(-2), hi(1);
    const CoeffWire bounds[] = {lo.wire(), hi.wire()};
    const uint32_t n = zorv_new_int_var("n", &bounds[0], &bounds[1]);
    const Wrapper w(zorv_exhaustive_wrapper_create(compiled(poly(0, {{1, {n, n}}, {1, {n}}}))));
    const Result r(zorv_exhaustive_wrapper_search(w, nullptr));
    fake::say(fact(r, "states"), " states, ", fact(r, "engine"));
  };
  expect_log(body, "4 states, integer-cpu\n");
}

}  // namespace
}  // namespace zorv::test
