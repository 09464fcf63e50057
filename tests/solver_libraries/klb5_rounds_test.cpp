// The GPU rounds beside a native search, with rounds that the fake runs on the CPU.
#include "solver_libraries/klb5_support.h"
#include "solvers/elite_list.h"

namespace zorv::test {
namespace {

using fake::Klb5Batch;
using fake::Klb5Fake;
using fake::say;

const Params kLong = {{"time_limit", "60"}, {"threads", "1"}};

TEST(EliteList, KeepsTheBestTenByEnergyAndArrival) {
  EliteList list;
  const auto text = [&] {
    std::string line;
    for (const EliteEntry& entry : list.entries()) {
      line += entry.energy.str() + "/" + entry.state[0].str() + " ";
    }
    return line;
  };
  list.offer(5, {1}, Breed::kFresh);
  list.offer(3, {2}, Breed::kFound);
  list.offer(5, {3}, Breed::kCrossed);
  list.offer(4, {1}, Breed::kBest);  // a known state, whatever its energy
  EXPECT_EQ(text(), "3/2 5/1 5/3 ");
  EXPECT_EQ(list.entries()[0].breed, Breed::kFound);
  EXPECT_EQ(list.entries()[2].breed, Breed::kCrossed);
  for (int i = 10; i < 17; ++i) list.offer(i, {i}, Breed::kFresh);
  EXPECT_EQ(text(), "3/2 5/1 5/3 10/10 11/11 12/12 13/13 14/14 15/15 16/16 ");
  list.offer(16, {20}, Breed::kFresh);  // not below the last
  list.offer(15, {21}, Breed::kFresh);
  EXPECT_EQ(text(), "3/2 5/1 5/3 10/10 11/11 12/12 13/13 14/14 15/15 15/21 ");
  list.offer(-9, {22}, Breed::kFresh);
  EXPECT_EQ(text(), "-9/22 3/2 5/1 5/3 10/10 11/11 12/12 13/13 14/14 15/15 ");
}

class Klb5Rounds : public ::testing::Test {
 protected:
  const FakeFolder folder;

  Klb5Fake& quiet_fake() const {
    Klb5Fake& fake = folder.use();
    fake.is_quiet = true;
    return fake;
  }
};

// Every form of constraint, complements, powers and wide numbers: the energies of the rounds come
// from what they were handed, and each marked one is checked against the model's own.
TEST_F(Klb5Rounds, AgreeWithTheModelOnEveryEnergy) {
  const uint32_t x = fresh(), y = fresh(), z = fresh(), not_x = x | kNegationBit;
  const uint32_t a = new_int_var("a", -9, 9), b = new_int_var("b", pow2(70), pow2(70) + 20);
  const ExprImpl objective = 5 * (var(not_x) * var(y) * var(z)) - 3 * (var(x) * var(a) * var(a)) +
                             pow2(66) * var(b) - 7 * var(z);
  const ModelHandle models[] = {
      Sketch(objective)
          .between(2 * var(x) + var(a), -1, 3, 4)
          .between(var(x) * var(y) * var(a) - var(b), -pow2(70) - 3, -pow2(70) - 1, 2)
          .in(var(y) + var(a), {{-5, -4}, {0, 0}, {7, 9}}, 3)
          .abs(var(a) - 4, 1, 11)
          .relu(var(z) - var(a), 2, -1),
      Sketch(var(a) * var(a) - var(a)),  // no bits, yet one word a slot
      Sketch(5 * (var(not_x) * var(y) * var(z)) + var(a)),
  };
  for (const ModelHandle& handle : models) {
    const Model m = wrap(handle);
    const auto run = [&] {
      Klb5Fake& fake = quiet_fake();
      const Klb5 solver = klb5(m, 1);
      fake.before_round = [&](const Klb5Batch& batch) {
        if (batch.count != 8) say(batch.count, " slots");
        if (batch.number == 40) zorv_klb5_wrapper_terminate(solver);
        return 0;
      };
      setenv("ZORV_KLB5_INT_DEBUG", "", 1);
      const Result r = zorv_klb5_wrapper_search(solver, kLong, nullptr);
      say(info(r, "engine"));
    };
    EXPECT_LINES(run(), "[klb5-int-gpu] rounds=40 submissions=160\ninteger-cpu+gpu\n");
  }
}

TEST_F(Klb5Rounds, AreVerified) {
  const uint32_t a = new_int_var("a", 0, 9);
  const Model m = compiled(var(fresh()) + var(a));
  const auto search = [&](const coeff_t& energy_error, const coeff_t& value_error) {
    Klb5Fake& fake = quiet_fake();
    fake.energy_error = energy_error;
    fake.value_error = value_error;
    Result(zorv_klb5_wrapper_search(klb5(m, 1), kLong, nullptr));
  };
  const char* const text = "KLB5Solver: internal error — GPU integer engine energy mismatch.";
  EXPECT_FATAL(search(1, 0), text);
  EXPECT_FATAL(search(-pow2(64), 0), text);
  EXPECT_FATAL(search(0, -1), text);  // the right energy of a value out of bounds
  EXPECT_FATAL(search(0, 10), text);
}

TEST_F(Klb5Rounds, BreedTheLastSixSlotsFromElites) {
  // The rounds return the best bits, so that the optimum is soon an elite; a fresh state of 66 bits
  // never is the optimum.
  ExprImpl e;
  for (int i = 0; i < 66; ++i) e = e - var(fresh());
  const Model m = compiled(e + var(new_int_var("a", 0, 3)));
  const auto run = [&] {
    Klb5Fake& fake = quiet_fake();
    const Klb5 solver = klb5(m, 1);
    fake.begins_at = {~uint64_t{0}, 3};
    fake.improves = false;
    uint64_t best[2] = {0, 0};  // how often it was in the first two slots, and in the others
    fake.before_round = [&](const Klb5Batch& batch) {
      for (uint32_t s = 0; s < batch.count; ++s) {
        const uint64_t* words = batch.bits + 2 * s;
        if (words[1] > 3 || batch.ints[s] < 0 || batch.ints[s] > 3) say("no state");
        best[s >= 2] += words[0] == ~uint64_t{0} && words[1] == 3 && batch.ints[s] == 0;
      }
      if (batch.number == 300) zorv_klb5_wrapper_terminate(solver);
      return 0;
    };
    Result(zorv_klb5_wrapper_search(solver, kLong, nullptr));
    if (best[0] != 0) say("bred slots that are to be fresh");
    if (best[1] == 0 || best[1] >= 1790) say("the best was tried ", best[1], " times of 1800");
  };
  EXPECT_LINES(run(), "");
}

TEST_F(Klb5Rounds, TheirStatesReachTheResult) {
  const Needle needle;
  const auto run = [&] {
    Klb5Fake& fake = quiet_fake();
    fake.begins_at = {needle.bits ^ 4};  // one step away
    const Result r = zorv_klb5_wrapper_search(
        klb5(needle.model, -1),
        Params{{"time_limit", "60"}, {"threads", "1"}, {"target_energy", "-1"}, {"topk_sols", "1"}},
        nullptr);
    say(unwrap(r).energy, " ", unwrap(r).bits[0] == needle.bits, " ", unwrap(r).ints[0]);
    say(unwrap(r).topk[0].energy, " ", unwrap(r).topk[0].bits[0] == needle.bits);
  };
  EXPECT_LINES(run(), "-1 1 0\n-1 1\n");
}

TEST_F(Klb5Rounds, EndWithAStatusAndTheSearchGoesOn) {
  const Needle needle;
  const Solution sol = needle.solution();
  const auto run = [&] {
    Klb5Fake& fake = quiet_fake();
    const Klb5 solver = klb5(needle.model, -1);
    fake.before_round = [&](const Klb5Batch& batch) {
      if (batch.number > 4) say("one round too many");
      if (batch.number < 4) return 0;
      zorv_klb5_wrapper_hint(solver, sol);  // for the workers, which alone are left to take it
      return -1;
    };
    setenv("ZORV_KLB5_INT_DEBUG", "1", 1);
    const Result r = zorv_klb5_wrapper_search(
        solver, Params{{"time_limit", "60"}, {"threads", "2"}, {"target_energy", "-1"}}, nullptr);
    say(unwrap(r).energy, " ", info(r, "engine"));
  };
  EXPECT_LINES(run(), "[klb5-int-gpu] rounds=3 submissions=12\n-1 integer-cpu+gpu\n");
}

TEST_F(Klb5Rounds, ReceiveHintsOnce) {
  const uint32_t x = fresh(), a = new_int_var("a", -5, 5),
                 b = new_int_var("b", pow2(80), pow2(80) + 5);
  const Model m = compiled(var(x) + var(a) + var(b));
  const auto run = [&] {
    Klb5Fake& fake = folder.use();
    const Klb5 solver = klb5(m, -1);
    const Solution sol = zorv_sol_create(m), later = zorv_sol_create(m);
    zorv_sol_set_int(sol, a, Wire(-3));
    zorv_sol_set_int(sol, b, Wire(pow2(80)));
    zorv_sol_set(later, x, 1);
    fake.before_round = [&](const Klb5Batch& batch) {
      if (batch.number == 1) say("round 1");
      if (batch.number == 3) zorv_klb5_wrapper_hint(solver, later);
      if (batch.number == 6) zorv_klb5_wrapper_terminate(solver);
      return 0;
    };
    zorv_klb5_wrapper_hint(solver, later);
    zorv_klb5_wrapper_hint(solver, sol);  // the last one given before the search
    const uint64_t bits = 1;
    const coeff_t ints[] = {4, pow2(80) + 5};
    Result(zorv_klb5_wrapper_search_int(solver, kLong, &bits, borrow(&ints[0]), 2));
  };
  EXPECT_LINES(run(),
               "int create 1, 2 ints -5..5 1208925819614629174706176..1208925819614629174706181: 0 "
               "1*0 1*i0 1*i1, 0 2048\n"
               "int hint 1 [4 1208925819614629174706181]\n"
               "int hint 0 [-3 1208925819614629174706176]\n"
               "round 1\n"
               "int hint 1 [-5 1208925819614629174706176]\n"
               "int destroy\n");
}

}  // namespace
}  // namespace zorv::test
